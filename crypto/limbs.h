#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace velmora {

// Natural numbers as runs of 64-bit limbs, lowest first: the arithmetic below BigInt. Limbs of zero at the top are
// allowed everywhere and change no result. Nothing here takes the same time for every value.

using Limb = uint64_t;
__extension__ typedef unsigned __int128 DoubleLimb;  // what two limbs multiply to

inline constexpr size_t kLimbBits = 64;

using Limbs = std::vector<Limb>;
using LimbView = std::span<const Limb>;  // read
using LimbSpan = std::span<Limb>;        // written, in place

inline constexpr Limb kOne[] = {1};  // the number one

// The upper limb of a product or sum of two.
constexpr Limb highLimb(DoubleLimb value) {
    return static_cast<Limb>(value >> kLimbBits);
}

// The number without its limbs of zero at the top; empty for zero.
LimbView significant(LimbView number);

// The bits up to the highest one set; 0 for zero.
size_t bitLength(LimbView number);

// The 64 bits of number from the one at position on; zeros where it has none.
Limb bitsAt(LimbView number, size_t position);

bool isLess(LimbView left, LimbView right);

// number as so many limbs: filled up with zeros, or cut off at the top.
Limbs resized(LimbView number, size_t count);

// number * 2^bits and number / 2^bits, the latter without what leaves it at the bottom.
Limbs shiftedUp(LimbView number, size_t bits);
Limbs shiftedDown(LimbView number, size_t bits);

// sum += addend, where sum has at least as many limbs; returns the carry out of sum, 0 or 1.
Limb addLimbs(LimbSpan sum, LimbView addend);

// difference -= subtrahend, likewise; returns the borrow, 0 or 1. With a borrow, 2^(64 * limbs of difference) has been
// added.
Limb subtractLimbs(LimbSpan difference, LimbView subtrahend);

// sum += number * factor over the limbs of number, which sum must have; returns what belongs into the limb above them.
Limb addProduct(LimbSpan sum, LimbView number, Limb factor);

// product = left * right; it has the limbs of both together, and overlaps with neither.
void multiplyLimbs(LimbSpan product, LimbView left, LimbView right);

// The same with number twice, in little more than half the time.
void squareLimbs(LimbSpan product, LimbView number);

struct Division {
    Limbs quotient;
    Limbs remainder;  // as many limbs as the significant ones of the divisor
};

// Divides by a divisor that is not zero.
Division divideLimbs(LimbView dividend, LimbView divisor);

}  // namespace velmora
