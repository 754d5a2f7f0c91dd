#include "host/win32/window.h"

#include <cstring>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "host/cut_text.h"

namespace {

// Never destroyed: windows may be asked for while the process ends.
std::unordered_set<const WindowObject*>& LiveWindows() {
    static auto* const windows = new std::unordered_set<const WindowObject*>;
    return *windows;
}

bool IsLive(const WindowObject* window) {
    return LiveWindows().contains(window);
}

}  // namespace

WindowObject::WindowObject(WindowObject* owner) : parent(owner) {
    LiveWindows().insert(this);
}

WindowObject::~WindowObject() {
    LiveWindows().erase(this);
}

LRESULT WindowObject::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_SETTEXT:
            text = lParam ? reinterpret_cast<const char*>(lParam) : "";
            return TRUE;
        case WM_GETTEXT:
            return win32::CopyText(text, reinterpret_cast<char*>(lParam), static_cast<int>(wParam));
        case WM_GETTEXTLENGTH:
            return static_cast<LRESULT>(text.size());
        default:
            return 0;
    }
}

namespace win32 {

int CopyText(const std::string& text, char* buffer, int size) {
    if (!buffer || size <= 0) {
        return 0;
    }
    const std::string_view cut = maxhost::CutUtf8(text, static_cast<std::size_t>(size) - 1);
    std::memcpy(buffer, cut.data(), cut.size());
    buffer[cut.size()] = '\0';
    return static_cast<int>(cut.size());
}

void SendCommand(WindowObject& control, int notification) {
    SendMessageA(control.parent, WM_COMMAND, MAKEWPARAM(control.id, notification),
                 reinterpret_cast<LPARAM>(&control));
}

}  // namespace win32

extern "C" {

BOOL WINAPI IsWindow(HWND window) {
    return IsLive(window) ? TRUE : FALSE;
}

LRESULT WINAPI SendMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return IsLive(window) ? window->OnMessage(message, wParam, lParam) : 0;
}

HWND WINAPI GetParent(HWND window) {
    return IsLive(window) ? window->parent : nullptr;
}

int WINAPI GetDlgCtrlID(HWND window) {
    return IsLive(window) ? window->id : 0;
}

BOOL WINAPI EnableWindow(HWND window, BOOL enable) {
    if (!IsLive(window)) {
        return FALSE;
    }
    const bool isEnabled = enable != FALSE;
    const bool wasEnabled = std::exchange(window->isEnabled, isEnabled);
    if (isEnabled != wasEnabled) {
        window->OnMessage(WM_ENABLE, isEnabled ? TRUE : FALSE, 0);
    }
    return wasEnabled ? FALSE : TRUE;
}

BOOL WINAPI IsWindowEnabled(HWND window) {
    return IsLive(window) && window->isEnabled ? TRUE : FALSE;
}

int WINAPI GetWindowTextLengthA(HWND window) {
    return static_cast<int>(SendMessageA(window, WM_GETTEXTLENGTH, 0, 0));
}

int WINAPI GetWindowTextA(HWND window, LPSTR buffer, int size) {
    if (!buffer || size <= 0) {
        return 0;
    }
    buffer[0] = '\0';
    return static_cast<int>(SendMessageA(window, WM_GETTEXT, static_cast<WPARAM>(size),
                                         reinterpret_cast<LPARAM>(buffer)));
}

BOOL WINAPI SetWindowTextA(HWND window, LPCSTR text) {
    return SendMessageA(window, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text)) ? TRUE : FALSE;
}

LONG_PTR WINAPI GetWindowLongPtrA(HWND window, int index) {
    return IsLive(window) && index == GWLP_USERDATA ? window->userData : 0;
}

LONG_PTR WINAPI SetWindowLongPtrA(HWND window, int index, LONG_PTR value) {
    return IsLive(window) && index == GWLP_USERDATA ? std::exchange(window->userData, value) : 0;
}

BOOL WINAPI GetWindowRect(HWND window, RECT* rect) {
    if (!IsLive(window) || !rect) {
        return FALSE;
    }
    *rect = window->rect;
    if (window->IsControl()) {
        const RECT& corner = window->parent->rect;
        rect->left += corner.left;
        rect->right += corner.left;
        rect->top += corner.top;
        rect->bottom += corner.top;
    }
    return TRUE;
}

BOOL WINAPI MoveWindow(HWND window, int x, int y, int width, int height, BOOL) {
    if (!IsLive(window)) {
        return FALSE;
    }
    window->rect = {x, y, x + width, y + height};
    return TRUE;
}

}  // extern "C"
