#pragma once

#include <windows.h>

namespace velmora::ctl {

// Whether a token (opened with TOKEN_QUERY and TOKEN_DUPLICATE) carries the rights of an administrator. That of an
// administrator who has not consented to use them (User Account Control) does not; the one of the system itself does.
bool IsAdministrator(HANDLE token);

// The same for this process.
bool RunsAsAdministrator();

}  // namespace velmora::ctl
