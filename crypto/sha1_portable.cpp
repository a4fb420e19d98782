#include <bit>

#include "crypto/hash_blocks.h"
#include "crypto/sha1_compress.h"

namespace velmora {
namespace {

// FIPS 180, section 6.1.2. The 80 words of the schedule live in the 16 places of the block, each made when its step
// comes.
struct Schedule {
    uint32_t words[16];

    // cppcheck-suppress uninitMemberVar; the loop gives each word its value by reference.
    explicit Schedule(const uint8_t* block) {
        for (uint32_t& word : words) {
            word = uint32_t{block[0]} << 24 | uint32_t{block[1]} << 16 | uint32_t{block[2]} << 8 | block[3];
            block += 4;
        }
    }

    uint32_t word(unsigned step) {
        uint32_t& place = words[step % 16];
        if (step >= 16) {
            place = std::rotl(words[(step + 13) % 16] ^ words[(step + 8) % 16] ^ words[(step + 2) % 16] ^ place, 1);
        }
        return place;
    }
};

// The functions of FIPS 180, section 4.1.1. In the first and third the two halves never have a bit in common.
struct Choose {
    static constexpr uint32_t kConstant = 0x5A827999;
    static uint32_t mix(uint32_t b, uint32_t c, uint32_t d) { return d ^ (b & (c ^ d)); }
};

struct FirstParity {
    static constexpr uint32_t kConstant = 0x6ED9EBA1;
    static uint32_t mix(uint32_t b, uint32_t c, uint32_t d) { return b ^ c ^ d; }
};

struct Majority {
    static constexpr uint32_t kConstant = 0x8F1BBCDC;
    static uint32_t mix(uint32_t b, uint32_t c, uint32_t d) { return (c & d) + (b & (c ^ d)); }
};

struct SecondParity {
    static constexpr uint32_t kConstant = 0xCA62C1D6;
    static uint32_t mix(uint32_t b, uint32_t c, uint32_t d) { return b ^ c ^ d; }
};

template <typename Function>
inline void step(uint32_t a, uint32_t& b, uint32_t c, uint32_t d, uint32_t& e, uint32_t word) {
    e += word + Function::kConstant + Function::mix(b, c, d) + std::rotl(a, 5);
    b = std::rotl(b, 30);
}

// 20 steps from first on. After five the words are back in their places.
template <typename Function>
inline void steps(uint32_t (&chain)[5], Schedule& schedule, unsigned first) {
    auto& [a, b, c, d, e] = chain;
#pragma GCC unroll 4
    for (unsigned t = first; t < first + 20; t += 5) {
        step<Function>(a, b, c, d, e, schedule.word(t));
        step<Function>(e, a, b, c, d, schedule.word(t + 1));
        step<Function>(d, e, a, b, c, schedule.word(t + 2));
        step<Function>(c, d, e, a, b, schedule.word(t + 3));
        step<Function>(b, c, d, e, a, schedule.word(t + 4));
    }
}

}  // namespace

void sha1CompressPortable(uint32_t (&chain)[5], const uint8_t* blocks, size_t count) {
    for (; count > 0; --count, blocks += kHashBlockBytes) {
        Schedule schedule(blocks);
        uint32_t working[5] = {chain[0], chain[1], chain[2], chain[3], chain[4]};
        steps<Choose>(working, schedule, 0);
        steps<FirstParity>(working, schedule, 20);
        steps<Majority>(working, schedule, 40);
        steps<SecondParity>(working, schedule, 60);
        for (int word = 0; word < 5; ++word) chain[word] += working[word];
    }
}

}  // namespace velmora
