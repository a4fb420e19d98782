#include <algorithm>
#include <cstdio>

#include "tests/provider/provider_test.h"
#include "tests/support/csta_answers.h"

namespace velmora {
namespace {

class TraceLogTest : public ProviderTest {
protected:
    // The texts of a session without an answer and with one call of an entry point behind it.
    LogTexts TextsOfShortSession() {
        Init();
        provider.lineClose(nullptr);
        provider.lineDrop(kRequestId, nullptr, nullptr, 0);
        return log.Texts();
    }

    void CloseLine(int times) {
        for (int count = 0; count < times; ++count) provider.lineClose(nullptr);
    }
};

TEST_F(TraceLogTest, EndsEachRecordInTwoCarriageReturnsAndALineFeed) {
    Init();
    provider.lineClose(nullptr);
    const std::string& bytes = log.Bytes();
    const std::string tail = "]:5 TSPI_lineClose\r\r\n";
    ASSERT_GT(bytes.size(), tail.size());
    EXPECT_EQ(bytes.substr(bytes.size() - tail.size()), tail);
    EXPECT_EQ(bytes.substr(0, 6), "[0:00:");
    EXPECT_NE(bytes.find("<?xml version=\"1.0\"?>\r\r\n"), std::string::npos);
}

TEST_F(TraceLogTest, CountsTimeFromTheLoadingOfTheProvider) {
    constexpr uint64_t kStepMs = 32;  // the counter's steps are coarser than a millisecond
    const uint64_t afterLoadMs = GetTickCount64();
    while (GetTickCount64() < afterLoadMs + 100) Sleep(1);

    const auto expectTime = [&](const std::function<void()>& action) {
        const uint64_t startMs = GetTickCount64();
        action();
        const uint64_t elapsedMs = log.Records().back().elapsedMs;
        EXPECT_GE(elapsedMs + kStepMs, startMs - afterLoadMs);
        EXPECT_LE(elapsedMs, GetTickCount64() - beforeLoadMs + kStepMs);
    };
    expectTime([&] { Init(); });
    const uint64_t pauseMs = GetTickCount64();
    while (GetTickCount64() < pauseMs + 200) Sleep(1);
    expectTime([&] { provider.lineClose(nullptr); });
}

TEST_F(TraceLogTest, HoldsTheStartOfASessionFromTheLoadingOfTheSettingsOn) {
    // The provider's first records come before the log's path is known.
    Init();
    EXPECT_EQ(log.Texts(), (LogTexts{"CSTA Tx: " + pbx.WaitForFrame(0).xml}));
    EXPECT_EQ(log.Records().front().level, 5);
}

TEST_F(TraceLogTest, HoldsOnlyRecordsUpToItsLevel) {
    registry.Set("loglevel", "4");
    registry.RemoveValue("guid");
    EXPECT_EQ(TextsOfShortSession(), (LogTexts{"Cannot read registry key guid"}));
}

TEST_F(TraceLogTest, HoldsRecordsOfExactlyItsLevel) {
    registry.Set("loglevel", "1");
    registry.RemoveValue("guid");
    EXPECT_EQ(TextsOfShortSession(), (LogTexts{"Cannot read registry key guid"}));
}

TEST_F(TraceLogTest, HasNoFileWithoutARecordToWrite) {
    // The default level, 0, holds not even a value that cannot be read.
    registry.RemoveValue("loglevel");
    registry.RemoveValue("guid");
    TextsOfShortSession();
    Stop();
    for (const char* level : {"0", "-1", "-2147483648"}) {
        registry.Set("loglevel", level);
        TextsOfShortSession();
        Stop();
    }
    EXPECT_FALSE(log.Exists());
}

TEST_F(TraceLogTest, HasNoFileWithoutAPath) {
    registry.RemoveValue("logfile");
    LogIn();
    CloseCall(MakeCall(L"1"));
    EXPECT_FALSE(log.Exists());
}

TEST_F(TraceLogTest, HoldsAsManyRecordsAsItsLength) {
    registry.Set("loglength", "3");
    const LogTexts texts = TextsOfShortSession();
    ASSERT_EQ(texts.size(), 3U);
    EXPECT_EQ(texts[1], "TSPI_lineClose");
    EXPECT_EQ(texts[2], "TSPI_lineDrop");
    CloseLine(5);
    EXPECT_EQ(log.Texts(), texts);
}

TEST_F(TraceLogTest, OfNoLengthIsAnEmptyFile) {
    for (const char* length : {"0", "-7"}) {
        registry.Set("loglength", length);
        EXPECT_EQ(TextsOfShortSession(), LogTexts());
        Stop();
        EXPECT_TRUE(log.Exists());
        EXPECT_EQ(log.Bytes(), "");
    }
}

TEST_F(TraceLogTest, HoldsAThousandRecordsByDefault) {
    registry.RemoveValue("loglength");
    Init();
    CloseLine(1100);
    EXPECT_EQ(log.Records().size(), 1000U);
}

TEST_F(TraceLogTest, CountsDroppedRecordsTowardsALaterLength) {
    registry.Set("loglength", "2");
    Init();
    CloseLine(10);
    Stop();
    EXPECT_EQ(log.Records().size(), 2U);
    // Written or not, the login, ten closings, a shutdown and the next start come to more than ten and less than 20.
    registry.Set("loglength", "10");
    Init();
    Stop();
    EXPECT_EQ(log.Records().size(), 2U);
    registry.Set("loglength", "1000");
    Init();
    EXPECT_GT(log.Records().size(), 2U);
}

TEST_F(TraceLogTest, EmptiesAnOlderFile) {
    std::FILE* older = std::fopen(log.Path().c_str(), "w");
    ASSERT_NE(older, nullptr);
    EXPECT_GE(std::fputs("from another process", older), 0);
    EXPECT_EQ(std::fclose(older), 0);
    Init();
    EXPECT_EQ(log.Texts().size(), 1U);
}

TEST_F(TraceLogTest, GoesOnInItsFirstFileWhateverPathIsLoadedLater) {
    const std::string otherPath = log.Path() + ".other";
    DeleteFileA(otherPath.c_str());
    LogIn();
    Stop();
    const size_t before = log.Records().size();
    registry.Set("logfile", otherPath);
    Init();
    EXPECT_EQ(GetFileAttributesA(otherPath.c_str()), INVALID_FILE_ATTRIBUTES);
    EXPECT_GT(log.Records().size(), before);
    Stop();
    registry.RemoveValue("logfile");
    Init();
    EXPECT_EQ(Recorded([&] { provider.lineClose(nullptr); }), (LogTexts{"TSPI_lineClose"}));
}

TEST_F(TraceLogTest, TakesANewLevelWithTheNextSession) {
    LogIn();
    Stop();
    registry.Set("loglevel", "0");
    EXPECT_EQ(Recorded([&] {
                  Init();
                  CloseLine(3);
              }),
              (LogTexts{"Provider Init"}));
}

TEST_F(TraceLogTest, TriesToOpenItsFileAgainWithEachRecord) {
    const std::string directory = PathBesideProgram("provider_test_logs");
    LogReader later(directory + "\\trace.log");
    RemoveDirectoryA(directory.c_str());
    registry.Set("logfile", later.Path());
    Init();
    CloseLine(1);
    EXPECT_FALSE(later.Exists());
    EXPECT_NE(CreateDirectoryA(directory.c_str(), nullptr), 0);
    provider.lineDrop(kRequestId, nullptr, nullptr, 0);
    EXPECT_EQ(later.Texts(), (LogTexts{"TSPI_lineDrop"}));
}

TEST_F(TraceLogTest, CutsATextAtItsFirstNul) {
    registry.SetRaw("username", REG_MULTI_SZ,
                    std::string("40\0"
                                "41\0\0",
                                7));
    LogIn();
    const LogTexts texts = log.Texts();
    ASSERT_FALSE(texts.empty());
    EXPECT_TRUE(texts.front().ends_with("<tns:userName>40")) << texts.front();

    SendAndWait(0, std::string("<event>before\0after</event>", 27));
    EXPECT_TRUE(log.WaitForText("CSTA Rx: <event>before"));
    Stop();

    const std::string address(100, 'x');
    registry.SetRaw("address", REG_MULTI_SZ, address + std::string(2, '\0'));
    Init();
    EXPECT_TRUE(log.WaitForText("Connection establishment to \"" + address));
}

TEST_F(TraceLogTest, TakesPercentSignsAsTheyAre) {
    LogIn();
    SendAndWait(0, "<event>100%s %d %n %%</event>");
    EXPECT_TRUE(log.WaitForText("CSTA Rx: <event>100%s %d %n %%</event>"));
}

TEST_F(TraceLogTest, HoldsTheRequestsAndAnswersOfACallInOrder) {
    LogIn();
    HDRVCALL call = nullptr;
    const LogTexts texts = Recorded([&] {
        call = MakeCall(L"+49 123", 49);
        SendAndWait(WaitForMakeCall("49123"), CallMade("C-1", "D-1"));
        CloseCall(call);
    });
    const std::string login = SessionAccepted("S1", "1800");
    EXPECT_EQ(texts, (LogTexts{"TSPI_lineMakeCall to 49123 CountryCode = 49", "CSTA Tx: " + pbx.WaitForFrame(2).xml,
                               "CSTA Rx: " + CallMade("C-1", "D-1"), "CSTA Rx: " + login,
                               "CSTA Tx: " + pbx.WaitForFrame(3).xml, "TSPI_lineCloseCall",
                               "CSTA Tx: " + pbx.WaitForFrame(4).xml}));
    for (const LogRecord& record : log.Records()) EXPECT_EQ(record.level, 5) << record.text;
}

TEST_F(TraceLogTest, KeepsTheRecordsOfManyThreadsWhole) {
    constexpr size_t kThreads = 8;
    constexpr int kCalls = 300;
    constexpr int kEvents = 500;
    LogIn();
    const std::string event = CallDelivered(std::string(2000, '7'));
    WorkerThread events([&] {
        for (int count = 0; count < kEvents; ++count) EXPECT_TRUE(pbx.SendFrame(0, event));
    });
    RunAtOnce(kThreads, [&](size_t /*index*/) {
        for (int count = 0; count < kCalls; ++count) provider.lineSetStatusMessages(nullptr, 0x00000400, 0);
    });
    EXPECT_TRUE(events.EndsWithin(kPatienceMs));
    WaitUntilDispatched();

    const LogTexts texts = log.Texts();
    const auto count = [&](const std::string& text) { return std::count(texts.begin(), texts.end(), text); };
    EXPECT_EQ(count("TSPI_lineSetStatusMessages"), int{kThreads} * kCalls);
    EXPECT_EQ(count("SetStatusMessages: LINEDEVSTATE_CLOSE"), int{kThreads} * kCalls);
    EXPECT_EQ(count("CSTA Rx: " + event), kEvents);
}

}  // namespace
}  // namespace velmora
