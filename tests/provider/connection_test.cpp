#include <ws2tcpip.h>

#include <algorithm>

#include "tests/provider/provider_test.h"
#include "tests/support/csta_answers.h"

namespace velmora {
namespace {

constexpr char kLoopbackFailure[] = "Connection establishment to \"127.0.0.1\" failed";

// Long enough for the provider to have read the bytes before, usually; what a test checks does not depend on it.
void LetRead() {
    Sleep(1);
}

class ConnectionTest : public ProviderTest {
protected:
    // Calls work without a PBX, as far as TAPI can tell.
    void ExpectCallsWithoutPbx() {
        const HDRVCALL call = MakeCall(L"123");
        EXPECT_EQ(provider.lineCloseCall(call), 0);
    }

    // Whether the provider still takes in messages and calls.
    void ExpectWorkingSession() {
        const HDRVCALL call = MakeCall(L"4711");
        SendAndWait(WaitForMakeCall("4711"), CallMade("C-4711", "D"));
        EXPECT_EQ(ElementText(CloseCall(call), "callID"), "C-4711");
    }
};

TEST_F(ConnectionTest, TakesAHostName) {
    // The first address of the name, of either family, is the only one that is tried.
    addrinfo* found = nullptr;
    ASSERT_EQ(getaddrinfo("localhost", "1", nullptr, &found), 0);
    const bool firstIsIpv6 = found->ai_family == AF_INET6;
    freeaddrinfo(found);
    PbxPeer named(firstIsIpv6 ? "::1" : "127.0.0.1");
    ASSERT_TRUE(named.Listens());
    registry.Set("address", "localhost");
    registry.Set("port", std::to_string(named.Port()));
    Init();
    EXPECT_EQ(named.WaitForFrame(0).invokeId, 1U);
    Stop();
}

TEST_F(ConnectionTest, TakesAnIpv6Address) {
    PbxPeer peer("::1");
    if (!peer.Listens()) GTEST_SKIP() << "no IPv6 here";
    registry.Set("address", "::1");
    registry.Set("port", std::to_string(peer.Port()));
    Init();
    EXPECT_EQ(peer.WaitForFrame(0).invokeId, 1U);
    Stop();
}

TEST_F(ConnectionTest, ThatCannotBeMadeIsRecordedAndLeft) {
    pbx.StopListening();
    Init();
    EXPECT_EQ(log.TextsOfLevel(1), (LogTexts{kLoopbackFailure}));
    // The login is written down, though it goes nowhere.
    const LogTexts texts = log.Texts();
    ASSERT_EQ(texts.size(), 2U);
    EXPECT_EQ(texts[0], kLoopbackFailure);
    EXPECT_TRUE(texts[1].starts_with("CSTA Tx: <?xml version=\"1.0\"?>\r\n<StartApplicationSession ")) << texts[1];
    ExpectCallsWithoutPbx();
    Stop();
}

TEST_F(ConnectionTest, ToAnAddressThatDoesNotResolveIsRecordedWithTheAddressAsItIs) {
    // Longer than a label of a name may be (RFC 1035, 2.3.4): no resolver is asked.
    const std::string address = "\"no name\" <" + std::string(100, 'x') + ">";
    registry.Set("address", address);
    Init();
    EXPECT_EQ(log.TextsOfLevel(1), (LogTexts{"Connection establishment to \"" + address + "\" failed"}));
    ExpectCallsWithoutPbx();
    Stop();
}

TEST_F(ConnectionTest, IsNotMadeAgainAfterAFailure) {
    pbx.StopListening();
    Init();
    PbxPeer late;
    EXPECT_FALSE(late.WaitForConnections(1, 300));
    Stop();
}

TEST_F(ConnectionTest, IsMadeByTheNextSessionAfterAFailure) {
    registry.Set("port", "1");
    Init();
    Stop();
    registry.Set("port", std::to_string(pbx.Port()));
    LogIn();
    ExpectWorkingSession();
}

TEST_F(ConnectionTest, WorksWithAPbxThatNeverAnswers) {
    Init();
    ExpectCallsWithoutPbx();
    pbx.WaitForFrame(2);
    Stop();
    EXPECT_EQ(MonitorStarts(), 0U);
}

TEST_F(ConnectionTest, DispatchesTwoFramesOfOneSegment) {
    Init();
    pbx.WaitForFrame(0);
    EXPECT_TRUE(pbx.Send(FrameBytes(1, SessionAccepted("S1", "1800")) + FrameBytes(2, SessionAccepted("S1", "1800"))));
    EXPECT_TRUE(pbx.WaitForFrames(3));
    EXPECT_EQ(MonitorStarts(), 2U);
}

TEST_F(ConnectionTest, DispatchesAFrameSplitAnywhere) {
    LogIn();
    const std::string bytes = FrameBytes(1, SessionAccepted("S1", "1800"));
    for (size_t split = 0; split <= bytes.size(); ++split) {
        SCOPED_TRACE(split);
        EXPECT_TRUE(pbx.Send(bytes.substr(0, split)));
        LetRead();
        EXPECT_TRUE(pbx.Send(bytes.substr(split)));
        ASSERT_TRUE(pbx.WaitForFrames(3 + split));
    }
    EXPECT_EQ(MonitorStarts(), 2 + bytes.size());
    EXPECT_TRUE(log.WaitForText("CSTA Rx: " + SessionAccepted("S1", "1800"), 2 + bytes.size()));

    for (const char byte : bytes) {
        EXPECT_TRUE(pbx.Send(std::string(1, byte)));
        LetRead();
    }
    EXPECT_TRUE(pbx.WaitForFrames(4 + bytes.size()));
}

TEST_F(ConnectionTest, DispatchesAFrameWithTheStartOfTheNextOne) {
    LogIn();
    const std::string bytes = FrameBytes(1, SessionAccepted("S1", "1800"));
    EXPECT_TRUE(pbx.Send(bytes + bytes.substr(0, 11)));
    EXPECT_TRUE(pbx.WaitForFrames(3));
    EXPECT_TRUE(pbx.Send(bytes.substr(11) + bytes.substr(0, 5)));
    EXPECT_TRUE(pbx.WaitForFrames(4));
    EXPECT_TRUE(pbx.Send(bytes.substr(5)));
    EXPECT_TRUE(pbx.WaitForFrames(5));
}

TEST_F(ConnectionTest, TakesFramesOfEveryLengthAroundItsReadSize) {
    LogIn();
    size_t frames = 2;
    for (const size_t length : std::initializer_list<size_t>{1016, 1023, 1024, 1025, 2048, 4096, 65535}) {
        SCOPED_TRACE(length);
        std::string xml = SessionAccepted("S1", "1800");
        xml.resize(length - 8, ' ');
        EXPECT_TRUE(pbx.SendFrame(1, xml));
        ASSERT_TRUE(pbx.WaitForFrames(++frames));
        EXPECT_TRUE(log.WaitForText("CSTA Rx: " + xml));
    }
}

TEST_F(ConnectionTest, TakesAFrameWithAnyFirstTwoBytesAndOneWithoutXml) {
    LogIn();
    std::string bytes = FrameBytes(1, SessionAccepted("S1", "1800"));
    bytes[0] = '\xFF';
    bytes[1] = '\x16';
    EXPECT_TRUE(pbx.Send(bytes));
    EXPECT_TRUE(pbx.WaitForFrames(3));
    SendAndWait(7, "");
    EXPECT_TRUE(log.WaitForText("CSTA Rx: "));
}

TEST_F(ConnectionTest, DropsAFrameShorterThanItsHeaderAndGoesOn) {
    LogIn();
    size_t dropped = 0;
    for (const char length : {'\0', '\1', '\4', '\7'}) {
        SCOPED_TRACE(static_cast<int>(length));
        std::string bytes = FrameBytes(1, "");
        bytes[3] = length;
        EXPECT_TRUE(pbx.Send(bytes));
        ++dropped;
        EXPECT_TRUE(log.WaitUntil([&](const std::vector<LogRecord>& records) {
            return std::count_if(records.begin(), records.end(), [](const LogRecord& r) { return r.level == 1; }) ==
                   static_cast<ptrdiff_t>(dropped);
        }));
        WaitUntilDispatched();
    }
    ExpectWorkingSession();
}

TEST_F(ConnectionTest, DropsWhatFollowsAShortFrameInTheSameSegment) {
    LogIn();
    EXPECT_TRUE(pbx.Send(std::string(200, '\0') + FrameBytes(1, "<late/>")));
    EXPECT_TRUE(log.WaitUntil([&](const std::vector<LogRecord>& records) { return records.back().level == 1; }));
    ExpectWorkingSession();
}

TEST_F(ConnectionTest, LosesNoneOfTenThousandEventsAtOnce) {
    constexpr size_t kEvents = 10000;
    LogIn();
    LogTexts expected;
    std::string bytes;
    for (size_t index = 0; index < kEvents; ++index) {
        const std::string event = CallDelivered(std::to_string(index));
        bytes += FrameBytes(0, event);
        expected.push_back("CSTA Rx: " + event);
    }
    const size_t before = log.Records().size();
    EXPECT_TRUE(pbx.Send(bytes));
    EXPECT_TRUE(
        log.WaitUntil([&](const std::vector<LogRecord>& records) { return records.size() >= before + kEvents; }));
    EXPECT_TRUE(log.Texts(before) == expected) << "lost, cut or out of order";
    ExpectWorkingSession();
}

TEST_F(ConnectionTest, ResetInMidFrameLeavesTheProviderWorking) {
    LogIn();
    const std::string bytes = FrameBytes(1, SessionAccepted("S1", "1800"));
    EXPECT_TRUE(pbx.Send(bytes.substr(0, bytes.size() / 2)));
    LetRead();
    pbx.Reset();
    ExpectCallsWithoutPbx();
    Stop();
    EXPECT_EQ(MonitorStarts(), 1U);
}

TEST_F(ConnectionTest, CutOffInMidFrameDoesNotDisturbTheNextSession) {
    LogIn();
    const std::string bytes = FrameBytes(1, SessionAccepted("S1", "1800"));
    for (const size_t length : {size_t{3}, size_t{8}, bytes.size() - 1}) {
        EXPECT_TRUE(pbx.Send(bytes.substr(0, length)));
        LetRead();
        pbx.Close();
        Stop();
        LogIn();
    }
    ExpectWorkingSession();
}

}  // namespace
}  // namespace velmora
