// Options that stand in files: presets, and the sidecar file of a scene. docs/presets.md has their
// forms, and says what counts more than what.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "host/app/json_parts.h"
#include "host/app/options.h"

namespace maxhost::app {

// "default", "saved settings", "preset", "sidecar", "command line" or "dialog".
const char* NameOf(Origin origin);

class DryRun;

// Whether choices without a control, which only a settings file can hold, differ from the defaults.
bool HasUnshown(const ExportOptions& settings);

struct PresetFile {
    std::vector<GivenOption> options;
    std::optional<ExportOptions> settings;  // the record itself, of a settings file of the exporter
};

// Throws Failure(kExitRefused) that names the file and the place in it, with what is wrong there.
PresetFile ReadPreset(const std::string& path, Origin origin);

// Of each option the value that counts most; `given` stands in rising order of what counts. An
// option of a file is left out where that file, or what counts more, turns off the switch that
// enables it.
std::vector<GivenOption> Merged(const std::vector<std::vector<GivenOption>>& given);

// What --save-preset asks for: a settings file where the name ends in .cfg, else JSON. `start` is
// what the exporter's options are that were not given. A dry run has it in its own place. Throws
// Failure(kExitRefused) when the form cannot hold them, or the file cannot be written.
void SavePreset(const Options& options, const std::filesystem::path& file,
                const ExportOptions& start, DryRun* dryRun = nullptr);

// For a run's JSON: the files that options came from, and of each option of the exporter in force
// and each other one that was given its value and where it comes from. `ofTheRest` is where those
// come from that were not given; of saved settings, those that differ from the defaults.
Json OriginsOf(const Options& options, const ExportOptions& inForce, Origin ofTheRest);

}  // namespace maxhost::app
