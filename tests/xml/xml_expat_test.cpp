// Well-formed documents, read by us and by Expat: the same names, attributes, texts and structure.

#include <gtest/gtest.h>

#include <cstddef>
#include <iterator>
#include <random>

#include "tests/support/expat_tree.h"
#include "tests/xml/outline.h"
#include "tests/xml/sample_messages.h"
#include "xml/xml_node.h"

namespace velmora {
namespace {

void ExpectSameTree(const ByteString& document) {
    const ExpatTree expat(document);
    ASSERT_TRUE(expat.wellFormed) << document;
    ASSERT_EQ(outline(XmlNode(document, true)), outline(expat.root)) << document;
}

// Makes well-formed documents out of all that we and Expat read alike. Left out is what we read otherwise on purpose:
// letters outside ASCII in names, spaces around "=", document types, and the line ends and tabs that XML normalizes.
class DocumentMaker {
public:
    ByteString Document() {
        ByteString document = Maybe("\xEF\xBB\xBF") + Maybe("<?xml version='1.0' encoding=\"UTF-8\"?>");
        document += Misc() + Element(0) + Misc();
        return document;
    }

private:
    template <size_t count>
    ByteString OneOf(const char* const (&choices)[count]) {
        return choices[random() % count];
    }

    ByteString Maybe(const ByteString& text) { return random() % 2 == 0 ? text : ""; }

    ByteString Several(ByteString (DocumentMaker::*make)(), size_t atMost) {
        ByteString text;
        for (size_t count = random() % (atMost + 1); count > 0; --count) text += (this->*make)();
        return text;
    }

    ByteString Misc() { return Several(&DocumentMaker::OneMisc, 2); }
    ByteString OneMisc() { return random() % 3 == 0 ? "\n " : Aside(); }

    ByteString Aside() {
        static const char* const kAsides[] = {"<!---->",
                                              "<!-- <a>&b; ]]> - > \xC3\xA9 -->",
                                              "<!--x\n- -y-->",
                                              "<?p?>",
                                              "<?p <!-- & </a> ?? > ?>",
                                              "<?x-y >?>",
                                              "<!-->/ \"' ?> -->"};
        return OneOf(kAsides);
    }

    ByteString Name() {
        static const char* const kNames[] = {"a", "B", "callID", "deviceIdentifier", "_", "a-b.c_9", "Zz", "x1"};
        static const char* const kPrefixes[] = {"csta:", "p:", "_-.1:", "A:b:"};
        return Maybe(OneOf(kPrefixes)) + OneOf(kNames);
    }

    ByteString Reference() {
        static const char* const kReferences[] = {
            "&amp;",   "&lt;",      "&gt;",      "&quot;",   "&apos;", "&#65;",    "&#x41;",   "&#xe9;",    "&#x20aC;",
            "&#8364;", "&#x1F4DE;", "&#128222;", "&#00065;", "&#10;",  "&#xD7FF;", "&#xE000;", "&#x10FFFF;"};
        return OneOf(kReferences);
    }

    ByteString Characters() {
        static const char* const kCharacters[] = {
            "x", " ", "some text", ";", "amp;", "/>", "?>", "--", "#x", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x93\x9E",
            "=", "]", "0"};
        return OneOf(kCharacters);
    }

    ByteString TextPiece() {
        static const char* const kMore[] = {"\n", "\t", "\"", "'", "\n    "};
        switch (random() % 4) {
            case 0:
                return Reference();
            case 1:
                return OneOf(kMore);
            default:
                return Characters();
        }
    }

    ByteString Cdata() {
        static const char* const kSections[] = {"<![CDATA[]]>",      "<![CDATA[<a>&lt;</a>]]>", "<![CDATA[]] ]>]]>",
                                                "<![CDATA[<!-- ]]>", "<![CDATA[<![CDATA[]]>",   "<![CDATA[\n&]]]]>"};
        return OneOf(kSections);
    }

    ByteString ValuePiece() { return random() % 3 == 0 ? Reference() : Characters(); }

    // Numbered, for XML allows each name only once.
    ByteString Attribute(size_t number) {
        static const char* const kSpaces[] = {" ", "\n", "\t", " \r\n  "};
        const bool single = random() % 2 == 0;
        const ByteString quote = single ? "'" : "\"";
        const ByteString other = single ? "\"" : "'";
        return OneOf(kSpaces) + Name() + std::to_string(number) + "=" + quote + Several(&DocumentMaker::ValuePiece, 4) +
               Maybe(other) + quote;
    }

    ByteString Attributes() {
        ByteString attributes;
        for (size_t count = random() % 4; count > 0; --count) attributes += Attribute(count);
        return attributes + Maybe(" \n");
    }

    // Deeper elements have fewer children, so a document comes to an end.
    ByteString Element(size_t depth) {
        const ByteString name = Name();
        const ByteString start = "<" + name + Attributes();
        if (random() % 4 == 0) return start + "/>";
        ByteString content;
        for (size_t count = random() % 7; count > 0; --count) {
            switch (random() % 5) {
                case 0:
                    content += Cdata();
                    break;
                case 1:
                    content += Aside();
                    break;
                case 2:
                    content += Several(&DocumentMaker::TextPiece, 5);
                    break;
                default:
                    if (random() % 8 >= depth) content += Element(depth + 1);
            }
        }
        return start + ">" + content + "</" + name + Maybe(" ") + Maybe("\n") + ">";
    }

    std::mt19937 random{1};  // seeded, so that every run makes the same documents
};

TEST(XmlAgainstExpat, ReadsMessagesAlike) {
    for (const char* message : kSampleMessages) ExpectSameTree(message);
}

TEST(XmlAgainstExpat, ReadsWellFormedDocumentsAlike) {
    DocumentMaker maker;
    for (int round = 0; round < 20000 && !HasFatalFailure(); ++round) ExpectSameTree(maker.Document());
}

}  // namespace
}  // namespace velmora
