#include "host/app/settings.h"

#include <fstream>

#include "host/app/exit_status.h"

namespace maxhost::app {
namespace {

namespace fs = std::filesystem;

std::unique_ptr<PrivateDirectory> MakeDirectory(const fs::path& settingsFile) {
    try {
        return std::make_unique<PrivateDirectory>(settingsFile.parent_path());
    } catch (const fs::filesystem_error&) {
        // Settings are not kept then, but the export needs none.
    }
    try {
        return std::make_unique<PrivateDirectory>(fs::temp_directory_path());
    } catch (const fs::filesystem_error& error) {
        throw Failure(kExitRefused, "--defaults",
                      "no temporary directory can be made: " + error.code().message());
    }
}

bool IsWriteProtected(const fs::path& file) {
    std::error_code error;
    return fs::exists(file, error) && !std::ofstream(file, std::ios::app);
}

}  // namespace

DefaultSettings::DefaultSettings(fs::path settingsFile)
    : file_(std::move(settingsFile)), directory_(MakeDirectory(file_)) {
}

DefaultSettings::~DefaultSettings() {
    const fs::path saved = Directory() / file_.filename();
    const fs::path target = BehindLinks(file_);
    std::error_code ignored;
    if (fs::exists(saved, ignored) && !IsWriteProtected(target)) {
        fs::rename(saved, target, ignored);
    }
}

}  // namespace maxhost::app
