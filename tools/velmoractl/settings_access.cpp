#include "tools/velmoractl/settings_access.h"

#include <windows.h>

#include "config/registry.h"
#include "tools/velmoractl/console.h"

namespace velmora::ctl {

bool MayReadSettings() {
    HKEY key = nullptr;
    const LSTATUS result = RegOpenKeyExA(HKEY_LOCAL_MACHINE, kRegistryPath, 0, KEY_QUERY_VALUE, &key);
    if (result == ERROR_SUCCESS) RegCloseKey(key);
    if (result != ERROR_ACCESS_DENIED) return true;
    PrintErrorLine(ByteString("velmoractl: this user may not read the settings in HKEY_LOCAL_MACHINE\\") +
                   kRegistryPath + ". Run velmoractl as administrator.");
    return false;
}

}  // namespace velmora::ctl
