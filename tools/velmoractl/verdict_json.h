#pragma once

#include "tools/velmoractl/json_text.h"
#include "tools/velmoractl/verdict.h"

namespace velmora::ctl {

// What every answer to --json begins with: result (ok, failed), exitCode, sentence, advice. What a command has found
// out is added behind them.
JsonObject VerdictJson(const Verdict& verdict);

}  // namespace velmora::ctl
