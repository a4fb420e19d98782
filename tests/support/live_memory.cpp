#include "tests/support/live_memory.h"

#include <algorithm>
#include <cstdlib>
#include <new>

namespace {

size_t liveBytes = 0;
size_t peakBytes = 0;

// In front of each piece of memory stands how long it is; what follows is aligned for everything.
constexpr size_t kHeaderBytes = alignof(std::max_align_t) < sizeof(size_t) ? sizeof(size_t) : alignof(std::max_align_t);

}  // namespace

void* operator new(size_t count) {
    void* memory = std::malloc(kHeaderBytes + count);
    if (memory == nullptr) throw std::bad_alloc();
    *static_cast<size_t*>(memory) = count;
    liveBytes += count;
    peakBytes = std::max(peakBytes, liveBytes);
    return static_cast<char*>(memory) + kHeaderBytes;
}

void operator delete(void* target) noexcept {
    if (target == nullptr) return;
    void* memory = static_cast<char*>(target) - kHeaderBytes;
    liveBytes -= *static_cast<size_t*>(memory);
    std::free(memory);
}

void operator delete(void* target, size_t /*count*/) noexcept {
    operator delete(target);
}

namespace velmora {

size_t LiveBytes() {
    return liveBytes;
}

size_t PeakBytes() {
    return peakBytes;
}

void ResetPeakBytes() {
    peakBytes = liveBytes;
}

}  // namespace velmora
