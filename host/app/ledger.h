// The loss ledger: each thing that was left out or altered on the way from the scene file to the
// exported files, with its code in the table of losses, the node that it is about, and how often.
#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "export/export_options.h"
#include "host/app/deviation.h"
#include "host/app/loaded_scene.h"
#include "host/app/summary.h"

namespace maxhost::app {

struct LedgerEntry {
    scene::LossCode code{};
    std::string path;     // of the node; empty: none
    std::string subject;  // what of it: "mesh 'Box'", "material 'Steel', texture 'a.png'"; or empty
    std::string text;
    std::size_t count = 1;
    bool isAccepted = false;
};

// What an export and its files are.
struct ExportedScene {
    const scene::Scene& scene;
    const std::vector<NodeToExport>& nodes;  // the scene's, in its order
    const ExportOptions& inForce;
    const SceneMatch& match;
    const kta::NodeTree& tree;
    const kta::File& actor;
    const Deviation& deviation;
    const std::filesystem::path& log;
};

// What reading the scene changed or left out, and names that the files cannot tell.
std::vector<LedgerEntry> LossesBefore(const scene::Scene& scene,
                                      const std::vector<scene::Loss>& import);
// What the exported files lack, or have otherwise.
std::vector<LedgerEntry> LossesOf(const ExportedScene& exported);
// Of these the materials' own.
std::vector<LedgerEntry> MaterialLosses(const ExportedScene& exported);

// Losses that are alike become one, with the sum of their counts, where the first stood.
void Merge(std::vector<LedgerEntry>& losses);

// The losses of a former receipt, and how many of each kind.
class AcceptedLosses {
  public:
    AcceptedLosses() = default;
    // Reads a receipt; throws Failure(kExitRefused) for a file that is none.
    explicit AcceptedLosses(const std::string& receipt);

    // Marks those that were there before, as often as they were.
    void Accept(std::vector<LedgerEntry>& losses) const;

  private:
    using Key = std::tuple<std::string, std::string, std::string>;  // code, path, subject

    std::map<Key, std::size_t> counts_;
};

}  // namespace maxhost::app
