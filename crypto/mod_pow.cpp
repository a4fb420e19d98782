#include "crypto/mod_pow.h"

#include <utility>

#include "crypto/big_int_limbs.h"
#include "crypto/odd_power.h"

namespace velmora {
namespace {

ModularPower powerOf(const BigInt& base, const BigInt& exponent, const BigInt& modulus) {
    const Limbs modulusLimbs = limbsOf(modulus.magnitude);
    Limbs reduced = divideLimbs(limbsOf(base.magnitude), modulusLimbs).remainder;
    return {std::move(reduced), limbsOf(exponent.magnitude), modulusLimbs};
}

bool isOdd(const BigInt& number) {
    return !number.magnitude.empty() && (number.magnitude[0] & 1) != 0;
}

bool isBelowTwo(const BigInt& number) {
    return !compareMagnitude(number, kBigIntOne);
}

// A power is negative when its base is and its exponent is odd; a remainder, when just one of its arguments is.
BigInt withSign(LimbView limbs, const BigInt& base, const BigInt& exponent, const BigInt& modulus) {
    BigInt result;
    result.magnitude = magnitudeOf(limbs);
    const bool negativePower = base.negative != 0 && isOdd(exponent);
    if (!result.magnitude.empty() && negativePower != (modulus.negative != 0)) result.negative = 1;
    return result;
}

// The way for even moduli: a long division after each product.
Limbs dividedPower(const ModularPower& power) {
    Limbs value = power.base;
    Limbs product(2 * value.size());
    for (size_t position = bitLength(power.exponent) - 1; position-- > 0;) {
        squareLimbs(product, value);
        value = divideLimbs(product, power.modulus).remainder;
        if ((bitsAt(power.exponent, position) & 1) == 0) continue;
        multiplyLimbs(product, value, power.base);
        value = divideLimbs(product, power.modulus).remainder;
    }
    return value;
}

// Whether this power can be one of two that are computed side by side.
bool suitsPair(const BigInt& exponent, const BigInt& modulus) {
    return !isBelowTwo(exponent) && !isBelowTwo(modulus) && isOdd(modulus) && suitsVectors(limbsOf(modulus.magnitude));
}

Limbs powerLimbs(const ModularPower& power) {
    if ((power.modulus[0] & 1) == 0) return dividedPower(power);
    return suitsVectors(power.modulus) ? vectorPower(power) : portablePower(power);
}

}  // namespace

BigInt modPow(const BigInt& base, const BigInt& exponent, const BigInt& modulus) {
    if (exponent.magnitude.empty()) return kBigIntOne;
    if (isBelowTwo(modulus)) return {};
    const ModularPower power = powerOf(base, exponent, modulus);
    const Limbs result = isBelowTwo(exponent) ? power.base : powerLimbs(power);
    return withSign(result, base, exponent, modulus);
}

std::array<BigInt, 2> modPowPair(const BigInt& base, const BigInt& exponent1, const BigInt& modulus1,
                                 const BigInt& exponent2, const BigInt& modulus2) {
    const bool suited = suitsPair(exponent1, modulus1) && suitsPair(exponent2, modulus2);
    if (!suited) return {modPow(base, exponent1, modulus1), modPow(base, exponent2, modulus2)};
    const std::array<Limbs, 2> results =
        vectorPowers({powerOf(base, exponent1, modulus1), powerOf(base, exponent2, modulus2)});
    return {withSign(results[0], base, exponent1, modulus1), withSign(results[1], base, exponent2, modulus2)};
}

}  // namespace velmora
