#include <bit>
#include <string>
#include <utility>
#include <vector>

#include "tests/provider/config_dialog.h"
#include "tests/support/import_hook.h"

// What happens on OK while the two passwords differ.

namespace velmora {
namespace {

void CloseMessageBox(const DialogWindow& box) {
    box.Press(VK_RETURN);
    EXPECT_TRUE(WaitUntil([&] { return !box.IsOpen(); }));
}

BOOL CALLBACK CollectControl(HWND control, LPARAM controls) {
    std::bit_cast<std::vector<HWND>*>(controls)->push_back(control);
    return TRUE;
}

std::vector<HWND> ControlsOf(HWND window) {
    std::vector<HWND> controls;
    EnumChildWindows(window, CollectControl, reinterpret_cast<LPARAM>(&controls));
    return controls;
}

// The class of a control and its text, like "Button: OK".
std::string Describe(HWND control) {
    char className[64] = "";
    char text[256] = "";
    GetClassNameA(control, className, sizeof(className));
    GetWindowTextA(control, text, sizeof(text));
    return std::string(className).append(": ").append(text);
}

// A message box keeps the place of the icon even when it shows none.
bool IsEmptyIconPlace(HWND control) {
    return Describe(control) == "Static: " && SendMessageA(control, STM_GETICON, 0, 0) == 0;
}

TEST_F(ConfigDialogTest, StaysOpenWithItsEntriesWhenThePasswordsDiffer) {
    Store(kStored);
    OpenDialog dialog(providerConfig);
    dialog.SetFields(kEntered);
    const std::vector<std::pair<std::string, std::string>> differing = {
        {"abc", "abd"}, {"abc", "abcd"}, {"abcd", "abc"}, {"abc", "ABC"}, {"abc", "abc "}, {"", "abc"}, {"abc", ""}};
    for (const auto& [password, again] : differing) {
        SCOPED_TRACE(testing::Message() << password << " and " << again);
        dialog->SetText(kPassword, password);
        dialog->SetText(kPasswordAgain, again);
        dialog->Click(kOk);
        CloseMessageBox(DialogWindow("Error"));
        EXPECT_TRUE(dialog->IsOpen());
        EXPECT_EQ(dialog->Text(kPassword), password);
        EXPECT_EQ(dialog->Text(kPasswordAgain), again);
        EXPECT_EQ(StoredValues(), kStored);
        EXPECT_EQ(UsernameInMemory(), kStored.at("username"));
    }

    dialog->SetText(kPassword, kEntered.at("password"));
    dialog->SetText(kPasswordAgain, kEntered.at("password"));
    dialog.ExpectFields(kEntered);
    dialog->Click(kOk);
    dialog.ExpectReturn();
    EXPECT_EQ(StoredValues(), kEntered);
}

TEST_F(ConfigDialogTest, ReportsDifferentPasswordsInAPlainMessageBoxWithoutOwner) {
    OpenDialog dialog(providerConfig);
    dialog->SetText(kPassword, "abc");
    dialog->Click(kOk);
    const DialogWindow box("Error");
    std::vector<std::string> shown;
    for (HWND control : ControlsOf(box.Handle())) {
        if (!IsEmptyIconPlace(control)) shown.push_back(Describe(control));
    }
    EXPECT_EQ(shown, (std::vector<std::string>{"Button: OK", "Static: The passwords do not match!"}));
    EXPECT_EQ(GetWindow(box.Handle(), GW_OWNER), nullptr);
    EXPECT_TRUE(IsWindowEnabled(dialog->Handle())) << "only an owner is disabled";
    CloseMessageBox(box);
}

struct MessageBoxCall {
    HWND owner;
    std::string text;
    std::string caption;
    UINT style;
};

std::vector<MessageBoxCall> messageBoxCalls;

int WINAPI RecordMessageBox(HWND owner, LPCSTR text, LPCSTR caption, UINT style) {
    messageBoxCalls.push_back({owner, text, caption, style});
    return IDOK;
}

// Wine brings every message box to the foreground, so the wish can only be seen in the call.
TEST_F(ConfigDialogTest, AsksForTheForegroundAndNothingElseOfItsMessageBox) {
    HookImport(provider.module, "user32.dll", "MessageBoxA", RecordMessageBox);
    OpenDialog dialog(providerConfig);
    dialog->SetText(kPassword, "abc");
    EXPECT_EQ(dialog.Answer(WM_COMMAND, kOk), FALSE);
    ASSERT_EQ(messageBoxCalls.size(), 1U);
    EXPECT_EQ(messageBoxCalls[0].owner, nullptr);
    EXPECT_EQ(messageBoxCalls[0].text, "The passwords do not match!");
    EXPECT_EQ(messageBoxCalls[0].caption, "Error");
    EXPECT_EQ(messageBoxCalls[0].style, UINT{MB_SETFOREGROUND});
    EXPECT_TRUE(dialog->IsOpen());
}

}  // namespace
}  // namespace velmora
