#include "tools/velmoractl/csta_summary.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <string_view>
#include <vector>

#include "tools/velmoractl/plain_text.h"

namespace velmora::ctl {
namespace {

constexpr size_t kSummaryMaxBytes = 100;

// A piece of a summary, left out when the message has no text at path.
struct Piece {
    std::string_view before;
    std::string_view path;
    std::string_view after = {};
};

const Piece kStartSession[] = {
    {"user ", "applicationInfo/applicationSpecificInfo/SessionLoginInfo/userName"},
    {", password ", "applicationInfo/applicationSpecificInfo/SessionLoginInfo/password"},
    {", domain ", "applicationInfo/applicationSpecificInfo/SessionLoginInfo/domain"},
    {", for ", "requestedSessionDuration", " s"},
};
const Piece kSessionStarted[] = {{"session ", "sessionID"}, {", for ", "actualSessionDuration", " s"}};
const Piece kResetTimer[] = {{"session ", "sessionID"}, {", for ", "requestedSessionDuration", " s"}};
const Piece kTimerReset[] = {{"for ", "actualSessionDuration", " s"}};
const Piece kMonitorStart[] = {{"device ", "monitorObject/deviceObject"}};
const Piece kMonitorStarted[] = {{"monitor ", "monitorCrossRefID"}};
const Piece kMakeCall[] = {
    {"from ", "callingDevice"}, {" to ", "calledDirectoryNumber"}, {", originating with ", "autoOriginate"}};
const Piece kCallMade[] = {{"call ", "callingDevice/callID"}, {" of device ", "callingDevice/deviceID"}};
const Piece kClearConnection[] = {{"call ", "connectionToBeCleared/callID"},
                                  {" of device ", "connectionToBeCleared/deviceID"}};

constexpr std::string_view kEventFields[] = {"callID", "deviceID", "cause"};

struct Wording {
    std::string_view message;
    std::span<const Piece> pieces;
};

const Wording kWordings[] = {
    {"StartApplicationSession", kStartSession},
    {"StartApplicationSessionPosResponse", kSessionStarted},
    {"ResetApplicationSessionTimer", kResetTimer},
    {"ResetApplicationSessionTimerPosResponse", kTimerReset},
    {"MonitorStart", kMonitorStart},
    {"MonitorStartResponse", kMonitorStarted},
    {"MakeCall", kMakeCall},
    {"MakeCallResponse", kCallMade},
    {"ClearConnection", kClearConnection},
};

ByteString PutIntoWords(std::span<const Piece> pieces, const XmlNode& message) {
    ByteString words;
    for (const Piece& piece : pieces) {
        const std::string_view text = Trimmed(message.textAt(piece.path));
        if (text.empty()) continue;
        words += piece.before;
        words += text;
        words += piece.after;
    }
    // What joins a piece to the one before it has no place at the start.
    for (const std::string_view joint : {", ", " of "}) {
        if (words.starts_with(joint)) words.erase(0, joint.size());
    }
    return ByteString(Trimmed(words));
}

// Calls visit for each element below message in document order, until it returns false. Not recursive: a message may
// nest as deep as it is long.
template <typename Visit>
void VisitElements(const XmlNode& message, const Visit& visit) {
    std::vector<const XmlNode*> pending = {&message};
    while (!pending.empty()) {
        const XmlNode& element = *pending.back();
        pending.pop_back();
        const auto others = static_cast<std::ptrdiff_t>(pending.size());
        std::transform(element.children.begin(), element.children.end(), std::back_inserter(pending),
                       [](const XmlNode& child) { return &child; });
        std::reverse(pending.begin() + others, pending.end());  // the last is the next
        if (&element != &message && !visit(element)) return;
    }
}

// Which call and device an event is about, and why it came: the first fields of these names, wherever they are.
ByteString SummariseEvent(const XmlNode& event) {
    ByteString words;
    for (const std::string_view name : kEventFields) {
        VisitElements(event, [&](const XmlNode& element) {
            if (element.localName != name) return true;
            if (!words.empty()) words += ", ";
            words += ByteString(name) + " " + ByteString(Trimmed(element.text));
            return false;
        });
    }
    return words;
}

}  // namespace

ByteString SummariseMessage(const XmlNode& message) {
    for (const Wording& wording : kWordings) {
        if (message.localName == wording.message) return PutIntoWords(wording.pieces, message);
    }
    return message.localName.ends_with("Event") ? SummariseEvent(message) : SummariseFields(message);
}

ByteString SummariseFields(const XmlNode& message) {
    ByteString summary;
    VisitElements(message, [&](const XmlNode& element) {
        const std::string_view text = Trimmed(element.text);
        if (text.empty()) return true;
        if (!summary.empty()) summary += ", ";
        summary += element.localName + " " + ByteString(text);
        return summary.size() <= kSummaryMaxBytes;
    });
    if (summary.size() > kSummaryMaxBytes) summary = summary.substr(0, kSummaryMaxBytes) + "...";
    return summary;
}

}  // namespace velmora::ctl
