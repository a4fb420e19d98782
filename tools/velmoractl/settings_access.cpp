#include "tools/velmoractl/settings_access.h"

#include <windows.h>

#include "config/registry.h"
#include "tools/velmoractl/console.h"
#include "tools/velmoractl/verdict_json.h"

namespace velmora::ctl {

bool MayReadSettings() {
    HKEY key = nullptr;
    const LSTATUS result = RegOpenKeyExA(HKEY_LOCAL_MACHINE, kRegistryPath, 0, KEY_QUERY_VALUE, &key);
    if (result == ERROR_SUCCESS) RegCloseKey(key);
    return result != ERROR_ACCESS_DENIED;
}

ExitCode RefuseSettings(bool asJson) {
    const ByteString problem =
        ByteString("this user may not read the settings in HKEY_LOCAL_MACHINE\\") + kRegistryPath + ".";
    const ByteString advice = "Run velmoractl as administrator.";
    if (asJson) {
        Print(VerdictJson({ExitCode::kRegistry, "FAILED: " + problem, advice}).Text() + "\n");
    } else {
        PrintErrorLine("velmoractl: " + problem + " " + advice);
    }
    return ExitCode::kRegistry;
}

}  // namespace velmora::ctl
