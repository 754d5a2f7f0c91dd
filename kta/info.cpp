#include "kta/info.h"

#include <algorithm>
#include <iomanip>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <variant>

#include "kta/dump.h"
#include "kta/fields.h"
#include "kta/motion_summary.h"
#include "kta/text.h"

namespace kta {
namespace {

using Nodes = std::vector<const Node*>;

std::vector<ChunkTotal> ChunkTotals(const File& file) {
    std::vector<ChunkTotal> totals;
    for (const KTAChunkType& type : kChunkTypes) {
        totals.push_back({&type, 0, 0});
    }
    for (std::size_t i = 0; i < file.chunks.size(); ++i) {
        const Chunk& chunk = file.chunks[i];
        const bool last = i + 1 == file.chunks.size();
        const std::uint64_t end = last ? file.end : file.chunks[i + 1].offset;
        const auto total = std::find_if(totals.begin(), totals.end(), [&](const ChunkTotal& t) {
            return t.type->id == chunk.type->id;
        });
        total->count += 1;
        total->bytes += end - chunk.offset;
    }
    std::erase_if(totals, [](const ChunkTotal& total) { return total.count == 0; });
    return totals;
}

// The position of each node's parent; `nodes.size()` where there is none.
std::vector<std::size_t> Parents(const Nodes& nodes) {
    std::unordered_map<std::string_view, std::size_t> byName;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        byName.emplace(nodes[i]->nodeName, i);
    }
    std::vector<std::size_t> parents;
    for (const Node* node : nodes) {
        const auto parent = byName.find(node->parentName);
        const bool none = node->parentName.empty() || parent == byName.end();
        parents.push_back(none ? nodes.size() : parent->second);
    }
    return parents;
}

std::size_t Depth(const Nodes& nodes) {
    const std::vector<std::size_t> parents = Parents(nodes);
    std::vector<std::size_t> depths(nodes.size(), 0);  // 0: not known yet
    std::vector<bool> onPath(nodes.size(), false);
    std::vector<std::size_t> path;
    std::size_t deepest = 0;
    for (std::size_t start = 0; start < nodes.size(); ++start) {
        std::size_t at = start;
        while (at != nodes.size() && depths[at] == 0 && !onPath[at]) {
            onPath[at] = true;
            path.push_back(at);
            at = parents[at];
        }
        std::size_t depth = at == nodes.size() ? 0 : depths[at];
        for (; !path.empty(); path.pop_back()) {
            depths[path.back()] = ++depth;
            onPath[path.back()] = false;
        }
        deepest = std::max(deepest, depths[start]);
    }
    return deepest;
}

void Count(const Mesh& mesh, Summary& summary) {
    summary.meshes += 1;
    summary.collisionMeshes += mesh.isCollision ? 1 : 0;
    summary.subMeshes += mesh.subMeshes.size();
    summary.triangles += static_cast<std::size_t>(mesh.numIndices / 3);
    summary.vertices += static_cast<std::size_t>(mesh.numVertices);
    summary.originalVertices += static_cast<std::size_t>(mesh.numOriginalVertices);
}

void CountGeometry(const File& file, Summary& summary) {
    std::unordered_set<std::string_view> textures;
    for (const Chunk& chunk : file.chunks) {
        if (const auto* mesh = std::get_if<Mesh>(&chunk.body)) {
            Count(*mesh, summary);
        } else if (const auto* layer = std::get_if<MaterialLayer>(&chunk.body)) {
            summary.layers += 1;
            textures.insert(layer->textureFileName);
        } else if (std::holds_alternative<Material>(chunk.body)) {
            summary.materials += 1;
        }
    }
    summary.textures = textures.size();
}

// What hangs from nodes beside their meshes.
class RigCounter {
  public:
    explicit RigCounter(Summary& summary) : summary_(summary) {}

    void operator()(const Weights& weights) {
        summary_.weights += 1;
        summary_.weightedVertices += weights.counts.size();
        summary_.influences += weights.entries.size();
        for (const std::uint8_t count : weights.counts) {
            summary_.mostInfluences = std::max<std::size_t>(summary_.mostInfluences, count);
        }
        for (const Weights::Entry& entry : weights.entries) {
            if (entry.bone != -1) {
                bones_.insert(entry.bone);
            }
        }
        summary_.weightingBones = bones_.size();
    }
    void operator()(const JointLimits&) { summary_.jointLimits += 1; }
    void operator()(const Morph& morph) {
        summary_.morphChannels += 1;
        summary_.morphPoints += morph.packedPoints.size();
    }
    void operator()(const Wire&) { summary_.wires += 1; }
    void operator()(const IkChain&) { summary_.ikChains += 1; }
    template <typename Other>
    void operator()(const Other&) {}

  private:
    Summary& summary_;
    std::unordered_set<std::int16_t> bones_;
};

void CountRig(const File& file, Summary& summary) {
    RigCounter counter(summary);
    for (const Chunk& chunk : file.chunks) {
        std::visit(counter, chunk.body);
    }
}

void WriteLine(const std::string& label, const std::string& value, std::ostream& out) {
    out << "  " << std::setw(24) << std::left << label << value << '\n';
}

void WriteActorLines(const Summary& summary, std::ostream& out) {
    const std::pair<const char*, std::size_t> lines[] = {
        {"nodes", summary.nodes},
        {"bones", summary.bones},
        {"with helper size", summary.helpers},
        {"hierarchy levels", summary.depth},
        {"materials", summary.materials},
        {"layers", summary.layers},
        {"textures", summary.textures},
        {"meshes", summary.meshes},
        {"for collision", summary.collisionMeshes},
        {"sub-meshes", summary.subMeshes},
        {"triangles", summary.triangles},
        {"vertices", summary.vertices},
        {"vertices in the scene", summary.originalVertices}};
    for (const auto& [label, count] : lines) {
        WriteLine(label, std::to_string(count), out);
    }
}

// Lines of what there is alone, so that what most files lack takes no room.
void WriteRigLines(const Summary& summary, std::ostream& out) {
    const std::size_t skins = summary.weights;
    const std::size_t morphs = summary.morphChannels;
    const struct {
        const char* label;
        std::size_t count;
        std::size_t occurrences;
    } lines[] = {{"skinned meshes", skins, skins},
                 {"vertices with weights", summary.weightedVertices, skins},
                 {"weights", summary.influences, skins},
                 {"most of one vertex", summary.mostInfluences, skins},
                 {"bones with weights", summary.weightingBones, skins},
                 {"joint limits", summary.jointLimits, summary.jointLimits},
                 {"morph channels", morphs, morphs},
                 {"points of morphs", summary.morphPoints, morphs},
                 {"wired parameters", summary.wires, summary.wires},
                 {"IK chains", summary.ikChains, summary.ikChains}};
    for (const auto& [label, count, occurrences] : lines) {
        if (occurrences > 0) {
            WriteLine(label, std::to_string(count), out);
        }
    }
}

void WriteMotionLines(const MotionSummary& summary, std::ostream& out) {
    WriteLine("motion parts", std::to_string(summary.parts), out);
    WriteLine("key tracks", std::to_string(summary.tracks), out);
    for (const TrackTotal& total : summary.totals) {
        const char* kind = total.version == kKeyTrackSampled ? " sampled" : " keyframed";
        WriteLine(std::string("  ") + total.trackLetter + kind,
                  Counted(total.tracks, "track") + ", " + Counted(total.keys, "key"), out);
    }
    if (summary.keys == 0) {
        return;
    }
    WriteLine("keys", std::to_string(summary.keys), out);
    WriteLine("first time", Value(summary.firstTime).dump() + " s", out);
    WriteLine("last time", Value(summary.lastTime).dump() + " s", out);
    std::vector<std::string> names;
    for (const PartKeys& part : summary.mostKeys) {
        names.push_back(OneLine(ToUtf8(part.nodeName)) + " (" + std::to_string(part.keys) + ")");
    }
    if (!names.empty()) {
        WriteLine("most keys", Joined(names), out);
    }
}

}  // namespace

Summary Summarize(const File& file) {
    Summary summary;
    summary.chunks = ChunkTotals(file);
    Nodes nodes;
    for (const Chunk& chunk : file.chunks) {
        if (const auto* node = std::get_if<Node>(&chunk.body)) {
            nodes.push_back(node);
            summary.bones += node->isBone ? 1 : 0;
            summary.helpers += node->hasHelperSize ? 1 : 0;
        }
    }
    summary.nodes = nodes.size();
    summary.depth = Depth(nodes);
    CountGeometry(file, summary);
    CountRig(file, summary);
    return summary;
}

void WriteInfo(const std::string& path, const File& file, std::ostream& out) {
    const Summary summary = Summarize(file);
    out << OneLine(ToUtf8(path)) << '\n';
    WriteLine("kind", KindName(file.kind), out);
    WriteLine("version", std::to_string(file.version[0]) + "." + std::to_string(file.version[1]),
              out);
    const bool whole = file.end == file.size;
    WriteLine("size",
              std::to_string(file.size) + " bytes" +
                  (whole ? "" : ", read up to offset " + std::to_string(file.end)),
              out);
    WriteLine("chunks", std::to_string(file.chunks.size()), out);
    for (const ChunkTotal& total : summary.chunks) {
        WriteLine(std::string("  ") + total.type->name,
                  std::to_string(total.count) + ", " + std::to_string(total.bytes) + " bytes", out);
    }
    if (file.kind == kFileKindActor) {
        WriteActorLines(summary, out);
        WriteRigLines(summary, out);
    } else if (!file.chunks.empty()) {
        WriteMotionLines(SummarizeMotion(file), out);
    }
}

}  // namespace kta
