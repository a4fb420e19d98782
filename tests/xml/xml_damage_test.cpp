// What damage does to a message: cut off anywhere, any byte changed, or markup in any order at all.

#include <gtest/gtest.h>

#include <cstddef>
#include <random>

#include "tests/xml/outline.h"
#include "tests/xml/plain_parser.h"
#include "tests/xml/sample_messages.h"
#include "xml/xml_node.h"

namespace velmora {
namespace {

TEST(DamagedXml, GivesTheTextsOfExactlyThoseElementsWhoseEndTagHasBegun) {
    struct Leaf {
        const char* path;
        const char* endsWith;  // from the start of the text up to "</" of the element's end tag
        const char* text;
    };
    const Leaf leaves[] = {
        {"monitorCrossRefID", "4711</", "4711"},
        {"connection/callID", "18</", "18"},
        {"connection/deviceID", "sip:200@pbx.example.com</", "sip:200@pbx.example.com"},
        {"callingDevice/deviceIdentifier", "&#128222;</", "M\xC3\xBCller <070> \xE2\x82\xAC\xF0\x9F\x93\x9E"},
        {"extensions/privateData", "more</", "<raw>&amp;]] ></raw> and more"},
        {"cause", "newCall</", "newCall"},
    };
    const ByteString message = kDeliveredEvent;
    for (size_t length = 0; length <= message.size(); ++length) {
        SCOPED_TRACE(length);
        const XmlNode root(message.substr(0, length), true);
        for (const Leaf& leaf : leaves) {
            const ByteString end = leaf.endsWith;
            const size_t begunAt = message.find(end);
            ASSERT_NE(begunAt, ByteString::npos);
            EXPECT_EQ(root.textAt(leaf.path), length >= begunAt + end.size() ? leaf.text : "") << leaf.path;
        }
    }
}

TEST(DamagedXml, IsReadByTheRulesWhereverAMessageIsCutOff) {
    for (const ByteString message : kSampleMessages) {
        for (size_t length = 0; length <= message.size(); ++length) {
            const ByteString cut = message.substr(0, length);
            ASSERT_EQ(outline(XmlNode(cut, true)), outline(plainParse(cut, true))) << cut;
        }
    }
}

TEST(DamagedXml, IsReadByTheRulesWhicheverByteIsChanged) {
    for (const ByteString message : kSampleMessages) {
        for (size_t position = 0; position < message.size(); ++position) {
            ByteString changed = message;
            // What has a meaning of its own in XML, and a letter, a byte outside ASCII and zero.
            for (const char byte : ByteString("<>/!?[]-&#;=\"': \nxA0\x80\0", 22)) {
                changed[position] = byte;
                ASSERT_EQ(outline(XmlNode(changed, true)), outline(plainParse(changed, true))) << changed;
            }
        }
    }
}

TEST(DamagedXml, IsReadByTheRulesInWhateverOrderMarkupComes) {
    const ByteString pieces[] = {
        "<",      ">",   "/",   "</",  "/>",         "<a>",  "</a>",  "<b/>",      "<p:C ",     " k=",
        "\"",     "'",   "=",   " ",   "\t",         "\r\n", "&",     ";",         "&amp;",     "&lt;",
        "&#",     "x",   "41",  "&#x", "&#x200000;", "<!--", "-->",   "<![CDATA[", "]]>",       "<?",
        "?>",     "!",   "-",   "]",   "a",          "Z",    ":",     ".",         "\xC3\xA9",  ByteString(1, '\0'),
        "k='1' ", "<a>", "<a>", "x",   "</a>",       "text", "<p:b>", "</p:b>",    "m:L=\"n\"", "&quot;",
    };
    std::mt19937 random(1);  // seeded, so that every run reads the same documents
    for (int round = 0; round < 50000; ++round) {
        ByteString document = round % 2 == 0 ? "" : "<r><a>";
        for (size_t count = random() % 24; count > 0; --count) document += pieces[random() % std::size(pieces)];
        const bool matchCase = random() % 4 != 0;
        ASSERT_EQ(outline(XmlNode(document, matchCase)), outline(plainParse(document, matchCase))) << document;
    }
}

}  // namespace
}  // namespace velmora
