#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace velmora {

// What MD5 and SHA-1 have in common: a message is worked off in blocks of 64 bytes; it ends with the byte 0x80, zeros,
// and its length in bits in the last 8 bytes of a block. The functions work on a state with these fields:
//
//   uint32_t bitCount[2]   bits of the message so far: low word, high word
//   uint8_t buffer[64]     the bytes that do not fill a block yet
//
// and take compress(blocks, count), which works whole blocks into the state's chaining words.

inline constexpr size_t kHashBlockBytes = 64;
inline constexpr size_t kHashLengthPosition = 56;  // of the length in the last block

// How many bytes wait in the buffer: 0 to 63.
inline size_t bufferedBytes(const uint32_t (&bitCount)[2]) {
    return bitCount[0] / 8 % kHashBlockBytes;
}

inline void addToBitCount(uint32_t (&bitCount)[2], size_t byteCount) {
    const auto lowBits = static_cast<uint32_t>(byteCount << 3);
    bitCount[0] += lowBits;
    const uint32_t carry = bitCount[0] < lowBits ? 1 : 0;
    bitCount[1] += static_cast<uint32_t>(byteCount >> 29) + carry;
}

// Takes the next bytes of the message. Whole blocks are compressed where they lie.
template <typename State, typename Compress>
void updateHash(State& state, std::string_view bytes, Compress compress) {
    const size_t buffered = bufferedBytes(state.bitCount);
    addToBitCount(state.bitCount, bytes.size());
    if (buffered > 0) {
        const size_t taken = std::min(kHashBlockBytes - buffered, bytes.size());
        std::memcpy(state.buffer + buffered, bytes.data(), taken);
        bytes.remove_prefix(taken);
        if (buffered + taken < kHashBlockBytes) return;
        compress(state.buffer, 1);
    }
    const size_t blocks = bytes.size() / kHashBlockBytes;
    if (blocks > 0) compress(reinterpret_cast<const uint8_t*>(bytes.data()), blocks);
    bytes.remove_prefix(blocks * kHashBlockBytes);
    if (!bytes.empty()) std::memcpy(state.buffer, bytes.data(), bytes.size());
}

// Compresses the end of the message: what is in the buffer, the padding, and the 8 bytes of length that
// storeLength(target, bitCount) writes.
template <typename State, typename StoreLength, typename Compress>
void finishHash(State& state, StoreLength storeLength, Compress compress) {
    const size_t buffered = bufferedBytes(state.bitCount);
    state.buffer[buffered] = 0x80;
    std::memset(state.buffer + buffered + 1, 0, kHashBlockBytes - buffered - 1);
    if (buffered >= kHashLengthPosition) {
        compress(state.buffer, 1);
        std::memset(state.buffer, 0, kHashBlockBytes);
    }
    storeLength(state.buffer + kHashLengthPosition, state.bitCount);
    compress(state.buffer, 1);
}

}  // namespace velmora
