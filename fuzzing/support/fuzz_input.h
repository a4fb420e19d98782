#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "config/byte_string.h"

namespace velmora {

// The bytes of an input, taken from its front as numbers and pieces. What is not there reads as 0 and as empty.
class FuzzInput {
public:
    FuzzInput(const uint8_t* data, size_t bytes) : left(reinterpret_cast<const char*>(data), bytes) {}

    bool AtEnd() const { return left.empty(); }

    uint8_t U8() {
        const std::string_view byte = Take(1);
        return byte.empty() ? uint8_t{0} : static_cast<uint8_t>(byte[0]);
    }

    // Big-endian.
    uint16_t U16() {
        const unsigned high = U8();
        return static_cast<uint16_t>(high * 256 + U8());
    }

    // At most count bytes.
    ByteString Bytes(size_t count) { return ByteString(Take(count)); }

    // A piece behind its length of one byte.
    ByteString Piece() { return Bytes(U8()); }

    ByteString Rest() { return Bytes(left.size()); }

private:
    std::string_view Take(size_t count) {
        const std::string_view taken = left.substr(0, std::min(count, left.size()));
        left.remove_prefix(taken.size());
        return taken;
    }

    std::string_view left;
};

}  // namespace velmora
