#include "config/trace_log.h"

#include <gtest/gtest.h>

#include "config/settings.h"
#include "tests/support/hand_clock.h"
#include "tests/support/log_file_fake.h"

namespace velmora {
namespace {

// As WriteLog writes it; the text mode of a log file on disk makes it CR CR LF.
constexpr char kLineEnd[] = "\r\n";

TEST(FormatLogRecord, WritesTimeLevelAndText) {
    const uint64_t elapsedMs = ((1 * 60 + 2) * 60 + 3) * 1000 + 4;
    EXPECT_EQ(FormatLogRecord(elapsedMs, 5, "TSPI_lineOpen", ""), "[1:02:03:004]:5 TSPI_lineOpen\r\n");
}

TEST(FormatLogRecord, DoesNotTurnHoursIntoDays) {
    EXPECT_EQ(FormatLogRecord(90061001, 0, "x", ""), "[25:01:01:001]:0 x\r\n");
    EXPECT_EQ(FormatLogRecord(uint64_t{3600000} * 12345, 0, "x", ""), "[12345:00:00:000]:0 x\r\n");
}

TEST(FormatLogRecord, StartsAtZeroAndEndsEachUnitBelowTheNext) {
    EXPECT_EQ(FormatLogRecord(0, 1, "", ""), "[0:00:00:000]:1 \r\n");
    EXPECT_EQ(FormatLogRecord(3599999, 1, "", ""), "[0:59:59:999]:1 \r\n");
}

TEST(FormatLogRecord, WritesANegativeLevel) {
    EXPECT_EQ(FormatLogRecord(0, -3, "x", ""), "[0:00:00:000]:-3 x\r\n");
}

TEST(FormatLogRecord, JoinsTextAndDetail) {
    EXPECT_EQ(FormatLogRecord(0, 5, "CSTA Tx: ", "<a/>"), "[0:00:00:000]:5 CSTA Tx: <a/>\r\n");
}

TEST(FormatLogRecord, EndsAtTheFirstNul) {
    EXPECT_EQ(FormatLogRecord(0, 5, std::string_view("ab\0cd", 5), "ef"), "[0:00:00:000]:5 ab\r\n");
    EXPECT_EQ(FormatLogRecord(0, 5, "ab", std::string_view("ef\0gh", 5)), "[0:00:00:000]:5 abef\r\n");
}

// The log's state lives as long as the process, so its life is told in one test, in the order in which a service
// meets it.
TEST(WriteLog, KeepsItsRulesFromTheFirstCallToTheLastRecord) {
    settings = {};
    settings.loglevel = 5;
    settings.loglength = 4;

    // The first call fixes the time base, although no path is set; it opens nothing and counts nothing.
    WriteLog(0, "before the settings are loaded");
    handClockMs += 1500;
    EXPECT_EQ(logFileOpenings, 0);

    // A record above the threshold opens nothing either.
    settings.logfile = "unwritable";
    WriteLog(6, "above the threshold");
    EXPECT_EQ(logFileOpenings, 0);

    // A file that cannot be opened drops the record without counting it; the next record tries again.
    WriteLog(5, "no file");
    EXPECT_EQ(logFileOpenings, 1);
    settings.logfile = "trace.log";
    WriteLog(5, "at the threshold");
    EXPECT_EQ(logFileOpenings, 2);
    EXPECT_EQ(logFilePath, "trace.log");
    const ByteString first = ByteString("[0:00:01:500]:5 at the threshold") + kLineEnd;
    EXPECT_EQ(WrittenLog(), first);

    // Above the threshold: dropped, not counted. A negative threshold silences even level 0.
    WriteLog(6, "above the threshold");
    settings.loglevel = -1;
    WriteLog(0, "silenced");
    EXPECT_EQ(WrittenLog(), first);

    // A new path changes nothing once the file is open; a new level does.
    settings.loglevel = 1;
    settings.logfile = "elsewhere.log";
    handClockMs += 1;
    WriteLog(1, "one and ", "more");
    const ByteString second = first + "[0:00:01:501]:1 one and more" + kLineEnd;
    EXPECT_EQ(WrittenLog(), second);
    EXPECT_EQ(logFileOpenings, 2);

    // Two records more fill the length of four; the fifth is dropped.
    WriteLog(-5, "three");
    WriteLog(1, "four");
    const ByteString fourth = second + "[0:00:01:501]:-5 three" + kLineEnd + "[0:00:01:501]:1 four" + kLineEnd;
    EXPECT_EQ(WrittenLog(), fourth);
    WriteLog(1, "five");
    EXPECT_EQ(WrittenLog(), fourth);

    // Dropped records count too: after "five", a length of six leaves room for one record, not two.
    settings.loglength = 6;
    WriteLog(1, "six");
    WriteLog(1, "seven");
    EXPECT_EQ(WrittenLog(), fourth + "[0:00:01:501]:1 six" + kLineEnd);
}

}  // namespace
}  // namespace velmora
