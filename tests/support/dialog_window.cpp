#include "tests/support/dialog_window.h"

#include <gtest/gtest.h>

#include <bit>
#include <vector>

#include "tests/support/worker_thread.h"

namespace velmora {
namespace {

constexpr int kTextBytes = 1024;

BOOL CALLBACK CollectDialog(HWND window, LPARAM dialogs) {
    char className[16] = "";
    GetClassNameA(window, className, sizeof(className));
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    if (process == GetCurrentProcessId() && className == std::string("#32770") && IsWindowVisible(window)) {
        std::bit_cast<std::vector<HWND>*>(dialogs)->push_back(window);
    }
    return TRUE;
}

bool IsWine() {
    return GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr;
}

// Where Wine looks for settings of this program alone, in HKEY_CURRENT_USER.
std::string WineSettingsPath() {
    char program[MAX_PATH];
    const std::string path(program, GetModuleFileNameA(nullptr, program, MAX_PATH));
    return R"(Software\Wine\AppDefaults\)" + path.substr(path.find_last_of('\\') + 1);
}

// The dialogs of this program that are on the screen.
std::vector<HWND> VisibleDialogs() {
    std::vector<HWND> dialogs;
    EnumWindows(CollectDialog, reinterpret_cast<LPARAM>(&dialogs));
    return dialogs;
}

// Null when there is none.
HWND FindVisibleDialog(const std::string& caption) {
    for (HWND dialog : VisibleDialogs()) {
        char text[kTextBytes] = "";
        GetWindowTextA(dialog, text, kTextBytes);
        if (text == caption) return dialog;
    }
    return nullptr;
}

// The control that has the focus in the thread of a window; null when there is none.
HWND FocusOfThread(HWND window) {
    GUITHREADINFO info = {};
    info.cbSize = sizeof(info);
    GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &info);
    return info.hwndFocus;
}

INPUT KeyInput(WORD key, DWORD flags) {
    INPUT input = {};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = key;
    input.ki.dwFlags = flags;
    return input;
}

INPUT CharacterInput(char character, DWORD flags) {
    INPUT input = {};
    input.type = INPUT_KEYBOARD;
    input.ki.wScan = static_cast<WORD>(character);
    input.ki.dwFlags = KEYEVENTF_UNICODE | flags;
    return input;
}

void Send(std::vector<INPUT> inputs) {
    const UINT count = static_cast<UINT>(inputs.size());
    EXPECT_EQ(SendInput(count, inputs.data(), sizeof(INPUT)), count);
}

}  // namespace

bool HasDisplay() {
    // Not tried by making a window: a Wine without display would then start a desktop without one, which lives on for
    // some seconds and spoils the next program.
    return !IsWine() || GetEnvironmentVariableA("DISPLAY", nullptr, 0) > 1;
}

UnmanagedWindows::UnmanagedWindows() {
    if (!IsWine()) return;
    const std::string path = WineSettingsPath() + R"(\X11 Driver)";
    EXPECT_EQ(RegSetKeyValueA(HKEY_CURRENT_USER, path.c_str(), "Managed", REG_SZ, "N", 2), ERROR_SUCCESS);
}

UnmanagedWindows::~UnmanagedWindows() {
    if (IsWine()) RegDeleteTreeA(HKEY_CURRENT_USER, WineSettingsPath().c_str());
}

DialogWindow::DialogWindow(const std::string& caption) : window(nullptr) {
    EXPECT_TRUE(WaitUntil([&] {
        window = FindVisibleDialog(caption);
        return window != nullptr && FocusOfThread(window) != nullptr;
    })) << "no dialog with the caption "
        << caption;
}

bool DialogWindow::IsOpen() const {
    return IsWindow(window) && IsWindowVisible(window);
}

void DialogWindow::Activate() const {
    SetForegroundWindow(window);
    EXPECT_TRUE(WaitUntil([&] { return GetForegroundWindow() == window && FocusOfThread(window) != nullptr; }));
}

int DialogWindow::Focus() const {
    const HWND focus = FocusOfThread(window);
    return focus != nullptr && GetParent(focus) == window ? GetDlgCtrlID(focus) : 0;
}

std::string DialogWindow::Text(int control) const {
    char text[kTextBytes] = "";
    const UINT length = GetDlgItemTextA(window, control, text, kTextBytes);
    return {text, length};
}

bool DialogWindow::IsChecked(int control) const {
    return IsDlgButtonChecked(window, control) == BST_CHECKED;
}

void DialogWindow::SetText(int control, const std::string& text) const {
    EXPECT_TRUE(SetDlgItemTextA(window, control, text.c_str()));
    EXPECT_EQ(Text(control), text);
}

void DialogWindow::SetChecked(int control, bool checked) const {
    if (IsChecked(control) != checked) Click(control);
    EXPECT_TRUE(WaitUntil([&] { return IsChecked(control) == checked; }));
}

void DialogWindow::Click(int control) const {
    EXPECT_TRUE(PostMessageA(GetDlgItem(window, control), BM_CLICK, 0, 0));
}

void DialogWindow::Post(UINT message, WPARAM wParam) const {
    EXPECT_TRUE(PostMessageA(window, message, wParam, 0));
}

void DialogWindow::Press(WORD key) const {
    Activate();
    Send({KeyInput(key, 0), KeyInput(key, KEYEVENTF_KEYUP)});
}

void DialogWindow::PressWithShift(WORD key) const {
    Activate();
    Send(
        {KeyInput(VK_SHIFT, 0), KeyInput(key, 0), KeyInput(key, KEYEVENTF_KEYUP), KeyInput(VK_SHIFT, KEYEVENTF_KEYUP)});
}

void DialogWindow::Type(const std::string& text) const {
    Activate();
    std::vector<INPUT> inputs;
    for (char character : text) {
        inputs.push_back(CharacterInput(character, 0));
        inputs.push_back(CharacterInput(character, KEYEVENTF_KEYUP));
    }
    Send(inputs);
}

void CancelAllDialogs() {
    for (HWND dialog : VisibleDialogs()) PostMessageA(dialog, WM_COMMAND, IDCANCEL, 0);
}

}  // namespace velmora
