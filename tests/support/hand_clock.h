#pragma once

#include <cstdint>

namespace velmora {

// The clock of a test, set by hand: both tick counters answer with this value, the time of day
// with its seconds. It starts at one hour.
extern uint64_t handClockMs;

}  // namespace velmora
