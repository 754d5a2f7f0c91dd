// Windows as this library keeps them: dialogs and controls, as states.
#pragma once

#include <windows.h>

#include <memory>
#include <string>

// The object that an HWND points to. Classes of controls derive from it.
struct WindowObject {
    explicit WindowObject(WindowObject* owner);
    virtual ~WindowObject();
    WindowObject(const WindowObject&) = delete;
    WindowObject& operator=(const WindowObject&) = delete;

    // The result of SendMessageA. This class handles WM_SETTEXT, WM_GETTEXT and WM_GETTEXTLENGTH.
    virtual LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam);
    // False for a dialog. A control has a parent.
    virtual bool IsControl() const { return true; }
    // Whether a person can type into it.
    virtual bool TakesTyping() const { return false; }

    WindowObject* const parent;  // a control's dialog, a dialog's owner; null: none
    int id = 0;
    std::string text;
    DWORD style = 0;
    bool isEnabled = true;
    RECT rect = {0, 0, 0, 0};  // of a control: from its dialog's corner
    LONG_PTR userData = 0;
};

namespace win32 {

// The text cut to size - 1 bytes at a character's start and NUL-terminated; its length. Does
// nothing without room for the NUL.
int CopyText(const std::string& text, char* buffer, int size);

// Tells a control's dialog of what happened to it: WM_COMMAND with that high word.
void SendCommand(WindowObject& control, int notification);

}  // namespace win32
