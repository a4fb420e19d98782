#include <immintrin.h>

#include "crypto/aes_path.h"

namespace velmora {
namespace {

// The round instructions do what FIPS 197 calls a round of the cipher and of the equivalent inverse cipher; the
// schedule of AesCipher is the one that they expect.

constexpr size_t kBlocksAtOnce = 8;  // enough to keep the unit busy while a round takes its time

[[gnu::target("aes,sse4.1")]] inline __m128i load(const void* bytes) {
    return _mm_loadu_si128(static_cast<const __m128i*>(bytes));
}

[[gnu::target("aes,sse4.1")]] inline void store(void* bytes, __m128i block) {
    _mm_storeu_si128(static_cast<__m128i*>(bytes), block);
}

[[gnu::target("aes,sse4.1")]] inline __m128i roundKey(const AesKeys& keys, size_t round) {
    return load(keys.words + 4 * round);
}

[[gnu::target("aes,sse4.1")]] void encryptBlock(const AesKeys& keys, uint8_t* block) {
    __m128i state = _mm_xor_si128(load(block), roundKey(keys, 0));
    for (size_t round = 1; round < keys.rounds; ++round) state = _mm_aesenc_si128(state, roundKey(keys, round));
    store(block, _mm_aesenclast_si128(state, roundKey(keys, keys.rounds)));
}

[[gnu::target("aes,sse4.1")]] void decryptBlock(const AesKeys& keys, uint8_t* block) {
    __m128i state = _mm_xor_si128(load(block), roundKey(keys, keys.rounds));
    for (size_t round = keys.rounds - 1; round > 0; --round) state = _mm_aesdec_si128(state, roundKey(keys, round));
    store(block, _mm_aesdeclast_si128(state, roundKey(keys, 0)));
}

// Each block waits for the one before it. The last round adds its key by an XOR, so the next block and the first round
// key are added to that key beforehand: the result is where the next block starts, and the ciphertext is off the path.
template <size_t kRounds>
[[gnu::target("aes,sse4.1")]] void encryptCbcRounds(const AesKeys& keys, uint8_t* chain, const uint8_t* source,
                                                    uint8_t* target, size_t count) {
    __m128i key[kRounds + 1];
    for (size_t round = 0; round <= kRounds; ++round) key[round] = roundKey(keys, round);
    __m128i next = _mm_xor_si128(load(source), key[0]);
    __m128i state = _mm_xor_si128(next, load(chain));
    for (; count > 1; --count, target += kAesBlockBytes) {
        source += kAesBlockBytes;
        next = _mm_xor_si128(load(source), key[0]);
#pragma GCC unroll 16
        for (size_t round = 1; round < kRounds; ++round) state = _mm_aesenc_si128(state, key[round]);
        state = _mm_aesenclast_si128(state, _mm_xor_si128(key[kRounds], next));
        store(target, _mm_xor_si128(state, next));
    }
    for (size_t round = 1; round < kRounds; ++round) state = _mm_aesenc_si128(state, key[round]);
    state = _mm_aesenclast_si128(state, key[kRounds]);
    store(target, state);
    store(chain, state);
}

void encryptCbc(const AesKeys& keys, uint8_t* chain, const uint8_t* source, uint8_t* target, size_t count) {
    if (count == 0) return;
    if (keys.rounds == 10) encryptCbcRounds<10>(keys, chain, source, target, count);
    if (keys.rounds == 12) encryptCbcRounds<12>(keys, chain, source, target, count);
    if (keys.rounds == 14) encryptCbcRounds<14>(keys, chain, source, target, count);
}

// The blocks are independent: several are worked off at once. What the last round adds is its key and the ciphertext
// before.
template <size_t kBlocks>
[[gnu::target("aes,sse4.1")]] inline void decryptCbcBlocks(const AesKeys& keys, __m128i& chain, const uint8_t* source,
                                                           uint8_t* target) {
    const __m128i lastKey = roundKey(keys, keys.rounds);
    __m128i states[kBlocks];
#pragma GCC unroll 8
    for (size_t block = 0; block < kBlocks; ++block) {
        states[block] = _mm_xor_si128(load(source + block * kAesBlockBytes), lastKey);
    }
    for (size_t round = keys.rounds - 1; round > 0; --round) {
        const __m128i key = roundKey(keys, round);
#pragma GCC unroll 8
        for (__m128i& state : states) state = _mm_aesdec_si128(state, key);
    }
    const __m128i firstKey = roundKey(keys, 0);
#pragma GCC unroll 8
    for (size_t block = 0; block < kBlocks; ++block) {
        store(target + block * kAesBlockBytes, _mm_aesdeclast_si128(states[block], _mm_xor_si128(firstKey, chain)));
        chain = load(source + block * kAesBlockBytes);
    }
}

[[gnu::target("aes,sse4.1")]] void decryptCbc(const AesKeys& keys, uint8_t* chain, const uint8_t* source,
                                              uint8_t* target, size_t count) {
    __m128i previous = load(chain);
    for (; count >= kBlocksAtOnce; count -= kBlocksAtOnce) {
        decryptCbcBlocks<kBlocksAtOnce>(keys, previous, source, target);
        source += kBlocksAtOnce * kAesBlockBytes;
        target += kBlocksAtOnce * kAesBlockBytes;
    }
    for (; count > 0; --count) {
        decryptCbcBlocks<1>(keys, previous, source, target);
        source += kAesBlockBytes;
        target += kAesBlockBytes;
    }
    store(chain, previous);
}

}  // namespace

const AesPath kAesInstructions = {encryptBlock, decryptBlock, encryptCbc, decryptCbc};

}  // namespace velmora
