#include "kta/info.h"

#include <cmath>
#include <iomanip>
#include <limits>
#include <nlohmann/json.hpp>
#include <unordered_map>
#include <unordered_set>

#include "kta/dump.h"
#include "kta/pose.h"
#include "kta/text.h"

namespace kta {
namespace {

using InfoJson = nlohmann::basic_json<nlohmann::ordered_map, std::vector, std::string, bool,
                                      std::int64_t, std::uint64_t, float>;
using Nodes = std::vector<const KTANode*>;

// ---------------------------------------------------------------- chunks and nodes

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

std::size_t Depth(const Nodes& nodes) {
    const std::vector<std::size_t> parents = ParentsByName(nodes);
    std::vector<std::size_t> depths(nodes.size(), 0);  // 0: not known yet
    std::vector<bool> onPath(nodes.size(), false);
    std::vector<std::size_t> path;
    std::size_t deepest = 0;
    for (std::size_t start = 0; start < nodes.size(); ++start) {
        std::size_t at = start;
        while (at != kNoNode && depths[at] == 0 && !onPath[at]) {
            onPath[at] = true;
            path.push_back(at);
            at = parents[at];
        }
        std::size_t depth = at == kNoNode ? 0 : depths[at];
        for (; !path.empty(); path.pop_back()) {
            depths[path.back()] = ++depth;
            onPath[path.back()] = false;
        }
        deepest = std::max(deepest, depths[start]);
    }
    return deepest;
}

// ---------------------------------------------------------------- what an actor holds

class ActorCounter {
  public:
    explicit ActorCounter(Summary& summary) : summary_(summary) {}

    void Count(const Chunk& chunk) {
        if (const auto* node = chunk.As<KTANode>()) {
            summary_.nodes += 1;
            summary_.bones += node->isBone != 0 ? 1 : 0;
            summary_.helpers += node->hasHelperSize != 0 ? 1 : 0;
        } else if (const auto* mesh = chunk.As<Mesh>()) {
            Count(*mesh);
        } else if (const auto* layer = chunk.As<KTAMaterialLayer>()) {
            summary_.layers += 1;
            textures_.insert(TextOf(layer->textureFileName));
            summary_.textures = textures_.size();
        } else if (const auto* weights = chunk.As<Weights>()) {
            Count(*weights);
        } else if (const auto* morph = chunk.As<Morph>()) {
            summary_.morphChannels += 1;
            summary_.morphPoints += morph->points.size();
        }
        summary_.materials += chunk.type->id == kChunkMaterial ? 1 : 0;
        summary_.jointLimits += chunk.type->id == kChunkJointLimits ? 1 : 0;
        summary_.wires += chunk.type->id == kChunkWire ? 1 : 0;
        summary_.ikChains += chunk.type->id == kChunkIKChain ? 1 : 0;
    }

  private:
    void Count(const Mesh& mesh) {
        summary_.meshes += 1;
        summary_.collisionMeshes += mesh.head.isCollision != 0 ? 1 : 0;
        summary_.subMeshes += mesh.subMeshes.size();
        summary_.triangles += static_cast<std::size_t>(mesh.head.indexCount / 3);
        summary_.vertices += static_cast<std::size_t>(mesh.head.vertexCount);
        summary_.originalVertices += static_cast<std::size_t>(mesh.head.originalVertexCount);
    }

    void Count(const Weights& weights) {
        summary_.weights += 1;
        summary_.weightedVertices += weights.weightCounts.size();
        summary_.influences += weights.weights.size();
        for (const std::uint8_t count : weights.weightCounts) {
            summary_.mostInfluences = std::max<std::size_t>(summary_.mostInfluences, count);
        }
        for (const KTAWeight& weight : weights.weights) {
            if (weight.bone != -1) {
                bones_.insert(weight.bone);
            }
        }
        summary_.weightingBones = bones_.size();
    }

    Summary& summary_;
    std::unordered_set<std::string_view> textures_;
    std::unordered_set<std::int16_t> bones_;
};

// ---------------------------------------------------------------- what a motion file holds

constexpr std::size_t kMostParts = 5;

constexpr struct {
    char letter;
    std::uint32_t version;
} kTracks[] = {{'P', kKeyTrackSampled},   {'P', kKeyTrackKeyframed}, {'R', kKeyTrackSampled},
               {'r', kKeyTrackKeyframed}, {'S', kKeyTrackSampled},   {'S', kKeyTrackKeyframed}};

// The least and greatest finite time.
class TimeSpan {
  public:
    void Add(const KeyTrack& track) {
        for (const KTAVectorSample& sample : track.vectorSamples) {
            Add(sample.time);
        }
        for (const KTARotationSample& sample : track.rotationSamples) {
            Add(sample.time);
        }
        for (const KeyframedKey& key : track.keyframedKeys) {
            Add(key.head.time);
        }
    }

    float First() const { return first_ <= last_ ? first_ : 0; }
    float Last() const { return first_ <= last_ ? last_ : 0; }

  private:
    void Add(float time) {
        if (std::isfinite(time)) {
            first_ = std::min(first_, time);
            last_ = std::max(last_, time);
        }
    }

    float first_ = std::numeric_limits<float>::infinity();
    float last_ = -std::numeric_limits<float>::infinity();
};

void CountTrack(const Chunk& chunk, const KeyTrack& track, std::vector<TrackTotal>& totals) {
    for (TrackTotal& total : totals) {
        if (total.trackLetter == track.head.trackLetter && total.version == chunk.version) {
            total.tracks += 1;
            total.keys += track.head.keyCount;
        }
    }
}

// ---------------------------------------------------------------- lines

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
    WriteLine("first time", NumberText(summary.firstTime) + " s", out);
    WriteLine("last time", NumberText(summary.lastTime) + " s", out);
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
    ActorCounter counter(summary);
    for (const Chunk& chunk : file.chunks) {
        counter.Count(chunk);
        if (const auto* node = chunk.As<KTANode>()) {
            nodes.push_back(node);
        }
    }
    summary.depth = Depth(nodes);
    return summary;
}

MotionSummary SummarizeMotion(const File& file) {
    MotionSummary summary;
    for (const auto& [letter, version] : kTracks) {
        summary.totals.push_back({letter, version});
    }
    TimeSpan times;
    std::vector<PartKeys> parts;
    for (const Chunk& chunk : file.chunks) {
        if (const auto* part = chunk.As<KTAMotionPart>()) {
            parts.push_back({std::string(TextOf(part->nodeName))});
        } else if (const auto* track = chunk.As<KeyTrack>()) {
            summary.tracks += 1;
            summary.keys += track->head.keyCount;
            CountTrack(chunk, *track, summary.totals);
            times.Add(*track);
            if (!parts.empty()) {
                parts.back().keys += track->head.keyCount;
            }
        }
    }
    summary.parts = parts.size();
    std::erase_if(summary.totals, [](const TrackTotal& total) { return total.tracks == 0; });
    summary.firstTime = times.First();
    summary.lastTime = times.Last();
    std::erase_if(parts, [](const PartKeys& part) { return part.keys == 0; });
    std::stable_sort(parts.begin(), parts.end(),
                     [](const PartKeys& a, const PartKeys& b) { return a.keys > b.keys; });
    parts.resize(std::min(parts.size(), kMostParts));
    summary.mostKeys = std::move(parts);
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

// ---------------------------------------------------------------- JSON

namespace {

// Of the finite corners, as they stand in the file; null without any.
InfoJson BoundsOf(const Mesh& mesh) {
    std::array<float, 3> least{}, greatest{};
    bool isEmpty = true;
    for (const SubMesh& subMesh : mesh.subMeshes) {
        for (const KTAVertex& vertex : subMesh.vertices) {
            const auto& p = vertex.position;
            if (!std::isfinite(p[0]) || !std::isfinite(p[1]) || !std::isfinite(p[2])) {
                continue;
            }
            for (std::size_t i = 0; i < 3; ++i) {
                least[i] = isEmpty ? p[i] : std::min(least[i], p[i]);
                greatest[i] = isEmpty ? p[i] : std::max(greatest[i], p[i]);
            }
            isEmpty = false;
        }
    }
    return isEmpty ? InfoJson() : InfoJson{{"least", least}, {"greatest", greatest}};
}

void AddActor(const File& file, InfoJson& info) {
    Nodes nodes;
    InfoJson meshes = InfoJson::array(), materials = InfoJson::array();
    InfoJson textures = InfoJson::array();
    std::unordered_set<std::string_view> knownTextures;
    for (const Chunk& chunk : file.chunks) {
        if (const auto* node = chunk.As<KTANode>()) {
            nodes.push_back(node);
        } else if (const auto* mesh = chunk.As<Mesh>()) {
            meshes.push_back({{"node", mesh->head.nodeNumber},
                              {"collision", mesh->head.isCollision != 0},
                              {"triangles", mesh->head.indexCount / 3},
                              {"vertices", mesh->head.vertexCount},
                              {"bounds", BoundsOf(*mesh)}});
        } else if (const auto* material = chunk.As<KTAMaterial>()) {
            materials.push_back(ToUtf8(TextOf(material->materialName)));
        } else if (const auto* layer = chunk.As<KTAMaterialLayer>()) {
            if (knownTextures.insert(TextOf(layer->textureFileName)).second) {
                textures.push_back(ToUtf8(TextOf(layer->textureFileName)));
            }
        }
    }
    const std::vector<std::size_t> parents = ParentsByName(nodes);
    InfoJson& tree = info["nodes"] = InfoJson::array();
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        tree.push_back({{"name", ToUtf8(TextOf(nodes[i]->nodeName))},
                        {"parent", parents[i] == kNoNode ? InfoJson() : InfoJson(parents[i])},
                        {"bone", nodes[i]->isBone != 0}});
    }
    info["meshes"] = std::move(meshes);
    info["materials"] = std::move(materials);
    info["textures"] = std::move(textures);
}

void AddMotion(const File& file, InfoJson& info) {
    const MotionSummary summary = SummarizeMotion(file);
    InfoJson& parts = info["motionParts"] = InfoJson::array();
    for (const Chunk& chunk : file.chunks) {
        if (const auto* part = chunk.As<KTAMotionPart>()) {
            parts.push_back(ToUtf8(TextOf(part->nodeName)));
        }
    }
    info["tracks"] = summary.tracks;
    info["keys"] = summary.keys;
    info["firstTime"] = summary.firstTime;
    info["lastTime"] = summary.lastTime;
}

}  // namespace

void WriteInfoJson(const std::string& path, const Reading& reading, std::ostream& out) {
    InfoJson info = {{"file", ToUtf8(path)}};
    if (reading.file) {
        const File& file = *reading.file;
        info["kind"] = KindName(file.kind);
        info["version"] = file.version;
        info["size"] = file.size;
        InfoJson& chunks = info["chunks"] = InfoJson::object();
        for (const ChunkTotal& total : ChunkTotals(file)) {
            chunks[total.type->name] = {{"count", total.count}, {"bytes", total.bytes}};
        }
        file.kind == kFileKindActor ? AddActor(file, info) : AddMotion(file, info);
    }
    std::string text = info.dump();
    text.pop_back();  // the brace, so that the object goes on
    out << text << FaultMembers(reading) << "}\n";
}

}  // namespace kta
