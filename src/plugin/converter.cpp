#include "plugin/converter.h"

#include "core/format.h"
#include "plugin/module.h"

Converter g_converter;

namespace {

HMODULE LoadConverter(Interface* ip) {
    for (int i = 0; i < ip->GetPlugInEntryCount(); ++i) {
        char path[MAX_PATH];
        if (!JoinPath(path, ip->GetPlugInDir(i), PATH_SEPARATOR "haldenexport.dll")) {
            continue;
        }
        const HMODULE library = LoadLibraryA(path);
        if (library != NULL) {
            Plinth::CopyName(g_converter.directory, MAX_PATH, ip->GetPlugInDir(i));
            return library;
        }
    }
    return NULL;
}

template <class Function>
void LookUp(HMODULE library, const char* name, Function& function) {
    // By way of the type that stands for any function, which compilers let pass without a warning.
    typedef void (*AnyFunction)();
    function =
        reinterpret_cast<Function>(reinterpret_cast<AnyFunction>(GetProcAddress(library, name)));
}

}  // namespace

bool BindConverter(Interface* ip) {
    const HMODULE library = LoadConverter(ip);
    if (library == NULL) {
        return false;
    }
    LookUp(library, "EndSpecialHalden", g_converter.endSpecialHalden);
    LookUp(library, "InitSpecialHalden", g_converter.initSpecialHalden);
    LookUp(library, "WriteKTActorFile", g_converter.writeKTActorFile);
    LookUp(library, "WriteKTMotionFile", g_converter.writeKTMotionFile);
    return true;
}
