#pragma once

#include <atomic>
#include <cstdint>

namespace velmora {

// The clock of a test, set by hand: both tick counters answer with this value, the time of day
// with its seconds. It starts at one hour. Any thread may set it.
extern std::atomic<uint64_t> handClockMs;

}  // namespace velmora
