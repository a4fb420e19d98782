#include "crypto/random.h"

#include <gtest/gtest.h>

#include <array>
#include <set>

namespace velmora {
namespace {

TEST(RandomBytes, GivesAsManyAsAsked) {
    for (size_t count = 0; count <= 33; ++count) EXPECT_EQ(randomBytes(count).size(), count);
    EXPECT_EQ(randomBytes(100000).size(), 100000U);
}

TEST(RandomBytes, NeverGivesTheSameTwice) {
    std::set<ByteString> seen;
    for (int draw = 0; draw < 1000; ++draw) seen.insert(randomBytes(16));
    EXPECT_EQ(seen.size(), 1000U);
}

// With 256 of each expected and a standard deviation of 16, a fair source leaves these bounds once in 10^12 runs.
TEST(RandomBytes, GivesEveryByteAboutEquallyOften) {
    std::array<int, 256> counts{};
    for (const char byte : randomBytes(65536)) ++counts[static_cast<unsigned char>(byte)];
    for (const int count : counts) {
        EXPECT_GT(count, 128);
        EXPECT_LT(count, 384);
    }
}

TEST(RandomBytes, FillsTheLastByteToo) {
    for (size_t count = 1; count <= 9; ++count) {
        std::set<char> last;
        for (int draw = 0; draw < 100; ++draw) last.insert(randomBytes(count).back());
        EXPECT_GT(last.size(), 20U) << count;
    }
}

}  // namespace
}  // namespace velmora
