#include "config/text_numbers.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>

namespace velmora {
namespace {

TEST(DecimalText, WritesTheWholeRangeOf64Bits) {
    EXPECT_EQ(DecimalText(0), "0");
    EXPECT_EQ(DecimalText(-7), "-7");
    EXPECT_EQ(DecimalText(std::numeric_limits<int64_t>::max()), "9223372036854775807");
    EXPECT_EQ(DecimalText(std::numeric_limits<int64_t>::min()), "-9223372036854775808");
}

struct NumberText {
    const char* text;
    int32_t number;
};

TEST(ParseInt, TakesWhiteSpaceSignAndDigitsAndIgnoresTheRest) {
    const NumberText texts[] = {
        {"443", 443},
        {" 8443xyz", 8443},
        {"\t\n\v\f\r 5", 5},
        {"+12", 12},
        {"-12", -12},
        {"007", 7},
        {"0x10", 0},
        {"12.9", 12},
        {"1 2", 1},
        {"2147483647", 2147483647},
        {"-2147483648", -2147483648},
        {"-0", 0},
    };
    for (const NumberText& text : texts) {
        SCOPED_TRACE(text.text);
        EXPECT_EQ(ParseInt(text.text), text.number);
    }
}

TEST(ParseInt, StopsAtAnEmbeddedNul) {
    EXPECT_EQ(ParseInt(std::string_view("4\0004", 3)), 4);
}

TEST(ParseInt, ThrowsInvalidArgumentWithoutADigit) {
    for (const char* text : {"", "abc", " ", "+", "-", "--1", "+-1", "- 1", "x1",
                             "\xA0"
                             "1"}) {
        SCOPED_TRACE(text);
        try {
            ParseInt(text);
            ADD_FAILURE() << "nothing was thrown";
        } catch (const std::invalid_argument& error) {
            EXPECT_STREQ(error.what(), "invalid stoi argument");
        }
    }
}

TEST(ParseInt, ThrowsOutOfRangeBeyond32Bits) {
    const std::string many(100000, '9');
    for (const std::string& text : {std::string("2147483648"), std::string("-2147483649"), std::string("99999999999"),
                                    std::string("18446744073709551616"), many, "-" + many}) {
        SCOPED_TRACE(text.substr(0, 30));
        try {
            ParseInt(text);
            ADD_FAILURE() << "nothing was thrown";
        } catch (const std::out_of_range& error) {
            EXPECT_STREQ(error.what(), "stoi argument out of range");
        }
    }
}

// The judge is the standard library's own conversion, whose rule is the one to follow.
TEST(ParseInt, AgreesWithStdStoi) {
    std::mt19937 random(7);
    constexpr char kAlphabet[] = "0123456789 +-\tx";
    for (int round = 0; round < 20000; ++round) {
        std::string text;
        for (size_t length = random() % 14; length > 0; --length) text += kAlphabet[random() % (sizeof(kAlphabet) - 1)];
        SCOPED_TRACE(text);
        enum class Outcome { kNumber, kInvalid, kOutOfRange };
        const auto outcome = [&text](auto convert, int32_t& number) {
            try {
                number = convert(text);
                return Outcome::kNumber;
            } catch (const std::invalid_argument&) {
                return Outcome::kInvalid;
            } catch (const std::out_of_range&) {
                return Outcome::kOutOfRange;
            }
        };
        int32_t ours = 0;
        int32_t theirs = 0;
        EXPECT_EQ(outcome([](const std::string& digits) { return ParseInt(digits); }, ours),
                  outcome([](const std::string& digits) { return std::stoi(digits); }, theirs));
        EXPECT_EQ(ours, theirs);
    }
}

TEST(HexText, WritesTwoLowerCaseDigitsAByte) {
    EXPECT_EQ(HexText(""), "");
    EXPECT_EQ(HexText(std::string_view("\x00\x01\x7F\x80\xFFz", 6)), "00017f80ff7a");
}

TEST(HexText, AgreesWithPrintfOnEveryByte) {
    for (int value = 0; value < 256; ++value) {
        char expected[3];
        ASSERT_EQ(std::snprintf(expected, sizeof expected, "%02x", value), 2);
        EXPECT_EQ(HexText(ByteString(1, static_cast<char>(value))), expected);
    }
}

}  // namespace
}  // namespace velmora
