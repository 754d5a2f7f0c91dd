#include "host/assimp/texture_search.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "host/assimp/text.h"
#include "host/file_name.h"

namespace maxhost::import {
namespace {

namespace fs = std::filesystem;

int HexDigit(char c) {
    return c >= '0' && c <= '9'   ? c - '0'
           : c >= 'a' && c <= 'f' ? c - 'a' + 10
           : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                  : -1;
}

// A URI's path: without "file://", with the characters that %XX stand for.
std::string FromUri(std::string_view uri) {
    constexpr std::string_view kScheme = "file://";
    uri.remove_prefix(uri.starts_with(kScheme) ? kScheme.size() : 0);
    std::string text;
    for (std::size_t i = 0; i < uri.size(); ++i) {
        const bool isCode = uri[i] == '%' && i + 2 < uri.size() && HexDigit(uri[i + 1]) >= 0 &&
                            HexDigit(uri[i + 2]) >= 0;
        text +=
            isCode ? static_cast<char>(16 * HexDigit(uri[i + 1]) + HexDigit(uri[i + 2])) : uri[i];
        i += isCode ? 2 : 0;
    }
    return text;
}

// The names between separators; "." and nothing are none.
std::vector<std::string> PartsOf(std::string_view path) {
    std::vector<std::string> parts;
    while (!path.empty()) {
        const std::size_t end = std::min(path.find_first_of("/\\"), path.size());
        if (const std::string_view part = path.substr(0, end); !part.empty() && part != ".") {
            parts.emplace_back(part);
        }
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return parts;
}

// Whether files are found by names in other letters, capital or small, than their own.
#ifdef _WIN32
constexpr bool kFoldsLetters = true;
#else
constexpr bool kFoldsLetters = false;
#endif

// What the path may mean, likelier first: itself, and what it is as a URI. No path has a NUL.
std::vector<std::string> ReadingsOf(const std::string& path) {
    std::vector<std::string> readings = {path, FromUri(path)};
    readings.resize(readings[0] == readings[1] ? 1 : 2);
    std::erase_if(readings,
                  [](const std::string& text) { return text.find('\0') != std::string::npos; });
    return readings;
}

}  // namespace

std::set<std::string> FileNamesOf(const std::string& path) {
    std::set<std::string> names;
    for (const std::string& text : ReadingsOf(path)) {
        if (const std::vector<std::string> parts = PartsOf(text); !parts.empty()) {
            names.insert(parts.back());
        }
    }
    return names;
}

TextureSearch::TextureSearch(const std::string& model) {
    std::error_code ignored;
    const fs::path path = fs::absolute(model, ignored).lexically_normal();
    folder_ = path.parent_path();
    subfolders_ = {path.stem().string() + ".fbm", "textures", "maps", "images", "../textures"};
}

const std::string& TextureSearch::NameOf(const std::string& path) {
    const auto [known, isNew] = known_.try_emplace(path);
    if (isNew) {
        known->second = Search(path);
    }
    return known->second.name;
}

void TextureSearch::Note(const fs::path& path) {
    asked_.insert(path.lexically_normal().string());
}

bool TextureSearch::IsFile(const fs::path& path) {
    Note(path);
    std::error_code error;
    return fs::is_regular_file(path, error);
}

TextureFile TextureSearch::Search(const std::string& path) {
    // A path of another system is a strange name of this one, and no place to look at.
    const bool isAbsolute = path.starts_with('/') && IsFile(path);
    if (isAbsolute ||
        (!path.empty() && path.find('\0') == std::string::npos && !path.starts_with('/') &&
         IsFile(folder_ / path) && IsSpelledAsOnDisk(path))) {
        return {path, isAbsolute ? path : (folder_ / path).lexically_normal().string()};
    }
    for (const std::string& text : ReadingsOf(path)) {
        if (const auto file = Beside(text)) {
            const std::string name = file->lexically_relative(folder_).generic_string();
            bool isRecoded = false;
            ToUtf8(name, &isRecoded);
            return {isRecoded ? path : name, file->string()};
        }
    }
    return {path, ""};
}

// Of a file from the model's folder on.
bool TextureSearch::IsSpelledAsOnDisk(const std::string& path) {
    if (!kFoldsLetters || fs::path(path).is_absolute()) {
        return true;
    }
    fs::path place = folder_;
    for (const std::string& part : PartsOf(path)) {
        if (part == "..") {
            place = place.parent_path();
            continue;
        }
        const Names& entries = EntriesOf(place);
        const auto found = entries.find(InSmallLetters(part));
        if (found != entries.end() && found->second != part) {
            return false;
        }
        place /= part;
    }
    // Elsewhere it is no separator.
    return path.find('\\') == std::string::npos;
}

std::optional<fs::path> TextureSearch::Beside(std::string_view path) {
    const std::vector<std::string> parts = PartsOf(path);
    if (parts.empty()) {
        return std::nullopt;
    }
    std::optional<fs::path> place = folder_;
    fs::path asItStands = folder_;
    for (const std::string& part : parts) {
        asItStands /= part;
        place = !place         ? std::nullopt
                : part == ".." ? std::optional(place->parent_path())
                               : Within(*place, part);
    }
    if (!place) {
        Note(asItStands);
    } else if (IsFile(*place)) {
        return place;
    }
    if (const fs::path file = In(folder_, parts.back()); IsFile(file)) {
        return file;
    }
    for (const std::string& name : subfolders_) {
        const bool isAbove = name.starts_with("../");
        const fs::path folder =
            isAbove ? In(folder_.parent_path(), name.substr(3)) : In(folder_, name);
        if (const fs::path file = In(folder, parts.back()); IsFile(file)) {
            return file;
        }
    }
    return std::nullopt;
}

fs::path TextureSearch::In(const fs::path& folder, const std::string& name) {
    return Within(folder, name).value_or(folder / name);
}

// The entry of that name; one that differs in capital letters alone where there is no better one.
std::optional<fs::path> TextureSearch::Within(const fs::path& folder, const std::string& name) {
    std::error_code error;
    const bool exists = fs::exists(folder / name, error);
    if (exists && !kFoldsLetters) {
        return folder / name;
    }
    const Names& entries = EntriesOf(folder);
    const auto found = entries.find(InSmallLetters(name));
    return found != entries.end() ? std::optional(folder / found->second)
           : exists               ? std::optional(folder / name)
                                  : std::nullopt;
}

const TextureSearch::Names& TextureSearch::EntriesOf(const fs::path& folder) {
    const auto [known, isNew] = entries_.try_emplace(folder);
    if (isNew) {
        std::error_code error;
        std::set<std::string> names;
        for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
             entry.increment(error)) {
            names.insert(entry->path().filename().string());
        }
        for (const std::string& name : names) {
            known->second.emplace(InSmallLetters(name), name);
        }
    }
    return known->second;
}

std::vector<TextureFile> TextureSearch::Files() const {
    std::map<std::string, std::string> byName;
    for (const auto& [path, file] : known_) {
        byName.emplace(file.name, file.file);
    }
    std::vector<TextureFile> files;
    for (const auto& [name, file] : byName) {
        files.push_back({name, file});
    }
    return files;
}

std::string TextureSearch::Places() const {
    std::string text = "beside the model and in its folders ";
    for (const std::string& name : subfolders_) {
        text += (name == subfolders_.front()  ? ""
                 : name == subfolders_.back() ? " and "
                                              : ", ") +
                ToUtf8(name);
    }
    return text;
}

}  // namespace maxhost::import
