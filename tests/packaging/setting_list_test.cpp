#include "packaging/setup_actions/setting_list.h"

#include <gtest/gtest.h>

#include <vector>

namespace velmora::setup {
namespace {

TEST(EncodeChanges, WritesOneLineAChangeWithTheValueInHexadecimal) {
    EXPECT_EQ(EncodeChanges({{"port", "443"}, {"domain", {}}, {"password", ""}}), "port=343433\ndomain\npassword=\n");
    EXPECT_EQ(EncodeChanges({}), "");
}

TEST(DecodeChanges, TellsAnEmptyValueFromNone) {
    const std::vector<SettingChange> expected = {{"port", "443"}, {"domain", {}}, {"password", ""}};
    EXPECT_EQ(DecodeChanges("port=343433\ndomain\npassword=\n"), expected);
    EXPECT_EQ(DecodeChanges(""), std::vector<SettingChange>());
}

TEST(DecodeChanges, GivesBackEveryByte) {
    ByteString bytes;
    for (int byte = 0; byte < 256; ++byte) bytes += static_cast<char>(byte);
    const std::vector<SettingChange> changes = {{"password", bytes}};
    EXPECT_EQ(DecodeChanges(EncodeChanges(changes)), changes);
}

TEST(DecodeChanges, TakesALastLineWithoutItsEnd) {
    EXPECT_EQ(DecodeChanges("port=343433"), (std::vector<SettingChange>{{"port", "443"}}));
}

TEST(DecodeChanges, LeavesOutALineThatIsNotHexadecimal) {
    const std::vector<SettingChange> expected = {{"domain", {}}};
    EXPECT_EQ(DecodeChanges("port=44x3\nport=443\nport=-1\nport= 1\ndomain\n\n"), expected);
}

}  // namespace
}  // namespace velmora::setup
