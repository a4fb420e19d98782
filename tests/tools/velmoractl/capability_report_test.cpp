#include "tools/velmoractl/capability_report.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace velmora::ctl {
namespace {

void Put(ByteString& bytes, size_t position, uint32_t number) {
    for (size_t index = 0; index < 4; ++index)
        bytes[position + index] = static_cast<char>((number >> (8 * index)) & 0xFF);
}

// LINEADDRESSCAPS: the address is 16 bytes (size, offset) into the structure.
ByteString AddressCaps(const ByteString& text, uint32_t textBytes, uint32_t textOffset) {
    ByteString bytes(kAddressCapsFixedBytes, '\0');
    Put(bytes, 16, textBytes);
    Put(bytes, 20, textOffset);
    return bytes + text;
}

ByteString Address(const ByteString& bytes) {
    return FieldValue(DescribeAddressCaps(bytes), "Address");
}

TEST(CapabilityReport, ReadsATextOfWideCharactersUpToItsNul) {
    EXPECT_EQ(Address(AddressCaps(ByteString("4\0"
                                             "0\0"
                                             "\0\0",
                                             6),
                                  6, kAddressCapsFixedBytes)),
              "40");
}

TEST(CapabilityReport, GivesBackACharacterThatTheProviderWidenedWithItsSign) {
    EXPECT_EQ(Address(AddressCaps(ByteString("\xFC\xFF\xFC\0\x01\x02\0\0", 8), 8, kAddressCapsFixedBytes)),
              "\xFC\xFC?");
}

TEST(CapabilityReport, ReadsNoTextThatLiesOutside) {
    const ByteString text(
        "4\0"
        "0\0",
        4);
    EXPECT_EQ(Address(AddressCaps(text, 4, kAddressCapsFixedBytes)), "40");
    EXPECT_EQ(Address(AddressCaps(text, 5, kAddressCapsFixedBytes)), "");
    EXPECT_EQ(Address(AddressCaps(text, 4, kAddressCapsFixedBytes + 1)), "");
    EXPECT_EQ(Address(AddressCaps(text, 0xFFFFFFFF, 0)), "");
    EXPECT_EQ(Address(AddressCaps(text, 4, 0xFFFFFFFF)), "");
    EXPECT_EQ(Address(AddressCaps(text, 1, kAddressCapsFixedBytes)), "");
}

TEST(CapabilityReport, LeavesOutFieldsThatAreZero) {
    EXPECT_TRUE(DescribeDevCaps(ByteString(kDevCapsFixedBytes, '\0')).empty());
    EXPECT_TRUE(DescribeAddressCaps(ByteString(kAddressCapsFixedBytes, '\0')).empty());
}

TEST(CapabilityReport, IsEmptyForLessThanTheFixedPart) {
    EXPECT_TRUE(DescribeDevCaps(ByteString(kDevCapsFixedBytes - 1, 'x')).empty());
    EXPECT_TRUE(DescribeAddressCaps(ByteString(kAddressCapsFixedBytes - 1, 'x')).empty());
    EXPECT_TRUE(DescribeDevCaps("").empty());
}

TEST(CapabilityReport, ReadsAnyBytes) {
    for (int value = 0; value < 256; ++value) {
        DescribeDevCaps(ByteString(kDevCapsFixedBytes, static_cast<char>(value)));
        DescribeAddressCaps(ByteString(kAddressCapsFixedBytes + 3, static_cast<char>(value)));
    }
}

}  // namespace
}  // namespace velmora::ctl
