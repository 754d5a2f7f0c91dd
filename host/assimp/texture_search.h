// Where the files of textures stand that a model names.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "host/assimp/imported_scene.h"

namespace maxhost::import {

// Looks for textures as programs do that read a model on another machine than it was made on: where
// the model says; by that path from the model's folder; then by the name alone beside the model, in
// its folders NAME.fbm, textures, maps and images, and in textures beside its folder. Both
// separators count, %20 and the like are read as in a URI where nothing has the name as it stands,
// and capital letters A to Z are as good as small ones. Each folder is read once.
class TextureSearch {
  public:
    explicit TextureSearch(const std::string& model);

    // What the scene calls the texture that the model calls `path`: `path` itself where a file
    // stands there, or nowhere, or where its place is no UTF-8; else the file's path from the
    // model's folder, with slashes.
    const std::string& NameOf(const std::string& path);

    // The files that were looked for, there or not; absolute.
    const std::set<std::string>& Asked() const { return asked_; }

    // What was looked for, by the names in the scene, each once and sorted.
    std::vector<TextureFile> Files() const;

    // As in "beside the model and in its folders robot.fbm, textures, ...".
    std::string Places() const;

  private:
    using Names = std::map<std::string, std::string>;  // entries by their names in small letters

    void Note(const std::filesystem::path& path);
    bool IsFile(const std::filesystem::path& path);
    TextureFile Search(const std::string& path);
    bool IsSpelledAsOnDisk(const std::string& path);
    std::optional<std::filesystem::path> Beside(std::string_view path);
    std::optional<std::filesystem::path> Within(const std::filesystem::path& folder,
                                                const std::string& name);
    // The same; where there is none, the place that it would have.
    std::filesystem::path In(const std::filesystem::path& folder, const std::string& name);
    const Names& EntriesOf(const std::filesystem::path& folder);

    std::filesystem::path folder_;
    std::vector<std::string> subfolders_;
    std::map<std::string, TextureFile> known_;  // by the model's paths
    std::map<std::filesystem::path, Names> entries_;
    std::set<std::string> asked_;
};

// The file names by which textures are looked for that a model calls `path`.
std::set<std::string> FileNamesOf(const std::string& path);

}  // namespace maxhost::import
