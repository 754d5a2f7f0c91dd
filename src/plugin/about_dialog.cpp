#include "plugin/about_dialog.h"

#include <max.h>
#include <winutil.h>

#include "resources/resource.h"

INT_PTR CALLBACK AboutDialogProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM) {
    switch (message) {
        case WM_INITDIALOG:
            CenterWindow(dialog, GetParent(dialog));
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
