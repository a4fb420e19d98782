#include "tools/velmoractl/call_history.h"

#include <algorithm>

#include "tools/velmoractl/csta_summary.h"
#include "tools/velmoractl/request_names.h"

namespace velmora::ctl {

std::optional<AnsweredRequest> CallHistory::Observe(bool sent, const XmlNode& message, uint64_t atMs) {
    if (message.localName.empty()) return {};
    if (sent) {
        ObserveSent(message, atMs);
        return {};
    }
    const ByteString& name = message.localName;
    const auto found = std::ranges::find_if(waiting, [&](const Pending& pending) {
        return name == pending.names->granted || name == pending.names->refused || name == kCstaError;
    });
    if (found == waiting.end()) return {};
    const Pending pending = *found;
    waiting.erase(found);
    Answer(pending, message, name == pending.names->granted, atMs);
    return AnsweredRequest{pending.names->request, pending.askedMs};
}

void CallHistory::ObserveSent(const XmlNode& message, uint64_t atMs) {
    const auto* const found = std::ranges::find(kRequests, message.localName, &RequestNames::request);
    if (found == std::end(kRequests)) return;
    Pending pending{*found, atMs, {}};
    if (pending.names == &kLoginNames) waiting.clear();
    if (pending.names == &kCallNames) {
        pending.call = calls.size();
        LoggedCall call;
        call.askedMs = atMs;
        call.from = message.textAt("callingDevice");
        call.number = message.textAt("calledDirectoryNumber");
        calls.push_back(call);
    }
    if (pending.names == &kClearNames) pending.call = CallOf(message);
    waiting.push_back(pending);
}

std::optional<size_t> CallHistory::CallOf(const XmlNode& clearing) const {
    const ByteString& callId = clearing.textAt("connectionToBeCleared/callID");
    const ByteString& deviceId = clearing.textAt("connectionToBeCleared/deviceID");
    // The last one: a PBX may give an ID anew when its call is over.
    for (size_t index = calls.size(); index > 0; --index) {
        const LoggedCall& call = calls[index - 1];
        if (call.callId == callId && call.deviceId == deviceId && call.answeredMs) return index - 1;
    }
    return {};
}

void CallHistory::Answer(const Pending& pending, const XmlNode& message, bool granted, uint64_t atMs) {
    if (!pending.call) return;
    LoggedCall& call = calls[*pending.call];
    if (pending.names == &kClearNames) {
        if (granted) call.clearedMs = atMs;
        return;
    }
    call.answeredMs = atMs;
    call.refused = !granted;
    if (granted) {
        call.callId = message.textAt("callingDevice/callID");
        call.deviceId = message.textAt("callingDevice/deviceID");
    } else {
        call.reason = SummariseFields(message);
    }
}

}  // namespace velmora::ctl
