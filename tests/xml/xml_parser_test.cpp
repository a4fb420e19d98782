#include "xml/xml_parser.h"

#include <gtest/gtest.h>

#include "tests/xml/outline.h"
#include "xml/xml_node.h"

namespace velmora {
namespace {

using namespace std::string_literals;

ByteString parsed(const ByteString& document) {
    return outline(XmlNode(document, true));
}

// The top level

TEST(XmlParser, MakesTheTopElementTheRoot) {
    EXPECT_EQ(parsed("<a/>"), "a");
    EXPECT_EQ(parsed("<a></a>"), "a");
    EXPECT_EQ(parsed("<a><b/></a>"), "a(b)");
}

TEST(XmlParser, FindsNoElementInADocumentWithoutOne) {
    for (const char* document : {"", " ", "text", "a>b", "<!-- <a/> -->", "<?xml version=\"1.0\"?>", "&lt;a/>"}) {
        EXPECT_EQ(parsed(document), "") << document;
    }
}

TEST(XmlParser, SkipsWhateverElseStandsAtTheTopLevel) {
    EXPECT_EQ(parsed("\xEF\xBB\xBF\r\n any & text; ]]> --> <a/> more\0 of it"s), "a");
}

TEST(XmlParser, DropsCommentsAtTheTopLevel) {
    EXPECT_EQ(parsed("<!-- x <b> -- > --><a/><!----><!-- </c> -->"), "a");
}

TEST(XmlParser, DropsProcessingInstructionsAtTheTopLevel) {
    EXPECT_EQ(parsed("<?xml version=\"1.0\" encoding=\"UTF-8\"?><?p <b> > ?><a/><?\?>"), "a");
}

TEST(XmlParser, SkipsTheRestAfterAnUnterminatedCommentAtTheTopLevel) {
    EXPECT_EQ(parsed("<!-- x -> <a/>"), "");
    EXPECT_EQ(parsed("<a/><!-- <b/>"), "a");
}

TEST(XmlParser, SkipsTheRestAfterAnUnterminatedInstructionAtTheTopLevel) {
    EXPECT_EQ(parsed("<?xml > <a/>"), "");
    EXPECT_EQ(parsed("<a/><? <b/>"), "a");
}

TEST(XmlParser, LooksForTheEndOfACommentOnlyBehindItsStart) {
    EXPECT_EQ(parsed("<!--><a/>-->"), "");
    EXPECT_EQ(parsed("<!---><a/>--><b/>"), "b");
}

TEST(XmlParser, LooksForTheEndOfAnInstructionOnlyBehindItsStart) {
    EXPECT_EQ(parsed("<?><a/>?><b/>"), "b");
}

TEST(XmlParser, StopsAtAnEndTagAtTheTopLevel) {
    EXPECT_EQ(parsed("</x><a/>"), "");
    EXPECT_EQ(parsed("<a><b/></a></a><c/>"), "a(b)");
}

TEST(XmlParser, ReadsFurtherTopLevelElementsIntoTheSameRoot) {
    EXPECT_EQ(parsed("<p:a k=\"1\"><b/></p:a> <c l=\"2\"><d/></c><e/>"), "e[k=1 l=2](b d)");
}

TEST(XmlParser, DropsTheTextOfTheRoot) {
    EXPECT_EQ(parsed("<a>x<b>y</b>z<![CDATA[c]]></a>"), "a(b\"y\")");
    EXPECT_EQ(parsed("<a>x</a><b>y</b>"), "b");
    EXPECT_EQ(parsed("<a>x"), "a");
}

// CSTA has no document type. The "<!" is read as a tag without a name, and "!" begins no attribute.
TEST(XmlParser, LetsADocumentTypeSwallowTheDocument) {
    EXPECT_EQ(parsed("<!DOCTYPE a><a/>"), "");
    EXPECT_EQ(parsed("<a><b/><!DOCTYPE x><c/></a>"), "a(b )");
    EXPECT_EQ(parsed("<![CDATA[x]]><a/>"), "");
    EXPECT_EQ(parsed("<!-x--><a/>"), "");
}

// Names

TEST(XmlParser, SplitsANameAtItsFirstColon) {
    const XmlNode root("<p:a:b/>", true);
    EXPECT_EQ(root.prefix, "p");
    EXPECT_EQ(root.localName, "a:b");
    EXPECT_EQ(parsed("<:a/>"), "a");
    EXPECT_EQ(parsed("<p:/>"), "p|");
    EXPECT_EQ(parsed("<:/>"), "");
    EXPECT_EQ(parsed("<a p:k=\"1\" p:l:m=\"2\" :n=\"3\"/>"), "a[p|k=1 p|l:m=2 n=3]");
}

TEST(XmlParser, KeepsThePrefixOfAName) {
    EXPECT_EQ(parsed("<csta:a xmlns:csta=\"u\"><csta:b/></csta:a>"), "csta|a[xmlns|csta=u](csta|b)");
}

TEST(XmlParser, BeginsNamesWithALetterAColonOrAnUnderscoreOnly) {
    for (int value = 0; value < 256; ++value) {
        SCOPED_TRACE(value);
        const ByteString first(1, static_cast<char>(value));
        const bool letter = (value >= 'A' && value <= 'Z') || (value >= 'a' && value <= 'z');
        const XmlNode root("<" + first + "b/>", true);
        if (value == ':') {
            EXPECT_EQ(root.localName, "b");
        } else {
            EXPECT_EQ(root.localName, letter || value == '_' ? first + "b" : "");
        }
    }
}

TEST(XmlParser, GoesOnInNamesWithDigitsHyphensAndDotsToo) {
    for (int value = 0; value < 256; ++value) {
        SCOPED_TRACE(value);
        const ByteString second(1, static_cast<char>(value));
        const bool letter = (value >= 'A' && value <= 'Z') || (value >= 'a' && value <= 'z');
        const bool digit = value >= '0' && value <= '9';
        const bool inName = letter || digit || value == ':' || value == '_' || value == '-' || value == '.';
        const XmlNode root("<a" + second + "b/>", true);
        const ByteString name = root.prefix.empty() ? root.localName : root.prefix + ":" + root.localName;
        EXPECT_EQ(name, inName ? "a" + second + "b" : "a");
    }
}

TEST(XmlParser, EndsANameAtALetterOutsideAscii) {
    EXPECT_EQ(parsed("<r><n\xC3\xA9/><b/></r>"), "r(n)");
    EXPECT_EQ(parsed("<n\xC3\xA9 k=\"1\"><b/></n\xC3\xA9>"), "n");
    EXPECT_EQ(parsed("<\xC3\xA9/>"), "");
}

TEST(XmlParser, TakesATagWithoutANameForAnElementWithoutOne) {
    EXPECT_EQ(parsed("<r><>x</></r>"), "r(\"x\")");
    EXPECT_EQ(parsed("<r></r><>"), "");
    EXPECT_EQ(parsed("<r>< k=\"1\"/></r>"), "r([k=1])");
}

// Start tags

TEST(XmlParser, SkipsWhitespaceInATag) {
    EXPECT_EQ(parsed("<a \t\r\n><b\n/><c\tk=\"1\"\r\n\tl='2' /></a >"), "a(b c[k=1 l=2])");
}

TEST(XmlParser, TakesOnlyFourBytesForWhitespace) {
    EXPECT_EQ(parsed("<a\v/><b/>"), "a");
    EXPECT_EQ(parsed("<a\f/><b/>"), "a");
    EXPECT_EQ(parsed("<a\xC2\xA0/><b/>"), "a");
    EXPECT_EQ(parsed("<a\0/><b/>"s), "a");
}

TEST(XmlParser, TakesTheEndOfTheDocumentForTheEndOfATag) {
    for (const char* document : {"<r><a", "<r><a ", "<r><a k=\"1\"", "<r><a k=\"1\" "}) {
        EXPECT_EQ(XmlNode(document, true).children.size(), 1U) << document;
        EXPECT_EQ(XmlNode(document, true).children.front().localName, "a") << document;
    }
    EXPECT_EQ(parsed("<r><a k=\"1\""), "r(a[k=1])");
    EXPECT_EQ(parsed("<r><"), "r()"s);
    EXPECT_EQ(parsed("<"), "");
}

TEST(XmlParser, SwallowsTheRestAfterASlashThatEndsNoTag) {
    EXPECT_EQ(parsed("<r><a/ ><b/></r>"), "r(a)");
    EXPECT_EQ(parsed("<r><a / ><b/></r>"), "r(a)");
    EXPECT_EQ(parsed("<r><a/"), "r(a)");
}

// Attributes

TEST(XmlParser, ReadsAttributesInDocumentOrder) {
    EXPECT_EQ(parsed("<a z=\"1\" b='2' m=\"\" z=\"3\"/>"), "a[z=1 b=2 m= z=3]");
}

TEST(XmlParser, EndsAQuotedValueAtTheSameQuoteOnly) {
    EXPECT_EQ(parsed("<a k=\"it's > <b/> /> \n\" l='say \"x\"'/>"), "a[k=it's > <b/> /> \n l=say \"x\"]");
}

TEST(XmlParser, DecodesEntitiesInValues) {
    EXPECT_EQ(parsed("<a k=\"1 &lt; &#50; &quot;&apos;&x;\"/>"), "a[k=1 < 2 \"'&x;]");
    EXPECT_EQ(parsed("<a k=&lt; />"), "a[k=<]");
}

TEST(XmlParser, NeedsNoSpaceBetweenAttributes) {
    EXPECT_EQ(parsed("<a k=\"1\"l='2'm=\"3\"/>"), "a[k=1 l=2 m=3]");
}

TEST(XmlParser, ReadsAnUnquotedValueUpToTheNextWhitespace) {
    for (const char* space : {" ", "\t", "\r", "\n"}) {
        EXPECT_EQ(parsed("<a k=1"s + space + "l=x'y\"" + space + "/>"), "a[k=1 l=x'y\"]");
    }
    EXPECT_EQ(parsed("<a k= l=\"2\"/>"), "a[k= l=2]");
}

TEST(XmlParser, LetsAnUnquotedValueRunAcrossTheEndOfItsTag) {
    EXPECT_EQ(parsed("<a k=1/><b/> ><c/></a>"), "a[k=1/><b/>](c)");
}

TEST(XmlParser, SwallowsTheRestAtSpacesAroundTheEqualsSign) {
    EXPECT_EQ(parsed("<r><a k = \"1\">x</a><b/></r>"), "r(a)");
    EXPECT_EQ(parsed("<r><a k =\"1\">x</a><b/></r>"), "r(a)");
    // The value is empty and "1" begins no attribute.
    EXPECT_EQ(parsed("<r><a k= \"1\">x</a><b/></r>"), "r(a[k=])");
}

TEST(XmlParser, SwallowsTheRestAtAMalformedAttribute) {
    EXPECT_EQ(parsed("<r><a 1=\"1\">x</a><b/></r>"), "r(a)");
    EXPECT_EQ(parsed("<r><a =\"1\">x</a><b/></r>"), "r(a)");
    EXPECT_EQ(parsed("<r><a \"1\">x</a><b/></r>"), "r(a)");
    EXPECT_EQ(parsed("<r><a k>x</a><b/></r>"), "r(a)");
    EXPECT_EQ(parsed("<r><a k/><b/></r>"), "r(a)");
    EXPECT_EQ(parsed("<r><a k=\"1\" l>x</a><b/></r>"), "r(a[k=1])");
}

TEST(XmlParser, SwallowsTheRestAtAValueWithoutItsEnd) {
    EXPECT_EQ(parsed("<r><a k=\"1>x</a><b l='2'/></r>"), "r(a)");
    EXPECT_EQ(parsed("<r><a k='1>x</a><b l=\"2\"/></r>"), "r(a)");
    EXPECT_EQ(parsed("<r><a k=1>x</a><b/></r>"), "r(a)");
    EXPECT_EQ(parsed("<r><a k=\""), "r(a)");
    EXPECT_EQ(parsed("<r><a k="), "r(a)");
    EXPECT_EQ(parsed("<r><a k=1"), "r(a)");
}

TEST(XmlParser, HasNothingBehindATopLevelTagWithAMalformedAttribute) {
    EXPECT_EQ(parsed("<a k><b/></a><c/>"), "a");
}

// Content

TEST(XmlParser, ReadsChildrenInDocumentOrder) {
    EXPECT_EQ(parsed("<r><a><c/><d><e/></d></a><b/><a/></r>"), "r(a(c d(e)) b a)");
}

TEST(XmlParser, JoinsTheTextBeforeBetweenAndBehindChildren) {
    EXPECT_EQ(parsed("<r><a>1<b>x</b>2<b/>3</a></r>"), "r(a\"123\"(b\"x\" b))");
}

TEST(XmlParser, KeepsWhitespaceAsItWasReceived) {
    EXPECT_EQ(parsed("<r><a> \r\n\t <b/>  x\r </a></r>"), "r(a\" \r\n\t   x\r \"(b))");
}

TEST(XmlParser, KeepsEveryByteOfATextEvenZero) {
    ByteString text;
    for (int value = 0; value < 256; ++value) {
        if (value != '<' && value != '&') text += static_cast<char>(value);
    }
    EXPECT_EQ(XmlNode("<r><a>" + text + "</a></r>", true).textAt("a"), text);
}

TEST(XmlParser, DecodesEntitiesInText) {
    EXPECT_EQ(parsed("<r><a>1 &lt; 2 &amp;&#65;&x;</a></r>"), "r(a\"1 < 2 &A&x;\")");
}

TEST(XmlParser, TakesCdataAsItStands) {
    EXPECT_EQ(parsed("<r><a>1<![CDATA[&lt;]]>2</a></r>"), "r(a\"1&lt;2\")");
    EXPECT_EQ(parsed("<r><a><![CDATA[<b>]]]]><![CDATA[></b>&#65;]]></a></r>"), "r(a\"<b>]]></b>&#65;\")");
    EXPECT_EQ(parsed("<r><a><![CDATA[]]></a></r>"), "r(a)");
    EXPECT_EQ(parsed("<r><a><![CDATA[]]]]></a></r>"), "r(a\"]]\")");
}

TEST(XmlParser, LooksForTheEndOfCdataOnlyBehindItsStart) {
    EXPECT_EQ(parsed("<r><a><![CDATA[]>x]]></a></r>"), "r(a\"]>x\")");
}

TEST(XmlParser, DropsCommentsAndInstructionsInContent) {
    EXPECT_EQ(parsed("<r><a>1<!-- <b> & -->2<?p </a> ?>3<!---->4<?\?>5</a></r>"), "r(a\"12345\")");
    EXPECT_EQ(parsed("<r><a>1<!-->2</a>-->3</a></r>"), "r(a\"13\")");
    EXPECT_EQ(parsed("<r><a>1<?>2</a>?>3</a></r>"), "r(a\"13\")");
}

TEST(XmlParser, DecodesEachRunOfTextByItself) {
    EXPECT_EQ(parsed("<r><a>&l<!-- -->t;</a></r>"), "r(a\"&lt;\")");
    EXPECT_EQ(parsed("<r><a>&<![CDATA[lt;]]></a></r>"), "r(a\"&lt;\")");
    EXPECT_EQ(parsed("<r><a>&amp<b/>;&lt;</a></r>"), "r(a\"&amp;<\"(b))");
    EXPECT_EQ(parsed("<r><a>&#x200000;<b/>&lt;</a></r>"), "r(a\"<\"(b))");
}

TEST(XmlParser, ComparesTokensExactly) {
    EXPECT_EQ(parsed("<r><a>x</a><![cdata[y]]><b/></r>"), "r(a\"x\" )");
    EXPECT_EQ(parsed("<r><a>1]]>2-->3?>4/>5></a></r>"), "r(a\"1]]>2-->3?>4/>5>\")");
}

// End tags

TEST(XmlParser, ClosesTheOpenElementAtAnyEndTag) {
    EXPECT_EQ(parsed("<r><a>x</b><c>y</r>z</a><d/>"), "d(a\"x\" c\"y\")");
    EXPECT_EQ(parsed("<r><a>x</><b/></r>"), "r(a\"x\" b)");
    EXPECT_EQ(parsed("<r><a>x</ab><b/></r>"), "r(a\"x\" b)");
    EXPECT_EQ(parsed("<r><ab>x</a><b/></r>"), "r(ab\"x\" b)");
    EXPECT_EQ(parsed("<r><p:a>x</q:a><b/></r>"), "r(p|a\"x\" b)");
}

TEST(XmlParser, BeginsTheNameOfAnEndTagLikeAnyOther) {
    EXPECT_EQ(parsed("<r><a>x</1a><b/></r>"), "r(a\"x\")");
    EXPECT_EQ(parsed("<r><>x</1a><b/></r>"), "r(\"x\")");
    EXPECT_EQ(parsed("<r><>x</a1><b/></r>"), "r(\"x\" b)");
}

TEST(XmlParser, ReadsAnEndTagLikeAStartTag) {
    EXPECT_EQ(parsed("<r><a>x</a \n k='>' l=1 ><b/></r>"), "r(a\"x\" b)");
    EXPECT_EQ(parsed("<r><a>x</a/><b/></r>"), "r(a\"x\" b)");
    EXPECT_EQ(parsed("<r><a>x</a k=\"1\"/><b/></r>"), "r(a\"x\" b)");
}

TEST(XmlParser, KeepsTheTextOfAnElementWhoseEndTagIsCutOffOrMalformed) {
    for (const char* endTag : {"</", "</a", "</a ", "</a k>y</a><b/></r>", "</ a>y</a></r>", "</a\xC3\xA9>y</r>"}) {
        EXPECT_EQ(parsed("<r><a>x"s + endTag), "r(a\"x\")") << endTag;
    }
}

// The end of the document

TEST(XmlParser, LeavesAnElementWithoutItsEndTagWithoutText) {
    EXPECT_EQ(parsed("<r><a>x"), "r(a)");
    EXPECT_EQ(parsed("<r><a>x<"), "r(a())"s);
    EXPECT_EQ(parsed("<r><a>x<![CDATA[y]]>"), "r(a)");
}

TEST(XmlParser, KeepsTheChildrenOfAnElementWithoutItsEndTag) {
    EXPECT_EQ(parsed("<r><a>x<b>y</b>z<c>w"), "r(a(b\"y\" c))");
}

TEST(XmlParser, LeavesEveryOpenElementWithoutTextWhenSomethingSwallowsTheRest) {
    for (const char* swallower :
         {"<!-- </b></a></r>", "<? </b></a></r>", "<![CDATA[ </b></a></r>", "<!x></b></a></r>"}) {
        const XmlNode root("<r><a>x<b>y"s + swallower, true);
        EXPECT_EQ(root.textAt("a"), "") << swallower;
        EXPECT_EQ(root.textAt("a/b"), "") << swallower;
        EXPECT_EQ(root.children.front().children.front().localName, "b") << swallower;
    }
}

}  // namespace
}  // namespace velmora
