#include <windows.h>

#include <algorithm>
#include <vector>

#include "config/registry.h"
#include "tools/velmoractl/commands.h"
#include "tools/velmoractl/console.h"
#include "tools/velmoractl/plain_text.h"
#include "tools/velmoractl/provider_host.h"
#include "tools/velmoractl/stored_settings.h"

namespace velmora::ctl {
namespace {

constexpr OptionRule kOptions[] = {{"--tsp", true}, {"--help", false}};

constexpr std::string_view kHelp =
    R"(velmoractl configure [--tsp PATH]

Opens the provider's configuration dialog, the one that the control panel shows under
"Phone and Modem". What is saved there takes effect when the telephony service starts
the next time. Run it as administrator: the settings belong to the whole machine.

  --tsp PATH  the provider (velmora.tsp beside velmoractl.exe, else in System32)

Exit code: 0 the dialog was closed, 2 wrong command line, 3 the provider cannot be
loaded, 4 a stored setting keeps the dialog from opening, 10 no right to read
or save them, 1 anything else.
)";

constexpr DWORD kPermanentProviderId = 1;  // any number would do

bool CanOpen(const char* path, REGSAM rights, LSTATUS& result) {
    HKEY key = nullptr;
    result = RegOpenKeyExA(HKEY_LOCAL_MACHINE, path, 0, rights, &key);
    if (result == ERROR_SUCCESS) RegCloseKey(key);
    return result == ERROR_SUCCESS;
}

// The dialog does not say when it cannot save, so the right to is looked at before it opens.
bool CanSave() {
    LSTATUS result = ERROR_SUCCESS;
    if (CanOpen(kRegistryPath, KEY_ALL_ACCESS, result)) return true;
    return result == ERROR_FILE_NOT_FOUND && CanOpen("SOFTWARE", KEY_CREATE_SUB_KEY, result);
}

// A stored number that is none would keep the dialog from loading the settings.
bool SettingsLoad() {
    const std::vector<FaultySetting> faulty = FindFaultySettings();
    const auto fatal = std::ranges::find_if(faulty, &FaultySetting::stopsLoading);
    if (fatal == faulty.end()) return true;
    PrintErrorLine("velmoractl: the dialog cannot open: " + fatal->sentence);
    PrintErrorLine("Mend it with: " + FixCommand(*fatal->rule));
    return false;
}

ExitCode ShowDialog(const ByteString& path) {
    ProviderHost provider;
    const ByteString problem = provider.Load(path);
    if (!problem.empty()) {
        PrintErrorLine("velmoractl: " + problem);
        PrintErrorLine("Name the provider with --tsp, or put velmora.tsp beside velmoractl.exe.");
        return ExitCode::kNotLoaded;
    }
    const ProviderResult result =
        CallProvider([&] { return provider.providerConfig(nullptr, nullptr, kPermanentProviderId); });
    if (result.Good()) return ExitCode::kDone;
    PrintErrorLine("velmoractl: nothing was saved: " + (result.Threw() ? result.thrown : "the dialog did not open"));
    PrintErrorLine("The port has to be a number: 443, for one.");
    return ExitCode::kFailed;
}

ExitCode Run(const Arguments& arguments) {
    if (!arguments.words.empty()) {
        return UsageError("configure", "configure takes no \"" + Printable(arguments.words[0]) + "\".");
    }
    if (!SettingsLoad()) return ExitCode::kBadSettings;
    if (!CanSave()) {
        PrintErrorLine("velmoractl: this user may not change the settings. Run velmoractl as administrator.");
        return ExitCode::kRegistry;
    }
    return ShowDialog(arguments.Has("--tsp") ? arguments.options.at("--tsp") : DefaultProviderPath());
}

}  // namespace

const Command kConfigureCommand = {"configure", "opens the configuration dialog", kHelp, kOptions, Run};

}  // namespace velmora::ctl
