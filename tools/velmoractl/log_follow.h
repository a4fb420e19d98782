#pragma once

#include "config/byte_string.h"
#include "tools/velmoractl/exit_codes.h"

namespace velmora::ctl {

// Shows the trace log while the provider writes it, up to a level, from the next start of the telephony service until
// Ctrl+C; the registry is then as it was before. brief leaves the XML of messages out.
ExitCode FollowLog(int32_t level, bool brief);

}  // namespace velmora::ctl
