// The user in front of real windows: a hook sees the dialogs that the user's thread opens, and a
// timer, which the dialog's own message loop runs once the dialog is on the screen, acts on them.
#include <windows.h>

#include <map>
#include <utility>

#include "host/win32/user.h"

namespace win32 {
namespace {

User* currentUser = nullptr;  // null: a person
HHOOK hook = nullptr;
std::map<UINT_PTR, HWND> newDialogs;  // by the timer that will look at them

std::string ClassOf(HWND window) {
    char name[64] = "";
    GetClassNameA(window, name, sizeof(name));
    return name;
}

// By a message, as a control of any class answers it.
std::string TextOf(HWND window) {
    std::string text(static_cast<std::size_t>(SendMessageA(window, WM_GETTEXTLENGTH, 0, 0)) + 1,
                     '\0');
    text.resize(static_cast<std::size_t>(
        SendMessageA(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()))));
    return text;
}

bool IsButton(HWND window) {
    return lstrcmpiA(ClassOf(window).c_str(), "Button") == 0;
}

bool IsDefaultButton(HWND window) {
    return IsButton(window) &&
           (GetWindowLongPtrA(window, GWL_STYLE) & BS_TYPEMASK) == BS_DEFPUSHBUTTON;
}

// The first child that `matches`, in tab order; null: none does.
template <class Predicate>
HWND FindChild(HWND parent, Predicate matches) {
    HWND child = GetWindow(parent, GW_CHILD);
    while (child != nullptr && !matches(child)) {
        child = GetWindow(child, GW_HWNDNEXT);
    }
    return child;
}

HWND DefaultButtonOf(HWND dialog) {
    const LRESULT answer = SendMessageA(dialog, DM_GETDEFID, 0, 0);
    if (HIWORD(answer) == DC_HASDEFID) {
        const HWND button = GetDlgItem(dialog, LOWORD(answer));
        if (button != nullptr) {
            return button;
        }
    }
    // A message box changes its button's looks without telling the dialog.
    return FindChild(dialog, IsDefaultButton);
}

// EndDialog hides the window at once and leaves its destruction to the message loop.
bool IsStillOpen(HWND dialog) {
    return IsWindow(dialog) && IsWindowVisible(dialog);
}

void Press(HWND button) {
    // A button in a dialog that is not active may ignore its click.
    SetActiveWindow(GetParent(button));
    SendMessageA(button, BM_CLICK, 0, 0);
}

class WindowDialog final : public Dialog {
  public:
    explicit WindowDialog(HWND window) : window_(window) {}

    std::string Title() const override { return TextOf(window_); }
    bool IsOpen() const override { return IsStillOpen(window_); }
    bool IsEnabled(int id) const override {
        const HWND control = GetDlgItem(window_, id);
        return control != nullptr && IsWindowEnabled(control);
    }
    bool IsChecked(int id) const override {
        const HWND control = GetDlgItem(window_, id);
        return IsButton(control) && SendMessageA(control, BM_GETCHECK, 0, 0) == BST_CHECKED;
    }
    std::string Text(int id) const override {
        const HWND control = GetDlgItem(window_, id);
        return control != nullptr ? TextOf(control) : std::string();
    }
    int DefaultButton() const override {
        const HWND button = DefaultButtonOf(window_);
        return button != nullptr ? GetDlgCtrlID(button) : 0;
    }

    void Click(int id) override {
        const HWND control = Reachable(id);
        if (IsButton(control)) {
            Press(control);
        }
    }

    void Type(int id, const std::string& text) override {
        const HWND control = Reachable(id);
        // Statics and buttons take no typing.
        if (control == nullptr ||
            (SendMessageA(control, WM_GETDLGCODE, 0, 0) & DLGC_HASSETSEL) == 0) {
            return;
        }
        SetFocus(control);
        SendMessageA(control, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
        const HWND next = GetNextDlgTabItem(window_, control, FALSE);
        SetFocus(next != nullptr && next != control ? next : window_);
    }

    void Command(int id) override {
        if (IsOpen()) {
            SendMessageA(window_, WM_COMMAND, MAKEWPARAM(id, 0), 0);
        }
    }

  private:
    // The control, if a person could act on it; else null.
    HWND Reachable(int id) const {
        return IsOpen() && IsEnabled(id) ? GetDlgItem(window_, id) : nullptr;
    }

    HWND window_;
};

void AnswerDialog(HWND window) {
    WindowDialog dialog(window);
    currentUser->OnDialog(dialog);
    if (dialog.IsOpen()) {
        SendMessageA(window, WM_COMMAND, IDCANCEL,
                     reinterpret_cast<LPARAM>(GetDlgItem(window, IDCANCEL)));
    }
    if (dialog.IsOpen()) {
        EndDialog(window, -1);
    }
}

// Its text is the one static control that has any: the icon has none.
void AnswerMessageBox(HWND box) {
    const HWND text = FindChild(box, [](HWND child) {
        return lstrcmpiA(ClassOf(child).c_str(), "Static") == 0 && !TextOf(child).empty();
    });
    // The window alone does not tell the flags.
    currentUser->OnMessageBox(TextOf(box), text != nullptr ? TextOf(text) : std::string(), 0);
    const HWND button = DefaultButtonOf(box);
    Press(button != nullptr ? button : FindChild(box, IsButton));
}

// A message box is a dialog whose procedure is Windows' own.
bool IsMessageBox(HWND dialog) {
    const LONG_PTR procedure = IsWindowUnicode(dialog) ? GetWindowLongPtrW(dialog, DWLP_DLGPROC)
                                                       : GetWindowLongPtrA(dialog, DWLP_DLGPROC);
    HMODULE module = nullptr;
    return GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                                  GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                              reinterpret_cast<LPCSTR>(procedure), &module) &&
           module == GetModuleHandleA("user32.dll");
}

// An exception of the user's cannot pass Windows' frames: it ends the program.
void CALLBACK OnTimer(HWND, UINT, UINT_PTR timer, DWORD) noexcept {
    const auto found = newDialogs.find(timer);
    const HWND window = found != newDialogs.end() ? found->second : nullptr;
    if (IsWindow(window) && !IsWindowVisible(window)) {
        return;  // not shown yet: the timer comes again
    }
    KillTimer(nullptr, timer);
    newDialogs.erase(timer);
    if (currentUser == nullptr || !IsWindow(window)) {
        return;
    }
    if (IsMessageBox(window)) {
        AnswerMessageBox(window);
    } else {
        AnswerDialog(window);
    }
}

LRESULT CALLBACK OnMessage(int code, WPARAM wParam, LPARAM lParam) noexcept {
    const auto& handled = *reinterpret_cast<const CWPRETSTRUCT*>(lParam);
    if (code >= 0 && handled.message == WM_INITDIALOG && ClassOf(handled.hwnd) == "#32770" &&
        (GetWindowLongPtrA(handled.hwnd, GWL_STYLE) & WS_CHILD) == 0) {
        newDialogs[SetTimer(nullptr, 0, USER_TIMER_MINIMUM, OnTimer)] = handled.hwnd;
    }
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

}  // namespace

User* SetUser(User* user) {
    if (user != nullptr && hook == nullptr) {
        hook = SetWindowsHookExA(WH_CALLWNDPROCRET, OnMessage, nullptr, GetCurrentThreadId());
    } else if (user == nullptr && hook != nullptr) {
        UnhookWindowsHookEx(std::exchange(hook, nullptr));
    }
    return std::exchange(currentUser, user);
}

bool HasDisplay() {
    const HWND window =
        CreateWindowExA(0, "Static", "", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    return window != nullptr && DestroyWindow(window) != FALSE;
}

}  // namespace win32
