// The custom controls and CenterWindow on Windows, where the custom controls are window classes:
// "CustEdit", an edit with a sunken border that tells its spinner when it is left, and
// "SpinnerControl".
#include <custcont.h>
#include <windows.h>
#include <windowsx.h>
#include <winutil.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "host/sdk/controls/spinner_control.h"

namespace maxhost {
namespace {

// ---------------------------------------------------------------- the edit

// Sent to the linked spinner's window when the edit loses the focus.
constexpr UINT kMsgEditLeft = WM_USER + 0x100;

constexpr const char* kLinkProperty = "maxhost.spinner";

WNDPROC standardEdit = nullptr;

// Dialog templates give the bare class; its looks come with it.
void AddStyles(HWND window, CREATESTRUCTA& creation) {
    creation.style |= ES_AUTOHSCROLL;
    creation.dwExStyle |= WS_EX_CLIENTEDGE;
    SetWindowLongPtrA(window, GWL_STYLE, creation.style);
    SetWindowLongPtrA(window, GWL_EXSTYLE, creation.dwExStyle);
}

LRESULT CALLBACK CustEditProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_NCCREATE:
            AddStyles(window, *reinterpret_cast<CREATESTRUCTA*>(lParam));
            break;
        case WM_KILLFOCUS:
            if (const HWND spinner = static_cast<HWND>(GetPropA(window, kLinkProperty))) {
                SendMessageA(spinner, kMsgEditLeft, 0, 0);
            }
            break;
        case WM_NCDESTROY:
            RemovePropA(window, kLinkProperty);
            break;
        default:
            break;
    }
    return CallWindowProcA(standardEdit, window, message, wParam, lParam);
}

// `spinner`: the window that is sent kMsgEditLeft; null: none.
void LinkSpinner(HWND edit, HWND spinner) {
    if (spinner != nullptr) {
        SetPropA(edit, kLinkProperty, spinner);
    } else {
        RemovePropA(edit, kLinkProperty);
    }
}

void RegisterCustEdit(HINSTANCE instance) {
    WNDCLASSEXA edit{};
    edit.cbSize = sizeof(edit);
    GetClassInfoExA(nullptr, "Edit", &edit);
    standardEdit = edit.lpfnWndProc;
    edit.style |= CS_GLOBALCLASS;
    edit.lpfnWndProc = CustEditProcedure;
    edit.hInstance = instance;
    edit.lpszClassName = CUSTEDITWINDOWCLASS;
    RegisterClassExA(&edit);
}

// ---------------------------------------------------------------- the spinner

constexpr UINT_PTR kRepeatTimer = 1;
constexpr UINT kFirstRepeatMs = 400;
constexpr UINT kRepeatMs = 60;

// Two arrows, one above the other. A click on one, or an arrow key, changes the value by a step;
// holding the button repeats; dragging up or down changes it by a step a pixel, and a right click
// meanwhile takes that back.
class SpinnerWindow final : public SpinnerControl {
  public:
    // Null for a window of another class; the caller owns a reference of what it gets.
    static SpinnerWindow* Get(HWND window);

  private:
    enum class Part { none, up, down };

    explicit SpinnerWindow(HWND window) : SpinnerControl(window) {}

    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    friend void RegisterSpinner(HINSTANCE instance);

    LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam);
    // Of mouse and keyboard; false: none of these.
    bool HandleInput(UINT message, WPARAM wParam, LPARAM lParam);
    void Paint(HDC context) const;
    RECT RectOf(Part part) const;
    Part PartAt(int y) const;

    void OnButtonDown(int y);
    void OnMouseMove(int y);
    void OnRepeat();
    void EndPress(bool isCancelled);
    void OnKey(WPARAM key);

    void SetLinkedSpinner(HWND edit, HWND spinner) override;
    bool IsDragging() const override { return isDragging_; }

    // While the button is down: `pressed_` is the arrow under it, none in a drag.
    bool isPressed_ = false;
    bool isDragging_ = false;
    Part pressed_ = Part::none;
    int pressY_ = 0;
    double pressValue_ = 0.0;
};

SpinnerWindow* ObjectOf(HWND window) {
    return reinterpret_cast<SpinnerWindow*>(GetWindowLongPtrA(window, 0));
}

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
    LinkSpinner(edit, spinner);
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
            EndPress(true);
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

void SpinnerWindow::OnKey(WPARAM key) {
    if (key == VK_UP || key == VK_DOWN) {
        StepAndNotify(key == VK_UP ? 1 : -1);
    }
}

// ---------------------------------------------------------------- centred windows

RECT WorkAreaAround(HWND window) {
    MONITORINFO monitor{};
    monitor.cbSize = sizeof(monitor);
    GetMonitorInfoA(MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST), &monitor);
    return monitor.rcWork;
}

// Where `length` starts that is centred on [low, high], kept within [least, most].
LONG Centred(LONG low, LONG high, LONG length, LONG least, LONG most) {
    return std::max(least, std::min(low + (high - low - length) / 2, most - length));
}

}  // namespace
}  // namespace maxhost

ISpinnerControl* GetISpinner(HWND window) {
    return maxhost::SpinnerWindow::Get(window);
}

// No part of the window ends up off the screen that its parent is on, if it fits there.
void CenterWindow(HWND window, HWND parent) {
    RECT rect;
    if (!GetWindowRect(window, &rect)) {
        return;
    }
    const RECT screen = maxhost::WorkAreaAround(parent != nullptr ? parent : window);
    RECT around = screen;
    if (parent != nullptr && IsWindowVisible(parent) && !IsIconic(parent)) {
        GetWindowRect(parent, &around);
    }
    const LONG x = maxhost::Centred(around.left, around.right, rect.right - rect.left, screen.left,
                                    screen.right);
    const LONG y = maxhost::Centred(around.top, around.bottom, rect.bottom - rect.top, screen.top,
                                    screen.bottom);
    SetWindowPos(window, nullptr, x, y, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

// The classes are there as soon as the host's library is, before any dialog of a plug-in.
extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        maxhost::RegisterCustEdit(instance);
        maxhost::RegisterSpinner(instance);
    } else if (reason == DLL_PROCESS_DETACH) {
        UnregisterClassA(CUSTEDITWINDOWCLASS, instance);
        UnregisterClassA(SPINNERWINDOWCLASS, instance);
    }
    return TRUE;
}
