#include "kta/texture_files.h"

#include <algorithm>
#include <tuple>

#include "kta/dump.h"
#include "kta/text.h"

namespace kta {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostFiles = 100'000;  // looked at in a place

std::string InSmallLetters(std::string text) {
    for (char& c : text) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return text;
}

std::string Utf8(const fs::path& path) {
    const std::u8string text = path.u8string();
    return ToUtf8(std::string(text.begin(), text.end()));
}

fs::path FromUtf8(const std::string& text) {
    return fs::path(std::u8string(text.begin(), text.end()));
}

std::string BaseName(std::string_view name) {
    const std::size_t separator = name.find_last_of("/\\");
    return ToUtf8(separator == std::string_view::npos ? name : name.substr(separator + 1));
}

bool IsFile(const fs::path& path) {
    std::error_code error;
    return fs::is_regular_file(path, error);
}

// What cannot be read is as good as not there.
template <class Iterator>
std::vector<fs::path> FilesOf(const fs::path& place) {
    std::vector<fs::path> files;
    std::error_code error;
    Iterator at(place, fs::directory_options::skip_permission_denied, error);
    for (std::size_t seen = 0; !error && at != Iterator() && seen < kMostFiles; ++seen) {
        if (IsFile(at->path())) {
            files.push_back(at->path());
        }
        at.increment(error);
    }
    return files;
}

std::ptrdiff_t Depth(const fs::path& path) {
    return std::distance(path.begin(), path.end());
}

}  // namespace

TextureFinder::TextureFinder(std::optional<fs::path> beside, std::vector<fs::path> folders)
    : looksBeside_(beside.has_value()), places_(std::move(folders)) {
    if (beside) {
        places_.insert(places_.begin(), beside->empty() ? fs::path(".") : *beside);
    }
    indexes_.resize(places_.size());
}

const TextureFinder::Index& TextureFinder::IndexOf(std::size_t place) {
    if (!indexes_[place]) {
        std::vector<fs::path> files =
            looksBeside_ && place == 0 ? FilesOf<fs::directory_iterator>(places_[place])
                                       : FilesOf<fs::recursive_directory_iterator>(places_[place]);
        std::sort(files.begin(), files.end(), [](const fs::path& a, const fs::path& b) {
            return std::tuple(Depth(a), a.native()) < std::tuple(Depth(b), b.native());
        });
        Index& index = indexes_[place].emplace();
        for (fs::path& file : files) {
            index[InSmallLetters(Utf8(file.filename()))].push_back(std::move(file));
        }
    }
    return *indexes_[place];
}

std::optional<fs::path> TextureFinder::Find(std::string_view textureFileName) {
    const std::string name = BaseName(textureFileName);
    if (name.empty() || name == "." || name == "..") {
        return std::nullopt;
    }
    for (std::size_t place = 0; place < places_.size(); ++place) {
        if (fs::path direct = places_[place] / FromUtf8(name); IsFile(direct)) {
            return direct;
        }
        const Index& index = IndexOf(place);
        const auto found = index.find(InSmallLetters(name));
        if (found == index.end()) {
            continue;
        }
        const auto& files = found->second;
        const auto same = std::find_if(files.begin(), files.end(), [&](const fs::path& file) {
            return Utf8(file.filename()) == name;
        });
        return same != files.end() ? *same : files.front();
    }
    return std::nullopt;
}

std::string TextureFinder::WhereItLooks() const {
    std::vector<std::string> names;
    for (const fs::path& place : places_) {
        names.push_back(Utf8(place));
    }
    return names.empty() ? "no folder" : "in " + Joined(names);
}

}  // namespace kta
