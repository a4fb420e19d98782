#include <gtest/gtest.h>
#include <windows.h>

#include <string>
#include <vector>

#include "tests/support/dialog_template.h"
#include "tests/support/provider_host.h"
#include "tests/support/resource_file.h"

namespace velmora {

// A failed comparison shows both.
static void PrintTo(const TemplateItem& item, std::ostream* out) {
    *out << item.id << ' ' << item.windowClass << " \"" << item.text << "\" style 0x" << std::hex << item.style
         << std::dec << " at " << item.x << ',' << item.y << ' ' << item.width << 'x' << item.height
         << " extended style " << item.extendedStyle << " help " << item.helpId << " creation bytes "
         << item.creationBytes;
}

namespace {

constexpr WORD kDialogType = 5;
constexpr WORD kDialog = 101;

constexpr uint32_t kShown = WS_CHILD | WS_VISIBLE;
constexpr uint32_t kLabel = kShown | WS_GROUP | SS_LEFT;
constexpr uint32_t kField = kShown | WS_BORDER | WS_TABSTOP | ES_AUTOHSCROLL;
constexpr uint32_t kPasswordField = kField | ES_PASSWORD;
constexpr uint32_t kNumberField = kField | ES_NUMBER;
constexpr uint32_t kCheckBox = kShown | WS_TABSTOP | BS_AUTOCHECKBOX;
constexpr uint32_t kDefaultButton = kShown | WS_TABSTOP | BS_DEFPUSHBUTTON;
constexpr uint32_t kButton = kShown | WS_TABSTOP | BS_PUSHBUTTON;

// In the order in which Tab goes from one to the next.
const std::vector<TemplateItem> kItems = {
    {-1, "static", R"(Username (e.g. "40"):)", kLabel, 7, 9, 120, 14},
    {1001, "edit", "", kField, 131, 7, 115, 14},
    {-1, "static", "Password:", kLabel, 7, 25, 120, 14},
    {1002, "edit", "", kPasswordField, 131, 23, 115, 14},
    {-1, "static", "Password (repeat):", kLabel, 7, 41, 120, 14},
    {1003, "edit", "", kPasswordField, 131, 39, 115, 14},
    {-1, "static", R"(Domain (e.g. "example.com"):)", kLabel, 7, 57, 120, 14},
    {1004, "edit", "", kField, 131, 55, 115, 14},
    {-1, "static", R"(Address (e.g. "pbx.example.com"):)", kLabel, 7, 73, 120, 14},
    {1005, "edit", "", kField, 131, 71, 115, 14},
    {-1, "static", R"(Port (e.g. "443"):)", kLabel, 7, 89, 120, 14},
    {1006, "edit", "", kNumberField, 131, 87, 115, 14},
    {-1, "static", "Use encryption for CSTA:", kLabel, 7, 103, 120, 14},
    {1010, "button", "Encrypt", kCheckBox, 131, 103, 41, 10},
    {-1, "static", "Auto originate outbound calls:", kLabel, 7, 117, 120, 14},
    {1011, "button", "Automatic", kCheckBox, 131, 117, 48, 10},
    {1, "button", "OK", kDefaultButton, 7, 134, 50, 14},
    {2, "button", "Cancel", kButton, 61, 134, 50, 14},
    {1009, "static", "$(Version)", kLabel, 177, 140, 69, 8},
};

DialogTemplate BuiltTemplate() {
    return ParseDialogTemplate(ResourceFile(PathBesideProgram("velmora.tsp")).Bytes(kDialogType, kDialog));
}

TEST(DialogTemplate, IsTheOnlyOneOfTheFile) {
    EXPECT_EQ(ResourceFile(PathBesideProgram("velmora.tsp")).Names(kDialogType), std::vector<WORD>{kDialog});
}

TEST(DialogTemplate, IsACaptionedDialogOf253By155UnitsInTheExtendedFormat) {
    const DialogTemplate dialog = BuiltTemplate();
    EXPECT_EQ(dialog.version, 1);
    EXPECT_EQ(dialog.signature, 0xFFFF);
    EXPECT_EQ(dialog.style, DWORD{WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME | DS_SETFONT | DS_FIXEDSYS});
    EXPECT_EQ(dialog.extendedStyle, 0U);
    EXPECT_EQ(dialog.helpId, 0U);
    EXPECT_EQ(dialog.x, 0);
    EXPECT_EQ(dialog.y, 0);
    EXPECT_EQ(dialog.width, 253);
    EXPECT_EQ(dialog.height, 155);
    EXPECT_EQ(dialog.menu, "");
    EXPECT_EQ(dialog.windowClass, "");
    EXPECT_EQ(dialog.caption, "Velmora TAPI service provider");
}

TEST(DialogTemplate, IsSetInMsShellDlgOf8Points) {
    const DialogTemplate dialog = BuiltTemplate();
    EXPECT_EQ(dialog.fontName, "MS Shell Dlg");
    EXPECT_EQ(dialog.fontPoints, 8);
    EXPECT_EQ(dialog.fontWeight, FW_NORMAL);
    EXPECT_FALSE(dialog.fontItalic);
    EXPECT_EQ(dialog.fontCharset, DEFAULT_CHARSET);
}

TEST(DialogTemplate, HoldsTheControlsInTheOrderOfTheTabKey) {
    const DialogTemplate dialog = BuiltTemplate();
    ASSERT_EQ(dialog.items.size(), kItems.size());
    for (size_t index = 0; index < kItems.size(); ++index) EXPECT_EQ(dialog.items[index], kItems[index]) << index;
}

}  // namespace
}  // namespace velmora
