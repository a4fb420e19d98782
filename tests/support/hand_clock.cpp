#include "tests/support/hand_clock.h"

#include "config/clock.h"

namespace velmora {

std::atomic<uint64_t> handClockMs = 3600000;

uint32_t TickCount32() {
    return static_cast<uint32_t>(handClockMs);
}

uint64_t TickCount64() {
    return handClockMs;
}

int64_t UnixSeconds() {
    return static_cast<int64_t>(handClockMs / 1000);
}

}  // namespace velmora
