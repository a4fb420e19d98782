#pragma once

#include <cstdint>
#include <ctime>

namespace velmora {

// The clock of Wine's performance counter, read from outside: units of 100 ns. The driver checks that the two agree.
int64_t CounterNow();
inline constexpr double kCounterUnitUs = 0.1;

// What it has shown at a moment just past by the time of day.
int64_t CounterOf(const timespec& timeOfDay);

// How far the processor's time stamp counter runs in a nanosecond, measured on the spot.
double TicksPerNs();

}  // namespace velmora
