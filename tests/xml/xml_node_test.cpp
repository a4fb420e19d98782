#include "xml/xml_node.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

#include "tests/xml/outline.h"

namespace velmora {
namespace {

using namespace std::string_literals;

ByteString textAt(const ByteString& document, std::string_view path) {
    return XmlNode(document, true).textAt(path);
}

const ByteString kCall =
    "<MakeCallResponse><callingDevice><callID>17</callID><deviceID>anna@example.com</deviceID></callingDevice>"
    "</MakeCallResponse>";

TEST(XmlNode, FindsATextByThePathToItsElement) {
    EXPECT_EQ(textAt(kCall, "callingDevice/callID"), "17");
    EXPECT_EQ(textAt(kCall, "callingDevice/deviceID"), "anna@example.com");
    EXPECT_EQ(textAt("<r><sessionID>s</sessionID></r>", "sessionID"), "s");
}

TEST(XmlNode, GivesAnEmptyTextForAPathThatLeadsNowhere) {
    for (const char* path :
         {"callID", "callingDevice/other", "other/callID", "callingDevice/callID/deeper", "called"}) {
        EXPECT_EQ(textAt(kCall, path), "") << path;
    }
    EXPECT_EQ(textAt("", "a"), "");
}

TEST(XmlNode, StartsAPathAtItsChildrenNotAtItself) {
    EXPECT_EQ(textAt("<r><a>x</a></r>", "r/a"), "");
    EXPECT_EQ(textAt("<r><r>x</r></r>", "r"), "x");
}

TEST(XmlNode, TakesTheFirstChildThatBearsTheName) {
    EXPECT_EQ(textAt("<r><b>x</b><b>y</b></r>", "b"), "x");
    EXPECT_EQ(textAt("<r><a/><b/><b>y</b></r>", "b"), "");
}

TEST(XmlNode, DoesNotTryALaterChildWhenTheFirstHasNoSuchChild) {
    EXPECT_EQ(textAt("<r><a><c/></a><a><b>x</b></a></r>", "a/b"), "");
}

TEST(XmlNode, GivesTheElementsOwnTextWithoutThatOfItsDescendants) {
    EXPECT_EQ(textAt("<r><a>1<b>2</b>3</a></r>", "a"), "13");
}

TEST(XmlNode, LooksUpFromAnyElement) {
    const XmlNode root(kCall, true);
    EXPECT_EQ(root.children.front().textAt("callID"), "17");
    EXPECT_EQ(root.children.front().children.front().textAt("callID"), "");
}

TEST(XmlNode, FindsPrefixedElementsByTheirLocalNamesAlone) {
    const ByteString document = "<csta:r xmlns:csta=\"u\"><csta:a><other:b>x</other:b></csta:a></csta:r>";
    EXPECT_EQ(textAt(document, "a/b"), "x");
    EXPECT_EQ(textAt(document, "csta:a/other:b"), "");
}

TEST(XmlNode, ComparesNamesAsAWhole) {
    EXPECT_EQ(textAt("<r><ab>x</ab></r>", "a"), "");
    EXPECT_EQ(textAt("<r><a>x</a></r>", "ab"), "");
    EXPECT_EQ(textAt("<r><a>x</a></r>", "a\0"s), "");
}

TEST(XmlNode, IgnoresASlashAtTheEndOfAPath) {
    EXPECT_EQ(textAt(kCall, "callingDevice/callID/"), "17");
    EXPECT_EQ(textAt("<r><a>x</a></r>", "a/"), "x");
}

TEST(XmlNode, FindsNothingBehindASlashAtTheStartOfAPath) {
    EXPECT_EQ(textAt(kCall, "/callingDevice/callID"), "");
    EXPECT_EQ(textAt("<r><a>x</a></r>", "/a"), "");
    EXPECT_EQ(textAt("<r><a>x</a></r>", "/"), "");
}

TEST(XmlNode, FindsNothingBehindADoubledSlash) {
    EXPECT_EQ(textAt(kCall, "callingDevice//callID"), "");
    EXPECT_EQ(textAt("<r><a>x</a></r>", "a//"), "");
}

TEST(XmlNode, TakesNoSlashForAStepThroughAnElementWithoutAName) {
    const ByteString document = "<r><a><><b>x</b></></a><><a>y</a></></r>";
    EXPECT_EQ(textAt(document, "a//b"), "");
    EXPECT_EQ(textAt(document, "/a"), "");
}

TEST(XmlNode, TakesAnEmptyPathForTheNameThatIsEmpty) {
    EXPECT_EQ(textAt("<r><a>x</a></r>", ""), "");
    EXPECT_EQ(textAt("<r><a>x</a><>y</></r>", ""), "y");
}

TEST(XmlNode, KeepsUpperAndLowerCaseApartIfToldTo) {
    const XmlNode root("<R><Aa B=\"C\">x</Aa></R>", true);
    EXPECT_EQ(outline(root), "R(Aa[B=C]\"x\")");
    EXPECT_EQ(root.textAt("Aa"), "x");
    EXPECT_EQ(root.textAt("aa"), "");
    EXPECT_EQ(root.textAt("AA"), "");
}

TEST(XmlNode, LowersNamesAndPathsIfCaseDoesNotMatter) {
    const XmlNode root("<P:R><P:Aa K:B=\"C\">X<cC>Y</cC></P:Aa></P:R>", false);
    EXPECT_EQ(outline(root), "p|r(p|aa[k|b=C]\"X\"(cc\"Y\"))");
    EXPECT_EQ(root.textAt("aa"), "X");
    EXPECT_EQ(root.textAt("AA"), "X");
    EXPECT_EQ(root.textAt("aA/Cc/"), "Y");
}

TEST(XmlNode, ComparesTokensWithTheirCaseEvenIfThatOfNamesDoesNotMatter) {
    EXPECT_EQ(outline(XmlNode("<R><A>&LT;&lt;<![CDATA[X]]></A><![cdata[x]]></R>", false)), "r(a\"&LT;<X\" )");
}

TEST(XmlNode, LowersOnlyAsciiLettersOfAPath) {
    EXPECT_EQ(XmlNode("<r><a>x</a></r>", false).textAt("\xC3\x84"), "");
    EXPECT_EQ(XmlNode("<r><a-1._z>x</a-1._z></r>", false).textAt("A-1._Z"), "x");
}

TEST(XmlNode, GivesItsCaseRuleToEveryElement) {
    for (const bool matchCase : {true, false}) {
        const XmlNode root("<r><a><b/></a><c>x</c></r>", matchCase);
        EXPECT_EQ(root.caseSensitive, matchCase);
        for (const XmlNode& child : root.children) EXPECT_EQ(child.caseSensitive, matchCase);
        EXPECT_EQ(root.children.front().children.front().caseSensitive, matchCase);
    }
}

TEST(XmlNode, HasEveryFieldEmptyForAnEmptyDocument) {
    const XmlNode root("", true);
    EXPECT_EQ(root.prefix, "");
    EXPECT_EQ(root.localName, "");
    EXPECT_TRUE(root.attributes.empty());
    EXPECT_TRUE(root.children.empty());
    EXPECT_EQ(root.text, "");
}

TEST(XmlNode, GivesAReferenceIntoTheTree) {
    const XmlNode root("<r><a>x</a></r>", true);
    EXPECT_EQ(&root.textAt("a"), &root.children.front().text);
}

TEST(XmlNode, MovesWithoutCopyingAnElement) {
    static_assert(std::is_nothrow_move_constructible_v<XmlNode>);
    static_assert(!std::is_copy_constructible_v<XmlNode>);

    XmlNode root(kCall, true);
    const ByteString before = outline(root);
    const XmlNode* child = &root.children.front();
    const ByteString* text = &root.textAt("callingDevice/callID");

    const XmlNode moved(std::move(root));
    EXPECT_EQ(outline(moved), before);
    EXPECT_EQ(&moved.children.front(), child);
    EXPECT_EQ(&moved.textAt("callingDevice/callID"), text);
}

}  // namespace
}  // namespace velmora
