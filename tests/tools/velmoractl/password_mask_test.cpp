#include "tools/velmoractl/password_mask.h"

#include <gtest/gtest.h>

namespace velmora::ctl {
namespace {

TEST(MaskPassword, HidesThePasswordOfALogin) {
    EXPECT_EQ(MaskPassword("<l><tns:userName>40</tns:userName><tns:password>secret</tns:password></l>"),
              "<l><tns:userName>40</tns:userName><tns:password>***</tns:password></l>");
}

TEST(MaskPassword, HidesItWhateverThePrefixAndTheAttributes) {
    EXPECT_EQ(MaskPassword("<password>x</password>"), "<password>***</password>");
    EXPECT_EQ(MaskPassword("<p:password a=\"1\">x</p:password >"), "<p:password a=\"1\">***</p:password >");
}

TEST(MaskPassword, HidesAPasswordThatLooksLikeXml) {
    EXPECT_EQ(MaskPassword("<a><tns:password>x</tns:password>y</tns:password></a>"),
              "<a><tns:password>***</tns:password></a>");
    EXPECT_EQ(MaskPassword("<a><tns:password><b>y</b></tns:password></a>"), "<a><tns:password>***</tns:password></a>");
    EXPECT_EQ(MaskPassword("<a><tns:password></tns:password></tns:password></a>"),
              "<a><tns:password>***</tns:password></a>");
}

TEST(MaskPassword, HidesEverythingBehindATagThatIsNotClosed) {
    EXPECT_EQ(MaskPassword("<a><tns:password>secret"), "<a><tns:password>***");
    EXPECT_EQ(MaskPassword("<a><tns:password"), "<a><tns:password***");
}

TEST(MaskPassword, HidesAnEmptyPasswordLikeAnyOther) {
    EXPECT_EQ(MaskPassword("<password></password>"), "<password>***</password>");
}

TEST(MaskPassword, LeavesAllElseAsItIs) {
    for (const char* text : {"", "password", "<a>password</a>", "<passwords>x</passwords>", "<a password=\"x\"/>",
                             "</password>", "<userName>40</userName>"}) {
        EXPECT_EQ(MaskPassword(text), text);
    }
}

TEST(MaskPassword, NeverLetsThePasswordThroughWhereverTheTextIsCut) {
    const ByteString text = "<a><tns:password>QQQQ</tns:password></a>";
    for (size_t length = 0; length <= text.size(); ++length) {
        EXPECT_EQ(MaskPassword(text.substr(0, length)).find('Q'), ByteString::npos) << length;
    }
}

}  // namespace
}  // namespace velmora::ctl
