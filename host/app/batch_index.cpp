#include "host/app/batch_index.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <set>
#include <system_error>
#include <utility>

#include "host/app/places.h"
#include "host/app/plugin_loader.h"
#include "host/converter/file_hash.h"
#include "kta/whole_file.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#include <link.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <ctime>
#endif

namespace maxhost::app {
namespace {

namespace fs = std::filesystem;

constexpr int kIndexVersion = 1;

// ---------------------------------------------------------------- programs

#ifdef _WIN32
// The libraries that go with the program stand beside it.
std::vector<fs::path> LoadedModules() {
    std::vector<fs::path> modules = {ProgramFile()};
    std::error_code ignored;
    for (const fs::directory_entry& entry : fs::directory_iterator(ProgramDirectory(), ignored)) {
        if (entry.path().extension() == ".dll") {
            modules.push_back(entry.path());
        }
    }
    return modules;
}
#else
std::vector<fs::path> LoadedModules() {
    std::vector<fs::path> modules;
    const auto add = [](dl_phdr_info* module, std::size_t, void* context) {
        const std::string name = module->dlpi_name;
        // The program itself has no name, and what the kernel gives has no file.
        if (name.empty() || name.starts_with('/')) {
            static_cast<std::vector<fs::path>*>(context)->push_back(
                name.empty() ? fs::path("/proc/self/exe") : fs::path(name));
        }
        return 0;
    };
    dl_iterate_phdr(add, &modules);
    return modules;
}
#endif

// ---------------------------------------------------------------- files of an index

// As the index names it: from the index's own directory, so that a tree can be moved as a whole.
std::string NameFrom(const fs::path& directory, const fs::path& file) {
    const fs::path relative = file.lexically_relative(directory);
    return (relative.empty() ? file : relative).generic_string();
}

// Of an input or a file of the index.
fs::path FileOf(const fs::path& directory, const Json& described) {
    const std::string name = described.contains("fileEscaped")
                                 ? PercentUnescaped(described["fileEscaped"].get<std::string>())
                                 : described.at("file").get<std::string>();
    return (directory / fs::path(name)).lexically_normal();
}

bool IsRegular(const fs::path& file) {
    std::error_code ignored;
    return fs::is_regular_file(file, ignored);
}

Json Described(const fs::path& directory, const fs::path& file) {
    const std::string name = NameFrom(directory, file);
    Json json = {
        {IsUtf8(name) ? "file" : "fileEscaped", IsUtf8(name) ? name : PercentEscaped(name)}};
    if (!IsRegular(file)) {
        json["missing"] = true;
        return json;
    }
    const halden::FileHash hash = halden::HashFile(file);
    json["bytes"] = hash.bytes;
    json["sha256"] = hash.sha256;
    return json;
}

// Sizes are compared first, which costs nothing.
bool IsUnchanged(const fs::path& file, const Json& described) {
    if (!IsRegular(file)) {
        return described.contains("missing");
    }
    std::error_code error;
    return !described.contains("missing") &&
           fs::file_size(file, error) == described.at("bytes").get<std::uint64_t>() &&
           halden::HashFile(file).sha256 == described.at("sha256").get<std::string>();
}

// The files that the options name, by their words.
std::vector<fs::path> FilesOf(const std::vector<std::string>& options) {
    std::vector<fs::path> files;
    for (const std::string& word : options) {
        if (const std::size_t equals = word.find('=');
            equals != word.npos && IsRegular(word.substr(equals + 1))) {
            files.push_back(Absolute(word.substr(equals + 1)));
        }
    }
    return files;
}

// The options as the index has them; --textures' directory as it has files.
Json OptionsIn(const Recipe& recipe) {
    constexpr std::string_view kTextures = "--textures=";
    Json options = Json::array();
    for (const std::string& word : recipe.options) {
        options.push_back(
            Text(word.starts_with(kTextures)
                     ? std::string(kTextures) +
                           NameFrom(recipe.output.parent_path(), word.substr(kTextures.size()))
                     : word));
    }
    return options;
}

// Why the export is to be done again, by an index that is well-formed. Throws Json::exception
// where it is not, and std::system_error where a file cannot be read.
std::string WhyAgain(const Json& index, const Recipe& recipe) {
    const fs::path directory = recipe.output.parent_path();
    if (index.at("program").get<std::string>() != recipe.program || recipe.program.empty()) {
        return "the program has changed";
    }
    if (index.at("options") != OptionsIn(recipe)) {
        return "the options have changed";
    }
    std::set<fs::path> read;
    for (const Json& input : index.at("inputs")) {
        const fs::path file = FileOf(directory, input);
        read.insert(file);
        if (!IsUnchanged(file, input)) {
            return file.filename().string() + " has changed";
        }
    }
    std::vector<fs::path> named = FilesOf(recipe.options);
    named.push_back(recipe.scene);
    for (const fs::path& file : named) {
        if (!read.contains(file)) {
            return file.filename().string() + " was not read for it";
        }
    }
    for (const Json& made : index.at("files")) {
        const fs::path file = FileOf(directory, made);
        if (!IsUnchanged(file, made)) {
            return file.filename().string() + " is not what was exported";
        }
    }
    return {};
}

#ifdef _WIN32
std::int64_t TimeNow() {
    return fs::file_time_type::clock::now().time_since_epoch().count();
}

std::int64_t ChangeTime(const fs::path& file) {
    std::error_code ignored;
    return fs::last_write_time(file, ignored).time_since_epoch().count();
}
#else
std::int64_t Nanoseconds(const timespec& time) {
    return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

std::int64_t TimeNow() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME_COARSE, &now);  // what file systems stamp with
    return Nanoseconds(now);
}

// Also of a file that took another's place, whose own time is older.
std::int64_t ChangeTime(const fs::path& file) {
    struct stat status {};
    return stat(file.c_str(), &status) == 0 ? Nanoseconds(status.st_ctim) : 0;
}
#endif

}  // namespace

std::string HashOfPrograms(const Options& options) {
    std::vector<fs::path> modules = LoadedModules();
    modules.push_back(PlugInFile(options));
    if (const auto converter = ConverterFile(PlugInDirectories(options))) {
        modules.push_back(*converter);
    }
    std::string hashes;
    try {
        for (const fs::path& module : modules) {
            hashes += halden::HashFile(module).sha256;
        }
    } catch (const std::system_error&) {
        return {};
    }
    return halden::HashText(hashes);
}

fs::path IndexOf(const fs::path& output) {
    return fs::path(output) += ".index.json";
}

FormerExport LookAtFormer(const Recipe& recipe) {
    FormerExport former;
    const fs::path place = IndexOf(recipe.output);
    std::error_code ignored;
    if (!fs::exists(place, ignored)) {
        former.why = "there is no index of a former export";
        return former;
    }
    try {
        std::ifstream file(place, std::ios::binary);
        const Json index = Json::parse(file);
        former.isIndexDamaged = index.at("hdoBatchIndex").get<int>() != kIndexVersion;
        former.warnings = index.at("warnings").get<std::size_t>();
        former.animations =
            index.value("animations", Json::array()).get<std::vector<std::string>>();
        former.why =
            former.isIndexDamaged ? "the index is of another version" : WhyAgain(index, recipe);
    } catch (const Json::exception&) {
        former.isIndexDamaged = true;
        former.why = "the index of the former export is damaged";
    } catch (const std::system_error& error) {
        former.why = error.what();
    }
    return former;
}

ExportStart::ExportStart() : time_(TimeNow()) {
}

void ExportStart::WriteIndex(const Recipe& recipe, const MadeExport& made) const {
    const fs::path directory = recipe.output.parent_path();
    std::set<fs::path> read;
    for (const std::string& input : made.inputs) {
        read.insert(fs::path(input).lexically_normal());
    }
    read.merge(std::set<fs::path>{recipe.scene});
    for (const fs::path& file : FilesOf(recipe.options)) {
        read.insert(file);
    }
    Json index = {{"hdoBatchIndex", kIndexVersion},
                  {"about", "What an export of hdo-export --batch was made of and what it made."},
                  {"program", recipe.program},
                  {"options", OptionsIn(recipe)},
                  {"inputs", Json::array()},
                  {"files", Json::array()},
                  {"warnings", made.warnings}};
    if (!made.animations.empty()) {
        index["animations"] = made.animations;
    }
    for (const fs::path& file : read) {
        index["inputs"].push_back(Described(directory, file));
    }
    for (const std::string& file : made.files) {
        index["files"].push_back(Described(directory, fs::path(file).lexically_normal()));
    }
    const bool hasChanged = std::ranges::any_of(
        read, [this](const fs::path& file) { return ChangeTime(file) >= time_; });
    const fs::path place = IndexOf(recipe.output);
    if (hasChanged || recipe.program.empty()) {
        std::error_code ignored;
        fs::remove(place, ignored);
        return;
    }
    kta::ReplaceWholeFile(place, [&](std::ostream& out) { out << index.dump(2) << '\n'; });
}

// ---------------------------------------------------------------- the lock

OutputLock::OutputLock(fs::path file, std::intptr_t handle)
    : file_(std::move(file)), handle_(handle) {
}

OutputLock::OutputLock(OutputLock&& other) noexcept
    : file_(std::move(other.file_)), handle_(std::exchange(other.handle_, -1)) {
}

#ifdef _WIN32
std::optional<OutputLock> OutputLock::Try(const fs::path& output) {
    const fs::path file = output.parent_path() / ("." + output.filename().string() + ".lock");
    const HANDLE handle = CreateFileW(file.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                      FILE_ATTRIBUTE_HIDDEN | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (handle != INVALID_HANDLE_VALUE) {
        return OutputLock(file, reinterpret_cast<std::intptr_t>(handle));
    }
    const DWORD error = GetLastError();
    return error == ERROR_SHARING_VIOLATION || error == ERROR_ACCESS_DENIED
               ? std::nullopt
               : std::optional(OutputLock(file, -1));
}

OutputLock::~OutputLock() {
    if (handle_ != -1) {
        CloseHandle(reinterpret_cast<HANDLE>(handle_));
    }
}
#else
std::optional<OutputLock> OutputLock::Try(const fs::path& output) {
    const fs::path file = output.parent_path() / ("." + output.filename().string() + ".lock");
    const int handle = open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (handle < 0) {
        return OutputLock(file, -1);
    }
    if (flock(handle, LOCK_EX | LOCK_NB) != 0) {
        const bool isHeld = errno == EWOULDBLOCK;
        close(handle);
        return isHeld ? std::nullopt : std::optional(OutputLock(file, -1));
    }
    // Its former holder may have taken it away meanwhile: then another file stands there.
    struct stat mine {};
    if (fstat(handle, &mine) != 0 || mine.st_nlink == 0) {
        close(handle);
        return std::nullopt;
    }
    return OutputLock(file, handle);
}

OutputLock::~OutputLock() {
    if (handle_ >= 0) {
        unlink(file_.c_str());
        close(static_cast<int>(handle_));
    }
}
#endif

}  // namespace maxhost::app
