#include "tools/velmoractl/check_report.h"

#include <algorithm>

#include "config/text_numbers.h"
#include "tools/velmoractl/plain_text.h"
#include "tools/velmoractl/verdict_json.h"

namespace velmora::ctl {
namespace {

constexpr size_t kTimeWidth = 6;
constexpr size_t kNameWidth = 12;
const ByteString kNoteIndent(4 + 2 + kTimeWidth + 3 + 2 + kNameWidth, ' ');

bool Succeeded(const CheckReport& report, std::string_view name) {
    const auto found = std::ranges::find(report.steps, name, &CheckStep::name);
    return found != report.steps.end() && found->state == StepState::kOk;
}

// A step's sentence behind a colon.
ByteString Continued(const ByteString& sentence) {
    return sentence.starts_with("The ") ? "t" + sentence.substr(1) : sentence;
}

ByteString OkSentence(const CheckReport& report) {
    const CheckFacts& facts = report.facts;
    ByteString sentence = "OK: the PBX at " + Printable(facts.Peer()) + " accepts ";
    if (Succeeded(report, "monitoring")) sentence += "and monitors ";
    sentence += Printable(facts.device);
    if (!facts.number.empty()) sentence += "; " + facts.number + " was called, and the call cleared";
    return sentence + ".";
}

ByteString TimeText(uint64_t ms) {
    const ByteString text = DecimalText(static_cast<int64_t>(ms));
    return ByteString(kTimeWidth - std::min(kTimeWidth, text.size()), ' ') + text + " ms";
}

std::string_view StateName(StepState state) {
    switch (state) {
        case StepState::kOk:
            return "ok";
        case StepState::kFailed:
            return "failed";
        default:
            return "skipped";
    }
}

ByteString StepJson(const CheckStep& step) {
    return JsonObject()
        .AddText("name", step.name)
        .AddText("state", StateName(step.state))
        .Add("milliseconds", JsonNumber(static_cast<int64_t>(step.tookMs)))
        .AddText("sentence", step.sentence)
        .Add("notes", JsonStrings(step.notes))
        .Text();
}

ByteString FactsJson(const CheckFacts& facts) {
    JsonObject json;
    if (facts.port > 0) {
        json.AddText("address", facts.address)
            .Add("port", JsonNumber(facts.port))
            .AddText("device", facts.device)
            .Add("encrypted", JsonFlag(facts.encrypted));
    }
    if (!facts.endpoints.empty()) json.Add("endpoints", JsonStrings(facts.endpoints));
    if (facts.tls) {
        json.AddText("tlsVersion", facts.tls->version)
            .AddText("suite", facts.tls->suite)
            .Add("keyBits", JsonNumber(facts.tls->keyBits))
            .AddText("certificateName", facts.tls->certificateName)
            .Add("authenticated", JsonFlag(false));
    }
    if (!facts.sessionId.empty()) json.AddText("sessionId", facts.sessionId);
    if (facts.sessionSeconds > 0) json.Add("sessionSeconds", JsonNumber(facts.sessionSeconds));
    if (!facts.number.empty()) json.AddText("number", facts.number);
    if (!facts.callId.empty()) json.AddText("callId", facts.callId);
    if (!facts.callDevice.empty()) json.AddText("callDevice", facts.callDevice);
    return json.Text();
}

}  // namespace

ByteString CheckFacts::Peer() const {
    return address + ":" + DecimalText(port);
}

Verdict JudgeCheck(const CheckReport& report) {
    const auto failed = std::ranges::find(report.steps, StepState::kFailed, &CheckStep::state);
    if (failed == report.steps.end()) return {ExitCode::kDone, OkSentence(report), {}};
    return {failed->code, "FAILED: " + Printable(Continued(failed->sentence)), failed->advice};
}

std::string_view StepMark(StepState state) {
    switch (state) {
        case StepState::kOk:
            return "ok";
        case StepState::kFailed:
            return "FAIL";
        default:
            return "-";
    }
}

ByteString StepText(const CheckStep& step) {
    const bool timed = step.state != StepState::kSkipped;
    ByteString text = "  " + Padded(timed ? TimeText(step.tookMs) : "", kTimeWidth + 3) + "  ";
    text += Padded(step.name, kNameWidth) + Printable(step.sentence) + "\n";
    for (const ByteString& note : step.notes) text += kNoteIndent + Printable(note) + "\n";
    return text;
}

ByteString CheckJson(const CheckReport& report) {
    std::vector<ByteString> steps(report.steps.size());
    std::ranges::transform(report.steps, steps.begin(), StepJson);
    return VerdictJson(JudgeCheck(report)).Add("facts", FactsJson(report.facts)).Add("steps", JsonArray(steps)).Text() +
           "\n";
}

}  // namespace velmora::ctl
