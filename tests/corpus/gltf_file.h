// A GLB file, read by the words of glTF 2.0 and without the toolkit. Throws Difference on what it
// does not know. Everything is in glTF's axes and for column vectors.
#pragma once

#include <array>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "tests/corpus/model.h"

namespace corpus {

struct GltfPrimitive {
    std::vector<Vector> positions, normals;
    std::vector<std::array<std::uint32_t, 3>> triangles;
    // Of each vertex: the joint's position in the skin, and its weight.
    std::vector<std::vector<std::pair<std::size_t, double>>> influences;
    std::vector<std::vector<Vector>> targets;
};

struct GltfSkin {
    std::vector<std::size_t> joints;
    std::vector<Matrix> inverseBindMatrices;
};

struct GltfNode {
    std::string name;
    std::optional<std::size_t> parent, mesh, skin;
    Vector translation, scale{1, 1, 1};
    Rotation rotation;
};

// What moves a node's translation, rotation or scale.
struct GltfChannel {
    std::size_t node = 0;
    std::string path, interpolation;
    std::vector<double> times;
    std::vector<std::array<double, 4>> values;  // three of each key where it is a cubic spline

    std::array<double, 4> At(double seconds) const;
};

struct Gltf {
    std::vector<GltfNode> nodes;
    std::vector<std::vector<GltfPrimitive>> meshes;
    std::vector<GltfSkin> skins;
    std::vector<GltfChannel> channels;

    std::vector<Matrix> Worlds(double seconds) const;
    // Where a node shows a vertex of its mesh.
    Vector Shown(const GltfNode& node, const GltfPrimitive& primitive, std::size_t vertex,
                 const std::vector<Matrix>& worlds) const;
};

Gltf ReadGltf(const std::string& path);

}  // namespace corpus
