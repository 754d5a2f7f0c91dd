#include "plugin/about_dialog.h"

#include <max.h>
#include <winutil.h>

#include "resources/resource.h"

// Of the calls here only that of 3ds Max can throw.
INT_PTR CALLBACK AboutDialogProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM) {
    switch (message) {
        case WM_INITDIALOG:
            try {
                CenterWindow(dialog, GetParent(dialog));
            } catch (...) {
                EndDialog(dialog, 1);
            }
            return TRUE;
        case WM_COMMAND:
            if (LOWORD(wParam) == IDC_BACK) {
                EndDialog(dialog, 1);
            }
            return TRUE;
        default:
            return FALSE;
    }
}
