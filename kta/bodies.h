// What the chunks of a KTA file hold, as plain data. docs/kta-format.md has the layouts.
//
// Vectors are x, z, y and quaternions x, z, y, w of the exported scene, as they stand in the file:
// its second axis points up.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace kta {

struct Node {
    std::string nodeName;
    std::string parentName;  // empty: no parent
    std::array<float, 3> translation{};
    std::array<float, 4> rotation{};
    std::array<float, 3> scale{};
    std::array<std::array<float, 4>, 4> inverseWorldMatrix{};  // rows; row 3 is the translation
    bool isBone = false;
    bool hasHelperSize = false;
    float helperSize = 0;
};

// A mesh as it lies in its file.
constexpr std::uint32_t kSubMeshSize = 12;   // a sub-mesh's record; a long material number follows
constexpr std::int32_t kLongMaterial = 128;  // the least material number that takes 4 bytes more
constexpr std::uint32_t kVertexSize = 28;    // without its texture coordinates
constexpr std::uint32_t kPairSize = 8;       // of texture coordinates
constexpr std::uint32_t kFaceSize = 12;

struct Vertex {
    std::int32_t originalVertex = 0;  // of the scene's mesh
    std::array<float, 3> position{};
    std::array<float, 3> normal{};
};

using TextureCoordinates = std::array<float, 2>;

struct SubMesh {
    std::uint64_t offset = 0;  // of its record, from the start of the file
    std::int32_t material = 0;
    std::vector<Vertex> vertices;
    std::vector<TextureCoordinates> textureCoordinates;  // Mesh::pairsPerVertex for each vertex
    std::vector<std::array<std::uint32_t, 3>> faces;     // positions in `vertices`
};

// Positions are in the node's object space unless the node has skinning weights.
struct Mesh {
    std::int32_t node = -1;  // position among the file's node chunks; -1: none
    std::int32_t numOriginalVertices = 0;
    std::int32_t numVertices = 0;     // of all sub-meshes
    std::int32_t numIndices = 0;      // of all sub-meshes, three a face
    std::int32_t numMapChannels = 0;  // those that have map vertices
    bool isCollision = false;
    std::int32_t pairsPerVertex = 0;  // at least numMapChannels; found by reading, stored nowhere
    std::vector<SubMesh> subMeshes;
};

struct Material {
    std::string materialName;
    std::array<float, 3> ambient{};  // colours are red, green, blue
    std::array<float, 3> diffuse{};
    std::array<float, 3> specular{};
    std::array<float, 3> selfIllumination{};
    float shininess = 0;
    float shininessStrength = 0;
    float opacity = 0;
    float indexOfRefraction = 0;
    bool twoSided = false;
    bool wire = false;
    char transparencyType = 'F';  // 'S' subtractive, 'A' additive, 'F' filter, 'U' unknown
};

struct MaterialLayer {
    std::string textureFileName;
    std::uint8_t layerType = 0;
    // Position among the file's material chunks, cut to 16 bits: material 65537 stands as 1.
    std::int16_t parentMaterial = 0;
    float amount = 0;
    float uOffset = 0;
    float vOffset = 0;
    float uTiling = 0;
    float vTiling = 0;
    float rotationAngle = 0;
};

}  // namespace kta
