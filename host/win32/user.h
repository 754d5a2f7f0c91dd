// The person in front of the host, played: answers dialogs and reads message boxes. Installed by
// the host's program and by tests; called by the dialog and message box calls of this library.
#pragma once

#include <string>

namespace win32 {

class User {
  public:
    virtual ~User() = default;
    // A modal dialog of the module's resources is shown; returns what the dialog returns.
    virtual long OnDialog(int templateId) = 0;
    virtual void OnMessageBox(const std::string& title, const std::string& text,
                              unsigned flags) = 0;
};

// Not owned; null puts back the default user, who presses the default button everywhere (result 1)
// and reads nothing. Returns the former user.
User* SetUser(User* user);

// Where OutputDebugStringA's text goes: null (the default) drops it.
using DebugSink = void (*)(const char* text, void* context);
void SetDebugSink(DebugSink sink, void* context);

}  // namespace win32
