#include "tools/velmoractl/plain_text.h"

#include <gtest/gtest.h>

namespace velmora::ctl {
namespace {

TEST(Trimmed, TakesWhiteSpaceOffBothEnds) {
    EXPECT_EQ(Trimmed(" \r\n\ta b\r\n"), "a b");
    EXPECT_EQ(Trimmed(" \t"), "");
    EXPECT_EQ(Trimmed(""), "");
}

TEST(Printable, ShowsNoControlCharacter) {
    EXPECT_EQ(Printable(ByteString("a\0\x1b[31m\r\n\x7f\xe4", 11)), "a??[31m???\xe4");
}

TEST(Padded, FillsUpAndNeverCuts) {
    EXPECT_EQ(Padded("ab", 4), "ab  ");
    EXPECT_EQ(Padded("abcd", 2), "abcd");
}

}  // namespace
}  // namespace velmora::ctl
