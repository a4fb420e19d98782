#include "crypto/hash_blocks.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

TEST(HashBitCount, CountsBitsIn64Bits) {
    uint64_t expected = 0;
    HashBitCount bitCount = {};
    for (const uint64_t byteCount : {1ULL, 0x1FFFFFFEULL, 1ULL, 0x1FFFFFFFULL, 0x20000000ULL, 0x123456789ULL, 63ULL}) {
        addToBitCount(bitCount, byteCount);
        expected += 8 * byteCount;
        EXPECT_EQ(bitCount[0], expected & 0xFFFFFFFF);
        EXPECT_EQ(bitCount[1], expected >> 32);
        EXPECT_EQ(restBytes(bitCount), expected / 8 % 64);
    }
}

}  // namespace
}  // namespace velmora
