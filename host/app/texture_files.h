// The files that become of the textures which stand inside a model.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "host/app/put_in_place.h"
#include "host/app/texture_record.h"
#include "host/assimp/imported_scene.h"
#include "kta/whole_file.h"

namespace maxhost::app {

class DryRun;

// Whether an existing file of other content may be replaced by a texture.
enum class ReplacesFiles { no, yes };

// Textures that come to their places together with an export. A file that has a texture's name and
// content already is left as it is; one that a former export wrote, and nobody changed, is
// replaced.
class TextureFiles {
  public:
    TextureFiles() = default;
    // The directory is absolute and need not exist; existing files are replaced there.
    TextureFiles(std::vector<import::EmbeddedTexture> textures, std::filesystem::path directory,
                 ReplacesFiles replaces = ReplacesFiles::yes);
    // Beside an export, which leaves a record of them (see TextureRecords). Both are absolute.
    TextureFiles(std::vector<import::EmbeddedTexture> textures,
                 const std::filesystem::path& exportFile, const std::filesystem::path& scene,
                 ReplacesFiles replaces = ReplacesFiles::no);

    bool IsEmpty() const { return textures_.empty(); }
    const std::filesystem::path& Directory() const { return directory_; }
    std::filesystem::path Place(const import::EmbeddedTexture& texture) const {
        return directory_ / texture.name;
    }
    const std::vector<import::EmbeddedTexture>& Textures() const { return textures_; }

    // One line that says which texture cannot have its place and why; empty where all can. `taken`
    // are the places of other files.
    std::string Obstacle(const std::vector<std::filesystem::path>& taken) const;
    // Places where files of other content stand which no former export is known to have left there,
    // and which are to be replaced.
    std::vector<std::filesystem::path> Replaced() const;
    // Places where a file that comes there meanwhile may not be replaced.
    std::set<std::filesystem::path> NotToReplace() const;

    // Makes the files in `made`, from where all that is in it goes to `home`, or in a private
    // directory in their own where that is another one; a dry run, if there is one, has that.
    // Throws std::filesystem::filesystem_error with a place.
    void Make(const std::filesystem::path& home, const std::filesystem::path& made,
              DryRun* dryRun = nullptr);
    // What is to be done for those that Make() made in their own directory.
    const std::vector<Replacement>& Replacements() const { return replacements_; }
    // The places of files that are there already.
    const std::vector<std::filesystem::path>& Unchanged() const { return unchanged_; }

    // Writes the files without an export, or tells the dry run of them. Throws
    // std::filesystem::filesystem_error with a place.
    void Write(DryRun* dryRun = nullptr);

  private:
    void MakeRoom(DryRun* dryRun);
    bool IsOwn(const std::filesystem::path& place, std::optional<TextureRecords>& records) const;
    bool MayReplace(const std::filesystem::path& place,
                    std::optional<TextureRecords>& records) const {
        return replaces_ == ReplacesFiles::yes || IsOwn(place, records);
    }
    void WriteRecord(const std::filesystem::path& made) const;

    std::vector<import::EmbeddedTexture> textures_;
    std::filesystem::path directory_;
    ReplacesFiles replaces_ = ReplacesFiles::no;
    std::filesystem::path exportFile_, scene_;  // empty: there is no record
    std::unique_ptr<kta::PrivateDirectory> room_;
    std::vector<Replacement> replacements_;
    std::vector<std::filesystem::path> unchanged_;
};

}  // namespace maxhost::app
