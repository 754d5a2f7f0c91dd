// The receipt of an export: what the files hold and cost, how far they are from the scene, what was
// lost on the way, and how long it took. docs/hdo-export.md says what of it counts as a failure,
// docs/receipt.schema.json what its JSON holds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/app/ledger.h"
#include "host/app/log_lines.h"
#include "host/app/run_report.h"

namespace maxhost::app {

// The bytes that both files have of a node, or of all materials, chunk headers included.
struct NodeCost {
    std::string path;  // of the node; the name where the scene has no such node
    std::uint64_t bytes = 0;
    std::vector<kta::ChunkTotal> chunks;  // by id
};

// As Deviation has it, with names in the place of numbers.
struct NamedWorst {
    double value = 0;
    double percent = 0;
    std::string path;     // empty: everything is equal
    int vertex = -1;      // -1: none
    std::string bone;     // path; empty: none
    std::string channel;  // empty: none
    std::optional<double> frame;
};

struct NamedDeviation {
    double size = 0;
    std::size_t vertices = 0, poses = 0, times = 0, skinnedVertices = 0, morphPoints = 0;
    std::size_t normals = 0, coordinatePairs = 0;
    NamedWorst vertex, pose, angle, skin, morph, normal, coordinates;
    double worst = 0;  // in percent and degrees
};

struct Receipt {
    std::string scene;  // as it was given
    int status = 0;
    ExportOptions inForce = DefaultExportOptions();
    Json origins = Json::object();    // of the options: see OriginsOf
    std::optional<SceneUnit> unit;    // of a model
    std::vector<FileReport> files;    // the actor file and the motion file
    std::vector<std::string> faults;  // of the files, a line each, as they are told
    std::size_t nodesInScene = 0, nodesExported = 0;
    std::vector<NodeCost> costs;              // most bytes first
    std::vector<kta::Issue> issues;           // warnings and errors of the check
    std::optional<NamedDeviation> deviation;  // none: the files cannot be read
    std::optional<double> maxError;           // asked for
    bool failsByLosses = false;               // asked for
    std::vector<LedgerEntry> losses;
    double readingSeconds = 0, exportingSeconds = 0, checkingSeconds = 0, comparingSeconds = 0;
    StageTimes times;
};

// Linear in the files' size. `match` and `tree` are of the actor file.
std::vector<NodeCost> CostsOf(const scene::Scene& scene, const SceneMatch& match,
                              const kta::NodeTree& tree, const kta::File& actor,
                              const kta::File& motion);

NamedDeviation Named(const Deviation& deviation, const scene::Scene& scene);

// Losses that were not accepted.
std::size_t NewLosses(const Receipt& receipt);

// As the receipt has it.
Json JsonOf(const LedgerEntry& loss);

// One line each: why the receipt is one of a failure; empty: it is none.
std::vector<std::string> Objections(const Receipt& receipt);

// One JSON object with a last line end. Without times the same export has the same receipt.
std::string JsonOf(const Receipt& receipt, bool withTimes);

}  // namespace maxhost::app
