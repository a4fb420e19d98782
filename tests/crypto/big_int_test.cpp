#include "crypto/big_int.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "tests/support/hex.h"

namespace velmora {
namespace {

// The number that hexadecimal digits stand for, with a "-" in front when it is negative; their count is even.
BigInt number(const ByteString& digits) {
    const bool negative = digits.starts_with('-');
    BigInt result = fromBytes(fromHex(negative ? digits.substr(1) : digits));
    if (negative) result.negative = 1;
    return result;
}

ByteString text(const BigInt& value) {
    return (value.negative != 0 ? "-" : "") + toHex(toBytes(value, 0));
}

TEST(BigInt, HoldsAnIntAsOneLimb) {
    EXPECT_EQ(BigInt(1).magnitude, fromHex("01000000"));
    EXPECT_EQ(BigInt(1).negative, 0);
    EXPECT_EQ(BigInt(-0x01020304).magnitude, fromHex("04030201"));
    EXPECT_EQ(BigInt(-0x01020304).negative, 1);
    EXPECT_EQ(BigInt(std::numeric_limits<int32_t>::max()).magnitude, fromHex("ffffff7f"));
    EXPECT_EQ(BigInt(std::numeric_limits<int32_t>::min()).magnitude, fromHex("00000080"));
    EXPECT_EQ(BigInt(std::numeric_limits<int32_t>::min()).negative, 1);
}

TEST(BigInt, HoldsZeroAsNoLimbAtAll) {
    EXPECT_EQ(BigInt(0).magnitude, "");
    EXPECT_EQ(BigInt(0).negative, 0);
    EXPECT_EQ(kBigIntZero, BigInt());
    EXPECT_EQ(kBigIntOne, BigInt(1));
}

TEST(FromBytes, PutsTheLastFourBytesIntoTheFirstLimb) {
    EXPECT_EQ(fromBytes(fromHex("000001")).magnitude, fromHex("01000000"));
    EXPECT_EQ(fromBytes(fromHex("0102030405")).magnitude, fromHex("0504030201000000"));
    EXPECT_EQ(fromBytes(fromHex("ff00000000")).magnitude, fromHex("00000000ff000000"));
    EXPECT_EQ(fromBytes(fromHex("ff00000000")).negative, 0);
}

TEST(FromBytes, LeavesOutLimbsOfZeroAtTheTop) {
    EXPECT_EQ(fromBytes("").magnitude, "");
    for (size_t zeros = 1; zeros < 20; ++zeros) {
        SCOPED_TRACE(zeros);
        EXPECT_EQ(fromBytes(ByteString(zeros, '\0')).magnitude, "");
        EXPECT_EQ(fromBytes(ByteString(zeros, '\0') + "\x80").magnitude, fromHex("80000000"));
    }
}

TEST(ToBytes, StripsZeroBytesDownToTheMinimumLength) {
    const BigInt one(1);
    EXPECT_EQ(toHex(toBytes(one, std::numeric_limits<int32_t>::min())), "01");
    EXPECT_EQ(toHex(toBytes(one, -1)), "01");
    EXPECT_EQ(toHex(toBytes(one, 0)), "01");
    EXPECT_EQ(toHex(toBytes(one, 1)), "01");
    EXPECT_EQ(toHex(toBytes(one, 3)), "000001");
    EXPECT_EQ(toHex(toBytes(one, 4)), "00000001");
    EXPECT_EQ(toHex(toBytes(number("0102030405"), 7)), "00000102030405");
}

TEST(ToBytes, NeverPads) {
    EXPECT_EQ(toHex(toBytes(BigInt(1), 8)), "00000001");
    EXPECT_EQ(toHex(toBytes(number("0102030405"), 128)), "0000000102030405");
    EXPECT_EQ(toHex(toBytes(number("0102030405"), std::numeric_limits<int32_t>::max())), "0000000102030405");
}

TEST(ToBytes, GivesNothingForZeroWhateverTheMinimumLength) {
    for (const int32_t minimum : {-1, 0, 1, 4, 128}) EXPECT_EQ(toBytes(kBigIntZero, minimum), "");
}

TEST(ToBytes, DropsTheSign) {
    EXPECT_EQ(toHex(toBytes(BigInt(-258), 0)), "0102");
}

TEST(ToBytes, GivesBackWhatFromBytesTookInAtItsLength) {
    ByteString bytes;
    for (int value = 1; value <= 70; ++value) {
        bytes += static_cast<char>(value * 37);
        EXPECT_EQ(toBytes(fromBytes(bytes), static_cast<int32_t>(bytes.size())), bytes);
        EXPECT_EQ(toBytes(fromBytes(ByteString(9, '\0') + bytes), 0), bytes);
    }
}

TEST(IsSmall, ComparesValueAndSign) {
    for (const int32_t value :
         {std::numeric_limits<int32_t>::min(), -2, -1, 0, 1, 2, std::numeric_limits<int32_t>::max()}) {
        SCOPED_TRACE(value);
        EXPECT_TRUE(isSmall(BigInt(value), value));
        EXPECT_FALSE(isSmall(BigInt(value), value ^ 1));
    }
    EXPECT_FALSE(isSmall(BigInt(7), -7));
    EXPECT_FALSE(isSmall(BigInt(-7), 7));
    EXPECT_FALSE(isSmall(number("0100000001"), 1));
    EXPECT_FALSE(isSmall(number("80000000"), std::numeric_limits<int32_t>::min()));
}

TEST(CompareMagnitude, IsTrueOnlyForTheLarger) {
    const char* const ascending[] = {"00",
                                     "01",
                                     "7f",
                                     "80",
                                     "ff",
                                     "0100",
                                     "7fffffff",
                                     "80000000",
                                     "ffffffff",
                                     "0100000000",
                                     "01000000ff",
                                     "0200000000",
                                     "ff00000001",
                                     "010000000000000000",
                                     "018000000000000000"};
    for (size_t left = 0; left < std::size(ascending); ++left) {
        for (size_t right = 0; right < std::size(ascending); ++right) {
            SCOPED_TRACE(ByteString(ascending[left]) + " and " + ascending[right]);
            EXPECT_EQ(compareMagnitude(number(ascending[left]), number(ascending[right])), left > right);
        }
    }
}

TEST(CompareMagnitude, IgnoresTheSigns) {
    EXPECT_TRUE(compareMagnitude(BigInt(-3), BigInt(2)));
    EXPECT_FALSE(compareMagnitude(BigInt(2), BigInt(-3)));
    EXPECT_FALSE(compareMagnitude(BigInt(3), BigInt(-3)));
}

TEST(Abs, DropsTheSignAlone) {
    EXPECT_EQ(abs(number("-0102030405")), number("0102030405"));
    EXPECT_EQ(abs(BigInt(7)), BigInt(7));
    EXPECT_EQ(abs(kBigIntZero), kBigIntZero);
}

// Every pair of small numbers, whose results the processor knows.
TEST(BigInt, ComputesLikeTheProcessor) {
    for (int32_t left = -40; left <= 40; ++left) {
        for (int32_t right = -40; right <= 40; ++right) {
            SCOPED_TRACE(std::to_string(left) + " and " + std::to_string(right));
            EXPECT_EQ(add(BigInt(left), BigInt(right)), BigInt(left + right));
            EXPECT_EQ(subtract(BigInt(left), BigInt(right)), BigInt(left - right));
            EXPECT_EQ(multiply(BigInt(left), BigInt(right)), BigInt(left * right));
            if (right == 0) continue;
            EXPECT_EQ(divide(BigInt(left), BigInt(right)), BigInt(left / right));
        }
    }
}

TEST(Add, CarriesThroughEveryLimb) {
    ByteString ones = "ff";
    ByteString expected = "0100";
    for (int bytes = 1; bytes <= 40; ++bytes, ones += "ff", expected += "00") {
        EXPECT_EQ(text(add(number(ones), BigInt(1))), expected);
        EXPECT_EQ(text(add(BigInt(1), number(ones))), expected);
        EXPECT_EQ(text(subtract(number(expected), BigInt(1))), ones);
        EXPECT_EQ(text(subtract(BigInt(1), number(expected))), "-" + ones);
        EXPECT_EQ(text(add(number("-" + ones), BigInt(-1))), "-" + expected);
    }
}

TEST(Subtract, NormalisesTheDifference) {
    EXPECT_EQ(subtract(number("010000000000000000"), number("010000000000000000")), kBigIntZero);
    EXPECT_EQ(subtract(number("010000000000000001"), number("010000000000000000")), BigInt(1));
    EXPECT_EQ(subtract(number("-010000000000000001"), number("-010000000000000000")), BigInt(-1));
    EXPECT_EQ(subtract(kBigIntZero, kBigIntZero), kBigIntZero);
    EXPECT_EQ(subtract(kBigIntZero, BigInt(5)), BigInt(-5));
}

TEST(InPlace, GivesTheSameAsTheOthers) {
    for (const char* left : {"00", "01", "-01", "ffffffff", "-0123456789abcdef01"}) {
        for (const char* right : {"00", "01", "-01", "ffffffff", "-0123456789abcdef01"}) {
            BigInt sum = number(left);
            addInPlace(sum, number(right));
            EXPECT_EQ(sum, add(number(left), number(right)));
            BigInt difference = number(left);
            subtractInPlace(difference, number(right));
            EXPECT_EQ(difference, subtract(number(left), number(right)));
        }
    }
}

TEST(InPlace, TakesOneObjectTwice) {
    BigInt value = number("-ffffffffffffffffff");
    addInPlace(value, value);
    EXPECT_EQ(text(value), "-01fffffffffffffffffe");
    subtractInPlace(value, value);
    EXPECT_EQ(value, kBigIntZero);
}

TEST(Multiply, CarriesAtItsWidest) {
    // (2^n - 1)^2 = 2^(2n) - 2^(n+1) + 1
    for (size_t bytes = 1; bytes <= 40; ++bytes) {
        ByteString ones;
        for (size_t index = 0; index < bytes; ++index) ones += "ff";
        ByteString expected = ones;
        expected.replace(expected.size() - 1, 1, "e");
        expected.append(2 * bytes - 1, '0') += '1';
        EXPECT_EQ(text(multiply(number(ones), number(ones))), expected);
    }
}

TEST(Multiply, GivesZeroWithoutASign) {
    EXPECT_EQ(multiply(number("-0102030405"), kBigIntZero), kBigIntZero);
    EXPECT_EQ(multiply(kBigIntZero, number("-0102030405")), kBigIntZero);
}

TEST(Divide, GivesZeroForADivisorOfZero) {
    EXPECT_EQ(divide(BigInt(7), kBigIntZero), kBigIntZero);
    EXPECT_EQ(mod(BigInt(7), kBigIntZero), kBigIntZero);
    EXPECT_EQ(divide(kBigIntZero, kBigIntZero), kBigIntZero);
    EXPECT_EQ(mod(number("-0102030405060708090a"), kBigIntZero), kBigIntZero);
}

TEST(Mod, IsNegativeWhenJustOneArgumentIs) {
    EXPECT_EQ(mod(BigInt(7), BigInt(3)), BigInt(1));
    EXPECT_EQ(mod(BigInt(-7), BigInt(3)), BigInt(-1));
    EXPECT_EQ(mod(BigInt(7), BigInt(-3)), BigInt(-1));
    EXPECT_EQ(mod(BigInt(-7), BigInt(-3)), BigInt(1));
    EXPECT_EQ(mod(BigInt(-6), BigInt(3)), kBigIntZero);
    EXPECT_EQ(mod(BigInt(-7), BigInt(3)).negative, 1);
    EXPECT_EQ(mod(BigInt(-7), BigInt(3)).magnitude, fromHex("01000000"));
}

TEST(Divide, IsNegativeWhenJustOneArgumentIs) {
    EXPECT_EQ(divide(BigInt(-7), BigInt(3)), BigInt(-2));
    EXPECT_EQ(divide(BigInt(7), BigInt(-3)), BigInt(-2));
    EXPECT_EQ(divide(BigInt(-7), BigInt(-3)), BigInt(2));
    EXPECT_EQ(divide(BigInt(-2), BigInt(3)), kBigIntZero);
}

// Quotient times divisor plus remainder, for dividends built from known quotients: limbs of all ones and all zeros are
// where a trial quotient is off.
TEST(Divide, FindsTheQuotientWhateverTheLimbsAre) {
    const char* const limbs[] = {"00000000", "00000001", "7fffffff", "80000000", "fffffffe", "ffffffff"};
    std::vector<BigInt> numbers;
    for (const char* a : limbs) {
        for (const char* b : limbs) {
            for (const char* c : limbs) {
                const BigInt low = number(ByteString(a) + b + c);
                numbers.push_back(low);
                numbers.push_back(add(shiftLeft(low, 128), low));
            }
        }
    }
    for (const BigInt& divisor : numbers) {
        if (isSmall(divisor, 0)) continue;
        const BigInt remainder = subtract(divisor, BigInt(1));
        for (size_t index = 0; index < numbers.size(); index += 7) {
            const BigInt& quotient = numbers[index];
            const BigInt dividend = add(multiply(quotient, divisor), remainder);
            ASSERT_EQ(divide(dividend, divisor), quotient) << text(dividend) << " / " << text(divisor);
            ASSERT_EQ(mod(dividend, divisor), remainder) << text(dividend) << " / " << text(divisor);
        }
    }
}

TEST(ShiftLeft, CopiesForACountBelowOne) {
    for (const int32_t bits : {0, -1, -32, std::numeric_limits<int32_t>::min()}) {
        EXPECT_EQ(shiftLeft(number("-0102030405"), bits), number("-0102030405"));
    }
}

TEST(ShiftLeft, MultipliesByAPowerOfTwo) {
    BigInt expected = number("-0102030405");
    for (int32_t bits = 0; bits < 200; ++bits) {
        SCOPED_TRACE(bits);
        EXPECT_EQ(shiftLeft(number("-0102030405"), bits), expected);
        expected = add(expected, expected);
    }
    EXPECT_EQ(shiftLeft(kBigIntZero, 100), kBigIntZero);
}

TEST(Shift, GoesRightForNegativeCounts) {
    const ByteString magnitude = number("0102030405060708090a").magnitude;
    for (int32_t bits = 0; bits < 200; ++bits) {
        SCOPED_TRACE(bits);
        EXPECT_EQ(shift(shift(magnitude, bits), -bits), magnitude);
    }
    EXPECT_EQ(shift(magnitude, -1), number("00810182028303840485").magnitude);
    EXPECT_EQ(shift(magnitude, -32), number("010203040506").magnitude);
    EXPECT_EQ(shift(magnitude, -72), number("01").magnitude);
    EXPECT_EQ(shift(magnitude, -73), "");
    EXPECT_EQ(shift(magnitude, std::numeric_limits<int32_t>::min()), "");
    EXPECT_EQ(shift("", 5), "");
    EXPECT_EQ(shift("", -5), "");
}

TEST(DivideSmall, KeepsTheSignOfTheNumber) {
    EXPECT_EQ(divideSmall(BigInt(-7), 2), BigInt(-3));
    EXPECT_EQ(divideSmall(BigInt(-7), 3), BigInt(-2));
    EXPECT_EQ(divideSmall(BigInt(-1), 2), kBigIntZero);
    EXPECT_EQ(divideSmall(BigInt(-1), 0xFFFFFFFF), kBigIntZero);
    EXPECT_EQ(text(divideSmall(number("01fffffffe"), 0xFFFFFFFF)), "02");
    EXPECT_EQ(text(divideSmall(number("0102030405060708090a"), 2)),
              text(divide(number("0102030405060708090a"), BigInt(2))));
}

TEST(DivideSmall, GivesZeroForADivisorOfZero) {
    EXPECT_EQ(divideSmall(BigInt(-7), 0), kBigIntZero);
}

}  // namespace
}  // namespace velmora
