#include "host/app/batch_scenes.h"

#include <algorithm>
#include <fstream>
#include <set>
#include <string_view>
#include <system_error>
#include <unordered_map>
#include <utility>

#include "host/app/exit_status.h"
#include "host/app/loaded_scene.h"
#include "host/app/places.h"
#include "host/file_name.h"
#include "kta/text.h"

namespace maxhost::app {
namespace {

namespace fs = std::filesystem;

// ---------------------------------------------------------------- kinds of files

bool IsHidden(const fs::path& path) {
    return path.filename().string().starts_with('.');
}

// A preview, or an index of a batch, that an export made: beside an export file of that name.
bool IsOfFormerExport(const fs::path& path) {
    const std::string name = path.filename().string();
    for (const char* const ending :
         {".hdo.glb", ".hdo.index.json", ".hdo.animations.index.json", ".hdo.textures.json"}) {
        if (kta::EndsWithIgnoringCase(name, ending)) {
            return true;
        }
    }
    std::error_code ignored;
    return kta::EndsWithIgnoringCase(name, ".glb") &&
           fs::exists(fs::path(path).replace_extension() += "temp1", ignored);
}

bool IsScene(const fs::path& path) {
    static const std::vector<std::string> endings = SceneEndings();
    const std::string name = path.string();
    const bool isKnown = std::ranges::any_of(endings, [&](const std::string& ending) {
        return kta::EndsWithIgnoringCase(name, ending);
    });
    return isKnown || (kta::EndsWithIgnoringCase(name, ".json") && IsSceneDescription(name));
}

// ---------------------------------------------------------------- patterns

// Behind the bracket's end; `pattern` begins behind "[". Nothing where it does not end.
std::optional<std::string_view> MatchBracket(char c, std::string_view pattern, bool& matches) {
    const bool isNegated = pattern.starts_with('!') || pattern.starts_with('^');
    pattern.remove_prefix(isNegated ? 1 : 0);
    bool isIn = false;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        if (pattern[i] == ']' && i > 0) {
            matches = isIn != isNegated;
            return pattern.substr(i + 1);
        }
        const bool isRange =
            i + 2 < pattern.size() && pattern[i + 1] == '-' && pattern[i + 2] != ']';
        isIn = isIn || (isRange ? pattern[i] <= c && c <= pattern[i + 2] : pattern[i] == c);
        i += isRange ? 2 : 0;
    }
    return std::nullopt;
}

// What is left of the pattern where its first character matches; `pattern` is not empty.
std::optional<std::string_view> MatchOne(char c, std::string_view pattern) {
    if (pattern.front() == '[') {
        bool matches = false;
        if (const auto rest = MatchBracket(c, pattern.substr(1), matches)) {
            return matches ? rest : std::nullopt;
        }
    }
    return pattern.front() == '?' || pattern.front() == c ? std::optional(pattern.substr(1))
                                                          : std::nullopt;
}

bool HasWildcards(std::string_view text) {
    return text.find_first_of("*?[") != text.npos;
}

[[noreturn]] void Refuse(const std::string& item, const std::string& text) {
    throw Failure(kExitRefused, item, text);
}

// None of what is no directory; one that cannot be read may hide scenes.
std::vector<fs::path> Entries(const fs::path& directory) {
    const fs::path place = directory.empty() ? fs::path(".") : directory;
    std::error_code error;
    std::vector<fs::path> entries;
    for (fs::directory_iterator entry(place, error), end; !error && entry != end;
         entry.increment(error)) {
        entries.push_back(directory / entry->path().filename());
    }
    if (error && fs::is_directory(place)) {
        Refuse(place.string(), "cannot be read: " + error.message());
    }
    std::ranges::sort(entries, {}, [](const fs::path& path) { return path.filename().string(); });
    return entries;
}

// ---------------------------------------------------------------- finding

// Directories, with the part of the pattern that was looked for in them.
using Visited = std::set<std::pair<fs::path, std::size_t>>;

bool IsFirstVisit(const fs::path& directory, std::size_t part, Visited& visited) {
    std::error_code ignored;
    const fs::path real = fs::canonical(directory.empty() ? "." : directory, ignored);
    return visited.insert({real, part}).second;
}

class SceneFinder {
  public:
    SceneFinder(const std::optional<std::string>& outputDirectory, std::istream& in) : in_(in) {
        if (outputDirectory) {
            outputDirectory_ = Absolute(*outputDirectory);
        }
    }

    void AddItem(const std::string& item);
    std::vector<BatchScene> Take() { return std::move(scenes_); }
    void CheckOutputs() const;

  private:
    void Add(const fs::path& file, const fs::path& root);
    void AddDirectory(const fs::path& directory, const fs::path& root, Visited& visited);
    void AddMatches(const fs::path& directory, const std::vector<std::string>& parts,
                    std::size_t part, const fs::path& root, Visited& visited);
    void AddPattern(const std::string& pattern);
    void AddList(std::istream& list, const std::string& name, const fs::path& directory);

    std::istream& in_;
    std::optional<fs::path> outputDirectory_;
    std::vector<BatchScene> scenes_;
    std::size_t found_ = 0;  // those found again included
    std::unordered_map<std::string, std::size_t> byOutput_;
};

// One file's several names give one key.
std::string KeyOf(const fs::path& file) {
    std::error_code error;
    const fs::path canonical = fs::weakly_canonical(file, error);
    std::string key = (error ? file : canonical).string();
#ifdef _WIN32
    key = InSmallLetters(std::move(key));
#endif
    return key;
}

// What to do where both would be exported to one file.
std::string HowToTellApart(const fs::path& file, const fs::path& other) {
    if (Absolute(file.string()).parent_path() != Absolute(other.string()).parent_path()) {
        return "expected the directory that holds both (--batch DIR), whose subdirectories -o "
               "keeps";
    }
    const std::string ending =
        IsNamedAsDescription(file.string()) ? ".maxscene.json" : file.extension().string();
    return "expected one of them alone, which a list names or a pattern, and another directory for "
           "the other: --batch '" +
           (file.parent_path() / ("*" + ending)).string() + "' -o DIR";
}

void SceneFinder::Add(const fs::path& file, const fs::path& root) {
    ++found_;
    const fs::path absolute = Absolute(file.string());
    const fs::path beside = absolute.parent_path() / ExportName(absolute);
    const fs::path place = beside.lexically_relative(Absolute(root.string()));
    const fs::path output = outputDirectory_ ? *outputDirectory_ / place : beside;
    const auto [former, isNew] = byOutput_.emplace(KeyOf(output), scenes_.size());
    if (isNew) {
        scenes_.push_back({file.string(), absolute, output.lexically_normal(), place});
        return;
    }
    const BatchScene& other = scenes_[former->second];
    if (KeyOf(absolute) != KeyOf(other.file)) {
        Refuse(file.string(), "its export would be " + output.string() + " as that of " +
                                  other.name + " is, " + HowToTellApart(file, other.name));
    }
}

// A directory that several links lead to counts once.
void SceneFinder::AddDirectory(const fs::path& directory, const fs::path& root, Visited& visited) {
    if (!IsFirstVisit(directory, 0, visited)) {
        return;
    }
    std::error_code error;
    for (const fs::path& entry : Entries(directory)) {
        if (IsHidden(entry)) {
            continue;
        }
        if (fs::is_directory(entry, error)) {
            AddDirectory(entry, root, visited);
        } else if (fs::is_regular_file(entry, error) && !IsOfFormerExport(entry) &&
                   IsScene(entry)) {
            Add(entry, root);
        }
    }
}

// Of a pattern the parts from `part` on, below `directory`.
void SceneFinder::AddMatches(const fs::path& directory, const std::vector<std::string>& parts,
                             std::size_t part, const fs::path& root, Visited& visited) {
    std::error_code error;
    const bool isLast = part + 1 == parts.size();
    if (parts[part] == "**") {
        if (!isLast) {
            AddMatches(directory, parts, part + 1, root, visited);
        }
        if (!IsFirstVisit(directory, part, visited)) {
            return;
        }
    }
    for (const fs::path& entry : Entries(directory)) {
        const std::string name = entry.filename().string();
        const bool isAny = parts[part] == "**";
        if (IsHidden(entry) && !parts[part].starts_with('.')) {
            continue;
        }
        if (fs::is_directory(entry, error)) {
            if (isAny) {
                AddMatches(entry, parts, part, root, visited);
            } else if (!isLast && MatchesWildcards(name, parts[part])) {
                AddMatches(entry, parts, part + 1, root, visited);
            }
        } else if (isLast && (isAny || MatchesWildcards(name, parts[part])) &&
                   fs::is_regular_file(entry, error) && !IsOfFormerExport(entry) &&
                   IsScene(entry)) {
            Add(entry, root);
        }
    }
}

void SceneFinder::AddPattern(const std::string& pattern) {
    fs::path fixed;
    std::vector<std::string> parts;
    for (const fs::path& part : fs::path(pattern)) {
        const std::string text = part.string();
        if (parts.empty() && !HasWildcards(text)) {
            fixed /= part;
        } else if (!(text == "**" && !parts.empty() && parts.back() == "**")) {
            parts.push_back(text);
        }
    }
    Visited visited;
    AddMatches(fixed, parts, 0, fixed.empty() ? fs::path(".") : fixed, visited);
}

bool IsInside(const fs::path& file, const fs::path& directory) {
    const fs::path relative = file.lexically_relative(directory);
    return !relative.empty() && *relative.begin() != "..";
}

// The deepest directory that holds both.
fs::path Common(const fs::path& one, const fs::path& other) {
    fs::path common;
    auto part = other.begin();
    for (const fs::path& name : one) {
        if (part == other.end() || *part++ != name) {
            break;
        }
        common /= name;
    }
    return common;
}

void SceneFinder::AddList(std::istream& list, const std::string& name, const fs::path& directory) {
    std::vector<fs::path> files;
    const fs::path own = Absolute(directory.empty() ? "." : directory.string());
    fs::path ofAll;
    bool areInside = true;
    std::string line;
    for (std::size_t number = 1; std::getline(list, line); ++number) {
        constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf", kBlanks = " \t\r";
        line.erase(0, number == 1 && line.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0);
        line.erase(line.find_last_not_of(kBlanks) + 1);
        line.erase(0, std::min(line.find_first_not_of(kBlanks), line.size()));
        if (line.empty() || line.front() == '#') {
            continue;
        }
        if (kta::OneLine(line) != line) {
            Refuse(name, "line " + std::to_string(number) +
                             ": control characters in it, expected a scene's name");
        }
        files.push_back((directory / line).lexically_normal());
        const fs::path file = Absolute(files.back().string());
        ofAll = files.size() == 1 ? file.parent_path() : Common(ofAll, file.parent_path());
        areInside = areInside && IsInside(file, own);
    }
    if (files.empty()) {
        Refuse(name, "no scene in the list, expected a scene a line");
    }
    for (const fs::path& file : files) {
        Add(file, areInside ? own : ofAll);
    }
}

void SceneFinder::AddItem(const std::string& item) {
    if (IsStandardStream(item)) {
        return AddList(in_, SceneName(item), {});
    }
    const std::size_t before = found_;
    std::error_code error;
    const fs::path path(item);
    const fs::file_status status = fs::status(path, error);
    if (fs::is_directory(status)) {
        Visited visited;
        AddDirectory(path == "." ? fs::path() : path, path, visited);
    } else if (fs::exists(status)) {
        if (IsScene(path)) {
            return Add(path, path.parent_path().empty() ? fs::path(".") : path.parent_path());
        }
        std::ifstream list(path, std::ios::binary);
        if (!list) {
            Refuse(item, "cannot be opened for reading");
        }
        // One that a pipe brings stands in no folder.
        return AddList(list, item, fs::is_regular_file(status) ? path.parent_path() : fs::path());
    } else if (HasWildcards(item)) {
        AddPattern(item);
    } else {
        Refuse(item, "no such file, expected a list of scenes, a directory, a pattern or a scene");
    }
    if (before == found_) {
        Refuse(item, fs::is_directory(status) ? "no scene in it or below"
                                              : "no scene matches this pattern");
    }
}

// No export may replace a scene.
void SceneFinder::CheckOutputs() const {
    ExportPlaces places;
    for (const BatchScene& scene : scenes_) {
        places.AddScene(scene);
    }
    for (const BatchScene& scene : scenes_) {
        if (const std::string reason = places.Take(scene.output, scene.name); !reason.empty()) {
            Refuse(scene.name, reason);
        }
    }
}

}  // namespace

void ExportPlaces::AddScene(const BatchScene& scene) {
    scenes_.emplace(KeyOf(scene.file), scene.name);
}

std::string ExportPlaces::Take(const fs::path& output, const std::string& name) {
    for (const char* const suffix : {"", "temp1", "temp2", ".glb", ".log", ".index.json",
                                     ".animations.index.json", ".textures.json"}) {
        const auto found = scenes_.find(KeyOf(output.string() + suffix));
        if (found != scenes_.end()) {
            return "its export would replace the scene " + found->second +
                   ", expected another directory for it (-o)";
        }
    }
    const auto [former, isNew] = exports_.emplace(KeyOf(output), name);
    return isNew ? std::string()
                 : "its export would be " + output.string() + " as that of " + former->second +
                       " is, expected another place for one of them";
}

bool MatchesWildcards(std::string_view name, std::string_view pattern) {
    // Where the last star stands, and what it has taken so far.
    std::optional<std::string_view> star;
    std::string_view behindStar;
    while (!name.empty()) {
        if (pattern.starts_with('*')) {
            pattern.remove_prefix(1);
            star = pattern;
            behindStar = name;
            continue;
        }
        const auto rest = pattern.empty() ? std::nullopt : MatchOne(name.front(), pattern);
        if (rest) {
            pattern = *rest;
            name.remove_prefix(1);
        } else if (star) {
            behindStar.remove_prefix(1);
            name = behindStar;
            pattern = *star;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*') == pattern.npos;
}

std::vector<BatchScene> FindBatchScenes(const std::vector<std::string>& items,
                                        const std::optional<std::string>& outputDirectory,
                                        std::istream& in) {
    SceneFinder finder(outputDirectory, in);
    for (const std::string& item : items) {
        finder.AddItem(item);
    }
    finder.CheckOutputs();
    return finder.Take();
}

}  // namespace maxhost::app
