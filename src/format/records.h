// The fixed-layout records of the KTA format, written to the files as they lie in memory:
// little-endian, f32 reals, no padding that is not named here. Vectors from scene data hold
// x, z, y and quaternions x, z, y, w (the format's second axis is 3ds Max's z axis), except in
// keyframed tracks, which keep x, y, z. Every record is zeroed before it is filled, so that bytes
// behind a name's terminator and named padding are zero.
#ifndef FORMAT_RECORDS_H
#define FORMAT_RECORDS_H

#include "core/types.h"

enum { kNameSize = 260, kMaterialNameSize = 40, kVariableNameSize = 20 };

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

// Chunk 0.
struct KTANode {
    char name[kNameSize];
    char parentName[kNameSize];  // empty: child of the scene root
    Plinth::Float32 translation[3];
    Plinth::Float32 rotation[4];
    Plinth::Float32 scale[3];
    Plinth::Float32 inverseWorld[4][4];  // the fourth column is 0 in all rows
    Plinth::UInt8 isBone;
    Plinth::UInt8 hasHelperSize;
    Plinth::UInt8 padding[2];
    Plinth::Float32 helperSize;
};
PLINTH_STATIC_ASSERT(sizeof(KTANode) == 632, node_size);

// Chunk 1: a node's name and its local transform at tick 0.
struct KTAMotionPart {
    char name[kNameSize];
    Plinth::Float32 translation[3];
    Plinth::Float32 rotation[4];
    Plinth::Float32 scale[3];
};
PLINTH_STATIC_ASSERT(sizeof(KTAMotionPart) == 300, motion_part_size);

// Chunk 2 begins with this; key records follow.
struct KTAKeyTrack {
    Plinth::UInt32 numKeys;
    char interpolation;  // 'L'
    char track;          // 'P', 'R', 'r' or 'S'
    Plinth::UInt8 reserved[2];
};
PLINTH_STATIC_ASSERT(sizeof(KTAKeyTrack) == 8, key_track_size);

// Key records of sampled tracks; times are seconds.
struct KTAVectorSample {
    Plinth::Float32 time;
    Plinth::Float32 value[3];
};
PLINTH_STATIC_ASSERT(sizeof(KTAVectorSample) == 16, vector_sample_size);

struct KTARotationSample {
    Plinth::Float32 time;
    Plinth::Float32 value[4];
};
PLINTH_STATIC_ASSERT(sizeof(KTARotationSample) == 20, rotation_sample_size);

// Key records of keyframed tracks: this head, six tangent codes (X in, Y in, Z in, X out, Y out,
// Z out; one byte each), and a tangent for each code that is kTangentBezier.
struct KTAKeyHead {
    Plinth::Float32 time;
    Plinth::Float32 value[3];
    Plinth::UInt16 axes;  // bit 0 = X present, 1 = Y, 2 = Z
    Plinth::UInt8 reserved[2];
};
PLINTH_STATIC_ASSERT(sizeof(KTAKeyHead) == 20, key_head_size);

enum KTATangentCode { kTangentNone = 1, kTangentLinear = 3, kTangentStep = 4, kTangentBezier = 5 };

struct KTATangent {
    Plinth::Float32 length;
    Plinth::Float32 slope;
};
PLINTH_STATIC_ASSERT(sizeof(KTATangent) == 8, tangent_size);

// Chunk 3 begins with this; sub-meshes follow, each a KTASubMesh, the full material number (i32)
// where `material` is 255, corner vertices with their texture coordinates, and faces.
struct KTAMesh {
    Plinth::Int32 node;
    Plinth::Int32 numOriginalVertices;
    Plinth::Int32 numVertices;
    Plinth::Int32 numIndices;
    Plinth::Int32 numSubMeshes;
    Plinth::Int32 numMapChannels;
    Plinth::UInt8 isCollision;
    Plinth::UInt8 padding[3];
};
PLINTH_STATIC_ASSERT(sizeof(KTAMesh) == 28, mesh_size);

struct KTASubMesh {
    Plinth::UInt8 material;  // 255: the number in full follows the record
    Plinth::UInt8 zero;
    Plinth::UInt8 padding[2];
    Plinth::Int32 numIndices;
    Plinth::Int32 numVertices;
};
PLINTH_STATIC_ASSERT(sizeof(KTASubMesh) == 12, sub_mesh_size);

struct KTAVertex {
    Plinth::Int32 originalVertex;
    Plinth::Float32 position[3];
    Plinth::Float32 normal[3];
};
PLINTH_STATIC_ASSERT(sizeof(KTAVertex) == 28, vertex_size);

// Chunk 4 holds the node number (i32), then for each vertex a count (u8) and that many of these.
struct KTAWeight {
    Plinth::Int16 bone;
    Plinth::UInt8 padding[2];
    Plinth::Float32 weight;
};
PLINTH_STATIC_ASSERT(sizeof(KTAWeight) == 8, weight_size);

// Chunk 6.
struct KTAMaterial {
    char name[kMaterialNameSize];
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

// Chunk 7.
struct KTAMaterialLayer {
    char texture[kNameSize];
    Plinth::UInt8 type;
    Plinth::UInt8 padding;
    Plinth::Int16 material;
    Plinth::Float32 amount;
    Plinth::Float32 uOffset;
    Plinth::Float32 vOffset;
    Plinth::Float32 uTiling;
    Plinth::Float32 vTiling;
    Plinth::Float32 angle;
};
PLINTH_STATIC_ASSERT(sizeof(KTAMaterialLayer) == 288, material_layer_size);

// Chunk 8.
struct KTAJointLimits {
    Plinth::Int32 node;
    Plinth::Float32 positionMin[3];
    Plinth::Float32 positionMax[3];
    Plinth::Float32 rotationMin[3];
    Plinth::Float32 rotationMax[3];
    Plinth::Float32 ones[6];
    Plinth::UInt8 positionLimited[3];
    Plinth::UInt8 rotationLimited[3];
    Plinth::UInt8 zeros[2];
    Plinth::Int32 zero;
};
PLINTH_STATIC_ASSERT(sizeof(KTAJointLimits) == 88, joint_limits_size);

// Chunk 10 begins with this record, the only part that its size covers; a KTAMorphPoints, the
// packed points, three zero bytes a point and the point numbers (i32) follow.
struct KTAMorphChannel {
    char name[kNameSize];
    Plinth::Float32 zero0;
    Plinth::Float32 one;
    Plinth::Int32 zero1;
    Plinth::UInt8 zero2;
    Plinth::UInt8 padding[3];
    Plinth::Int32 oneBlock;
    Plinth::Int32 zero3;
    Plinth::Int32 zero4;
    Plinth::Float32 zero5;
};
PLINTH_STATIC_ASSERT(sizeof(KTAMorphChannel) == 292, morph_channel_size);

struct KTAMorphPoints {
    char nodeName[kNameSize];
    Plinth::Int32 numPoints;
    Plinth::Float32 minimum;
    Plinth::Float32 maximum;
    Plinth::UInt8 zero;
    Plinth::UInt8 padding[3];
};
PLINTH_STATIC_ASSERT(sizeof(KTAMorphPoints) == 276, morph_points_size);

struct KTAMorphPoint {
    Plinth::UInt16 value[3];
};
PLINTH_STATIC_ASSERT(sizeof(KTAMorphPoint) == 6, morph_point_size);

// Chunk 14: index 0 is the first end of the wire, index 1 the second.
struct KTAWire {
    char nodeName[2][kNameSize];
    char expression[2][kNameSize];
    char secondVariable[kVariableNameSize];
    char firstVariable[kVariableNameSize];
    Plinth::Int32 part[2];
    Plinth::Int32 component[2];
    Plinth::Float32 weight[2];
    Plinth::Float32 listWeight[2];
    Plinth::UInt8 linkKind;  // 1 or 2
    Plinth::UInt8 padding[3];
};
PLINTH_STATIC_ASSERT(sizeof(KTAWire) == 1116, wire_size);

// Chunk 15.
struct KTAIKChain {
    char name[kNameSize];
    char startJoint[kNameSize];
    char endJoint[kNameSize];
    Plinth::UInt8 flag;
    char solverNode[kNameSize];
    Plinth::UInt8 padding0[3];
    Plinth::Float32 value;
    Plinth::UInt8 flag2;
    Plinth::UInt8 padding1[3];
    Plinth::Float32 values[3];
};
PLINTH_STATIC_ASSERT(sizeof(KTAIKChain) == 1064, ik_chain_size);

#endif
