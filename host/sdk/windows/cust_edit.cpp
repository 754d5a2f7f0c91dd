#include "host/sdk/windows/cust_edit.h"

#include <custcont.h>

namespace maxhost {
namespace {

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

}  // namespace

void SetLinkedSpinner(HWND edit, HWND spinner) {
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

}  // namespace maxhost
