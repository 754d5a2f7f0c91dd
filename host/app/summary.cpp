#include "host/app/summary.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "host/app/scene_contents.h"
#include "kta/info.h"
#include "kta/text.h"

namespace maxhost::app {

std::vector<std::string> FaultReport(const std::vector<OutputFile>& files,
                                     const std::vector<std::string>& converterFaults) {
    std::vector<std::string> report;
    std::unordered_set<std::string_view> known;
    const auto add = [&](const std::vector<std::string>& lines, const std::string& subject) {
        std::vector<std::string> distinct;
        for (const std::string& line : lines) {
            if (known.insert(line).second) {
                distinct.push_back(line);
            }
        }
        for (std::string& line : kta::FirstFaults(std::move(distinct), subject)) {
            report.push_back(std::move(line));
        }
    };
    for (const OutputFile& file : files) {
        add(file.faults, file.path.string());
    }
    // The converter reads the files with the same library, so most of its faults are known already.
    add(converterFaults, "haldenexport");
    return report;
}

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

constexpr std::size_t kMostNodeLines = 10;

// The scene's nodes that the actor file does not hold. Of several with one name, those without a
// reason to be left out count as held first.
std::vector<const NodeToExport*> NodesLeftOut(const kta::File& actor,
                                              const std::vector<NodeToExport>& nodes) {
    std::unordered_map<std::string, std::size_t> held;
    for (const kta::Chunk& chunk : actor.chunks) {
        if (const auto* const node = chunk.As<KTANode>()) {
            ++held[std::string(kta::TextOf(node->nodeName))];
        }
    }
    std::vector<bool> isHeld(nodes.size());
    for (const bool hasReason : {false, true}) {
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            std::size_t& left = held[nodes[i].name.substr(0, sizeof(KTANode::nodeName) - 1)];
            if ((nodes[i].whyNot != nullptr) == hasReason && left > 0) {
                isHeld[i] = true;
                --left;
            }
        }
    }
    std::vector<const NodeToExport*> leftOut;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        if (!isHeld[i]) {
            leftOut.push_back(&nodes[i]);
        }
    }
    return leftOut;
}

void AddNodesLeftOut(const std::vector<const NodeToExport*>& nodes, bool namesAll,
                     std::vector<std::string>& lines) {
    const std::size_t shown = namesAll ? nodes.size() : std::min(nodes.size(), kMostNodeLines);
    for (std::size_t i = 0; i < shown; ++i) {
        lines.push_back("not exported: \"" + kta::Escaped(nodes[i]->name) +
                        "\": " + WhyNotExported(*nodes[i]).text);
    }
    if (shown < nodes.size()) {
        lines.push_back("not exported: " + kta::Counted(nodes.size() - shown, "other node") +
                        " (-v names all)");
    }
}

// One line for all textures that were taken out of the scene's file.
void AddTextures(const ExportOutcome& outcome, std::vector<std::string>& lines) {
    constexpr std::size_t kMostTextures = 5;
    if (outcome.textures.empty()) {
        return;
    }
    std::vector<std::string> names;
    for (const std::filesystem::path& texture : outcome.textures) {
        if (outcome.namesAll || names.size() < kMostTextures) {
            names.push_back(texture.filename().string());
        }
    }
    const std::size_t others = outcome.textures.size() - names.size();
    lines.push_back(outcome.textures.front().parent_path().string() + ": " +
                    kta::Counted(outcome.textures.size(), "texture") +
                    " of the scene's file: " + kta::Joined(names) +
                    (others > 0 ? " and " + std::to_string(others) + " more (-v names all)" : ""));
}

}  // namespace

std::vector<std::string> ErrorLines(const std::vector<OutputFile>& files,
                                    const std::vector<kta::Issue>& issues) {
    std::vector<std::string> shown;
    for (const OutputFile& file : files) {
        const std::string path = file.path.string();
        std::vector<std::string> lines;
        for (const kta::Issue& issue : issues) {
            if (issue.severity == kta::Severity::error && issue.file == file.kind) {
                lines.push_back(kta::IssueLine(path, issue));
            }
        }
        for (std::string& line : kta::FirstFaults(std::move(lines), path)) {
            shown.push_back(std::move(line));
        }
    }
    return shown;
}

std::vector<const NodeToExport*> NodesNotExported(const std::vector<OutputFile>& files,
                                                  const std::vector<NodeToExport>& nodes) {
    const kta::Reading& actor = files.front().reading;
    return actor.file && actor.Good() ? NodesLeftOut(*actor.file, nodes)
                                      : std::vector<const NodeToExport*>();
}

std::size_t NodesExported(const std::vector<OutputFile>& files) {
    std::size_t nodes = 0;
    for (const OutputFile& output : files) {
        for (std::size_t i = 0; output.reading.file && i < output.reading.file->chunks.size();
             ++i) {
            nodes += output.reading.file->chunks[i].As<KTANode>() != nullptr ? 1 : 0;
        }
    }
    return nodes;
}

const scene::LossKind& WhyNotExported(const NodeToExport& node) {
    return node.whyNot ? *node.whyNot : scene::KindOf(scene::LossCode::nodeLeftOut);
}

kta::Style StyleOf(std::string_view line) {
    const bool isLoss = line.starts_with("not exported: ") || line.starts_with("loss: ") ||
                        line.ends_with(" from reading the scene");
    return isLoss                          ? kta::Style::caution
           : line.starts_with("exported ") ? kta::Style::good
           : line.starts_with("dry run: ") ? kta::Style::bold
                                           : kta::Style::plain;
}

std::vector<std::string> Summarize(const std::vector<OutputFile>& files,
                                   const ExportOutcome& outcome) {
    std::vector<std::string> lines;
    for (const OutputFile& output : files) {
        if (output.reading.file) {
            lines.push_back(
                Line(output, *output.reading.file, kta::Summarize(*output.reading.file)));
        }
    }
    if (!outcome.log.empty()) {
        lines.push_back(outcome.log.string() + ": log");
    }
    if (!outcome.preview.empty()) {
        const std::string preview = outcome.preview.string() + ": preview";
        lines.push_back(preview);
        for (const std::string& problem : outcome.previewProblems) {
            lines.push_back(preview + ": " + problem);
        }
    }
    AddTextures(outcome, lines);
    if (!outcome.upAxis.empty()) {
        lines.push_back("up axis: " + outcome.upAxis);
    }
    if (outcome.unit && outcome.unit->convertedTo) {
        lines.push_back("unit: " + Describe(*outcome.unit));
    }
    lines.push_back("options: " + outcome.options);
    lines.insert(lines.end(), outcome.optionFiles.begin(), outcome.optionFiles.end());
    lines.push_back("exported " + std::to_string(NodesExported(files)) + " of " +
                    kta::Counted(outcome.nodes.size(), "node"));
    AddNodesLeftOut(NodesNotExported(files, outcome.nodes), outcome.namesAll, lines);
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
