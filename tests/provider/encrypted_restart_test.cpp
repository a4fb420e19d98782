#include <algorithm>

#include "tests/provider/encrypted_test.h"
#include "tests/support/csta_answers.h"
#include "tests/support/hand_clock.h"
#include "tests/support/process_use.h"
#include "tls/session_cache.h"

namespace velmora {
namespace {

// Longer than the time after which the PBX resumes a session.
constexpr uint64_t kSessionAgeMs = 3600000;

class EncryptedRestartTest : public EncryptedTest {
protected:
    // One session with a login that the PBX accepts; the ID that the provider has offered in it. The PBX keeps nothing
    // of it.
    std::string RunSession() {
        LogIn();
        std::string sessionId = ReadClientHello(pbx.Bytes()).sessionId;
        Stop();
        EXPECT_TRUE(pbx.WaitForEnd());
        pbx.Forget();
        return sessionId;
    }

    // What the provider records in a session of its handshake, by name.
    size_t Times(const LogTexts& texts, const std::string& name) const {
        return static_cast<size_t>(std::count_if(texts.begin(), texts.end(), [&](const std::string& text) {
            return text.starts_with("CSTA: ") && text.find(name + "(") != std::string::npos;
        }));
    }
};

TEST_F(EncryptedRestartTest, EncryptsEverySession) {
    for (int session = 0; session < 4; ++session) {
        SCOPED_TRACE(session);
        EXPECT_EQ(RunSession(), "") << "the PBX gives no ID";
    }
    LogIn();
    ExpectWorkingSession();
}

TEST_F(EncryptedRestartTest, OffersTheSessionThatThePbxHasGivenAnIdAndWorksWhenThatIsForgotten) {
    tls.resumeSessions = true;
    EXPECT_EQ(RunSession(), "");
    for (int session = 1; session < 4; ++session) {
        SCOPED_TRACE(session);
        const LogTexts texts = Recorded([&] { EXPECT_EQ(RunSession().size(), 32U); });
        EXPECT_EQ(Times(texts, "SendClientKeyExchange"), 1U);
    }
}

TEST_F(EncryptedRestartTest, OffersWhatThePbxGaveLast) {
    tls.resumeSessions = true;
    RunSession();
    const std::string second = RunSession();
    sessionCache.Clear();
    const std::string third = RunSession();
    EXPECT_EQ(second.size(), 32U);
    EXPECT_EQ(third.size(), 32U);
    EXPECT_NE(second, third);
}

TEST_F(EncryptedRestartTest, ResumesTheSessionWhenThePbxDoes) {
    tls.resumeSessions = true;
    RunSession();
    std::string first;
    for (int session = 1; session < 4; ++session) {
        SCOPED_TRACE(session);
        handClockMs += kSessionAgeMs;
        std::string offered;
        const LogTexts texts = Recorded([&] { offered = RunSession(); });
        EXPECT_EQ(offered.size(), 32U);
        if (first.empty()) first = offered;
        EXPECT_EQ(offered, first);
        EXPECT_EQ(Times(texts, "ProcessCertificate"), 0U);
        EXPECT_EQ(Times(texts, "SendClientKeyExchange"), 0U);
        EXPECT_EQ(Times(texts, "SendFinished"), 1U);
    }
    EXPECT_EQ(sessionCache.Count(), 1U);
}

TEST_F(EncryptedRestartTest, HandshakesInFullAgainBehindAResumedSession) {
    tls.resumeSessions = true;
    RunSession();
    handClockMs += kSessionAgeMs;
    RunSession();
    sessionCache.Clear();
    const LogTexts texts = Recorded([&] { RunSession(); });
    EXPECT_EQ(Times(texts, "SendClientKeyExchange"), 1U);
    handClockMs += kSessionAgeMs;
    const LogTexts resumed = Recorded([&] { RunSession(); });
    EXPECT_EQ(Times(resumed, "SendClientKeyExchange"), 0U);
}

TEST_F(EncryptedRestartTest, NamesTheSessionInTheTrace) {
    tls.resumeSessions = true;
    RunSession();
    const LogTexts texts = Recorded([&] { RunSession(); });
    EXPECT_TRUE(std::any_of(texts.begin(), texts.end(), [](const std::string& text) {
        // Four bytes of the ID.
        return text.starts_with("CSTA: [") && text.find("]SendClientHello(") == 15;
    }));
}

// A PBX that says nothing leaves the login, and the calls of that session, waiting for the handshake to complete.
TEST_F(EncryptedRestartTest, ForgetsWhatTheSessionBeforeCouldNotSend) {
    tls.sendRecords = [](const std::string& /*records*/) { return true; };
    Init();
    EXPECT_TRUE(pbx.WaitForConnections(1));
    MakeCall(L"0815");
    Stop();
    tls.sendRecords = nullptr;
    Init();
    EXPECT_EQ(pbx.WaitForFrame(0).invokeId, 3U);
    EXPECT_TRUE(pbx.SendFrame(3, SessionAccepted("S1", "1800")));
    EXPECT_NE(pbx.WaitForFrame(1).xml.find("<MonitorStart "), std::string::npos);
}

TEST_F(EncryptedRestartTest, ForgetsARecordThatWasCutOff) {
    LogIn();
    EXPECT_TRUE(pbx.Send(std::string("\x17\x03\x01\x40\x00 half", 10)));
    Sleep(1);
    Stop();
    RunSession();
}

TEST_F(EncryptedRestartTest, ForgetsAFrameThatWasCutOff) {
    LogIn();
    EXPECT_TRUE(pbx.SendStream(FrameBytes(7, "<half/>").substr(0, 12)));
    Sleep(1);
    Stop();
    RunSession();
    EXPECT_FALSE(AnyStartsWith(log.Texts(), "CSTA Rx: <hal"));
}

TEST_F(EncryptedRestartTest, WorksAfterASessionThatBroke) {
    LogIn();
    EXPECT_TRUE(pbx.Send(RecordBytes({RecordType::kApplicationData, kTls10, std::string(64, 'x')})));
    EXPECT_TRUE(tls.WaitForAlert());
    Stop();
    RunSession();
}

TEST_F(EncryptedRestartTest, FollowsTheSettingFromSessionToSession) {
    for (const char* encrypt : {"1", "0", "1", "0", "0", "1", "1"}) {
        SCOPED_TRACE(encrypt);
        const bool encrypts = *encrypt == '1';
        registry.Set("encrypt", encrypt);
        if (encrypts) {
            RunSession();
            continue;
        }
        // Nothing of this session goes through TLS.
        PbxPeer plain;
        registry.Set("port", std::to_string(plain.Port()));
        const LogTexts texts = Recorded([&] { Init(); });
        EXPECT_FALSE(AnyStartsWith(texts, "CSTA: ")) << "a handshake that nobody asked for";
        EXPECT_NE(plain.WaitForFrame(0).xml.find("<StartApplicationSession "), std::string::npos);
        Stop();
        registry.Set("port", std::to_string(pbx.Port()));
    }
}

TEST_F(EncryptedRestartTest, LogsInAnewFiftyTimesWithoutLeavingAnythingBehind) {
    constexpr size_t kWarmUp = 20;               // for what is made once in a process
    constexpr size_t kSessions = 70;             // fifty of them measured
    constexpr size_t kNoiseBytes = 16384;        // 200 a session, for the test's own list of connections
    constexpr size_t kCommitStepBytes = 262144;  // a heap may have grown by one step
    registry.Set("loglevel", "0");
    for (size_t index = 0; index < kWarmUp; ++index) RunSession();
    const size_t handlesBefore = OpenHandles();
    const size_t heapBefore = HeapBytes();
    const size_t committedBefore = CommittedBytes();
    for (size_t index = kWarmUp; index < kSessions; ++index) RunSession();
    EXPECT_LE(OpenHandles(), handlesBefore);
    EXPECT_LE(HeapBytes(), heapBefore + kNoiseBytes);
    EXPECT_LE(CommittedBytes(), committedBefore + kCommitStepBytes);
}

}  // namespace
}  // namespace velmora
