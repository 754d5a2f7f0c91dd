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
        spinner->AddReference();
    }
    return spinner;
}

LRESULT CALLBACK SpinnerWindow::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) {
        SetWindowLongPtrA(window, 0, reinterpret_cast<LONG_PTR>(new SpinnerWindow(window)));
    }
    SpinnerWindow* const spinner = ObjectOf(window);
    if (spinner == nullptr) {
        return DefWindowProcA(window, message, wParam, lParam);
    }
    spinner->AddReference();  // the dialog may destroy the window while it is told something
    const LRESULT result = spinner->Handle(message, wParam, lParam);
    spinner->Release();
    return result;
}

void SpinnerWindow::SetLinkedSpinner(HWND edit, HWND spinner) {
    maxhost::SetLinkedSpinner(edit, spinner);
}

// ---------------------------------------------------------------- messages

bool SpinnerWindow::HandleInput(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_LBUTTONDOWN:
            OnButtonDown(GET_Y_LPARAM(lParam));
            return true;
        case WM_MOUSEMOVE:
            OnMouseMove(GET_Y_LPARAM(lParam));
            return true;
        case WM_LBUTTONUP:
            EndPress(false);
            return true;
        case WM_RBUTTONDOWN:
            OnRightButton();
            return true;
        case WM_CAPTURECHANGED:
            EndPress(true);
            return true;
        case WM_KEYDOWN:
            OnKey(wParam);
            return true;
        default:
            return false;
    }
}

LRESULT SpinnerWindow::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
    if (HandleInput(message, wParam, lParam)) {
        return 0;
    }
    const HWND window = Window();
    switch (message) {
        case WM_PAINT: {
            PAINTSTRUCT paint;
            Paint(BeginPaint(window, &paint));
            EndPaint(window, &paint);
            return 0;
        }
        case WM_PRINTCLIENT:
            Paint(reinterpret_cast<HDC>(wParam));
            return 0;
        case WM_ERASEBKGND:
            return 1;
        case WM_GETDLGCODE:
            return DLGC_WANTARROWS;
        case WM_ENABLE:
            if (wParam == FALSE) {
                EndPress(true);
            }
            [[fallthrough]];
        case WM_SETFOCUS:
        case WM_KILLFOCUS:
            InvalidateRect(window, nullptr, FALSE);
            return 0;
        case WM_TIMER:
            OnRepeat();
            return 0;
        case kMsgEditLeft:
            TakeTypedText();
            return 0;
        case WM_NCDESTROY:
            SetWindowLongPtrA(window, 0, 0);
            OnWindowDestroyed();
            return DefWindowProcA(window, message, wParam, lParam);
        default:
            return DefWindowProcA(window, message, wParam, lParam);
    }
}

// ---------------------------------------------------------------- looks

RECT SpinnerWindow::RectOf(Part part) const {
    RECT rect;
    GetClientRect(Window(), &rect);
    const LONG middle = rect.bottom / 2;
    (part == Part::up ? rect.bottom : rect.top) = middle;
    return rect;
}

SpinnerWindow::Part SpinnerWindow::PartAt(int y) const {
    return y < RectOf(Part::up).bottom ? Part::up : Part::down;
}

void SpinnerWindow::Paint(HDC context) const {
    const UINT enabled = IsWindowEnabled(Window()) ? 0 : DFCS_INACTIVE;
    for (const Part part : {Part::up, Part::down}) {
        RECT rect = RectOf(part);
        const UINT arrow = part == Part::up ? DFCS_SCROLLUP : DFCS_SCROLLDOWN;
        const UINT pushed = part == pressed_ ? DFCS_PUSHED : 0;
        DrawFrameControl(context, &rect, DFC_SCROLL, arrow | pushed | enabled);
    }
    RECT whole;
    GetClientRect(Window(), &whole);
    if (GetFocus() == Window()) {
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
    InvalidateRect(Window(), nullptr, FALSE);
}

// ---------------------------------------------------------------- mouse and keys

void SpinnerWindow::OnButtonDown(int y) {
    SetFocus(Window());
    TakeTypedText();
    isPressed_ = true;
    isDragging_ = false;
    pressed_ = PartAt(y);
    pressY_ = y;
    pressValue_ = Value().AsDouble();
    SetCapture(Window());
    SetTimer(Window(), kRepeatTimer, kFirstRepeatMs, nullptr);
    InvalidateRect(Window(), nullptr, FALSE);
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
        KillTimer(Window(), kRepeatTimer);
        InvalidateRect(Window(), nullptr, FALSE);
    }
    const double former = Value().AsDouble();
    Value().Set(pressValue_);
    Value().Step(pressY_ - y);
    Changed(Value().AsDouble() != former);
}

void SpinnerWindow::OnRepeat() {
    if (!isPressed_ || isDragging_) {
        return;
    }
    SetTimer(Window(), kRepeatTimer, kRepeatMs, nullptr);
    StepAndNotify(pressed_ == Part::up ? 1 : -1);
}

// A cancelled press gives back the value from before it.
void SpinnerWindow::EndPress(bool isCancelled) {
    if (!std::exchange(isPressed_, false)) {
        return;
    }
    isDragging_ = false;
    pressed_ = Part::none;
    KillTimer(Window(), kRepeatTimer);
    if (GetCapture() == Window()) {
        ReleaseCapture();
    }
    InvalidateRect(Window(), nullptr, FALSE);
    if (isCancelled) {
        Changed(Value().Set(pressValue_));
    }
    Notify(CC_SPINNER_BUTTONUP, isCancelled ? FALSE : TRUE);
}

void SpinnerWindow::OnRightButton() {
    if (isPressed_) {
        EndPress(true);
    } else {
        TakeTypedText();
        Changed(Value().Reset());
    }
}

void SpinnerWindow::OnKey(WPARAM key) {
    if (key == VK_UP || key == VK_DOWN) {
        StepAndNotify(key == VK_UP ? 1 : -1);
    }
}

}  // namespace maxhost

ISpinnerControl* GetISpinner(HWND window) {
    return maxhost::SpinnerWindow::Get(window);
}
