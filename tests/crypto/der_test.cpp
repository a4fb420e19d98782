#include "crypto/der.h"

#include <gtest/gtest.h>

#include "config/byte_string.h"
#include "tests/support/hex.h"

namespace velmora {
namespace {

// What takeElement leaves and gives, both in hexadecimal.
struct Taken {
    ByteString content;
    ByteString rest;

    bool operator==(const Taken&) const = default;
};

void PrintTo(const Taken& taken, std::ostream* stream) {
    *stream << "content " << taken.content << ", rest " << taken.rest;
}

Taken take(uint8_t tag, const ByteString& digits) {
    const ByteString bytes = fromHex(digits);
    std::string_view input = bytes;
    const std::string_view content = takeElement(tag, input);
    return {toHex(ByteString(content)), toHex(ByteString(input))};
}

// The element 30 with a length in the long form.
ByteString longElement(const ByteString& lengthDigits, size_t contentBytes) {
    ByteString digits = "30" + lengthDigits;
    for (size_t index = 0; index < contentBytes; ++index) digits += "ab";
    return digits;
}

TEST(TakeElement, GivesTheContentAndRemovesTheElement) {
    EXPECT_EQ(take(0x02,
                   "0203010203"
                   "0500"),
              (Taken{"010203", "0500"}));
    EXPECT_EQ(take(0x30, "3000"), (Taken{"", ""}));
    EXPECT_EQ(take(0xA3, "a301ff"), (Taken{"ff", ""}));
}

TEST(TakeElement, LeavesAnElementWithAnotherTag) {
    EXPECT_EQ(take(0x30, "0203010203"), (Taken{"", "0203010203"}));
}

TEST(TakeElement, LeavesAnInputOfFewerThanTwoBytes) {
    EXPECT_EQ(take(0x02, ""), (Taken{"", ""}));
    EXPECT_EQ(take(0x02, "02"), (Taken{"", "02"}));
    EXPECT_EQ(take(0x02, "00"), (Taken{"", "00"}));
}

TEST(TakeElement, SkipsZeroBytesBeforeAnElement) {
    EXPECT_EQ(take(0x02, "000002010700"), (Taken{"07", "00"}));
    EXPECT_EQ(take(0x30, "003003020107"), (Taken{"020107", ""}));
}

TEST(TakeElement, DropsZeroBytesEvenWhenTheTagBehindThemIsAnother) {
    EXPECT_EQ(take(0x30, "0000020107"), (Taken{"", "020107"}));
    EXPECT_EQ(take(0x02, "000005"), (Taken{"", "05"}));
    EXPECT_EQ(take(0x02, "000000"), (Taken{"", "00"}));
}

TEST(TakeElement, NeverFindsATagOfZero) {
    EXPECT_EQ(take(0x00, "000100"), (Taken{"", "0100"}));
    EXPECT_EQ(take(0x00, "0000"), (Taken{"", "00"}));
}

TEST(TakeElement, KeepsZeroBytesInsideTheContent) {
    EXPECT_EQ(take(0x02, "02030000070204"), (Taken{"000007", "0204"}));
}

TEST(TakeElement, ReadsALengthInTheLongForm) {
    EXPECT_EQ(take(0x30, longElement("7f", 127)).content.size(), 2 * 127U);
    EXPECT_EQ(take(0x30, longElement("8180", 128) + "0500").content.size(), 2 * 128U);
    EXPECT_EQ(take(0x30, longElement("8180", 128) + "0500").rest, "0500");
    EXPECT_EQ(take(0x30, longElement("820102", 258) + "0500").content.size(), 2 * 258U);
    EXPECT_EQ(take(0x30, longElement("820102", 258) + "0500").rest, "0500");
}

TEST(TakeElement, TakesALengthWithMoreBytesThanItNeeds) {
    EXPECT_EQ(take(0x30,
                   "308200020102"
                   "0500"),
              (Taken{"0102", "0500"}));
    EXPECT_EQ(take(0x30,
                   "308f000000000000000000000000000002"
                   "0102"
                   "0500"),
              (Taken{"0102", "0500"}));
}

TEST(TakeElement, ReadsOnlyFourBitsOfTheLengthOfLength) {
    EXPECT_EQ(take(0x30, "30900102"), (Taken{"", "0102"}));
    EXPECT_EQ(take(0x30,
                   "3091020102"
                   "0500"),
              (Taken{"0102", "0500"}));
    EXPECT_EQ(take(0x30,
                   "30f1020102"
                   "0500"),
              (Taken{"0102", "0500"}));
}

TEST(TakeElement, ReadsTheIndefiniteLengthAsZero) {
    EXPECT_EQ(take(0x30, "30800102"), (Taken{"", "0102"}));
}

// The bytes behind the cut are still there, and must not be read.
TEST(TakeElement, GivesNothingAndEndsTheInputWhereAnElementIsCutOff) {
    for (const ByteString& digits : {longElement("820102", 258), longElement("820001", 1), longElement("8f0001", 60)}) {
        const ByteString whole = fromHex(digits);
        for (size_t bytes = 2; bytes < whole.size(); ++bytes) {
            std::string_view input = std::string_view(whole).substr(0, bytes);
            ASSERT_EQ(takeElement(kDerSequence, input), "") << bytes << " of " << digits;
            ASSERT_EQ(input, "") << bytes << " of " << digits;
        }
    }
    EXPECT_EQ(take(0x30, longElement("820102", 258)).content.size(), 2 * 258U);
}

TEST(TakeElement, GivesNothingForALengthThatNoNumberHolds) {
    for (const char* length :
         {"84ffffffff", "88ffffffffffffffff", "88fffffffffffffffe", "888000000000000000", "89010000000000000003"}) {
        SCOPED_TRACE(length);
        EXPECT_EQ(take(0x30, longElement(length, 40)), (Taken{"", ""}));
    }
    EXPECT_EQ(take(0x30, longElement("8f"
                                     "ffffffffffffffffffffffffffffff",
                                     40)),
              (Taken{"", ""}));
    EXPECT_EQ(take(0x30, longElement("8f"
                                     "010000000000000000000000000002",
                                     40)),
              (Taken{"", ""}));
}

TEST(TakeElement, TakesAContentThatEndsWithTheInputButNotOneByteMore) {
    EXPECT_EQ(take(0x02, "02020102"), (Taken{"0102", ""}));
    EXPECT_EQ(take(0x02, "02030102"), (Taken{"", ""}));
    EXPECT_EQ(take(0x02, "0281020102"), (Taken{"0102", ""}));
    EXPECT_EQ(take(0x02, "0281030102"), (Taken{"", ""}));
}

// A million zero bytes or elements, one inside the other or side by side, cost no more than their length.
TEST(TakeElement, IsDoneWithAHostileInputInNoTime) {
    constexpr size_t kCount = 1000000;
    const ByteString zeros(kCount, '\0');
    std::string_view input = zeros;
    EXPECT_EQ(takeElement(kDerSequence, input), "");
    EXPECT_EQ(input.size(), 1U);

    ByteString siblings;
    for (size_t index = 0; index < kCount; ++index) siblings += ByteString("\x31\x00", 2);
    input = siblings;
    size_t taken = 0;
    for (; input.size() > 1; ++taken) takeElement(kDerSet, input);
    EXPECT_EQ(taken, kCount);

    // Lengths of four bytes, from the innermost element outwards.
    ByteString nested;
    for (size_t depth = kCount; depth-- > 0;) {
        const size_t length = 6 * depth;
        nested += ByteString("\x30\x84", 2);
        for (int shift = 24; shift >= 0; shift -= 8) nested += static_cast<char>(length >> shift & 0xFF);
    }
    input = nested;
    size_t depth = 0;
    for (; !input.empty(); ++depth) input = takeElement(kDerSequence, input);
    EXPECT_EQ(depth, kCount);
}

TEST(ReadStringValue, GivesContentAndTagOfTheNextElement) {
    const ByteString bytes = fromHex(
        "0c0268690000130178"
        "1e00");
    std::string_view input = bytes;
    StringValue value = readStringValue(input);
    EXPECT_EQ(value.tag, kDerUtf8String);
    EXPECT_EQ(value.content, "hi");
    value = readStringValue(input);
    EXPECT_EQ(value.tag, kDerPrintableString);
    EXPECT_EQ(value.content, "x");
    value = readStringValue(input);
    EXPECT_EQ(value.tag, 0x1E);
    EXPECT_EQ(value.content, "");
    EXPECT_EQ(input, "");
    value = readStringValue(input);
    EXPECT_EQ(value.tag, 0);
    EXPECT_EQ(value.content, "");
}

TEST(ReadStringValue, GivesNoContentWhereTheElementIsCutOff) {
    const ByteString bytes = fromHex("0c036869");
    std::string_view input = bytes;
    EXPECT_EQ(readStringValue(input).content, "");
    EXPECT_EQ(input, "");
}

}  // namespace
}  // namespace velmora
