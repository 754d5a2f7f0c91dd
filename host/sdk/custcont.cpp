// The custom controls and CenterWindow where windows are states that nobody sees.
#include <custcont.h>
#include <winutil.h>

#include <string>
#include <utility>

#include "host/sdk/spinner_value.h"
#include "host/win32/controls.h"

namespace maxhost {
namespace {

class SpinnerWindow;

// Tells the spinner that is linked to it when it is left.
class CustEditWindow final : public win32::EditControl {
  public:
    using EditControl::EditControl;
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

    HWND spinner = nullptr;
};

// Made with its window. Lives until the window is destroyed and every GetISpinner is released;
// without the window it still holds its value.
class Spinner final : public ISpinnerControl {
  public:
    explicit Spinner(HWND window) : window_(window) {}

    void AddReference() { ++references_; }
    void Release() {
        if (--references_ == 0) {
            delete this;
        }
    }
    void OnWindowDestroyed() {
        LinkToEdit(nullptr, EDITTYPE_FLOAT);
        window_ = nullptr;
        Release();
    }
    void TakeTypedText();

    HWND GetHwnd() override { return window_; }
    void Enable(BOOL onOff) override { EnableWindow(window_, onOff); }
    void Disable() override { EnableWindow(window_, FALSE); }
    BOOL IsEnabled() override { return IsWindowEnabled(window_); }

    float GetFVal() override {
        TakeTypedText();
        return value_.AsFloat();
    }
    int GetIVal() override {
        TakeTypedText();
        return value_.AsInt();
    }
    void SetAutoScale(BOOL onOff) override { value_.SetAutoScale(onOff != FALSE); }
    void SetScale(float scale) override {
        value_.SetScale(scale);
        ShowValue();
    }
    void SetValue(float value, int notify) override { SetNumber(value, notify); }
    void SetValue(int value, int notify) override { SetNumber(value, notify); }
    void SetLimits(int lowest, int highest, int limitCurValue) override {
        SetLimitsAndShow(lowest, highest, limitCurValue);
    }
    void SetLimits(float lowest, float highest, int limitCurValue) override {
        SetLimitsAndShow(lowest, highest, limitCurValue);
    }
    void LinkToEdit(HWND edit, EditSpinnerType type) override;
    void SetIndeterminate(BOOL onOff) override {
        isIndeterminate_ = onOff;
        ShowValue();
    }
    BOOL IsIndeterminate() override { return isIndeterminate_; }
    void SetResetValue(float value) override { value_.SetResetValue(value); }
    void SetResetValue(int value) override { value_.SetResetValue(value); }
    void SetKeyBrackets(BOOL) override {}  // nothing is drawn

  private:
    ~Spinner() override = default;

    void SetNumber(double value, int notify) {
        isIndeterminate_ = FALSE;
        const bool hasChanged = value_.Set(value);
        ShowAndNotify(hasChanged && notify);
    }
    void SetLimitsAndShow(double lowest, double highest, int limitCurValue) {
        value_.SetLimits(lowest, highest, limitCurValue != FALSE);
        ShowValue();
    }
    void ShowValue();
    void ShowAndNotify(bool notify);
    CustEditWindow* LinkedEdit() const;

    HWND window_;
    HWND edit_ = nullptr;
    SpinnerValue value_;
    std::string shown_;  // what the edit holds unless somebody typed
    int references_ = 1;
    BOOL isIndeterminate_ = FALSE;
};

class SpinnerWindow final : public WindowObject {
  public:
    explicit SpinnerWindow(WindowObject* dialog)
        : WindowObject(dialog), spinner_(new Spinner(this)) {}
    ~SpinnerWindow() override { spinner_->OnWindowDestroyed(); }

    Spinner& TheSpinner() { return *spinner_; }

  private:
    Spinner* const spinner_;  // owned in part: a reference
};

template <class Window>
Window* As(HWND window) {
    return IsWindow(window) ? dynamic_cast<Window*>(window) : nullptr;
}

LRESULT CustEditWindow::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    SpinnerWindow* const linked = message == WM_KILLFOCUS ? As<SpinnerWindow>(spinner) : nullptr;
    if (linked) {
        linked->TheSpinner().TakeTypedText();
    }
    return EditControl::OnMessage(message, wParam, lParam);
}

CustEditWindow* Spinner::LinkedEdit() const {
    return As<CustEditWindow>(edit_);
}

void Spinner::LinkToEdit(HWND edit, EditSpinnerType type) {
    if (CustEditWindow* const former = LinkedEdit()) {
        former->spinner = nullptr;
    }
    edit_ = edit;
    if (CustEditWindow* const linked = LinkedEdit()) {
        value_.SetType(type);
        linked->spinner = window_;
        ShowValue();
    }
}

void Spinner::TakeTypedText() {
    const CustEditWindow* const edit = LinkedEdit();
    if (edit && edit->text != shown_) {
        isIndeterminate_ = FALSE;
        ShowAndNotify(value_.SetText(edit->text));
    }
}

void Spinner::ShowValue() {
    CustEditWindow* const edit = LinkedEdit();
    if (!edit) {
        return;
    }
    shown_ = isIndeterminate_ ? std::string() : value_.Text();
    if (edit->text != shown_) {
        SetWindowTextA(edit, shown_.c_str());
    }
}

void Spinner::ShowAndNotify(bool notify) {
    ShowValue();
    if (notify && window_) {
        SendMessageA(GetParent(window_), CC_SPINNER_CHANGE,
                     MAKEWPARAM(GetDlgCtrlID(window_), FALSE),
                     reinterpret_cast<LPARAM>(static_cast<ISpinnerControl*>(this)));
    }
}

template <class Control>
std::unique_ptr<WindowObject> Make(WindowObject* dialog) {
    return std::make_unique<Control>(dialog);
}

const bool kClassesAreRegistered = [] {
    win32::RegisterControlClass(CUSTEDITWINDOWCLASS, Make<CustEditWindow>);
    win32::RegisterControlClass(SPINNERWINDOWCLASS, Make<SpinnerWindow>);
    return true;
}();

// Of a screen that nobody looks at, in dialog units.
constexpr RECT kScreen = {0, 0, 640, 480};

}  // namespace
}  // namespace maxhost

ISpinnerControl* GetISpinner(HWND window) {
    maxhost::SpinnerWindow* const found = maxhost::As<maxhost::SpinnerWindow>(window);
    if (!found) {
        return nullptr;
    }
    found->TheSpinner().AddReference();
    return &found->TheSpinner();
}

void ReleaseISpinner(ISpinnerControl* spinner) {
    if (spinner) {
        static_cast<maxhost::Spinner*>(spinner)->Release();
    }
}

void CenterWindow(HWND window, HWND parent) {
    RECT rect;
    if (!GetWindowRect(window, &rect)) {
        return;
    }
    RECT around = maxhost::kScreen;
    GetWindowRect(parent, &around);
    const int width = rect.right - rect.left;
    const int height = rect.bottom - rect.top;
    MoveWindow(window, around.left + (around.right - around.left - width) / 2,
               around.top + (around.bottom - around.top - height) / 2, width, height, TRUE);
}
