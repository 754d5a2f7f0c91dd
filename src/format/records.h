// The KTA format: its chunk kinds and the records that they consist of. docs/kta-format.md has the
// same layouts as tables, under the same names.
//
// Records are written to the files as they lie in memory: little-endian, f32 reals, no padding that
// is not named here. Vectors from scene data hold x, z, y and quaternions x, z, y, w (the format's
// second axis is 3ds Max's z axis), except in keyframed tracks, which keep x, y, z. Every record is
// zeroed before it is filled (ZeroedRecord), so that bytes behind a name's terminator and padding
// are zero. Fields without a known meaning are named after their offset in the chunk's body.
//
// The record that a chunk begins with names the chunk's id and version.
#ifndef FORMAT_RECORDS_H
#define FORMAT_RECORDS_H

#include <string.h>

#include "core/types.h"

enum { kNameSize = 260, kMaterialNameSize = 40, kVariableNameSize = 20 };

// Ids 5, 9, 11, 12 and 13 are never written.
enum KTAChunkId {
    kChunkNode = 0,
    kChunkMotionPart = 1,
    kChunkKeyTrack = 2,
    kChunkMesh = 3,
    kChunkWeights = 4,
    kChunkMaterial = 6,
    kChunkMaterialLayer = 7,
    kChunkJointLimits = 8,
    kChunkMorph = 10,
    kChunkWire = 14,
    kChunkIKChain = 15
};

enum KTAFileKind { kFileKindMotion = 0, kFileKindActor = 1 };

struct KTAFileHeader {
    char magic[4];  // "KTA "
    Plinth::UInt8 majorVersion;
    Plinth::UInt8 minorVersion;
    Plinth::UInt8 kind;  // KTAFileKind
};
PLINTH_STATIC_ASSERT(sizeof(KTAFileHeader) == 7, file_header_size);

struct KTAChunkHeader {
    Plinth::UInt32 id;
    Plinth::UInt32 size;  // of the body as its writer declares it
    Plinth::UInt32 version;
};
PLINTH_STATIC_ASSERT(sizeof(KTAChunkHeader) == 12, chunk_header_size);

struct KTANode {
    enum { kChunkId = kChunkNode, kChunkVersion = 3 };

    char nodeName[kNameSize];
    char parentName[kNameSize];  // empty: child of the scene root
    Plinth::Float32 translation[3];
    Plinth::Float32 rotation[4];
    Plinth::Float32 scale[3];
    Plinth::Float32 inverseWorldMatrix[4][4];  // rows; the fourth column is 0 in all of them
    Plinth::UInt8 isBone;
    Plinth::UInt8 hasHelperSize;
    Plinth::UInt8 padding[2];
    Plinth::Float32 helperSize;
};
PLINTH_STATIC_ASSERT(sizeof(KTANode) == 632, node_size);

// A node's name and its local transform at tick 0.
struct KTAMotionPart {
    enum { kChunkId = kChunkMotionPart, kChunkVersion = 2 };

    char nodeName[kNameSize];
    Plinth::Float32 translation[3];
    Plinth::Float32 rotation[4];
    Plinth::Float32 scale[3];
};
PLINTH_STATIC_ASSERT(sizeof(KTAMotionPart) == 300, motion_part_size);

// The key track is the one chunk with two body layouts, told apart by its version.
enum KTAKeyTrackVersion { kKeyTrackSampled = 1, kKeyTrackKeyframed = 2 };

// Key records follow.
struct KTAKeyTrack {
    enum { kChunkId = kChunkKeyTrack };

    Plinth::UInt32 keyCount;
    char interpolation;  // 'L'
    char trackLetter;    // 'P' position, 'R' sampled or 'r' keyframed rotation, 'S' scale
    Plinth::UInt8 padding[2];
};
PLINTH_STATIC_ASSERT(sizeof(KTAKeyTrack) == 8, key_track_size);

// Key records of sampled tracks; times are seconds.
struct KTAVectorSample {
    Plinth::Float32 time;
    Plinth::Float32 values[3];
};
PLINTH_STATIC_ASSERT(sizeof(KTAVectorSample) == 16, vector_sample_size);

struct KTARotationSample {
    Plinth::Float32 time;
    Plinth::Float32 values[4];
};
PLINTH_STATIC_ASSERT(sizeof(KTARotationSample) == 20, rotation_sample_size);

// Key records of keyframed tracks: this head, six tangent codes (X in, Y in, Z in, X out, Y out,
// Z out; one byte each), and a tangent for each code that is kTangentBezier.
struct KTAKeyHead {
    Plinth::Float32 time;
    Plinth::Float32 values[3];
    Plinth::UInt16 axisMask;  // bit 0 = X present, 1 = Y, 2 = Z
    Plinth::UInt8 padding[2];
};
PLINTH_STATIC_ASSERT(sizeof(KTAKeyHead) == 20, key_head_size);

enum { kNumTangentCodes = 6 };
enum KTATangentCode { kTangentNone = 1, kTangentLinear = 3, kTangentStep = 4, kTangentBezier = 5 };

struct KTATangent {
    Plinth::Float32 length;
    Plinth::Float32 slope;
};
PLINTH_STATIC_ASSERT(sizeof(KTATangent) == 8, tangent_size);

// Sub-meshes follow, each a KTASubMesh, the material number in full (i32) where `materialNumber` is
// 255, corner vertices with their texture coordinates, and faces.
struct KTAMesh {
    enum { kChunkId = kChunkMesh, kChunkVersion = 3 };

    Plinth::Int32 nodeNumber;  // position among the file's node chunks; -1: none
    Plinth::Int32 originalVertexCount;
    Plinth::Int32 vertexCount;
    Plinth::Int32 indexCount;
    Plinth::Int32 subMeshCount;
    Plinth::Int32 mapChannelCount;
    Plinth::UInt8 isCollision;
    Plinth::UInt8 padding[3];
};
PLINTH_STATIC_ASSERT(sizeof(KTAMesh) == 28, mesh_size);

// The least material number that stands in full behind the record, and what the record has instead.
enum { kFirstFullMaterialNumber = 128, kFullMaterialNumber = 255 };

struct KTASubMesh {
    Plinth::UInt8 materialNumber;
    Plinth::UInt8 at1;  // 0
    Plinth::UInt8 padding[2];
    Plinth::Int32 indexCount;
    Plinth::Int32 vertexCount;
};
PLINTH_STATIC_ASSERT(sizeof(KTASubMesh) == 12, sub_mesh_size);

struct KTAVertex {
    Plinth::Int32 originalVertex;
    Plinth::Float32 position[3];
    Plinth::Float32 normal[3];
};
PLINTH_STATIC_ASSERT(sizeof(KTAVertex) == 28, vertex_size);

// A weights chunk is this head, then for each vertex a count (u8) and that many KTAWeight.
struct KTAWeights {
    enum { kChunkId = kChunkWeights, kChunkVersion = 1 };

    Plinth::Int32 nodeNumber;  // as in KTAMesh
};
PLINTH_STATIC_ASSERT(sizeof(KTAWeights) == 4, weights_size);

struct KTAWeight {
    Plinth::Int16 bone;  // a node number; -1: none, or one that does not fit
    Plinth::UInt8 padding[2];
    Plinth::Float32 weight;
};
PLINTH_STATIC_ASSERT(sizeof(KTAWeight) == 8, weight_size);

struct KTAMaterial {
    enum { kChunkId = kChunkMaterial, kChunkVersion = 2 };

    char materialName[kMaterialNameSize];
    Plinth::Float32 ambient[3];
    Plinth::Float32 diffuse[3];
    Plinth::Float32 specular[3];
    Plinth::Float32 selfIllumination[3];
    Plinth::Float32 shininess;
    Plinth::Float32 shininessStrength;
    Plinth::Float32 opacity;
    Plinth::Float32 indexOfRefraction;
    Plinth::UInt8 twoSided;
    Plinth::UInt8 wire;
    char transparencyType;  // 'S', 'A', 'F' or 'U'
    Plinth::UInt8 padding;
};
PLINTH_STATIC_ASSERT(sizeof(KTAMaterial) == 108, material_size);

enum KTALayerType {
    kLayerAmbient = 0,
    kLayerDiffuse = 1,
    kLayerSpecular = 2,
    kLayerBump = 3,
    kLayerReflection = 4,
    kLayerRefraction = 5,
    kLayerOpacity = 6,
    kLayerSelfIllumination = 7,
    kLayerEnvironment = 8,
    kLayerShininess = 9,
    kLayerShininessStrength = 10,
    kLayerFilterColor = 11
};

struct KTAMaterialLayer {
    enum { kChunkId = kChunkMaterialLayer, kChunkVersion = 3 };

    char textureFileName[kNameSize];
    Plinth::UInt8 layerType;  // KTALayerType
    Plinth::UInt8 padding;
    Plinth::Int16 parentMaterial;  // cut to 16 bits: material 65537 stands as 1
    Plinth::Float32 amount;
    Plinth::Float32 uOffset;
    Plinth::Float32 vOffset;
    Plinth::Float32 uTiling;
    Plinth::Float32 vTiling;
    Plinth::Float32 rotationAngle;
};
PLINTH_STATIC_ASSERT(sizeof(KTAMaterialLayer) == 288, material_layer_size);

struct KTAJointLimits {
    enum { kChunkId = kChunkJointLimits, kChunkVersion = 1 };

    Plinth::Int32 nodeNumber;  // as in KTAMesh
    Plinth::Float32 positionMinimum[3];
    Plinth::Float32 positionMaximum[3];
    Plinth::Float32 rotationMinimum[3];
    Plinth::Float32 rotationMaximum[3];
    Plinth::Float32 at52[6];  // 1
    Plinth::UInt8 positionLimited[3];
    Plinth::UInt8 rotationLimited[3];
    Plinth::UInt8 at82[2];  // 0
    Plinth::Int32 at84;     // 0
};
PLINTH_STATIC_ASSERT(sizeof(KTAJointLimits) == 88, joint_limits_size);

// The only part of a morph chunk that its size covers; a KTAMorphPoints, the packed points, three
// zero bytes a point and the point numbers (i32) follow.
struct KTAMorphChannel {
    enum { kChunkId = kChunkMorph, kChunkVersion = 3 };

    char channelName[kNameSize];
    Plinth::Float32 at260;  // 0
    Plinth::Float32 at264;  // 1
    Plinth::Int32 at268;    // 0
    Plinth::UInt8 at272;    // 0
    Plinth::UInt8 padding[3];
    Plinth::Int32 at276;    // 1
    Plinth::Int32 at280;    // 0
    Plinth::Int32 at284;    // 0
    Plinth::Float32 at288;  // 0
};
PLINTH_STATIC_ASSERT(sizeof(KTAMorphChannel) == 292, morph_channel_size);

struct KTAMorphPoints {
    char nodeName[kNameSize];
    Plinth::Int32 pointCount;
    Plinth::Float32 minimum;
    Plinth::Float32 maximum;
    Plinth::UInt8 at564;  // 0
    Plinth::UInt8 padding[3];
};
PLINTH_STATIC_ASSERT(sizeof(KTAMorphPoints) == 276, morph_points_size);

struct KTAMorphPoint {
    Plinth::UInt16 packed[3];
};
PLINTH_STATIC_ASSERT(sizeof(KTAMorphPoint) == 6, morph_point_size);

struct KTAWire {
    enum { kChunkId = kChunkWire, kChunkVersion = 1 };

    char firstNodeName[kNameSize];
    char secondNodeName[kNameSize];
    char firstExpression[kNameSize];
    char secondExpression[kNameSize];
    char secondVariable[kVariableNameSize];
    char firstVariable[kVariableNameSize];
    Plinth::Int32 firstPart;  // 0 position, 1 rotation, 2 scale
    Plinth::Int32 secondPart;
    Plinth::Int32 firstComponent;  // 0 x, 1 y, 2 z
    Plinth::Int32 secondComponent;
    Plinth::Float32 firstWeight;
    Plinth::Float32 secondWeight;
    Plinth::Float32 firstListWeight;
    Plinth::Float32 secondListWeight;
    Plinth::UInt8 linkKind;  // 1 or 2
    Plinth::UInt8 padding[3];
};
PLINTH_STATIC_ASSERT(sizeof(KTAWire) == 1116, wire_size);

struct KTAIKChain {
    enum { kChunkId = kChunkIKChain, kChunkVersion = 1 };

    char nodeName[kNameSize];
    char startJoint[kNameSize];
    char endJoint[kNameSize];
    Plinth::UInt8 at780;
    char solverNode[kNameSize];
    Plinth::UInt8 padding0[3];
    Plinth::Float32 at1044;
    Plinth::UInt8 at1048;
    Plinth::UInt8 padding1[3];
    Plinth::Float32 at1052[3];
};
PLINTH_STATIC_ASSERT(sizeof(KTAIKChain) == 1064, ik_chain_size);

template <typename Record>
inline Record ZeroedRecord() {
    Record record;
    memset(&record, 0, sizeof(record));
    return record;
}

// The chunk kinds as a table.
struct KTAChunkType {
    KTAChunkId id;
    const char* name;
    unsigned int version;  // the newest one, where there are several
    KTAFileKind file;      // the kind of file that holds such chunks
};

static const KTAChunkType kChunkTypes[] = {
    {kChunkNode, "node", KTANode::kChunkVersion, kFileKindActor},
    {kChunkMotionPart, "motion part", KTAMotionPart::kChunkVersion, kFileKindMotion},
    {kChunkKeyTrack, "key track", kKeyTrackKeyframed, kFileKindMotion},
    {kChunkMesh, "mesh", KTAMesh::kChunkVersion, kFileKindActor},
    {kChunkWeights, "skinning weights", KTAWeights::kChunkVersion, kFileKindActor},
    {kChunkMaterial, "material", KTAMaterial::kChunkVersion, kFileKindActor},
    {kChunkMaterialLayer, "material layer", KTAMaterialLayer::kChunkVersion, kFileKindActor},
    {kChunkJointLimits, "joint limits", KTAJointLimits::kChunkVersion, kFileKindActor},
    {kChunkMorph, "morph", KTAMorphChannel::kChunkVersion, kFileKindActor},
    {kChunkWire, "parameter wiring", KTAWire::kChunkVersion, kFileKindActor},
    {kChunkIKChain, "IK chain", KTAIKChain::kChunkVersion, kFileKindActor}};

static const int kNumChunkTypes = static_cast<int>(sizeof(kChunkTypes) / sizeof(kChunkTypes[0]));

// The table's entry for an id; null for an id that is never written.
inline const KTAChunkType* FindChunkType(unsigned int id) {
    for (int i = 0; i < kNumChunkTypes; ++i) {
        if (static_cast<unsigned int>(kChunkTypes[i].id) == id) {
            return &kChunkTypes[i];
        }
    }
    return 0;
}

// The file's axis order: its second axis is 3ds Max's z axis, its third is 3ds Max's y axis.

// x, z, y of anything with these members.
template <typename Vector>
inline void StoreVector(Plinth::Float32 field[3], const Vector& v) {
    field[0] = v.x;
    field[1] = v.z;
    field[2] = v.y;
}

// x, z, y, w.
template <typename Quaternion>
inline void StoreQuaternion(Plinth::Float32 field[4], const Quaternion& q) {
    StoreVector(field, q);
    field[3] = q.w;
}

#endif
