#include "xml/entities.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

using namespace std::string_literals;

ByteString decoded(const ByteString& raw) {
    ByteString text;
    appendDecoded(text, raw);
    return text;
}

struct Example {
    const char* raw;
    ByteString text;
};

template <size_t count>
void ExpectDecoded(const Example (&examples)[count]) {
    for (const Example& example : examples) {
        SCOPED_TRACE(example.raw);
        EXPECT_EQ(decoded(example.raw), example.text);
    }
}

TEST(Entities, AppendsToWhatIsThere) {
    ByteString text = "before ";
    appendDecoded(text, "1 &lt; 2");
    EXPECT_EQ(text, "before 1 < 2");
    appendDecoded(text, "");
    EXPECT_EQ(text, "before 1 < 2");
}

TEST(Entities, LeavesTextWithoutReferencesAsItIs) {
    EXPECT_EQ(decoded(""), "");
    EXPECT_EQ(decoded("plain; text <> \"'"), "plain; text <> \"'");
    EXPECT_EQ(decoded("a\0b;"s), "a\0b;"s);
}

TEST(Entities, DecodesTheFiveNames) {
    EXPECT_EQ(decoded("&apos;&quot;&amp;&lt;&gt;"), "'\"&<>");
    EXPECT_EQ(decoded("a&amp;b&lt;c"), "a&b<c");
}

TEST(Entities, LeavesAnUnknownNameAsItStands) {
    const Example examples[] = {
        {"&nbsp;", "&nbsp;"},    {"&;", "&;"},    {"a&nothing;b&lt;", "a&nothing;b<"},
        {"&amp &lt;", "&amp <"}, {"&&lt;", "&<"}, {"&am&amp;p;", "&am&p;"},
    };
    ExpectDecoded(examples);
}

TEST(Entities, KnowsTheNamesInLowerCaseOnly) {
    EXPECT_EQ(decoded("&LT;&Amp;&gT;&QUOT;&APOS;"), "&LT;&Amp;&gT;&QUOT;&APOS;");
}

TEST(Entities, LeavesAnAmpersandWithNoSemicolonBehindIt) {
    const Example examples[] = {
        {"&", "&"}, {"a & b", "a & b"}, {"&lt; &lt", "< &lt"}, {"; &amp", "; &amp"}, {"&#65", "&#65"}};
    ExpectDecoded(examples);
}

TEST(Entities, DecodesDecimalAndHexadecimalReferences) {
    const Example examples[] = {
        {"&#65;", "A"}, {"&#x41;", "A"}, {"&#x4a;", "J"}, {"&#x4A;", "J"}, {"&#0065;", "A"}, {"[&#9;]", "[\t]"},
    };
    ExpectDecoded(examples);
}

TEST(Entities, ReadsAnUpperCaseXAsAZeroOfADecimalNumber) {
    EXPECT_EQ(decoded("&#X65;"), "A");
    EXPECT_EQ(decoded("&#X41;"), ")");
}

TEST(Entities, CountsLettersAsDigitsInDecimalReferencesToo) {
    EXPECT_EQ(decoded("&#6F;"), "K");  // 6 * 10 + 15
    EXPECT_EQ(decoded("&#5f;"), "A");  // 5 * 10 + 15
    EXPECT_EQ(decoded("&#aa;"), "n");  // 10 * 10 + 10
}

TEST(Entities, CountsAnyOtherByteOfANumberAsZero) {
    const Example examples[] = {
        {"&#-65;", "A"},  {"&# 65;", "A"}, {"&#6g;", "<"},    {"&#x4G;", "@"},
        {"&#xx41;", "A"}, {"&#&65;", "A"}, {"&#6\xC3;", "<"},
    };
    ExpectDecoded(examples);
}

TEST(Entities, ReadsAReferenceWithoutDigitsAsTheZeroByte) {
    EXPECT_EQ(decoded("&#;"), "\0"s);
    EXPECT_EQ(decoded("&#x;"), "\0"s);
    EXPECT_EQ(decoded("a&#0;b"), "a\0b"s);
}

TEST(Entities, TakesNumbersModulo32Bits) {
    EXPECT_EQ(decoded("&#4294967361;"), "A");
    EXPECT_EQ(decoded("&#x100000041;"), "A");
    EXPECT_EQ(decoded("&#x" + ByteString(1000, 'F') + "00000041;"), "A");
}

// RFC 3629, section 3: the ranges of one to four bytes, and its examples in section 7 (U+2260, U+D55C, U+233B4).
TEST(Entities, WritesCodePointsAsUtf8) {
    const Example examples[] = {
        {"&#x7F;", "\x7F"},
        {"&#x80;", "\xC2\x80"},
        {"&#xE9;", "\xC3\xA9"},
        {"&#x7FF;", "\xDF\xBF"},
        {"&#x800;", "\xE0\xA0\x80"},
        {"&#x2260;", "\xE2\x89\xA0"},
        {"&#xD55C;", "\xED\x95\x9C"},
        {"&#xFFFF;", "\xEF\xBF\xBF"},
        {"&#x10000;", "\xF0\x90\x80\x80"},
        {"&#x233B4;", "\xF0\xA3\x8E\xB4"},
        {"&#x10FFFF;", "\xF4\x8F\xBF\xBF"},
    };
    ExpectDecoded(examples);
}

TEST(Entities, WritesSurrogatesAndNumbersBeyondUnicodeLikeAnyOther) {
    const Example examples[] = {
        {"&#xD800;", "\xED\xA0\x80"},
        {"&#xDFFF;", "\xED\xBF\xBF"},
        {"&#x110000;", "\xF4\x90\x80\x80"},
        {"&#x1FFFFF;", "\xF7\xBF\xBF\xBF"},
    };
    ExpectDecoded(examples);
}

TEST(Entities, GivesNothingForANumberFrom0x200000On) {
    const Example examples[] = {
        {"a&#x200000;b", "ab"}, {"&#xFFFFFFFF;", ""}, {"&#4294967295;", ""}, {"&#2097152;;", ";"}};
    ExpectDecoded(examples);
}

TEST(Entities, DecodesWhatAReplacementGaveNoSecondTime) {
    EXPECT_EQ(decoded("&amp;lt;"), "&lt;");
    EXPECT_EQ(decoded("&#38;lt;"), "&lt;");
    EXPECT_EQ(decoded("&amp;amp;lt;"), "&amp;lt;");
    EXPECT_EQ(decoded("&amp;&lt;"), "&<");
    EXPECT_EQ(decoded("&#x20AC;&lt;"), "\xE2\x82\xAC<");
}

TEST(Entities, PassesOverTheByteBehindAReferenceThatGivesNothing) {
    EXPECT_EQ(decoded("&#x200000;&lt;"), "&lt;");
    EXPECT_EQ(decoded("&#x200000;&lt;&lt;"), "&lt;<");
    EXPECT_EQ(decoded("&#x200000;.&lt;"), ".<");
    EXPECT_EQ(decoded("&#x200000;&&lt;"), "&<");
    EXPECT_EQ(decoded("&#x200000;&#x200000;"), "&#x200000;");
    EXPECT_EQ(decoded("&lt;&#x200000;"), "<");
}

TEST(Entities, ReachesFromAnAmpersandToTheNextSemicolonHoweverFar) {
    const ByteString gap(10000, 'x');
    EXPECT_EQ(decoded("&" + gap + ";&lt;"), "&" + gap + ";<");
    EXPECT_EQ(decoded("&#x41" + ByteString(10000, 'g') + ";"), ByteString(1, '\0'));
}

}  // namespace
}  // namespace velmora
