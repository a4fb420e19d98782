#include <algorithm>
#include <atomic>
#include <set>

#include "tests/provider/provider_test.h"
#include "tests/support/csta_answers.h"
#include "tests/support/import_hook.h"

namespace velmora {
namespace {

constexpr size_t kCallSlots = 10;

// The thread that LeaveSlowly holds up; 0 for none.
std::atomic<DWORD> slowThread = 0;

// In the place of LeaveCriticalSection: whoever waits for the lock gets far before this thread goes on.
void WINAPI LeaveSlowly(CRITICAL_SECTION* section) {
    LeaveCriticalSection(section);
    if (GetCurrentThreadId() == slowThread) Sleep(50);
}

class ConcurrencyTest : public ProviderTest {
protected:
    // The PBX answers each MakeCall the moment that it comes: the call's ID is the number dialled.
    void AnswerCallsAtOnce() {
        pbx.onFrame = [this](const ReceivedFrame& frame) {
            if (frame.xml.find("<MakeCall ") == std::string::npos) return;
            pbx.SendFrame(frame.invokeId, CallMade(ElementText(frame.xml, "calledDirectoryNumber"), "D"));
        };
    }

    void ExpectDistinctInvokeIds() {
        std::set<uint32_t> invokeIds;
        const std::vector<ReceivedFrame> frames = pbx.Frames();
        for (const ReceivedFrame& frame : frames) invokeIds.insert(frame.invokeId);
        EXPECT_EQ(invokeIds.size(), frames.size());
        EXPECT_FALSE(pbx.SawMalformedFrame());
    }
};

TEST_F(ConcurrencyTest, BindsACallWhoseAnswerComesAtOnce) {
    AnswerCallsAtOnce();
    LogIn();
    std::vector<HDRVCALL> calls;
    for (size_t slot = 0; slot < kCallSlots; ++slot) calls.push_back(MakeCall(std::to_wstring(slot)));
    WaitForMakeCall("9");
    for (size_t slot = 0; slot < kCallSlots; ++slot) {
        EXPECT_TRUE(log.WaitForText("CSTA Rx: " + CallMade(std::to_string(slot), "D")));
    }
    WaitUntilDispatched();
    for (size_t slot = 0; slot < kCallSlots; ++slot) {
        EXPECT_EQ(ElementText(CloseCall(calls[slot]), "callID"), std::to_string(slot));
    }
}

// Even when the thread that dials is slow to go on after it has let the answer's thread pass.
TEST_F(ConcurrencyTest, BindsACallWhoseAnswerOvertakesTheDiallingThread) {
    AnswerCallsAtOnce();
    LogIn();
    HookImport(provider.module, "kernel32.dll", "LeaveCriticalSection", LeaveSlowly);
    slowThread = GetCurrentThreadId();
    std::vector<HDRVCALL> calls;
    for (size_t slot = 0; slot < 3; ++slot) calls.push_back(MakeCall(std::to_wstring(slot)));
    slowThread = 0;
    for (size_t slot = 0; slot < calls.size(); ++slot) {
        EXPECT_TRUE(log.WaitForText("CSTA Rx: " + CallMade(std::to_string(slot), "D")));
    }
    WaitUntilDispatched();
    for (size_t slot = 0; slot < calls.size(); ++slot) {
        EXPECT_EQ(ElementText(CloseCall(calls[slot]), "callID"), std::to_string(slot));
    }
}

TEST_F(ConcurrencyTest, KeepsFramesWholeWhileTenThreadsDial) {
    AnswerCallsAtOnce();
    LogIn();
    // Too long for one send to take them at once.
    const auto number = [](size_t slot) { return std::to_string(slot) + std::string(60000, '5'); };
    std::vector<HDRVCALL> calls(kCallSlots);
    RunAtOnce(kCallSlots, [&](size_t slot) { calls[slot] = MakeCall(Wide(number(slot))); });
    EXPECT_TRUE(pbx.WaitForFrames(2 + kCallSlots));
    for (size_t slot = 0; slot < kCallSlots; ++slot) WaitForMakeCall(number(slot));
    EXPECT_EQ(std::set<HDRVCALL>(calls.begin(), calls.end()).size(), kCallSlots);
    for (size_t slot = 0; slot < kCallSlots; ++slot) {
        EXPECT_TRUE(log.WaitForText("CSTA Rx: " + CallMade(number(slot), "D")));
    }
    WaitUntilDispatched();

    const size_t before = pbx.Frames().size();
    RunAtOnce(kCallSlots, [&](size_t slot) { EXPECT_EQ(provider.lineCloseCall(calls[slot]), 0); });
    EXPECT_TRUE(pbx.WaitForFrames(before + kCallSlots));
    std::set<std::string> cleared;
    const std::vector<ReceivedFrame> frames = pbx.Frames();
    for (size_t index = before; index < frames.size(); ++index) {
        cleared.insert(ElementText(frames[index].xml, "callID"));
    }
    std::set<std::string> placed;
    for (size_t slot = 0; slot < kCallSlots; ++slot) placed.insert(number(slot));
    EXPECT_TRUE(cleared == placed) << "a call was bound to another's answer, or not at all";
    ExpectDistinctInvokeIds();
}

TEST_F(ConcurrencyTest, HandsOutTenSlotsToTwentyThreads) {
    LogIn();
    constexpr size_t kThreads = 20;
    std::vector<LONG> results(kThreads, -1);
    RunAtOnce(kThreads, [&](size_t index) {
        HDRVCALL call = nullptr;
        results[index] = provider.lineMakeCall(kRequestId, nullptr, nullptr, &call, L"1", 0, nullptr);
    });
    EXPECT_EQ(std::count(results.begin(), results.end(), static_cast<LONG>(kRequestId)), 10);
    EXPECT_EQ(std::count(results.begin(), results.end(), static_cast<LONG>(0x80000005)), 10);
    EXPECT_TRUE(pbx.WaitForFrames(2 + kCallSlots));
    ExpectDistinctInvokeIds();
}

TEST_F(ConcurrencyTest, KeepsFramesWholeWhileTheMonitorStartsAndCallsAreDialled) {
    constexpr size_t kLogins = 200;
    LogIn();
    std::string logins;
    for (size_t count = 0; count < kLogins; ++count) logins += FrameBytes(1, SessionAccepted("S1", "1800"));
    WorkerThread answers([&] { EXPECT_TRUE(pbx.Send(logins)); });
    RunAtOnce(kCallSlots, [&](size_t slot) {
        const HDRVCALL call = MakeCall(std::to_wstring(slot));
        EXPECT_EQ(provider.lineCloseCall(call), 0);
    });
    EXPECT_TRUE(pbx.WaitForFrames(2 + kLogins + 2 * kCallSlots));
    ExpectDistinctInvokeIds();
    EXPECT_EQ(MonitorStarts(), 1 + kLogins);
}

TEST_F(ConcurrencyTest, ShutsDownAtOnceWhileItWaitsForThePbx) {
    constexpr uint32_t kAtOnceMs = 500;
    LogIn();
    Stop(kAtOnceMs);
}

TEST_F(ConcurrencyTest, ShutsDownInTimeAfterThePbxHasGone) {
    LogIn();
    pbx.Close();
    Stop();
    Init();
    EXPECT_TRUE(pbx.WaitForConnections(2));
    pbx.Reset();
    Stop();
}

TEST_F(ConcurrencyTest, ShutsDownWhileEventsPourIn) {
    LogIn();
    std::string events;
    for (int count = 0; count < 3000; ++count) events += FrameBytes(0, CallDelivered(std::to_string(count)));
    // The PBX may well not get rid of them all.
    WorkerThread pouring([&] { pbx.Send(events); });
    EXPECT_TRUE(log.WaitForText("CSTA Rx: " + CallDelivered("100")));
    Stop();
}

// A PBX that stops reading: sooner or later the provider's sends do not return.
using StuckPbxTest = ConcurrencyTest;

TEST_F(StuckPbxTest, DoesNotKeepAShutdownFromEnding) {
    FillTheLink();
    Stop();
}

TEST_F(StuckPbxTest, DoesNotKeepAShutdownFromEndingWhileACallIsPlaced) {
    FillTheLink();
    LONG result = -1;
    HDRVCALL call = nullptr;
    WorkerThread dialling(
        [&] { result = provider.lineMakeCall(kRequestId, nullptr, nullptr, &call, L"123", 0, nullptr); });
    dialling.EndsWithin(100);
    Stop();
    EXPECT_TRUE(dialling.EndsWithin(kPatienceMs));
    EXPECT_EQ(result, static_cast<LONG>(kRequestId));
}

TEST_F(StuckPbxTest, DoesNotSpoilTheNextSession) {
    FillTheLink();
    Stop();
    PbxPeer next;
    RunSessionAt(next);
}

}  // namespace
}  // namespace velmora
