#include "tests/support/fixed_random.h"

#include <gtest/gtest.h>

#include "crypto/random.h"

namespace velmora {
namespace {

TEST(FixedRandom, AnswersForTheSystemInATest) {
    fixedRandomSequence = "abc";
    fixedRandomTaken = 0;
    EXPECT_EQ(randomBytes(2), "ab");
    EXPECT_EQ(randomBytes(0), "");
    EXPECT_EQ(randomBytes(5), "cabca");
    EXPECT_EQ(fixedRandomTaken, 7U);
}

}  // namespace
}  // namespace velmora
