#include "host/scene/reduce/kinds.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <utility>
#include <variant>

namespace maxhost::scene {

namespace {

template <class Edit>
void EditMeshes(Scene& scene, Edit edit) {
    std::map<std::shared_ptr<const Mesh>, std::shared_ptr<const Mesh>> done;
    for (Node& node : scene.nodes) {
        if (node.object && node.object->mesh) {
            const auto [found, isNew] = done.try_emplace(node.object->mesh, node.object->mesh);
            if (isNew) {
                EditShared(found->second, edit);
            }
            node.object->mesh = found->second;
        }
    }
}

}  // namespace

void CutFaces(Scene& scene, Keeper& keep) {
    EditMeshes(scene, [&](Mesh& mesh) {
        std::vector<bool> stays(mesh.faces.size());
        for (std::size_t i = 0; i < stays.size(); ++i) {
            stays[i] = keep();
        }
        const auto filter = [&](auto& faces) {
            std::size_t i = 0;
            std::erase_if(faces, [&](const auto&) { return !stays[i++]; });
        };
        for (auto& [number, channel] : mesh.channels) {
            if (channel.faces.size() == stays.size()) {
                filter(channel.faces);
            }
        }
        const std::size_t before = mesh.faces.size();
        filter(mesh.faces);
        return mesh.faces.size() != before;
    });
}

void CutMeshParts(Scene& scene, Keeper& keep) {
    EditMeshes(scene, [&](Mesh& mesh) {
        const std::size_t before = mesh.channels.size() + mesh.normals.size();
        std::erase_if(mesh.channels, [&](const auto&) { return !keep(); });
        if (!mesh.normals.empty() && !keep()) {
            mesh.normals.clear();
        }
        return mesh.channels.size() + mesh.normals.size() != before;
    });
}

namespace {

// Keeps the elements of vertices that stay.
template <class T>
void FilterVertices(std::vector<T>& list, const std::vector<bool>& isUsed) {
    std::size_t i = 0;
    std::erase_if(list, [&](const T&) { return i < isUsed.size() && !isUsed[i++]; });
}

// Leaves out the vertices without faces, all of a node's at once.
void CompactMesh(Node& node) {
    Mesh mesh = *node.object->mesh;
    std::vector<bool> isUsed(mesh.vertices.size());
    for (const Face& face : mesh.faces) {
        for (const std::uint32_t vertex : face.v) {
            isUsed[vertex] = true;
        }
    }
    std::vector<std::uint32_t> numbers(isUsed.size());
    std::uint32_t count = 0;
    for (std::size_t i = 0; i < isUsed.size(); ++i) {
        numbers[i] = isUsed[i] ? count++ : 0;
    }
    FilterVertices(mesh.vertices, isUsed);
    for (Face& face : mesh.faces) {
        face.v = {numbers[face.v[0]], numbers[face.v[1]], numbers[face.v[2]]};
    }
    std::map<std::uint32_t, Vec3> normals;
    for (const auto& [vertex, normal] : mesh.normals) {
        if (isUsed[vertex]) {
            normals.emplace(numbers[vertex], normal);
        }
    }
    mesh.normals = std::move(normals);
    ForEachModifier(node, [&](Modifier& modifier) {
        if (auto* const skin = std::get_if<Skin>(&modifier.kind)) {
            FilterVertices(skin->weights, isUsed);
        } else if (auto* const physique = std::get_if<Physique>(&modifier.kind)) {
            FilterVertices(physique->vertices, isUsed);
        } else if (auto* const morpher = std::get_if<Morpher>(&modifier.kind)) {
            for (MorphChannel& channel : morpher->channels) {
                FilterVertices(channel.points, isUsed);
            }
        }
    });
    node.object->mesh = std::make_shared<Mesh>(std::move(mesh));
}

bool HasLooseVertices(const Mesh& mesh) {
    std::vector<bool> isUsed(mesh.vertices.size());
    std::size_t used = 0;
    for (const Face& face : mesh.faces) {
        for (const std::uint32_t vertex : face.v) {
            used += isUsed[vertex] ? 0 : 1;
            isUsed[vertex] = true;
        }
    }
    return used < isUsed.size();
}

}  // namespace

void CutLooseVertices(Scene& scene, Keeper& keep) {
    for (Node& node : scene.nodes) {
        if (node.object && node.object->mesh && HasLooseVertices(*node.object->mesh) && !keep()) {
            CompactMesh(node);
        }
    }
}

}  // namespace maxhost::scene
