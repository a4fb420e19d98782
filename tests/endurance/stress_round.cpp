#include "tests/endurance/stress_round.h"

#include <algorithm>

#include "tests/endurance/adverse_system.h"

namespace velmora {
namespace {

constexpr LONG kCallUnavailable = static_cast<LONG>(0x80000005);
constexpr LONG kInvalidCallHandle = static_cast<LONG>(0x80000018);
constexpr DRV_REQUESTID kFirstRequestId = 1000;

// TAPI's callbacks; the provider never calls them.
void CALLBACK OnCompletion(DRV_REQUESTID request, LONG /*result*/) {
    ADD_FAILURE() << "request " << request << " is completed";
}

void CALLBACK OnLineEvent(HTAPILINE /*line*/, HTAPICALL /*call*/, DWORD message, DWORD_PTR /*first*/,
                          DWORD_PTR /*second*/, DWORD_PTR /*third*/) {
    ADD_FAILURE() << "an event of the line: " << message;
}

// A wait finer than Sleep's.
void Spin(unsigned microseconds) {
    const double endMs = PreciseMs() + microseconds / 1000.0;
    while (PreciseMs() < endMs) SwitchToThread();
}

// However long that takes: whoever runs the round knows its deadline.
void Join(std::unique_ptr<WorkerThread>& thread) {
    while (!thread->EndsWithin(kPatienceMs)) {
    }
}

}  // namespace

StressRound::StressRound(const RoundPlan& roundPlan, RegistryScope& settings, StressTotals& allTotals)
    : plan(roundPlan),
      registry(settings),
      totals(allTotals),
      ledger(roundPlan),
      linkStands(roundPlan.end == StormEnd::kCalm),
      endReached(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
    MakeSystemAdverse(provider.module);
    registry.Set("username", plan.username);
    registry.Set("domain", plan.domain);
}

StressRound::~StressRound() {
    provider.Unload();
    CloseHandle(endReached);
}

void StressRound::Run() {
    {
        StressPbx pbx(plan, ledger, totals);
        if (plan.end == StormEnd::kSilence) pbx.BeSilent();
        if (plan.end == StormEnd::kStuck) pbx.StopReadingAtFirstCall();
        Storm(pbx);
        if (plan.end == StormEnd::kCalm) {
            running = "the calm after the storm";
            EXPECT_TRUE(pbx.WaitUntilWorkedOff()) << "the provider does not react any more";
            CloseRest(pbx);
            Shutdown();
        }
        // What was sent before the shutdown arrives, and is examined as well.
        running = "the end of the connection";
        if (plan.end != StormEnd::kStuck) {
            EXPECT_TRUE(pbx.WaitForEnd());
        }
    }
    if (plan.end == StormEnd::kCalm) return;

    ledger.EndSession();
    linkStands = true;
    StressPbx next(plan, ledger, totals);
    Init(next);
    EXPECT_TRUE(next.WaitUntilWorkedOff()) << "no second session";
    CloseRest(next);
    Shutdown();
}

std::string StressRound::Places() const {
    std::string text = std::string("The round: ") + running.load() + ". The storm's end: " + ending.load() + ".\n";
    for (size_t index = 0; index < kStressCalls; ++index) {
        const char* place = dialling[index];
        text += "Call " + std::to_string(index) + ": " + (place == nullptr ? "nothing" : place) + ".\n";
    }
    return text;
}

void StressRound::Storm(StressPbx& pbx) {
    Init(pbx);
    if (plan.awaitsLogin && plan.end != StormEnd::kSilence) {
        EXPECT_TRUE(pbx.WaitUntilWorkedOff());
    }
    running = "the storm";
    auto storm = std::make_unique<WorkerThread>([&] { EndStorm(pbx); });
    auto pouring = std::make_unique<WorkerThread>([&] { pbx.Pour(); });
    std::vector<std::unique_ptr<WorkerThread>> callers;
    for (size_t index = 0; index < kStressCalls; ++index) {
        callers.push_back(std::make_unique<WorkerThread>([this, index] { Dial(index); }));
    }
    for (std::unique_ptr<WorkerThread>& caller : callers) Join(caller);
    // Should the threads have ended before that step.
    SetEvent(endReached);
    Join(storm);
    running = "the end of the pouring";
    Join(pouring);
}

void StressRound::Dial(size_t index) {
    const CallPlan& call = plan.calls[index];
    LetThisThreadStrayFar();
    Sleep(call.pauseMs);
    BeginStep(index, "lineMakeCall");
    const auto request = static_cast<DRV_REQUESTID>(kFirstRequestId + index);
    EXPECT_EQ(provider.lineMakeCall(request, nullptr, nullptr, &handles[index], Wide(call.number).c_str(), 0, nullptr),
              static_cast<LONG>(request));
    if (call.asks) {
        LINECALLSTATUS status = {};
        BeginStep(index, "lineGetCallStatus");
        EXPECT_EQ(provider.lineGetCallStatus(handles[index], &status), 0);
        EXPECT_EQ(status.dwCallPrivilege, 0xD7U);
        LINECALLINFO info = {};
        BeginStep(index, "lineGetCallInfo");
        EXPECT_EQ(provider.lineGetCallInfo(handles[index], &info), 0);
        EXPECT_EQ(info.dwTrunk, 0xFFFFFFFF);
        BeginStep(index, "lineDrop");
        EXPECT_EQ(provider.lineDrop(static_cast<DRV_REQUESTID>(index), handles[index], nullptr, 0), 0);
    }
    if (call.AwaitsBinding()) AwaitBinding(index);
    if (call.closing == Closing::kAtOnce) Spin(call.closeDelayUs);
    if (call.closing != Closing::kLeftOpen) {
        BeginStep(index, "lineCloseCall");
        Close(index);
    }
    dialling[index] = "its end";
}

void StressRound::AwaitBinding(size_t index) {
    dialling[index] = "waiting for its answer to be worked off";
    EXPECT_TRUE(WaitUntil([&] { return ledger.IsConfirmed(index) || ended; })) << "call " << index;
}

void StressRound::EndStorm(StressPbx& pbx) {
    ending = "waiting for its step";
    WaitForSingleObject(endReached, INFINITE);
    if (plan.end == StormEnd::kCalm) return;
    if (plan.end == StormEnd::kReset) {
        ending = "the reset";
        pbx.Reset();
    }
    Sleep(plan.shutdownDelayMs);
    ended = true;
    ending = "providerShutdown";
    Shutdown();
    ending = "over";
}

void StressRound::Close(size_t index) {
    const bool bound = ledger.BeginClosing(index);
    if (plan.calls[index].closing == Closing::kTwice) {
        CloseTwice(index);
    } else {
        EXPECT_EQ(provider.lineCloseCall(handles[index]), 0);
    }
    if (bound && linkStands) {
        EXPECT_TRUE(WaitUntil([&] { return ledger.ClearedByName(index) == 1; }))
            << "call " << index << " is not bound, or to another";
    }
}

// By two threads at once: one of them closes the call.
void StressRound::CloseTwice(size_t index) {
    LONG results[2] = {-1, -1};
    const auto close = [&](size_t closer) {
        LetThisThreadStrayFar();
        results[closer] = provider.lineCloseCall(handles[index]);
    };
    auto other = std::make_unique<WorkerThread>([&] { close(1); });
    close(0);
    Join(other);
    EXPECT_EQ(std::min(results[0], results[1]), kInvalidCallHandle);
    EXPECT_EQ(std::max(results[0], results[1]), 0);
}

void StressRound::CloseRest(StressPbx& pbx) {
    running = "closing what is still open";
    for (size_t index = 0; index < kStressCalls; ++index) {
        if (!ledger.IsClosing(index)) Close(index);
    }
    HDRVCALL eleventh = nullptr;
    EXPECT_EQ(provider.lineMakeCall(1, nullptr, nullptr, &eleventh, L"1", 0, nullptr), kCallUnavailable);
    EXPECT_TRUE(pbx.WaitUntilWorkedOff());
    if (plan.end == StormEnd::kCalm) {
        EXPECT_EQ(ledger.Cleared(), ledger.Closed()) << "a ClearConnection is lost, or sent twice";
    }
}

void StressRound::Init(StressPbx& pbx) {
    running = "providerInit";
    registry.Set("port", std::to_string(pbx.Port()));
    DWORD options = 0;
    EXPECT_EQ(provider.providerInit(kTspiVersion, kProviderId, kLineDeviceIdBase, kPhoneDeviceIdBase, 1, 1,
                                    OnCompletion, &options),
              0);
    HDRVLINE line = nullptr;
    EXPECT_EQ(provider.lineOpen(kLineDeviceIdBase, nullptr, &line, kTspiVersion, OnLineEvent), 0);
    EXPECT_TRUE(pbx.WaitForConnection());
}

void StressRound::Shutdown() {
    running = "providerShutdown";
    EXPECT_EQ(provider.providerShutdown(kTspiVersion, kProviderId), 0);
}

// The step at which the storm ends is begun, but its call is not yet made: the two meet.
void StressRound::BeginStep(size_t index, const char* place) {
    dialling[index] = place;
    if (++steps == plan.endStep) SetEvent(endReached);
}

}  // namespace velmora
