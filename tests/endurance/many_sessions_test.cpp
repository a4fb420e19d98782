#include "tests/endurance/run_length.h"
#include "tests/endurance/steady_use.h"
#include "tests/provider/encrypted_test.h"
#include "tests/support/csta_answers.h"

namespace velmora {
namespace {

constexpr size_t kWarmUpSessions = 50;  // for what is made once in a process, and for heaps to find their size
constexpr size_t kUsualSessions = 1000;
constexpr size_t kNoiseBytes = 4096;  // 4 a session

class ManySessionsTest : public EncryptedTest {
protected:
    ManySessionsTest() {
        registry.Set("loglevel", "0");  // no log to read, and none in memory
        tls.keepsSent = false;
        // A PBX that accepts each login.
        pbx.onFrame = [this](const ReceivedFrame& frame) {
            if (frame.xml.find("<StartApplicationSession ") == std::string::npos) return;
            pbx.SendFrame(frame.invokeId, SessionAccepted("S1", "1800"));
        };
    }

    // One session, from the start to the stop of the provider, in which the PBX has answered the login. The PBX keeps
    // nothing of it.
    void RunSession() {
        // The provider gives Winsock back at each stop, and has taken it once: the other references come from here.
        WSADATA data;
        EXPECT_EQ(WSAStartup(MAKEWORD(2, 2), &data), 0);
        Init();
        EXPECT_TRUE(pbx.WaitForFrames(2));
        EXPECT_EQ(MonitorStarts(), 1U);
        Stop();
        EXPECT_TRUE(pbx.WaitForEnd());
        pbx.Forget();
    }

    void RunSessions(size_t count) {
        for (size_t session = 0; session < count && !HasFailure(); ++session) RunSession();
    }
};

TEST_F(ManySessionsTest, LeaveNothingBehind) {
    const size_t sessions = RunLength("VELMORA_SESSIONS", kUsualSessions);
    RunSessions(kWarmUpSessions);
    const SteadyUse use;
    RunSessions(sessions);
    use.ExpectUnchanged("sessions", sessions, kNoiseBytes);
    EXPECT_EQ(pbx.Connections(), kWarmUpSessions + sessions);
}

}  // namespace
}  // namespace velmora
