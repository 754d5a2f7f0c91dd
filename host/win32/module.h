// Loaded modules: typed look-up of their functions and, elsewhere than on Windows, what this
// library knows of them.
#pragma once

#include <windows.h>

#include <cstddef>
#include <span>
#include <string>

namespace win32 {

// The function that the module exports under `name`; null when it exports none. Its type is the
// caller's word.
template <class Function>
Function ModuleFunction(HMODULE module, const char* name) {
    // By way of the type that stands for any function, which compilers let pass without a warning.
    return reinterpret_cast<Function>(reinterpret_cast<void (*)()>(GetProcAddress(module, name)));
}

#ifndef _WIN32

bool IsLoaded(HMODULE module);

// The compiled resources (.res) that the module carries between its symbols
// `module_resources_begin` and `module_resources_end`; empty where it has none. Valid as long as
// the module is loaded.
std::span<const std::byte> ResourcesOf(HMODULE module);

// Why the last LoadLibraryA gave null, in one line; empty after a successful one.
const std::string& LastLoadError();

#endif

}  // namespace win32
