#pragma once

#include "crypto/limbs.h"

namespace velmora {

// What every way of computing a power in Montgomery's form shares. In that form a number x modulo an odd m is held as
// x * R mod m, where R is a power of two above m; the product of two such numbers is divided by R once, and stays
// in the form (Handbook of Applied Cryptography, 14.3.2).

// -1 / odd modulo 2^64, and so modulo every lower power of two.
constexpr Limb negatedInverse(Limb odd) {
    Limb inverse = odd;  // right in its lowest 3 bits; each round doubles them
    for (int bits = 3; bits < 64; bits *= 2) inverse *= 2 - odd * inverse;
    return ~inverse + 1;
}

// x * R mod modulus for R = 2^bits.
inline Limbs montgomeryForm(LimbView x, size_t bits, LimbView modulus) {
    return divideLimbs(shiftedUp(x, bits), modulus).remainder;
}

// The bits of an exponent that are read at a time, so that it takes the fewest products: each such digit costs one with
// an entry of a table of small powers (ibid., 14.6.1).
constexpr size_t windowBits(size_t exponentBits) {
    if (exponentBits <= 24) return 1;
    if (exponentBits <= 80) return 3;
    if (exponentBits <= 240) return 4;
    if (exponentBits <= 1024) return 5;
    return 6;
}

// The digit of width bits whose lowest has the given position, but for bit 0 of the exponent, which is left out. Bits
// above the exponent are zero.
inline size_t windowAt(LimbView exponent, size_t position, size_t width) {
    const size_t digit = bitsAt(exponent, position) & ((size_t{1} << width) - 1);
    return position == 0 ? digit & ~size_t{1} : digit;
}

// Walks the exponent's digits from the top. The form starts with a power of the base, is squared and multiplied by
// such powers, and in the end leaves Montgomery's form by one more product: with the base itself when bit 0 of the
// exponent is set, with 1 otherwise. So that bit costs nothing, and for the exponent 65537 seventeen products are all.
template <typename Form>
void raiseByWindows(Form& form, size_t exponentBits) {
    const size_t width = windowBits(exponentBits);
    size_t position = (exponentBits - 1) / width * width;
    form.start(position, width);
    while (position > 0) {
        for (size_t bit = 0; bit < width; ++bit) form.square();
        position -= width;
        form.multiply(position, width);
    }
    form.leave();
}

}  // namespace velmora
