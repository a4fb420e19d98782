#include "crypto/md5.h"

#include <bit>
#include <cstring>

#include "crypto/hash_blocks.h"

namespace velmora {
namespace {

static_assert(std::endian::native == std::endian::little, "words are loaded and stored as they lie in memory");

// RFC 1321, section 3.4: the integer part of 2^32 times |sin(i)|, i from 1 to 64.
constexpr uint32_t kSines[64] = {
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,  //
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,  //
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,  //
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,  //
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,  //
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,  //
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,  //
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391,  //
};

// RFC 1321, section 3.4. Each step waits for the one before it through b alone, so the sums put b last: what needs no b
// is ready by then. In G the two halves never have a bit in common, so they can be added one after the other, which
// saves the wait for an "or".

inline void stepF(uint32_t& a, uint32_t b, uint32_t c, uint32_t d, uint32_t addend, int shift) {
    a = b + std::rotl(a + addend + (d ^ (b & (c ^ d))), shift);
}

inline void stepG(uint32_t& a, uint32_t b, uint32_t c, uint32_t d, uint32_t addend, int shift) {
    a = b + std::rotl(a + addend + (c & ~d) + (b & d), shift);
}

inline void stepH(uint32_t& a, uint32_t b, uint32_t c, uint32_t d, uint32_t addend, int shift) {
    a = b + std::rotl(a + addend + (b ^ (c ^ d)), shift);
}

inline void stepI(uint32_t& a, uint32_t b, uint32_t c, uint32_t d, uint32_t addend, int shift) {
    a = b + std::rotl(a + addend + (c ^ (b | ~d)), shift);
}

// The 64 steps over one block. Each takes a word of the block and a sine.
inline void fourRounds(uint32_t& a, uint32_t& b, uint32_t& c, uint32_t& d, const uint8_t* block) {
    const auto addend = [block](unsigned step, unsigned word) {
        uint32_t value = 0;
        std::memcpy(&value, block + size_t{4} * (word % 16), sizeof value);
        return value + kSines[step];
    };

#pragma GCC unroll 4
    for (unsigned step = 0; step < 16; step += 4) {
        stepF(a, b, c, d, addend(step, step), 7);
        stepF(d, a, b, c, addend(step + 1, step + 1), 12);
        stepF(c, d, a, b, addend(step + 2, step + 2), 17);
        stepF(b, c, d, a, addend(step + 3, step + 3), 22);
    }
#pragma GCC unroll 4
    for (unsigned step = 16; step < 32; step += 4) {
        stepG(a, b, c, d, addend(step, 5 * step + 1), 5);
        stepG(d, a, b, c, addend(step + 1, 5 * step + 6), 9);
        stepG(c, d, a, b, addend(step + 2, 5 * step + 11), 14);
        stepG(b, c, d, a, addend(step + 3, 5 * step), 20);
    }
#pragma GCC unroll 4
    for (unsigned step = 32; step < 48; step += 4) {
        stepH(a, b, c, d, addend(step, 3 * step + 5), 4);
        stepH(d, a, b, c, addend(step + 1, 3 * step + 8), 11);
        stepH(c, d, a, b, addend(step + 2, 3 * step + 11), 16);
        stepH(b, c, d, a, addend(step + 3, 3 * step + 14), 23);
    }
#pragma GCC unroll 4
    for (unsigned step = 48; step < 64; step += 4) {
        stepI(a, b, c, d, addend(step, 7 * step), 6);
        stepI(d, a, b, c, addend(step + 1, 7 * step + 7), 10);
        stepI(c, d, a, b, addend(step + 2, 7 * step + 14), 15);
        stepI(b, c, d, a, addend(step + 3, 7 * step + 5), 21);
    }
}

// Between blocks the chaining words stay in registers: the way through memory would lengthen the chain.
void compressBlocks(uint32_t (&chain)[4], const uint8_t* blocks, size_t count) {
    uint32_t a = chain[0], b = chain[1], c = chain[2], d = chain[3];
    for (; count > 0; --count, blocks += kHashBlockBytes) {
        const uint32_t aAtStart = a, bAtStart = b, cAtStart = c, dAtStart = d;
        fourRounds(a, b, c, d, blocks);
        a += aAtStart;
        b += bAtStart;
        c += cAtStart;
        d += dAtStart;
    }
    chain[0] = a;
    chain[1] = b;
    chain[2] = c;
    chain[3] = d;
}

void storeLength(uint8_t* target, const HashBitCount& bitCount) {
    std::memcpy(target, bitCount, sizeof bitCount);
}

void storeChain(uint8_t* target, const uint32_t (&chain)[4]) {
    std::memcpy(target, chain, sizeof chain);
}

}  // namespace

ByteString md5Digest(const ByteString& data) {
    Md5State state;
    addToBitCount(state.bitCount, data.size());
    const auto* const bytes = reinterpret_cast<const uint8_t*>(data.data());
    const size_t blocks = data.size() / kHashBlockBytes;
    // The tail is written before the long work, so that its stores have come to rest when it is read.
    const HashTail tail(bytes + blocks * kHashBlockBytes, state.bitCount, storeLength);
    compressBlocks(state.chain, bytes, blocks);
    compressBlocks(state.chain, tail.bytes, tail.blocks);
    ByteString digest(Md5State::kDigestBytes, '\0');
    storeChain(reinterpret_cast<uint8_t*>(digest.data()), state.chain);
    return digest;
}

void Md5State::update(std::string_view bytes) {
    updateHash(*this, bytes, [this](const uint8_t* blocks, size_t count) { compressBlocks(chain, blocks, count); });
}

ByteString Md5State::digest() const {
    ByteString digest(kDigestBytes, '\0');
    Md5State(*this).finish(reinterpret_cast<uint8_t*>(digest.data()));
    return digest;
}

void Md5State::finish(uint8_t* target) {
    const HashTail tail(buffer, bitCount, storeLength);
    compressBlocks(chain, tail.bytes, tail.blocks);
    storeChain(target, chain);
}

}  // namespace velmora
