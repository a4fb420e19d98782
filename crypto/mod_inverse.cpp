#include "crypto/mod_inverse.h"

#include <utility>

#include "crypto/big_int_limbs.h"

namespace velmora {
namespace {

__extension__ typedef __int128 SignedDoubleLimb;

// Some steps of Euclid's algorithm in one. After an even number of steps
//   larger' = larger * a0 - smaller * b0 and smaller' = smaller * b1 - larger * a1,
// after an odd number both have the other sign.
struct Steps {
    Limb a0 = 1;
    Limb b0 = 0;
    Limb a1 = 0;
    Limb b1 = 1;
    bool odd = false;
};

// The steps that the highest 64 bits of two numbers settle: Lehmer's method, with Collins's condition for a quotient
// being that of the whole numbers (Jebelean, "A double-digit Lehmer-Euclid algorithm for finding the GCD of long
// integers"). It keeps all four factors below 2^32.
Steps settledSteps(Limb larger, Limb smaller) {
    Steps steps;
    while (smaller != 0) {
        const Limb quotient = larger / smaller;
        const Limb rest = larger - quotient * smaller;
        const Limb a2 = steps.a0 + quotient * steps.a1;
        const Limb b2 = steps.b0 + quotient * steps.b1;
        if (rest < b2 || smaller - rest < b2 + steps.b1) break;
        steps = {steps.a1, steps.b1, a2, b2, !steps.odd};
        larger = smaller;
        smaller = rest;
    }
    return steps;
}

// minuend * factor1 - subtrahend * factor2, which is not below zero and has no more limbs than either.
Limbs difference(const Limbs& minuend, Limb factor1, const Limbs& subtrahend, Limb factor2) {
    Limbs result(minuend.size());
    SignedDoubleLimb carry = 0;
    for (size_t index = 0; index < result.size(); ++index) {
        carry += static_cast<SignedDoubleLimb>(DoubleLimb{minuend[index]} * factor1);
        carry -= static_cast<SignedDoubleLimb>(DoubleLimb{subtrahend[index]} * factor2);
        result[index] = static_cast<Limb>(carry);
        carry >>= kLimbBits;
    }
    return result;
}

Limbs sum(const Limbs& left, Limb factor1, const Limbs& right, Limb factor2) {
    Limbs result(left.size());
    DoubleLimb carry = 0;
    for (size_t index = 0; index < result.size(); ++index) {
        carry += DoubleLimb{left[index]} * factor1 + DoubleLimb{right[index]} * factor2;
        result[index] = static_cast<Limb>(carry);
        carry = highLimb(carry);
    }
    return result;
}

// Euclid's algorithm for a modulus and a number below it. All its numbers have the modulus's count of limbs.
class Euclid {
public:
    Euclid(const Limbs& modulus, LimbView number)
        : larger(modulus),
          smaller(resized(number, modulus.size())),
          x(modulus.size()),
          y(resized(kOne, modulus.size())) {}

    void run() {
        while (!significant(smaller).empty()) {
            const size_t bits = bitLength(larger);
            const size_t position = bits > kLimbBits ? bits - kLimbBits : 0;
            const Steps steps = settledSteps(bitsAt(larger, position), bitsAt(smaller, position));
            if (steps.b0 != 0) {
                take(steps);
            } else {
                divide();
            }
        }
    }

    const Limbs& greatestDivisor() const { return larger; }

    // By what the number is to be multiplied to be congruent to the greatest common divisor.
    Limbs factor(const Limbs& modulus) const { return negative ? difference(modulus, 1, x, 1) : x; }

private:
    void take(const Steps& steps) {
        Limbs nextLarger = steps.odd ? difference(smaller, steps.b0, larger, steps.a0)
                                     : difference(larger, steps.a0, smaller, steps.b0);
        smaller = steps.odd ? difference(larger, steps.a1, smaller, steps.b1)
                            : difference(smaller, steps.b1, larger, steps.a1);
        larger = std::move(nextLarger);
        Limbs nextX = sum(x, steps.a0, y, steps.b0);
        y = sum(x, steps.a1, y, steps.b1);
        x = std::move(nextX);
        negative = negative != steps.odd;
    }

    void divide() {
        const Division division = divideLimbs(larger, smaller);
        larger = std::exchange(smaller, resized(division.remainder, larger.size()));
        const LimbView quotient = significant(division.quotient);
        Limbs product(quotient.size() + y.size());
        multiplyLimbs(product, quotient, y);
        addLimbs(product, x);
        x = std::exchange(y, resized(product, x.size()));
        negative = !negative;
    }

    Limbs larger;
    Limbs smaller;

    // Without their signs, the factors by which the given number is congruent to larger and to smaller. Neither exceeds
    // the modulus.
    Limbs x;
    Limbs y;
    bool negative = true;  // x is to be taken as negative, y as positive; otherwise the other way round
};

}  // namespace

BigInt modInverse(const BigInt& number, const BigInt& modulus) {
    if (!compareMagnitude(modulus, kBigIntOne)) return {};
    const Limbs limbs = limbsOf(modulus.magnitude);
    Limbs residue = divideLimbs(limbsOf(number.magnitude), limbs).remainder;
    if (number.negative != 0) residue = difference(limbs, 1, residue, 1);
    Euclid euclid(limbs, residue);
    euclid.run();
    BigInt result;
    if (bitLength(euclid.greatestDivisor()) == 1) result.magnitude = magnitudeOf(euclid.factor(limbs));
    return result;
}

}  // namespace velmora
