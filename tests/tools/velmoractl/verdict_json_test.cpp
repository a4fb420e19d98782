#include "tools/velmoractl/verdict_json.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace velmora::ctl {
namespace {

using Json = nlohmann::json;

TEST(VerdictJsonTest, TellsAFailureWithItsCodeAndAdvice) {
    const Json json = Json::parse(VerdictJson({ExitCode::kRegistry, "FAILED: no \"right\".", "Ask."}).Text());
    EXPECT_EQ(
        json,
        (Json{{"result", "failed"}, {"exitCode", 10}, {"sentence", "FAILED: no \"right\"."}, {"advice", "Ask."}}));
}

TEST(VerdictJsonTest, TakesWhatACommandAdds) {
    const Json json =
        Json::parse(VerdictJson({ExitCode::kDone, "OK: all is well.", {}}).AddText("more", "facts").Text());
    EXPECT_EQ(
        json,
        (Json{{"result", "ok"}, {"exitCode", 0}, {"sentence", "OK: all is well."}, {"advice", ""}, {"more", "facts"}}));
}

}  // namespace
}  // namespace velmora::ctl
