// What a plug-in asked of the host, counted by kind: 3ds Max pays for every call, and more for what
// it has to evaluate first. What is read from a mesh's open arrays is no call, and those for names,
// colours and maps are not counted.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

namespace maxhost {

// Of nodes of the scene; its root answers for nothing.
struct CallCounts {
    // Nodes: questions for a transform, and times that a node's controllers were evaluated for
    // them.
    std::uint64_t nodeTransforms = 0;
    std::uint64_t transformEvaluations = 0;
    std::uint64_t objectEvaluations = 0;  // EvalWorldState
    std::uint64_t nodeMaterials = 0;      // GetMtl

    // Objects: questions for class and superclass, modifiers handed out, meshes converted.
    std::uint64_t objectClasses = 0;
    std::uint64_t modifiers = 0;
    std::uint64_t conversions = 0;

    // Meshes: times that normals were built, and the reads of render vertices and face normals.
    std::uint64_t normalBuilds = 0;
    std::uint64_t renderVertices = 0;
    std::uint64_t faceNormals = 0;

    // Skins, Skin and Physique alike: contexts handed out, vertices asked for their number of bones
    // or for their interface, bones turned into nodes, and weights.
    std::uint64_t skinContexts = 0;
    std::uint64_t skinVertices = 0;
    std::uint64_t skinBones = 0;
    std::uint64_t skinWeights = 0;

    std::uint64_t morphPoints = 0;

    // Controllers: questions for the number of keys, and keys read.
    std::uint64_t keyCounts = 0;
    std::uint64_t keys = 0;
};

// All counts with their names, in the order above.
std::vector<std::pair<const char*, std::uint64_t>> NamedCounts(const CallCounts& counts);

// The calls of the process so far, by one thread at a time.
const CallCounts& CountedCalls();
// What was added since.
CallCounts CallsSince(const CallCounts& before);

// Where the host's objects count; for the host's own use.
inline CallCounts calls;

}  // namespace maxhost
