#pragma once

#include <cstddef>

namespace velmora {

// How many bytes of operator new the program holds at this moment, and the most that it has held since the peak was
// last put back to that. Linking live_memory.cpp replaces operator new; for tests of one thread.
size_t LiveBytes();
size_t PeakBytes();
void ResetPeakBytes();

}  // namespace velmora
