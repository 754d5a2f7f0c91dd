// The About box, dialog 102.
#ifndef PLUGIN_ABOUT_DIALOG_H
#define PLUGIN_ABOUT_DIALOG_H

#include <windows.h>

// Result 1, with the dialog's one button.
INT_PTR CALLBACK AboutDialogProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);

#endif
