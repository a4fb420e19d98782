#include "tools/velmoractl/verdict.h"

#include "config/text_numbers.h"
#include "tools/velmoractl/plain_text.h"
#include "tools/velmoractl/tapi_flags.h"

namespace velmora::ctl {
namespace {

ByteString InBrackets(const ByteString& reason) {
    return reason.empty() ? ByteString() : " (" + Printable(reason) + ")";
}

ByteString Within(const CallFacts& facts) {
    return " within " + DecimalText(facts.timeoutSeconds) + " s";
}

Verdict NoConnection(const CallFacts& facts) {
    return {ExitCode::kNoConnection, "FAILED: there is no connection to the PBX at " + facts.peer + ".",
            "Is the PBX running, and reachable from here? Check address and port: velmoractl config get"};
}

Verdict LoginRefused(const CallFacts& facts, const PbxExchange& exchange) {
    return {ExitCode::kNoLogin,
            "FAILED: the PBX refused the login of " + facts.device + InBrackets(exchange.login.reason) + ".",
            "Check username, password and domain: velmoractl config get; velmoractl config set password"};
}

Verdict LoginNotAnswered(const CallFacts& facts) {
    return {ExitCode::kNoLogin, "FAILED: the PBX at " + facts.peer + " did not answer the login" + Within(facts) + ".",
            facts.encrypted
                ? "Encryption is on: does the PBX speak TLS on this port? If not: velmoractl config set encrypt off"
                : "Encryption is off: does the PBX want TLS on this port? Then: velmoractl config set encrypt on"};
}

Verdict EncryptionFailed(const CallFacts& facts) {
    return {ExitCode::kNoEncryption,
            "FAILED: the encryption of the link to the PBX at " + facts.peer +
                " has failed: " + facts.tlsFailure.reason + ".",
            facts.tlsFailure.advice};
}

Verdict CallNotTaken(const CallFacts& facts) {
    return {
        ExitCode::kCallRefused,
        "FAILED: the provider did not take the call to " + facts.number + ": " + ResultText(facts.makeCallCode) + ".",
        {}};
}

Verdict NotVisible(const CallFacts& facts) {
    return {
        ExitCode::kNotVisible,
        "UNKNOWN: the call to " + facts.number + " was handed to the provider, but the PBX's answer cannot be seen.",
        "Run velmoractl as administrator: it can then switch the trace log on, which shows the answer."};
}

Verdict CallRefused(const CallFacts& facts, const PbxExchange& exchange) {
    return {ExitCode::kCallRefused,
            "FAILED: the PBX refused the call to " + facts.number + InBrackets(exchange.call.reason) + ".",
            "Can " + facts.device + " dial this number from its phone?"};
}

Verdict CallNotAnswered(const CallFacts& facts) {
    return {ExitCode::kCallNotAnswered,
            "FAILED: the PBX did not answer the request to call " + facts.number + Within(facts) + ".",
            "Wait longer with --timeout, and look into the log of the PBX."};
}

ByteString ClosingText(const CallFacts& facts, const PbxExchange& exchange) {
    if (exchange.clear.Granted()) return "the call was closed";
    if (exchange.clear.Refused()) return "the PBX refused to close it" + InBrackets(exchange.clear.reason);
    return "the PBX did not confirm that it was closed" + Within(facts);
}

Verdict CallMade(const CallFacts& facts, const PbxExchange& exchange) {
    const ByteString call = exchange.callId.empty() ? "a call without an ID" : "call " + Printable(exchange.callId);
    const ByteString device = exchange.deviceId.empty() ? facts.device : Printable(exchange.deviceId);
    return {ExitCode::kDone,
            "OK: " + facts.number + " was called; the PBX bound it as " + call + " of device " + device + "; " +
                ClosingText(facts, exchange) + ".",
            {}};
}

}  // namespace

Verdict JudgeCall(const CallFacts& facts, const PbxExchange& exchange) {
    if (!facts.connected) return NoConnection(facts);
    if (exchange.login.Refused()) return LoginRefused(facts, exchange);
    const bool tlsFailed = !facts.tlsFailure.reason.empty();
    if (facts.logVisible && !exchange.login.Granted()) {
        return tlsFailed ? EncryptionFailed(facts) : LoginNotAnswered(facts);
    }
    if (!facts.callPlaced) return CallNotTaken(facts);
    if (!facts.logVisible) return NotVisible(facts);
    if (exchange.call.Refused()) return CallRefused(facts, exchange);
    if (!exchange.call.Granted()) return tlsFailed ? EncryptionFailed(facts) : CallNotAnswered(facts);
    return CallMade(facts, exchange);
}

}  // namespace velmora::ctl
