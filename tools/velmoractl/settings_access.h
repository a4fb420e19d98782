#pragma once

#include "tools/velmoractl/exit_codes.h"

namespace velmora::ctl {

// Whether this user may read the settings. Without their key there is nothing to read, and the defaults apply.
bool MayReadSettings();

// Says that this user may not: in a line on the error output, or in the JSON object that a script waits for.
ExitCode RefuseSettings(bool asJson);

}  // namespace velmora::ctl
