// What is said of an export's files: their faults, and the summary that ends a run.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "export/export_options.h"
#include "host/app/export_files.h"
#include "host/app/loaded_scene.h"
#include "host/scene/losses.h"
#include "kta/terminal.h"

namespace maxhost::app {

// The lines to show: the faults of each verified file, then what the converter says beside them.
// Repeats are left out, and of each file's faults and of the converter's the first are shown (see
// kta::FirstFaults). Linear.
std::vector<std::string> FaultReport(const std::vector<OutputFile>& files,
                                     const std::vector<std::string>& converterFaults);

// The lines to show of the issues that are errors, limited in the same way.
std::vector<std::string> ErrorLines(const std::vector<OutputFile>& files,
                                    const std::vector<kta::Issue>& issues);

struct NodeToExport {
    std::string name;
    // Why an export may leave it out; null: it has no such reason.
    const scene::LossKind* whyNot = nullptr;
};

struct ExportOutcome {
    std::vector<NodeToExport> nodes{};  // of the scene
    bool namesAll = false;              // all nodes that were not exported, not the first ten
    std::size_t warnings = 0;
    std::filesystem::path log{};                    // empty: this export wrote none
    std::filesystem::path preview{};                // empty: this export made none
    std::vector<std::string> previewProblems{};     // what it does not show, a line each
    std::vector<std::filesystem::path> textures{};  // taken out of the scene's file
    std::size_t coloredMeshes = 0;                  // whose vertex colours are lost
    std::optional<SceneUnit> unit{};                // the same
    std::string upAxis{};                           // of a model's file: see LoadedScene
    std::string options{};  // the exporter's, in force, as on the command line
    ExportOptions inForce = DefaultExportOptions();  // the same
    std::vector<std::string> optionFiles{};          // the preset and the sidecar file, a line each
};

// The nodes that the files, which were verified, do not hold. Of several with one name, those
// without a reason to be left out count as held first. Empty where the actor file is faulty.
std::vector<const NodeToExport*> NodesNotExported(const std::vector<OutputFile>& files,
                                                  const std::vector<NodeToExport>& nodes);
// How many nodes the files hold.
std::size_t NodesExported(const std::vector<OutputFile>& files);
const scene::LossKind& WhyNotExported(const NodeToExport& node);

// How a terminal shows a line of the summary, or of a dry run.
kta::Style StyleOf(std::string_view line);

// The lines of the summary of files that were verified.
std::vector<std::string> Summarize(const std::vector<OutputFile>& files,
                                   const ExportOutcome& outcome);

}  // namespace maxhost::app
