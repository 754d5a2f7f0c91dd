#include "host/assimp/mesh/skin.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "host/assimp/text.h"

namespace maxhost::import {
namespace {

std::optional<Matrix4> InverseOf(const Matrix4& matrix) {
    const double determinant = matrix.Determinant();
    if (determinant == 0 || !std::isfinite(determinant)) {
        return std::nullopt;
    }
    return Matrix4(matrix).Inverse();
}

void AddScaled(Matrix4& sum, const Matrix4& matrix, double factor) {
    for (unsigned row = 0; row < 3; ++row) {
        for (unsigned column = 0; column < 4; ++column) {
            sum[row][column] += factor * matrix[row][column];
        }
    }
}

}  // namespace

// ---------------------------------------------------------------- a piece

double PieceSkin::SumAt(unsigned vertex) const {
    const std::span<const Hold> holds = HoldsOf(vertex);
    return std::accumulate(holds.begin(), holds.end(), 0.0,
                           [](double sum, const Hold& hold) { return sum + hold.weight; });
}

// Weights that do not sum to 1 have their proportions alone, as in the programs that make them.
std::optional<Matrix4> PieceSkin::MatrixAt(unsigned vertex) const {
    const double sum = matrices_.empty() ? 0 : SumAt(vertex);
    if (!(sum > 0)) {
        return std::nullopt;
    }
    Matrix4 mean;
    mean.a1 = mean.b2 = mean.c3 = 0;
    for (const Hold& hold : HoldsOf(vertex)) {
        AddScaled(mean, matrices_[hold.bone], hold.weight / sum);
    }
    return mean;
}

double PieceSkin::StrayAt(unsigned vertex, const Vector& v, const Vector& place) const {
    const double sum = SumAt(vertex);
    double most = 0;
    for (const Hold& hold : HoldsOf(vertex)) {
        const double distance = (matrices_[hold.bone] * v - place).Length();
        most = std::max(most, std::abs(hold.weight) / sum * distance);
    }
    return most;
}

// By vertex, those of one vertex in the order that they have.
void PieceSkin::Sort(const std::vector<std::pair<unsigned, Hold>>& holds, unsigned vertices) {
    ends_.assign(vertices + std::size_t{1}, 0);
    for (const auto& [vertex, hold] : holds) {
        ++ends_[vertex + std::size_t{1}];
    }
    std::partial_sum(ends_.begin(), ends_.end(), ends_.begin());
    holds_.resize(holds.size());
    for (const auto& [vertex, hold] : holds) {
        holds_[ends_[vertex]++] = hold;
    }
}

// ---------------------------------------------------------------- a node

NodeSkin::NodeSkin(const SourceTree& tree, std::size_t node, const StartPose& pose,
                   const BoneNodes& bones, ImportWarnings& warnings)
    : node_(tree.nodes[node]),
      index_(node),
      pose_(pose),
      boneNodes_(bones),
      warnings_(warnings),
      fromWorld_(InverseOf(pose.WorldOf(node))) {
}

// The position of each bone of the piece in the node's skin; kNone for one that is no node.
std::vector<int> NodeSkin::SlotsOf(const aiMesh& piece) {
    std::vector<int> slots = boneNodes_.Of(index_, piece);
    for (int& slot : slots) {
        if (slot != scene::kNone) {
            const auto [found, isNew] = slotOf_.try_emplace(slot, static_cast<int>(bones_.size()));
            if (isNew) {
                bones_.push_back(slot);
            }
            slot = found->second;
        }
    }
    return slots;
}

// None where the node's space cannot be reached from the world.
std::vector<Matrix4> NodeSkin::MatricesOf(const aiMesh& piece, const std::string& name,
                                          const std::vector<int>& slots) {
    std::vector<Matrix4> matrices;
    if (!fromWorld_) {
        warnings_.AddOf("not moved by their bones, the matrix of their node has no inverse", "mesh",
                        name);
        return matrices;
    }
    std::size_t notFinite = 0;
    for (unsigned i = 0; i < piece.mNumBones; ++i) {
        matrices.emplace_back();
        if (slots[i] == scene::kNone) {
            continue;
        }
        const auto bone = static_cast<std::size_t>(bones_[static_cast<std::size_t>(slots[i])]);
        const Matrix4 offset = FiniteMatrix(piece.mBones[i]->mOffsetMatrix, notFinite);
        matrices.back() =
            *fromWorld_ * pose_.WorldOf(bone) * offset * node_.geometric.value_or(Matrix4());
    }
    warnings_.Add("numbers of bones' matrices that are not finite replaced by 0", "mesh " + name,
                  notFinite);
    return matrices;
}

// In the order of the skin's bones.
NodeSkin::Holds NodeSkin::HoldsOf(const aiMesh& piece, const std::string& name,
                                  const std::vector<int>& slots) {
    std::vector<unsigned> order(piece.mNumBones);
    std::iota(order.begin(), order.end(), 0u);
    std::stable_sort(order.begin(), order.end(),
                     [&slots](unsigned a, unsigned b) { return slots[a] < slots[b]; });
    Holds holds;
    std::size_t outOfRange = 0, notFinite = 0;
    for (const unsigned i : order) {
        const aiBone& bone = *piece.mBones[i];
        const bool isNode = slots[i] != scene::kNone;
        for (unsigned k = 0; bone.mWeights && isNode && k < bone.mNumWeights; ++k) {
            const aiVertexWeight& entry = bone.mWeights[k];
            if (entry.mVertexId >= piece.mNumVertices) {
                ++outOfRange;
            } else if (!std::isfinite(entry.mWeight)) {
                ++notFinite;
            } else if (entry.mWeight != 0) {
                holds.push_back({entry.mVertexId, {i, entry.mWeight}});
            }
        }
    }
    warnings_.Add("bone weights with a vertex number out of range left out", "mesh " + name,
                  outOfRange);
    warnings_.Add("bone weights that are not finite left out", "mesh " + name, notFinite);
    return holds;
}

PieceSkin NodeSkin::Append(const aiMesh& piece, const std::string& name, std::size_t first,
                           VertexWeights& weights) {
    const std::vector<int> slots = SlotsOf(piece);
    PieceSkin skin;
    skin.matrices_ = MatricesOf(piece, name, slots);
    skin.Sort(HoldsOf(piece, name, slots), piece.mNumVertices);
    for (unsigned i = 0; i < piece.mNumVertices; ++i) {
        weights.Begin(first + i);
        for (const PieceSkin::Hold& hold : skin.HoldsOf(i)) {
            weights.Add({slots[hold.bone], hold.weight});
        }
    }
    return skin;
}

}  // namespace maxhost::import
