// What this library's own files know of a loaded module.
#pragma once

#include <windows.h>

#include <cstddef>
#include <span>
#include <string>

namespace win32 {

bool IsLoaded(HMODULE module);

// The compiled resources (.res) that the module carries between its symbols
// `module_resources_begin` and `module_resources_end`; empty where it has none. Valid as long as
// the module is loaded.
std::span<const std::byte> ResourcesOf(HMODULE module);

// Why the last LoadLibraryA gave null, in one line; empty after a successful one.
const std::string& LastLoadError();

}  // namespace win32
