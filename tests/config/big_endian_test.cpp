#include "config/big_endian.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/support/hex.h"

namespace velmora {
namespace {

ByteString Appended(uint64_t value, size_t count) {
    ByteString bytes;
    AppendBigEndian(bytes, value, count);
    return toHex(bytes);
}

TEST(AppendBigEndian, WritesTheMostSignificantByteFirst) {
    EXPECT_EQ(Appended(0x01, 1), "01");
    EXPECT_EQ(Appended(0x0102, 2), "0102");
    EXPECT_EQ(Appended(0x010203, 3), "010203");
    EXPECT_EQ(Appended(0x0102030405060708, 8), "0102030405060708");
}

TEST(AppendBigEndian, FillsUpWithZeroBytesInFront) {
    EXPECT_EQ(Appended(0, 4), "00000000");
    EXPECT_EQ(Appended(0xAB, 8), "00000000000000ab");
}

TEST(AppendBigEndian, WritesOnlyTheLowestBytesOfANumberThatIsLonger) {
    EXPECT_EQ(Appended(0x0102030405060708, 1), "08");
    EXPECT_EQ(Appended(0x10000, 2), "0000");
    EXPECT_EQ(Appended(std::numeric_limits<uint64_t>::max(), 3), "ffffff");
}

TEST(AppendBigEndian, LeavesWhatStandsThereBefore) {
    ByteString bytes = "before";
    AppendBigEndian(bytes, 0x4142, 2);
    EXPECT_EQ(bytes, "beforeAB");
}

TEST(ReadBigEndian, TakesTheFirstByteAsTheMostSignificantOne) {
    EXPECT_EQ(ReadBigEndian(fromHex("07")), 7U);
    EXPECT_EQ(ReadBigEndian(fromHex("0102")), 258U);
    EXPECT_EQ(ReadBigEndian(fromHex("010000")), 65536U);
    EXPECT_EQ(ReadBigEndian(fromHex("0102030405060708")), 0x0102030405060708U);
}

TEST(ReadBigEndian, TakesBytesAbove127AsUnsigned) {
    EXPECT_EQ(ReadBigEndian(fromHex("80")), 128U);
    EXPECT_EQ(ReadBigEndian(fromHex("00ff")), 255U);
    EXPECT_EQ(ReadBigEndian(fromHex("ffffffffffffffff")), std::numeric_limits<uint64_t>::max());
}

TEST(ReadBigEndian, IsZeroForNoBytes) {
    EXPECT_EQ(ReadBigEndian(""), 0U);
}

TEST(ReadBigEndian, CountsTheLastEightOfMoreBytes) {
    EXPECT_EQ(ReadBigEndian(fromHex("ff0102030405060708")), 0x0102030405060708U);
    EXPECT_EQ(ReadBigEndian(fromHex("ffff0000000000000001")), 1U);
}

}  // namespace
}  // namespace velmora
