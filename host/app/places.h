// Where the program finds and puts its files, and directories of one run.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "host/app/options.h"
#include "kta/whole_file.h"

namespace maxhost::app {

// Absolute, without a separator at the end.
std::filesystem::path Absolute(const std::string& path);

// The directory of the running program.
std::filesystem::path ProgramDirectory();

// Whether a file's name ends in .maxscene.json, in large or small letters.
bool IsNamedAsDescription(const std::string& name);

// The file to export to: absolute; SCENE's name with .hdo where none is given. Throws
// Failure(kExitRefused) when that is a directory.
std::filesystem::path ExportFile(const Options& options);

std::filesystem::path PlugInFile(const Options& options);
std::vector<std::string> PlugInDirectories(const Options& options);

// --config-dir, or the user's own: hdo-export in $XDG_CONFIG_HOME, else in ~/.config; on Windows in
// %APPDATA%. Throws Failure(kExitRefused) when neither is known.
std::filesystem::path ConfigDirectory(const Options& options);

// The exporter's settings in that directory.
std::filesystem::path SettingsFile(const std::filesystem::path& configDirectory);

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
    std::unique_ptr<kta::PrivateDirectory> directory_;  // never null
};

}  // namespace maxhost::app
