#include "tests/corpus/model_skin.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "tests/corpus/matrices.h"

namespace corpus {
namespace {

Vector ToDouble(const aiVector3D& v) {
    return {v.x, v.y, v.z};
}

// Numbers that are not finite are imported as 0.
Vector Finite(const aiVector3D& v) {
    return {std::isfinite(v.x) ? v.x : 0, std::isfinite(v.y) ? v.y : 0,
            std::isfinite(v.z) ? v.z : 0};
}

// The piece's vertices in one of its blend shapes; without any where there is no such shape.
std::vector<Vector> ShapeAlone(const aiMesh& piece, unsigned number) {
    const aiAnimMesh* const shape =
        number < piece.mNumAnimMeshes ? piece.mAnimMeshes[number] : nullptr;
    std::vector<Vector> positions;
    for (unsigned i = 0; i < piece.mNumVertices; ++i) {
        const bool isThere = shape && shape->mVertices && i < shape->mNumVertices;
        positions.push_back(Finite(isThere ? shape->mVertices[i] : piece.mVertices[i]));
    }
    return positions;
}

// The piece's vertices with the blend shapes that it shows by itself.
std::vector<Vector> Shape(const aiMesh& piece) {
    std::vector<Vector> positions;
    for (unsigned i = 0; i < piece.mNumVertices; ++i) {
        Vector position = Finite(piece.mVertices[i]);
        for (unsigned k = 0; k < piece.mNumAnimMeshes; ++k) {
            const aiAnimMesh& shape = *piece.mAnimMeshes[k];
            if (shape.mVertices && i < shape.mNumVertices) {
                position += (ToDouble(shape.mVertices[i]) - ToDouble(piece.mVertices[i])) *
                            static_cast<double>(shape.mWeight);
            }
        }
        positions.push_back(position);
    }
    return positions;
}

}  // namespace

ModelSkin::ModelSkin(const aiScene& scene, unsigned clip) : scene_(scene), clip_(scene, clip) {
}

void ModelSkin::MoveTo(double seconds) {
    seconds_ = seconds;
    worlds_.clear();
}

const Matrix& ModelSkin::World(const aiNode& node) {
    const auto [found, isNew] = worlds_.try_emplace(&node);
    if (isNew) {
        Matrix above;
        if (node.mParent) {
            above = World(*node.mParent);
        } else {
            above.a1 = above.b2 = above.c3 = 1 / RootScale(scene_);
        }
        worlds_[&node] = above * clip_.Local(node, seconds_);
    }
    return worlds_[&node];
}

const aiNode* ModelSkin::FindBone(const aiBone& bone) {
    const auto [found, isNew] = bones_.try_emplace(bone.mName.C_Str(), nullptr);
    if (isNew) {
        found->second = scene_.mRootNode->FindNode(bone.mName);
    }
    return found->second;
}

template <typename Take>
void ModelSkin::ForWeights(const aiMesh& piece, Take take) {
    for (unsigned b = 0; b < piece.mNumBones; ++b) {
        const aiBone& bone = *piece.mBones[b];
        const aiNode* const moving = FindBone(bone);
        if (!moving) {
            continue;
        }
        const Matrix matrix = World(*moving) * Matrix(bone.mOffsetMatrix);
        for (unsigned i = 0; i < bone.mNumWeights; ++i) {
            if (bone.mWeights[i].mVertexId < piece.mNumVertices) {
                take(bone.mWeights[i].mVertexId, static_cast<double>(bone.mWeights[i].mWeight),
                     matrix);
            }
        }
    }
}

std::vector<Vector> ModelSkin::Positions(const aiNode& node, const aiMesh& piece) {
    return Moved(node, piece, Shape(piece));
}

std::vector<Vector> ModelSkin::Positions(const aiNode& node, const aiMesh& piece, unsigned shape) {
    return Moved(node, piece, ShapeAlone(piece, shape));
}

std::vector<Vector> ModelSkin::Moved(const aiNode& node, const aiMesh& piece,
                                     const std::vector<Vector>& shape) {
    std::vector<Vector> sums(shape.size());
    std::vector<double> weights(shape.size());
    ForWeights(piece, [&](unsigned vertex, double weight, const Matrix& matrix) {
        sums[vertex] += (matrix * shape[vertex]) * weight;
        weights[vertex] += weight;
    });
    for (std::size_t i = 0; i < sums.size(); ++i) {
        sums[i] = weights[i] != 0 ? sums[i] / weights[i] : World(node) * shape[i];
    }
    return sums;
}

std::vector<Vector> ModelSkin::Normals(const aiNode& node, const aiMesh& piece) {
    std::vector<Vector> sums(piece.mNormals ? piece.mNumVertices : 0);
    if (sums.empty()) {
        return sums;
    }
    std::vector<Matrix> means(sums.size(), Matrix() * 0.0);
    std::vector<double> weights(sums.size());
    ForWeights(piece, [&](unsigned vertex, double weight, const Matrix& matrix) {
        means[vertex] = means[vertex] + matrix * weight;
        weights[vertex] += weight;
    });
    const Matrix inverse = Inverse(World(node));
    for (unsigned i = 0; i < sums.size(); ++i) {
        const bool isMoved = weights[i] != 0;
        sums[i] = TurnNormal(isMoved ? Inverse(means[i] * (1 / weights[i])) : inverse,
                             ToDouble(piece.mNormals[i]));
    }
    return sums;
}

std::vector<double> ModelSkin::Disagreement(const aiNode& node, const aiMesh& piece) {
    const std::vector<Vector> shape = Shape(piece), places = Positions(node, piece);
    std::vector<double> most(shape.size());
    ForWeights(piece, [&](unsigned vertex, double weight, const Matrix& matrix) {
        if (weight != 0) {
            most[vertex] =
                std::max(most[vertex], (matrix * shape[vertex] - places[vertex]).Length());
        }
    });
    return most;
}

}  // namespace corpus
