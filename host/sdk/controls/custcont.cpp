// The custom controls and CenterWindow where windows are states that nobody sees.
#include <custcont.h>
#include <winutil.h>

#include "host/sdk/controls/spinner_control.h"
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

class Spinner final : public SpinnerControl {
  public:
    explicit Spinner(HWND window) : SpinnerControl(window) {}

  private:
    void SetLinkedSpinner(HWND edit, HWND spinner) override;
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

void Spinner::SetLinkedSpinner(HWND edit, HWND linked) {
    if (CustEditWindow* const window = As<CustEditWindow>(edit)) {
        window->spinner = linked;
    }
}

const bool kClassesAreRegistered = [] {
    win32::RegisterControlClass(CUSTEDITWINDOWCLASS, win32::MakeWindow<CustEditWindow>);
    win32::RegisterControlClass(SPINNERWINDOWCLASS, win32::MakeWindow<SpinnerWindow>);
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
