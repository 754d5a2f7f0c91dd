// Modal dialogs, made from the module's resources and shown to the installed user.
#include <windows.h>

#include <cstdint>
#include <utility>
#include <vector>

#include "host/win32/controls.h"
#include "host/win32/module.h"
#include "host/win32/resources.h"
#include "host/win32/user.h"
#include "host/win32/window.h"

namespace win32 {
namespace {

RECT ToRect(const TemplateRect& rect) {
    return {rect.x, rect.y, rect.x + rect.width, rect.y + rect.height};
}

class DialogWindow final : public WindowObject {
  public:
    DialogWindow(const DialogTemplate& form, HWND owner, DLGPROC procedure)
        : WindowObject(owner), procedure_(procedure) {
        text = form.title;
        style = form.style;
        rect = ToRect(form.rect);
    }

    // False: a class that is not known.
    bool AddControls(const std::vector<ControlTemplate>& forms) {
        for (const ControlTemplate& form : forms) {
            std::unique_ptr<WindowObject> control = MakeControl(form.className, this);
            if (!control) {
                return false;
            }
            control->id = form.id;
            control->text = form.text;
            control->style = form.style;
            control->isEnabled = !(form.style & WS_DISABLED);
            control->rect = ToRect(form.rect);
            controls_.push_back(std::move(control));
        }
        return true;
    }

    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override {
        if (procedure_ && procedure_(this, message, wParam, lParam)) {
            return 0;
        }
        if (message == WM_CLOSE) {
            OnMessage(WM_COMMAND, IDCANCEL, reinterpret_cast<LPARAM>(Item(IDCANCEL)));
            return 0;
        }
        return WindowObject::OnMessage(message, wParam, lParam);
    }
    bool IsControl() const override { return false; }

    WindowObject* Item(int itemId) const {
        for (const auto& control : controls_) {
            if (control->id == itemId) {
                return control.get();
            }
        }
        return nullptr;
    }

    // Null: no button takes the enter key.
    WindowObject* DefaultButton() const {
        for (const auto& control : controls_) {
            const auto* const button = dynamic_cast<const ButtonControl*>(control.get());
            if (button && button->IsDefault()) {
                return control.get();
            }
        }
        WindowObject* const ok = Item(IDOK);
        return dynamic_cast<ButtonControl*>(ok) ? ok : nullptr;
    }

    void End(INT_PTR result) {
        isOpen_ = false;
        result_ = result;
    }
    bool IsOpen() const { return isOpen_; }
    INT_PTR Result() const { return result_; }
    WindowObject* FirstControl() const {
        return controls_.empty() ? nullptr : controls_.front().get();
    }

  private:
    DLGPROC procedure_;
    std::vector<std::unique_ptr<WindowObject>> controls_;
    bool isOpen_ = true;
    INT_PTR result_ = 0;
};

// The dialog as its user sees it.
class SeenDialog final : public Dialog {
  public:
    explicit SeenDialog(DialogWindow& window) : window_(window) {}

    std::string Title() const override { return window_.text; }
    bool IsOpen() const override { return window_.IsOpen(); }
    bool IsEnabled(int id) const override { return IsWindowEnabled(window_.Item(id)); }
    bool IsChecked(int id) const override {
        return SendMessageA(window_.Item(id), BM_GETCHECK, 0, 0) == BST_CHECKED;
    }
    std::string Text(int id) const override {
        const WindowObject* const control = window_.Item(id);
        return control ? control->text : std::string();
    }
    int DefaultButton() const override {
        const WindowObject* const button = window_.DefaultButton();
        return button ? button->id : 0;
    }

    void Click(int id) override {
        if (IsReachable(id)) {
            SendMessageA(window_.Item(id), BM_CLICK, 0, 0);
        }
    }
    void Type(int id, const std::string& text) override {
        WindowObject* const control = window_.Item(id);
        if (IsReachable(id) && control->TakesTyping()) {
            SendMessageA(control, WM_SETFOCUS, 0, 0);
            SetWindowTextA(control, text.c_str());
            SendMessageA(control, WM_KILLFOCUS, 0, 0);
        }
    }
    void Command(int id) override {
        if (IsOpen()) {
            SendMessageA(&window_, WM_COMMAND, MAKEWPARAM(id, 0), 0);
        }
    }

  private:
    bool IsReachable(int id) const { return IsOpen() && IsEnabled(id); }

    DialogWindow& window_;
};

INT_PTR RunModal(DialogWindow& window, LPARAM parameter) {
    SendMessageA(&window, WM_INITDIALOG, reinterpret_cast<WPARAM>(window.FirstControl()),
                 parameter);
    SeenDialog dialog(window);
    if (window.IsOpen()) {
        CurrentUser().OnDialog(dialog);
    }
    dialog.Command(IDCANCEL);
    if (window.IsOpen()) {
        window.End(-1);
    }
    const INT_PTR result = window.Result();
    SendMessageA(&window, WM_DESTROY, 0, 0);
    return result;
}

DialogWindow* AsDialog(HWND window) {
    return IsWindow(window) ? dynamic_cast<DialogWindow*>(window) : nullptr;
}

}  // namespace
}  // namespace win32

extern "C" {

INT_PTR WINAPI DialogBoxParamA(HINSTANCE instance, LPCSTR templateName, HWND parent,
                               DLGPROC procedure, LPARAM parameter) {
    // A number in place of a name is smaller than any address.
    const auto number = reinterpret_cast<std::uintptr_t>(templateName);
    if (!win32::IsLoaded(instance) || number == 0 || number > 0xffff) {
        return -1;
    }
    const auto resource = win32::FindResource(win32::ResourcesOf(instance), win32::kDialogType,
                                              static_cast<std::uint16_t>(number));
    const auto form = resource ? win32::ReadDialogTemplate(*resource) : std::nullopt;
    if (!form) {
        return -1;
    }
    win32::DialogWindow window(*form, IsWindow(parent) ? parent : nullptr, procedure);
    return window.AddControls(form->controls) ? win32::RunModal(window, parameter) : -1;
}

BOOL WINAPI EndDialog(HWND dialog, INT_PTR result) {
    win32::DialogWindow* const window = win32::AsDialog(dialog);
    if (!window) {
        return FALSE;
    }
    window->End(result);
    return TRUE;
}

HWND WINAPI GetDlgItem(HWND dialog, int id) {
    const win32::DialogWindow* const window = win32::AsDialog(dialog);
    return window ? window->Item(id) : nullptr;
}

LRESULT WINAPI SendDlgItemMessageA(HWND dialog, int id, UINT message, WPARAM wParam,
                                   LPARAM lParam) {
    return SendMessageA(GetDlgItem(dialog, id), message, wParam, lParam);
}

UINT WINAPI GetDlgItemTextA(HWND dialog, int id, LPSTR buffer, int size) {
    return static_cast<UINT>(GetWindowTextA(GetDlgItem(dialog, id), buffer, size));
}

BOOL WINAPI SetDlgItemTextA(HWND dialog, int id, LPCSTR text) {
    return SetWindowTextA(GetDlgItem(dialog, id), text);
}

BOOL WINAPI CheckDlgButton(HWND dialog, int id, UINT check) {
    const HWND button = GetDlgItem(dialog, id);
    SendMessageA(button, BM_SETCHECK, check, 0);
    return button ? TRUE : FALSE;
}

UINT WINAPI IsDlgButtonChecked(HWND dialog, int id) {
    return static_cast<UINT>(SendMessageA(GetDlgItem(dialog, id), BM_GETCHECK, 0, 0));
}

}  // extern "C"
