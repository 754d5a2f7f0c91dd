// What 3ds Max sees of the plug-in before it makes an exporter: the module's entry point and the
// four library functions, exported under their plain names.
#include "plugin/module.h"

#include <commctrl.h>
#include <maxapi.h>
#include <plugin.h>

#include "plugin/converter.h"
#include "plugin/kta_exp_class_desc.h"
#include "resources/resource.h"

#ifdef _WIN32
#define MODULE_ENTRY extern "C"
#define MODULE_EXPORT extern "C" __declspec(dllexport)
#else
#define MODULE_ENTRY extern "C" __attribute__((visibility("default")))
#define MODULE_EXPORT MODULE_ENTRY
#endif

// Refuses to load (FALSE) when no plug-in directory holds the converter library. Whatever the
// reason of the call, only the first one does more than store the instance.
MODULE_ENTRY BOOL WINAPI DllMain(HINSTANCE instance, DWORD, LPVOID) {
    static int initialised = 0;
    g_moduleInstance = instance;
    if (initialised) {
        return TRUE;
    }
    initialised = 1;
    InitCommonControls();
    return BindConverter(GetCOREInterface()) ? TRUE : FALSE;
}

MODULE_EXPORT const MCHAR* LibDescription() {
    return GetString(IDS_LIBDESCRIPTION);
}

MODULE_EXPORT int LibNumberClasses() {
    return 1;
}

MODULE_EXPORT ClassDesc* LibClassDesc(int i) {
    return i == 0 ? GetKTAExpClassDesc() : NULL;
}

MODULE_EXPORT ULONG LibVersion() {
    return VERSION_3DSMAX;
}
