#include "host/app/summary.h"

#include "kta/info.h"
#include "kta/text.h"

namespace maxhost::app {
namespace {

std::string Line(const OutputFile& output, const kta::File& file, const kta::Summary& summary) {
    std::string line = output.path.string() + ": " + kta::KindName(file.kind) + " file, " +
                       kta::Counted(file.size, "byte") + ", " +
                       kta::Counted(file.chunks.size(), "chunk");
    std::vector<std::string> kinds;
    for (const kta::ChunkTotal& total : summary.chunks) {
        kinds.push_back(std::to_string(total.count) + " " + total.type->name);
    }
    return line + (kinds.empty() ? "" : " (" + kta::Joined(kinds) + ")");
}

}  // namespace

std::vector<std::string> Summarize(const std::vector<OutputFile>& files,
                                   const ExportOutcome& outcome) {
    std::vector<std::string> lines;
    std::size_t nodes = 0;
    for (const OutputFile& output : files) {
        if (output.reading.file) {
            const kta::Summary summary = kta::Summarize(*output.reading.file);
            nodes += summary.nodes;
            lines.push_back(Line(output, *output.reading.file, summary));
        }
    }
    if (!outcome.log.empty()) {
        lines.push_back(outcome.log.string() + ": log");
    }
    lines.push_back("exported " + std::to_string(nodes) + " of " +
                    kta::Counted(outcome.sceneNodes, "node"));
    if (outcome.warnings > 0) {
        lines.push_back(kta::Counted(outcome.warnings, "warning") + " from reading the scene");
    }
    if (outcome.coloredMeshes > 0) {
        lines.push_back("not exported: vertex colours of " +
                        kta::Counted(outcome.coloredMeshes, "mesh"));
    }
    return lines;
}

}  // namespace maxhost::app
