#include "tests/support/counted_memory.h"

#include <algorithm>
#include <cstdlib>
#include <new>

namespace {

size_t usedBytes = 0;
size_t mostBytes = 0;
size_t allocations = 0;
size_t takenBytes = 0;

constexpr size_t kHeaderBytes = 16;  // in front of each block: its length, and room to keep it aligned

}  // namespace

void* operator new(size_t bytes) {
    auto* block = static_cast<std::byte*>(std::malloc(bytes + kHeaderBytes));
    if (block == nullptr) throw std::bad_alloc();
    *reinterpret_cast<size_t*>(block) = bytes;
    usedBytes += bytes;
    ++allocations;
    takenBytes += bytes;
    mostBytes = std::max(mostBytes, usedBytes);
    return block + kHeaderBytes;
}

void operator delete(void* memory) noexcept {
    if (memory == nullptr) return;
    std::byte* block = static_cast<std::byte*>(memory) - kHeaderBytes;
    usedBytes -= *reinterpret_cast<size_t*>(block);
    std::free(block);
}

void operator delete(void* memory, size_t /*bytes*/) noexcept {
    operator delete(memory);
}

namespace velmora {

size_t UsedBytes() {
    return usedBytes;
}

size_t Allocations() {
    return allocations;
}

size_t TakenBytes() {
    return takenBytes;
}

size_t PeakBytes(const std::function<void()>& action) {
    const size_t before = usedBytes;
    mostBytes = before;
    action();
    return mostBytes - before;
}

}  // namespace velmora
