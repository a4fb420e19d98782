#include "packaging/setup_actions/setup_actions.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "config/registry.h"
#include "config/text_numbers.h"
#include "packaging/setup_actions/given_properties.h"
#include "packaging/setup_actions/installer_session.h"
#include "packaging/setup_actions/program_run.h"
#include "packaging/setup_actions/setting_list.h"
#include "tools/velmoractl/setting_rules.h"

namespace velmora::setup {
namespace {

constexpr char kActionData[] = "CustomActionData";

// Not if somebody has closed the key to ordinary users: an immediate action has no more rights than the user has
// without elevation. A key that is missing counts as one that can be read.
bool CanReadSettings() {
    HKEY key = nullptr;
    const LSTATUS result = RegOpenKeyExA(HKEY_LOCAL_MACHINE, kRegistryPath, 0, KEY_QUERY_VALUE, &key);
    if (result == ERROR_SUCCESS) RegCloseKey(key);
    return result != ERROR_ACCESS_DENIED;
}

// What the registry holds now, for a roll-back.
SettingChange CurrentSetting(const ByteString& name) {
    const RegistryValue value = ReadRegistryValue(name);
    if (value.status != RegistryStatus::kDone) return {name, {}};
    return {name, value.bytes.substr(0, value.bytes.find('\0'))};
}

bool DeleteSetting(const ByteString& name) {
    const LSTATUS result = RegDeleteKeyValueA(HKEY_LOCAL_MACHINE, kRegistryPath, name.c_str());
    return result == ERROR_SUCCESS || result == ERROR_FILE_NOT_FOUND;
}

bool Apply(const SettingChange& change) {
    if (!change.value) return DeleteSetting(change.name);
    return WriteRegistryValue(change.name, *change.value) == RegistryStatus::kDone;
}

void LogLines(MSIHANDLE installation, std::string_view text) {
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find_first_of("\r\n"));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (!line.empty()) LogLine(installation, ByteString(line));
    }
}

// Runs velmoractl, whose path is the action's data. What it prints goes to the log.
bool RunVelmoractl(MSIHANDLE installation, const ByteString& arguments) {
    const ByteString path = ReadProperty(installation, kActionData);
    const ByteString command = "\"" + path + "\" " + arguments;
    const ProgramRun run = RunProgram(path, arguments);
    if (!run.started) {
        LogLine(installation, command + " has not started: error " + DecimalText(run.exitCode) + " of Windows.");
        return false;
    }
    LogLines(installation, run.output);
    LogLine(installation, command + " has ended with exit code " + DecimalText(run.exitCode) + ".");
    return run.exitCode == 0;
}

}  // namespace
}  // namespace velmora::setup

using namespace velmora;
using namespace velmora::setup;

UINT __stdcall PlanSettings(MSIHANDLE installation) {
    std::vector<SettingChange> wanted;
    std::vector<SettingChange> replaced;
    for (const GivenProperty& given : ReadGivenProperties(installation)) {
        const ctl::CheckedSetting checked = ctl::CheckSetting(*ctl::FindSettingRule(given.setting), given.value);
        if (!checked.error.empty()) {
            // An error may quote the value; no rule refuses a password for anything that would be quoted.
            ShowError(installation, "The property " + given.property + " is wrong: " + checked.error);
            return ERROR_INSTALL_FAILURE;
        }
        wanted.push_back({given.setting, checked.stored});
        replaced.push_back(CurrentSetting(given.setting));
        LogLine(installation, given.property + " is given and will be stored.");
    }
    if (!CanReadSettings()) {
        // Else a roll-back would delete what it takes for missing.
        LogLine(installation, "The settings cannot be read; a roll-back will leave those that are given.");
        replaced.clear();
    }
    WriteProperty(installation, "PASSWORD", "");
    WriteProperty(installation, "StoreSettings", EncodeChanges(wanted));
    WriteProperty(installation, "RestoreSettings", EncodeChanges(replaced));
    return ERROR_SUCCESS;
}

UINT __stdcall StoreSettings(MSIHANDLE installation) {
    for (const SettingChange& change : DecodeChanges(ReadProperty(installation, kActionData))) {
        if (Apply(change)) continue;
        ShowError(installation,
                  "The setting " + change.name + " cannot be written to HKEY_LOCAL_MACHINE\\" + kRegistryPath + ".");
        return ERROR_INSTALL_FAILURE;
    }
    return ERROR_SUCCESS;
}

UINT __stdcall RemoveSettings(MSIHANDLE installation) {
    const LSTATUS result = RegDeleteTreeA(HKEY_LOCAL_MACHINE, kRegistryPath);
    // The key above goes too if nobody else keeps anything there.
    RegDeleteKeyA(HKEY_LOCAL_MACHINE, R"(SOFTWARE\velmora)");
    LogLine(installation, result == ERROR_SUCCESS ? "The settings are removed." : "There are no settings to remove.");
    return ERROR_SUCCESS;
}

UINT __stdcall RegisterProvider(MSIHANDLE installation) {
    if (RunVelmoractl(installation, "install --quiet")) return ERROR_SUCCESS;
    ShowError(installation,
              "The provider cannot be registered with the telephony service; the installation is undone. "
              "The installer's log says why (msiexec /l*v FILE).");
    return ERROR_INSTALL_FAILURE;
}

UINT __stdcall UnregisterProvider(MSIHANDLE installation) {
    if (!RunVelmoractl(installation, "remove --quiet")) LogLine(installation, "The provider may still be registered.");
    return ERROR_SUCCESS;
}
