#include "tools/velmoractl/commands.h"
#include "tools/velmoractl/console.h"
#include "tools/velmoractl/install_report.h"
#include "tools/velmoractl/installed_provider.h"
#include "tools/velmoractl/plain_text.h"

namespace velmora::ctl {
namespace {

constexpr OptionRule kOptions[] = {{"--json", false}, {"--help", false}};

constexpr std::string_view kHelp =
    R"(velmoractl status [--json]

Says whether the provider is ready on this PC. Nothing is changed, nobody is called, and
no administrator is needed.

  file      velmora.tsp in System32, its version, and whether it is 64-bit
  TAPI      whether TAPI knows the provider, and its permanent ID there
  service   the telephony service (TapiSrv)
  settings  the PBX, the user and the encryption that are set

  --json  print one JSON object instead: result, exitCode, sentence, advice, file, tapi,
          service (running, stopped, changing, disabled, missing, unknown), settings

Exit code: 0 ready, 2 wrong command line, 16 velmora.tsp is not in System32, 17 it is not
a 64-bit library, 18 TAPI does not know it, 19 the telephony service is not there or is
disabled, 4 a setting is missing or wrong, 10 no right to read them. A stopped telephony
service is no fault: it starts when it is needed.
)";

ExitCode Run(const Arguments& arguments) {
    if (!arguments.words.empty()) {
        return UsageError("status", "status takes no \"" + Printable(arguments.words[0]) + "\".");
    }
    const InstallFacts facts = ReadInstallFacts();
    const Verdict verdict = JudgeInstall(facts);
    if (arguments.Has("--json")) {
        Print(InstallJson(facts));
        return verdict.code;
    }
    Print(InstallText(facts) + "\n");
    if (!verdict.advice.empty()) Print(Printable(verdict.advice) + "\n");
    Print(Printable(verdict.sentence) + "\n", verdict.code == ExitCode::kDone ? Ink::kGood : Ink::kBad);
    return verdict.code;
}

}  // namespace

const Command kStatusCommand = {"status", "says whether the provider is ready on this PC", kHelp, kOptions, Run};

}  // namespace velmora::ctl
