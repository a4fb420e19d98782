#include <windows.h>

#include <tspi.h>

#include "config/settings.h"
#include "config/settings_store.h"
#include "config/text_numbers.h"
#include "config/trace_log.h"
#include "provider/provider.h"
#include "resources/dialog_ids.h"
#include "resources/version.h"

// The dialog in which a user edits the connection's settings. TAPI opens it in the process of the program that asks for
// it; a provider that runs elsewhere sees what was saved when it starts again.

using namespace velmora;

namespace {

// A control's text, cut at 255 bytes.
ByteString ReadField(HWND dialog, int control) {
    char text[256];
    const UINT length = GetDlgItemTextA(dialog, control, text, sizeof(text));
    return ByteString(text, length);
}

void ShowField(HWND dialog, int control, const ByteString& text) {
    SetDlgItemTextA(dialog, control, text.c_str());
}

bool IsChecked(HWND dialog, int control) {
    return IsDlgButtonChecked(dialog, control) == BST_CHECKED;
}

void Check(HWND dialog, int control, bool checked) {
    if (checked) CheckDlgButton(dialog, control, BST_CHECKED);
}

INT_PTR ShowSettings(HWND dialog) {
    LoadSettings();
    ShowField(dialog, VELMORA_USERNAME, settings.username);
    ShowField(dialog, VELMORA_PASSWORD, settings.password);
    ShowField(dialog, VELMORA_PASSWORD_AGAIN, settings.password);
    ShowField(dialog, VELMORA_DOMAIN, settings.domain);
    ShowField(dialog, VELMORA_ADDRESS, settings.address);
    ShowField(dialog, VELMORA_PORT, DecimalText(settings.port));
    ShowField(dialog, VELMORA_VERSION_LABEL, VELMORA_VERSION_TEXT);
    Check(dialog, VELMORA_ENCRYPT, settings.encrypt);
    Check(dialog, VELMORA_AUTOORIGINATE, settings.autooriginate);
    return TRUE;
}

// An empty port field is no number: ParseInt throws std::invalid_argument out of the dialog, after the texts before it
// have been stored and before anything is saved. Keep.
INT_PTR SaveAndClose(HWND dialog) {
    const ByteString password = ReadField(dialog, VELMORA_PASSWORD);
    if (password != ReadField(dialog, VELMORA_PASSWORD_AGAIN)) {
        MessageBoxA(nullptr, "The passwords do not match!", "Error", MB_SETFOREGROUND);
        return FALSE;
    }
    settings.password = password;
    settings.username = ReadField(dialog, VELMORA_USERNAME);
    settings.domain = ReadField(dialog, VELMORA_DOMAIN);
    settings.address = ReadField(dialog, VELMORA_ADDRESS);
    settings.port = ParseInt(ReadField(dialog, VELMORA_PORT));
    settings.encrypt = IsChecked(dialog, VELMORA_ENCRYPT);
    settings.autooriginate = IsChecked(dialog, VELMORA_AUTOORIGINATE);
    SaveSettings();
    EndDialog(dialog, IDOK);
    return TRUE;
}

INT_PTR Close(HWND dialog) {
    EndDialog(dialog, IDCANCEL);
    return FALSE;  // although the message is handled. Keep
}

INT_PTR CALLBACK DialogProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM /*lParam*/) {
    if (message == WM_INITDIALOG) return ShowSettings(dialog);
    // The whole of wParam counts: a notification code above the control's ID makes it another command. Keep.
    if (message == WM_COMMAND && wParam == IDOK) return SaveAndClose(dialog);
    if (message == WM_COMMAND && wParam == IDCANCEL) return Close(dialog);
    return FALSE;
}

LONG ShowDialog(HWND owner) {
    if (providerState.instance == nullptr) return 0;
    DialogBoxParamW(providerState.instance, MAKEINTRESOURCEW(VELMORA_DIALOG), owner, DialogProcedure, 0);
    return 0;
}

}  // namespace

extern "C" {

LONG TSPIAPI TUISPI_lineConfigDialog(TUISPIDLLCALLBACK /*callback*/, DWORD /*deviceId*/, HWND owner,
                                     LPCWSTR /*deviceClass*/) {
    return ShowDialog(owner);
}

LONG TSPIAPI TUISPI_providerConfig(TUISPIDLLCALLBACK /*callback*/, HWND owner, DWORD /*permanentProviderId*/) {
    WriteLog(5, "TUISPI_providerConfig");
    return ShowDialog(owner);
}

}  // extern "C"
