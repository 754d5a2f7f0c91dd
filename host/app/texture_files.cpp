#include "host/app/texture_files.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <system_error>
#include <utility>

#include "host/app/dry_run.h"

namespace maxhost::app {
namespace {

namespace fs = std::filesystem;

enum class Standing { nothing, same, other, noFile };

Standing WhatStandsAt(const fs::path& place, const std::string& bytes) {
    std::error_code error;
    if (!fs::exists(fs::symlink_status(place, error))) {
        return Standing::nothing;
    }
    if (!fs::is_regular_file(place, error)) {  // nor a link to one
        return Standing::noFile;
    }
    if (fs::file_size(place, error) != bytes.size() || error) {
        return Standing::other;
    }
    return kta::ReadWholeFile(place) == bytes ? Standing::same : Standing::other;
}

void WriteFile(const fs::path& file, const std::string& bytes, const fs::path& place) {
    errno = 0;
    std::ofstream out(file, std::ios::binary);
    out << bytes << std::flush;
    if (!out) {
        throw fs::filesystem_error(
            "cannot be written", place,
            std::error_code(errno != 0 ? errno : EIO, std::generic_category()));
    }
}

}  // namespace

TextureFiles::TextureFiles(std::vector<import::EmbeddedTexture> textures, fs::path directory,
                           ReplacesFiles replaces)
    : textures_(std::move(textures)), directory_(std::move(directory)), replaces_(replaces) {
}

TextureFiles::TextureFiles(std::vector<import::EmbeddedTexture> textures,
                           const fs::path& exportFile, const fs::path& scene,
                           ReplacesFiles replaces)
    : textures_(std::move(textures)),
      directory_(exportFile.parent_path()),
      replaces_(replaces),
      exportFile_(exportFile),
      scene_(scene) {
}

// Of a file of other content: whether the records, read where they are needed, let it be replaced.
bool TextureFiles::IsOwn(const fs::path& place, std::optional<TextureRecords>& records) const {
    if (exportFile_.empty()) {
        return false;
    }
    if (!records) {
        records.emplace(exportFile_, scene_);
    }
    return records->MayReplace(place);
}

std::string TextureFiles::Obstacle(const std::vector<fs::path>& taken) const {
    std::optional<TextureRecords> records;
    for (const import::EmbeddedTexture& texture : textures_) {
        const fs::path place = Place(texture);
        if (std::ranges::find(taken, place) != taken.end()) {
            return place.string() +
                   ": a texture of the scene has the name of one of the export's own files, "
                   "expected another name for the export (-o), or --textures DIR";
        }
        const Standing found = WhatStandsAt(place, texture.bytes);
        if (found == Standing::noFile ||
            (found == Standing::other && !MayReplace(place, records))) {
            return place.string() + ": " +
                   (found == Standing::noFile ? "is no regular file"
                                              : "stands there with another content") +
                   ", expected room for a texture of the scene (--textures DIR puts them into DIR "
                   "and replaces files there)";
        }
    }
    return {};
}

std::vector<fs::path> TextureFiles::Replaced() const {
    std::vector<fs::path> places;
    std::optional<TextureRecords> records;
    for (const import::EmbeddedTexture& texture : textures_) {
        if (replaces_ == ReplacesFiles::yes &&
            WhatStandsAt(Place(texture), texture.bytes) == Standing::other &&
            !IsOwn(Place(texture), records)) {
            places.push_back(Place(texture));
        }
    }
    return places;
}

std::set<fs::path> TextureFiles::NotToReplace() const {
    std::set<fs::path> places;
    std::optional<TextureRecords> records;
    for (const import::EmbeddedTexture& texture : textures_) {
        const fs::path place = Place(texture);
        const bool isOther = WhatStandsAt(place, texture.bytes) == Standing::other;
        if (replaces_ == ReplacesFiles::no && !(isOther && MayReplace(place, records))) {
            places.insert(place);
        }
    }
    return places;
}

void TextureFiles::MakeRoom(DryRun* dryRun) {
    try {
        if (dryRun == nullptr) {
            fs::create_directories(directory_);
        } else if (const std::error_code error = WhyNotMade(directory_)) {
            throw fs::filesystem_error("nothing can be made", directory_, error);
        }
        room_ = std::make_unique<kta::PrivateDirectory>(dryRun == nullptr ? directory_
                                                                          : dryRun->Room());
    } catch (const fs::filesystem_error& error) {  // which may name a private one
        throw fs::filesystem_error("nothing can be made", directory_, error.code());
    }
}

void TextureFiles::Make(const fs::path& home, const fs::path& made, DryRun* dryRun) {
    const bool isAtHome = directory_ == home;
    if (!isAtHome && !IsEmpty()) {
        MakeRoom(dryRun);
    }
    for (std::size_t i = 0; i < textures_.size(); ++i) {
        const import::EmbeddedTexture& texture = textures_[i];
        const fs::path place = Place(texture);
        if (WhatStandsAt(place, texture.bytes) == Standing::same) {
            unchanged_.push_back(place);
        } else if (isAtHome) {
            WriteFile(made / texture.name, texture.bytes, place);
        } else {
            const fs::path file = room_->Path() / std::to_string(i);
            WriteFile(file, texture.bytes, place);
            replacements_.push_back({file, place, room_->Path()});
        }
    }
    if (isAtHome && !exportFile_.empty() && !IsEmpty()) {
        WriteRecord(made);
    }
}

// A file that stood there already counts where a record says that an export wrote it. One that
// comes to its place is named by the record before, see ExportFiles::Replacements(): so it does not
// matter which of several exports at once is the first.
void TextureFiles::WriteRecord(const fs::path& made) const {
    TextureRecords records(exportFile_, scene_);
    const std::set<fs::path> unchanged(unchanged_.begin(), unchanged_.end());
    std::vector<std::pair<std::string, std::string>> textures;
    for (const import::EmbeddedTexture& texture : textures_) {
        if (!unchanged.contains(Place(texture)) ||
            records.IsOfExport(texture.name, texture.bytes)) {
            textures.emplace_back(texture.name, texture.bytes);
        }
    }
    const fs::path record = TextureRecordOf(exportFile_);
    WriteFile(made / record.filename(), TextureRecord(exportFile_, scene_, textures), record);
}

void TextureFiles::Write(DryRun* dryRun) {
    Make({}, {}, dryRun);
    if (dryRun != nullptr) {
        dryRun->Add(replacements_);
    } else {
        PutInPlace(replacements_);
    }
    room_.reset();
}

}  // namespace maxhost::app
