#include "tools/velmoractl/verdict_json.h"

namespace velmora::ctl {

JsonObject VerdictJson(const Verdict& verdict) {
    JsonObject json;
    json.AddText("result", verdict.code == ExitCode::kDone ? "ok" : "failed")
        .Add("exitCode", JsonNumber(static_cast<int>(verdict.code)))
        .AddText("sentence", verdict.sentence)
        .AddText("advice", verdict.advice);
    return json;
}

}  // namespace velmora::ctl
