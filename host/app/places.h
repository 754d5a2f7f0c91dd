// Where the program finds and puts its files.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "host/app/options.h"
#include "host/app/texture_files.h"

namespace maxhost::app {

// Absolute, without a separator at the end.
std::filesystem::path Absolute(const std::string& path);

// A private directory among the temporary files, whose place TMPDIR (on Windows TMP) names. Throws
// Failure(kExitRefused), which names both, where none can be made there.
kta::PrivateDirectory TemporaryRoom();

// The directory of the running program, and hdo-export in it.
std::filesystem::path ProgramDirectory();
std::filesystem::path ProgramFile();

// Whether a file's name ends in .maxscene.json, in large or small letters.
bool IsNamedAsDescription(const std::string& name);

// The scene's name with .hdo, without directories.
std::string ExportName(const std::filesystem::path& scene);

// The file to export to: absolute; SCENE's name with .hdo where none is given. Throws
// Failure(kExitRefused) when something else than a file stands there, and when the scene, or the
// file of --save-scene, is one that the export would replace.
std::filesystem::path ExportFile(const Options& options);

// The file that --bisect saves to: --save-scene's, --output's, or SCENE's name with
// .suspect.maxscene.json; "-" may be standard output. Throws Failure(kExitRefused) when that is the
// scene itself or no place for a file.
std::string SuspectFile(const Options& options);

// --log's file, absolute. Throws Failure(kExitRefused) when that is a directory, a file of the
// export, the scene itself or another option's file.
std::optional<std::filesystem::path> LogFile(const Options& options);

// Where the textures that stand in a model go with its export: into --textures' directory, else
// beside it.
TextureFiles TexturesOf(const Options& options, std::vector<import::EmbeddedTexture> textures);

// --receipt's and --report's files alike.
std::optional<std::filesystem::path> ReceiptFile(const Options& options);
std::optional<std::filesystem::path> ReportFile(const Options& options);

// Where the options of the scene stand, if there are any: SCENE's name with .hdo.json, beside it.
// Empty for standard input and where there is no scene.
std::filesystem::path SidecarPlace(const Options& options);

// The preset, and the sidecar file's place, whether or not it is there; absolute.
std::vector<std::string> FilesOfOptions(const Options& options);

// --save-preset's file, absolute.
std::optional<std::filesystem::path> PresetFileToSave(const Options& options);

std::filesystem::path PlugInFile(const Options& options);
std::vector<std::string> PlugInDirectories(const Options& options);

// The plug-in configuration directory that the options ask for: --config-dir, or with
// --saved-settings the user's own: hdo-export in $XDG_CONFIG_HOME, else in ~/.config; on Windows in
// %APPDATA%. Absent where the run is to have a private one. Throws Failure(kExitRefused) when the
// user has none.
std::optional<std::filesystem::path> ConfigDirectory(const Options& options);

// The exporter's settings in that directory.
std::filesystem::path SettingsFile(const std::filesystem::path& configDirectory);

// What can be said of settings that lie in that directory: as the exporter reads them, bytes that
// the file does not have are the defaults'.
ExportOptions ReadSettings(const std::filesystem::path& configDirectory);

}  // namespace maxhost::app
