#pragma once

#include <array>
#include <bit>
#include <cstdint>

namespace velmora {

// The tables of AES (FIPS 197), worked out by the compiler.

// The product in GF(2^8) modulo x^8 + x^4 + x^3 + x + 1 (section 4.2).
constexpr uint8_t aesMultiply(uint8_t one, uint8_t other) {
    uint32_t product = 0;
    uint32_t shifted = one;
    for (uint32_t bits = other; bits != 0; bits >>= 1) {
        if ((bits & 1) != 0) product ^= shifted;
        shifted <<= 1;
        if (shifted > 0xFF) shifted ^= 0x11B;
    }
    return static_cast<uint8_t>(product);
}

struct AesTables {
    std::array<uint8_t, 256> sBox{};         // section 5.1.1
    std::array<uint8_t, 256> inverseSBox{};  // section 5.3.2

    // What one byte of a block gives to its column in a round: SubBytes and MixColumns in one. The byte is the first of
    // its column; for the second, third and fourth, the entry is rotated left by 8, 16 and 24 bits.
    std::array<uint32_t, 256> forward{};
    std::array<uint32_t, 256> inverse{};  // the same of the inverse cipher
};

// Four bytes as a column, the first lowest.
constexpr uint32_t aesColumn(uint8_t first, uint8_t second, uint8_t third, uint8_t fourth) {
    return uint32_t{first} | uint32_t{second} << 8 | uint32_t{third} << 16 | uint32_t{fourth} << 24;
}

constexpr AesTables makeAesTables() {
    AesTables tables;
    // 3 generates the field without 0 and 0xF6 is its inverse, so the powers of both meet every element with its
    // inverse.
    uint8_t element = 1;
    uint8_t inverse = 1;
    tables.sBox[0] = 0x63;
    for (int power = 0; power < 255; ++power) {
        const uint8_t mixed = static_cast<uint8_t>(inverse ^ std::rotl(inverse, 1) ^ std::rotl(inverse, 2) ^
                                                   std::rotl(inverse, 3) ^ std::rotl(inverse, 4));
        tables.sBox[element] = mixed ^ 0x63;
        element = aesMultiply(element, 3);
        inverse = aesMultiply(inverse, 0xF6);
    }
    for (uint32_t byte = 0; byte < 256; ++byte) tables.inverseSBox[tables.sBox[byte]] = static_cast<uint8_t>(byte);
    for (uint32_t byte = 0; byte < 256; ++byte) {
        const uint8_t s = tables.sBox[byte];
        const uint8_t y = tables.inverseSBox[byte];
        tables.forward[byte] = aesColumn(aesMultiply(s, 2), s, s, aesMultiply(s, 3));
        tables.inverse[byte] = aesColumn(aesMultiply(y, 14), aesMultiply(y, 9), aesMultiply(y, 13), aesMultiply(y, 11));
    }
    return tables;
}

inline constexpr AesTables kAesTables = makeAesTables();

// Byte number index of a column.
constexpr uint8_t aesByte(uint32_t column, int index) {
    return static_cast<uint8_t>(column >> (8 * index));
}

// SubWord of the key expansion: the S-box on each byte.
constexpr uint32_t aesSubWord(uint32_t word) {
    const auto& s = kAesTables.sBox;
    return aesColumn(s[aesByte(word, 0)], s[aesByte(word, 1)], s[aesByte(word, 2)], s[aesByte(word, 3)]);
}

// InvMixColumns on one column: the S-box takes back the inverse S-box that is in the table.
constexpr uint32_t aesInverseMixColumn(uint32_t column) {
    uint32_t mixed = 0;
    for (int index = 0; index < 4; ++index) {
        mixed ^= std::rotl(kAesTables.inverse[kAesTables.sBox[aesByte(column, index)]], 8 * index);
    }
    return mixed;
}

}  // namespace velmora
