// Loads unless the environment says otherwise, and tells of the calls of its entry point.
#include <windows.h>

#include <cstdlib>

#include "tests/support/export.h"

namespace {

int attachCalls = 0;
int lengthAtAttach = 0;
HINSTANCE moduleInstance = nullptr;
void (*detachSink)() = nullptr;

}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
    moduleInstance = instance;
    if (reason == DLL_PROCESS_ATTACH) {
        ++attachCalls;
        char text[64];
        lengthAtAttach = LoadStringA(instance, 1, text, sizeof(text));
        return std::getenv("WIN32_TEST_REFUSE") == nullptr;
    }
    if (reason == DLL_PROCESS_DETACH && detachSink) {
        detachSink();
    }
    return TRUE;
}

TEST_EXPORT int AttachCalls() {
    return attachCalls;
}
TEST_EXPORT int LengthAtAttach() {
    return lengthAtAttach;
}
TEST_EXPORT HINSTANCE Instance() {
    return moduleInstance;
}
TEST_EXPORT void SetDetachSink(void (*sink)()) {
    detachSink = sink;
}
