#pragma once

#include "tests/endurance/stress_pbx.h"
// and what builds on windows.h behind it
#include "tests/provider/provider_test.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <string>

namespace velmora {

// One round: the provider is loaded and initialised, ten threads dial and close at once, something ends the storm, the
// calls still open are closed one by one, and the provider is shut down and unloaded.
//
// After a calm storm they are closed in the same session, otherwise in a second one, before another PBX. Either way a
// call that was bound is closed under the name that the PBX has given to it.
class StressRound {
public:
    // The plan, the settings and the totals live longer.
    StressRound(const RoundPlan& roundPlan, RegistryScope& settings, StressTotals& allTotals);
    ~StressRound();
    StressRound(const StressRound&) = delete;
    StressRound& operator=(const StressRound&) = delete;

    // Fails the test when something does not hold. Never ends when the provider is deadlocked.
    void Run();

    // What each thread of the round is doing; on any thread, at any time.
    std::string Places() const;

private:
    void Storm(StressPbx& pbx);
    void Dial(size_t index);
    void AwaitBinding(size_t index);
    void EndStorm(StressPbx& pbx);
    void Close(size_t index);
    void CloseTwice(size_t index);
    void CloseRest(StressPbx& pbx);
    void Init(StressPbx& pbx);
    void Shutdown();
    void BeginStep(size_t index, const char* place);

    const RoundPlan& plan;
    RegistryScope& registry;
    StressTotals& totals;
    StressLedger ledger;
    bool linkStands;  // nothing will end the connection before the round does
    ProviderHost provider;
    std::array<HDRVCALL, kStressCalls> handles = {};
    HANDLE endReached;                // an event: the storm has come to the step at which it ends
    std::atomic<size_t> steps = 0;    // calls of the provider that the dialling threads have begun
    std::atomic<bool> ended = false;  // the storm has come to its end: what is not bound now may never be

    // What is being done: by each dialling thread, by what ends the storm, by the round itself.
    std::array<std::atomic<const char*>, kStressCalls> dialling = {};
    std::atomic<const char*> ending = "nothing";
    std::atomic<const char*> running = "nothing";
};

}  // namespace velmora
