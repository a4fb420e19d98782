#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace velmora {

// What this process uses at the moment, the provider and the test together.

// Handles that are open.
size_t OpenHandles();

// In use on all heaps.
size_t HeapBytes();

// In use as memory of the process alone: heaps and the stacks of its threads.
size_t CommittedBytes();

// Threads that have started and not ended: their IDs, and how many they are; none when the system does not tell.
std::vector<uint32_t> ThreadIds();
size_t RunningThreads();

}  // namespace velmora
