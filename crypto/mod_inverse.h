#pragma once

#include "crypto/big_int.h"

namespace velmora {

// The number x from 0 to |modulus| - 1 for which number * x mod |modulus| is 1, where a negative number stands for what
// it is congruent to. Zero when there is none: when the two have a common divisor above 1, or either is zero (a modulus
// of one gives zero too, the only number there is).
BigInt modInverse(const BigInt& number, const BigInt& modulus);

}  // namespace velmora
