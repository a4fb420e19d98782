#include <immintrin.h>

#include "crypto/hash_blocks.h"
#include "crypto/sha1_compress.h"

namespace velmora {
namespace {

// The words of a register run downwards: a (or the first word of four) is in the highest 32 bits. The instructions are
// described in Intel's "Software Developer's Manual", volume 2.

// Four words of the block, big-endian in memory.
[[gnu::target("sha,sse4.1")]] inline __m128i loadWords(const uint8_t* bytes) {
    const __m128i reversed = _mm_set_epi64x(0x0001020304050607, 0x08090A0B0C0D0E0F);
    return _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes)), reversed);
}

// Twenty rounds of one function, four an instruction. before holds a, b, c, d of four rounds ago: its a, rotated, is
// the e of these. words holds the next 16 words of the schedule.
template <int function>
[[gnu::target("sha,sse4.1")]] inline void twentyRounds(__m128i& abcd, __m128i& before, __m128i (&words)[4]) {
#pragma GCC unroll 5
    for (int group = 5 * function; group < 5 * function + 5; ++group) {
        __m128i& now = words[group % 4];
        const __m128i& next = words[(group + 1) % 4];
        // Into the very first rounds goes the e of the chain itself, with no rotation.
        const __m128i e = group == 0 ? _mm_add_epi32(before, now) : _mm_sha1nexte_epu32(before, now);
        before = abcd;
        // The copy is the one that is set aside; the rounds go on in place, where the next ones wait for them.
        asm("" : "+x"(before));
        abcd = _mm_sha1rnds4_epu32(abcd, e, function);
        if (group < 16) {
            const __m128i mixed = _mm_xor_si128(_mm_sha1msg1_epu32(now, next), words[(group + 2) % 4]);
            now = _mm_sha1msg2_epu32(mixed, words[(group + 3) % 4]);
        }
    }
}

}  // namespace

[[gnu::target("sha,sse4.1")]] void sha1CompressShaExtensions(uint32_t (&chain)[5], const uint8_t* blocks,
                                                             size_t count) {
    auto* const firstFour = reinterpret_cast<__m128i*>(chain);
    __m128i abcd = _mm_shuffle_epi32(_mm_loadu_si128(firstFour), 0x1B);
    __m128i e = _mm_set_epi32(static_cast<int>(chain[4]), 0, 0, 0);
    for (; count > 0; --count, blocks += kHashBlockBytes) {
        __m128i words[4] = {loadWords(blocks), loadWords(blocks + 16), loadWords(blocks + 32), loadWords(blocks + 48)};
        const __m128i abcdAtStart = abcd;
        const __m128i eAtStart = e;
        twentyRounds<0>(abcd, e, words);
        twentyRounds<1>(abcd, e, words);
        twentyRounds<2>(abcd, e, words);
        twentyRounds<3>(abcd, e, words);
        abcd = _mm_add_epi32(abcd, abcdAtStart);
        e = _mm_sha1nexte_epu32(e, eAtStart);
    }
    _mm_storeu_si128(firstFour, _mm_shuffle_epi32(abcd, 0x1B));
    chain[4] = static_cast<uint32_t>(_mm_extract_epi32(e, 3));
}

}  // namespace velmora
