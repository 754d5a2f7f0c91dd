#include "kta/gltf/meshes.h"

#include <algorithm>
#include <cmath>

#include "kta/dump.h"
#include "kta/text.h"

namespace kta::gltf {
namespace {

// The nodes that move a skinned mesh's vertices, in their order.
Joints JointsOf(const Skin& skin, const ActorMesh& mesh, std::size_t nodes,
                std::size_t mostInfluences) {
    std::vector<bool> isJoint(nodes);
    for (const SubMesh& subMesh : mesh.mesh->subMeshes) {
        for (const KTAVertex& vertex : subMesh.vertices) {
            const std::span<const Influence> all = skin.Of(vertex.originalVertex);
            for (const Influence& influence : all.first(std::min(all.size(), mostInfluences))) {
                isJoint[influence.node] = true;
            }
        }
    }
    Joints joints;
    for (std::size_t i = 0; i < nodes; ++i) {
        if (isJoint[i]) {
            joints.push_back(i);
        }
    }
    return joints;
}

}  // namespace

Meshes::Meshes(const NodeTree& tree, const std::vector<NodePlace>& places,
               const GlbOptions& options, Materials& materials, Document& document)
    : tree_(tree), places_(places), options_(options), materials_(materials), document_(document) {
}

std::string Meshes::NameOf(const ActorMesh& mesh) const {
    return mesh.node == kNoNode ? "mesh of no node"
                                : ToUtf8(TextOf(tree_.Record(mesh.node).nodeName));
}

PrimitiveSource Meshes::SourceOf(const ActorMesh& mesh) {
    PrimitiveSource source{mesh, tree_,        {}, Affine(),
                           {},   std::nullopt, {}, options_.mostInfluences};
    if (mesh.weights != nullptr && mesh.node != kNoNode) {
        source.skin.emplace(tree_, mesh);
        source.joints = JointsOf(*source.skin, mesh, tree_.Size(), options_.mostInfluences);
        source.isTurnedOver = Determinant(tree_.BindWorld(mesh.node)) < 0;
        if (const std::size_t without = source.skin->VerticesWithoutRecord(); without > 0) {
            warnings_.push_back(
                "\"" + OneLine(NameOf(mesh)) + "\": " + Counted(without, "vertex") +
                " without weights, it is not known which: moves with its node only");
        }
    } else if (mesh.node != kNoNode && places_[mesh.node].hasOffset) {
        source.offset = places_[mesh.node].offset;
        source.isTurnedOver = Determinant(*source.offset) < 0;
    }
    for (const Morph* morph : mesh.morphs) {
        source.targets.emplace_back(tree_, mesh, *morph);
    }
    return source;
}

void Meshes::Add(const ActorMesh& mesh) {
    const PrimitiveSource source = SourceOf(mesh);
    Json primitives = Json::array();
    for (const SubMesh& subMesh : mesh.mesh->subMeshes) {
        Primitive primitive = MakePrimitive(source, subMesh);
        trianglesLeftOut_ += primitive.trianglesLeftOut;
        normalsMade_ += primitive.normalsMade;
        coordinatesLeftOut_ += primitive.coordinatesLeftOut;
        if (!primitive.indices.empty()) {
            const std::size_t material =
                materials_.Get(subMesh.materialNumber, !primitive.coordinates.empty());
            primitives.push_back(PrimitiveJson(primitive, material, document_));
        }
    }
    if (primitives.empty()) {
        return;
    }
    PlacedMesh placed{0, mesh.node, NameOf(mesh)};
    Json object = {{"name", placed.name}, {"primitives", std::move(primitives)}};
    if (!mesh.morphs.empty()) {
        object["weights"] = std::vector<float>(mesh.morphs.size(), 0.0f);
        for (const Morph* morph : mesh.morphs) {
            object["extras"]["targetNames"].push_back(ToUtf8(TextOf(morph->channel.channelName)));
        }
    }
    if (options_.withNumbers && mesh.node != kNoNode) {
        object["extras"]["node"] = mesh.node;
    }
    placed.number = document_.Add("meshes", std::move(object));
    if (source.skin) {
        placed.skin = AddSkin(source.joints);
    }
    placed_.push_back(std::move(placed));
}

// What stands in a joint's space goes through its offset.
std::size_t Meshes::AddSkin(const Joints& joints) {
    std::vector<float> matrices;
    for (const std::size_t joint : joints) {
        const std::array<float, 16> matrix =
            Exchanged(places_[joint].offset * tree_.FromBindWorld(joint));
        matrices.insert(matrices.end(), matrix.begin(), matrix.end());
    }
    skins_.push_back(joints);
    return document_.Add(
        "skins", {{"inverseBindMatrices",
                   document_.AddAccessor(std::span<const float>(matrices), "MAT4", Usage::data)},
                  {"joints", joints}});
}

std::vector<std::string> Meshes::Warnings() const {
    std::vector<std::string> lines = warnings_;
    if (trianglesLeftOut_ > 0) {
        lines.push_back(Counted(trianglesLeftOut_, "triangle") +
                        " left out, with a corner that is nowhere");
    }
    if (normalsMade_ > 0) {
        lines.push_back(Counted(normalsMade_, "normal") +
                        " without direction, taken from the triangles");
    }
    if (coordinatesLeftOut_ > 0) {
        lines.push_back(Counted(coordinatesLeftOut_, "set") +
                        " of texture coordinates left out, beyond the first " +
                        std::to_string(kMostCoordinateSets) + " of a mesh");
    }
    return lines;
}

}  // namespace kta::gltf
