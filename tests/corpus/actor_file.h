// An exported actor file, read without the toolkit. Throws Difference on what it does not know.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tests/corpus/file_bytes.h"
#include "tests/corpus/model.h"

namespace corpus {

struct ActorNode {
    std::string name;
    std::string parentName;
    std::array<float, 3> translation{};  // as it stands in the file
    Matrix inverseWorld;                 // column vectors, the file's axes
    bool isAhead = false;                // stands between a mesh and its weights, as its bone
};

// The same matrix with z up.
Matrix InverseWorldOf(const ActorNode& node);

struct ActorMaterial {
    std::string name;
    std::array<float, 3> diffuse{};
    float opacity = 0;
    bool twoSided = false;
    std::vector<std::pair<int, std::string>> layers;  // type and texture
};

struct ActorVertex {
    std::int32_t original;
    float position[3];
    float normal[3];
};

struct ActorSubMesh {
    int material = 0;
    std::vector<ActorVertex> vertices;
    std::vector<std::array<float, 2>> coordinates;  // of each vertex one a channel
    std::vector<std::array<std::uint32_t, 3>> faces;
};

// Node number and share, of each bone that moves a vertex.
using ActorWeights = std::vector<std::pair<int, float>>;

// A channel of morph targets.
struct ActorMorph {
    std::string channel;
    std::vector<std::array<double, 3>> points;  // by original vertex, in the node's own axes
};

struct ActorMesh {
    int node = 0;
    std::size_t nodesBefore = 0;  // in the file
    int numOriginals = 0;
    int channels = 0;
    // By original vertex; empty: not skinned. Positions and normals of a skinned mesh stand in the
    // world, of any other in the node's own axes.
    std::vector<ActorWeights> weights;
    std::vector<ActorSubMesh> subMeshes;
    std::vector<ActorMorph> morphs;
    bool isCollision = false;
};

struct Actor {
    std::vector<ActorNode> nodes;
    std::vector<ActorMaterial> materials;
    std::vector<ActorMesh> meshes;
};

Actor ReadActor(const std::string& path);

}  // namespace corpus
