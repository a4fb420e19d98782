#include "tools/velmoractl/check_steps.h"

#include <optional>

#include "config/text_numbers.h"
#include "tls/protocol.h"
#include "tools/alert_watch.h"
#include "tools/velmoractl/log_note.h"
#include "tools/velmoractl/plain_text.h"
#include "tools/velmoractl/stored_settings.h"
#include "tools/velmoractl/tls_facts.h"

namespace velmora::ctl {
namespace {

constexpr uint32_t kStrongKeyBits = 2048;
constexpr size_t kShownBytes = 100;

// Winsock's error codes (Microsoft, "Windows Sockets Error Codes").
constexpr int kNetworkUnreachable = 10051;
constexpr int kTimedOut = 10060;
constexpr int kRefused = 10061;
constexpr int kHostUnreachable = 10065;

CheckStep Ended(StepState state, const ByteString& sentence) {
    CheckStep step;
    step.state = state;
    step.sentence = sentence;
    return step;
}

CheckStep Ok(const ByteString& sentence) {
    return Ended(StepState::kOk, sentence);
}

CheckStep Skipped(const ByteString& sentence) {
    return Ended(StepState::kSkipped, sentence);
}

CheckStep Failed(ExitCode code, const ByteString& sentence, const ByteString& advice) {
    CheckStep step = Ended(StepState::kFailed, sentence);
    step.code = code;
    step.advice = advice;
    return step;
}

ByteString Within(const CheckFacts& facts) {
    return " within " + DecimalText(facts.timeoutSeconds) + " s";
}

ByteString PortText(const CheckFacts& facts) {
    return "port " + DecimalText(facts.port);
}

ByteString Joined(const std::vector<ByteString>& texts, std::string_view separator) {
    ByteString joined;
    for (const ByteString& text : texts) {
        if (!joined.empty()) joined += separator;
        joined += text;
    }
    return joined;
}

// A verdict on the call as a step: its sentence without the "FAILED: ".
CheckStep FromVerdict(const Verdict& verdict) {
    constexpr size_t kVerdictStart = sizeof("FAILED: ") - 1;
    return Failed(verdict.code, AsSentence(verdict.sentence.substr(kVerdictStart)), verdict.advice);
}

CheckStep JudgedAsCall(const CheckFacts& facts, const PbxExchange& exchange) {
    CallFacts call;
    call.number = facts.number;
    call.device = facts.device;
    call.peer = facts.Peer();
    call.encrypted = facts.encrypted;
    call.connected = true;
    call.logVisible = true;
    call.callPlaced = true;
    call.timeoutSeconds = facts.timeoutSeconds;
    return FromVerdict(JudgeCall(call, exchange));
}

CheckStep Interrupted() {
    return Failed(ExitCode::kFailed, "Interrupted.", {});
}

CheckStep ConnectionClosed(ExitCode code, const ByteString& instead, const ByteString& advice) {
    return Failed(code, "The PBX closed the connection instead of " + instead + ".", advice);
}

// The reason of a refusal, in the PBX's words.
ByteString InBrackets(const PbxRequest& refused) {
    return refused.reason.empty() ? ByteString() : " (" + Printable(refused.reason) + ")";
}

// A setting that is fine for the provider, yet hardly what its owner wants; empty for any other.
ByteString DoubtAbout(const SettingRule& rule, const ByteString& stored) {
    const bool partOfLogin = rule.kind == SettingKind::kPassword || rule.name == "domain";
    if (stored.empty() && partOfLogin) {
        return ByteString(rule.name) + " is not set. If the PBX wants one: " + FixCommand(rule);
    }
    return CheckSetting(rule, stored).warning;
}

std::vector<ByteString> DoubtfulSettings() {
    std::vector<ByteString> doubts;
    for (const SettingRule& rule : SettingRules()) {
        const ByteString doubt = DoubtAbout(rule, ReadStoredSetting(rule).text);
        if (!doubt.empty()) doubts.push_back(doubt);
    }
    return doubts;
}

// The fatal alert among the first records from the PBX, if there is one that is not encrypted.
std::optional<uint32_t> FatalAlertIn(std::string_view received) {
    for (const SeenAlert& alert : AlertWatch().Follow(ByteString(received))) {
        const bool fatal = alert.level == static_cast<uint8_t>(AlertLevel::kFatal);
        if (alert.readable && fatal) return alert.description;
    }
    return {};
}

// What the PBX did instead of completing the handshake.
CheckStep HandshakeFailure(const CheckFacts& facts, const TlsConnection& tls, WaitEnd end, std::string_view received) {
    const ByteString fault = HandshakeFault(tls);
    if (!fault.empty()) {
        return Failed(ExitCode::kNoEncryption, "The PBX " + fault + ".",
                      "Is the PBX up to date, and its certificate an RSA one? Does a proxy on the way change TLS?");
    }
    if (!received.empty() && !LooksLikeTls(received)) {
        return Failed(ExitCode::kNoEncryption,
                      "The answer on " + PortText(facts) + " is not TLS: it begins with \"" +
                          Printable(received.substr(0, kShownBytes)) + "\".",
                      "Is this the PBX's port for CSTA? velmoractl config get port. If it takes no TLS there: "
                      "velmoractl config set encrypt off");
    }
    if (const std::optional<uint32_t> alert = FatalAlertIn(received)) {
        const TlsFailure failure = FailureByAlert(*alert);
        return Failed(ExitCode::kNoEncryption, AsSentence(failure.reason) + ".", failure.advice);
    }
    const ByteString advice =
        "Does the PBX take TLS 1.0 with RSA and AES-CBC or RC4 on this port? If it takes no TLS at all: "
        "velmoractl config set encrypt off";
    if (end == WaitEnd::kClosed) return ConnectionClosed(ExitCode::kNoEncryption, "completing TLS", advice);
    return Failed(ExitCode::kNoEncryption, "The PBX did not complete TLS" + Within(facts) + ".", advice);
}

}  // namespace

CheckStep SettingsStep() {
    std::vector<ByteString> sentences;
    std::vector<ByteString> fixes;
    for (const FaultySetting& faulty : FindFaultySettings()) {
        sentences.push_back(faulty.sentence + (faulty.stopsLoading ? " The provider does not load with it." : ""));
        fixes.push_back(FixCommand(*faulty.rule));
    }
    CheckStep step = Ok("Complete and well-formed.");
    if (!sentences.empty()) {
        step = Failed(ExitCode::kBadSettings, Joined(sentences, " "), "Mend it with: " + Joined(fixes, "; "));
    }
    step.notes = DoubtfulSettings();
    return step;
}

CheckStep AddressStep(const CheckFacts& facts) {
    const ByteString name = Printable(facts.address);
    if (facts.endpoints.empty()) {
        return Failed(
            ExitCode::kNotResolved, "The name " + name + " does not resolve to an address.",
            "Is the name right, and can this PC ask a DNS server? velmoractl config get address; nslookup " + name);
    }
    if (facts.endpoints.front() == facts.address) return Ok(name + " is an address.");
    CheckStep step = Ok(name + " is " + Joined(facts.endpoints, ", ") + ".");
    if (facts.endpoints.size() > 1) step.notes = {"The provider tries the first of them alone."};
    return step;
}

CheckStep ConnectionStep(const CheckFacts& facts, int error) {
    const ByteString peer =
        (facts.endpoints.empty() ? ByteString("it") : facts.endpoints.front()) + ", " + PortText(facts);
    switch (error) {
        case 0:
            return Ok("Connected to " + peer + ".");
        case kRefused:
            return Failed(ExitCode::kNoConnection,
                          "The connection to " + peer + ", was refused: nothing listens there.",
                          "Is the PBX running, and is this its port for CSTA? velmoractl config get port");
        case kTimedOut:
            return Failed(ExitCode::kNoConnection, "The PBX at " + peer + ", does not answer.",
                          "Is the PBX running, and does every firewall on the way let this port through?");
        case kNetworkUnreachable:
        case kHostUnreachable:
            return Failed(ExitCode::kNoConnection, "The network has no way from this PC to " + peer + ".",
                          "Is this PC in the right network, and does it need a VPN to get there?");
        default:
            return Failed(ExitCode::kNoConnection,
                          "The connection to " + peer + ", failed: Windows gives error " + DecimalText(error) + ".",
                          "Look the number up among Microsoft's Windows Sockets error codes.");
    }
}

CheckStep EncryptionStep(const CheckFacts& facts, const TlsConnection& tls, WaitEnd end, std::string_view received) {
    if (!facts.encrypted) return Skipped("Off: everything, the password too, travels in the clear.");
    if (!IsEncrypted(tls)) {
        if (end == WaitEnd::kInterrupted) return Interrupted();
        return HandshakeFailure(facts, tls, end, received);
    }
    const TlsFacts agreed = DescribeTls(tls);
    const ByteString name = agreed.certificateName.empty() ? "without a name" : "\"" + agreed.certificateName + "\"";
    CheckStep step = Ok(agreed.version + " with " + agreed.suite + "; certificate " + name + ", its RSA key has " +
                        DecimalText(agreed.keyBits) + " bits.");
    step.notes = {"The PBX is not authenticated: the provider accepts any certificate."};
    if (agreed.keyBits < kStrongKeyBits) step.notes.emplace_back("A key of less than 2048 bits is weak.");
    return step;
}

CheckStep LoginStep(const CheckFacts& facts, const PbxExchange& exchange, WaitEnd end, std::string_view received) {
    if (exchange.login.Granted()) {
        CheckStep step = Ok("The PBX accepted " + facts.device + ": session " + exchange.sessionId);
        if (facts.sessionSeconds > 0) step.sentence += ", for " + DecimalText(facts.sessionSeconds) + " s";
        step.sentence += ".";
        return step;
    }
    if (exchange.login.Refused()) return JudgedAsCall(facts, exchange);
    if (end == WaitEnd::kInterrupted) return Interrupted();
    if (!facts.encrypted && LooksLikeTls(received)) {
        return Failed(ExitCode::kNoLogin, "The PBX answers in TLS, but encryption is off.",
                      "Switch it on: velmoractl config set encrypt on");
    }
    CheckStep step = JudgedAsCall(facts, exchange);
    // That it takes TLS is known by now.
    if (facts.encrypted) step.advice = "Is CSTA switched on at the PBX for this port? Its log may tell more.";
    return end == WaitEnd::kClosed ? ConnectionClosed(step.code, "answering the login", step.advice) : step;
}

CheckStep MonitoringStep(const CheckFacts& facts, const PbxExchange& exchange, WaitEnd end) {
    const PbxRequest& monitor = exchange.monitor;
    if (monitor.Granted()) return Ok("The PBX monitors " + facts.device + " for the provider.");
    if (monitor.state == PbxRequest::State::kNotSent) {
        return Skipped("Not asked for: the PBX granted the session no time in seconds.");
    }
    const ByteString advice =
        "Does the PBX know this device? velmoractl config get username; velmoractl config get "
        "domain. Calls may go through all the same.";
    if (monitor.Refused()) {
        return Failed(ExitCode::kNotMonitored, "The PBX refused to monitor " + facts.device + InBrackets(monitor) + ".",
                      advice);
    }
    if (end == WaitEnd::kInterrupted) return Interrupted();
    if (end == WaitEnd::kClosed) return ConnectionClosed(ExitCode::kNotMonitored, "monitoring the device", advice);
    return Failed(ExitCode::kNotMonitored,
                  "The PBX did not confirm that it monitors " + facts.device + Within(facts) + ".", advice);
}

CheckStep CallStep(const CheckFacts& facts, const PbxExchange& exchange, bool bound, WaitEnd end) {
    if (bound) {
        return Ok(facts.number + " was called; the PBX bound it as " +
                  (facts.callId.empty() ? "a call without an ID" : "call " + facts.callId) + " of device " +
                  (facts.callDevice.empty() ? facts.device : facts.callDevice) + ".");
    }
    if (exchange.call.Refused()) return JudgedAsCall(facts, exchange);
    if (end == WaitEnd::kInterrupted) return Interrupted();
    if (exchange.call.Granted()) {
        return Failed(ExitCode::kCallNotAnswered, "The PBX answered the call under the number of another request.",
                      "The provider cannot end such a call. The maker of the PBX has to mend that.");
    }
    CheckStep step = JudgedAsCall(facts, exchange);
    return end == WaitEnd::kClosed ? ConnectionClosed(step.code, "placing the call", step.advice) : step;
}

CheckStep ClearingStep(const CheckFacts& facts, const PbxExchange& exchange, WaitEnd end) {
    if (exchange.clear.Granted()) return Ok("The call was cleared.");
    const ByteString advice = "The call may go on: look at the phone of " + Printable(facts.device) + ".";
    if (exchange.clear.Refused()) {
        return Failed(ExitCode::kNotCleared, "The PBX refused to clear the call" + InBrackets(exchange.clear) + ".",
                      advice);
    }
    if (end == WaitEnd::kClosed) return ConnectionClosed(ExitCode::kNotCleared, "clearing the call", advice);
    return Failed(ExitCode::kNotCleared, "The PBX did not confirm that it cleared the call" + Within(facts) + ".",
                  advice);
}

CheckStep NotTried() {
    return Skipped("Not tried.");
}

}  // namespace velmora::ctl
