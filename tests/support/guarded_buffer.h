#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace velmora {

// A buffer to hand to an entry point, with guard bytes on both sides. Every byte starts as kUntouched, so a field that
// was left alone can be told from one set to zero.
class GuardedBuffer {
public:
    static constexpr unsigned char kUntouched = 0xCC;

    explicit GuardedBuffer(size_t bytes);

    // Fails the test when a guard byte was changed.
    ~GuardedBuffer();

    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;

    template <typename Type>
    Type* As() {
        return reinterpret_cast<Type*>(Data());
    }

    // The 32-bit word at offset, which counts from the start of the buffer proper.
    uint32_t Word(size_t offset) const;
    void SetWord(size_t offset, uint32_t value);

    // Sets count bytes from offset on to zero.
    void Zero(size_t offset, size_t count);

    void SetBytes(size_t offset, const std::string& bytes);
    std::string Bytes(size_t offset, size_t count) const;

    // The bytes at which this buffer differs from the one expected, as text; empty when there is none.
    std::string DifferencesFrom(const GuardedBuffer& expected) const;

private:
    unsigned char* Data();
    const unsigned char* Data() const;

    std::vector<unsigned char> memory;  // guard, buffer proper, guard
};

}  // namespace velmora
