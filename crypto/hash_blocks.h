#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace velmora {

// What MD5 and SHA-1 have in common: a message is worked off in blocks of 64 bytes; it ends with the byte 0x80, zeros,
// and its length in bits in the last 8 bytes of a block.

inline constexpr size_t kHashBlockBytes = 64;
inline constexpr size_t kHashLengthBytes = 8;

// The length of a message in bits, as both states hold it: low word, high word.
using HashBitCount = uint32_t[2];

inline void addToBitCount(HashBitCount& bitCount, size_t byteCount) {
    const auto lowBits = static_cast<uint32_t>(byteCount << 3);
    bitCount[0] += lowBits;
    const uint32_t carry = bitCount[0] < lowBits ? 1 : 0;
    bitCount[1] += static_cast<uint32_t>(byteCount >> 29) + carry;
}

// How many bytes of a message of this length do not fill a block: 0 to 63.
inline size_t restBytes(const HashBitCount& bitCount) {
    return bitCount[0] / 8 % kHashBlockBytes;
}

// Takes the next bytes of a message into a state with a bitCount and a buffer of one block. compress(blocks, count)
// gets the whole blocks, those of the message where they lie.
template <typename State, typename Compress>
void updateHash(State& state, std::string_view bytes, Compress compress) {
    const size_t buffered = restBytes(state.bitCount);
    addToBitCount(state.bitCount, bytes.size());
    if (buffered > 0) {
        const size_t taken = std::min(kHashBlockBytes - buffered, bytes.size());
        std::memcpy(state.buffer + buffered, bytes.data(), taken);
        bytes.remove_prefix(taken);
        if (buffered + taken < kHashBlockBytes) return;
        compress(state.buffer, size_t{1});
    }
    const size_t blocks = bytes.size() / kHashBlockBytes;
    if (blocks > 0) compress(reinterpret_cast<const uint8_t*>(bytes.data()), blocks);
    bytes.remove_prefix(blocks * kHashBlockBytes);
    if (!bytes.empty()) std::memcpy(state.buffer, bytes.data(), bytes.size());
}

// The end of a message: the bytes that do not fill a block, the padding, and the length.
struct HashTail {
    // rest is what does not fill a block; storeLength(target, bitCount) writes the 8 bytes of the length.
    template <typename StoreLength>
    HashTail(const void* rest, const HashBitCount& bitCount, StoreLength storeLength) {
        const size_t count = restBytes(bitCount);
        if (count > 0) std::memcpy(bytes, rest, count);
        bytes[count] = 0x80;
        blocks = count + 1 + kHashLengthBytes <= kHashBlockBytes ? 1 : 2;
        storeLength(bytes + blocks * kHashBlockBytes - kHashLengthBytes, bitCount);
    }

    uint8_t bytes[2 * kHashBlockBytes] = {};
    size_t blocks;  // 1 or 2
};

}  // namespace velmora
