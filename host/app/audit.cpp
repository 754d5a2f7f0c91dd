#include "host/app/audit.h"

#include <filesystem>
#include <functional>
#include <ostream>
#include <span>
#include <system_error>
#include <utility>

#include "host/app/dry_run.h"
#include "host/app/exit_status.h"
#include "host/app/places.h"
#include "host/app/report_page.h"
#include "host/sdk/host.h"
#include "kta/whole_file.h"

namespace maxhost::app {
namespace {

namespace fs = std::filesystem;

// Of a file that cannot be read, as far as it was.
FileReport ReportOf(const OutputFile& file) {
    FileReport report{file.path, kta::KindName(file.kind), 0, {}};
    std::error_code ignored;
    const std::uintmax_t size = fs::file_size(file.made, ignored);
    report.bytes = ignored ? 0 : size;
    if (file.reading.file) {
        report.chunks = kta::Summarize(*file.reading.file).chunks;
    }
    return report;
}

struct ExportedFiles {
    const kta::File& actor;
    const kta::File& motion;
    const fs::path& log;
};

// Writes each file, and puts the export in place when all are written, before the first of them
// takes its own place.
void WriteAll(std::span<const std::pair<fs::path, std::string>> files, DryRun* dryRun,
              const std::function<void()>& putInPlace) {
    if (files.empty()) {
        putInPlace();
        return;
    }
    const fs::path& file = files.front().first;
    const std::string& text = files.front().second;
    bool isWritten = false;
    try {
        kta::ReplaceWholeFile(PlaceToWrite(dryRun, file), [&](std::ostream& out) {
            out << text << std::flush;
            isWritten = true;
            WriteAll(files.subspan(1), dryRun, putInPlace);
        });
    } catch (const std::system_error& error) {
        if (isWritten) {
            throw;
        }
        throw fs::filesystem_error("cannot be written", file, error.code());
    }
}

// What needs files without faults to read from.
void AddComparison(const ExportedFiles& exported, const std::vector<NodeToExport>& nodes,
                   Receipt& receipt) {
    const scene::Scene& scene = Host::Instance().Description();
    const kta::NodeTree tree(exported.actor, &exported.motion);
    const SceneWorlds worlds(Host::Instance().Nodes());
    const SceneMatch match(scene, worlds.At(0), tree);
    const Deviation deviation =
        FindDeviation(scene, worlds, match, tree, exported.actor, exported.motion);
    receipt.nodesExported = tree.Size();
    receipt.costs = CostsOf(scene, match, tree, exported.actor, exported.motion);
    receipt.deviation = Named(deviation, scene);
    for (LedgerEntry& loss : LossesOf({scene, nodes, receipt.inForce, match, tree, exported.actor,
                                       deviation, exported.log})) {
        receipt.losses.push_back(std::move(loss));
    }
}

}  // namespace

bool IsAudited(const Options& options) {
    return options.receipt || options.report || options.maxError || options.accept;
}

Receipt Audit(const Options& options, const ExportFiles& files,
              const std::vector<std::string>& faults, const std::vector<NodeToExport>& nodes,
              const ExportOptions& inForce, const AuditInput& input, const RunReport& report) {
    const Stopwatch watch;
    const scene::Scene& scene = Host::Instance().Description();
    Receipt receipt;
    receipt.scene = options.scene;
    receipt.inForce = inForce;
    receipt.origins = report.origins;
    receipt.unit = input.unit;
    receipt.faults = faults;
    receipt.issues = report.issues;
    receipt.nodesInScene = scene.nodes.size();
    receipt.maxError = options.maxError;
    receipt.failsByLosses = options.strict || options.accept;
    receipt.losses = LossesBefore(scene, input.losses);
    bool areGood = true;
    for (const OutputFile& file : files.Files()) {
        receipt.files.push_back(ReportOf(file));
        areGood = areGood && file.reading.Good();
    }
    if (areGood) {
        AddComparison(
            {*files.Files()[0].reading.file, *files.Files()[1].reading.file, files.WrittenLog()},
            nodes, receipt);
    }
    Merge(receipt.losses);
    input.accepted.Accept(receipt.losses);
    receipt.times = input.times;
    receipt.readingSeconds = report.readingSeconds;
    receipt.exportingSeconds = report.exportingSeconds;
    receipt.checkingSeconds = report.checkingSeconds;
    receipt.comparingSeconds = watch.Seconds();
    receipt.status = faults.empty() && Objections(receipt).empty() ? kExitDone : kExitFaultyOutput;
    return receipt;
}

void WriteReceipt(const Options& options, const Receipt& receipt, DryRun* dryRun,
                  const std::function<void()>& putInPlace) {
    std::vector<std::pair<fs::path, std::string>> files;
    if (const std::optional<fs::path> file = ReceiptFile(options)) {
        files.emplace_back(*file, JsonOf(receipt, options.times));
    }
    if (const std::optional<fs::path> file = ReportFile(options)) {
        files.emplace_back(*file, PageOf(receipt, options.times));
    }
    WriteAll(files, dryRun, putInPlace);
}

}  // namespace maxhost::app
