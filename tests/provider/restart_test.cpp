#include <algorithm>
#include <cstdlib>

#include "tests/provider/provider_test.h"
#include "tests/support/child_process.h"
#include "tests/support/csta_answers.h"
#include "tests/support/process_use.h"

namespace velmora {
namespace {

class RestartTest : public ProviderTest {
protected:
    RestartTest() {
        // A PBX that accepts each login.
        pbx.onFrame = [this](const ReceivedFrame& frame) {
            if (frame.xml.find("<StartApplicationSession ") == std::string::npos) return;
            pbx.SendFrame(frame.invokeId, SessionAccepted("S1", "1800"));
        };
    }

    // One session from login to shutdown, the index-th of the process. The PBX keeps nothing of it.
    void RunSession(size_t index) {
        Init();
        const ReceivedFrame login = pbx.WaitForFrame(0);
        EXPECT_EQ(login.connection, index);
        EXPECT_EQ(login.invokeId, 2 * index + 1);
        EXPECT_NE(login.xml.find("<StartApplicationSession "), std::string::npos);
        const ReceivedFrame monitor = pbx.WaitForFrame(1);
        EXPECT_EQ(monitor.connection, index);
        EXPECT_NE(monitor.xml.find("<MonitorStart "), std::string::npos);
        Stop();
        EXPECT_TRUE(pbx.WaitForEnd());
        pbx.Forget();
    }
};

TEST_F(RestartTest, LogsInAnewFiftyTimesWithoutLeavingAnythingBehind) {
    constexpr size_t kWarmUp = 20;  // for what is made once in a process
    constexpr size_t kSessions = 50;
    constexpr size_t kNoiseBytes = 4096;         // 136 a session: a list of the test's own may have grown
    constexpr size_t kCommitStepBytes = 262144;  // a heap may have grown by one step
    registry.Set("loglevel", "0");               // no log to read, and none in memory
    for (size_t index = 0; index < kWarmUp; ++index) RunSession(index);
    const size_t handlesBefore = OpenHandles();
    const size_t heapBefore = HeapBytes();
    const size_t committedBefore = CommittedBytes();
    for (size_t index = kWarmUp; index < kSessions; ++index) RunSession(index);
    EXPECT_LE(OpenHandles(), handlesBefore);
    EXPECT_LE(HeapBytes(), heapBefore + kNoiseBytes);
    EXPECT_LE(CommittedBytes(), committedBefore + kCommitStepBytes);
}

// A host that leaves Winsock to the provider. The provider starts it once in a process and gives it back at each stop:
// a second session finds it closed.
class OwnWinsockTest : public testing::Test {
protected:
    OwnWinsockTest() : log(PathBesideProgram("provider_test.log")) {
        const std::string announcement = pbx.ReadLineWith("listening on ");
        const std::string port = announcement.substr(announcement.rfind(':') + 1);
        StoreSettings(registry, log, static_cast<uint16_t>(std::strtoul(port.c_str(), nullptr, 10)));
    }

    void Init() const {
        EXPECT_EQ(provider.providerInit(kTspiVersion, kProviderId, kLineDeviceIdBase, kPhoneDeviceIdBase, 1, 1, nullptr,
                                        nullptr),
                  0);
    }

    void Stop() const {
        LONG result = -1;
        WorkerThread shutdown([&] { result = provider.providerShutdown(kTspiVersion, kProviderId); });
        EXPECT_TRUE(shutdown.EndsWithin(kStopMs)) << "the shutdown takes too long";
        EXPECT_TRUE(shutdown.EndsWithin(kPatienceMs));
        EXPECT_EQ(result, 0);
    }

    // Waits until the login has been accepted.
    bool WaitForMonitorStart() {
        return log.WaitUntil([](const std::vector<LogRecord>& records) {
            return std::any_of(records.begin(), records.end(), [](const LogRecord& record) {
                return record.text.find("<MonitorStart ") != std::string::npos;
            });
        });
    }

    ChildProcess pbx{"pbxsim.exe", "--port 0 --quiet"};  // in a process of its own
    RegistryScope registry;
    LogReader log;
    ProviderHost provider;
};

TEST_F(OwnWinsockTest, GetsASessionAndAShutdown) {
    Init();
    EXPECT_TRUE(WaitForMonitorStart());
    EXPECT_EQ(log.TextsOfLevel(1), LogTexts());
    Stop();
}

TEST_F(OwnWinsockTest, GetsNoSecondSessionAndStillAShutdown) {
    Init();
    EXPECT_TRUE(WaitForMonitorStart());
    Stop();
    Init();
    EXPECT_EQ(log.TextsOfLevel(1), (LogTexts{"Provider Init", "Connection establishment to \"127.0.0.1\" failed"}));
    HDRVCALL call = nullptr;
    EXPECT_EQ(provider.lineMakeCall(kRequestId, nullptr, nullptr, &call, L"1", 0, nullptr),
              static_cast<LONG>(kRequestId));
    EXPECT_EQ(provider.lineCloseCall(call), 0);
    Stop();
}

}  // namespace
}  // namespace velmora
