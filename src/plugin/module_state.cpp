#include "plugin/module.h"

HINSTANCE g_moduleInstance = NULL;

MCHAR* GetString(int id) {
    static char buffer[256];
    if (g_moduleInstance == NULL ||
        LoadStringA(g_moduleInstance, id, buffer, sizeof(buffer)) == 0) {
        return NULL;
    }
    return buffer;
}
