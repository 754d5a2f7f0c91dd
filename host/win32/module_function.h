// Typed look-up of a module's functions.
#pragma once

#include <windows.h>

namespace win32 {

// The function that the module exports under `name`; null when it exports none. Its type is the
// caller's word.
template <class Function>
Function ModuleFunction(HMODULE module, const char* name) {
    // By way of the type that stands for any function, which compilers let pass without a warning.
    return reinterpret_cast<Function>(reinterpret_cast<void (*)()>(GetProcAddress(module, name)));
}

}  // namespace win32
