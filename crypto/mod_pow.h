#pragma once

#include <array>

#include "crypto/big_int.h"

namespace velmora {

// base^exponent mod modulus, in the sense of mod: the remainder of the absolute values, negative when just one of the
// power and the modulus is. The exponent's own sign is ignored.
//
// An exponent of zero gives one, whatever the modulus: one for the moduli one and zero as well. Keep. Otherwise a
// modulus of zero or one gives zero.
BigInt modPow(const BigInt& base, const BigInt& exponent, const BigInt& modulus);

// modPow of one base for two exponents and moduli, which takes less time than two calls. The halves of an RSA private
// operation.
std::array<BigInt, 2> modPowPair(const BigInt& base, const BigInt& exponent1, const BigInt& modulus1,
                                 const BigInt& exponent2, const BigInt& modulus2);

}  // namespace velmora
