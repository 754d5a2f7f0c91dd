// What a run did, as JSON for programs that start it.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/app/console.h"
#include "host/app/json_parts.h"
#include "host/app/loaded_scene.h"
#include "host/app/summary.h"
#include "host/sdk/calls.h"
#include "kta/info.h"

namespace maxhost::app {

// Seconds since it was made.
class Stopwatch {
  public:
    double Seconds() const {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
    }

  private:
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

struct FileReport {
    std::filesystem::path path;
    std::string kind;  // actor, motion, log, texture, texture record, preview, or converter: what
                       // the converter made
    std::uint64_t bytes = 0;
    std::vector<kta::ChunkTotal> chunks;  // of an actor and a motion file
};

struct ExportReport {
    std::vector<FileReport> files;  // in their places, in the order of their names
    std::size_t nodesExported = 0;
    std::vector<NodeToExport> notExported;
    ExportOutcome outcome;
};

class DryRun;

struct RunReport {
    std::shared_ptr<DryRun> dryRun;  // null: the run writes
    std::string scene;               // as it was given
    // The files that decided on the scene and its export, read or looked for; absolute.
    std::vector<std::string> inputs;
    std::optional<Json> batch;  // what a batch did, in the place of all that is of one scene
    std::optional<std::string> savedScene, savedPreset;
    std::optional<LoadedScene> listed;            // by --list
    std::optional<ExportReport> exported;         // the exporter ran; whether well, the status says
    Json origins;                                 // of the options: see OriginsOf; null: not known
    std::vector<Json> exports;                    // of --all-animations, an object each
    std::vector<const scene::LossKind*> leftOut;  // why nodes were, one each
    bool hasExported = false;                     // the exporter ran
    bool isObjected = false;                      // a receipt's deviation or losses are a failure
    std::vector<kta::Issue> issues;               // of both files, where they could be read
    double readingSeconds = 0;
    double exportingSeconds = 0;
    double checkingSeconds = 0;
    std::optional<CallCounts> calls;  // that the exporter made
    Stopwatch sinceStart;
};

// What of an export stands in its places.
ExportReport ReportOf(const ExportFiles& files, ExportOutcome outcome);

// As runs and receipts have it.
Json JsonOf(const SceneUnit& unit);

// docs/hdo-export.md has its members.
Json ObjectOf(const RunReport& report, int status, const std::vector<Notice>& notices);

// The same as text: one JSON object, without a last line end; docs/hdo-export.md has its members.
// Bytes of names that are no UTF-8 are taken as Latin-1.
std::string JsonOf(const RunReport& report, int status, const std::vector<Notice>& notices);

}  // namespace maxhost::app
