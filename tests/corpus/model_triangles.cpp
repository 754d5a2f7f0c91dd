#include "tests/corpus/model_triangles.h"

#include <algorithm>
#include <map>
#include <set>
#include <string_view>

namespace corpus {
namespace {

bool IsTriangle(const aiMesh& piece, const aiFace& face) {
    return face.mNumIndices == 3 && face.mIndices &&
           std::max({face.mIndices[0], face.mIndices[1], face.mIndices[2]}) < piece.mNumVertices;
}

// A mesh of fewer vertices than a triangle has is not exported.
bool HasThreeVertices(const aiScene& scene, const aiNode& node) {
    std::set<std::vector<float>> corners;
    for (const auto& [material, triangles] : TrianglesOf(scene, node)) {
        for (const Triangle& triangle : triangles) {
            for (unsigned k = 0; k < 3; ++k) {
                const unsigned index = triangle.face->mIndices[k];
                std::vector<float> corner;
                const auto add = [&corner, index](const aiVector3D* vectors) {
                    if (vectors) {
                        const aiVector3D& v = vectors[index];
                        corner.insert(corner.end(), {v.x, v.y, v.z});
                    }
                };
                add(triangle.piece->mVertices);
                add(triangle.piece->mNormals);
                for (const aiVector3D* const set : triangle.piece->mTextureCoords) {
                    add(set);
                }
                corners.insert(std::move(corner));
                if (corners.size() == 3) {
                    return true;
                }
            }
        }
    }
    return false;
}

}  // namespace

std::vector<std::pair<unsigned, std::vector<Triangle>>> TrianglesOf(const aiScene& scene,
                                                                    const aiNode& node) {
    std::vector<std::pair<unsigned, std::vector<Triangle>>> groups;
    std::map<unsigned, std::size_t> byMaterial;
    for (unsigned i = 0; i < node.mNumMeshes; ++i) {
        if (node.mMeshes[i] >= scene.mNumMeshes) {
            continue;
        }
        const aiMesh& piece = *scene.mMeshes[node.mMeshes[i]];
        for (unsigned k = 0; piece.mVertices && piece.mFaces && k < piece.mNumFaces; ++k) {
            if (!IsTriangle(piece, piece.mFaces[k])) {
                continue;
            }
            const auto [found, isNew] = byMaterial.try_emplace(piece.mMaterialIndex, groups.size());
            if (isNew) {
                groups.emplace_back(piece.mMaterialIndex, std::vector<Triangle>());
            }
            groups[found->second].second.push_back({&piece, &piece.mFaces[k]});
        }
    }
    return groups;
}

std::vector<MeshNode> NodesWithTriangles(const aiScene& scene) {
    std::vector<MeshNode> nodes;
    std::vector<MeshNode> stack;
    if (!scene.mRootNode) {
        return nodes;
    }
    const Clip clip(scene, 0);
    Matrix unit;
    unit.a1 = unit.b2 = unit.c3 = 1 / RootScale(scene);
    stack.push_back({scene.mRootNode, unit, false});
    while (!stack.empty()) {
        MeshNode at = stack.back();
        stack.pop_back();
        const std::string_view name(at.node->mName.C_Str());
        const Matrix local = clip.Local(*at.node, 0);
        at.world = at.world * local;
        const bool isGeometric = name.find("_$AssimpFbx$_Geometric") != std::string_view::npos;
        at.isTurnedOver =
            isGeometric ? at.isTurnedOver != (local.Determinant() < 0) : at.isTurnedOver;
        if (HasThreeVertices(scene, *at.node)) {
            nodes.push_back(at);
        }
        at.isTurnedOver = isGeometric && at.isTurnedOver;
        for (unsigned i = at.node->mNumChildren; i > 0; --i) {
            if (at.node->mChildren[i - 1]) {
                stack.push_back({at.node->mChildren[i - 1], at.world, at.isTurnedOver});
            }
        }
    }
    return nodes;
}

}  // namespace corpus
