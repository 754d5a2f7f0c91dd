// The procedures of the plug-in's two dialogs. No exception leaves them.
#ifndef PLUGIN_DIALOGS_H
#define PLUGIN_DIALOGS_H

#include <windows.h>

// The options dialog, dialog 103: shows the exporter's options and takes the user's choices. Its
// creation parameter is the KTAExp whose options it edits. Result 1 with Export, 0 with Cancel,
// which changes no option. Export with a sample rate below 1 is refused with a message box; the
// options that were read before it stay changed then. An exception ends the dialog with
// kOptionsDialogOutOfMemory.
enum { kOptionsDialogOutOfMemory = 2 };
INT_PTR CALLBACK OptionsDialogProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);

// The About box, dialog 102: result 1, with the dialog's one button.
INT_PTR CALLBACK AboutDialogProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);

#endif
