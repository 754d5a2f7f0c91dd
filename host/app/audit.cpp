#include "host/app/audit.h"

#include <filesystem>
#include <functional>
#include <system_error>

#include "host/app/exit_status.h"
#include "host/app/places.h"
#include "host/app/report_page.h"
#include "host/sdk/host.h"
#include "kta/whole_file.h"

namespace maxhost::app {
namespace {

namespace fs = std::filesystem;

FileReport ReportOf(const OutputFile& file) {
    return {file.path, kta::KindName(file.kind), file.reading.file->size,
            kta::Summarize(*file.reading.file).chunks};
}

void Write(const fs::path& file, const std::string& text) {
    try {
        kta::ReplaceWholeFile(file, [&](std::ostream& out) { out << text; });
    } catch (const std::system_error& error) {
        throw fs::filesystem_error("cannot be written", file, error.code());
    }
}

}  // namespace

bool IsAudited(const Options& options) {
    return options.receipt || options.report || options.maxError || options.accept;
}

Receipt Audit(const Options& options, const ExportFiles& files,
              const std::vector<NodeToExport>& nodes, const ExportOptions& inForce,
              const AuditInput& input, const RunReport& report) {
    const Stopwatch watch;
    const scene::Scene& scene = Host::Instance().Description();
    const kta::File& actor = *files.Files()[0].reading.file;
    const kta::File& motion = *files.Files()[1].reading.file;
    const kta::NodeTree tree(actor, &motion);
    const SceneWorlds worlds(Host::Instance().Nodes());
    const SceneMatch match(scene, worlds.At(0), tree);
    const Deviation deviation = FindDeviation(scene, worlds, match, tree, actor, motion);

    Receipt receipt;
    receipt.scene = options.scene;
    receipt.inForce = inForce;
    receipt.origins = report.origins;
    receipt.files = {ReportOf(files.Files()[0]), ReportOf(files.Files()[1])};
    receipt.nodesInScene = scene.nodes.size();
    receipt.nodesExported = tree.Size();
    receipt.costs = CostsOf(scene, match, tree, actor, motion);
    receipt.issues = report.issues;
    receipt.deviation = Named(deviation, scene);
    receipt.maxError = options.maxError;
    receipt.failsByLosses = options.strict || options.accept;
    receipt.losses = LossesBefore(scene, input.losses);
    for (LedgerEntry& loss :
         LossesOf({scene, nodes, inForce, match, tree, actor, deviation, files.WrittenLog()})) {
        receipt.losses.push_back(std::move(loss));
    }
    Merge(receipt.losses);
    input.accepted.Accept(receipt.losses);
    receipt.times = input.times;
    receipt.readingSeconds = report.readingSeconds;
    receipt.exportingSeconds = report.exportingSeconds;
    receipt.checkingSeconds = report.checkingSeconds;
    receipt.comparingSeconds = watch.Seconds();
    receipt.status = Objections(receipt).empty() ? kExitDone : kExitFaultyOutput;
    return receipt;
}

void WriteReceipt(const Options& options, const Receipt& receipt) {
    if (const std::optional<fs::path> file = ReceiptFile(options)) {
        Write(*file, JsonOf(receipt, options.times));
    }
    if (const std::optional<fs::path> file = ReportFile(options)) {
        Write(*file, PageOf(receipt, options.times));
    }
}

}  // namespace maxhost::app
