#include <atomic>
#include <string>
#include <vector>

#include "tests/provider/config_dialog.h"
#include "tests/support/log_reader.h"

// How the dialog behaves as a window: keys, focus, messages, its owner; and the trace that it leaves.

namespace velmora {
namespace {

TEST_F(ConfigDialogTest, CanBeFilledInByKeysAlone) {
    OpenDialog dialog(providerConfig);
    // Tab selects the text of the field that it reaches, so that typing replaces it.
    for (const char* text : {"40", "s3cret!", "s3cret!", "example.com", "192.0.2.1", "8443"}) {
        const int field = dialog->Focus();
        dialog->Type(text);
        EXPECT_TRUE(WaitUntil([&] { return dialog->Text(field) == text; })) << dialog->Text(field);
        dialog->Press(VK_TAB);
        EXPECT_TRUE(WaitUntil([&] { return dialog->Focus() != field; }));
    }
    dialog->Press(VK_SPACE);
    dialog->Press(VK_TAB);
    dialog->Press(VK_SPACE);
    // Enter means OK, wherever the focus is.
    dialog->Press(VK_RETURN);
    dialog.ExpectReturn();

    StoredTexts stored = StoredValues().value_or(StoredTexts());
    EXPECT_EQ(stored["username"], "40");
    EXPECT_EQ(stored["password"], "s3cret!");
    EXPECT_EQ(stored["domain"], "example.com");
    EXPECT_EQ(stored["address"], "192.0.2.1");
    EXPECT_EQ(stored["port"], "8443");
    EXPECT_EQ(stored["encrypt"], "0");
    EXPECT_EQ(stored["autooriginate"], "1");
}

TEST_F(ConfigDialogTest, MovesTheFocusFromTopToBottom) {
    OpenDialog dialog(providerConfig);
    const std::vector<int> order = {kUsername, kPassword, kPasswordAgain, kDomain, kAddress,
                                    kPort,     kEncrypt,  kAutomatic,     kOk,     kCancel};
    EXPECT_EQ(dialog->Focus(), order[0]);
    for (size_t step = 1; step <= order.size(); ++step) {
        const int next = order[step % order.size()];
        dialog->Press(VK_TAB);
        EXPECT_TRUE(WaitUntil([&] { return dialog->Focus() == next; })) << dialog->Focus() << " instead of " << next;
    }
    dialog->PressWithShift(VK_TAB);
    EXPECT_TRUE(WaitUntil([&] { return dialog->Focus() == kCancel; })) << dialog->Focus();
}

TEST_F(ConfigDialogTest, LetsOnlyDigitsBeTypedIntoThePort) {
    OpenDialog dialog(providerConfig);
    for (int control = kUsername; control < kPort; ++control) dialog->Press(VK_TAB);
    ASSERT_TRUE(WaitUntil([&] { return dialog->Focus() == kPort; }));
    dialog->Type("a1b-2 +3.4e:5Z678x90");
    EXPECT_TRUE(WaitUntil([&] { return dialog->Text(kPort) == "1234567890"; })) << dialog->Text(kPort);
}

TEST_F(ConfigDialogTest, IgnoresACommandThatIsMoreThanTheIdOfAButton) {
    Store(kStored);
    OpenDialog dialog(providerConfig);
    dialog.SetFields(kEntered);
    const WPARAM commands[] = {
        MAKEWPARAM(kOk, 1),          MAKEWPARAM(kCancel, 1),           MAKEWPARAM(kOk, BN_SETFOCUS),
        MAKEWPARAM(kCancel, 0x8000), WPARAM{0x100000000} + kOk,        WPARAM{0x100000000} + kCancel,
        MAKEWPARAM(kEncrypt, 0),     MAKEWPARAM(kUsername, EN_CHANGE), 0,
    };
    for (WPARAM command : commands) {
        SCOPED_TRACE(command);
        SendMessageW(dialog->Handle(), WM_COMMAND, command, 0);
        EXPECT_TRUE(dialog->IsOpen());
        EXPECT_EQ(StoredValues(), kStored);
    }
    // The bare ID is enough, whoever sends it.
    SendMessageW(dialog->Handle(), WM_COMMAND, kOk, 0);
    dialog.ExpectReturn();
    EXPECT_EQ(StoredValues(), kEntered);
}

TEST_F(ConfigDialogTest, AnswersTrueOnlyToItsStartAndToOk) {
    {
        OpenDialog dialog(providerConfig);
        EXPECT_EQ(dialog.Answer(WM_INITDIALOG, 0), TRUE);
        const UINT others[] = {WM_NULL,       WM_CLOSE,      WM_DESTROY, WM_PAINT,
                               WM_ERASEBKGND, WM_SYSCOMMAND, WM_KEYDOWN, WM_USER};
        for (UINT message : others) EXPECT_EQ(dialog.Answer(message, kOk), FALSE) << message;
        EXPECT_EQ(dialog.Answer(WM_COMMAND, kEncrypt), FALSE);
        EXPECT_TRUE(dialog->IsOpen());
        EXPECT_EQ(dialog.Answer(WM_COMMAND, kOk), TRUE);
    }
    OpenDialog dialog(providerConfig);
    EXPECT_EQ(dialog.Answer(WM_COMMAND, kCancel), FALSE);
}

TEST_F(ConfigDialogTest, DisablesItsOwnerUntilItCloses) {
    for (const ShowDialog& show : {providerConfig, lineConfigDialog}) {
        std::atomic<HWND> owner = nullptr;
        std::atomic<bool> enabledAfterwards = false;
        OpenDialog dialog([&](HWND) {
            owner = CreateWindowExA(0, "Static", "", WS_POPUP | WS_VISIBLE, 0, 0, 300, 300, nullptr, nullptr, nullptr,
                                    nullptr);
            const LONG result = show(owner);
            enabledAfterwards = IsWindowEnabled(owner) != 0;
            DestroyWindow(owner);
            return result;
        });
        EXPECT_EQ(GetWindow(dialog->Handle(), GW_OWNER), owner);
        EXPECT_FALSE(IsWindowEnabled(owner));
        dialog->Click(kCancel);
        dialog.ExpectReturn();
        EXPECT_TRUE(enabledAfterwards);
    }
}

void OpenAndCancel(const ShowDialog& show) {
    OpenDialog dialog(show);
    dialog->Click(kCancel);
    dialog.ExpectReturn();
}

TEST_F(ConfigDialogTest, TracesTheProvidersEntryPointAtLevel5AndNotTheLines) {
    LogReader log(PathBesideProgram("config_dialog_test.log"));
    Store(With(kStored, {{"logfile", log.Path()}, {"loglevel", "5"}}));
    // The first call comes before the settings are loaded: the log has no file yet.
    OpenAndCancel(providerConfig);
    OpenAndCancel(lineConfigDialog);
    EXPECT_FALSE(log.Exists());

    OpenAndCancel(providerConfig);
    OpenAndCancel(lineConfigDialog);
    EXPECT_EQ(log.TextsOfLevel(5), LogTexts{"TUISPI_providerConfig"});

    Store({{"loglevel", "4"}});
    OpenAndCancel(lineConfigDialog);
    OpenAndCancel(providerConfig);
    EXPECT_EQ(log.Texts(), LogTexts{"TUISPI_providerConfig"});
}

}  // namespace
}  // namespace velmora
