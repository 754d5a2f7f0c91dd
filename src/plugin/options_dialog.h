// The options dialog, dialog 103: shows the exporter's options and takes the user's choices.
#ifndef PLUGIN_OPTIONS_DIALOG_H
#define PLUGIN_OPTIONS_DIALOG_H

#include <windows.h>

// The dialog's creation parameter is the KTAExp whose options it edits. Result 1 with Export, 0
// with Cancel, which changes no option. Export with a sample rate below 1 is refused with a message
// box; the options that were read before it stay changed then. An exception ends the dialog with
// kOptionsDialogOutOfMemory.
enum { kOptionsDialogOutOfMemory = 2 };
INT_PTR CALLBACK OptionsDialogProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);

#endif
