// The exporter's settings file around one export.
#pragma once

#include <filesystem>
#include <memory>

#include "host/app/private_directory.h"

namespace maxhost::app {

// A configuration directory for one export that is to start from the exporter's defaults: empty,
// and of this run alone, so that the user's settings stay in their place and runs side by side are
// not in each other's way. Settings that the export saved in it replace the user's as a whole at
// the object's end; where that cannot be done they are dropped, as the exporter itself does.
class DefaultSettings {
  public:
    // Throws Failure(kExitRefused) when no directory can be made, neither beside the settings nor
    // in the system's directory for temporary files.
    explicit DefaultSettings(std::filesystem::path settingsFile);
    ~DefaultSettings();

    const std::filesystem::path& Directory() const { return directory_->Path(); }

    DefaultSettings(const DefaultSettings&) = delete;
    DefaultSettings& operator=(const DefaultSettings&) = delete;

  private:
    std::filesystem::path file_;
    std::unique_ptr<PrivateDirectory> directory_;  // never null
};

}  // namespace maxhost::app
