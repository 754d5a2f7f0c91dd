#include "host/win32/user.h"

#include <commctrl.h>
#include <windows.h>

#include <cstdint>
#include <utility>

#include "host/win32/module.h"

namespace win32 {
namespace {

class DefaultUser : public User {
  public:
    long OnDialog(int) override { return 1; }
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

User* SetUser(User* user) {
    return std::exchange(currentUser, user ? user : &defaultUser);
}

void SetDebugSink(DebugSink sink, void* context) {
    debugSink = sink;
    debugContext = context;
}

}  // namespace win32

extern "C" {

INT_PTR WINAPI DialogBoxParamA(HINSTANCE instance, LPCSTR templateName, HWND, DLGPROC, LPARAM) {
    // A number in place of a name is smaller than any address.
    const auto number = reinterpret_cast<std::uintptr_t>(templateName);
    if (!win32::IsLoaded(instance) || number == 0 || number > 0xffff) {
        return -1;
    }
    return win32::currentUser->OnDialog(static_cast<int>(number));
}

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
