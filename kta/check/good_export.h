// A small export made in memory that has every kind of chunk and nothing wrong with it, in a form
// in which single faults are easily planted. For the check's test of itself.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "format/records.h"

namespace kta {

using FileBytes = std::vector<std::uint8_t>;

// A chunk as it will stand in the file; its size is declared as `header` says.
struct DraftChunk {
    KTAChunkHeader header{};
    FileBytes body;

    // Overwrites bytes of the body.
    template <typename Value>
    void Put(std::size_t offset, const Value& value) {
        std::memcpy(body.data() + offset, &value, sizeof(value));
    }
    // A text and the NUL behind it.
    void PutName(std::size_t offset, const std::string& name) {
        std::memcpy(body.data() + offset, name.c_str(), name.size() + 1);
    }
};

struct DraftFile {
    KTAFileHeader header{};
    std::vector<DraftChunk> chunks;

    FileBytes Bytes() const;
};

// Positions of the chunks in the drafts.
enum ActorChunk : std::size_t {
    kExtraMaterial,
    kWood,
    kWoodLayer,
    kFigure,  // node 0, skinned to nodes 1 and 2
    kFigureMesh,
    kBone,
    kBoneLimits,
    kTip,
    kFigureWeights,
    kFigureMorph,
    kChain,
    kChainIK,
    kTarget,  // wired to the bone
    kTargetWire,
    kDummy,
    kBox,
    kBoxMesh  // the file's end, behind which no wrong number of texture coordinates leads
};
// Of both motion files: the bone with three tracks, the tip with one.
enum MotionChunk : std::size_t { kBonePart, kBoneP, kBoneR, kBoneS, kTipPart, kTipR };

struct DraftExport {
    DraftFile actor;
    DraftFile sampled;  // its motion files: either is one
    DraftFile keyframed;
};

DraftExport GoodExport();

// ---------------------------------------------------------------- parts of it

DraftChunk DraftMaterial(const std::string& name);
// A bone of the tip's kind, with the name of its parent.
DraftChunk DraftNode(const std::string& name, const std::string& parent);
// At the place of such a node.
DraftChunk DraftPart(const std::string& name);
DraftChunk DraftKeyframedTrack(char letter);

using DraftWeights = std::vector<std::vector<std::pair<std::int16_t, float>>>;  // of each vertex
DraftWeights GoodWeights();
DraftChunk DraftWeightsChunk(const DraftWeights& vertices);
DraftChunk DraftMorph(std::int32_t points);

// The meshes' bodies: two sub-meshes of 4 and 3 vertices, with a pair of texture coordinates each.
enum MeshOffset : std::size_t {
    kSubMeshA = sizeof(KTAMesh),
    kVerticesA = kSubMeshA + sizeof(KTASubMesh),
    kVertexStride = sizeof(KTAVertex) + 8,
    kFacesA = kVerticesA + 4 * kVertexStride,  // three
    kSubMeshB = kFacesA + 3 * 12
};

// The first key of the keyframed tracks has linear tangents, the second has Bezier ones in and out
// of X alone.
enum KeyOffset : std::size_t {
    kFirstKey = sizeof(KTAKeyTrack),
    kSecondKey = kFirstKey + sizeof(KTAKeyHead) + kNumTangentCodes,
    kSecondCodes = kSecondKey + sizeof(KTAKeyHead),
    kSecondTangents = kSecondCodes + kNumTangentCodes
};

}  // namespace kta
