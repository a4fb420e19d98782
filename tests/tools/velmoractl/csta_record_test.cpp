#include "tools/velmoractl/csta_record.h"

#include <gtest/gtest.h>

namespace velmora::ctl {
namespace {

TEST(CstaRecordIn, TellsSentFromReceivedMessages) {
    const auto sent = CstaRecordIn("CSTA Tx: <a/>");
    ASSERT_TRUE(sent);
    EXPECT_TRUE(sent->sent);
    EXPECT_EQ(sent->xml, "<a/>");
    const auto received = CstaRecordIn("CSTA Rx: <b/>");
    ASSERT_TRUE(received);
    EXPECT_FALSE(received->sent);
    EXPECT_EQ(received->xml, "<b/>");
}

TEST(CstaRecordIn, FindsNoMessageInOtherRecords) {
    EXPECT_FALSE(CstaRecordIn("TSPI_lineOpen"));
    EXPECT_FALSE(CstaRecordIn("CSTA: Alert(2, 40)"));
    EXPECT_FALSE(CstaRecordIn(""));
}

TEST(CstaRecordIn, GivesNoPasswordAway) {
    const auto record = CstaRecordIn("CSTA Tx: <a><tns:password>secret</tns:password></a>");
    ASSERT_TRUE(record);
    EXPECT_EQ(record->xml, "<a><tns:password>***</tns:password></a>");
}

TEST(IsWholeMessage, KnowsAClosedRoot) {
    for (const char* xml : {"<a></a>", "<a/>", "<a b=\"1\"/>", "<a b='>'/>", "<?xml version=\"1.0\"?>\r\n<a>x</a>\r\n",
                            "<!-- <b> --><a></a>", "<csta:a><b/></csta:a>", "<a></a >", "<a>\r\n<a></a>\r\n</a>"}) {
        EXPECT_TRUE(IsWholeMessage(xml)) << xml;
    }
}

TEST(IsWholeMessage, KnowsAnOpenRoot) {
    for (const char* xml : {"<a>", "<a", "<?xml version=\"1.0\"?>", "<?xml", "<!-- <a></a>", "<a><b></b>", "<a></b>",
                            "<a b=\"></a>", "<a>x</a", "<ab></a>", "<a>text"}) {
        EXPECT_FALSE(IsWholeMessage(xml)) << xml;
    }
}

TEST(IsWholeMessage, WaitsForNothingWhereThereIsNoElement) {
    EXPECT_TRUE(IsWholeMessage(""));
    EXPECT_TRUE(IsWholeMessage("hello"));
}

}  // namespace
}  // namespace velmora::ctl
