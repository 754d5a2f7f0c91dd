#include "host/app/plugin_loader.h"

#include <impexp.h>
#include <max.h>
#include <plugin.h>

#include <cstdio>
#include <sstream>

#include "host/app/exit_status.h"
#include "host/win32/module.h"
#include "kta/text.h"

namespace maxhost::app {
namespace {

namespace fs = std::filesystem;

#ifdef _WIN32
constexpr const char* kConverterNames[] = {"haldenexport.dll"};

std::string ReasonOfLoadFailure() {
    return "Windows error " + std::to_string(GetLastError());
}
#else
// LoadLibraryA finds the second under the first name.
constexpr const char* kConverterNames[] = {"haldenexport.dll", "haldenexport.so"};

std::string ReasonOfLoadFailure() {
    return win32::LastLoadError();
}
#endif

struct LibraryFunctions {
    LibDescriptionFunc description;
    LibNumberClassesFunc numberClasses;
    LibClassDescFunc classDesc;
    LibVersionFunc version;
};

LibraryFunctions FunctionsOf(HMODULE module, const std::string& file) {
    const LibraryFunctions functions = {
        win32::ModuleFunction<LibDescriptionFunc>(module, "LibDescription"),
        win32::ModuleFunction<LibNumberClassesFunc>(module, "LibNumberClasses"),
        win32::ModuleFunction<LibClassDescFunc>(module, "LibClassDesc"),
        win32::ModuleFunction<LibVersionFunc>(module, "LibVersion")};
    std::vector<std::string> missing;
    const auto note = [&](bool isThere, const char* name) {
        if (!isThere) {
            missing.emplace_back(name);
        }
    };
    note(functions.description, "LibDescription");
    note(functions.numberClasses, "LibNumberClasses");
    note(functions.classDesc, "LibClassDesc");
    note(functions.version, "LibVersion");
    if (!missing.empty()) {
        throw Failure(kExitNoPlugIn, file,
                      "is no plug-in: does not export " + kta::Joined(missing));
    }
    return functions;
}

std::string Hexadecimal(ULONG value) {
    char text[16];
    std::snprintf(text, sizeof(text), "0x%08X", static_cast<unsigned>(value));
    return text;
}

bool HoldsConverter(const std::string& directory) {
    return ConverterFile({directory}).has_value();
}

// Why the plug-in cannot bind the converter that the directory holds; empty when it can.
std::string WhyUnbound(const std::string& directory) {
    const std::string file = (fs::path(directory) / kConverterNames[0]).string();
    if (file.size() >= MAX_PATH) {
        return directory + " is too long a name, expected fewer than " + std::to_string(MAX_PATH) +
               " characters with haldenexport.dll";
    }
    const HMODULE module = LoadLibraryA(file.c_str());
    if (!module) {
        return file + " does not load: " + ReasonOfLoadFailure();
    }
    FreeLibrary(module);
    return {};
}

std::string ReasonWithConverter(const std::vector<std::string>& plugInDirectories) {
    std::vector<std::string> reasons;
    for (const std::string& directory : plugInDirectories) {
        if (HoldsConverter(directory)) {
            reasons.push_back(WhyUnbound(directory));
            if (reasons.back().empty()) {
                return {};
            }
        }
    }
    return "; " + (reasons.empty() ? "no plug-in directory holds haldenexport: " +
                                         kta::Joined(plugInDirectories)
                                   : kta::Joined(reasons));
}

// The converter library that the plug-in finds in these directories, loaded once more.
class Converter {
  public:
    explicit Converter(const std::vector<std::string>& plugInDirectories) {
        for (std::size_t i = 0; i < plugInDirectories.size() && !module_; ++i) {
            file_ = (fs::path(plugInDirectories[i]) / "haldenexport.dll").string();
            // The plug-in has no room for more.
            module_ = file_.size() < MAX_PATH ? LoadLibraryA(file_.c_str()) : nullptr;
        }
    }
    ~Converter() {
        if (module_) {
            FreeLibrary(module_);
        }
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    HMODULE Module() const { return module_; }  // null: there is none
    const std::string& File() const { return file_; }

  private:
    HMODULE module_ = nullptr;
    std::string file_;
};

ClassDesc* FindExporterClass(const LibraryFunctions& functions) {
    const int count = functions.numberClasses();
    for (int i = 0; i < count; ++i) {
        ClassDesc* const description = functions.classDesc(i);
        if (description && description->SuperClassID() == SCENE_EXPORT_CLASS_ID) {
            return description;
        }
    }
    return nullptr;
}

}  // namespace

void DeleteExporter::operator()(SceneExport* exporter) const {
    delete exporter;
}

Exporter LoadExporter(const fs::path& plugIn, const std::vector<std::string>& plugInDirectories) {
    const std::string file = plugIn.string();
    const HMODULE module = LoadLibraryA(file.c_str());
    if (!module) {
        const std::string reason = ReasonOfLoadFailure();
        throw Failure(
            kExitNoPlugIn, file,
            "the plug-in did not load: " + reason + ReasonWithConverter(plugInDirectories));
    }
    const LibraryFunctions functions = FunctionsOf(module, file);
    const ULONG version = functions.version();
    if (version != VERSION_3DSMAX) {
        throw Failure(kExitNoPlugIn, file,
                      "made for version " + Hexadecimal(version) + " of the host, expected " +
                          Hexadecimal(VERSION_3DSMAX));
    }
    ClassDesc* const exporterClass = FindExporterClass(functions);
    if (!exporterClass) {
        throw Failure(kExitNoPlugIn, file, "offers no exporter");
    }
    Exporter exporter(static_cast<SceneExport*>(exporterClass->Create(FALSE)));
    if (!exporter) {
        throw Failure(kExitNoPlugIn, file, "makes no exporter");
    }
    return exporter;
}

void CheckConverter(const std::vector<std::string>& plugInDirectories) {
    const Converter converter(plugInDirectories);
    if (!converter.Module()) {
        return;
    }
    std::vector<std::string> missing;
    for (const char* const name :
         {"InitSpecialHalden", "WriteKTActorFile", "WriteKTMotionFile", "EndSpecialHalden"}) {
        if (!GetProcAddress(converter.Module(), name)) {
            missing.emplace_back(name);
        }
    }
    if (!missing.empty()) {
        throw Failure(kExitNoPlugIn, converter.File(),
                      "is no converter library: does not export " + kta::Joined(missing));
    }
}

bool TakeReadingFromConverter(const std::vector<std::string>& plugInDirectories) {
    const Converter converter(plugInDirectories);
    const auto leaveReading =
        converter.Module()
            ? win32::ModuleFunction<void (*)(bool)>(converter.Module(), "SpecialHaldenLeaveReading")
            : nullptr;
    if (leaveReading) {
        leaveReading(true);
    }
    return leaveReading != nullptr;
}

std::vector<std::string> ConverterFaults(const std::vector<std::string>& plugInDirectories) {
    const Converter converter(plugInDirectories);
    std::vector<std::string> faults;
    if (!converter.Module()) {
        return faults;
    }
    using FaultsFunction = const char* (*)();
    const auto specialHaldenFaults =
        win32::ModuleFunction<FaultsFunction>(converter.Module(), "SpecialHaldenFaults");
    if (specialHaldenFaults) {
        std::istringstream lines(specialHaldenFaults());
        for (std::string line; std::getline(lines, line);) {
            faults.push_back(line);
        }
    }
    return faults;
}

std::optional<fs::path> ConverterFile(const std::vector<std::string>& plugInDirectories) {
    for (const std::string& directory : plugInDirectories) {
        for (const char* const name : kConverterNames) {
            std::error_code ignored;
            if (fs::exists(fs::path(directory) / name, ignored)) {
                return fs::path(directory) / name;
            }
        }
    }
    return std::nullopt;
}

}  // namespace maxhost::app
