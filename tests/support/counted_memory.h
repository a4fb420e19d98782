#pragma once

#include <cstddef>
#include <functional>

namespace velmora {

// What a program takes of the memory that "new" gives. Linked into a program, it counts all of it.

// The bytes in use now.
size_t UsedBytes();

// How many blocks have been taken so far.
size_t Allocations();

// The bytes of all blocks taken so far.
size_t TakenBytes();

// The most that action holds at a time, beyond what was held before.
size_t PeakBytes(const std::function<void()>& action);

}  // namespace velmora
