#include "host/app/places.h"

#include <array>
#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>
#include <utility>

#include "host/app/exit_status.h"
#include "kta/text.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace maxhost::app {

namespace {

namespace fs = std::filesystem;

#ifdef _WIN32
constexpr const char* kPlugInName = "hdoexport.dle";
#else
constexpr const char* kPlugInName = "hdoexport.so";
#endif

fs::path FromEnvironment(const char* name) {
    const char* const value = std::getenv(name);
    return value ? fs::path(value) : fs::path();
}

fs::path UserConfigDirectory() {
#ifdef _WIN32
    return FromEnvironment("APPDATA");
#else
    // A relative $XDG_CONFIG_HOME is to be ignored, says the XDG Base Directory standard.
    if (const fs::path xdg = FromEnvironment("XDG_CONFIG_HOME"); xdg.is_absolute()) {
        return xdg;
    }
    const fs::path home = FromEnvironment("HOME");
    return home.empty() ? home : home / ".config";
#endif
}

constexpr std::string_view kDescriptionEnding = ".maxscene.json";

std::string StemOf(const fs::path& scene) {
    const std::string name = scene.filename().string();
    const bool isDescription =
        IsNamedAsDescription(name) && name.size() > kDescriptionEnding.size();
    return isDescription ? name.substr(0, name.size() - kDescriptionEnding.size())
                         : scene.stem().string();
}

// By its name, which may end in a separator, or because there is one.
bool IsDirectory(const fs::path& given) {
    std::error_code error;
    return !given.has_filename() || fs::is_directory(Absolute(given.string()), error);
}

}  // namespace

bool IsNamedAsDescription(const std::string& name) {
    return kta::EndsWithIgnoringCase(name, kDescriptionEnding);
}

fs::path Absolute(const std::string& path) {
    fs::path absolute = fs::absolute(path).lexically_normal();
    return absolute.has_filename() || absolute == absolute.root_path() ? absolute
                                                                       : absolute.parent_path();
}

kta::PrivateDirectory TemporaryRoom() {
#ifdef _WIN32
    constexpr const char* kVariable = "TMP";
#else
    constexpr const char* kVariable = "TMPDIR";
#endif
    const char* const named = std::getenv(kVariable);
    fs::path directory = named != nullptr ? named : "";
    try {
        directory = fs::absolute(fs::temp_directory_path());
        return kta::PrivateDirectory(directory);
    } catch (const fs::filesystem_error& error) {
        throw Failure(kExitRefused, directory.string(),
                      "nothing can be made there (" + error.code().message() + "), expected " +
                          kVariable + " to name a directory for temporary files");
    }
}

fs::path ProgramDirectory() {
#ifdef _WIN32
    std::array<char, 32768> name{};
    GetModuleFileNameA(nullptr, name.data(), static_cast<DWORD>(name.size()));
    return fs::path(name.data()).parent_path();
#else
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    return error ? fs::current_path() : program.parent_path();
#endif
}

fs::path ProgramFile() {
#ifdef _WIN32
    return ProgramDirectory() / "hdo-export.exe";
#else
    return ProgramDirectory() / "hdo-export";
#endif
}

namespace {

// Several names may be one file's.
bool AreOne(const fs::path& file, const fs::path& other) {
    std::error_code error;
    return file == other || fs::equivalent(file, other, error);
}

// Whether an export to `exportFile` would put a file in this one's place; its log as well, where no
// option names another place for that.
bool IsOfExport(const fs::path& file, const fs::path& exportFile, bool withLog) {
    for (const char* const suffix : {"", "temp1", "temp2", ".glb", ".log", ".textures.json"}) {
        const bool isLog = std::string_view(suffix) == ".log";
        if ((withLog || !isLog) && AreOne(file, exportFile.string() + suffix)) {
            return true;
        }
    }
    return false;
}

// The converter's own file is put in place under the export file's name.
void CheckReplaceable(const Options& options, const fs::path& exportFile) {
    const auto refuse = [&](const std::string& reason) {
        throw Failure(kExitRefused, exportFile.string(), reason);
    };
    if (IsDirectory(exportFile)) {
        refuse("names a directory, expected a file to export to");
    }
    std::error_code error;
    const fs::path absolute = Absolute(exportFile.string());
    const fs::file_status former = fs::status(absolute, error);
    if (fs::exists(former) && !fs::is_regular_file(former)) {
        refuse("is not a regular file, expected a file to export to");
    }
    if (IsOfExport(Absolute(options.scene), absolute, !options.log)) {
        refuse("the export would replace the scene itself, expected another file to export to");
    }
}

}  // namespace

std::string ExportName(const fs::path& scene) {
    return StemOf(scene) + ".hdo";
}

fs::path ExportFile(const Options& options) {
    const fs::path scene = Absolute(options.scene);
    const fs::path file =
        options.output ? fs::path(*options.output) : scene.parent_path() / ExportName(scene);
    CheckReplaceable(options, file);
    const fs::path absolute = Absolute(file.string());
    if (options.saveScene && IsOfExport(Absolute(*options.saveScene), absolute, !options.log)) {
        throw Failure(kExitRefused, "--save-scene",
                      *options.saveScene + " is a file of the export, expected another one");
    }
    return absolute;
}

std::string SuspectFile(const Options& options) {
    if (options.saveScene == "-") {
        return *options.saveScene;
    }
    Options saved = options;
    saved.saveScene.reset();
    const fs::path scene = Absolute(options.scene);
    saved.output =
        options.saveScene ? options.saveScene
        : options.output
            ? options.output
            : (scene.parent_path() / (StemOf(scene) + ".suspect.maxscene.json")).string();
    return ExportFile(saved).string();
}

fs::path SidecarPlace(const Options& options) {
    if (options.scene.empty() || options.scene == "-") {
        return {};
    }
    const fs::path scene(options.scene);
    return scene.parent_path() / (StemOf(scene) + ".hdo.json");
}

std::vector<std::string> FilesOfOptions(const Options& options) {
    std::vector<std::string> files;
    if (options.preset) {
        files.push_back(Absolute(*options.preset).string());
    }
    if (const fs::path sidecar = SidecarPlace(options); options.sidecar && !sidecar.empty()) {
        files.push_back(Absolute(sidecar.string()).string());
    }
    return files;
}

namespace {

// The file that an option names beside the export's own.
std::optional<fs::path> FileBeside(const Options& options, const char* option, const char* what,
                                   const std::optional<std::string>& given) {
    if (!given) {
        return std::nullopt;
    }
    if (IsDirectory(*given)) {
        throw Failure(kExitRefused, *given,
                      std::string("names a directory, expected a file for ") + what);
    }
    const fs::path file = Absolute(*given);
    const auto refuse = [&](const std::string& found) {
        throw Failure(kExitRefused, option,
                      file.string() + " is " + found + ", expected another one");
    };
    const bool isLog = &given == &options.log;
    const bool hasScene = !options.scene.empty();
    if (hasScene && IsOfExport(file, ExportFile(options), !isLog && !options.log)) {
        refuse("a file of the export");
    }
    if (hasScene && AreOne(file, Absolute(options.scene))) {
        refuse("the scene itself");
    }
    const bool isPreset = &given == &options.savePreset;
    if (const fs::path sidecar = SidecarPlace(options);
        !isPreset && !sidecar.empty() && AreOne(file, Absolute(sidecar.string()))) {
        refuse("where the scene's own options stand");
    }
    const std::pair<const char*, const std::optional<std::string>&> others[] = {
        {"--save-preset", options.savePreset},
        {"--save-scene", options.saveScene},
        {"--log", options.log},
        {"--receipt", options.receipt},
        {"--report", options.report}};
    for (const auto& [other, name] : others) {
        if (&name != &given && name && AreOne(file, Absolute(*name))) {
            refuse(std::string("the file of ") + other);
        }
    }
    return file;
}

}  // namespace

std::optional<fs::path> LogFile(const Options& options) {
    return FileBeside(options, "--log", "the log", options.log);
}

std::optional<fs::path> ReceiptFile(const Options& options) {
    return FileBeside(options, "--receipt", "the receipt", options.receipt);
}

std::optional<fs::path> ReportFile(const Options& options) {
    return FileBeside(options, "--report", "the report", options.report);
}

std::optional<fs::path> PresetFileToSave(const Options& options) {
    return FileBeside(options, "--save-preset", "the preset", options.savePreset);
}

TextureFiles TexturesOf(const Options& options, std::vector<import::EmbeddedTexture> textures) {
    const fs::path exportFile = ExportFile(options);
    if (!options.textures) {
        return TextureFiles(std::move(textures), exportFile, Absolute(options.scene));
    }
    const fs::path directory = Absolute(*options.textures);
    return directory == exportFile.parent_path()
               ? TextureFiles(std::move(textures), exportFile, Absolute(options.scene),
                              ReplacesFiles::yes)
               : TextureFiles(std::move(textures), directory);
}

fs::path PlugInFile(const Options& options) {
    return options.plugin ? Absolute(*options.plugin) : ProgramDirectory() / kPlugInName;
}

std::vector<std::string> PlugInDirectories(const Options& options) {
    if (options.pluginDirs.empty()) {
        return {ProgramDirectory().string()};
    }
    std::vector<std::string> directories;
    for (const std::string& directory : options.pluginDirs) {
        directories.push_back(Absolute(directory).string());
    }
    return directories;
}

std::optional<fs::path> ConfigDirectory(const Options& options) {
    if (options.configDir) {
        return Absolute(*options.configDir);
    }
    if (!options.savedSettings) {
        return std::nullopt;
    }
    const fs::path user = UserConfigDirectory();
    if (user.empty()) {
        throw Failure(
            kExitRefused, "--saved-settings",
            "the user has no configuration directory, expected --config-dir in its place");
    }
    return user / "hdo-export";
}

fs::path SettingsFile(const fs::path& configDirectory) {
    return configDirectory / "KTAExp2.cfg";
}

ExportOptions ReadSettings(const fs::path& configDirectory) {
    ExportOptions options = DefaultExportOptions();
    std::ifstream(SettingsFile(configDirectory), std::ios::binary)
        .read(reinterpret_cast<char*>(&options), sizeof(options));
    return options;
}

}  // namespace maxhost::app
