#include "host/app/ledger.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "host/app/log_lines.h"
#include "host/app/scene_report.h"
#include "host/app/scene_skin.h"
#include "kta/deform.h"
#include "kta/text.h"

namespace maxhost::app {
namespace {

using scene::LossCode;

std::string InQuotes(const std::string& name) {
    return "'" + kta::Escaped(name) + "'";
}

}  // namespace

// ---------------------------------------------------------------- before the export

std::vector<LedgerEntry> LossesBefore(const scene::Scene& scene,
                                      const std::vector<scene::Loss>& import) {
    std::vector<LedgerEntry> losses;
    for (const scene::Loss& loss : import) {
        const bool hasNode =
            loss.node >= 0 && static_cast<std::size_t>(loss.node) < scene.nodes.size();
        losses.push_back({loss.code, hasNode ? PathOf(scene, loss.node) : "", loss.subject,
                          loss.text, loss.count});
    }
    std::unordered_map<std::string_view, std::size_t> nodesByName;
    for (const scene::Node& node : scene.nodes) {
        ++nodesByName[NameInFile(node)];
    }
    for (std::size_t i = 0; i < scene.nodes.size(); ++i) {
        const scene::Node& node = scene.nodes[i];
        const auto add = [&](LossCode code, const std::string& text) {
            losses.push_back({code, PathOf(scene, static_cast<int>(i)), "", text});
        };
        if (NameInFile(node).size() < node.name.size()) {
            add(LossCode::nameCut, "its name has " + kta::Counted(node.name.size(), "byte") +
                                       ", of which the files hold " +
                                       std::to_string(NameInFile(node).size()));
        }
        if (const std::size_t nodes = nodesByName[NameInFile(node)]; nodes > 1) {
            add(LossCode::nameShared, std::to_string(nodes) + " nodes have this name");
        }
    }
    return losses;
}

// ---------------------------------------------------------------- the export

namespace {

class ExportLosses {
  public:
    explicit ExportLosses(const ExportedScene& exported)
        : exported_(exported), meshes_(kta::MeshesOf(exported.actor)) {
        for (const kta::ActorMesh& mesh : meshes_) {
            if (mesh.node != kta::kNoNode) {
                meshOfNode_[mesh.node] = &mesh;
            }
        }
    }

    std::vector<LedgerEntry> Find() {
        for (std::size_t i = 0; i < exported_.scene.nodes.size(); ++i) {
            node_ = static_cast<int>(i);
            if (exported_.match.FileNodeOf(node_) == kta::kNoNode) {
                Add(WhyNotExported(exported_.nodes[i]).value);
            } else {
                FindAt(exported_.scene.nodes[i]);
            }
        }
        AddMotions();
        AddWarnings();
        return std::move(losses_);
    }

  private:
    void Add(LossCode code, const std::string& subject = {}, std::string text = {},
             std::size_t count = 1) {
        losses_.push_back({code, PathOf(exported_.scene, node_), subject,
                           text.empty() ? scene::KindOf(code).text : std::move(text), count});
    }
    const kta::ActorMesh* MeshOf(int node) const {
        const auto found = meshOfNode_.find(exported_.match.FileNodeOf(node));
        return found == meshOfNode_.end() ? nullptr : found->second;
    }
    void FindAt(const scene::Node& node);
    LossCode WhyNoMesh(const scene::Node& node) const;
    void CompareMesh(const scene::Node& node, const kta::ActorMesh& mesh);
    double MostChanged(const SceneSkin& own, const kta::Skin& skin, std::size_t vertex) const;
    void CompareSkin(const scene::Node& node, const kta::ActorMesh& mesh);
    void CompareMorphs(const scene::Node& node, const kta::ActorMesh& mesh);
    void AddMotions();
    void AddWarnings();

    const ExportedScene& exported_;
    const std::vector<kta::ActorMesh> meshes_;
    std::unordered_map<std::size_t, const kta::ActorMesh*> meshOfNode_;
    int node_ = scene::kNone;
    std::vector<LedgerEntry> losses_;
};

bool IsTaggedCollisionMesh(std::string properties) {
    std::ranges::transform(properties, properties.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
    });
    return properties.find("collisionmesh") != std::string::npos;
}

void ExportLosses::FindAt(const scene::Node& node) {
    const std::string kind = KindOf(node);
    if (kind == "camera" || kind == "light" || kind == "shape") {
        Add(LossCode::objectLeftOut, "", "a " + kind + ", exported as a node alone");
    }
    if (!node.userProperties.empty()) {
        Add(LossCode::userPropertiesLeftOut);
    }
    const bool isMesh =
        node.object && node.object->mesh && node.object->superClassId.value_or(0x10) == 0x10;
    const kta::ActorMesh* const mesh = MeshOf(node_);
    if (mesh && isMesh) {
        CompareMesh(node, *mesh);
        CompareSkin(node, *mesh);
        CompareMorphs(node, *mesh);
    } else if (isMesh && !node.object->mesh->vertices.empty()) {
        Add(WhyNoMesh(node));
    }
}

LossCode ExportLosses::WhyNoMesh(const scene::Node& node) const {
    const ExportOptions& options = exported_.inForce;
    const bool isCollision = IsTaggedCollisionMesh(node.userProperties);
    return node.object->mesh->faces.empty()          ? LossCode::meshEmpty
           : isCollision && !options.collisionMeshes ? LossCode::meshCollision
           : !isCollision && !node.renderable && !options.nonRenderable
               ? LossCode::meshNotRenderable
               : LossCode::meshLeftOut;
}

// Of a triangle by its original vertices, whichever corner comes first: mixed well, so that the sum
// over a mesh, in which order does not count, tells two meshes apart.
std::uint64_t Mixed(std::array<std::uint64_t, 3> corners) {
    std::rotate(corners.begin(), std::ranges::min_element(corners), corners.end());
    std::uint64_t value = 0;
    for (const std::uint64_t corner : corners) {
        // The finaliser of SplitMix64 (Steele, Lea, Flood, 2014).
        value += corner + 0x9e3779b97f4a7c15u;
        value = (value ^ (value >> 30)) * 0xbf58476d1ce4e5b9u;
        value = (value ^ (value >> 27)) * 0x94d049bb133111ebu;
        value ^= value >> 31;
    }
    return value;
}

void ExportLosses::CompareMesh(const scene::Node& node, const kta::ActorMesh& mesh) {
    const scene::Mesh& own = *node.object->mesh;
    std::uint64_t sum = own.faces.size(), found = 0;
    for (const scene::Face& face : own.faces) {
        sum += Mixed({face.v[0], face.v[1], face.v[2]});
    }
    for (const kta::SubMesh& subMesh : mesh.mesh->subMeshes) {
        found += subMesh.faces.size();
        for (const auto& face : subMesh.faces) {
            std::array<std::uint64_t, 3> corners{};
            for (std::size_t i = 0; i < 3; ++i) {
                corners[i] = static_cast<std::uint64_t>(subMesh.vertices[face[i]].originalVertex);
            }
            found += Mixed(corners);
        }
    }
    if (found != sum) {
        Add(LossCode::trianglesChanged);
    }
    const auto channels = static_cast<std::size_t>(std::ranges::count_if(
        own.channels, [](const auto& channel) { return !channel.second.vertices.empty(); }));
    const auto held = static_cast<std::size_t>(std::max(mesh.mesh->head.mapChannelCount, 0));
    if (channels > held) {
        Add(LossCode::mapChannelLeftOut, "", "", channels - held);
    }
}

// Of the shares that bones have of a vertex, the most that one is off; 0 where the scene has none.
double ExportLosses::MostChanged(const SceneSkin& own, const kta::Skin& skin,
                                 std::size_t vertex) const {
    const std::vector<scene::NodeWeight> weights = own.Of(vertex);
    if (weights.empty()) {
        return 0;
    }
    std::unordered_map<std::size_t, double> shares;
    double sum = 0;
    for (const scene::NodeWeight& weight : weights) {
        sum += weight.weight;
    }
    for (const scene::NodeWeight& weight : weights) {
        shares[exported_.match.FileNodeOf(weight.node)] += weight.weight / sum;
    }
    for (const kta::Influence& influence : skin.Of(static_cast<std::int32_t>(vertex))) {
        shares[influence.node] -= influence.share;
    }
    double most = 0;
    for (const auto& [bone, difference] : shares) {
        most = std::max(most, std::abs(difference));
    }
    return most;
}

// Of each vertex that the file has, the bones' shares.
void ExportLosses::CompareSkin(const scene::Node& node, const kta::ActorMesh& mesh) {
    constexpr double kSame = 1e-4;
    const SceneSkin own(node, node_, node.object->mesh->vertices.size());
    if (!own.IsThere() || !mesh.weights) {
        if (own.IsThere()) {
            Add(LossCode::skinLeftOut);
        }
        return;
    }
    const kta::Skin skin(exported_.tree, mesh);
    std::size_t changed = 0;
    double worst = 0;
    for (std::size_t vertex = 0; vertex < node.object->mesh->vertices.size(); ++vertex) {
        const double most = MostChanged(own, skin, vertex);
        changed += most > kSame ? 1 : 0;
        worst = std::max(worst, most);
    }
    if (changed > 0) {
        std::array<char, 32> text{};
        std::snprintf(text.data(), text.size(), "%.3g", worst);
        Add(LossCode::weightsChanged, "",
            std::string("bone weights changed by as much as ") + text.data(), changed);
    }
}

void ExportLosses::CompareMorphs(const scene::Node& node, const kta::ActorMesh& mesh) {
    const auto* const morpher = EnabledModifier<scene::Morpher>(node);
    std::size_t inFile = mesh.morphs.size();
    for (std::size_t i = 0; morpher && i < morpher->channels.size(); ++i) {
        const scene::MorphChannel& channel = morpher->channels[i];
        if (channel.points.empty()) {
            continue;
        }
        if (inFile == 0) {
            Add(LossCode::morphLeftOut, "channel " + InQuotes(channel.name));
        } else {
            --inFile;
        }
    }
}

void ExportLosses::AddMotions() {
    for (const int node : exported_.deviation.still) {
        node_ = node;
        const scene::Node& own = exported_.scene.nodes[static_cast<std::size_t>(node)];
        Add(own.hidden && !exported_.inForce.motionsForHidden ? LossCode::motionHidden
            : !exported_.inForce.sampleAnimation              ? LossCode::motionNotKeyed
                                                              : LossCode::motionLeftOut);
    }
    for (const int node : exported_.deviation.sheared) {
        node_ = node;
        Add(LossCode::poseSheared);
    }
    for (const Deviation::Channel& channel : exported_.deviation.flattened) {
        node_ = channel.node;
        Add(LossCode::morphFlattened, "channel " + InQuotes(channel.name));
    }
}

void ExportLosses::AddWarnings() {
    std::unordered_map<std::string_view, int> byName;
    for (std::size_t i = 0; i < exported_.scene.nodes.size(); ++i) {
        byName.try_emplace(exported_.scene.nodes[i].name, static_cast<int>(i));
    }
    for (const ExporterWarning& warning : WarningsIn(exported_.log)) {
        const auto found = byName.find(warning.node);
        losses_.push_back({LossCode::exporterWarning,
                           found == byName.end() ? "" : PathOf(exported_.scene, found->second),
                           warning.text, warning.text, warning.count});
    }
}

}  // namespace

void Merge(std::vector<LedgerEntry>& losses) {
    std::map<std::tuple<LossCode, std::string, std::string, std::string>, std::size_t> known;
    std::size_t kept = 0;
    for (LedgerEntry& loss : losses) {
        const auto [found, isNew] =
            known.try_emplace({loss.code, loss.path, loss.subject, loss.text}, kept);
        if (!isNew) {
            losses[found->second].count += loss.count;
        } else if (&losses[kept++] != &loss) {
            losses[kept - 1] = std::move(loss);
        }
    }
    losses.erase(losses.begin() + static_cast<std::ptrdiff_t>(kept), losses.end());
}

std::vector<LedgerEntry> LossesOf(const ExportedScene& exported) {
    std::vector<LedgerEntry> losses = ExportLosses(exported).Find();
    for (LedgerEntry& loss : MaterialLosses(exported)) {
        losses.push_back(std::move(loss));
    }
    return losses;
}

}  // namespace maxhost::app
