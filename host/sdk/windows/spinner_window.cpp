#include "host/sdk/windows/spinner_window.h"

#include <windowsx.h>

#include <cstdlib>
#include <utility>

#include "host/sdk/windows/cust_edit.h"

namespace maxhost {
namespace {

constexpr UINT_PTR kRepeatTimer = 1;
constexpr UINT kFirstRepeatMs = 400;
constexpr UINT kRepeatMs = 60;

std::string TextOf(HWND edit) {
    std::string text(static_cast<std::size_t>(GetWindowTextLengthA(edit)) + 1, '\0');
    text.resize(
        static_cast<std::size_t>(GetWindowTextA(edit, text.data(), static_cast<int>(text.size()))));
    return text;
}

SpinnerWindow* ObjectOf(HWND window) {
    return reinterpret_cast<SpinnerWindow*>(GetWindowLongPtrA(window, 0));
}

}  // namespace

// ---------------------------------------------------------------- life

void RegisterSpinner(HINSTANCE instance) {
    WNDCLASSEXA spinner{};
    spinner.cbSize = sizeof(spinner);
    spinner.style = CS_GLOBALCLASS | CS_HREDRAW | CS_VREDRAW;
    spinner.lpfnWndProc = SpinnerWindow::Procedure;
    spinner.cbWndExtra = sizeof(SpinnerWindow*);
    spinner.hInstance = instance;
    spinner.hCursor = LoadCursor(nullptr, IDC_ARROW);
    spinner.lpszClassName = SPINNERWINDOWCLASS;
    RegisterClassExA(&spinner);
}

SpinnerWindow* SpinnerWindow::Get(HWND window) {
    char name[64] = "";
    GetClassNameA(window, name, sizeof(name));
    if (lstrcmpiA(name, SPINNERWINDOWCLASS) != 0) {
        return nullptr;
    }
    SpinnerWindow* const spinner = ObjectOf(window);
    if (spinner != nullptr) {
        ++spinner->references_;
    }
    return spinner;
}

void SpinnerWindow::Release() {
    if (--references_ == 0) {
        delete this;
    }
}

LRESULT CALLBACK SpinnerWindow::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) {
        SetWindowLongPtrA(window, 0, reinterpret_cast<LONG_PTR>(new SpinnerWindow(window)));
    }
    SpinnerWindow* const spinner = ObjectOf(window);
    if (spinner == nullptr) {
        return DefWindowProcA(window, message, wParam, lParam);
    }
    ++spinner->references_;  // the dialog may destroy the window while it is told something
    const LRESULT result = spinner->Handle(message, wParam, lParam);
    spinner->Release();
    return result;
}

void SpinnerWindow::OnDestroyed() {
    LinkToEdit(nullptr, EDITTYPE_FLOAT);
    SetWindowLongPtrA(std::exchange(window_, nullptr), 0, 0);
    Release();
}

// ---------------------------------------------------------------- messages

LRESULT SpinnerWindow::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_PAINT: {
            PAINTSTRUCT paint;
            Paint(BeginPaint(window_, &paint));
            EndPaint(window_, &paint);
            return 0;
        }
        case WM_PRINTCLIENT:
            Paint(reinterpret_cast<HDC>(wParam));
            return 0;
        case WM_ERASEBKGND:
            return 1;
        case WM_GETDLGCODE:
            return DLGC_WANTARROWS;
        case WM_LBUTTONDOWN:
            OnButtonDown(GET_Y_LPARAM(lParam));
            return 0;
        case WM_MOUSEMOVE:
            OnMouseMove(GET_Y_LPARAM(lParam));
            return 0;
        case WM_LBUTTONUP:
            EndPress(false);
            return 0;
        case WM_RBUTTONDOWN:
            OnRightButton();
            return 0;
        case WM_CAPTURECHANGED:
            EndPress(true);
            return 0;
        case WM_TIMER:
            OnRepeat();
            return 0;
        case WM_KEYDOWN:
            OnKey(wParam);
            return 0;
        case WM_ENABLE:
            if (wParam == FALSE) {
                EndPress(true);
            }
            [[fallthrough]];
        case WM_SETFOCUS:
        case WM_KILLFOCUS:
            InvalidateRect(window_, nullptr, FALSE);
            return 0;
        case kMsgEditLeft:
            TakeTypedText();
            return 0;
        case WM_NCDESTROY: {
            const HWND window = window_;
            OnDestroyed();
            return DefWindowProcA(window, message, wParam, lParam);
        }
        default:
            return DefWindowProcA(window_, message, wParam, lParam);
    }
}

// ---------------------------------------------------------------- looks

RECT SpinnerWindow::RectOf(Part part) const {
    RECT rect;
    GetClientRect(window_, &rect);
    const LONG middle = rect.bottom / 2;
    (part == Part::up ? rect.bottom : rect.top) = middle;
    return rect;
}

SpinnerWindow::Part SpinnerWindow::PartAt(int y) const {
    return y < RectOf(Part::up).bottom ? Part::up : Part::down;
}

void SpinnerWindow::Paint(HDC context) const {
    const UINT enabled = IsWindowEnabled(window_) ? 0 : DFCS_INACTIVE;
    for (const Part part : {Part::up, Part::down}) {
        RECT rect = RectOf(part);
        const UINT arrow = part == Part::up ? DFCS_SCROLLUP : DFCS_SCROLLDOWN;
        const UINT pushed = part == pressed_ ? DFCS_PUSHED : 0;
        DrawFrameControl(context, &rect, DFC_SCROLL, arrow | pushed | enabled);
    }
    RECT whole;
    GetClientRect(window_, &whole);
    if (GetFocus() == window_) {
        DrawFocusRect(context, &whole);
    }
    if (hasBrackets_) {
        const HBRUSH red = CreateSolidBrush(RGB(255, 0, 0));
        FrameRect(context, &whole, red);
        DeleteObject(red);
    }
}

void SpinnerWindow::SetKeyBrackets(BOOL onOff) {
    hasBrackets_ = onOff;
    InvalidateRect(window_, nullptr, FALSE);
}

// ---------------------------------------------------------------- mouse and keys

void SpinnerWindow::OnButtonDown(int y) {
    SetFocus(window_);
    TakeTypedText();
    isPressed_ = true;
    isDragging_ = false;
    pressed_ = PartAt(y);
    pressY_ = y;
    pressValue_ = value_.AsDouble();
    SetCapture(window_);
    SetTimer(window_, kRepeatTimer, kFirstRepeatMs, nullptr);
    InvalidateRect(window_, nullptr, FALSE);
    Notify(CC_SPINNER_BUTTONDOWN, FALSE);
    // The dialog may have ended the press, for instance by disabling the spinner.
    if (!isPressed_) {
        return;
    }
    StepAndNotify(pressed_ == Part::up ? 1 : -1);
}

void SpinnerWindow::OnMouseMove(int y) {
    if (!isPressed_ || (!isDragging_ && std::abs(y - pressY_) <= GetSystemMetrics(SM_CYDRAG))) {
        return;
    }
    if (!isDragging_) {
        isDragging_ = true;
        pressed_ = Part::none;
        KillTimer(window_, kRepeatTimer);
        InvalidateRect(window_, nullptr, FALSE);
    }
    const double former = value_.AsDouble();
    value_.Set(pressValue_);
    value_.Step(pressY_ - y);
    Changed(value_.AsDouble() != former);
}

void SpinnerWindow::OnRepeat() {
    if (!isPressed_ || isDragging_) {
        return;
    }
    SetTimer(window_, kRepeatTimer, kRepeatMs, nullptr);
    StepAndNotify(pressed_ == Part::up ? 1 : -1);
}

// A cancelled press gives back the value from before it.
void SpinnerWindow::EndPress(bool isCancelled) {
    if (!std::exchange(isPressed_, false)) {
        return;
    }
    isDragging_ = false;
    pressed_ = Part::none;
    KillTimer(window_, kRepeatTimer);
    if (GetCapture() == window_) {
        ReleaseCapture();
    }
    InvalidateRect(window_, nullptr, FALSE);
    if (isCancelled) {
        Changed(value_.Set(pressValue_));
    }
    Notify(CC_SPINNER_BUTTONUP, isCancelled ? FALSE : TRUE);
}

void SpinnerWindow::OnRightButton() {
    if (isPressed_) {
        EndPress(true);
    } else {
        TakeTypedText();
        Changed(value_.Reset());
    }
}

void SpinnerWindow::OnKey(WPARAM key) {
    if (key == VK_UP || key == VK_DOWN) {
        StepAndNotify(key == VK_UP ? 1 : -1);
    }
}

// ---------------------------------------------------------------- value

float SpinnerWindow::GetFVal() {
    TakeTypedText();
    return value_.AsFloat();
}

int SpinnerWindow::GetIVal() {
    TakeTypedText();
    return value_.AsInt();
}

void SpinnerWindow::SetScale(float scale) {
    value_.SetScale(scale);
    ShowValue();
}

void SpinnerWindow::SetNumber(double value, int notify) {
    isIndeterminate_ = FALSE;
    const bool hasChanged = value_.Set(value);
    Changed(hasChanged && notify);
}

void SpinnerWindow::SetLimits(int lowest, int highest, int limitCurValue) {
    SetLimitsAndShow(lowest, highest, limitCurValue);
}

void SpinnerWindow::SetLimits(float lowest, float highest, int limitCurValue) {
    SetLimitsAndShow(lowest, highest, limitCurValue);
}

void SpinnerWindow::SetLimitsAndShow(double lowest, double highest, int limitCurValue) {
    value_.SetLimits(lowest, highest, limitCurValue != FALSE);
    ShowValue();
}

void SpinnerWindow::LinkToEdit(HWND edit, EditSpinnerType type) {
    if (edit_ != nullptr) {
        SetLinkedSpinner(edit_, nullptr);
    }
    edit_ = edit;
    if (edit_ != nullptr) {
        value_.SetType(type);
        SetLinkedSpinner(edit_, window_);
        ShowValue();
    }
}

void SpinnerWindow::SetIndeterminate(BOOL onOff) {
    isIndeterminate_ = onOff;
    ShowValue();
}

void SpinnerWindow::StepAndNotify(int steps) {
    TakeTypedText();
    isIndeterminate_ = FALSE;
    Changed(value_.Step(steps));
}

void SpinnerWindow::TakeTypedText() {
    if (edit_ == nullptr || !IsWindow(edit_)) {
        return;
    }
    const std::string text = TextOf(edit_);
    if (text != shown_) {
        isIndeterminate_ = FALSE;
        Changed(value_.SetText(text));
    }
}

void SpinnerWindow::ShowValue() {
    if (edit_ == nullptr) {
        return;
    }
    shown_ = isIndeterminate_ ? std::string() : value_.Text();
    if (TextOf(edit_) != shown_) {
        SetWindowTextA(edit_, shown_.c_str());
    }
}

void SpinnerWindow::Changed(bool hasChanged) {
    ShowValue();
    if (hasChanged) {
        Notify(CC_SPINNER_CHANGE, isDragging_ ? TRUE : FALSE);
    }
}

void SpinnerWindow::Notify(UINT message, BOOL flag) {
    if (window_ == nullptr) {
        return;
    }
    SendMessageA(GetParent(window_), message, MAKEWPARAM(GetDlgCtrlID(window_), flag),
                 reinterpret_cast<LPARAM>(static_cast<ISpinnerControl*>(this)));
}

}  // namespace maxhost

ISpinnerControl* GetISpinner(HWND window) {
    return maxhost::SpinnerWindow::Get(window);
}

void ReleaseISpinner(ISpinnerControl* spinner) {
    if (spinner != nullptr) {
        static_cast<maxhost::SpinnerWindow*>(spinner)->Release();
    }
}
