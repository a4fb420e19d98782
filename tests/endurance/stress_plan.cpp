#include "tests/endurance/stress_plan.h"

#include "tests/support/seeded_bytes.h"

namespace velmora {
namespace {

// Of 16 rounds, so many end each way.
constexpr StormEnd kEnds[16] = {
    StormEnd::kCalm,     StormEnd::kCalm,     StormEnd::kCalm,     StormEnd::kCalm,
    StormEnd::kCalm,     StormEnd::kShutdown, StormEnd::kShutdown, StormEnd::kShutdown,
    StormEnd::kShutdown, StormEnd::kShutdown, StormEnd::kReset,    StormEnd::kReset,
    StormEnd::kReset,    StormEnd::kStuck,    StormEnd::kStuck,    StormEnd::kSilence,
};

constexpr size_t kStepsOfAll = 4 * kStressCalls;  // about as many as all threads take together
constexpr size_t kLongAccountBytes = 12000;       // two of them in a frame: some fill every buffer on the way
constexpr size_t kLongNumberBytes = 20000;        // to twice as much; with a long account still one frame
constexpr size_t kStuckMs = 100;                  // by then the buffers on the way are full
constexpr size_t kMostEventsPoured = 300;         // fewer than the buffers on the way hold: pouring never waits

// Digits; rarely so many that the frame takes several records.
std::string DrawNumber(SeededBytes& random, size_t index) {
    const size_t more = random.upTo(9) == 0 ? kLongNumberBytes + random.upTo(kLongNumberBytes) : random.upTo(40);
    return std::to_string(index) + std::string(more, '5');
}

// Of a length that makes strings move in memory.
std::string DrawId(SeededBytes& random, char kind, size_t index) {
    return kind + std::to_string(index) + "-" + std::string(random.upTo(60), kind) +
           std::to_string(random.upTo(999999));
}

CallPlan DrawCall(SeededBytes& random, size_t index, bool pbxAnswers) {
    CallPlan call;
    call.number = DrawNumber(random, index);
    call.closing = static_cast<Closing>(random.upTo(3));
    call.asks = random.upTo(1) == 0;
    call.pauseMs = random.upTo(2) == 0 ? static_cast<unsigned>(random.upTo(4)) : 0;
    call.closeDelayUs = static_cast<unsigned>(random.upTo(20000));
    call.answered = random.upTo(7) != 0 && pbxAnswers;
    call.callId = DrawId(random, 'C', index);
    call.deviceId = DrawId(random, 'D', index);
    call.loginsAccepted = random.upTo(3) + (call.AwaitsBinding() ? 1 : 0);
    call.eventsAround = random.upTo(5);
    call.answerInPieces = random.upTo(2) == 0;
    return call;
}

// Often none, else up to the time that it takes to work off some answers.
unsigned DrawShutdownDelay(SeededBytes& random, StormEnd end) {
    if (end == StormEnd::kStuck) return static_cast<unsigned>(kStuckMs + random.upTo(kStuckMs));
    return random.upTo(2) == 0 ? 0 : static_cast<unsigned>(random.upTo(40));
}

}  // namespace

RoundPlan::RoundPlan(unsigned roundSeed) : seed(roundSeed) {
    SeededBytes random(roundSeed);
    end = kEnds[random.upTo(15)];
    // Once it is stuck, each thread gets as far as its first call.
    endStep = 1 + random.upTo((end == StormEnd::kStuck ? kStressCalls : kStepsOfAll) - 1);
    shutdownDelayMs = DrawShutdownDelay(random, end);
    awaitsLogin = random.upTo(3) != 0;
    const size_t accountBytes = end == StormEnd::kStuck ? kLongAccountBytes : 1 + random.upTo(20);
    username = std::string(accountBytes, 'u');
    domain = std::string(accountBytes, 'd');
    for (size_t index = 0; index < kStressCalls; ++index) {
        calls[index] = DrawCall(random, index, end != StormEnd::kSilence);
    }
    for (size_t events = random.upTo(kMostEventsPoured); events > 0;) {
        const size_t batch = 1 + random.upTo(events > 20 ? 20 : events - 1);
        pouring.push_back(batch);
        events -= batch;
    }
}

std::string RoundPlan::Repetition() const {
    return "VELMORA_STRESS_SEED=" + std::to_string(seed) + " VELMORA_STRESS_ROUNDS=1";
}

}  // namespace velmora
