// BigInt beside GMP: random numbers of many sizes, with long runs of ones and zeros among them, where carries travel
// far and trial quotients are off.
#include <gmp.h>
#include <gtest/gtest.h>

#include <random>

#include "crypto/big_int.h"
#include "crypto/mod_inverse.h"
#include "crypto/mod_pow.h"
#include "tests/support/gmp_number.h"
#include "tests/support/hex.h"

namespace velmora {
namespace {

BigInt fromGmp(mpz_srcptr value) {
    BigInt number;
    number.magnitude.resize((mpz_sizeinbase(value, 2) + 31) / 32 * 4);
    size_t limbs = 0;
    mpz_export(number.magnitude.data(), &limbs, -1, 4, -1, 0, value);
    number.magnitude.resize(4 * limbs);
    if (mpz_sgn(value) < 0) number.negative = 1;
    return number;
}

ByteString text(const BigInt& number) {
    return (number.negative != 0 ? "-" : "") + toHex(toBytes(number, 0));
}

class BigIntPeer : public testing::Test {
protected:
    BigIntPeer() { gmp_randinit_mt(gmpRandom); }
    ~BigIntPeer() override { gmp_randclear(gmpRandom); }

    size_t below(size_t limit) { return std::uniform_int_distribution<size_t>(0, limit - 1)(random); }

    // A number of up to mostBits bits, zero now and then.
    BigInt natural(size_t mostBits) {
        const size_t bits = below(4) == 0 ? below(70) : below(mostBits + 1);
        GmpNumber value;
        if (below(2) == 0) {
            mpz_rrandomb(value, gmpRandom, bits);
        } else {
            mpz_urandomb(value, gmpRandom, bits);
        }
        return fromGmp(value);
    }

    BigInt integer(size_t mostBits) {
        BigInt number = natural(mostBits);
        if (!number.magnitude.empty() && below(2) == 0) number.negative = 1;
        return number;
    }

    std::mt19937 random{20};
    gmp_randstate_t gmpRandom;
};

TEST_F(BigIntPeer, AddsSubtractsAndMultiplies) {
    for (int round = 0; round < 20000; ++round) {
        const BigInt left = integer(2500);
        const BigInt right = integer(2500);
        SCOPED_TRACE(text(left) + " and " + text(right));
        GmpNumber result;
        mpz_add(result, GmpNumber(left), GmpNumber(right));
        ASSERT_EQ(add(left, right), fromGmp(result));
        mpz_sub(result, GmpNumber(left), GmpNumber(right));
        ASSERT_EQ(subtract(left, right), fromGmp(result));
        mpz_mul(result, GmpNumber(left), GmpNumber(right));
        ASSERT_EQ(multiply(left, right), fromGmp(result));
        ASSERT_EQ(compareMagnitude(left, right), mpz_cmpabs(GmpNumber(left), GmpNumber(right)) > 0);
    }
}

TEST_F(BigIntPeer, Divides) {
    for (int round = 0; round < 20000; ++round) {
        const BigInt dividend = natural(5000);
        const BigInt divisor = add(natural(2500), kBigIntOne);
        SCOPED_TRACE(text(dividend) + " / " + text(divisor));
        GmpNumber quotient;
        GmpNumber remainder;
        mpz_tdiv_qr(quotient, remainder, GmpNumber(dividend), GmpNumber(divisor));
        ASSERT_EQ(divide(dividend, divisor), fromGmp(quotient));
        ASSERT_EQ(mod(dividend, divisor), fromGmp(remainder));
    }
}

TEST_F(BigIntPeer, DividesBySmallNumbers) {
    for (int round = 0; round < 5000; ++round) {
        const BigInt dividend = integer(1000);
        const auto divisor = static_cast<uint32_t>(random() >> below(32)) | 1U << below(3);
        SCOPED_TRACE(text(dividend) + " / " + std::to_string(divisor));
        GmpNumber quotient;
        mpz_tdiv_q_ui(quotient, GmpNumber(dividend), divisor);
        ASSERT_EQ(divideSmall(dividend, divisor), fromGmp(quotient));
    }
}

TEST_F(BigIntPeer, Shifts) {
    for (int round = 0; round < 5000; ++round) {
        const BigInt number = natural(1000);
        const size_t bits = below(1100);
        SCOPED_TRACE(text(number) + " by " + std::to_string(bits));
        GmpNumber result;
        mpz_mul_2exp(result, GmpNumber(number), bits);
        ASSERT_EQ(shiftLeft(number, static_cast<int32_t>(bits)), fromGmp(result));
        mpz_tdiv_q_2exp(result, GmpNumber(number), bits);
        ASSERT_EQ(shift(number.magnitude, -static_cast<int32_t>(bits)), fromGmp(result).magnitude);
    }
}

TEST_F(BigIntPeer, ConvertsBytes) {
    for (int round = 0; round < 5000; ++round) {
        const BigInt number = natural(1000);
        ByteString bytes((mpz_sizeinbase(GmpNumber(number), 2) + 7) / 8, '\0');
        size_t count = 0;
        mpz_export(bytes.data(), &count, 1, 1, 1, 0, GmpNumber(number));
        bytes.resize(count);
        ASSERT_EQ(toHex(toBytes(number, 0)), toHex(bytes));
        ASSERT_EQ(fromBytes(ByteString(below(9), '\0') + bytes), number);
    }
}

// Odd and even moduli alike; which way is taken depends on the modulus and the processor.
TEST_F(BigIntPeer, RaisesToPowers) {
    for (int round = 0; round < 5000; ++round) {
        const size_t mostBits = round % 500 == 0 ? 4300 : 600;
        const BigInt base = natural(2 * mostBits);
        const BigInt exponent = natural(round % 3 == 0 ? mostBits : 100);
        const BigInt modulus = add(natural(mostBits), BigInt(2));
        SCOPED_TRACE(text(base) + " ^ " + text(exponent) + " mod " + text(modulus));
        GmpNumber result;
        mpz_powm(result, GmpNumber(base), GmpNumber(exponent), GmpNumber(modulus));
        ASSERT_EQ(modPow(base, exponent, modulus), fromGmp(result));
    }
}

TEST_F(BigIntPeer, RaisesToTwoPowersAtATime) {
    for (int round = 0; round < 1000; ++round) {
        const size_t mostBits = round % 100 == 0 ? 2200 : 600;
        const BigInt base = natural(2 * mostBits);
        const BigInt exponents[] = {natural(300), natural(300)};
        const BigInt moduli[] = {add(natural(mostBits), BigInt(2)), add(natural(mostBits), BigInt(2))};
        const std::array<BigInt, 2> results = modPowPair(base, exponents[0], moduli[0], exponents[1], moduli[1]);
        for (size_t index = 0; index < 2; ++index) {
            SCOPED_TRACE(text(base) + " ^ " + text(exponents[index]) + " mod " + text(moduli[index]));
            GmpNumber result;
            mpz_powm(result, GmpNumber(base), GmpNumber(exponents[index]), GmpNumber(moduli[index]));
            ASSERT_EQ(results[index], fromGmp(result));
        }
    }
}

TEST_F(BigIntPeer, Inverts) {
    int inverses = 0;
    for (int round = 0; round < 10000; ++round) {
        const BigInt number = integer(1500);
        const BigInt modulus = add(natural(1200), BigInt(2));
        SCOPED_TRACE(text(number) + " modulo " + text(modulus));
        GmpNumber result;
        const bool exists = mpz_invert(result, GmpNumber(number), GmpNumber(modulus)) != 0;
        ASSERT_EQ(modInverse(number, modulus), exists ? fromGmp(result) : kBigIntZero);
        if (exists) ++inverses;
    }
    EXPECT_GT(inverses, 1000);
}

}  // namespace
}  // namespace velmora
