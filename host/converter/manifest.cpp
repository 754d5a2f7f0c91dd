#include "host/converter/manifest.h"

#include <filesystem>
#include <nlohmann/json.hpp>
#include <system_error>

#include "host/converter/file_hash.h"
#include "kta/whole_file.h"

namespace halden {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

constexpr int kVersion = 1;

Json Described(const ManifestEntry& entry) {
    const FileHash hash = HashFile(entry.path);
    return {{"name", fs::path(entry.path).filename().string()},
            {"kind", entry.kind},
            {"bytes", hash.bytes},
            {"sha256", hash.sha256}};
}

}  // namespace

void WriteManifest(const std::string& file, const std::vector<ManifestEntry>& entries) {
    Json manifest = {{"haldenManifest", kVersion},
                     {"about",
                      "Stands in the place of the HDO file, which the converter of the "
                      "Halden application writes."},
                     {"files", Json::array()}};
    for (const ManifestEntry& entry : entries) {
        manifest["files"].push_back(Described(entry));
    }
    // Names of files may be in any coding.
    const std::string text = manifest.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
    try {
        kta::ReplaceWholeFile(file, [&](std::ostream& out) { out << text; });
    } catch (const std::system_error& error) {
        throw std::system_error(error.code(), file);
    }
}

}  // namespace halden
