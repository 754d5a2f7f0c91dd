// A person in front of another program's dialog: waits until it is shown, looks whether it waits
// for an answer, presses one of its buttons, and waits until it is gone.
//
// usage: press_button TITLE ID
// Exit status 0: done; 1: one of it did not happen within its time, with a line that says which.
#include <windows.h>

#include <cstdio>
#include <cstdlib>

namespace {

constexpr DWORD kPatienceMs = 60000;
constexpr DWORD kLookMs = 1000;
constexpr DWORD kPollMs = 50;

HWND ShownDialog(const char* title) {
    const HWND dialog = FindWindowA("#32770", title);
    return dialog != nullptr && IsWindowVisible(dialog) ? dialog : nullptr;
}

HWND WaitForDialog(const char* title) {
    for (DWORD waited = 0; waited < kPatienceMs; waited += kPollMs) {
        if (const HWND dialog = ShownDialog(title)) {
            return dialog;
        }
        Sleep(kPollMs);
    }
    return nullptr;
}

bool WaitUntilGone(HWND dialog) {
    for (DWORD waited = 0; waited < kPatienceMs; waited += kPollMs) {
        if (!IsWindow(dialog) || !IsWindowVisible(dialog)) {
            return true;
        }
        Sleep(kPollMs);
    }
    return false;
}

int Fail(const char* what) {
    std::printf("%s\n", what);
    return 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        return Fail("usage: press_button TITLE ID");
    }
    const HWND dialog = WaitForDialog(argv[1]);
    if (dialog == nullptr) {
        return Fail("the dialog is not shown");
    }
    Sleep(kLookMs);
    if (ShownDialog(argv[1]) != dialog) {
        return Fail("the dialog does not wait");
    }
    const HWND button = GetDlgItem(dialog, std::atoi(argv[2]));
    if (button == nullptr) {
        return Fail("the dialog has no such button");
    }
    PostMessageA(button, BM_CLICK, 0, 0);
    return WaitUntilGone(dialog) ? 0 : Fail("the dialog does not end");
}
