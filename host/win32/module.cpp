#include "host/win32/module.h"

#include <dlfcn.h>
#include <link.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <vector>

namespace win32 {
namespace {

using EntryPoint = BOOL (*)(HINSTANCE, DWORD, LPVOID);

struct Loader {
    std::map<HMODULE, int> references;  // modules that DllMain accepted
    std::string lastError;
};

// Never destroyed: modules may still be called while the process ends.
Loader& TheLoader() {
    static Loader* const loader = new Loader;
    return *loader;
}

// dlsym also searches the libraries that the module needs; Windows searches the module alone.
void* OwnSymbol(HMODULE module, const char* name) {
    void* const symbol = dlsym(module, name);
    link_map* ownMap = nullptr;
    if (!symbol || dlinfo(module, RTLD_DI_LINKMAP, &ownMap) != 0) {
        return nullptr;
    }
    Dl_info info;
    void* symbolMap = nullptr;
    if (!dladdr1(symbol, &info, &symbolMap, RTLD_DL_LINKMAP)) {
        return nullptr;
    }
    return symbolMap == ownMap ? symbol : nullptr;
}

BOOL CallEntryPoint(HMODULE module, DWORD reason) {
    const auto entry = reinterpret_cast<EntryPoint>(OwnSymbol(module, "DllMain"));
    return entry ? entry(module, reason, nullptr) : TRUE;
}

// The names to try, in order, all with a directory so that no search path is used.
std::vector<std::string> Candidates(std::string path) {
    std::vector<std::string> names{path};
    std::replace(path.begin(), path.end(), '\\', '/');
    names.push_back(path);
    const std::filesystem::path asDll(path);
    if (_stricmp(asDll.extension().c_str(), ".dll") == 0) {
        names.push_back(std::filesystem::path(asDll).replace_extension(".so").string());
    }
    for (std::string& name : names) {
        if (name.find('/') == std::string::npos) {
            name.insert(0, "./");
        }
    }
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
}

// Leaves in `error` what was wrong with the last file that exists, or that there is none.
HMODULE Open(const std::string& path, std::string& error) {
    error = "the file does not exist";
    for (const std::string& name : Candidates(path)) {
        std::error_code ignored;
        if (!std::filesystem::exists(name, ignored)) {
            continue;
        }
        if (void* const handle = dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL)) {
            error.clear();
            return static_cast<HMODULE>(handle);
        }
        error = dlerror();
    }
    return nullptr;
}

}  // namespace

bool IsLoaded(HMODULE module) {
    return TheLoader().references.contains(module);
}

std::span<const std::byte> ResourcesOf(HMODULE module) {
    if (!IsLoaded(module)) {
        return {};
    }
    const auto* begin = static_cast<const std::byte*>(OwnSymbol(module, "module_resources_begin"));
    const auto* end = static_cast<const std::byte*>(OwnSymbol(module, "module_resources_end"));
    if (!begin || !end || end < begin) {
        return {};
    }
    return {begin, end};
}

const std::string& LastLoadError() {
    return TheLoader().lastError;
}

}  // namespace win32

extern "C" {

HMODULE WINAPI LoadLibraryA(LPCSTR path) {
    win32::Loader& loader = win32::TheLoader();
    std::string error;
    const HMODULE module = path ? win32::Open(path, error) : nullptr;
    loader.lastError = error;
    if (!module) {
        return nullptr;
    }
    // Counted before the entry point runs: it may ask for its own strings.
    if (loader.references[module]++ > 0) {
        return module;
    }
    if (!win32::CallEntryPoint(module, DLL_PROCESS_ATTACH)) {
        loader.references.erase(module);
        dlclose(module);
        loader.lastError = "its entry point refused to load";
        return nullptr;
    }
    loader.lastError.clear();
    return module;
}

BOOL WINAPI FreeLibrary(HMODULE module) {
    auto& references = win32::TheLoader().references;
    const auto found = references.find(module);
    if (found == references.end()) {
        return FALSE;
    }
    if (--found->second == 0) {
        win32::CallEntryPoint(module, DLL_PROCESS_DETACH);
        references.erase(module);
    }
    return dlclose(module) == 0;
}

FARPROC WINAPI GetProcAddress(HMODULE module, LPCSTR name) {
    if (!win32::IsLoaded(module) || !name) {
        return nullptr;
    }
    return reinterpret_cast<FARPROC>(win32::OwnSymbol(module, name));
}

}  // extern "C"
