// The module's entry point: the custom controls' classes are there as soon as the host's library
// is, before any dialog of a plug-in.
#include <custcont.h>

#include "host/sdk/windows/cust_edit.h"
#include "host/sdk/windows/spinner_window.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        maxhost::RegisterCustEdit(instance);
        maxhost::RegisterSpinner(instance);
    } else if (reason == DLL_PROCESS_DETACH) {
        UnregisterClassA(CUSTEDITWINDOWCLASS, instance);
        UnregisterClassA(SPINNERWINDOWCLASS, instance);
    }
    return TRUE;
}
