#include "crypto/mod_inverse.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace velmora {
namespace {

BigInt inverse(int32_t number, int32_t modulus) {
    return modInverse(BigInt(number), BigInt(modulus));
}

TEST(ModInverse, GivesKnownInverses) {
    EXPECT_EQ(inverse(3, 11), BigInt(4));
    EXPECT_EQ(inverse(1, 2), BigInt(1));
    EXPECT_EQ(inverse(17, 3120), BigInt(2753));
}

// Every pair: odd and even, coprime or not, zero, one, and either sign.
TEST(ModInverse, IsTheInverseOfEveryCoprimePairAndZeroForAllOthers) {
    for (int32_t modulus = -64; modulus <= 64; ++modulus) {
        for (int32_t number = -130; number <= 130; ++number) {
            SCOPED_TRACE(std::to_string(number) + " modulo " + std::to_string(modulus));
            const int32_t absolute = std::abs(modulus);
            int32_t expected = 0;
            for (int32_t candidate = 0; candidate < absolute; ++candidate) {
                const int32_t rest = (number * candidate % absolute + absolute) % absolute;
                if (rest == 1 % absolute) expected = candidate;
            }
            ASSERT_EQ(inverse(number, modulus), BigInt(expected));
        }
    }
}

// The longest chain of quotients that numbers of a size can have.
TEST(ModInverse, InvertsNeighbouringFibonacciNumbers) {
    BigInt smaller(1);
    BigInt larger(2);
    for (int index = 0; index < 3000; ++index) {
        const BigInt product = multiply(modInverse(smaller, larger), smaller);
        ASSERT_EQ(mod(product, larger), kBigIntOne) << index;
        const BigInt next = add(smaller, larger);
        smaller = larger;
        larger = next;
    }
}

TEST(ModInverse, InvertsWhereOneNumberIsFarLongerThanTheOther) {
    const BigInt modulus = add(shiftLeft(kBigIntOne, 1024), kBigIntOne);
    // 2^512 * -(2^512) = -2^1024 = 1
    EXPECT_EQ(modInverse(shiftLeft(kBigIntOne, 512), modulus), subtract(modulus, shiftLeft(kBigIntOne, 512)));
    EXPECT_EQ(modInverse(BigInt(2), modulus), add(shiftLeft(kBigIntOne, 1023), kBigIntOne));
    EXPECT_EQ(modInverse(subtract(modulus, kBigIntOne), modulus), subtract(modulus, kBigIntOne));
    EXPECT_EQ(modInverse(add(multiply(modulus, modulus), BigInt(2)), modulus),
              add(shiftLeft(kBigIntOne, 1023), kBigIntOne));
    EXPECT_EQ(modInverse(add(shiftLeft(kBigIntOne, 2000), kBigIntOne), BigInt(4)), kBigIntOne);
}

TEST(ModInverse, GivesZeroForLongNumbersWithACommonDivisor) {
    const BigInt factor = subtract(shiftLeft(kBigIntOne, 521), kBigIntOne);
    const BigInt product = multiply(factor, add(shiftLeft(kBigIntOne, 300), BigInt(7)));
    EXPECT_EQ(modInverse(product, multiply(factor, BigInt(65537))), kBigIntZero);
    EXPECT_EQ(modInverse(product, product), kBigIntZero);
    EXPECT_EQ(modInverse(product, kBigIntZero), kBigIntZero);
    EXPECT_EQ(modInverse(kBigIntZero, product), kBigIntZero);
    EXPECT_EQ(modInverse(shiftLeft(product, 1), shiftLeft(kBigIntOne, 1000)), kBigIntZero);
}

}  // namespace
}  // namespace velmora
