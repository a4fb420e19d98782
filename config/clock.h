#pragma once

#include <cstdint>

namespace velmora {

// How late it is. Windows answers in clock_windows.cpp.

// Milliseconds since the system started, on the 32-bit counter, which wraps after 49.7 days.
uint32_t TickCount32();

// On the 64-bit counter.
uint64_t TickCount64();

// The time of day: seconds since the start of 1970, UTC.
int64_t UnixSeconds();

}  // namespace velmora
