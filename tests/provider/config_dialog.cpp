#include "tests/provider/config_dialog.h"

#include <bit>
#include <cstddef>
#include <stdexcept>
#include <utility>
#include <vector>

namespace velmora {

const StoredTexts kStored = {
    {"username", "40"},
    {"password", "secret"},
    {"domain", "example.com"},
    {"address", "pbx.example.com"},
    {"port", "8443"},
    {"encrypt", "0"},
    {"autooriginate", "1"},
    {"loglevel", "-1"},
    {"loglength", "77"},
    {"logfile", "velmora_test_never_written.log"},
    {"guid", "01234567-89ab-4cde-8f01-23456789abcd"},
};

const StoredTexts kEntered = With(kStored, {{"username", "41"},
                                            {"password", "changed"},
                                            {"domain", "example.org"},
                                            {"address", "192.0.2.1"},
                                            {"port", "1"},
                                            {"encrypt", "1"},
                                            {"autooriginate", "0"}});

StoredTexts With(StoredTexts values, const StoredTexts& changes) {
    for (const auto& [name, text] : changes) values[name] = text;
    return values;
}

StoredTexts Without(StoredTexts values, const std::string& name) {
    values.erase(name);
    return values;
}

OpenDialog::OpenDialog(ShowDialog show)
    : thread([this, show = std::move(show)] {
          try {
              result = show(nullptr);
          } catch (const std::invalid_argument& failure) {
              error = std::string("invalid_argument: ") + failure.what();
          } catch (const std::out_of_range& failure) {
              error = std::string("out_of_range: ") + failure.what();
          }
      }),
      window("Velmora TAPI service provider") {}

OpenDialog::~OpenDialog() {
    // A message box is cancelled first, the dialog that waits for it then.
    WaitUntil([&] {
        if (thread.EndsWithin(0)) return true;
        CancelAllDialogs();
        return false;
    });
}

void OpenDialog::SetFields(const StoredTexts& values) const {
    window.SetText(kUsername, values.at("username"));
    window.SetText(kPassword, values.at("password"));
    window.SetText(kPasswordAgain, values.at("password"));
    window.SetText(kDomain, values.at("domain"));
    window.SetText(kAddress, values.at("address"));
    window.SetText(kPort, values.at("port"));
    window.SetChecked(kEncrypt, values.at("encrypt") == "1");
    window.SetChecked(kAutomatic, values.at("autooriginate") == "1");
}

void OpenDialog::ExpectFields(const StoredTexts& values) const {
    EXPECT_EQ(window.Text(kUsername), values.at("username"));
    EXPECT_EQ(window.Text(kPassword), values.at("password"));
    EXPECT_EQ(window.Text(kPasswordAgain), values.at("password"));
    EXPECT_EQ(window.Text(kDomain), values.at("domain"));
    EXPECT_EQ(window.Text(kAddress), values.at("address"));
    EXPECT_EQ(window.Text(kPort), values.at("port"));
    EXPECT_EQ(window.IsChecked(kEncrypt), values.at("encrypt") == "1");
    EXPECT_EQ(window.IsChecked(kAutomatic), values.at("autooriginate") == "1");
}

LRESULT OpenDialog::Answer(UINT message, WPARAM wParam) const {
    const auto procedure = std::bit_cast<WNDPROC>(GetWindowLongPtrW(window.Handle(), DWLP_DLGPROC));
    return CallWindowProcW(procedure, window.Handle(), message, wParam, 0);
}

void OpenDialog::ExpectReturn() {
    EXPECT_TRUE(thread.EndsWithin(kPatienceMs)) << "the dialog does not close";
    EXPECT_EQ(result, 0);
    EXPECT_EQ(error, "");
}

std::string OpenDialog::WaitForError() {
    EXPECT_TRUE(thread.EndsWithin(kPatienceMs)) << "the dialog does not close";
    return error;
}

ConfigDialogTest::ConfigDialogTest() {
    const auto forProvider = std::bit_cast<decltype(&TUISPI_providerConfig)>(provider.Export("TUISPI_providerConfig"));
    const auto forLine = std::bit_cast<decltype(&TUISPI_lineConfigDialog)>(provider.Export("TUISPI_lineConfigDialog"));
    providerConfig = [forProvider](HWND owner) { return forProvider(nullptr, owner, 0x12345); };
    lineConfigDialog = [forLine](HWND owner) { return forLine(nullptr, 5, owner, L"tapi/line"); };
}

void ConfigDialogTest::SetUp() {
    if (!HasDisplay()) GTEST_SKIP() << "no display to show a dialog on: run the tests by scripts/with-display";
    const HWND window = CreateWindowExA(0, "Static", "", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    ASSERT_NE(window, nullptr) << "no window can be made: the display cannot be reached, or Wine has started its "
                                  "desktop without one and has to be ended first (wineserver -k)";
    DestroyWindow(window);
}

void ConfigDialogTest::Store(const StoredTexts& values) {
    for (const auto& [name, text] : values) registry.Set(name, text);
}

std::string ConfigDialogTest::UsernameInMemory() const {
    alignas(LINEADDRESSCAPS) std::byte buffer[4096] = {};
    auto* caps = reinterpret_cast<LINEADDRESSCAPS*>(buffer);
    caps->dwTotalSize = sizeof(buffer);
    EXPECT_EQ(provider.lineGetAddressCaps(0, 0, kTspiVersion, 0, caps), 0);
    if (caps->dwAddressSize == 0) return {};
    std::string username;
    for (const auto* unit = reinterpret_cast<const wchar_t*>(buffer + caps->dwAddressOffset); *unit != 0; ++unit) {
        username += static_cast<char>(*unit);
    }
    return username;
}

}  // namespace velmora
