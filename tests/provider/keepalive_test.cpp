#include "tests/provider/provider_test.h"
#include "tests/support/csta_answers.h"

namespace velmora {
namespace {

// The system's tick counter, by which the provider measures, moves in steps; and the machine may be busy.
constexpr double kEarlyMs = 35;
constexpr double kLateMs = 700;

class KeepaliveTest : public ProviderTest {
protected:
    // Sends a message and returns when it left.
    double Send(const std::string& xml) {
        const double nowMs = PreciseMs();
        EXPECT_TRUE(pbx.SendFrame(1, xml));
        return nowMs;
    }

    // The next request must be a reset of the session timer, this long after a moment.
    ReceivedFrame ExpectReset(double sinceMs, double delayMs) {
        ReceivedFrame frame = pbx.WaitForFrame(resetPosition++);
        EXPECT_NE(frame.xml.find("<ResetApplicationSessionTimer "), std::string::npos) << frame.xml;
        EXPECT_GE(frame.timeMs - sinceMs, delayMs - kEarlyMs);
        EXPECT_LE(frame.timeMs - sinceMs, delayMs + kLateMs);
        return frame;
    }

    // Has the PBX accept the login, and notes that the frames so far are no resets.
    double Accept(const std::string& sessionId, const std::string& duration) {
        Init();
        pbx.WaitForFrame(0);
        const double sentMs = Send(SessionAccepted(sessionId, duration));
        pbx.WaitForFrame(1);
        resetPosition = 2;
        return sentMs;
    }

    size_t resetPosition = 0;
};

TEST_F(KeepaliveTest, SendsOneResetOnlyAndNoneWhenNoTimeIsGranted) {
    const double acceptedMs = Accept("S-1", "1");
    ExpectReset(acceptedMs, 900);
    EXPECT_FALSE(pbx.WaitForFrames(4, 1100));
    Send(SessionTimerReset("0"));
    EXPECT_FALSE(pbx.WaitForFrames(4, 1100));
}

TEST_F(KeepaliveTest, ProlongsTheSessionAfter90PercentOfEachDuration) {
    const double acceptedMs = Accept("S-1", "1");
    ExpectReset(acceptedMs, 900);
    double answeredMs = Send(SessionTimerReset("1"));
    EXPECT_EQ(ElementText(ExpectReset(answeredMs, 900).xml, "sessionID"), "S-1");
    answeredMs = Send(SessionTimerReset("2"));
    EXPECT_EQ(ElementText(ExpectReset(answeredMs, 1800).xml, "sessionID"), "S-1");
}

TEST_F(KeepaliveTest, IsMovedByEveryAnswer) {
    Accept("S-1", "1");
    Send(SessionTimerReset("1800"));
    const double answeredMs = Send(SessionTimerReset("2"));
    ExpectReset(answeredMs, 1800);
}

TEST_F(KeepaliveTest, IsMovedForwardByAShorterDuration) {
    Accept("S-1", "1800");
    const double answeredMs = Send(SessionTimerReset("1"));
    ExpectReset(answeredMs, 900);
}

TEST_F(KeepaliveTest, KeepsItsDeadlineWhileMessagesComeIn) {
    const double acceptedMs = Accept("S-1", "1");
    while (PreciseMs() < acceptedMs + 700) {
        Send(CallDelivered("C-1"));
        Sleep(20);
    }
    ExpectReset(acceptedMs, 900);
}

TEST_F(KeepaliveTest, StartsFromAResetAnswerWithoutASessionId) {
    Init();
    pbx.WaitForFrame(0);
    const double answeredMs = Send(SessionTimerReset("1"));
    resetPosition = 1;
    const ReceivedFrame reset = ExpectReset(answeredMs, 900);
    EXPECT_NE(reset.xml.find("<sessionID></sessionID>"), std::string::npos);
}

TEST_F(KeepaliveTest, NamesTheLatestSessionThatThePbxHasNamed) {
    const auto expectSession = [&](double sinceMs, const std::string& sessionId) {
        EXPECT_NE(ExpectReset(sinceMs, 900).xml.find("<sessionID>" + sessionId + "</sessionID>"), std::string::npos);
        // The next login's MonitorStart comes between.
        ++resetPosition;
    };
    expectSession(Accept("", "1"), "");
    expectSession(Send(SessionAccepted("S-1", "1")), "S-1");
    expectSession(Send(SessionAccepted("S-2", "1")), "S-2");
    expectSession(Send("<StartApplicationSessionPosResponse><actualSessionDuration>1"
                       "</actualSessionDuration></StartApplicationSessionPosResponse>"),
                  "S-2");
}

// 4772186 seconds are 4294967400 ms at 90 percent, 104 more than the 32-bit tick counter holds.
TEST_F(KeepaliveTest, WrapsWithTheTickCounter) {
    const double acceptedMs = Accept("S-1", "4772186");
    ExpectReset(acceptedMs, 104);
}

TEST_F(KeepaliveTest, EndsWithTheSession) {
    Accept("S-1", "1");
    Stop();
    Init();
    pbx.WaitForFrame(2);
    EXPECT_FALSE(pbx.WaitForFrames(4, 1300));
}

}  // namespace
}  // namespace velmora
