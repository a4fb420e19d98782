#include "provider/line_guid.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

namespace velmora {
namespace {

// The fields of a GUID in the order of its text, each as a number.
std::vector<uint32_t> Fields(const ByteString& text) {
    const LineGuid guid = ParseLineGuid(text);
    std::vector<uint32_t> fields = {guid.data1, guid.data2, guid.data3};
    fields.insert(fields.end(), std::begin(guid.data4), std::end(guid.data4));
    return fields;
}

TEST(ParseLineGuid, ReadsDigitsAndUpperCaseLettersAsHexadecimal) {
    EXPECT_EQ(Fields("01234567-89AB-CDEF-FEDC-BA9876543210"),
              (std::vector<uint32_t>{0x01234567, 0x89AB, 0xCDEF, 0xFE, 0xDC, 0xBA, 0x98, 0x76, 0x54, 0x32, 0x10}));
    EXPECT_EQ(Fields("00000000-0000-4000-8000-000000000000"),
              (std::vector<uint32_t>{0, 0, 0x4000, 0x80, 0, 0, 0, 0, 0, 0, 0}));
}

// Worked out by hand: 'a' counts 42, 'b' 43, 'c' 44, 'd' 45, 'f' 47.
TEST(ParseLineGuid, CountsLowerCaseLettersFrom42) {
    // abcd: ((42 * 16 + 43) * 16 + 44) * 16 + 45 = 0x2CDED, cut to 16 bits.
    EXPECT_EQ(Fields("00000000-abcd-0000-a00a-ffaf00000000"),
              (std::vector<uint32_t>{0, 0xCDED, 0, 0xA0, 0x2A, 0x1F, 0xCF, 0, 0, 0, 0}));
    // ffffffff, by the same sum over eight digits, cut to 32 bits.
    uint64_t sum = 0;
    for (int digit = 0; digit < 8; ++digit) sum = sum * 16 + 47;
    EXPECT_EQ(Fields("ffffffff-0000-0000-0000-000000000000")[0], static_cast<uint32_t>(sum));
}

TEST(ParseLineGuid, CountsTheSignsBetweenTheLettersToo) {
    // '[' is 91, 91 - 55 = 36; '`' is 96, 41; 'G' is 71, 16; 'Z' is 90, 35.
    EXPECT_EQ(Fields("0000000[-000`-000G-0Z00-000000000000"),
              (std::vector<uint32_t>{36, 41, 16, 35, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(ParseLineGuid, CountsAnyOtherCharacterAsZero) {
    EXPECT_EQ(Fields("g@:/{~ 1-00\xE4"
                     "1-\xFF\x80"
                     "01-0z0h-000000000000"),
              (std::vector<uint32_t>{1, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(ParseLineGuid, DoesNotLookAtTheSeparators) {
    EXPECT_EQ(Fields("11111111x2222x3333x4455x66778899AABB"), Fields("11111111-2222-3333-4455-66778899AABB"));
    EXPECT_EQ(Fields("11111111-2222-3333-4455-66778899AABBCC"), Fields("11111111-2222-3333-4455-66778899AABB"));
}

TEST(ParseLineGuid, CountsAFieldAtTheVeryEndAsZeroAndThrowsBeyondIt) {
    const ByteString whole = "11111111-2222-3333-4455-66778899AABB";
    EXPECT_EQ(Fields(whole.substr(0, 35)).back(), 0xBU);
    EXPECT_EQ(Fields(whole.substr(0, 34)).back(), 0U);
    for (size_t length = 0; length < 34; ++length) {
        SCOPED_TRACE(length);
        try {
            ParseLineGuid(whole.substr(0, length));
            ADD_FAILURE() << "nothing was thrown";
        } catch (const std::out_of_range& error) {
            EXPECT_STREQ(error.what(), "invalid string position");
        }
    }
}

}  // namespace
}  // namespace velmora
