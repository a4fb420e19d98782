#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "provider/call_table.h"

namespace velmora {

// What is to happen in one round of the stress test, drawn from a seed: the same in every run, as far as the system's
// scheduling of the threads allows.

// One dialling thread a call: as many as the provider places between loading and unloading.
inline constexpr size_t kStressCalls = CallTable::kCalls;

// What ends the storm of a round.
enum class StormEnd {
    kCalm,      // nothing: every call is made and closed
    kShutdown,  // the provider is shut down in the midst of it
    kReset,     // the PBX resets the connection, then the provider is shut down
    kStuck,     // the PBX reads nothing more, so that sends do not return; then the provider is shut down
    kSilence,   // the PBX never answers, not even the first message of TLS; then the provider is shut down
};

// When the dialling thread closes its call.
enum class Closing {
    kAtOnce,
    kWhenBound,  // when the provider has worked off the PBX's answer
    kTwice,      // likewise, by two threads at once
    kLeftOpen,   // not before the storm is over
};

struct CallPlan {
    std::string number;  // starts with the number of its thread
    Closing closing = Closing::kAtOnce;
    bool asks = false;          // for the call's status and information, and drops it
    unsigned pauseMs = 0;       // before it dials
    unsigned closeDelayUs = 0;  // before it closes at once: about when the answer comes
    bool answered = false;      // by the PBX, at once
    std::string callId;         // in the answer
    std::string deviceId;       // likewise
    size_t loginsAccepted = 0;  // together with the answer; the provider sends a MonitorStart for each
    size_t eventsAround = 0;    // sent together with the answer
    bool answerInPieces = false;

    bool AwaitsBinding() const { return answered && (closing == Closing::kWhenBound || closing == Closing::kTwice); }
};

struct RoundPlan {
    explicit RoundPlan(unsigned seed);

    // "VELMORA_STRESS_SEED=... VELMORA_STRESS_ROUNDS=1", to repeat this round alone.
    std::string Repetition() const;

    unsigned seed;
    StormEnd end = StormEnd::kCalm;
    size_t endStep = 0;            // the storm ends when the threads have begun this many calls of the provider
    unsigned shutdownDelayMs = 0;  // from then to the shutdown
    bool awaitsLogin = false;      // dialling starts only when the PBX has accepted the login
    std::string username;
    std::string domain;
    std::array<CallPlan, kStressCalls> calls;
    std::vector<size_t> pouring;  // events that are sent one after the other, by their number in each batch

    std::string Device() const { return username + "@" + domain; }
};

}  // namespace velmora
