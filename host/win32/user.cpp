#include "host/win32/user.h"

#include <commctrl.h>
#include <windows.h>

#include <utility>

namespace win32 {
namespace {

class DefaultUser : public User {
  public:
    void OnDialog(Dialog& dialog) override { dialog.Click(dialog.DefaultButton()); }
    void OnMessageBox(const std::string&, const std::string&, unsigned) override {}
};

DefaultUser defaultUser;
User* currentUser = &defaultUser;

DebugSink debugSink = nullptr;
void* debugContext = nullptr;

std::string TextOrEmpty(LPCSTR text) {
    return text ? text : "";
}

}  // namespace

User& CurrentUser() {
    return *currentUser;
}

User* SetUser(User* user) {
    return std::exchange(currentUser, user ? user : &defaultUser);
}

void SetDebugSink(DebugSink sink, void* context) {
    debugSink = sink;
    debugContext = context;
}

}  // namespace win32

extern "C" {

int WINAPI MessageBoxA(HWND, LPCSTR text, LPCSTR title, UINT type) {
    // Windows calls a box without a title "Error".
    win32::currentUser->OnMessageBox(title ? title : "Error", win32::TextOrEmpty(text), type);
    return IDOK;
}

void WINAPI OutputDebugStringA(LPCSTR text) {
    if (win32::debugSink && text) {
        win32::debugSink(text, win32::debugContext);
    }
}

void WINAPI InitCommonControls(void) {
}

}  // extern "C"
