#include <gtest/gtest.h>

#include <limits>

#include "config/settings.h"
#include "config/trace_log.h"
#include "tests/support/hand_clock.h"
#include "tests/support/log_file_fake.h"

namespace velmora {
namespace {

// The only test that writes a log record in this process: it has to be the first to do so.
TEST(LogsLevel, TakesTheTimeLikeAFirstLogRecord) {
    settings = {};
    settings.logfile = "trace.log";
    EXPECT_FALSE(LogsLevel(9));
    EXPECT_EQ(logFileOpenings, 0);

    handClockMs += 1500;
    EXPECT_TRUE(LogsLevel(0));
    WriteLog(0, "later");
    EXPECT_EQ(WrittenLog(), "[0:00:01:500]:0 later\r\n");
}

TEST(LogsLevel, PassesTheThresholdAndWhatIsBelow) {
    settings.loglevel = 5;
    EXPECT_TRUE(LogsLevel(std::numeric_limits<int32_t>::min()));
    EXPECT_TRUE(LogsLevel(-1));
    EXPECT_TRUE(LogsLevel(5));
    EXPECT_FALSE(LogsLevel(6));
    EXPECT_FALSE(LogsLevel(std::numeric_limits<int32_t>::max()));
    settings.loglevel = -1;
    EXPECT_FALSE(LogsLevel(0));
}

}  // namespace
}  // namespace velmora
