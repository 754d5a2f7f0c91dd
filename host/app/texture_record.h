// Which of the textures beside an export came out of a model: <export file>.textures.json, which
// names them with their hashes. By that a later export knows the files that it may replace.
#pragma once

#include <cstddef>
#include <deque>
#include <filesystem>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace maxhost::app {

// The records that stand in an export's directory, read as far as they are needed.
class TextureRecords {
  public:
    // Both are absolute.
    TextureRecords(std::filesystem::path exportFile, std::filesystem::path scene);

    // Whether the file in that directory is as an export of this scene, or to this export file,
    // left it, and is no texture of another scene's export.
    bool MayReplace(const std::filesystem::path& texture);
    // Whether an export wrote the texture of that name and content, whichever it was.
    bool IsOfExport(const std::string& name, const std::string& bytes);

  private:
    using Key = std::pair<std::string, std::string>;  // name, hash
    struct Record {
        bool isOwn = false;
        std::set<Key> textures;
    };

    const Record* Next(std::size_t position);
    Record Read(const std::filesystem::path& file) const;

    std::filesystem::path exportFile_, scene_;
    std::deque<Record> read_;  // the export's own former one first
    std::filesystem::directory_iterator rest_;
};

// Where the record of that export stands.
std::filesystem::path TextureRecordOf(const std::filesystem::path& exportFile);

// Its text; `textures` have names and contents of those that exports wrote.
std::string TextureRecord(const std::filesystem::path& exportFile,
                          const std::filesystem::path& scene,
                          const std::vector<std::pair<std::string, std::string>>& textures);

}  // namespace maxhost::app
