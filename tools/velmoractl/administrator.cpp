#include "tools/velmoractl/administrator.h"

namespace velmora::ctl {

bool IsAdministrator(HANDLE token) {
    BYTE group[SECURITY_MAX_SID_SIZE];
    DWORD groupBytes = sizeof(group);
    if (CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, group, &groupBytes) == 0) return false;
    // The system answers for tokens that stand for a user, which that of a process does not.
    HANDLE asked = nullptr;
    if (DuplicateToken(token, SecurityIdentification, &asked) == 0) return false;
    BOOL member = FALSE;
    const bool known = CheckTokenMembership(asked, group, &member) != 0;
    CloseHandle(asked);
    return known && member != 0;
}

bool RunsAsAdministrator() {
    HANDLE token = nullptr;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY | TOKEN_DUPLICATE, &token) == 0) return false;
    const bool administrator = IsAdministrator(token);
    CloseHandle(token);
    return administrator;
}

}  // namespace velmora::ctl
