// The window class "CustEdit": an edit with a sunken border that tells its spinner when it is left.
#pragma once

#include <windows.h>

namespace maxhost {

// The window that is sent kMsgEditLeft when the edit loses the focus; null: none.
void SetLinkedSpinner(HWND edit, HWND spinner);

constexpr UINT kMsgEditLeft = WM_USER + 0x100;

void RegisterCustEdit(HINSTANCE instance);

}  // namespace maxhost
