#pragma once

// Winsock's header comes before windows.h, which the lock includes.
#include <winsock2.h>
// and what builds on it
#include "csta/critical_section.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "tests/endurance/stress_plan.h"

namespace velmora {

// What both sides know of the calls of one round: the dialling threads of what they have closed, the PBX of what it has
// been asked and has answered. It fails the test when the provider mixes calls up.
//
// A call is confirmed when the provider has certainly worked off the PBX's answer: from then on it is bound.
class StressLedger {
public:
    explicit StressLedger(const RoundPlan& roundPlan) : plan(roundPlan) {}

    // The PBX has got the MakeCall of a number; gives the call's index. Each number is dialled once, and arrives whole.
    size_t TakeDialled(const std::string& number);

    // The PBX is about to answer the call; the provider has worked that off once it has sent this many MonitorStarts.
    void Answer(size_t index, size_t monitorStarts);

    // The PBX has got this many MonitorStarts.
    void Confirm(size_t monitorStarts);

    // The session is over: an answer that is not confirmed by now never will be.
    void EndSession();

    bool IsConfirmed(size_t index);

    // The call is about to be closed; whether it is confirmed.
    bool BeginClosing(size_t index);
    bool IsClosing(size_t index);

    // The PBX has got a ClearConnection. It names a call that is being closed, for the first time, as the answer did;
    // or none and the calling device, for a call that was not bound.
    void TakeCleared(const std::string& callId, const std::string& deviceId);

    // How many calls have been closed, and how many ClearConnections have come.
    size_t Closed();
    size_t Cleared();

    // How many ClearConnections have come for this call, by the name of its answer.
    size_t ClearedByName(size_t index);

private:
    struct Call {
        bool dialled = false;
        bool answered = false;
        size_t confirmingMonitorStarts = 0;
        bool confirmed = false;
        bool closing = false;
        size_t cleared = 0;
    };

    size_t IndexOfCallId(const std::string& callId) const;

    const RoundPlan& plan;
    CriticalSection lock;  // guards what follows
    std::array<Call, kStressCalls> calls;
    size_t closed = 0;
    size_t cleared = 0;
    size_t closedUnconfirmed = 0;  // of those closed; they may or may not be bound
    size_t clearedWithoutName = 0;
};

}  // namespace velmora
