#pragma once

#include <cstdint>

namespace velmora {

// How late it is: milliseconds since the system started. Windows answers in clock_windows.cpp.

// On the 32-bit counter, which wraps after 49.7 days.
uint32_t TickCount32();

// On the 64-bit counter.
uint64_t TickCount64();

}  // namespace velmora
