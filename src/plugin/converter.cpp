#include "plugin/converter.h"

#include "core/copy_name.h"
#include "core/path.h"
#include "core/string.h"

Converter g_converter;

namespace {

HMODULE LoadConverter(Interface* ip) {
    for (int i = 0; i < ip->GetPlugInEntryCount(); ++i) {
        const Plinth::String directory(ip->GetPlugInDir(i));
        const Plinth::String path =
            directory + Plinth::String(PLINTH_PATH_SEPARATOR "haldenexport.dll");
        if (path.Length() >= MAX_PATH) {
            continue;
        }
        const HMODULE library = LoadLibraryA(path.Data());
        if (library != NULL) {
            Plinth::CopyName(g_converter.directory, MAX_PATH, directory.Data());
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
