#include <atomic>

#include "tests/provider/encrypted_test.h"
#include "tests/support/csta_answers.h"
#include "tests/support/guarded_buffer.h"
#include "tests/support/import_hook.h"

namespace velmora {
namespace {

constexpr uint32_t kAtOnceMs = 500;

// How many bytes the provider has read from its link since it was hooked.
std::atomic<size_t> bytesRead = 0;

int WSAAPI CountingReceive(SOCKET socket, char* bytes, int length, int flags) {
    const int count = recv(socket, bytes, length, flags);
    if (count > 0) bytesRead += static_cast<size_t>(count);
    return count;
}

// A PBX that is still there, as far as TCP can tell, and has stopped working: switched off, hung, or cut off from the
// network.
class VanishingPbxTest : public EncryptedTest {
protected:
    VanishingPbxTest() { HookImport(provider.module, "ws2_32.dll", "recv", CountingReceive); }

    // The PBX need not have answered anything for the provider to be initialised.
    void InitAtOnce() {
        const double startMs = PreciseMs();
        Init();
        EXPECT_LT(PreciseMs() - startMs, kAtOnceMs) << "the start waits for the PBX";
    }

    // What of the provider does not send anything answers at once, whatever its sends wait for.
    void ExpectAlive(HDRVCALL call = nullptr) {
        WorkerThread calls([&] {
            OpenLine();
            GuardedBuffer caps(kLineAddressCapsBytes);
            caps.SetWord(offsetof(LINEADDRESSCAPS, dwTotalSize), kLineAddressCapsBytes);
            EXPECT_EQ(provider.lineGetAddressCaps(0, 0, kTspiVersion, 0, caps.As<LINEADDRESSCAPS>()), 0);
            GuardedBuffer status(kLineAddressStatusBytes);
            status.SetWord(offsetof(LINEADDRESSSTATUS, dwTotalSize), kLineAddressStatusBytes);
            EXPECT_EQ(provider.lineGetAddressStatus(nullptr, 0, status.As<LINEADDRESSSTATUS>()), 0);
            if (call != nullptr) {
                GuardedBuffer callStatus(kLineCallStatusBytes);
                callStatus.SetWord(offsetof(LINECALLSTATUS, dwTotalSize), kLineCallStatusBytes);
                EXPECT_EQ(provider.lineGetCallStatus(call, callStatus.As<LINECALLSTATUS>()), 0);
            }
            EXPECT_EQ(provider.lineSetStatusMessages(nullptr, 0, 0), 0);
            EXPECT_EQ(provider.lineDrop(kRequestId, nullptr, nullptr, 0), 0);
            EXPECT_EQ(provider.lineClose(nullptr), 0);
        });
        EXPECT_TRUE(calls.EndsWithin(kAtOnceMs)) << "an entry point waits for the PBX";
    }

    void OpenLine() {
        HDRVLINE line = nullptr;
        DWORD version = 0;
        EXPECT_EQ(provider.lineNegotiateTSPIVersion(0, kTspiVersion, kTspiVersion, &version), 0);
        EXPECT_EQ(provider.lineOpen(0, nullptr, &line, kTspiVersion, nullptr), 0);
    }

    bool WaitUntilRead(size_t bytes) {
        const double deadline = PreciseMs() + kPatienceMs;
        while (bytesRead < bytes && PreciseMs() < deadline) Sleep(1);
        return bytesRead >= bytes;
    }
};

// A PBX that sends so many bytes of its side of the handshake, and no more.
class StalledHandshakeTest : public VanishingPbxTest {
protected:
    // Of the records of a handshake, where each of the five ends: ServerHello, Certificate, ServerHelloDone,
    // ChangeCipherSpec and Finished.
    std::vector<size_t> RecordEnds() {
        LogIn();
        Stop();
        pbx.Forget();
        std::vector<size_t> ends;
        size_t end = 0;
        for (const WireRecord& record : WholeRecords(tls.SentBytes())) {
            end += RecordBytes(record).size();
            if (ends.size() < 5) ends.push_back(end);
        }
        return ends;
    }

    void ExpectHarmlessStallAt(size_t stalledAt) {
        SCOPED_TRACE(stalledAt);
        bytesRead = 0;
        size_t sent = 0;  // of all that the PBX has to say
        tls.sendRecords = [&](const std::string& records) {
            const std::string let = sent < stalledAt ? records.substr(0, stalledAt - sent) : std::string();
            sent += records.size();
            return pbx.Send(let);
        };
        InitAtOnce();
        EXPECT_TRUE(WaitUntilRead(stalledAt));
        ExpectAlive();
        Stop(kAtOnceMs);
        EXPECT_TRUE(pbx.WaitForEnd());
        tls.sendRecords = nullptr;
        EXPECT_EQ(pbx.Frames().size(), 0U) << "the login has left before the handshake was complete";
    }
};

TEST_F(StalledHandshakeTest, DelaysNeitherEntryPointsNorAShutdown) {
    const std::vector<size_t> ends = RecordEnds();
    ASSERT_EQ(ends.size(), 5U);
    size_t start = 0;
    for (const size_t end : ends) {
        // Within the header, behind it, in the middle, and one byte short.
        for (const size_t stalledAt : {start + 3, start + 5, (start + end) / 2, end - 1}) {
            ExpectHarmlessStallAt(stalledAt);
        }
        start = end;
    }
    LogIn();
    ExpectWorkingSession();
}

class StalledFrameTest : public VanishingPbxTest {};

TEST_F(StalledFrameTest, KeepsNoCallFromLeaving) {
    for (const bool withinRecord : {true, false}) {
        SCOPED_TRACE(withinRecord);
        LogIn();
        const std::string frame = FrameBytes(1, SessionAccepted("S1", "1800"));
        bytesRead = 0;
        size_t sent = 0;
        tls.sendRecords = [&](const std::string& records) {
            sent = withinRecord ? records.size() / 2 : records.size();
            return pbx.Send(records.substr(0, sent));
        };
        EXPECT_TRUE(pbx.SendStream(withinRecord ? frame : frame.substr(0, frame.size() / 2)));
        EXPECT_TRUE(WaitUntilRead(sent));
        const HDRVCALL call = MakeCall(withinRecord ? L"100" : L"200");
        WaitForMakeCall(withinRecord ? "100" : "200");
        ExpectAlive(call);
        EXPECT_EQ(MonitorStarts(), 1U) << "half a frame was dispatched";
        Stop(kAtOnceMs);
        EXPECT_TRUE(pbx.WaitForEnd());
        tls.sendRecords = nullptr;
        pbx.Forget();
    }
}

// One byte a second, for so many seconds.
class SlowPbxTest : public VanishingPbxTest {
protected:
    static constexpr size_t kSeconds = 3;

    void Trickle(const std::string& bytes) {
        bytesRead = 0;
        for (size_t index = 0; index < kSeconds; ++index) {
            EXPECT_TRUE(pbx.Send(bytes.substr(index, 1)));
            EXPECT_TRUE(WaitUntilRead(index + 1));
            ExpectAlive();
            Sleep(1000);
        }
    }
};

TEST_F(SlowPbxTest, DelaysNeitherEntryPointsNorAShutdownInTheHandshake) {
    std::atomic<bool> greeted = false;
    std::string flight;
    tls.sendRecords = [&](const std::string& records) {
        flight = records;
        greeted = true;
        return true;
    };
    InitAtOnce();
    const double deadline = PreciseMs() + kPatienceMs;
    while (!greeted && PreciseMs() < deadline) Sleep(1);
    ASSERT_TRUE(greeted);
    Trickle(flight);
    Stop(kAtOnceMs);
    EXPECT_EQ(pbx.Frames().size(), 0U);
}

TEST_F(SlowPbxTest, DelaysNeitherEntryPointsNorAShutdownInAFrame) {
    LogIn();
    std::string bytes;
    tls.sendRecords = [&](const std::string& records) {
        bytes = records;
        return true;
    };
    EXPECT_TRUE(pbx.SendFrame(1, SessionAccepted("S1", "1800")));
    Trickle(bytes);
    Stop(kAtOnceMs);
    EXPECT_EQ(MonitorStarts(), 1U);
}

class SilentSessionTest : public VanishingPbxTest {};

// The provider renews the session, places a call and clears it into the void.
TEST_F(SilentSessionTest, GoesOnWithoutAnswersAndShutsDownAtOnce) {
    LogIn();
    EXPECT_TRUE(pbx.SendFrame(1, SessionAccepted("S1", "1")));
    const auto hasRenewed = [](const std::vector<LogRecord>& records) {
        return records.back().text.find("<ResetApplicationSessionTimer ") != std::string::npos;
    };
    pbx.StopReading();
    EXPECT_TRUE(log.WaitUntil(hasRenewed));
    const HDRVCALL call = MakeCall(L"4711");
    ExpectAlive(call);
    EXPECT_EQ(provider.lineCloseCall(call), 0);
    Stop(kAtOnceMs);
}

// A PBX that never reads: the provider's sends wait, under the lock of the link.
class StuckTlsTest : public VanishingPbxTest {};

TEST_F(StuckTlsTest, HoldsUpOnlyWhatSendsAndNoShutdown) {
    FillTheLink();
    ExpectAlive();
    LONG result = -1;
    HDRVCALL call = nullptr;
    WorkerThread dialling(
        [&] { result = provider.lineMakeCall(kRequestId, nullptr, nullptr, &call, L"123", 0, nullptr); });
    EXPECT_FALSE(dialling.EndsWithin(100)) << "the link takes more";
    ExpectAlive();
    Stop();
    EXPECT_TRUE(dialling.EndsWithin(kPatienceMs));
    EXPECT_EQ(result, static_cast<LONG>(kRequestId));
}

TEST_F(StuckTlsTest, DoesNotSpoilTheNextSession) {
    FillTheLink();
    Stop();
    PbxPeer next;
    TlsPbx nextTls(next);
    RunSessionAt(next);
}

}  // namespace
}  // namespace velmora
