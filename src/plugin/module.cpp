// The module as 3ds Max sees it: its entry point, the four library functions, exported under
// their plain names, and the exporter's class descriptor. No exception leaves any of them.
#include "plugin/module.h"

#include <commctrl.h>
#include <maxapi.h>
#include <plugin.h>
#include <string.h>

#include "core/format.h"
#include "plugin/converter.h"
#include "plugin/kta_exp.h"
#include "resources/resource.h"

#ifdef _WIN32
#define MODULE_ENTRY extern "C"
#define MODULE_EXPORT extern "C" __declspec(dllexport)
#else
#define MODULE_ENTRY extern "C" __attribute__((visibility("default")))
#define MODULE_EXPORT MODULE_ENTRY
#endif

HINSTANCE g_moduleInstance = NULL;

MCHAR* GetString(int id) {
    static char buffer[256];
    if (g_moduleInstance == NULL ||
        LoadStringA(g_moduleInstance, id, buffer, sizeof(buffer)) == 0) {
        return NULL;
    }
    return buffer;
}

MCHAR* AnswerString(int id) {
    try {
        return GetString(id);
    } catch (...) {
        return NULL;
    }
}

bool JoinPath(char (&path)[MAX_PATH], const char* beginning, const char* end) {
    if (strlen(beginning) + strlen(end) >= MAX_PATH) {
        return false;
    }
    Plinth::FormatInto(path, MAX_PATH, "%s%s", beginning, end);
    return true;
}

namespace {

class KTAExpClassDesc : public ClassDesc {
  public:
    virtual int IsPublic() { return 1; }
    // A new KTAExp, which the caller deletes; null where memory is missing.
    virtual void* Create(BOOL loading = FALSE);
    virtual const MCHAR* ClassName() { return AnswerString(IDS_CLASS_NAME); }
    virtual SClass_ID SuperClassID() { return SCENE_EXPORT_CLASS_ID; }
    virtual Class_ID ClassID() { return Class_ID(0x35728F0C, 0x4E26450A); }
    virtual const MCHAR* Category() { return AnswerString(IDS_CATEGORY); }
};

void* KTAExpClassDesc::Create(BOOL) {
    try {
        return new KTAExp;
    } catch (...) {
        return NULL;
    }
}

}  // namespace

// Refuses to load (FALSE) when no plug-in directory holds the converter library. Whatever the
// reason of the call, only the first one does more than store the instance.
MODULE_ENTRY BOOL WINAPI DllMain(HINSTANCE instance, DWORD, LPVOID) {
    static int initialised = 0;
    g_moduleInstance = instance;
    if (initialised) {
        return TRUE;
    }
    initialised = 1;
    try {
        InitCommonControls();
        return BindConverter(GetCOREInterface()) ? TRUE : FALSE;
    } catch (...) {
        return FALSE;
    }
}

MODULE_EXPORT const MCHAR* LibDescription() {
    return AnswerString(IDS_LIBDESCRIPTION);
}

MODULE_EXPORT int LibNumberClasses() {
    return 1;
}

MODULE_EXPORT ClassDesc* LibClassDesc(int i) {
    static KTAExpClassDesc description;
    return i == 0 ? &description : NULL;
}

MODULE_EXPORT ULONG LibVersion() {
    return VERSION_3DSMAX;
}
