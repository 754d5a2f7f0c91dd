#include "kta/preview/scene.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <unordered_set>

#include "kta/preview/skeleton.h"

namespace kta {
namespace {

Vector3 Clamped(const float (&colour)[3]) {
    Vector3 clamped{};
    for (std::size_t i = 0; i < 3; ++i) {
        clamped[i] = colour[i] > 0 ? std::min(1.0, double{colour[i]}) : 0;  // NaN: 0
    }
    return clamped;
}

Vector3 NormalOf(const KTAVertex& vertex) {
    return {vertex.normal[0], vertex.normal[1], vertex.normal[2]};
}

// A normal goes with the transposed inverse of what moves positions.
Vector3 MovedNormal(const Affine& inverse, const Vector3& normal) {
    return Normalized(Vector3{Dot(inverse.axes[0], normal), Dot(inverse.axes[1], normal),
                              Dot(inverse.axes[2], normal)});
}

// The same without an inverse, but for the sign, which does not matter to what is seen.
Vector3 TurnedNormal(const Affine& way, const Vector3& normal) {
    return Normalized(Cross(way.axes[1], way.axes[2]) * normal[0] +
                      Cross(way.axes[2], way.axes[0]) * normal[1] +
                      Cross(way.axes[0], way.axes[1]) * normal[2]);
}

Affine Blended(std::span<const Influence> influences, std::span<const Affine> ways) {
    Affine sum = {{}, {}};
    for (const Influence& influence : influences) {
        const Affine way = influence.node < ways.size() ? ways[influence.node] : Affine();
        for (std::size_t i = 0; i < 3; ++i) {
            sum.axes[i] = sum.axes[i] + way.axes[i] * influence.share;
        }
        sum.translation = sum.translation + way.translation * influence.share;
    }
    return sum;
}

Look LookOf(const KTAMaterial& material) {
    return {Clamped(material.diffuse), Clamped(material.selfIllumination)};
}

void Dress(Look& look, const KTAMaterialLayer* layer, const ActorTextures& textures) {
    if (layer == nullptr) {
        return;
    }
    const auto found = textures.byName.find(TextOf(layer->textureFileName));
    if (found != textures.byName.end()) {
        look.texture = &found->second;
        look.amount = layer->amount > 0 ? std::min(1.0, double{layer->amount}) : 0;  // NaN: 0
    }
}

}  // namespace

// ---------------------------------------------------------------- a scene

class PreviewModel::Collector {
  public:
    Collector(const PreviewModel& model, const std::optional<double>& seconds)
        : model_(model), seconds_(seconds) {
        scene_.looks = model.looks_;
        if (seconds) {
            worlds_ = model.nodes_.Worlds(*seconds);
            ways_ = WaysFromBind(model.nodes_, *seconds);
        }
        for (const Part& part : model.parts_) {
            for (const SubMesh& subMesh : part.mesh.mesh->subMeshes) {
                Add(part, subMesh);
            }
        }
        scene_.firstInFront = scene_.corners.size();
        if (model.choice_.withBones) {
            AddSkeleton(model.nodes_, worlds_, scene_);
        }
    }

    PreviewScene Take() { return std::move(scene_); }

  private:
    void Add(const Part& part, const SubMesh& subMesh) {
        // The last look is for numbers that no material has.
        const auto look =
            std::min(static_cast<std::size_t>(subMesh.materialNumber), scene_.looks.size() - 1);
        const std::size_t first = scene_.corners.size();
        if (subMesh.vertices.size() > std::numeric_limits<std::uint32_t>::max() - first) {
            throw std::length_error("too many vertices for a picture");
        }
        if (part.skin && seconds_) {
            AddSkinned(part, subMesh);
        } else {
            AddPlaced(part, subMesh);
        }
        if (scene_.looks[look].texture != nullptr) {
            PlaceInTexture(first, subMesh, static_cast<std::size_t>(part.mesh.mesh->pairsPerVertex),
                           *model_.layers_[look]);
        }
        AddFaces(subMesh, static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(look));
    }

    void AddPlaced(const Part& part, const SubMesh& subMesh) {
        const NodeTree& nodes = model_.nodes_;
        const std::size_t node = part.mesh.node;
        Affine world;
        std::optional<Affine> inverse = world;
        if (!part.inWorld) {
            world = seconds_ ? worlds_[node] : nodes.BindWorld(node);
            inverse = seconds_ ? Inverse(world) : nodes.FromBindWorld(node);
        }
        for (const KTAVertex& vertex : subMesh.vertices) {
            const Vector3 position = MorphedPosition(part.targets, part.weights, vertex);
            const Vector3 normal = inverse ? MovedNormal(*inverse, NormalOf(vertex)) : Vector3{};
            scene_.corners.push_back({world.Position(position), normal, {}});
        }
    }

    void AddSkinned(const Part& part, const SubMesh& subMesh) {
        for (const KTAVertex& vertex : subMesh.vertices) {
            const Affine way = Blended(part.skin->Of(vertex.originalVertex), ways_);
            const Vector3 position = MorphedPosition(part.targets, part.weights, vertex);
            scene_.corners.push_back(
                {way.Position(position), TurnedNormal(way, NormalOf(vertex)), {}});
        }
    }

    // By each vertex's first pair, which is that of 3ds Max's map channel 1.
    void PlaceInTexture(std::size_t first, const SubMesh& subMesh, std::size_t pairs,
                        const KTAMaterialLayer& layer) {
        constexpr double kNowhere = std::numeric_limits<double>::quiet_NaN();
        for (std::size_t i = 0; i < subMesh.vertices.size(); ++i) {
            scene_.corners[first + i].inTexture =
                pairs == 0 ? std::array{kNowhere, kNowhere}
                           : PlaceInImage(layer, subMesh.textureCoordinates[i * pairs]);
        }
    }

    void AddFaces(const SubMesh& subMesh, std::uint32_t first, std::uint32_t look) {
        for (const auto& face : subMesh.faces) {
            PreviewTriangle triangle;
            triangle.look = look;
            bool finite = true;
            for (std::size_t i = 0; i < 3; ++i) {
                triangle.corners[i] = first + face[i];
                finite = finite && IsFinite(scene_.corners[triangle.corners[i]].position);
            }
            if (finite) {
                scene_.triangles.push_back(triangle);
            }
        }
    }

    const PreviewModel& model_;
    std::optional<double> seconds_;
    std::vector<Affine> worlds_;  // of nodes; none at rest
    std::vector<Affine> ways_;
    PreviewScene scene_;
};

// ---------------------------------------------------------------- the model

PreviewModel::PreviewModel(const File& actor, const File* motion, SceneChoice choice)
    : nodes_(actor, motion), choice_(std::move(choice)), layers_(DiffuseLayers(actor)) {
    std::unordered_set<std::int32_t> skinnedNodes;
    for (const Chunk& chunk : actor.chunks) {
        if (const auto* material = chunk.As<KTAMaterial>()) {
            looks_.push_back(LookOf(*material));
        } else if (const auto* weights = chunk.As<Weights>()) {
            skinnedNodes.insert(weights->head.nodeNumber);
        }
    }
    for (std::size_t i = 0; choice_.textures != nullptr && i < looks_.size(); ++i) {
        Dress(looks_[i], layers_[i], *choice_.textures);
    }
    looks_.push_back({});
    for (ActorMesh& mesh : MeshesOf(actor)) {
        if (mesh.mesh->head.isCollision != 0 && !choice_.withCollision) {
            continue;
        }
        Part& part = parts_.emplace_back(Part{std::move(mesh), {}, {}, {}, false});
        part.inWorld =
            part.mesh.node == kNoNode || skinnedNodes.contains(part.mesh.mesh->head.nodeNumber);
        if (part.mesh.weights != nullptr) {
            part.skin.emplace(nodes_, part.mesh);
        }
        for (const Morph* const morph : part.mesh.morphs) {
            const auto weight = choice_.morphs.find(TextOf(morph->channel.channelName));
            if (weight != choice_.morphs.end()) {
                part.targets.emplace_back(nodes_, part.mesh, *morph);
                part.weights.push_back(weight->second);
            }
        }
    }
}

PreviewScene PreviewModel::At(const std::optional<double>& seconds) const {
    return Collector(*this, seconds).Take();
}

}  // namespace kta
