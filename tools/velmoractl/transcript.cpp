#include "tools/velmoractl/transcript.h"

#include <algorithm>

#include "config/text_numbers.h"
#include "tools/velmoractl/console.h"
#include "tools/velmoractl/csta_summary.h"
#include "tools/velmoractl/plain_text.h"
#include "tools/velmoractl/xml_layout.h"

namespace velmora::ctl {
namespace {

constexpr size_t kTimeWidth = 8;
constexpr size_t kMarkWidth = 4;
const ByteString kXmlIndent(kTimeWidth + kMarkWidth + 4, ' ');

// Seconds with three decimals, right-aligned: "   1.023".
ByteString TimeText(uint64_t ms) {
    ByteString milliseconds = DecimalText(static_cast<int64_t>(ms % 1000));
    milliseconds.insert(0, 3 - milliseconds.size(), '0');
    const ByteString text = DecimalText(static_cast<int64_t>(ms / 1000)) + "." + milliseconds;
    return text.size() < kTimeWidth ? ByteString(kTimeWidth - text.size(), ' ') + text : text;
}

}  // namespace

uint64_t Transcript::NowMs() const {
    const auto elapsed = std::chrono::steady_clock::now() - start;
    return static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(elapsed).count());
}

void Transcript::Headline(std::string_view text) {
    if (!showSteps) return;
    Print(ByteString(text) + "\n");
    empty = false;
}

void Transcript::Ok(std::string_view step) {
    if (showSteps) Line(NowMs(), "ok", step, Ink::kGood);
}

void Transcript::Failed(std::string_view step) {
    if (showSteps) Line(NowMs(), "FAIL", step, Ink::kBad);
}

void Transcript::Note(std::string_view text, uint64_t atMs) {
    if (showSteps) Line(atMs, "note", text, Ink::kFaint);
}

void Transcript::Message(const CstaRecord& message, const XmlNode& tree, uint64_t atMs, bool withXml) {
    if (!showSteps) return;
    ByteString text = tree.localName.empty() ? "(not readable as XML)" : tree.localName;
    const ByteString summary = SummariseMessage(tree);
    if (!summary.empty()) text += ": " + summary;
    Line(atMs, message.sent ? " ->" : " <-", text, Ink::kFaint);
    if (!withXml) return;
    for (const ByteString& line : LayOutXml(message.xml)) Print(kXmlIndent + Printable(line) + "\n");
}

void Transcript::End(const Verdict& verdict) const {
    if (!empty) Print("\n");
    if (!verdict.advice.empty()) Print(Printable(verdict.advice) + "\n");
    Print(Printable(verdict.sentence) + "\n", verdict.code == ExitCode::kDone ? Ink::kGood : Ink::kBad);
}

void Transcript::Line(uint64_t atMs, std::string_view mark, std::string_view text, Ink ink) {
    empty = false;
    shownMs = std::max(shownMs, atMs);
    Print(TimeText(shownMs) + "  ");
    Print(Padded(mark, kMarkWidth), ink);
    Print("  " + Printable(text) + "\n");
}

}  // namespace velmora::ctl
