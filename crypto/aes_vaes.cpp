#include <immintrin.h>

#include <cstring>

#include "crypto/aes_path.h"

namespace velmora {
namespace {

constexpr size_t kPairBytes = 2 * kAesBlockBytes;

[[gnu::target("vaes,avx2")]] inline __m128i load(const void* bytes) {
    return _mm_loadu_si128(static_cast<const __m128i*>(bytes));
}

[[gnu::target("vaes,avx2")]] inline __m256i loadPair(const uint8_t* bytes) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes));
}

[[gnu::target("vaes,avx2")]] inline void storePair(uint8_t* bytes, __m256i pair) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(bytes), pair);
}

// A round key for both blocks of a pair.
[[gnu::target("vaes,avx2")]] inline __m256i roundKey(const AesKeys& keys, size_t round) {
    return _mm256_broadcastsi128_si256(load(keys.words + 4 * round));
}

// Works off pairs, several at once. The chain is the 16 bytes at chain, from then on the last of the ciphertext.
template <size_t kPairs>
[[gnu::target("vaes,avx2")]] void decryptPairs(const AesKeys& keys, uint8_t* chain, const uint8_t* source,
                                               uint8_t* target) {
    const __m256i lastKey = roundKey(keys, keys.rounds);
    __m256i states[kPairs];
#pragma GCC unroll 8
    for (size_t pair = 0; pair < kPairs; ++pair) {
        states[pair] = _mm256_xor_si256(loadPair(source + pair * kPairBytes), lastKey);
    }
    for (size_t round = keys.rounds - 1; round > 0; --round) {
        const __m256i key = roundKey(keys, round);
#pragma GCC unroll 8
        for (__m256i& state : states) state = _mm256_aesdec_epi128(state, key);
    }
    // What the last round adds is its key and the ciphertext before.
    const __m256i firstKey = roundKey(keys, 0);
    const __m256i beforeFirstPair = _mm256_set_m128i(load(source), load(chain));
#pragma GCC unroll 8
    for (size_t pair = 0; pair < kPairs; ++pair) {
        const __m256i before = pair == 0 ? beforeFirstPair : loadPair(source + pair * kPairBytes - kAesBlockBytes);
        const __m256i plain = _mm256_aesdeclast_epi128(states[pair], _mm256_xor_si256(firstKey, before));
        storePair(target + pair * kPairBytes, plain);
    }
    std::memcpy(chain, source + kPairs * kPairBytes - kAesBlockBytes, kAesBlockBytes);
}

// Works off as many blocks as it can, kPairs pairs at once, and takes them off the front.
template <size_t kPairs>
void decryptFront(const AesKeys& keys, uint8_t* chain, const uint8_t*& source, uint8_t*& target, size_t& count) {
    for (; count >= 2 * kPairs; count -= 2 * kPairs) {
        decryptPairs<kPairs>(keys, chain, source, target);
        source += kPairs * kPairBytes;
        target += kPairs * kPairBytes;
    }
}

}  // namespace

void aesDecryptCbcVaes(const AesKeys& keys, uint8_t* chain, const uint8_t* source, uint8_t* target, size_t count) {
    decryptFront<8>(keys, chain, source, target, count);
    decryptFront<2>(keys, chain, source, target, count);
    kAesInstructions.decryptCbc(keys, chain, source, target, count);
}

}  // namespace velmora
