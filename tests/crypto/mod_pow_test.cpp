#include "crypto/mod_pow.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace velmora {
namespace {

BigInt power(int32_t base, int32_t exponent, int32_t modulus) {
    return modPow(BigInt(base), BigInt(exponent), BigInt(modulus));
}

// 2^bits - 1
BigInt allOnes(int32_t bits) {
    return subtract(shiftLeft(kBigIntOne, bits), kBigIntOne);
}

TEST(ModPow, GivesKnownPowers) {
    EXPECT_EQ(power(4, 13, 497), BigInt(445));
    EXPECT_EQ(power(2, 10, 1000), BigInt(24));
    EXPECT_EQ(power(0, 5, 7), kBigIntZero);
    EXPECT_EQ(power(14, 5, 7), kBigIntZero);
    EXPECT_EQ(power(6, 1, 7), BigInt(6));
    EXPECT_EQ(power(13, 1, 7), BigInt(6));
}

TEST(ModPow, GivesOneForAnExponentOfZeroWhateverTheModulus) {
    for (const int32_t modulus : {-7, -1, 0, 1, 2, 7, 8}) {
        for (const int32_t base : {-3, 0, 1, 5}) {
            SCOPED_TRACE(std::to_string(base) + " modulo " + std::to_string(modulus));
            EXPECT_EQ(power(base, 0, modulus), kBigIntOne);
        }
    }
}

TEST(ModPow, GivesZeroForAModulusOfZeroOrOneAndAnyOtherExponent) {
    for (const int32_t modulus : {0, 1, -1}) {
        for (const int32_t exponent : {1, 2, 3, 65537}) {
            EXPECT_EQ(power(0, exponent, modulus), kBigIntZero);
            EXPECT_EQ(power(1, exponent, modulus), kBigIntZero);
            EXPECT_EQ(power(5, exponent, modulus), kBigIntZero);
        }
        EXPECT_EQ(modPow(allOnes(1024), allOnes(1024), BigInt(modulus)), kBigIntZero);
    }
}

// Odd and even moduli, and every power that a chain of products gives as well.
TEST(ModPow, AgreesWithRepeatedProducts) {
    for (int32_t modulus = 2; modulus <= 66; ++modulus) {
        for (int32_t base = 0; base <= 70; base += 3) {
            int32_t expected = 1;
            for (int32_t exponent = 1; exponent <= 40; ++exponent) {
                expected = expected * base % modulus;
                ASSERT_EQ(power(base, exponent, modulus), BigInt(expected))
                    << base << "^" << exponent << " mod " << modulus;
            }
        }
    }
}

// Here the square of the base is one, and so are all further ones.
TEST(ModPow, KeepsItsResultWhenAPowerReachesOneEarly) {
    EXPECT_EQ(power(6, 2, 7), BigInt(1));
    EXPECT_EQ(power(6, 3, 7), BigInt(6));
    EXPECT_EQ(power(6, 0x7FFFFFFF, 7), BigInt(6));
    EXPECT_EQ(power(6, 0x7FFFFFFE, 7), BigInt(1));
    const BigInt modulus = allOnes(521);
    const BigInt minusOne = subtract(modulus, kBigIntOne);
    EXPECT_EQ(modPow(minusOne, allOnes(2000), modulus), minusOne);
    EXPECT_EQ(modPow(minusOne, shiftLeft(kBigIntOne, 2000), modulus), kBigIntOne);
    EXPECT_EQ(modPow(kBigIntOne, allOnes(2000), modulus), kBigIntOne);
}

// Fermat: for a prime p and a base that it does not divide, base^(p-1) mod p is one. The Mersenne numbers of these
// exponents are primes; the sizes lie on both sides of a limb's and of what the vector registers hold.
TEST(ModPow, GivesOneForTheExponentThatFermatNames) {
    for (const int32_t bits : {3, 31, 61, 89, 107, 127, 521, 607, 1279, 2203, 2281, 3217, 4253}) {
        SCOPED_TRACE(bits);
        const BigInt prime = allOnes(bits);
        const BigInt exponent = subtract(prime, kBigIntOne);
        EXPECT_EQ(modPow(BigInt(3), exponent, prime), kBigIntOne);
        EXPECT_EQ(modPow(BigInt(3), prime, prime), BigInt(3));
        EXPECT_EQ(modPow(add(multiply(prime, BigInt(1000)), BigInt(3)), exponent, prime), kBigIntOne);
    }
}

// 2^e mod 2^k is known outright.
TEST(ModPow, TakesEvenModuli) {
    const BigInt modulus = shiftLeft(kBigIntOne, 1000);
    EXPECT_EQ(modPow(BigInt(2), BigInt(999), modulus), shiftLeft(kBigIntOne, 999));
    EXPECT_EQ(modPow(BigInt(2), BigInt(1000), modulus), kBigIntZero);
    EXPECT_EQ(modPow(BigInt(2), allOnes(64), modulus), kBigIntZero);
    // (m - 1)^odd = m - 1
    const BigInt even = subtract(shiftLeft(kBigIntOne, 1024), BigInt(2));
    EXPECT_EQ(modPow(subtract(even, kBigIntOne), BigInt(65537), even), subtract(even, kBigIntOne));
    EXPECT_EQ(modPow(subtract(even, kBigIntOne), BigInt(65536), even), kBigIntOne);
}

// Sign as for mod: of the power, crossed with that of the modulus.
TEST(ModPow, IsNegativeWhenJustOneOfPowerAndModulusIs) {
    EXPECT_EQ(power(-2, 3, 5), BigInt(-3));
    EXPECT_EQ(power(-2, 2, 5), BigInt(4));
    EXPECT_EQ(power(2, 3, -5), BigInt(-3));
    EXPECT_EQ(power(-2, 3, -5), BigInt(3));
    EXPECT_EQ(power(-5, 3, 5), kBigIntZero);
    EXPECT_EQ(power(-2, 3, 6), BigInt(-2));
}

TEST(ModPow, IgnoresTheSignOfTheExponent) {
    EXPECT_EQ(power(2, -3, 5), BigInt(3));
}

TEST(ModPow, EndsForAModulusAndAnExponentOf16384Bits) {
    const BigInt modulus = allOnes(16384);
    const BigInt minusOne = subtract(modulus, kBigIntOne);
    EXPECT_EQ(modPow(minusOne, BigInt(65537), modulus), minusOne);
    // 2^16384 is one modulo 2^16384 - 1.
    EXPECT_EQ(modPow(BigInt(2), shiftLeft(kBigIntOne, 16383), modulus), kBigIntOne);
    EXPECT_EQ(modPow(BigInt(2), add(shiftLeft(kBigIntOne, 2000), BigInt(5)), modulus), BigInt(32));
}

TEST(ModPowPair, GivesTheSameAsTwoCalls) {
    const BigInt base = allOnes(900);
    const BigInt numbers[] = {kBigIntZero,    kBigIntOne,    BigInt(2),    BigInt(-3),   BigInt(6),
                              BigInt(65537),  allOnes(100),  allOnes(510), allOnes(521), shiftLeft(kBigIntOne, 300),
                              BigInt(-65535), allOnes(2203), allOnes(4253)};
    for (const BigInt& exponent1 : {BigInt(0), BigInt(1), BigInt(17), allOnes(130)}) {
        for (const BigInt& exponent2 : {BigInt(1), shiftLeft(BigInt(3), 70)}) {
            for (const BigInt& modulus1 : numbers) {
                for (const BigInt& modulus2 : numbers) {
                    const std::array<BigInt, 2> pair = modPowPair(base, exponent1, modulus1, exponent2, modulus2);
                    ASSERT_EQ(pair[0], modPow(base, exponent1, modulus1));
                    ASSERT_EQ(pair[1], modPow(base, exponent2, modulus2));
                }
            }
        }
    }
}

}  // namespace
}  // namespace velmora
