#include <windows.h>

#include "host/win32/display.h"

namespace win32 {

bool HasDisplay() {
    const HWND window =
        CreateWindowExA(0, "Static", "", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    return window != nullptr && DestroyWindow(window) != FALSE;
}

}  // namespace win32
