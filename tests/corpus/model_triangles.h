// The triangles of a model, in the order in which they are exported.
#pragma once

#include <assimp/scene.h>

#include <utility>
#include <vector>

#include "tests/corpus/model.h"

namespace corpus {

struct MeshNode {
    const aiNode* node;
    Matrix world;       // as at the start of the first clip
    bool isTurnedOver;  // a geometric transform mirrors its vertices
};

struct Triangle {
    const aiMesh* piece;
    const aiFace* face;
};

// The node's triangles by material, materials in order of their first triangle's piece.
std::vector<std::pair<unsigned, std::vector<Triangle>>> TrianglesOf(const aiScene& scene,
                                                                    const aiNode& node);

// The position in the face of an exported triangle's corner.
inline unsigned CornerOf(const MeshNode& node, unsigned corner) {
    return node.isTurnedOver ? (3 - corner) % 3 : corner;
}

// The nodes whose meshes are exported, in depth-first order.
std::vector<MeshNode> NodesWithTriangles(const aiScene& scene);

}  // namespace corpus
