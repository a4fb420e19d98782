#include "tools/velmoractl/log_view.h"

#include "config/text_numbers.h"
#include "tools/velmoractl/csta_record.h"
#include "tools/velmoractl/csta_summary.h"
#include "tools/velmoractl/log_note.h"
#include "tools/velmoractl/password_mask.h"
#include "tools/velmoractl/plain_text.h"
#include "tools/velmoractl/xml_layout.h"

namespace velmora::ctl {
namespace {

constexpr size_t kLevelWidth = 3;
const ByteString kXmlIndent(22, ' ');

ByteString TwoDigits(uint64_t number) {
    return (number < 10 ? "0" : "") + DecimalText(static_cast<int64_t>(number));
}

// As the log writes it, but for the last separator: "0:01:02.250".
ByteString TimeText(uint64_t ms) {
    const uint64_t seconds = ms / 1000;
    const uint64_t rest = ms % 1000;
    return DecimalText(static_cast<int64_t>(seconds / 3600)) + ":" + TwoDigits(seconds / 60 % 60) + ":" +
           TwoDigits(seconds % 60) + "." + (rest < 100 ? "0" : "") + TwoDigits(rest);
}

// From one time of the log to a later one.
ByteString SpanText(uint64_t fromMs, uint64_t toMs) {
    return DecimalText(static_cast<int64_t>(toMs) - static_cast<int64_t>(fromMs)) + " ms";
}

ByteString MessageText(const CstaRecord& message, const XmlNode& tree) {
    ByteString text = message.sent ? "-> " : "<- ";
    text += tree.localName.empty() ? "(not readable as XML)" : tree.localName;
    const ByteString summary = SummariseMessage(tree);
    return summary.empty() ? text : text + ": " + summary;
}

ByteString PlainRecordText(const LogRecord& record) {
    const ByteString text = MaskPassword(record.text);
    const ByteString note = NoteText(record);
    return note.empty() || note == record.text ? text : text + "  (" + note + ")";
}

ByteString OutcomeText(const LoggedCall& call) {
    if (!call.answeredMs) return "not answered";
    const ByteString span = " after " + SpanText(call.askedMs, *call.answeredMs);
    if (call.refused) return "refused" + span + (call.reason.empty() ? "" : ": " + call.reason);
    const ByteString outcome = "call " + call.callId + " of device " + call.deviceId + span;
    return outcome + (call.clearedMs ? ", cleared at " + TimeText(*call.clearedMs) : ", not cleared");
}

}  // namespace

ByteString LogView::Show(const LogRecord& record) {
    const std::optional<CstaRecord> message = CstaRecordIn(record.text);
    ByteString text;
    if (message) {
        const XmlNode tree(message->xml, true);
        text = MessageText(*message, tree);
        if (const std::optional<AnsweredRequest> answered = history.Observe(message->sent, tree, record.elapsedMs)) {
            text += "  (answers the " + ByteString(answered->name) + " of " + TimeText(answered->askedMs) + " after " +
                    SpanText(answered->askedMs, record.elapsedMs) + ")";
        }
    } else {
        text = PlainRecordText(record);
    }
    if (record.level > level) return {};

    ByteString shown = TimeText(record.elapsedMs) + "  " + Padded(DecimalText(record.level), kLevelWidth);
    shown += Printable(text) + "\n";
    if (!message || !withXml) return shown;
    for (const ByteString& line : LayOutXml(message->xml)) shown += kXmlIndent + Printable(line) + "\n";
    return shown;
}

ByteString LogView::Calls() const {
    if (history.Calls().empty()) return {};
    ByteString text = "Calls:\n";
    for (const LoggedCall& call : history.Calls()) {
        text += TimeText(call.askedMs) + "  " +
                Printable(call.number + " from " + call.from + ": " + OutcomeText(call)) + "\n";
    }
    return text;
}

}  // namespace velmora::ctl
