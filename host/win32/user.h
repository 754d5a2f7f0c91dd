// The person in front of the host, played: acts on dialogs through their controls and reads message
// boxes. Installed by the host's program and by tests. Elsewhere than on Windows it is called by
// this library's dialog and message box calls; on Windows it acts on the real windows.
#pragma once

#include <string>

namespace win32 {

// A modal dialog in front of the user. Controls are named by their ids. One that the dialog does
// not hold is neither enabled nor checked and has no text, and acting on it does nothing.
class Dialog {
  public:
    virtual ~Dialog() = default;
    virtual std::string Title() const = 0;
    virtual bool IsOpen() const = 0;  // false once its procedure has ended it
    virtual bool IsEnabled(int id) const = 0;
    virtual bool IsChecked(int id) const = 0;
    virtual std::string Text(int id) const = 0;
    virtual int DefaultButton() const = 0;  // its id; 0: none

    // Actions of a person; they do nothing to a disabled control or in a dialog that is not open.
    virtual void Click(int id) = 0;  // a button or a check box
    virtual void Type(int id,
                      const std::string& text) = 0;  // replaces an edit's text, then leaves it
    // A command that no control need send, as of a menu or an accelerator key.
    virtual void Command(int id) = 0;
};

class User {
  public:
    virtual ~User() = default;
    // A dialog is shown and has handled WM_INITDIALOG. One that is still open afterwards is
    // cancelled (command IDCANCEL), and given up with the result -1 if that does not end it.
    virtual void OnDialog(Dialog& dialog) = 0;
    // Also called while OnDialog runs, by what it does. On Windows `flags` is always 0: a box does
    // not show them.
    virtual void OnMessageBox(const std::string& title, const std::string& text,
                              unsigned flags) = 0;
};

// Not owned. Null puts back the default: on Windows a person, elsewhere a user who presses the
// default button everywhere and reads nothing. Returns the former user.
User* SetUser(User* user);

// Elsewhere than on Windows: the user to whom dialogs and message boxes are shown.
User& CurrentUser();

// On Windows: false where no window can be made, as in a session without a desktop or in Wine
// without an X display. Makes a window that is never shown, and destroys it.
bool HasDisplay();

// Where OutputDebugStringA's text goes, elsewhere than on Windows: null (the default) drops it.
using DebugSink = void (*)(const char* text, void* context);
void SetDebugSink(DebugSink sink, void* context);

}  // namespace win32
