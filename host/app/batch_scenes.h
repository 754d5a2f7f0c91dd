// The scenes of a batch: named in lists, found in directories and by patterns.
#pragma once

#include <filesystem>
#include <istream>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace maxhost::app {

struct BatchScene {
    std::string name;              // as it was named or found, to be shown and to be opened
    std::filesystem::path file;    // the same, absolute
    std::filesystem::path output;  // the export file, absolute
    std::filesystem::path place;   // the same below the directory that -o names, or would name
};

// The scenes that the items name, in order, each once:
// - a scene itself, by its name's ending or as a scene description;
// - a directory: the scenes in it and below, by the alphabet of their paths; hidden ones, and the
//   files of former exports, are left out, and so are directories seen before (links may lead
//   back);
// - a pattern: the same kinds of files that match it; *, ? and [a-z] stand for characters other
// than
//   separators, ** as a whole part of the path for any directories;
// - any other file: a list with a scene a line, relative to the list's directory; empty lines and
//   lines that begin with # are left out;
// - "-": a list on `in`, relative to the current directory.
// An export file stands beside its scene, or below `outputDirectory` in the same subdirectories: of
// the directory that was named, of the last one of a pattern before its first wildcard, of the
// list's, or, where a list names scenes outside of its own, of the deepest one that holds them all.
// Throws Failure(kExitRefused) for an item that names no scene, and for scenes whose exports would
// be one file, or another scene.
std::vector<BatchScene> FindBatchScenes(const std::vector<std::string>& items,
                                        const std::optional<std::string>& outputDirectory,
                                        std::istream& in);

// Keeps exports from each other's files, and from scenes.
class ExportPlaces {
  public:
    // A scene that no export may replace.
    void AddScene(const BatchScene& scene);
    // Why the export cannot go there, in words that follow the name of what is exported: another
    // one goes there, or it would replace a scene. Empty where it can; then the place is taken.
    std::string Take(const std::filesystem::path& output, const std::string& name);

  private:
    std::unordered_map<std::string, std::string> scenes_, exports_;  // names by the files' keys
};

// Whether the name, of a file without its directories, matches: * any characters, ? any one,
// [a-z] and [!a-z] one of those, or none of them.
bool MatchesWildcards(std::string_view name, std::string_view pattern);

}  // namespace maxhost::app
