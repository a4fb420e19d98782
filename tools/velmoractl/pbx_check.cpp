#include "tools/velmoractl/pbx_check.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <stdexcept>
#include <utility>

#include "config/settings.h"
#include "config/settings_store.h"
#include "config/text_numbers.h"
#include "csta/connection.h"
#include "csta/dispatch.h"
#include "csta/requests.h"
#include "tools/velmoractl/interrupt.h"
#include "tools/velmoractl/password_mask.h"
#include "tools/velmoractl/tls_facts.h"

namespace velmora::ctl {
namespace {

using Clock = std::chrono::steady_clock;

constexpr uint64_t kInterruptPollMs = 100;
constexpr size_t kKeptFirstBytes = 65536;  // more than a handshake needs

// The PBX's answer to MakeCall, as the provider's table of calls would get it.
struct BoundCall {
    uint32_t invokeId = 0;
    ByteString callId;
    ByteString deviceId;
};
std::optional<BoundCall> boundCall;

void RememberCall(uint32_t invokeId, const ByteString& callId, const ByteString& deviceId) {
    boundCall = {invokeId, callId, deviceId};
}

uint64_t MsSince(Clock::time_point start) {
    const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
    return static_cast<uint64_t>(elapsed.count());
}

ByteString EndpointText(const addrinfo& endpoint) {
    char text[NI_MAXHOST] = "";
    getnameinfo(endpoint.ai_addr, static_cast<socklen_t>(endpoint.ai_addrlen), text, sizeof(text), nullptr, 0,
                NI_NUMERICHOST);
    return text;
}

// What the PBX granted; 0 for no number.
int32_t SecondsIn(const ByteString& duration) {
    try {
        return std::max(ParseInt(duration), 0);
    } catch (const std::logic_error&) {
        return 0;
    }
}

}  // namespace

PbxCheck::PbxCheck(const ByteString& digits, uint32_t timeoutSeconds, ShowStep showStep) : show(std::move(showStep)) {
    report.facts.number = digits;
    report.facts.timeoutSeconds = timeoutSeconds;
}

const CheckReport& PbxCheck::Run() {
    // There is no other thread to wait for it.
    const CriticalSectionGuard guard(connection.lock);
    connection.StartWinsock();
    Try("settings", [this] { return CheckSettings(); });
    Try("address", [this] { return ResolveAddress(); });
    Try("connection", [this] { return Connect(); });
    Try("encryption", [this] { return Encrypt(); });
    Try("login", [this] { return LogIn(); });
    Try("monitoring", [this] { return AwaitMonitoring(); });
    if (!report.facts.number.empty()) {
        Try("call", [this] { return PlaceCall(); });
        Try("clearing", [this] { return ClearCall(); });
    }
    connection.Disconnect();
    return report;
}

void PbxCheck::Try(const ByteString& name, const std::function<CheckStep()>& step) {
    const Clock::time_point start = Clock::now();
    CheckStep taken = failed ? NotTried() : step();
    taken.name = name;
    if (taken.state != StepState::kSkipped) taken.tookMs = MsSince(start);
    failed = failed || taken.state == StepState::kFailed;
    report.steps.push_back(taken);
    show(taken);
}

CheckStep PbxCheck::CheckSettings() {
    CheckStep step = SettingsStep();
    if (step.state == StepState::kFailed) return step;
    LoadSettings();
    CheckFacts& facts = report.facts;
    facts.address = settings.address;
    facts.port = settings.port;
    facts.device = settings.username + "@" + settings.domain;
    facts.encrypted = settings.encrypt;
    return step;
}

CheckStep PbxCheck::ResolveAddress() {
    endpoints = ResolvePbx(settings.address, settings.port);
    for (const addrinfo* entry = endpoints.get(); entry != nullptr; entry = entry->ai_next) {
        report.facts.endpoints.push_back(EndpointText(*entry));
    }
    return AddressStep(report.facts);
}

CheckStep PbxCheck::Connect() {
    const SOCKET opened = OpenPbxSocket(endpoints.get());
    const int error = opened == INVALID_SOCKET ? WSAGetLastError() : 0;
    connection.Connect(opened);
    return ConnectionStep(report.facts, error);
}

// The first bytes of TLS leave with the login, which itself waits until TLS is complete.
CheckStep PbxCheck::Encrypt() {
    StartApplicationSession(settings.domain, settings.username, settings.password);
    NoteSent("StartApplicationSession");
    const TlsConnection& tls = connection.Tls();
    WaitEnd end = WaitEnd::kAnswered;
    if (settings.encrypt) end = WaitUntil([&] { return tls.HandshakeComplete() || tls.Failed(); });
    if (settings.encrypt && IsEncrypted(tls)) report.facts.tls = DescribeTls(tls);
    return EncryptionStep(report.facts, tls, end, firstReceived);
}

CheckStep PbxCheck::LogIn() {
    const WaitEnd end = WaitUntil([this] { return exchange.login.Settled(); });
    return LoginStep(report.facts, exchange, end, firstReceived);
}

CheckStep PbxCheck::AwaitMonitoring() {
    const PbxRequest& monitor = exchange.monitor;
    const WaitEnd end = WaitUntil([&] { return monitor.state == PbxRequest::State::kNotSent || monitor.Settled(); });
    return MonitoringStep(report.facts, exchange, end);
}

CheckStep PbxCheck::PlaceCall() {
    const uint32_t invokeId =
        MakeCall(report.facts.device, report.facts.number, settings.autooriginate ? "doNotPrompt" : "");
    NoteSent("MakeCall");
    const WaitEnd end = WaitUntil([this] { return exchange.call.Settled(); });
    const bool bound = boundCall && boundCall->invokeId == invokeId;
    if (bound) {
        report.facts.callId = boundCall->callId;
        report.facts.callDevice = boundCall->deviceId;
    }
    return CallStep(report.facts, exchange, bound, end);
}

CheckStep PbxCheck::ClearCall() {
    ClearConnection(report.facts.callId, report.facts.callDevice);
    NoteSent("ClearConnection");
    const WaitEnd end = WaitUntil([this] { return exchange.clear.Settled(); }, Patience::kInAnyCase);
    return ClearingStep(report.facts, exchange, end);
}

WaitEnd PbxCheck::WaitUntil(const std::function<bool()>& done, Patience patience) {
    const Clock::time_point start = Clock::now();
    const uint64_t limitMs = uint64_t{report.facts.timeoutSeconds} * 1000;
    while (!done()) {
        if (patience == Patience::kInterruptible && Interrupted()) return WaitEnd::kInterrupted;
        const uint64_t waitedMs = MsSince(start);
        if (waitedMs >= limitMs) return WaitEnd::kTimeout;
        if (!connection.CanReceive(static_cast<uint32_t>(std::min(limitMs - waitedMs, kInterruptPollMs)))) continue;
        if (!connection.Receive()) return WaitEnd::kClosed;
        TakeReceived();
    }
    return WaitEnd::kAnswered;
}

void PbxCheck::TakeReceived() {
    if (firstReceived.size() < kKeptFirstBytes) firstReceived += connection.Received();
    connection.TakeReceived();
    while (const std::optional<Frame> frame = connection.NextFrame()) TakeMessage(frame->invokeId, frame->xml);
}

void PbxCheck::TakeMessage(uint32_t invokeId, std::string_view xml) {
    const bool wasLoggedIn = exchange.login.Granted();
    exchange.Observe(false, XmlNode(MaskPassword(xml), true));
    try {
        Dispatch(invokeId, xml, RememberCall);
    } catch (const std::logic_error&) {
        // As in the provider, a granted duration that is no number leaves the message without effect.
    }
    if (wasLoggedIn || !exchange.login.Granted()) return;
    report.facts.sessionId = exchange.sessionId;
    report.facts.sessionSeconds = SecondsIn(exchange.sessionDuration);
    // Dispatch has asked for it.
    if (report.facts.sessionSeconds > 0) NoteSent("MonitorStart");
}

// What a request holds is of no interest here, only that it is on its way.
void PbxCheck::NoteSent(std::string_view request) {
    exchange.Observe(true, XmlNode("<" + ByteString(request) + "/>", true));
}

}  // namespace velmora::ctl
