#include "tools/velmoractl/call_options.h"
#include "tools/velmoractl/commands.h"
#include "tools/velmoractl/console.h"
#include "tools/velmoractl/pbx_check.h"
#include "tools/velmoractl/plain_text.h"

namespace velmora::ctl {
namespace {

constexpr uint32_t kDefaultTimeoutSeconds = 10;
constexpr size_t kMarkWidth = 4;

constexpr OptionRule kOptions[] = {{"--dial", true}, {"--timeout", true}, {"--json", false}, {"--help", false}};

constexpr std::string_view kHelp =
    R"(velmoractl check [--dial NUMBER] [--timeout SECONDS] [--json]

Finds out what is wrong between this PC and the PBX, step by step, with the settings
in the registry and the provider's own code, but without the provider itself: it need
not be installed. Nothing is changed, and no administrator is needed. Each step shows
how long it took; the steps behind one that failed are not tried.

  settings    each setting is there and well-formed
  address     the PBX's host name has an address
  connection  the PBX's port takes the connection
  encryption  TLS is set up, when it is on
  login       the PBX accepts user and password
  monitoring  the PBX monitors the user's device, as the provider asks it to
  call        the PBX calls NUMBER from the user's phone (with --dial)
  clearing    and ends the call again

  --dial NUMBER      place a call and end it at once; the phone rings for a moment.
                     Of NUMBER the digits, "*" and "#" are dialled
  --timeout SECONDS  how long to wait for each answer of the PBX (10)
  --json             print one JSON object instead: result, exitCode, sentence, advice,
                     facts, steps (name, state, milliseconds, sentence, notes)

Exit code: 0 all is well, 2 wrong command line, 4 a setting is wrong, 12 the name has no
address, 5 no connection to the PBX, 11 no TLS with it, 6 login refused or not answered,
13 monitoring refused or not answered, 7 call refused, 8 call not answered, 14 call not
cleared, 10 no right to read the settings, 1 interrupted.
)";

struct CheckOptions {
    ByteString digits;
    uint32_t timeoutSeconds = kDefaultTimeoutSeconds;
    bool json = false;
};

// Reads the command line; gives what is wrong with it as a sentence, else nothing.
ByteString ReadOptions(const Arguments& arguments, CheckOptions& options) {
    if (!arguments.words.empty()) return "check takes no \"" + Printable(arguments.words[0]) + "\".";
    options.json = arguments.Has("--json");
    ByteString problem = ReadSeconds(arguments, "--timeout", options.timeoutSeconds);
    if (problem.empty() && arguments.Has("--dial")) {
        problem = ReadDigits(arguments.options.at("--dial"), options.digits);
    }
    return problem;
}

Ink InkOf(StepState state) {
    switch (state) {
        case StepState::kOk:
            return Ink::kGood;
        case StepState::kFailed:
            return Ink::kBad;
        default:
            return Ink::kFaint;
    }
}

void PrintStep(const CheckStep& step) {
    Print(Padded(StepMark(step.state), kMarkWidth), InkOf(step.state));
    Print(StepText(step));
}

void PrintVerdict(const Verdict& verdict) {
    Print("\n");
    if (!verdict.advice.empty()) Print(Printable(verdict.advice) + "\n");
    Print(Printable(verdict.sentence) + "\n", verdict.code == ExitCode::kDone ? Ink::kGood : Ink::kBad);
}

ExitCode Run(const Arguments& arguments) {
    CheckOptions options;
    const ByteString problem = ReadOptions(arguments, options);
    if (!problem.empty()) return UsageError("check", problem);

    PbxCheck check(options.digits, options.timeoutSeconds, [&](const CheckStep& step) {
        if (!options.json) PrintStep(step);
    });
    const CheckReport& report = check.Run();
    const Verdict verdict = JudgeCheck(report);
    if (options.json) {
        Print(CheckJson(report));
    } else {
        PrintVerdict(verdict);
    }
    return verdict.code;
}

}  // namespace

const Command kCheckCommand = {"check", "finds out what is wrong on the way to the PBX", kHelp, kOptions, Run};

}  // namespace velmora::ctl
