#include "tools/velmoractl/trace_log_reader.h"

#include <gtest/gtest.h>

#include <optional>
#include <vector>

namespace velmora::ctl {

namespace {

const ByteString kMakeCall =
    "[0:00:01:250]:5 CSTA Tx: <?xml version=\"1.0\"?>\r\r\n<MakeCall>\r\r\n<a>1</a>\r\r\n</MakeCall>\r\r\n\r\r\n";
const LogRecord kMakeCallRecord = {1250, 5,
                                   "CSTA Tx: <?xml version=\"1.0\"?>\r\n<MakeCall>\r\n<a>1</a>\r\n</MakeCall>\r\n"};

std::vector<LogRecord> TakeAll(TraceLogReader& reader) {
    std::vector<LogRecord> records;
    while (const std::optional<LogRecord> record = reader.Next()) records.push_back(*record);
    return records;
}

std::vector<LogRecord> Read(const ByteString& log) {
    TraceLogReader reader;
    reader.Append(log);
    return TakeAll(reader);
}

TEST(TraceLogReader, ReadsTimeLevelAndText) {
    EXPECT_EQ(Read("[1:02:03:004]:5 TSPI_lineOpen\r\r\n"), (std::vector<LogRecord>{{3723004, 5, "TSPI_lineOpen"}}));
}

TEST(TraceLogReader, ReadsMoreHoursThanADayHas) {
    EXPECT_EQ(Read("[25:01:01:001]:1 x\r\r\n"), (std::vector<LogRecord>{{90061001, 1, "x"}}));
}

TEST(TraceLogReader, ReadsANegativeLevelAndAnEmptyText) {
    EXPECT_EQ(Read("[0:00:00:000]:-1 \r\r\n"), (std::vector<LogRecord>{{0, -1, ""}}));
}

TEST(TraceLogReader, KeepsTheLinesOfAMessageInOneRecord) {
    EXPECT_EQ(Read(kMakeCall), (std::vector<LogRecord>{kMakeCallRecord}));
}

// A message that is given as soon as it is closed lacks the white space that comes behind it.
std::vector<LogRecord> WithoutSpaceAtTheEnd(std::vector<LogRecord> records) {
    for (LogRecord& record : records) record.text.erase(record.text.find_last_not_of("\r\n") + 1);
    return records;
}

TEST(TraceLogReader, ReadsTheSameRecordsWhereverTheLogIsSplit) {
    const ByteString log = "[0:00:00:000]:1 one\r\r\n" + kMakeCall + "[0:00:02:000]:5 two\r\r\n" + kMakeCall;
    const std::vector<LogRecord> expected = {{0, 1, "one"}, kMakeCallRecord, {2000, 5, "two"}, kMakeCallRecord};
    for (size_t split = 0; split <= log.size(); ++split) {
        SCOPED_TRACE(split);
        TraceLogReader reader;
        reader.Append(log.substr(0, split));
        std::vector<LogRecord> records = TakeAll(reader);
        reader.Append(log.substr(split));
        for (const LogRecord& record : TakeAll(reader)) records.push_back(record);
        EXPECT_EQ(WithoutSpaceAtTheEnd(records), WithoutSpaceAtTheEnd(expected));
    }
}

TEST(TraceLogReader, GivesTheLastRecordOnlyWhenItsMessageIsClosed) {
    TraceLogReader reader;
    reader.Append("[0:00:00:000]:5 CSTA Rx: <MakeCallResponse>\r\r\n<callingDevice>\r\r\n");
    EXPECT_EQ(reader.Next(), std::nullopt);
    reader.Append("</callingDevice></MakeCallResponse>\r\r\n");
    EXPECT_NE(reader.Next(), std::nullopt);
}

TEST(TraceLogReader, GivesAMessageThatNeverClosesWhenTheNextRecordBegins) {
    EXPECT_EQ(Read("[0:00:00:000]:5 CSTA Rx: <a>\r\r\n[0:00:00:001]:5 x\r\r\n"),
              (std::vector<LogRecord>{{0, 5, "CSTA Rx: <a>"}, {1, 5, "x"}}));
}

TEST(TraceLogReader, GivesWhatIsLeftAtTheEndOfALog) {
    TraceLogReader reader;
    reader.Append("[0:00:00:007]:5 CSTA Rx: <a>");
    EXPECT_EQ(reader.Next(), std::nullopt);
    EXPECT_EQ(reader.Rest(), (LogRecord{7, 5, "CSTA Rx: <a>"}));
    EXPECT_EQ(reader.Rest(), std::nullopt);
}

TEST(TraceLogReader, PassesOverBytesBeforeTheFirstHead) {
    EXPECT_EQ(Read("tail of a record</a>\r\r\n\r\r\n[0:00:00:001]:5 x\r\r\n"), (std::vector<LogRecord>{{1, 5, "x"}}));
}

TEST(TraceLogReader, TakesNoHeadInTheMiddleOfALine) {
    EXPECT_EQ(Read("[0:00:00:001]:5 see [0:00:00:002]:5 x\r\r\n"),
              (std::vector<LogRecord>{{1, 5, "see [0:00:00:002]:5 x"}}));
}

TEST(TraceLogReader, TakesNothingThatOnlyResemblesAHead) {
    for (const char* line : {"[0:00:00]:5 x", "[0:00:00:001] 5 x", "[a:00:00:001]:5 x", "0:00:00:001]:5 x",
                             "[0:00:00:001]:x", "[0:00:00:001]:5", "[-1:00:00:001]:5 x"}) {
        EXPECT_TRUE(Read(ByteString(line) + "\r\r\n").empty()) << line;
    }
}

TEST(TraceLogReader, ReadsALongLogInLinearTime) {
    ByteString log;
    for (int count = 0; count < 20000; ++count) log += "[0:00:00:001]:5 TSPI_lineGetNumAddressIDs\r\r\n";
    EXPECT_EQ(Read(log).size(), 20000U);
}

}  // namespace
}  // namespace velmora::ctl
