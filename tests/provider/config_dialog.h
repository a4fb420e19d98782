#pragma once

#include <gtest/gtest.h>
#include <windows.h>

#include <functional>
#include <optional>
#include <string>

#include "tests/support/dialog_window.h"
#include "tests/support/provider_host.h"
#include "tests/support/registry_scope.h"
#include "tests/support/stored_values.h"
#include "tests/support/worker_thread.h"

namespace velmora {

// The dialog's controls, by the IDs of its template.
inline constexpr int kOk = 1;
inline constexpr int kCancel = 2;
inline constexpr int kUsername = 1001;
inline constexpr int kPassword = 1002;
inline constexpr int kPasswordAgain = 1003;
inline constexpr int kDomain = 1004;
inline constexpr int kAddress = 1005;
inline constexpr int kPort = 1006;
inline constexpr int kVersion = 1009;
inline constexpr int kEncrypt = 1010;
inline constexpr int kAutomatic = 1011;

// Settings of which none is a default.
extern const StoredTexts kStored;

// Other ones in every field of the dialog; what the dialog does not show is as above.
extern const StoredTexts kEntered;

StoredTexts With(StoredTexts values, const StoredTexts& changes);
StoredTexts Without(StoredTexts values, const std::string& name);

// Shows the dialog before an owner, which may be null, and returns what the entry point returns.
using ShowDialog = std::function<LONG(HWND owner)>;

// The dialog, shown by a thread of its own as a control panel's thread does it. At the end of its scope it is cancelled
// if the test has left it open.
class OpenDialog {
public:
    // Returns when the dialog is on the screen.
    explicit OpenDialog(ShowDialog show);
    ~OpenDialog();

    OpenDialog(const OpenDialog&) = delete;
    OpenDialog& operator=(const OpenDialog&) = delete;

    const DialogWindow* operator->() const { return &window; }

    // Fills the fields, both passwords alike.
    void SetFields(const StoredTexts& values) const;
    void ExpectFields(const StoredTexts& values) const;

    // What the dialog's own procedure answers to a message, called on this thread.
    LRESULT Answer(UINT message, WPARAM wParam) const;

    // Waits for the entry point to return, which it does with 0.
    void ExpectReturn();

    // Waits for the entry point to be left by a standard error, and gives its type and text, like
    // "invalid_argument: ..."; empty when it returned instead.
    std::string WaitForError();

private:
    std::optional<LONG> result;  // none until the entry point has returned
    std::string error;           // what left it instead
    WorkerThread thread;
    DialogWindow window;
};

// The provider in a process of its own, with a registry key that is missing until a test stores something.
class ConfigDialogTest : public testing::Test {
protected:
    ConfigDialogTest();

    // Skips the test where there is no display.
    void SetUp() override;

    void Store(const StoredTexts& values);

    // What the provider holds as user name, by way of the line's address.
    std::string UsernameInMemory() const;

    UnmanagedWindows unmanagedWindows;
    RegistryScope registry;
    ProviderHost provider;

    // The two entry points that show the dialog.
    ShowDialog providerConfig;
    ShowDialog lineConfigDialog;
};

}  // namespace velmora
