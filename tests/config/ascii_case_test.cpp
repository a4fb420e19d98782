#include "config/ascii_case.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

TEST(LowerCase, LowersTheLettersFromAToZ) {
    EXPECT_EQ(LowerCase("ABCDEFGHIJKLMNOPQRSTUVWXYZ"), "abcdefghijklmnopqrstuvwxyz");
    EXPECT_EQ(LowerCase(""), "");
}

TEST(LowerCase, LeavesEveryOtherByteAsItIs) {
    for (int value = 0; value < 256; ++value) {
        SCOPED_TRACE(value);
        const ByteString byte(1, static_cast<char>(value));
        EXPECT_EQ(LowerCase(byte) != byte, value >= 'A' && value <= 'Z');
    }
}

}  // namespace
}  // namespace velmora
