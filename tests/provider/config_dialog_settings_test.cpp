#include <functional>
#include <optional>
#include <regex>
#include <string>
#include <vector>

#include "tests/provider/config_dialog.h"
#include "tests/support/import_hook.h"
#include "tests/support/log_reader.h"
#include "tests/support/read_only_key.h"

// What the dialog shows, and what is stored when it closes.

namespace velmora {
namespace {

// The form of a GUID that the provider makes itself. A digit that comes from the top of one of the C runtime's 15-bit
// random numbers never exceeds 7.
void ExpectNewGuid(const std::string& guid) {
    const std::regex form(
        "[0-7][0-9a-f]{3}[0-7][0-9a-f]{3}-[0-7][0-9a-f]{3}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-([0-7][0-9a-f]{3}){3}");
    EXPECT_TRUE(std::regex_match(guid, form)) << guid;
}

TEST_F(ConfigDialogTest, ShowsTheDefaultsWithoutARegistryKey) {
    for (const ShowDialog& show : {providerConfig, lineConfigDialog}) {
        OpenDialog dialog(show);
        for (int control : {kUsername, kPassword, kPasswordAgain, kDomain, kAddress}) {
            EXPECT_EQ(dialog->Text(control), "") << control;
        }
        EXPECT_EQ(dialog->Text(kPort), "443");
        EXPECT_TRUE(dialog->IsChecked(kEncrypt));
        EXPECT_FALSE(dialog->IsChecked(kAutomatic));
        EXPECT_EQ(dialog->Text(kVersion), "2.0.3");

        dialog->Click(kCancel);
        dialog.ExpectReturn();
        EXPECT_EQ(StoredValues(), std::nullopt);
    }
}

TEST_F(ConfigDialogTest, ShowsTheStoredValues) {
    Store(kStored);
    for (const ShowDialog& show : {providerConfig, lineConfigDialog}) {
        OpenDialog dialog(show);
        dialog.ExpectFields(kStored);
        EXPECT_EQ(dialog->Text(kVersion), "2.0.3");
    }
    EXPECT_EQ(UsernameInMemory(), "40");
}

TEST_F(ConfigDialogTest, ShowsWhatIsStoredNowEachTimeItOpens) {
    Store(kStored);
    {
        OpenDialog dialog(providerConfig);
        dialog.SetFields(With(kStored, {{"username", "42"}}));
    }
    Store(kEntered);
    OpenDialog dialog(providerConfig);
    dialog.ExpectFields(kEntered);
}

TEST_F(ConfigDialogTest, SavesTheDefaultsAndANewGuidOnOk) {
    OpenDialog dialog(providerConfig);
    dialog->Click(kOk);
    dialog.ExpectReturn();
    const std::optional<StoredTexts> stored = StoredValues();
    ASSERT_TRUE(stored.has_value() && stored->contains("guid"));
    ExpectNewGuid(stored->at("guid"));
    EXPECT_EQ(*stored, (StoredTexts{{"username", ""},
                                    {"password", ""},
                                    {"domain", ""},
                                    {"address", ""},
                                    {"port", "443"},
                                    {"encrypt", "1"},
                                    {"autooriginate", "0"},
                                    {"loglevel", "0"},
                                    {"loglength", "1000"},
                                    {"logfile", ""},
                                    {"guid", stored->at("guid")}}));
}

TEST_F(ConfigDialogTest, SavesTheEntriesOnOk) {
    Store(kStored);
    OpenDialog dialog(lineConfigDialog);
    dialog.SetFields(kEntered);
    dialog->Click(kOk);
    dialog.ExpectReturn();
    EXPECT_EQ(StoredValues(), kEntered);
    EXPECT_EQ(UsernameInMemory(), kEntered.at("username"));
}

TEST_F(ConfigDialogTest, SavesWhatItDoesNotShowAsItWasLoaded) {
    Store(kStored);
    OpenDialog dialog(providerConfig);
    Store({{"loglevel", "9"}, {"loglength", "5"}, {"logfile", "other.log"}, {"guid", "other"}});
    dialog->Click(kOk);
    dialog.ExpectReturn();
    EXPECT_EQ(StoredValues(), kStored);
}

TEST_F(ConfigDialogTest, SavesNumbersAndFlagsInTheirPlainForm) {
    Store(With(kStored, {{"port", " +08443xyz"}, {"encrypt", "2"}, {"autooriginate", "-1"}, {"loglength", "0077 "}}));
    OpenDialog dialog(providerConfig);
    EXPECT_EQ(dialog->Text(kPort), "8443");
    EXPECT_TRUE(dialog->IsChecked(kEncrypt));
    EXPECT_FALSE(dialog->IsChecked(kAutomatic));
    // Pasted: the field keeps only typed letters out.
    dialog->SetText(kPort, " +0443xyz");
    dialog->Click(kOk);
    dialog.ExpectReturn();
    EXPECT_EQ(StoredValues(), With(kStored, {{"port", "443"}, {"encrypt", "1"}, {"autooriginate", "0"}}));
}

TEST_F(ConfigDialogTest, CutsEachTextAt255Bytes) {
    const std::string head(255, 'p');
    OpenDialog dialog(providerConfig);
    dialog->SetText(kUsername, std::string(300, 'u'));
    // What differs behind the cut is not compared either.
    dialog->SetText(kPassword, head + "one");
    dialog->SetText(kPasswordAgain, head + "another");
    dialog->SetText(kDomain, std::string(256, 'd'));
    dialog->SetText(kAddress, std::string(255, 'a'));
    // The number begins within the cut and ends behind it.
    dialog->SetText(kPort, std::string(252, '0') + "12345");
    dialog->Click(kOk);
    dialog.ExpectReturn();

    StoredTexts stored = StoredValues().value_or(StoredTexts());
    EXPECT_EQ(stored["username"], std::string(255, 'u'));
    EXPECT_EQ(stored["password"], head);
    EXPECT_EQ(stored["domain"], std::string(255, 'd'));
    EXPECT_EQ(stored["address"], std::string(255, 'a'));
    EXPECT_EQ(stored["port"], "123");
}

struct WayOut {
    const char* name;
    std::function<void(const OpenDialog&)> take;
};

const WayOut kWaysToCancel[] = {
    {"the button", [](const OpenDialog& dialog) { dialog->Click(kCancel); }},
    {"the Escape key", [](const OpenDialog& dialog) { dialog->Press(VK_ESCAPE); }},
    {"the close box", [](const OpenDialog& dialog) { dialog->Post(WM_SYSCOMMAND, SC_CLOSE); }},
};

TEST_F(ConfigDialogTest, WritesNothingWhenItIsCancelled) {
    // Not even the GUID that it had to make.
    const StoredTexts stored = Without(kStored, "guid");
    Store(stored);
    for (const WayOut& wayOut : kWaysToCancel) {
        SCOPED_TRACE(wayOut.name);
        OpenDialog dialog(providerConfig);
        dialog.SetFields(kEntered);
        dialog->SetText(kPasswordAgain, "different");
        wayOut.take(dialog);
        dialog.ExpectReturn();
        EXPECT_EQ(StoredValues(), stored);
        EXPECT_EQ(UsernameInMemory(), kStored.at("username"));
    }
}

LSTATUS WINAPI RefuseKey(HKEY, LPCSTR, DWORD, LPSTR, DWORD, REGSAM, SECURITY_ATTRIBUTES*, HKEY*, DWORD*) {
    return ERROR_ACCESS_DENIED;
}

LSTATUS WINAPI RefuseValue(HKEY, LPCSTR, DWORD, DWORD, const BYTE*, DWORD) {
    return ERROR_ACCESS_DENIED;
}

// As for most users, who may not write where the settings are stored.
TEST_F(ConfigDialogTest, ClosesOnOkEvenWhenNothingCanBeSavedAndOnlyLogsIt) {
    LogReader log(PathBesideProgram("config_dialog_settings_test.log"));
    const StoredTexts stored = With(kStored, {{"logfile", log.Path()}, {"loglevel", "7"}});
    Store(stored);
    const auto pressOk = [this] {
        OpenDialog dialog(lineConfigDialog);
        dialog.SetFields(kEntered);
        dialog->Click(kOk);
        dialog.ExpectReturn();
        EXPECT_EQ(UsernameInMemory(), kEntered.at("username"));
    };

    const std::string message = R"(WriteSetting: Could not access registry: SOFTWARE\velmora\tapi)";
    LogTexts logged;
    HookImport(provider.module, "advapi32.dll", "RegSetValueExA", RefuseValue);
    pressOk();
    for (const char* name : {"username", "password", "domain", "address", "port", "encrypt", "autooriginate",
                             "loglevel", "loglength", "logfile", "guid"}) {
        logged.push_back(message + '\\' + name);
    }
    EXPECT_EQ(log.TextsOfLevel(7), logged);

    HookImport(provider.module, "advapi32.dll", "RegCreateKeyExA", RefuseKey);
    pressOk();
    logged.insert(logged.end(), 11, message);
    EXPECT_EQ(log.TextsOfLevel(7), logged);
    EXPECT_EQ(StoredValues(), stored);
}

// As for most users where an administrator has closed the key.
TEST_F(ConfigDialogTest, ShowsTheDefaultsAndClosesOnOkWhereNothingCanBeRead) {
    Store(kStored);
    {
        const ClosedKey closed;
        OpenDialog dialog(providerConfig);
        EXPECT_EQ(dialog->Text(kUsername), "");
        EXPECT_EQ(dialog->Text(kPort), "443");
        dialog.SetFields(kEntered);
        dialog->Click(kOk);
        dialog.ExpectReturn();
        EXPECT_EQ(UsernameInMemory(), kEntered.at("username"));
    }
    EXPECT_EQ(StoredValues(), kStored);
}

// The error crosses the window system's frames on its way to the host. Wine lets it pass, so here the caller of the
// entry point catches it; Windows has rules of its own for an error that leaves a window procedure. The provider itself
// does not catch it: where nobody does, it ends the process.
TEST_F(ConfigDialogTest, RaisesAnErrorForAPortThatIsNoNumberBeforeAnythingIsSaved) {
    const StoredTexts stored = Without(kStored, "guid");
    Store(stored);
    const StoredTexts errorOfPort = {
        {"", "invalid_argument: invalid stoi argument"},
        {"xyz", "invalid_argument: invalid stoi argument"},
        {"2147483648", "out_of_range: stoi argument out of range"},
        {"99999999999", "out_of_range: stoi argument out of range"},
    };
    for (const auto& [port, error] : errorOfPort) {
        SCOPED_TRACE(port);
        OpenDialog dialog(providerConfig);
        dialog.ExpectFields(kStored);
        EXPECT_EQ(UsernameInMemory(), kStored.at("username"));
        dialog.SetFields(With(kEntered, {{"port", port}}));
        dialog->Click(kOk);
        EXPECT_EQ(dialog.WaitForError(), error);
        EXPECT_EQ(StoredValues(), stored);
        // The texts have been taken over by then.
        EXPECT_EQ(UsernameInMemory(), kEntered.at("username"));
    }
}

struct FieldRead {
    int control;
    int bufferBytes;

    bool operator==(const FieldRead&) const = default;
};

std::vector<FieldRead> fieldsRead;

UINT WINAPI RecordFieldRead(HWND dialog, int control, LPSTR text, int bufferBytes) {
    fieldsRead.push_back({control, bufferBytes});
    return GetDlgItemTextA(dialog, control, text, bufferBytes);
}

// Of the texts in memory a host can see the user name alone; that the others have their turn before the port shows in
// the order in which the fields are read.
TEST_F(ConfigDialogTest, TakesEveryTextOverBeforeThePort) {
    HookImport(provider.module, "user32.dll", "GetDlgItemTextA", RecordFieldRead);
    OpenDialog dialog(providerConfig);
    dialog->SetText(kPort, "");
    dialog->Click(kOk);
    EXPECT_EQ(dialog.WaitForError(), "invalid_argument: invalid stoi argument");
    EXPECT_EQ(
        fieldsRead,
        (std::vector<FieldRead>{
            {kPassword, 256}, {kPasswordAgain, 256}, {kUsername, 256}, {kDomain, 256}, {kAddress, 256}, {kPort, 256}}));
}

}  // namespace
}  // namespace velmora
