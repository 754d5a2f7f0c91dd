#include <winutil.h>

#include <algorithm>

namespace {

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

// No part of the window ends up off the screen that its parent is on, if it fits there.
void CenterWindow(HWND window, HWND parent) {
    RECT rect;
    if (!GetWindowRect(window, &rect)) {
        return;
    }
    const RECT screen = WorkAreaAround(parent != nullptr ? parent : window);
    RECT around = screen;
    if (parent != nullptr && IsWindowVisible(parent) && !IsIconic(parent)) {
        GetWindowRect(parent, &around);
    }
    const LONG x =
        Centred(around.left, around.right, rect.right - rect.left, screen.left, screen.right);
    const LONG y =
        Centred(around.top, around.bottom, rect.bottom - rect.top, screen.top, screen.bottom);
    SetWindowPos(window, nullptr, x, y, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}
