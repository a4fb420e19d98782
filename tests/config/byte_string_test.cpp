#include "config/byte_string.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace velmora {
namespace {

TEST(Substring, TakesAtMostTheBytesThatAreThere) {
    EXPECT_EQ(Substring("abcdef", 0, 3), "abc");
    EXPECT_EQ(Substring("abcdef", 4, 3), "ef");
    EXPECT_EQ(Substring("abcdef", 2, 0), "");
}

TEST(Substring, IsEmptyAtTheVeryEnd) {
    EXPECT_EQ(Substring("abc", 3, 2), "");
    EXPECT_EQ(Substring("", 0, 2), "");
}

TEST(Substring, ThrowsOutOfRangeBeyondTheEnd) {
    try {
        Substring("abc", 4, 1);
        FAIL() << "nothing was thrown";
    } catch (const std::out_of_range& error) {
        EXPECT_STREQ(error.what(), "invalid string position");
    }
}

}  // namespace
}  // namespace velmora
