// A sub-mesh as a primitive of a glTF mesh.
#pragma once

#include <optional>

#include "kta/deform.h"
#include "kta/gltf/document.h"
#include "kta/gltf/nodes.h"

namespace kta::gltf {

// Sets of texture coordinates of a vertex; further ones, which viewers do not take, are left out.
constexpr std::size_t kMostCoordinateSets = 8;

// What the primitives of a mesh have in common.
struct PrimitiveSource {
    const ActorMesh& mesh;
    const NodeTree& tree;
    std::vector<MorphTarget> targets;
    std::optional<Affine> offset;  // that positions go through; of no skinned mesh
    bool isTurnedOver = false;     // its triangles' corners stand the other way round
    std::optional<Skin> skin;
    Joints joints;  // of the skin
    std::size_t mostInfluences = 255;
};

// What a morph target adds, at full weight.
struct PrimitiveTarget {
    std::vector<float> positions;
    std::vector<float> normals;
};

// In glTF's axes.
struct Primitive {
    std::vector<float> positions;
    std::vector<float> normals;  // of length 1
    std::vector<std::vector<float>> coordinates;
    std::vector<std::uint32_t> indices;  // empty: nothing to show
    // Of each vertex four a set, which together sum to 1.
    std::vector<std::vector<std::uint16_t>> joints;
    std::vector<std::vector<float>> weights;
    std::vector<PrimitiveTarget> targets;

    std::size_t trianglesLeftOut = 0;  // with a corner that is not finite
    std::size_t normalsMade = 0;       // which had no direction
    std::size_t coordinatesLeftOut = 0;
};

Primitive MakePrimitive(const PrimitiveSource& source, const SubMesh& subMesh);

// Adds the primitive's data; returns it as an object of a mesh.
Json PrimitiveJson(const Primitive& primitive, std::size_t material, Document& document);

}  // namespace kta::gltf
