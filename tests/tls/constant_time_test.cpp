#include "tls/constant_time.h"

#include <gtest/gtest.h>

#include "tests/support/seeded_bytes.h"

namespace velmora {
namespace {

TEST(EqualInConstantTime, HoldsForTheSameBytes) {
    SeededBytes random(1);
    EXPECT_TRUE(EqualInConstantTime("", ""));
    for (size_t count = 1; count <= 40; ++count) {
        const ByteString left = random.take(count);
        const ByteString right = left;
        EXPECT_TRUE(EqualInConstantTime(left, right)) << count;
    }
}

TEST(EqualInConstantTime, NoticesEveryBitOfEveryByte) {
    SeededBytes random(2);
    const ByteString left = random.take(36);
    for (size_t index = 0; index < left.size(); ++index) {
        for (unsigned int bit = 0; bit < 8; ++bit) {
            ByteString right = left;
            right[index] = static_cast<char>(static_cast<unsigned char>(right[index]) ^ (1U << bit));
            EXPECT_FALSE(EqualInConstantTime(left, right)) << index << " " << bit;
        }
    }
}

TEST(EqualInConstantTime, DoesNotLetTwoDifferencesCancelOut) {
    EXPECT_FALSE(EqualInConstantTime("ab", "ba"));
    EXPECT_FALSE(EqualInConstantTime("aa", "bb"));
    EXPECT_FALSE(EqualInConstantTime("\x01\x7F", "\x7F\x01"));
}

TEST(EqualInConstantTime, FailsForDifferentLengthsEvenWhenOneStartsWithTheOther) {
    EXPECT_FALSE(EqualInConstantTime("", "a"));
    EXPECT_FALSE(EqualInConstantTime("a", ""));
    EXPECT_FALSE(EqualInConstantTime("abc", "abcd"));
    EXPECT_FALSE(EqualInConstantTime(ByteString("abc\0", 4), "abc"));
}

}  // namespace
}  // namespace velmora
