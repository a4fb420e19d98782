#include <windows.h>

#include <optional>

#include "config/text_numbers.h"
#include "tools/velmoractl/call_options.h"
#include "tools/velmoractl/commands.h"
#include "tools/velmoractl/interrupt.h"
#include "tools/velmoractl/plain_text.h"
#include "tools/velmoractl/provider_session.h"
#include "tools/velmoractl/stored_settings.h"

namespace velmora::ctl {
namespace {

constexpr uint32_t kDefaultHoldSeconds = 5;
constexpr uint32_t kDefaultTimeoutSeconds = 10;
constexpr uint64_t kMonitorWaitMs = 3000;      // for an answer that a call does not depend on
constexpr uint64_t kUnseenLoginWaitMs = 2000;  // for a login that cannot be seen to succeed

constexpr OptionRule kOptions[] = {
    {"--tsp", true}, {"--hold", true}, {"--timeout", true}, {"--xml", false}, {"--help", false},
};

constexpr std::string_view kHelp =
    R"(velmoractl dial NUMBER [--hold SECONDS] [--timeout SECONDS] [--tsp PATH] [--xml]

Places a call to NUMBER through the provider, in this process and with the settings
in the registry, the way the telephony service would; holds it and closes it again.
Shows each step, and each message to (->) and from (<-) the PBX. Of NUMBER the
digits, "*" and "#" are dialled.

  --hold SECONDS     how long the call stays before it is closed (5)
  --timeout SECONDS  how long to wait for each answer of the PBX (10)
  --tsp PATH         the provider (velmora.tsp beside velmoractl.exe, else in System32)
  --xml              show the messages in full; the password is masked

The answers are read from the provider's trace log. To switch it on for this run,
dial changes logfile, loglevel and loglength in the registry for a moment: run it
as administrator. Ctrl+C closes the call.

Exit code: 0 the PBX bound the call, 2 wrong command line, 3 the provider cannot be
loaded, 4 a setting is wrong, 5 no connection to the PBX, 6 login refused or not
answered, 7 call refused, 8 call not answered, 9 the answers cannot be seen,
11 encryption failed, 10 no right to read the settings, 1 anything else.
)";

struct DialOptions {
    ByteString digits;
    ByteString path;
    uint32_t holdSeconds = kDefaultHoldSeconds;
    uint32_t timeoutSeconds = kDefaultTimeoutSeconds;
    bool showXml = false;
};

// Reads the command line; gives what is wrong with it as a sentence, else nothing.
ByteString ReadOptions(const Arguments& arguments, DialOptions& options) {
    if (arguments.words.empty()) return "Which NUMBER is to be dialled?";
    if (arguments.words.size() > 1) return "Only one NUMBER can be dialled; put it in quotes if it has spaces.";
    ByteString problem = ReadDigits(arguments.words.front(), options.digits);
    if (problem.empty()) problem = ReadSeconds(arguments, "--hold", options.holdSeconds);
    if (problem.empty()) problem = ReadSeconds(arguments, "--timeout", options.timeoutSeconds);
    if (!problem.empty()) return problem;
    options.path = arguments.Has("--tsp") ? arguments.options.at("--tsp") : DefaultProviderPath();
    options.showXml = arguments.Has("--xml");
    return {};
}

bool EncryptOn() {
    try {
        return ParseInt(EffectiveText("encrypt")) > 0;
    } catch (const std::exception&) {
        return false;  // the provider does not get past this one
    }
}

// One dialled call from the loading of the provider to its shutdown.
class Dial {
public:
    explicit Dial(const DialOptions& dialOptions) : options(dialOptions), session(transcript, dialOptions.showXml) {
        facts.number = options.digits;
        facts.device = EffectiveText("username") + "@" + EffectiveText("domain");
        facts.peer = EffectiveText("address") + ":" + EffectiveText("port");
        facts.encrypted = EncryptOn();
        facts.timeoutSeconds = options.timeoutSeconds;
    }

    ExitCode Run() {
        const Verdict verdict = Judge();
        transcript.End(verdict);
        return verdict.code;
    }

private:
    Verdict Judge() {
        if (const std::optional<Verdict> missing = CheckSettings()) return *missing;
        transcript.Headline("Calling " + facts.number + " as " + Printable(facts.device) + " through the PBX at " +
                            Printable(facts.peer) + (facts.encrypted ? ", encrypted" : ", not encrypted") + "\n");
        const bool done = Start() && LogIn() && PlaceCall() && session.CloseLine();
        const bool closed = session.Shutdown();
        if (Interrupted() && !Answered()) {
            return {ExitCode::kFailed, "FAILED: interrupted before the PBX had answered the call.", {}};
        }
        if (!stopped && !(done && closed)) return session.Failure();
        return JudgeCall(facts, session.Exchange());
    }

    // A call without a PBX to connect to makes no sense, although the provider would try.
    static std::optional<Verdict> CheckSettings() {
        for (const FaultySetting& faulty : FindFaultySettings()) {
            if (faulty.stopsLoading) continue;
            return Verdict{ExitCode::kBadSettings, "FAILED: a setting is wrong: " + faulty.sentence,
                           "Set it with: " + FixCommand(*faulty.rule)};
        }
        return {};
    }

    bool Start() {
        return session.Load(options.path) && session.NegotiateVersion(INITIALIZE_NEGOTIATION) &&
               session.CountDevices() && session.Initialise();
    }

    // False when there is no use in placing a call: the run then stops here in good order.
    bool LogIn() {
        const PbxExchange& exchange = session.Exchange();
        facts.connected = !session.ConnectionFailed();
        facts.logVisible = session.LogVisible();
        if (!facts.connected) return Stop();
        if (!facts.logVisible) {
            session.WaitUntil([] { return false; }, kUnseenLoginWaitMs);
            return true;
        }
        session.WaitUntil([&] { return exchange.login.Settled() || TlsFailed(); }, TimeoutMs());
        facts.tlsFailure = session.TlsFailureSeen();
        if (!exchange.login.Granted()) {
            transcript.Failed(exchange.login.Refused() ? "Login refused" : "Login not answered");
            return Stop();
        }
        transcript.Ok("Logged in: session " + exchange.sessionId);
        // The provider monitors its device from now on. The answer is waited for, so that an error is not taken for the
        // call's; without one the call can be placed all the same.
        if (!session.WaitUntil([&] { return exchange.monitor.Settled(); }, kMonitorWaitMs)) {
            transcript.Note("The PBX has not confirmed the monitoring of the device; the call goes on without");
        }
        return !Interrupted() || Stop();
    }

    bool PlaceCall() {
        ByteString ignored;
        if (!session.NegotiateVersion(0) || !session.ReadDevCaps(ignored) || !session.ReadAddressCaps(ignored) ||
            !session.OpenLine() || !session.MakeCall(options.digits, facts.makeCallCode)) {
            return false;
        }
        facts.callPlaced = facts.makeCallCode == 0;
        if (!facts.callPlaced) return true;
        AwaitAnswer();
        return session.CloseCall() && AwaitClosing();
    }

    void AwaitAnswer() {
        const PbxExchange& exchange = session.Exchange();
        if (facts.logVisible) {
            session.WaitUntil([&] { return exchange.call.Settled() || TlsFailed(); }, TimeoutMs());
            facts.tlsFailure = session.TlsFailureSeen();
            if (!exchange.call.Granted()) {
                transcript.Failed(exchange.call.Refused() ? "Call refused" : "Call not answered");
                return;
            }
            transcript.Ok("Call bound: call " + exchange.callId + " of device " + exchange.deviceId);
        }
        transcript.Note("Holding the call for " + DecimalText(options.holdSeconds) + " s");
        session.WaitUntil([] { return false; }, uint64_t{options.holdSeconds} * 1000);
    }

    bool AwaitClosing() {
        const PbxExchange& exchange = session.Exchange();
        if (!exchange.call.Granted()) return true;
        session.WaitUntil([&] { return exchange.clear.Settled() || TlsFailed(); }, TimeoutMs(),
                          ProviderSession::Patience::kInAnyCase);
        if (exchange.clear.Granted()) {
            transcript.Ok("Call closed");
        } else {
            transcript.Failed(exchange.clear.Refused() ? "Closing refused" : "Closing not confirmed");
        }
        return true;
    }

    // Whether there is something to judge: the answer to the call, or a call whose answer cannot be seen.
    bool Answered() const { return facts.logVisible ? session.Exchange().call.Settled() : facts.callPlaced; }

    bool TlsFailed() const { return !session.TlsFailureSeen().reason.empty(); }

    bool Stop() {
        stopped = true;
        return false;
    }

    uint64_t TimeoutMs() const { return uint64_t{options.timeoutSeconds} * 1000; }

    DialOptions options;
    Transcript transcript;
    ProviderSession session;
    CallFacts facts;
    bool stopped = false;
};

ExitCode Run(const Arguments& arguments) {
    DialOptions options;
    const ByteString problem = ReadOptions(arguments, options);
    if (!problem.empty()) return UsageError("dial", problem);
    return Dial(options).Run();
}

}  // namespace

const Command kDialCommand = {"dial", "places a call and shows what happens", kHelp, kOptions, Run};

}  // namespace velmora::ctl
