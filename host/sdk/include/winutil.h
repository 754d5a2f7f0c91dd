// Help with windows.
#ifndef HOST_SDK_INCLUDE_WINUTIL_H
#define HOST_SDK_INCLUDE_WINUTIL_H

#include <coreexp.h>
#include <windows.h>

// Moves a window to the middle of its parent's; of the screen where the parent is null.
CoreExport void CenterWindow(HWND window, HWND parent);

#endif
