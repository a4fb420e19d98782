#include <windows.h>

#include "config/text_numbers.h"
#include "tools/velmoractl/administrator.h"
#include "tools/velmoractl/commands.h"
#include "tools/velmoractl/console.h"
#include "tools/velmoractl/file_places.h"
#include "tools/velmoractl/installed_provider.h"
#include "tools/velmoractl/plain_text.h"
#include "tools/velmoractl/provider_host.h"
#include "tools/velmoractl/tapi_error.h"
#include "tools/velmoractl/tapi_library.h"

namespace velmora::ctl {
namespace {

constexpr OptionRule kInstallOptions[] = {{"--copy", false}, {"--quiet", false}, {"--help", false}};
constexpr OptionRule kRemoveOptions[] = {{"--quiet", false}, {"--help", false}};

constexpr std::string_view kInstallHelp =
    R"(velmoractl install [--copy] [--quiet]

Adds the provider to Windows' telephony (TAPI). velmora.tsp has to be in System32. When
TAPI knows it already, nothing is changed. Run it as administrator. Settings are not
touched. velmoractl status shows the result.

  --copy   first put the velmora.tsp that lies beside velmoractl.exe into System32, in
           the place of one that is there
  --quiet  print nothing but errors

Exit code: 0 TAPI knows the provider, 2 wrong command line, 15 no administrator rights,
16 velmora.tsp is not in System32, 17 it is not a 64-bit library, 20 TAPI did not take
it, 1 anything else.
)";

constexpr std::string_view kRemoveHelp =
    R"(velmoractl remove [--quiet]

Removes the provider from Windows' telephony (TAPI), as often as it is there. When TAPI
does not know it, nothing is changed. Run it as administrator. velmora.tsp stays where it
is, and so do the settings.

  --quiet  print nothing but errors

Exit code: 0 TAPI does not know the provider (any more), 2 wrong command line, 15 no
administrator rights, 20 TAPI did not remove it, 1 anything else.
)";

constexpr wchar_t kProviderName[] = L"velmora.tsp";  // TAPI looks for it in System32

const char* const kAskStatus = "See whether the telephony service can run: velmoractl status";

const char* const kRestart =
    "A running telephony service has to be restarted for that:\n"
    "  net stop tapisrv\n"
    "  net start tapisrv\n";

ExitCode Fail(ExitCode code, const ByteString& problem, const ByteString& advice = {}) {
    PrintErrorLine("velmoractl: " + Printable(problem));
    if (!advice.empty()) PrintErrorLine(Printable(advice));
    return code;
}

// What a command prints when it is not to be quiet.
class Report {
public:
    explicit Report(const Arguments& arguments) : quiet(arguments.Has("--quiet")) {}

    void Say(const ByteString& text) const {
        if (!quiet) Print(text);
    }

private:
    bool quiet;
};

ExitCode CopyProvider(const Report& report) {
    const ByteString from = FolderOfThisProgram() + kProviderFileName;
    const ByteString to = InstalledProviderPath();
    if (!FileExists(from)) return Fail(ExitCode::kNotInstalled, from + " is not there.");
    if (CopyFileA(from.c_str(), to.c_str(), FALSE) == 0) {
        const DWORD error = GetLastError();
        const bool inUse = error == ERROR_SHARING_VIOLATION || error == ERROR_USER_MAPPED_FILE;
        if (inUse) return Fail(ExitCode::kFailed, to + " is in use.", "Stop its user first: net stop tapisrv");
        return Fail(ExitCode::kFailed,
                    from + " cannot be copied to " + to + ": Windows error " + DecimalText(error) + ".");
    }
    report.Say("Copied to " + to + ".\n");
    return ExitCode::kDone;
}

// Whether the file is there and can be loaded by the telephony service.
ExitCode CheckFile() {
    const ByteString path = InstalledProviderPath();
    if (!FileExists(path)) {
        return Fail(ExitCode::kNotInstalled, path + " is not there.",
                    "Copy velmora.tsp there, let velmoractl install --copy do it, or use the installer.");
    }
    const std::optional<PeHeader> header = PeHeaderOf(path);
    if (!header || !header->IsLibraryFor64Bit()) {
        return Fail(ExitCode::kNot64Bit, path + " is not a 64-bit library: the telephony service could not load it.");
    }
    return ExitCode::kDone;
}

ExitCode AddProvider(const Report& report) {
    TapiLibrary tapi;
    const ByteString problem = tapi.Load();
    if (!problem.empty()) return Fail(ExitCode::kFailed, problem);
    // No window: the provider asks nothing when it is added.
    DWORD id = 0;
    const auto code = static_cast<uint32_t>(tapi.lineAddProviderW(kProviderName, nullptr, &id));
    if (code != 0) {
        return Fail(ExitCode::kTapiRefused, "TAPI did not add velmora.tsp: " + TapiErrorText(code) + ".", kAskStatus);
    }
    report.Say("Added velmora.tsp to TAPI, with the permanent ID " + DecimalText(id) + ".\n");
    report.Say(kRestart);
    return ExitCode::kDone;
}

ExitCode Install(const Arguments& arguments) {
    if (!arguments.words.empty()) {
        return UsageError("install", "install takes no \"" + Printable(arguments.words[0]) + "\".");
    }
    const Report report(arguments);
    const bool copies = arguments.Has("--copy");
    const std::vector<uint32_t> ids = RegisteredProviderIds();
    if ((copies || ids.empty()) && !RunsAsAdministrator()) {
        return Fail(ExitCode::kNotAdministrator, "Only an administrator can add a provider. Nothing is changed.",
                    "Run velmoractl as administrator.");
    }
    ExitCode code = copies ? CopyProvider(report) : ExitCode::kDone;
    if (code == ExitCode::kDone) code = CheckFile();
    if (code != ExitCode::kDone) return code;
    if (ids.empty()) return AddProvider(report);
    report.Say("TAPI knows velmora.tsp already, with the permanent ID " + DecimalText(ids.front()) + ".\n");
    return ExitCode::kDone;
}

ExitCode RemoveProvider(const std::vector<uint32_t>& ids, const Report& report) {
    TapiLibrary tapi;
    const ByteString problem = tapi.Load();
    if (!problem.empty()) return Fail(ExitCode::kFailed, problem);
    ExitCode outcome = ExitCode::kDone;
    for (const uint32_t id : ids) {
        const auto code = static_cast<uint32_t>(tapi.lineRemoveProvider(id, nullptr));
        if (code == 0) {
            report.Say("Removed velmora.tsp, permanent ID " + DecimalText(id) + ", from TAPI.\n");
        } else {
            outcome = Fail(
                ExitCode::kTapiRefused,
                "TAPI did not remove velmora.tsp, permanent ID " + DecimalText(id) + ": " + TapiErrorText(code) + ".",
                kAskStatus);
        }
    }
    if (outcome == ExitCode::kDone) report.Say(kRestart);
    return outcome;
}

ExitCode Remove(const Arguments& arguments) {
    if (!arguments.words.empty()) {
        return UsageError("remove", "remove takes no \"" + Printable(arguments.words[0]) + "\".");
    }
    const Report report(arguments);
    const std::vector<uint32_t> ids = RegisteredProviderIds();
    if (ids.empty()) {
        report.Say("TAPI does not know velmora.tsp. Nothing is changed.\n");
        return ExitCode::kDone;
    }
    if (!RunsAsAdministrator()) {
        return Fail(ExitCode::kNotAdministrator, "Only an administrator can remove a provider. Nothing is changed.",
                    "Run velmoractl as administrator.");
    }
    return RemoveProvider(ids, report);
}

}  // namespace

const Command kInstallCommand = {"install", "adds the provider to TAPI", kInstallHelp, kInstallOptions, Install, false};
const Command kRemoveCommand = {"remove", "removes the provider from TAPI", kRemoveHelp, kRemoveOptions, Remove, false};

}  // namespace velmora::ctl
