// What the longest messages may cost, in stack and in time, whatever they consist of.

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <memory>

#include "tests/support/small_stack.h"
#include "xml/xml_node.h"

namespace velmora {
namespace {

constexpr size_t kLongestMessageBytes = 65527;  // a CSTA frame of 65535 bytes without its header

// start, then piece over and over, then end: exactly so many bytes, unless the piece does not fit in any more.
ByteString filled(size_t bytes, const ByteString& start, const ByteString& piece, const ByteString& end) {
    ByteString document = start;
    while (document.size() + piece.size() + end.size() <= bytes) document += piece;
    return document + end;
}

ByteString repeated(size_t count, const ByteString& piece) {
    return filled(count * piece.size(), "", piece, "");
}

size_t levels(const XmlNode& root) {
    size_t count = 1;
    for (const XmlNode* element = &root; !element->children.empty(); ++count) element = &element->children.front();
    return count;
}

struct Result {
    size_t levels = 0;
    size_t children = 0;  // of the root
    ByteString text;
};

// Parses document, looks path up in it, moves the tree and destroys it, all on a small stack.
Result OnSmallStack(const ByteString& document, const ByteString& path) {
    Result result;
    RunOnSmallStack([&] {
        auto root = std::make_unique<XmlNode>(document, true);
        result.levels = levels(*root);
        result.children = root->children.size();
        result.text = root->textAt(path);
        const XmlNode moved(std::move(*root));
        root.reset();
    });
    return result;
}

TEST(XmlOnASmallStack, ReadsAMessageOfNothingButOpenElements) {
    const ByteString document = filled(kLongestMessageBytes, "", "<a>", "");
    const Result result = OnSmallStack(document, repeated(21841, "a/"));
    EXPECT_EQ(result.levels, 21842U);
    EXPECT_EQ(result.text, "");
}

TEST(XmlOnASmallStack, ReadsTheDeepestNestingThereIs) {
    EXPECT_EQ(OnSmallStack(filled(kLongestMessageBytes, "", "<>", ""), "a").levels, 32763U);
}

TEST(XmlOnASmallStack, FindsTheTextOfTheInnermostElement) {
    const ByteString document = repeated(9361, "<a>") + "x" + repeated(9360, "</a>") + "</a>";
    ASSERT_EQ(document.size(), kLongestMessageBytes + 1);
    const Result result = OnSmallStack(document, repeated(9360, "a/"));
    EXPECT_EQ(result.levels, 9361U);
    EXPECT_EQ(result.text, "x");
}

TEST(XmlOnASmallStack, ReadsAMessageOfNothingButSiblings) {
    const Result result = OnSmallStack(filled(kLongestMessageBytes, "<r>", "<a/>", "<b>x</b></r>"), "b");
    EXPECT_EQ(result.levels, 2U);
    EXPECT_EQ(result.children, 16379U);
    EXPECT_EQ(result.text, "x");
}

TEST(XmlOnASmallStack, ReadsManyTopLevelElementsIntoOneRoot) {
    EXPECT_EQ(OnSmallStack(filled(kLongestMessageBytes, "", "<a/>", ""), "a").levels, 1U);
    EXPECT_EQ(OnSmallStack(filled(kLongestMessageBytes, "", "<a><b/></a>", ""), "a").children, 5957U);
}

TEST(XmlOnASmallStack, ReadsAMessageOfNothingButEndTags) {
    EXPECT_EQ(OnSmallStack(filled(kLongestMessageBytes, "", "</a>", ""), "a").levels, 1U);
    EXPECT_EQ(OnSmallStack(filled(kLongestMessageBytes, repeated(9000, "<a>"), "</a>", ""), "a").levels, 9000U);
}

// The sanitizers check every access to memory and make everything some ten times slower.
#ifdef __SANITIZE_ADDRESS__
constexpr double kSlowdown = 10;
#else
constexpr double kSlowdown = 1;
#endif

constexpr double kLimitMs = 50 * kSlowdown;  // for a message of 64 KB
constexpr double kNoiseMs = 2 * kSlowdown;

// The shortest of several times to parse document, to look path up in it and to destroy it: a busy machine makes some
// of them longer, none shorter.
double TimeMs(const ByteString& document, const ByteString& path) {
    double shortestMs = 1e9;
    for (int run = 0; run < 7; ++run) {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(XmlNode(document, true).textAt(path), "");
        const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
        shortestMs = std::min(shortestMs, time.count());
    }
    return shortestMs;
}

struct Shape {
    const char* name;
    const char* start;
    const char* piece;
    const char* end;
};

const Shape kShapes[] = {
    {"open elements", "", "<a>", ""},
    {"open elements without a name", "", "<>", ""},
    {"open elements with text", "", "<a>x", ""},
    {"empty elements", "<r>", "<a/>", "</r>"},
    {"empty elements at the top level", "", "<a/>", ""},
    {"elements with children at the top level", "", "<a><b/></a>", ""},
    {"closed elements", "<r>", "<a></a>", "</r>"},
    {"closed elements, wrongly", "<r>", "<a></b>", "</r>"},
    {"end tags", "", "</a>", ""},
    {"ends without starts", "<r><a>", "]]>-->?>/>", ""},
    {"unfinished tags", "", "<a ", ""},
    {"less-than signs", "", "<", ""},
    {"less-than signs with spaces", "", "< ", ""},
    {"greater-than signs", "<r><a>", ">", "</a></r>"},
    {"a long name", "<", "a", "/>"},
    {"a long name of colons", "<", ":", "/>"},
    {"a long end tag", "<r><a>x</", "a", "></r>"},
    {"a long text", "<r><a>", "x", "</a></r>"},
    {"a long text without end", "<r><a>", "x", ""},
    {"a long tag of spaces", "<r", " ", "/>"},
    {"texts between children", "<r><a>", "x<b/>", "</a></r>"},
    {"texts between comments", "<r><a>", "x<!---->", "</a></r>"},
    {"texts between CDATA sections", "<r><a>", "x<![CDATA[y]]>", "</a></r>"},
    {"ampersands and one semicolon", "<r><a>", "&", ";</a></r>"},
    {"ampersands without a semicolon", "<r><a>", "&", "</a></r>"},
    {"ampersands without a semicolon near", "<r><a>", "&", "</a>;</r>"},
    {"starts of numbers and one semicolon", "<r><a>", "&#", ";</a></r>"},
    {"starts of numbers without a semicolon", "<r><a>", "&#x", "</a></r>"},
    {"a long number", "<r><a>&#x", "4", ";</a></r>"},
    {"semicolons", "<r><a>", ";", "</a></r>"},
    {"empty names", "<r><a>", "&;", "</a></r>"},
    {"entities", "<r><a>", "&amp;", "</a></r>"},
    {"numbers", "<r><a>", "&#1;", "</a></r>"},
    {"numbers that give nothing", "<r><a>", "&#x200000;", "</a></r>"},
    {"ampersands in a value", "<a k='", "&", ";'/>"},
    {"entities in a value", "<a k='", "&lt;", "'/>"},
    {"starts of comments", "", "<!--", ""},
    {"starts of comments in content", "<r><a>x", "<!--", ""},
    {"starts of comments that end late", "<r><a>x", "<!--", "--></a></r>"},
    {"comments", "<r><a>", "<!---->", "</a></r>"},
    {"comments at the top level", "", "<!---->", ""},
    {"hyphens in a comment", "<!--", "-", ""},
    {"starts of instructions", "", "<?", ""},
    {"starts of instructions in content", "<r><a>x", "<?", ""},
    {"instructions", "<r><a>", "<?\?>", "</a></r>"},
    {"instructions at the top level", "", "<?\?>", ""},
    {"question marks in an instruction", "<?", "?", ""},
    {"starts of CDATA", "", "<![CDATA[", ""},
    {"starts of CDATA in content", "<r><a>x", "<![CDATA[", ""},
    {"CDATA", "<r><a>", "<![CDATA[]]>", "</a></r>"},
    {"brackets in CDATA", "<r><a><![CDATA[", "]", ""},
    {"attributes", "<r><a", " k=''", "/></r>"},
    {"attributes without spaces", "<r><a ", "k=''", "/></r>"},
    {"attributes of the root, a few each time", "", "<a k='' l=''/>", ""},
    {"attributes without quotes", "<r><a ", "k=v ", "/></r>"},
    {"attributes without values", "<r><a ", "k ", "/></r>"},
    {"starts of values", "<r>", "<a k=\"", ""},
    {"starts of values in both kinds of quotes", "<r>", "<a k='<a k=\"", ""},
    {"starts of values without quotes", "<r>", "<a k=v", ""},
    {"elements with a value without its end", "<r>", "<a k='1'/><b k=\"", ""},
    {"attributes of end tags", "<r><a></a", " k=''", "/></r>"},
    {"quotes", "<r><a>", "\"'", "</a></r>"},
    {"control characters", "<r><a>", "\x01", "</a></r>"},
};

TEST(XmlTime, GrowsWithTheLengthOfTheMessageAlone) {
    for (const Shape& shape : kShapes) {
        SCOPED_TRACE(shape.name);
        const ByteString path = "z";
        const double shortMs = TimeMs(filled(16384, shape.start, shape.piece, shape.end), path);
        const double longMs = TimeMs(filled(65536, shape.start, shape.piece, shape.end), path);
        EXPECT_LT(longMs, kLimitMs);
        // Four times the length: four times the time if it grows with the length, sixteen if with its square.
        EXPECT_LT(longMs, 10 * shortMs + kNoiseMs);
    }
}

TEST(XmlTime, OfALookUpGrowsWithTheLengthOfThePathAlone) {
    const auto pathMs = [](size_t bytes) { return TimeMs(filled(bytes, "", "<a>", ""), repeated(bytes / 3, "a/")); };
    const double shortMs = pathMs(16384);
    const double longMs = pathMs(65536);
    EXPECT_LT(longMs, kLimitMs);
    EXPECT_LT(longMs, 10 * shortMs + kNoiseMs);
}

}  // namespace
}  // namespace velmora
