// What the chunks of a KTA file hold, as plain data. docs/kta-format.md has the layouts.
//
// Vectors are x, z, y and quaternions x, z, y, w of the exported scene, as they stand in the file:
// its second axis points up. The keys of curves are the exception.
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

// Which bones move a skinned mesh, whose positions are in world space. A vertex without a record of
// its own (one that Physique tells nothing of) has no bytes in the file, though the declared size
// counts it: the body is then shorter than declared, and tells not which vertices they are.
struct Weights {
    struct Entry {
        std::int16_t bone = -1;  // position among the file's node chunks; -1: none, or above 32767
        float weight = 0;
    };

    std::int32_t node = -1;            // position among the file's node chunks; -1: none
    std::uint32_t numVertices = 0;     // by the declared size; at least counts.size()
    std::vector<std::uint8_t> counts;  // entries of each vertex that has a record, in order
    std::vector<Entry> entries;        // of all vertices, one vertex behind the other
};
constexpr std::uint32_t kWeightsHeadSize = 4;
constexpr std::uint32_t kWeightEntrySize = 8;

// Values of fields that the format gives no meaning are named after their offset in the body.
struct JointLimits {
    std::int32_t node = -1;  // position among the file's node chunks; -1: none
    std::array<float, 3> positionMinimum{};
    std::array<float, 3> positionMaximum{};
    std::array<float, 3> rotationMinimum{};
    std::array<float, 3> rotationMaximum{};
    std::array<float, 6> at52{};  // always 1
    std::array<bool, 3> positionLimited{};
    std::array<bool, 3> rotationLimited{};
    std::array<std::uint8_t, 2> at82{};  // always 0
    std::int32_t at84 = 0;               // always 0
};

// A channel of morph targets: its record, and its points packed into 16 bits a coordinate.
struct Morph {
    std::string channelName;
    float at260 = 0;         // always 0
    float at264 = 1;         // always 1
    std::int32_t at268 = 0;  // always 0
    std::uint8_t at272 = 0;  // always 0
    std::int32_t at276 = 1;  // always 1
    std::int32_t at280 = 0;  // always 0
    std::int32_t at284 = 0;  // always 0
    float at288 = 0;         // always 0
    std::string nodeName;
    float minimum = 0;  // of all coordinates of all points, times 100
    float maximum = 0;
    std::uint8_t at564 = 0;  // always 0
    std::vector<std::array<std::uint16_t, 3>> packedPoints;
    std::vector<std::int32_t> pointNumbers;  // one for each point
};
constexpr std::uint32_t kMorphRecordSize = 292;  // what its chunk's size declares
constexpr std::uint32_t kPointBlockHeadSize = 276;
constexpr std::uint32_t kPackedPointSize = 6;

// The point's coordinates, unpacked in double and rounded once. Not a number where nothing can be
// told of them: the points span more than 65535 (times 100), so that all are packed to 0, or
// minimum and maximum are none.
std::array<float, 3> MorphPosition(const Morph& morph, std::size_t point);

// Two animated channels of nodes that are wired to each other.
struct Wire {
    struct End {
        std::string nodeName;
        std::string expression;
        std::string variable;        // such as "X_Position"; empty at a first end that is not wired
        std::int32_t part = 0;       // 0 position, 1 rotation, 2 scale
        std::int32_t component = 0;  // 0 x, 1 y, 2 z
        float weight = 0;
        float listWeight = 0;
    };

    End first;
    End second;
    std::uint8_t linkKind = 0;  // 1 or 2
};

struct IkChain {
    std::string nodeName;
    std::string startJoint;
    std::string endJoint;
    bool at780 = false;
    std::string solverNode;
    float at1044 = 0;
    std::uint8_t at1048 = 0;
    std::array<float, 3> at1052{};
};

// A node's rest pose: its local transform at time 0.
struct MotionPart {
    std::string nodeName;
    std::array<float, 3> translation{};
    std::array<float, 4> rotation{};
    std::array<float, 3> scale{};
};

// Times are in seconds.
struct SampledKey {
    float time = 0;
    std::array<float, 4> value{};  // the fourth of rotations only
};

// A key of three curves, in 3ds Max's own order: x, y, z. Angles are in degrees.
struct CurveKey {
    float time = 0;
    std::array<float, 3> values{};
    std::uint16_t axisMask = 0;  // bits 0, 1, 2: x, y, z have a key here; others have value 0
    std::array<std::uint8_t, 6> tangentCodes{};  // in x, y, z, out x, y, z
    // Length and slope of the handle, for each of the codes that is kTangentWithHandle.
    std::array<std::array<float, 2>, 6> tangents{};
};
constexpr std::uint8_t kTangentWithHandle = 5;
constexpr std::uint32_t kTrackHeadSize = 8;
constexpr std::uint32_t kCurveKeySize = 26;  // without its tangent records
constexpr std::uint32_t kTangentSize = 8;

struct KeyTrack {
    char interpolation = 'L';
    char trackLetter = 'P';  // 'P' position, 'R' or, with curve keys, 'r' rotation, 'S' scale
    std::vector<SampledKey> sampledKeys;  // of a track of version 1
    std::vector<CurveKey> curveKeys;      // of a track of version 2

    std::size_t NumKeys() const { return sampledKeys.size() + curveKeys.size(); }
    std::size_t ValuesPerKey() const { return trackLetter == 'R' ? 4 : 3; }
};

}  // namespace kta
