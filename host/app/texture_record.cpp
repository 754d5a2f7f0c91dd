#include "host/app/texture_record.h"

#include <system_error>

#include "host/app/json_parts.h"
#include "host/converter/file_hash.h"
#include "kta/text.h"
#include "kta/whole_file.h"

namespace maxhost::app {
namespace {

namespace fs = std::filesystem;

constexpr const char* kEnding = ".textures.json";
constexpr const char* kVersion = "hdoTextures";

// Empty where the member is no text.
std::string TextOf(const Json& object, const char* member) {
    const auto found = object.find(member);
    return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

}  // namespace

TextureRecords::TextureRecords(fs::path exportFile, fs::path scene)
    : exportFile_(std::move(exportFile)), scene_(std::move(scene)) {
    read_.push_back(Read(TextureRecordOf(exportFile_)));
    std::error_code ignored;
    rest_ = fs::directory_iterator(exportFile_.parent_path(), ignored);
}

// What is no record says nothing, and a pipe would never say anything.
TextureRecords::Record TextureRecords::Read(const fs::path& file) const {
    Record record;
    std::error_code ignored;
    if (!fs::is_regular_file(file, ignored)) {
        return record;
    }
    const Json json = Json::parse(kta::ReadWholeFile(file).value_or(""), nullptr, false);
    if (!json.is_object() || json.value(kVersion, Json()) != 1) {
        return record;
    }
    const fs::path scene =
        (exportFile_.parent_path() / PercentUnescaped(TextOf(json, "scene"))).lexically_normal();
    record.isOwn = file == TextureRecordOf(exportFile_) || scene == scene_;
    for (const Json& texture : json.value("textures", Json::array())) {
        if (texture.is_object()) {
            record.textures.emplace(PercentUnescaped(TextOf(texture, "file")),
                                    TextOf(texture, "sha256"));
        }
    }
    return record;
}

// The record at that position; null behind the last.
const TextureRecords::Record* TextureRecords::Next(std::size_t position) {
    std::error_code error;
    while (position >= read_.size() && rest_ != fs::directory_iterator()) {
        const fs::path file = rest_->path();
        if (kta::EndsWithIgnoringCase(file.filename().string(), kEnding)) {
            read_.push_back(Read(file));
        }
        rest_.increment(error);
    }
    return position < read_.size() ? &read_[position] : nullptr;
}

bool TextureRecords::MayReplace(const fs::path& texture) {
    try {
        const Key key(texture.filename().string(), halden::HashFile(texture).sha256);
        bool isOwn = false;
        for (std::size_t i = 0; const Record* const record = Next(i); ++i) {
            const bool names = record->textures.contains(key);
            if (names && !record->isOwn) {
                return false;
            }
            isOwn = isOwn || names;
        }
        return isOwn;
    } catch (const std::system_error&) {  // it cannot be read
        return false;
    }
}

bool TextureRecords::IsOfExport(const std::string& name, const std::string& bytes) {
    const Key key(name, halden::HashText(bytes));
    for (std::size_t i = 0; const Record* const record = Next(i); ++i) {
        if (record->textures.contains(key)) {
            return true;
        }
    }
    return false;
}

fs::path TextureRecordOf(const fs::path& exportFile) {
    return fs::path(exportFile) += kEnding;
}

std::string TextureRecord(const fs::path& exportFile, const fs::path& scene,
                          const std::vector<std::pair<std::string, std::string>>& textures) {
    const fs::path relative = scene.lexically_relative(exportFile.parent_path());
    Json json = {{kVersion, 1},
                 {"about", "Textures that exports took out of their models, beside this one."},
                 {"scene", PercentEscaped((relative.empty() ? scene : relative).generic_string())},
                 {"textures", Json::array()}};
    for (const auto& [name, bytes] : textures) {
        json["textures"].push_back(
            {{"file", PercentEscaped(name)}, {"sha256", halden::HashText(bytes)}});
    }
    return json.dump(2) + "\n";
}

}  // namespace maxhost::app
