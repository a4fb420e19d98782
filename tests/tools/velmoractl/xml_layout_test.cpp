#include "tools/velmoractl/xml_layout.h"

#include <gtest/gtest.h>

namespace velmora::ctl {
namespace {

using Lines = std::vector<ByteString>;

TEST(LayOutXml, IndentsChildrenAndKeepsLeavesOnOneLine) {
    EXPECT_EQ(LayOutXml("<?xml version=\"1.0\"?>\r\n<a>\r\n<b><c>1</c></b><d/></a>\r\n"),
              (Lines{"<?xml version=\"1.0\"?>", "<a>", "  <b>", "    <c>1</c>", "  </b>", "  <d/>", "</a>"}));
}

TEST(LayOutXml, KeepsAnEmptyElementOnOneLine) {
    EXPECT_EQ(LayOutXml("<a></a>"), (Lines{"<a></a>"}));
}

TEST(LayOutXml, GivesTextBetweenElementsALineOfItsOwn) {
    EXPECT_EQ(LayOutXml("<a>x<b/>y</a>"), (Lines{"<a>x", "  <b/>", "  y", "</a>"}));
}

TEST(LayOutXml, LeavesCommentsAndCdataWhole) {
    EXPECT_EQ(LayOutXml("<!-- <x> --><a><![CDATA[<y>]]></a>"),
              (Lines{"<!-- <x> -->", "<a>", "  <![CDATA[<y>]]>", "</a>"}));
}

TEST(LayOutXml, ShowsAllOfATextThatIsNotWellFormed) {
    EXPECT_EQ(LayOutXml("hello"), (Lines{"hello"}));
    EXPECT_EQ(LayOutXml("</a></a><b"), (Lines{"</a>", "</a>", "<b"}));
    EXPECT_TRUE(LayOutXml("").empty());
}

TEST(LayOutXml, StopsIndentingInTheDepth) {
    ByteString xml;
    for (int level = 0; level < 1000; ++level) xml += "<a>";
    EXPECT_EQ(LayOutXml(xml).back(), ByteString(40, ' ') + "<a>");
}

}  // namespace
}  // namespace velmora::ctl
