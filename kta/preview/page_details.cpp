#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <nlohmann/json.hpp>
#include <unordered_map>

#include "kta/check.h"
#include "kta/deform.h"
#include "kta/dump.h"
#include "kta/fields.h"
#include "kta/issues.h"
#include "kta/preview/page.h"
#include "kta/preview/skeleton.h"
#include "kta/text.h"

namespace kta {
namespace {

using DetailsJson = nlohmann::ordered_json;

constexpr int kMostPoints = 400;  // of a curve, more than its plot has pixels
constexpr int kCurveSteps = 240;  // points of a keyframed one

// As in "Diffuse map".
std::string MapName(int type) {
    const char* const name = LayerTypeName(type);
    if (name == nullptr) {
        return "Map";
    }
    std::string text = std::string(name) + " map";
    text[0] = static_cast<char>(text[0] - 'a' + 'A');
    return text;
}

// In six digits, which is more than is shown; null for what is no number.
DetailsJson Rounded(double value) {
    char text[32];
    std::snprintf(text, sizeof(text), "%.6g", value);
    return std::isfinite(value) ? DetailsJson(std::strtod(text, nullptr)) : DetailsJson();
}

DetailsJson List(std::span<const float> values) {
    DetailsJson list = DetailsJson::array();
    for (const float value : values) {
        list.push_back(Rounded(value));
    }
    return list;
}

template <std::size_t kSize>
DetailsJson Text(const char (&field)[kSize]) {
    return ToUtf8(TextOf(field));
}

DetailsJson NumberOrNull(std::size_t number) {
    return number == kNoNode ? DetailsJson() : DetailsJson(number);
}

// x, z, y and x, z, y, w of the file as 3ds Max has them.
DetailsJson InSceneOrder(std::span<const float> values) {
    std::vector<float> ordered(values.begin(), values.end());
    std::swap(ordered[1], ordered[2]);
    return List(ordered);
}

// ---------------------------------------------------------------- actor

// What the node's meshes have in all.
struct MeshCounts {
    std::size_t triangles = 0;
    std::size_t vertices = 0;
};

DetailsJson NodesJson(const NodeTree& tree, const std::vector<ActorMesh>& meshes) {
    std::vector<MeshCounts> counts(tree.Size());
    for (const ActorMesh& mesh : meshes) {
        if (mesh.node != kNoNode) {
            counts[mesh.node].triangles += static_cast<std::size_t>(mesh.mesh->head.indexCount) / 3;
            counts[mesh.node].vertices += static_cast<std::size_t>(mesh.mesh->head.vertexCount);
        }
    }
    const std::vector<std::size_t> above = BonesAbove(tree);
    DetailsJson nodes = DetailsJson::array();
    for (std::size_t i = 0; i < tree.Size(); ++i) {
        const KTANode& node = tree.Record(i);
        nodes.push_back(
            {{"name", Text(node.nodeName)},
             {"parent", NumberOrNull(tree.Parent(i))},
             {"parentName", Text(node.parentName)},
             {"isBone", node.isBone != 0},
             {"boneAbove", NumberOrNull(above[i])},
             {"triangles", counts[i].triangles},
             {"vertices", counts[i].vertices},
             {"translation", InSceneOrder(node.translation)},
             {"rotation", InSceneOrder(node.rotation)},
             {"scale", InSceneOrder(node.scale)},
             {"helperSize", node.hasHelperSize != 0 ? Rounded(node.helperSize) : DetailsJson()}});
    }
    return nodes;
}

DetailsJson MaterialsJson(const PageSource& source) {
    DetailsJson materials = DetailsJson::array();
    for (const Chunk& chunk : source.actor->file->chunks) {
        if (const auto* material = chunk.As<KTAMaterial>()) {
            materials.push_back({{"name", Text(material->materialName)},
                                 {"diffuse", List(material->diffuse)},
                                 {"ambient", List(material->ambient)},
                                 {"specular", List(material->specular)},
                                 {"selfIllumination", List(material->selfIllumination)},
                                 {"shininess", Rounded(material->shininess)},
                                 {"shininessStrength", Rounded(material->shininessStrength)},
                                 {"opacity", Rounded(material->opacity)},
                                 {"twoSided", material->twoSided != 0},
                                 {"wire", material->wire != 0},
                                 {"layers", DetailsJson::array()}});
        } else if (const auto* layer = chunk.As<KTAMaterialLayer>();
                   layer != nullptr && !materials.empty()) {
            DetailsJson found;
            if (source.findTexture) {
                found = source.findTexture(TextOf(layer->textureFileName)).has_value();
            }
            materials.back()["layers"].push_back({{"type", MapName(layer->layerType)},
                                                  {"file", Text(layer->textureFileName)},
                                                  {"found", found},
                                                  {"amount", Rounded(layer->amount)}});
        }
    }
    return materials;
}

struct BoneUse {
    std::size_t vertices = 0;
    double greatest = 0;
    double sum = 0;
};

// Shares as the page shows them in colours: each vertex's sum to 1.
DetailsJson SkinsJson(const NodeTree& tree, const std::vector<ActorMesh>& meshes) {
    DetailsJson skins = DetailsJson::array();
    for (const ActorMesh& mesh : meshes) {
        if (mesh.weights == nullptr) {
            continue;
        }
        const Skin skin(tree, mesh);
        const std::size_t vertices = mesh.weights->weightCounts.size();
        std::map<std::size_t, BoneUse> uses;
        for (std::size_t vertex = 0; vertex < vertices; ++vertex) {
            for (const Influence& influence : skin.Of(static_cast<std::int32_t>(vertex))) {
                BoneUse& use = uses[influence.node];
                ++use.vertices;
                use.greatest = std::max(use.greatest, influence.share);
                use.sum += influence.share;
            }
        }
        DetailsJson bones = DetailsJson::array();
        for (const auto& [node, use] : uses) {
            bones.push_back({{"node", NumberOrNull(node)},
                             {"vertices", use.vertices},
                             {"greatest", Rounded(use.greatest)},
                             {"sum", Rounded(use.sum)}});
        }
        skins.push_back(
            {{"node", NumberOrNull(mesh.node)}, {"vertices", vertices}, {"bones", bones}});
    }
    return skins;
}

DetailsJson MorphsJson(const std::vector<ActorMesh>& meshes) {
    DetailsJson morphs = DetailsJson::array();
    for (const ActorMesh& mesh : meshes) {
        for (std::size_t i = 0; i < mesh.morphs.size(); ++i) {
            morphs.push_back({{"node", NumberOrNull(mesh.node)},
                              {"channel", Text(mesh.morphs[i]->channel.channelName)},
                              {"target", i},
                              {"points", mesh.morphs[i]->points.size()}});
        }
    }
    return morphs;
}

// ---------------------------------------------------------------- motion

using Point = std::array<double, 2>;  // time, value

DetailsJson PointsJson(const std::vector<Point>& points) {
    DetailsJson list = DetailsJson::array();
    const std::size_t step = points.size() / kMostPoints + 1;
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (i % step == 0 || i + 1 == points.size()) {
            list.push_back({Rounded(points[i][0]), Rounded(points[i][1])});
        }
    }
    return list;
}

DetailsJson CurveJson(const char* axis, const std::vector<Point>& points,
                      const std::vector<Point>& keys) {
    return {{"axis", axis}, {"points", PointsJson(points)}, {"keys", PointsJson(keys)}};
}

constexpr const char* kAxes[] = {"X", "Y", "Z", "W"};

// The samples are the curve's points and its keys.
template <typename Sample>
DetailsJson SampledCurves(const std::vector<Sample>& samples) {
    constexpr std::size_t kValues = std::size(decltype(Sample::values){});
    constexpr std::size_t kPlaces[] = {0, 2, 1, 3};  // of X, Y, Z, W in the file
    DetailsJson curves = DetailsJson::array();
    for (std::size_t axis = 0; axis < kValues; ++axis) {
        std::vector<Point> points;
        for (const Sample& sample : samples) {
            points.push_back({sample.time, sample.values[kPlaces[axis]]});
        }
        curves.push_back(CurveJson(kAxes[axis], points, points));
    }
    return curves;
}

DetailsJson KeyframedCurves(const Track& track) {
    DetailsJson curves = DetailsJson::array();
    for (std::size_t axis = 0; axis < track.curves.size(); ++axis) {
        const Curve& curve = track.curves[axis];
        std::vector<Point> points;
        std::vector<Point> keys;
        for (const CurveKey& key : curve) {
            keys.push_back({key.time, key.value});
        }
        for (int i = 0; i <= kCurveSteps && !curve.empty(); ++i) {
            const double share = static_cast<double>(i) / kCurveSteps;
            const double time =
                curve.front().time + (curve.back().time - curve.front().time) * share;
            points.push_back({time, CurveAt(curve, time, 0)});
        }
        curves.push_back(CurveJson(kAxes[axis], points, keys));
    }
    return curves;
}

DetailsJson CurvesOf(const KeyTrack& track) {
    return !track.vectorSamples.empty()     ? SampledCurves(track.vectorSamples)
           : !track.rotationSamples.empty() ? SampledCurves(track.rotationSamples)
                                            : KeyframedCurves(TrackOf(track));
}

// The actor's node that each motion part moves.
using MovedNodes = std::unordered_map<const KTAMotionPart*, std::size_t>;

MovedNodes NodesMoved(const NodeTree& tree) {
    MovedNodes moved;
    for (std::size_t node = 0; node < tree.Size(); ++node) {
        if (const NodeMotion* motion = tree.MotionOf(node)) {
            moved.emplace(motion->part, node);
        }
    }
    return moved;
}

std::size_t NodeMovedBy(const MovedNodes& moved, const KTAMotionPart* part) {
    const auto found = moved.find(part);
    return found == moved.end() ? kNoNode : found->second;
}

DetailsJson TracksJson(const File& motion, const MovedNodes& moved) {
    DetailsJson tracks = DetailsJson::array();
    const KTAMotionPart* part = nullptr;
    for (const Chunk& chunk : motion.chunks) {
        if (const auto* head = chunk.As<KTAMotionPart>()) {
            part = head;
        } else if (const auto* track = chunk.As<KeyTrack>(); track != nullptr && part != nullptr) {
            tracks.push_back({{"node", NumberOrNull(NodeMovedBy(moved, part))},
                              {"name", Text(part->nodeName)},
                              {"letter", ToUtf8(std::string(1, track->head.trackLetter))},
                              {"keyframed", chunk.version == kKeyTrackKeyframed},
                              {"keys", track->head.keyCount},
                              {"curves", CurvesOf(*track)}});
        }
    }
    return tracks;
}

// ---------------------------------------------------------------- issues

// What of the model a chunk is about.
struct Subject {
    std::size_t node = kNoNode;
    std::size_t material = kNoNode;
};

class Subjects {
  public:
    Subjects(const File& actor, const File* motion, const MovedNodes& moved) {
        FindInActor(actor);
        std::size_t node = kNoNode;
        for (std::size_t i = 0; motion != nullptr && i < motion->chunks.size(); ++i) {
            if (const auto* part = motion->chunks[i].As<KTAMotionPart>()) {
                node = NodeMovedBy(moved, part);
            }
            inMotion_.push_back({node});
        }
    }

    Subject Of(const Issue& issue) const {
        const auto& subjects = issue.file == kFileKindActor ? inActor_ : inMotion_;
        const bool hasChunk = issue.place.chunkType != nullptr;
        return hasChunk && issue.place.chunk < subjects.size() ? subjects[issue.place.chunk]
                                                               : Subject{};
    }

  private:
    void FindInActor(const File& actor) {
        for (const Chunk& chunk : actor.chunks) {
            if (const auto* node = chunk.As<KTANode>()) {
                byName_.emplace(TextOf(node->nodeName), nodes_++);
            }
        }
        std::size_t nodes = 0, materials = 0;
        for (const Chunk& chunk : actor.chunks) {
            Subject subject;
            if (chunk.As<KTANode>() != nullptr) {
                subject.node = nodes++;
            } else if (chunk.As<KTAMaterial>() != nullptr) {
                subject.material = materials++;
            } else if (chunk.As<KTAMaterialLayer>() != nullptr && materials > 0) {
                subject.material = materials - 1;
            } else {
                subject.node = NodeOf(chunk);
            }
            inActor_.push_back(subject);
        }
    }

    // That the chunk names or numbers; none where it does neither.
    std::size_t NodeOf(const Chunk& chunk) const {
        if (const auto* mesh = chunk.As<Mesh>()) {
            return Numbered(mesh->head.nodeNumber);
        } else if (const auto* weights = chunk.As<Weights>()) {
            return Numbered(weights->head.nodeNumber);
        } else if (const auto* limits = chunk.As<KTAJointLimits>()) {
            return Numbered(limits->nodeNumber);
        } else if (const auto* morph = chunk.As<Morph>()) {
            return Named(TextOf(morph->head.nodeName));
        } else if (const auto* wire = chunk.As<KTAWire>()) {
            return Named(TextOf(wire->firstNodeName));
        } else if (const auto* chain = chunk.As<KTAIKChain>()) {
            return Named(TextOf(chain->nodeName));
        }
        return kNoNode;
    }
    std::size_t Numbered(std::int32_t number) const {
        const auto node = static_cast<std::size_t>(number);
        return number >= 0 && node < nodes_ ? node : kNoNode;
    }
    std::size_t Named(std::string_view name) const {
        const auto found = byName_.find(name);
        return found == byName_.end() ? kNoNode : found->second;
    }

    std::unordered_map<std::string_view, std::size_t> byName_;
    std::size_t nodes_ = 0;
    std::vector<Subject> inActor_;  // of each chunk
    std::vector<Subject> inMotion_;
};

// The worst first.
DetailsJson IssuesJson(const PageSource& source, const MovedNodes& moved) {
    std::vector<Issue> issues = Check(*source.actor, source.motion, {.notes = true});
    std::stable_sort(issues.begin(), issues.end(),
                     [](const Issue& a, const Issue& b) { return a.severity > b.severity; });
    const File* const motion = source.motion == nullptr ? nullptr : &*source.motion->file;
    const Subjects subjects(*source.actor->file, motion, moved);
    DetailsJson list = DetailsJson::array();
    for (const Issue& issue : issues) {
        const Subject subject = subjects.Of(issue);
        list.push_back(
            {{"severity", SeverityName(issue.severity)},
             {"code", TypeOf(issue.code).name},
             {"text", ToUtf8(issue.text)},
             {"meaning", TypeOf(issue.code).meaning},
             {"remedy", TypeOf(issue.code).remedy},
             {"subject", ToUtf8(issue.subject)},
             {"file", ToUtf8(issue.file == kFileKindActor ? source.actorName : source.motionName)},
             {"where", issue.where},
             {"offset", issue.offset},
             {"count", issue.count},
             {"node", NumberOrNull(subject.node)},
             {"material", NumberOrNull(subject.material)}});
    }
    return list;
}

}  // namespace

std::string PageDetails(const PageSource& source) {
    const File& actor = *source.actor->file;
    const File* const motion = source.motion == nullptr ? nullptr : &*source.motion->file;
    const NodeTree tree(actor, motion);
    const std::vector<ActorMesh> meshes = MeshesOf(actor);
    const MovedNodes moved = NodesMoved(tree);
    DetailsJson nodes = NodesJson(tree, meshes);
    std::size_t triangles = 0;
    for (const DetailsJson& node : nodes) {
        triangles += node["triangles"].get<std::size_t>();
    }
    DetailsJson tracks = motion == nullptr ? DetailsJson::array() : TracksJson(*motion, moved);
    const std::string counts = Counted(tree.Size(), "node") + ", " +
                               Counted(triangles, "triangle") + ", " +
                               Counted(tracks.size(), "track");
    const DetailsJson details = {{"title", ToUtf8(source.title)},
                                 {"counts", counts},
                                 {"times", {Rounded(tree.FirstTime()), Rounded(tree.LastTime())}},
                                 {"nodes", std::move(nodes)},
                                 {"materials", MaterialsJson(source)},
                                 {"skins", SkinsJson(tree, meshes)},
                                 {"morphs", MorphsJson(meshes)},
                                 {"tracks", std::move(tracks)},
                                 {"issues", IssuesJson(source, moved)}};
    // Where it stands in the page, no text of it ends the element.
    std::string text = details.dump();
    std::string escaped;
    for (const char c : text) {
        escaped += c == '<' ? std::string("\\u003c") : std::string(1, c);
    }
    return escaped;
}

}  // namespace kta
