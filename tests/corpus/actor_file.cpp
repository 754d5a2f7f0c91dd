#include "tests/corpus/actor_file.h"

#include <algorithm>
#include <cmath>

namespace corpus {
namespace {

ActorNode TakeNode(Bytes& bytes) {
    ActorNode node;
    node.name = bytes.TakeName(260);
    node.parentName = bytes.TakeName(260);
    node.translation = bytes.Take<std::array<float, 3>>();
    bytes.Skip(16 + 12);
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 3; ++column) {
            node.inverseWorld[column][row] = bytes.Take<float>();
        }
        bytes.Skip(4);
    }
    bytes.Skip(8);
    return node;
}

ActorMaterial TakeMaterial(Bytes& bytes) {
    ActorMaterial material;
    material.name = bytes.TakeName(40);
    bytes.Skip(12);
    material.diffuse = bytes.Take<std::array<float, 3>>();
    bytes.Skip(32);
    material.opacity = bytes.Take<float>();
    bytes.Skip(4);
    material.twoSided = bytes.Take<std::uint8_t>() != 0;
    bytes.Skip(3);
    return material;
}

ActorSubMesh TakeSubMesh(Bytes& bytes, int channels) {
    ActorSubMesh subMesh;
    subMesh.material = bytes.Take<std::uint8_t>();
    bytes.Skip(3);
    const auto indices = bytes.Take<std::int32_t>();
    const auto vertices = bytes.Take<std::int32_t>();
    if (subMesh.material == 255) {
        subMesh.material = bytes.Take<std::int32_t>();
    }
    for (std::int32_t i = 0; i < vertices; ++i) {
        subMesh.vertices.push_back(bytes.Take<ActorVertex>());
        for (int channel = 0; channel < channels; ++channel) {
            subMesh.coordinates.push_back(bytes.Take<std::array<float, 2>>());
        }
    }
    for (std::int32_t i = 0; i < indices / 3; ++i) {
        subMesh.faces.push_back(bytes.Take<std::array<std::uint32_t, 3>>());
        for (const std::uint32_t index : subMesh.faces.back()) {
            if (index >= subMesh.vertices.size()) {
                Differ("a face has the vertex " + std::to_string(index) + " of " +
                       std::to_string(vertices));
            }
        }
    }
    return subMesh;
}

// Imported channels are never empty, so that the header's count is that of the coordinates too.
ActorMesh TakeMesh(Bytes& bytes) {
    ActorMesh mesh;
    mesh.node = bytes.Take<std::int32_t>();
    mesh.numOriginals = bytes.Take<std::int32_t>();
    bytes.Skip(8);
    const auto subMeshes = bytes.Take<std::int32_t>();
    mesh.channels = bytes.Take<std::int32_t>();
    mesh.isCollision = bytes.Take<std::uint8_t>() != 0;
    bytes.Skip(3);
    for (std::int32_t i = 0; i < subMeshes; ++i) {
        mesh.subMeshes.push_back(TakeSubMesh(bytes, mesh.channels));
    }
    return mesh;
}

void TakeLayer(Bytes& bytes, Actor& actor) {
    const std::string texture = bytes.TakeName(260);
    const int type = bytes.Take<std::uint8_t>();
    bytes.Skip(1);
    const auto material = bytes.Take<std::int16_t>();
    bytes.Skip(24);
    actor.materials.at(material).layers.emplace_back(type, texture);
}

// Weights follow the mesh that they move. In between stand the nodes of bones that were not there
// yet, with their own meshes and weights.
void TakeWeights(Bytes& bytes, Actor& actor) {
    const auto node = bytes.Take<std::int32_t>();
    const auto found = std::find_if(actor.meshes.rbegin(), actor.meshes.rend(),
                                    [node](const ActorMesh& mesh) { return mesh.node == node; });
    if (found == actor.meshes.rend() || !found->weights.empty()) {
        Differ("weights of node " + std::to_string(node) + " follow no mesh of it");
    }
    ActorMesh& mesh = *found;
    for (std::size_t i = mesh.nodesBefore; i < actor.nodes.size(); ++i) {
        actor.nodes[i].isAhead = true;
    }
    for (int i = 0; i < mesh.numOriginals; ++i) {
        ActorWeights weights;
        for (int count = bytes.Take<std::uint8_t>(); count > 0; --count) {
            const auto bone = bytes.Take<std::int16_t>();
            bytes.Skip(2);
            weights.emplace_back(bone, bytes.Take<float>());
        }
        mesh.weights.push_back(std::move(weights));
    }
}

// A range of less than a hundredth of a unit is stretched to one before it is packed; of one too
// wide for 16 bits nothing is left, and points are not numbers.
double Unpacked(std::uint16_t packed, float minimum, float range) {
    const double stretch = range < 1 ? 1 / static_cast<double>(range) : 1;
    const double steps = std::floor(65535 / std::max(1.0F, range));
    return range == 0 ? minimum / 100.0
                      : (packed / steps / stretch + static_cast<double>(minimum)) / 100;
}

// Morphs follow the mesh of the node that they name.
void TakeMorph(Bytes& bytes, Actor& actor) {
    ActorMorph morph;
    morph.channel = bytes.TakeName(260);
    bytes.Skip(32);
    const std::string name = bytes.TakeName(260);
    const auto points = static_cast<std::size_t>(bytes.Take<std::int32_t>());
    const auto minimum = bytes.Take<float>();
    const float range = bytes.Take<float>() - minimum;
    bytes.Skip(4);
    for (std::size_t i = 0; i < points; ++i) {
        auto& point = morph.points.emplace_back();
        for (double& coordinate : point) {
            coordinate = Unpacked(bytes.Take<std::uint16_t>(), minimum, range);
        }
    }
    bytes.Skip(points * (3 + 4));
    const auto found =
        std::find_if(actor.meshes.rbegin(), actor.meshes.rend(), [&](const ActorMesh& mesh) {
            return actor.nodes.at(static_cast<std::size_t>(mesh.node)).name == name;
        });
    if (found == actor.meshes.rend()) {
        Differ("a morph of " + name + " follows no mesh of it");
    }
    found->morphs.push_back(std::move(morph));
}

}  // namespace

Actor ReadActor(const std::string& path) {
    Bytes bytes(path);
    bytes.Skip(7);
    Actor actor;
    while (!bytes.AtEnd()) {
        const auto id = bytes.Take<std::uint32_t>();
        bytes.Skip(8);
        if (id == 0) {
            actor.nodes.push_back(TakeNode(bytes));
        } else if (id == 3) {
            actor.meshes.push_back(TakeMesh(bytes));
            actor.meshes.back().nodesBefore = actor.nodes.size();
        } else if (id == 4) {
            TakeWeights(bytes, actor);
        } else if (id == 6) {
            actor.materials.push_back(TakeMaterial(bytes));
        } else if (id == 7) {
            TakeLayer(bytes, actor);
        } else if (id == 8) {
            bytes.Skip(88);
        } else if (id == 10) {
            TakeMorph(bytes, actor);
        } else {
            Differ("a chunk has id " + std::to_string(id));
        }
    }
    return actor;
}

Matrix InverseWorldOf(const ActorNode& node) {
    static constexpr unsigned kOrder[3] = {0, 2, 1};
    Matrix inverse;
    for (unsigned row = 0; row < 3; ++row) {
        for (unsigned column = 0; column < 3; ++column) {
            inverse[row][column] = node.inverseWorld[kOrder[row]][kOrder[column]];
        }
        inverse[row][3] = node.inverseWorld[kOrder[row]][3];
    }
    return inverse;
}

}  // namespace corpus
