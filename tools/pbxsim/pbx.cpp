#include "tools/pbxsim/pbx.h"

#include <algorithm>

#include "config/text_numbers.h"

namespace velmora::pbxsim {
namespace {

constexpr int kOldestEdition = 3;
constexpr int kNewestEdition = 6;
constexpr size_t kMaxDeviceBytes = 256;

// A device or number that can be written into an answer: neither empty nor endless, and free of control characters,
// most of which XML cannot carry.
bool IsDevice(const ByteString& text) {
    const auto isControl = [](char character) { return character >= 0 && character < ' '; };
    return !text.empty() && text.size() <= kMaxDeviceBytes && std::none_of(text.begin(), text.end(), isControl);
}

bool Offers(const XmlNode& login, const ByteString& protocolVersion) {
    for (const XmlNode& list : login.children) {
        if (list.localName != "requestedProtocolVersions") continue;
        for (const XmlNode& version : list.children) {
            if (version.localName == "protocolVersion" && version.text == protocolVersion) return true;
        }
    }
    return false;
}

// The newest edition that the client and the PBX both speak; empty when there is none.
ByteString AgreedNamespace(const XmlNode& login) {
    for (int edition = kNewestEdition; edition >= kOldestEdition; --edition) {
        if (Offers(login, CstaNamespace(edition))) return CstaNamespace(edition);
    }
    return {};
}

bool Matches(const ByteString& wanted, const ByteString& given) {
    return wanted.empty() || wanted == given;
}

// Why the PBX refuses the login; empty when it does not.
ByteString LoginFault(const Behaviour& behaviour, const XmlNode& login) {
    const ByteString info = "applicationInfo/applicationSpecificInfo/SessionLoginInfo/";
    if (behaviour.rejectLogin) return "every login is refused";
    if (!Matches(behaviour.user, login.textAt(info + "userName"))) return "wrong user name";
    if (!Matches(behaviour.password, login.textAt(info + "password"))) return "wrong password";
    if (!Matches(behaviour.domain, login.textAt(info + "domain"))) return "wrong domain";
    return {};
}

}  // namespace

void ClientSession::Receive(uint32_t invokeId, const XmlNode& request, uint64_t nowMs) {
    if (pbx.behaviour.silent || ended || Expired(nowMs)) return;
    const Request taken{invokeId, request, nowMs + static_cast<uint64_t>(pbx.behaviour.answerDelayMs)};
    const ByteString& name = request.localName;
    if (name == "StartApplicationSession") {
        StartSession(taken);
    } else if (name == "ResetApplicationSessionTimer") {
        ResetTimer(taken);
    } else if (sessionId.empty()) {
        AnswerError(taken, "generic", "no login yet");
    } else if (name == "MonitorStart") {
        StartMonitor(taken);
    } else if (name == "MakeCall") {
        MakeCall(taken);
    } else if (name == "ClearConnection") {
        ClearConnection(taken);
    } else {
        AnswerError(taken, "generic", "not a request that this PBX knows");
    }
}

std::vector<Message> ClientSession::TakeDue(uint64_t nowMs) {
    if (ended) return {};
    uint64_t untilMs = nowMs;
    if (Expired(nowMs)) {
        const ByteString xml = ApplicationSessionTerminated(sessionId, "sessionTimerExpired");
        Enqueue({*deadlineMs, {kEventInvokeId, xml, "not renewed in time"}, {}});
        untilMs = *deadlineMs;
        ended = true;
    }
    std::vector<Message> due;
    while (due.size() < queue.size() && queue[due.size()].dueMs <= untilMs) due.push_back(queue[due.size()].message);
    queue.erase(queue.begin(), queue.begin() + static_cast<std::ptrdiff_t>(due.size()));
    return due;
}

std::optional<uint64_t> ClientSession::NextDueMs() const {
    if (ended) return {};
    if (queue.empty()) return deadlineMs;
    if (!deadlineMs) return queue.front().dueMs;
    return std::min(queue.front().dueMs, *deadlineMs);
}

void ClientSession::StartSession(const Request& request) {
    const ByteString fault = LoginFault(pbx.behaviour, request.xml);
    if (!fault.empty()) {
        Answer(request, StartApplicationSessionNegResponse("invalidApplicationInfo"), fault);
        return;
    }
    const ByteString agreed = AgreedNamespace(request.xml);
    if (agreed.empty()) {
        Answer(request, StartApplicationSessionNegResponse("requestedProtocolVersionNotSupported"),
               "this PBX speaks ECMA-323 editions 3 to 6");
        return;
    }
    monitors.clear();
    calls.clear();
    std::erase_if(queue, [](const Pending& pending) { return !pending.eventOfCall.empty(); });
    sessionId = DecimalText(pbx.nextSession++);
    cstaNamespace = agreed;
    RenewUntil(request.answerMs);
    Answer(request, StartApplicationSessionPosResponse(sessionId, agreed, pbx.behaviour.sessionSeconds));
}

void ClientSession::ResetTimer(const Request& request) {
    if (sessionId.empty() || request.xml.textAt("sessionID") != sessionId) {
        Answer(request, ResetApplicationSessionTimerNegResponse("invalidSessionID"), "no such session");
        return;
    }
    RenewUntil(request.answerMs);
    Answer(request, ResetApplicationSessionTimerPosResponse(pbx.behaviour.sessionSeconds));
}

void ClientSession::StartMonitor(const Request& request) {
    const ByteString device = request.xml.textAt("monitorObject/deviceObject");
    if (!IsDevice(device)) {
        AnswerError(request, "invalidDeviceID", "nothing to monitor");
        return;
    }
    monitors.push_back({DecimalText(pbx.nextMonitor++), device});
    Answer(request, MonitorStartResponse(cstaNamespace, monitors.back().crossRefId));
}

void ClientSession::MakeCall(const Request& request) {
    Call call;
    call.callingDevice = request.xml.textAt("callingDevice");
    call.calledDevice = request.xml.textAt("calledDirectoryNumber");
    if (pbx.behaviour.errorOnMakeCall) {
        AnswerError(request, "generic", "every call is refused");
        return;
    }
    if (!IsDevice(call.callingDevice)) {
        AnswerError(request, "invalidCallingDeviceID", "no device to call from");
        return;
    }
    if (!IsDevice(call.calledDevice)) {
        AnswerError(request, "invalidCalledDeviceID", "no number to call");
        return;
    }
    call.callId = DecimalText(pbx.nextCall++);
    calls.push_back(call);
    Answer(request, MakeCallResponse(cstaNamespace, call));

    uint64_t stepMs = request.answerMs;
    if (request.xml.textAt("autoOriginate") != "doNotPrompt") {
        SendEvent(stepMs, call, ServiceInitiatedEvent);
        stepMs += kCallStepMs;
    }
    SendEvent(stepMs, call, OriginatedEvent);
    SendEvent(stepMs + kCallStepMs, call, DeliveredEvent);
    SendEvent(stepMs + 2 * kCallStepMs, call, EstablishedEvent);
}

void ClientSession::ClearConnection(const Request& request) {
    const ByteString callId = request.xml.textAt("connectionToBeCleared/callID");
    const ByteString device = request.xml.textAt("connectionToBeCleared/deviceID");
    const auto found = std::find_if(calls.begin(), calls.end(), [&](const Call& call) {
        return call.callId == callId && call.callingDevice == device;
    });
    if (found == calls.end()) {
        AnswerError(request, "invalidConnectionID", "no such call");
        return;
    }
    const Call call = *found;
    calls.erase(found);
    std::erase_if(queue, [&](const Pending& pending) { return pending.eventOfCall == callId; });
    Answer(request, ClearConnectionResponse(cstaNamespace));
    SendEvent(request.answerMs, call, ConnectionClearedEvent);
}

void ClientSession::Answer(const Request& request, const ByteString& xml, const ByteString& remark) {
    Enqueue({request.answerMs, {request.invokeId, xml, remark}, {}});
}

void ClientSession::AnswerError(const Request& request, const ByteString& operation, const ByteString& remark) {
    // Before a login no edition has been agreed on; the newest will do.
    const ByteString xmlNamespace = cstaNamespace.empty() ? CstaNamespace(kNewestEdition) : cstaNamespace;
    Answer(request, CstaErrorCode(xmlNamespace, operation), remark);
}

void ClientSession::SendEvent(uint64_t dueMs, const Call& call, EventBuilder event) {
    if (!pbx.behaviour.events) return;
    for (const Monitor& monitor : monitors) {
        if (monitor.device != call.callingDevice) continue;
        Enqueue({dueMs, {kEventInvokeId, event(cstaNamespace, monitor.crossRefId, call), {}}, call.callId});
    }
}

void ClientSession::Enqueue(const Pending& pending) {
    const auto later = [](uint64_t dueMs, const Pending& other) { return dueMs < other.dueMs; };
    queue.insert(std::upper_bound(queue.begin(), queue.end(), pending.dueMs, later), pending);
}

// The session's time starts when the client hears of it.
void ClientSession::RenewUntil(uint64_t answerMs) {
    deadlineMs.reset();
    const auto seconds = static_cast<uint64_t>(pbx.behaviour.sessionSeconds);
    if (seconds > 0) deadlineMs = answerMs + 1000 * seconds;
}

bool ClientSession::Expired(uint64_t nowMs) const {
    return deadlineMs && nowMs >= *deadlineMs;
}

}  // namespace velmora::pbxsim
