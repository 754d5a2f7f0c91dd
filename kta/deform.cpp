#include "kta/deform.h"

#include <limits>
#include <unordered_map>

namespace kta {

// ---------------------------------------------------------------- meshes

std::vector<ActorMesh> MeshesOf(const File& actor) {
    std::vector<ActorMesh> meshes;
    std::unordered_map<std::string_view, std::size_t> nodeOfName;
    std::unordered_map<std::size_t, std::size_t> meshOfNode;
    std::size_t nodes = 0;
    const auto meshOf = [&](std::size_t node) -> ActorMesh* {
        const auto found = meshOfNode.find(node);
        return found == meshOfNode.end() ? nullptr : &meshes[found->second];
    };
    for (const Chunk& chunk : actor.chunks) {
        if (const auto* node = chunk.As<KTANode>()) {
            nodeOfName[TextOf(node->nodeName)] = nodes++;
        } else if (const auto* mesh = chunk.As<Mesh>()) {
            const auto number = static_cast<std::size_t>(mesh->head.nodeNumber);
            meshes.push_back({mesh, number < nodes ? number : kNoNode});
            meshOfNode[number] = meshes.size() - 1;
        } else if (const auto* weights = chunk.As<Weights>()) {
            if (ActorMesh* skinned = meshOf(static_cast<std::size_t>(weights->head.nodeNumber))) {
                skinned->weights = weights;
            }
        } else if (const auto* morph = chunk.As<Morph>()) {
            const auto named = nodeOfName.find(TextOf(morph->head.nodeName));
            ActorMesh* morphed = named == nodeOfName.end() ? nullptr : meshOf(named->second);
            if (morphed != nullptr) {
                morphed->morphs.push_back(morph);
            }
        }
    }
    return meshes;
}

// ---------------------------------------------------------------- skins

namespace {

// The weights of bones that there are, each bone once.
std::vector<Influence> Gathered(const NodeTree& tree, std::span<const KTAWeight> weights) {
    std::vector<Influence> gathered;
    for (const KTAWeight& weight : weights) {
        const auto bone = static_cast<std::size_t>(weight.bone);
        if (weight.bone < 0 || bone >= tree.Size() || !(weight.weight > 0) ||
            !std::isfinite(weight.weight)) {
            continue;
        }
        const auto known = std::find_if(gathered.begin(), gathered.end(),
                                        [bone](const Influence& i) { return i.node == bone; });
        if (known == gathered.end()) {
            gathered.push_back({bone, weight.weight});
        } else {
            known->share += weight.weight;
        }
    }
    return gathered;
}

}  // namespace

Skin::Skin(const NodeTree& tree, const ActorMesh& mesh)
    : own_{mesh.node, 1},
      withoutRecord_(mesh.weights->vertexCount - mesh.weights->weightCounts.size()) {
    std::size_t first = 0;
    for (const std::uint8_t count : mesh.weights->weightCounts) {
        if (withoutRecord_ == 0) {
            Add(tree, std::span(mesh.weights->weights).subspan(first, count));
        }
        first += count;
    }
}

void Skin::Add(const NodeTree& tree, std::span<const KTAWeight> weights) {
    std::vector<Influence> gathered = Gathered(tree, weights);
    double sum = 0;
    for (const Influence& influence : gathered) {
        sum += influence.share;
    }
    for (Influence& influence : gathered) {
        influence.share /= sum;
    }
    std::stable_sort(gathered.begin(), gathered.end(),
                     [](const Influence& a, const Influence& b) { return a.share > b.share; });
    influences_.insert(influences_.end(), gathered.begin(), gathered.end());
    ends_.push_back(influences_.size());
}

std::span<const Influence> Skin::Of(std::int32_t originalVertex) const {
    const auto vertex = static_cast<std::size_t>(originalVertex);
    if (vertex < ends_.size()) {
        const std::size_t first = vertex == 0 ? 0 : ends_[vertex - 1];
        if (first < ends_[vertex]) {
            return std::span(influences_).subspan(first, ends_[vertex] - first);
        }
    }
    return {&own_, 1};
}

std::vector<Affine> WaysFromBind(const NodeTree& tree, double seconds) {
    std::vector<Affine> ways = tree.Worlds(seconds);
    for (std::size_t i = 0; i < ways.size(); ++i) {
        ways[i] = ways[i] * tree.FromBindWorld(i);
    }
    return ways;
}

Vector3 SkinnedPosition(std::span<const Influence> influences, std::span<const Affine> waysFromBind,
                        const Vector3& position) {
    Vector3 sum{};
    for (const Influence& influence : influences) {
        const Vector3 moved = influence.node < waysFromBind.size()
                                  ? waysFromBind[influence.node].Position(position)
                                  : position;
        sum = sum + moved * influence.share;
    }
    return sum;
}

// ---------------------------------------------------------------- morphs

MorphTarget::MorphTarget(const NodeTree& tree, const ActorMesh& mesh, const Morph& morph)
    : morph_(&morph),
      space_(mesh.weights != nullptr && mesh.node != kNoNode ? tree.BindWorld(mesh.node)
                                                             : Affine()) {
    constexpr double kUnit = 100;  // a scene's unit in the channel's
    constexpr double kMostSteps = 65535;
    const double range = double{morph.head.maximum} - double{morph.head.minimum};
    step_ = (range < 1 ? range / kMostSteps : 1 / std::floor(kMostSteps / range)) / kUnit;
}

Vector3 MorphTarget::Displacement(const KTAVertex& vertex) const {
    const auto point = static_cast<std::size_t>(vertex.originalVertex);
    if (vertex.originalVertex < 0 || point >= morph_->points.size()) {
        return {};
    }
    const std::array<float, 3> target = MorphPosition(*morph_, point);
    const Vector3 from = {vertex.position[0], vertex.position[1], vertex.position[2]};
    const Vector3 way = space_.Position({target[0], target[1], target[2]}) - from;
    const double rounding =
        step_ * (Length(space_.axes[0]) + Length(space_.axes[1]) + Length(space_.axes[2]));
    const bool isStill = std::abs(way[0]) <= rounding && std::abs(way[1]) <= rounding &&
                         std::abs(way[2]) <= rounding;
    return isStill || !IsFinite(way) ? Vector3{} : way;
}

Vector3 MorphedPosition(std::span<const MorphTarget> targets, std::span<const double> weights,
                        const KTAVertex& vertex) {
    Vector3 position = {vertex.position[0], vertex.position[1], vertex.position[2]};
    for (std::size_t i = 0; i < targets.size(); ++i) {
        position = position + targets[i].Displacement(vertex) * weights[i];
    }
    return position;
}

}  // namespace kta
