// Comparing an export with its scene and keeping books of it, where the command line asks.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/app/export_files.h"
#include "host/app/ledger.h"
#include "host/app/options.h"
#include "host/app/receipt.h"

namespace maxhost::app {

// Whether --receipt, --report, --max-error or --accept stands there.
bool IsAudited(const Options& options);

// What reading left out, the model's unit, what was accepted before, and the times so far.
struct AuditInput {
    std::optional<SceneUnit> unit{};
    std::vector<scene::Loss> losses;
    AcceptedLosses accepted;
    StageTimes times;
};

// Of the scene that is open in the host and of its export, both of whose files were verified; what
// is wrong with them is in `faults`. Files that cannot be read whole are not compared with the
// scene. `nodes` are the scene's, in its order.
Receipt Audit(const Options& options, const ExportFiles& files,
              const std::vector<std::string>& faults, const std::vector<NodeToExport>& nodes,
              const ExportOptions& inForce, const AuditInput& input, const RunReport& report);

// Writes what --receipt and --report ask for, in a dry run to its own place, then calls
// `putInPlace`, then puts each of both in its place, whole. What that throws goes through, and the
// former receipt and report stay then. Throws std::filesystem::filesystem_error with the file that
// cannot be written; nothing is put in place.
void WriteReceipt(const Options& options, const Receipt& receipt, DryRun* dryRun,
                  const std::function<void()>& putInPlace);

}  // namespace maxhost::app
