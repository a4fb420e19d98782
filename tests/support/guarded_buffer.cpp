#include "tests/support/guarded_buffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace velmora {
namespace {

constexpr size_t kGuardBytes = 256;
constexpr unsigned char kGuard = 0xA5;

bool IsGuard(unsigned char byte) {
    return byte == kGuard;
}

}  // namespace

GuardedBuffer::GuardedBuffer(size_t bytes) : memory(bytes + 2 * kGuardBytes, kGuard) {
    std::fill_n(Data(), bytes, kUntouched);
}

GuardedBuffer::~GuardedBuffer() {
    EXPECT_TRUE(std::all_of(memory.begin(), memory.begin() + kGuardBytes, IsGuard)) << "written before the buffer";
    EXPECT_TRUE(std::all_of(memory.end() - kGuardBytes, memory.end(), IsGuard)) << "written past the buffer";
}

uint32_t GuardedBuffer::Word(size_t offset) const {
    uint32_t value = 0;
    std::memcpy(&value, Data() + offset, sizeof value);
    return value;
}

void GuardedBuffer::SetWord(size_t offset, uint32_t value) {
    std::memcpy(Data() + offset, &value, sizeof value);
}

void GuardedBuffer::Zero(size_t offset, size_t count) {
    std::memset(Data() + offset, 0, count);
}

void GuardedBuffer::SetBytes(size_t offset, const std::string& bytes) {
    std::memcpy(Data() + offset, bytes.data(), bytes.size());
}

std::string GuardedBuffer::Bytes(size_t offset, size_t count) const {
    const unsigned char* first = Data() + offset;
    return {first, first + count};
}

std::string GuardedBuffer::DifferencesFrom(const GuardedBuffer& expected) const {
    if (memory.size() != expected.memory.size()) return "another size";
    std::string differences;
    for (size_t index = kGuardBytes; index < memory.size() - kGuardBytes; ++index) {
        if (memory[index] == expected.memory[index]) continue;
        char line[64];
        const int length =
            std::snprintf(line, sizeof line, "byte %u: %02x instead of %02x\n",
                          static_cast<unsigned>(index - kGuardBytes), memory[index], expected.memory[index]);
        differences.append(line, static_cast<size_t>(length));
    }
    return differences;
}

unsigned char* GuardedBuffer::Data() {
    return memory.data() + kGuardBytes;
}

const unsigned char* GuardedBuffer::Data() const {
    return memory.data() + kGuardBytes;
}

}  // namespace velmora
