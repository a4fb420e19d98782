#pragma once

#include <array>

#include "crypto/limbs.h"

namespace velmora {

// base^exponent mod modulus, to be computed.
struct ModularPower {
    Limbs base;      // below the modulus
    Limbs exponent;  // above 1
    Limbs modulus;   // above 1
};

// Powers modulo an odd number, in Montgomery's form, where a product is reduced by multiplications alone. modPow is the
// way in for every modulus; the two ways to compute such a power are apart here, so that each is tested wherever it
// runs. Either gives as many limbs as are significant in the modulus.

// With 64-bit products: on any processor, for any size.
Limbs portablePower(const ModularPower& power);

// Whether this processor multiplies vectors of 52-bit numbers, and the modulus has no more than the 4,158 bits that its
// registers can hold.
bool suitsVectors(LimbView modulus);

// With such products; for a modulus that suits them.
Limbs vectorPower(const ModularPower& power);

// Two powers at a time. Up to half the size that takes hardly longer than one: a product is a long chain of steps that
// wait for each other, and the chains of both run side by side.
std::array<Limbs, 2> vectorPowers(const std::array<ModularPower, 2>& powers);

}  // namespace velmora
