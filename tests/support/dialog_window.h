#pragma once

#include <windows.h>

#include <string>

namespace velmora {

// Whether windows can be shown at all. Under Wine that takes an X display; scripts/with-display makes one.
bool HasDisplay();

// While one of these lives, Wine shows this program's windows without the help of a window manager: it draws their
// frames itself, and does not wait two seconds for a manager's answer whenever a window closes. To be made before the
// program's first window; without effect on Windows.
class UnmanagedWindows {
public:
    UnmanagedWindows();
    ~UnmanagedWindows();

    UnmanagedWindows(const UnmanagedWindows&) = delete;
    UnmanagedWindows& operator=(const UnmanagedWindows&) = delete;
};

// A dialog that another thread of this program shows, used as a person uses it: looked at, typed into, clicked.
//
// Keys go to whatever has the focus, by way of the system's input queue. Keys and clicks return at once; a test waits
// for what they do.
class DialogWindow {
public:
    // Waits until the dialog with this caption is on the screen; one that does not come fails the test.
    explicit DialogWindow(const std::string& caption);

    HWND Handle() const { return window; }

    // Whether it is on the screen. A dialog that is ending has already left it.
    bool IsOpen() const;

    // Makes it the window that gets the keys.
    void Activate() const;

    // The ID of the control that has the focus; 0 when none of this dialog has it.
    int Focus() const;

    std::string Text(int control) const;
    bool IsChecked(int control) const;

    // Puts a text into a control in one go, as pasting does.
    void SetText(int control, const std::string& text) const;
    void SetChecked(int control, bool checked) const;
    void Click(int control) const;

    // Puts a message for the dialog itself into its queue.
    void Post(UINT message, WPARAM wParam) const;

    // Presses and releases a key, given as one of winuser.h's virtual keys.
    void Press(WORD key) const;
    void PressWithShift(WORD key) const;

    // Types characters of ASCII.
    void Type(const std::string& text) const;

private:
    HWND window;
};

// Ends every dialog of this program that is on the screen, by its Cancel command.
void CancelAllDialogs();

}  // namespace velmora
