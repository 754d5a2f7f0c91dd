#include "host/assimp/mesh/skin.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>
#include <numeric>

#include "host/assimp/text.h"

namespace maxhost::import {

// ---------------------------------------------------------------- bones

// How near nodes are to each other in the tree, in logarithmic time: each node has a link to its
// parent and one to an ancestor further up (Myers, "An applicative random-access stack", 1983).
class Ancestry {
  public:
    explicit Ancestry(const SourceTree& tree) : links_(tree.nodes.size() + 1) {
        for (std::size_t i = 1; i < links_.size(); ++i) {
            const auto parent = static_cast<std::size_t>(tree.nodes[i - 1].parent + 1);
            const Link& above = links_[parent];
            const Link& jump = links_[above.jump];
            const bool isEven = above.depth - jump.depth == jump.depth - links_[jump.jump].depth;
            links_[i] = {parent, isEven ? jump.jump : parent, above.depth + 1};
        }
    }

    // How many ancestors the two have in common, themselves included; kNone is above all nodes.
    std::size_t CommonDepth(int first, int second) const {
        std::size_t a = static_cast<std::size_t>(first + 1);
        std::size_t b = static_cast<std::size_t>(second + 1);
        a = Up(a, links_[b].depth);
        b = Up(b, links_[a].depth);
        while (a != b) {
            const bool jumps = links_[a].jump != links_[b].jump;
            a = jumps ? links_[a].jump : links_[a].parent;
            b = jumps ? links_[b].jump : links_[b].parent;
        }
        return links_[a].depth;
    }

  private:
    struct Link {
        std::size_t parent = 0;
        std::size_t jump = 0;
        std::size_t depth = 0;
    };

    std::size_t Up(std::size_t from, std::size_t depth) const {
        while (links_[from].depth > depth) {
            const bool jumps = links_[links_[from].jump].depth >= depth;
            from = jumps ? links_[from].jump : links_[from].parent;
        }
        return from;
    }

    std::vector<Link> links_;  // of nothing, which is above all nodes, and of each node
};

namespace {

constexpr std::size_t kMostOfAName = 64;
constexpr double kFit = 1e-3;  // of the mesh's size

// The corners of the box around the vertices.
std::array<Vector, 8> CornersOf(const aiMesh& piece) {
    constexpr double kFar = std::numeric_limits<double>::max();
    Vector low(kFar, kFar, kFar), high(-kFar, -kFar, -kFar);
    for (unsigned i = 0; piece.mVertices && i < piece.mNumVertices; ++i) {
        const aiVector3D& v = piece.mVertices[i];
        for (unsigned k = 0; k < 3; ++k) {
            if (std::isfinite(v[k])) {
                low[k] = std::min<double>(low[k], v[k]);
                high[k] = std::max<double>(high[k], v[k]);
            }
        }
    }
    std::array<Vector, 8> corners;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        for (unsigned k = 0; k < 3; ++k) {
            corners[i][k] = low[k] > high[k] ? 0 : (i >> k) % 2 == 0 ? low[k] : high[k];
        }
    }
    return corners;
}

// Whether the matrices take the corners to the same places, measured by their distances.
bool AreAlike(const Matrix4& a, const Matrix4& b, const std::array<Vector, 8>& corners) {
    const double size = (b * corners.back() - b * corners.front()).Length();
    return std::all_of(corners.begin(), corners.end(), [&](const Vector& corner) {
        return (a * corner - b * corner).Length() <= kFit * size;
    });
}

// Leaves those of which `isIt` holds, if there are any.
template <class IsIt>
void Prefer(std::vector<int>& nodes, IsIt isIt) {
    std::vector<int> preferred;
    std::copy_if(nodes.begin(), nodes.end(), std::back_inserter(preferred), isIt);
    if (!preferred.empty()) {
        nodes = std::move(preferred);
    }
}

}  // namespace

BoneNodes::BoneNodes(const aiScene& scene, const SourceTree& tree, const StartPose& pose,
                     ImportWarnings& warnings)
    : tree_(tree),
      pose_(pose),
      ancestry_(std::make_unique<Ancestry>(tree)),
      isBone_(tree.nodes.size()) {
    for (std::size_t i = 0; i < tree.nodes.size(); ++i) {
        Nodes& nodes = byName_[tree.nodes[i].node->mName.C_Str()];
        if (nodes.size() < kMostOfAName) {
            nodes.push_back(static_cast<int>(i));
        }
    }
    std::vector<bool> isShown(scene.mNumMeshes);
    for (std::size_t i = 0; i < tree.nodes.size(); ++i) {
        const aiNode& node = *tree.nodes[i].node;
        for (unsigned k = 0; k < node.mNumMeshes; ++k) {
            if (node.mMeshes[k] < scene.mNumMeshes) {
                const aiMesh& piece = *scene.mMeshes[node.mMeshes[k]];
                isShown[node.mMeshes[k]] = true;
                Note(piece, Find(static_cast<int>(i), piece), warnings);
            }
        }
    }
    for (unsigned i = 0; i < scene.mNumMeshes; ++i) {
        if (!isShown[i]) {
            Note(*scene.mMeshes[i], Find(scene::kNone, *scene.mMeshes[i]), warnings);
        }
    }
}

BoneNodes::~BoneNodes() = default;

std::vector<int> BoneNodes::Of(std::size_t node, const aiMesh& piece) const {
    return Find(static_cast<int>(node), piece).nodes;
}

BoneNodes::Found BoneNodes::Find(int shownBy, const aiMesh& piece) const {
    Found found{std::vector<int>(piece.mNumBones, scene::kNone),
                std::vector<bool>(piece.mNumBones)};
    Search search{shownBy, std::nullopt, std::nullopt, {}};
    std::vector<unsigned> open;
    for (unsigned i = 0; i < piece.mNumBones; ++i) {
        const auto nodes = byName_.find(piece.mBones[i]->mName.C_Str());
        if (nodes == byName_.end()) {
            continue;
        }
        if (nodes->second.size() > 1) {
            open.push_back(i);
        } else {
            found.nodes[i] = nodes->second.front();
            Settle(search, found.nodes[i], *piece.mBones[i]);
        }
    }
    if (!open.empty()) {
        search.corners = CornersOf(piece);
    }
    for (const unsigned i : open) {
        const aiBone& bone = *piece.mBones[i];
        const Nodes nodes = Narrow(byName_.at(bone.mName.C_Str()), bone, search);
        found.nodes[i] = nodes.front();
        found.isGuess[i] = nodes.size() > 1;
        Settle(search, nodes.front(), bone);
    }
    return found;
}

BoneNodes::Nodes BoneNodes::Narrow(Nodes nodes, const aiBone& bone, const Search& search) const {
    Prefer(nodes, [&](int node) { return !search.taken.contains(node); });
    Prefer(nodes, [&](int node) {
        return tree_.nodes[static_cast<std::size_t>(node)].node->mNumMeshes == 0;
    });
    if (search.binding || search.nearTo != scene::kNone) {
        const Matrix4 expected = search.binding.value_or(WorldOf(search.nearTo));
        Prefer(nodes, [&](int node) {
            return AreAlike(Binding(node, bone), expected, search.corners.value());
        });
    }
    std::size_t nearest = 0;
    for (const int node : nodes) {
        nearest = std::max(nearest, ancestry_->CommonDepth(node, search.nearTo));
    }
    Prefer(nodes, [&](int node) { return ancestry_->CommonDepth(node, search.nearTo) == nearest; });
    return nodes;
}

void BoneNodes::Settle(Search& search, int node, const aiBone& bone) const {
    search.taken.insert(node);
    if (!search.binding) {
        search.binding = Binding(node, bone);
        search.nearTo = node;
    }
}

void BoneNodes::Note(const aiMesh& piece, const Found& found, ImportWarnings& warnings) {
    for (unsigned i = 0; i < piece.mNumBones; ++i) {
        const aiString& name = piece.mBones[i]->mName;
        const int node = found.nodes[i];
        if (node != scene::kNone) {
            isBone_[static_cast<std::size_t>(node)] = true;
        }
        if ((node != scene::kNone && !found.isGuess[i]) || !told_.insert(name.C_Str()).second) {
            continue;
        }
        const bool isBare = node != scene::kNone &&
                            tree_.nodes[static_cast<std::size_t>(node)].node->mNumMeshes == 0;
        warnings.Add(node == scene::kNone
                         ? LossText(LossCode::objectWithoutNode)
                         : LossText(LossCode::boneNameShared,
                                    std::string("several nodes have this name, the first ") +
                                        (isBare ? "without a mesh is taken" : "is taken")),
                     "bone " + Quoted(TextOf(name)));
    }
}

// ---------------------------------------------------------------- skins

namespace {

void AddScaled(Matrix4& sum, const Matrix4& matrix, double factor) {
    for (unsigned row = 0; row < 3; ++row) {
        for (unsigned column = 0; column < 4; ++column) {
            sum[row][column] += factor * matrix[row][column];
        }
    }
}

}  // namespace

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
        warnings_.AddOf(LossCode::skinMatrixSingular, "mesh", name);
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
    warnings_.Add(LossCode::boneMatrixNotFinite, "mesh " + name, notFinite);
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
    warnings_.Add(LossCode::weightIndexOutOfRange, "mesh " + name, outOfRange);
    warnings_.Add(LossCode::weightNotFinite, "mesh " + name, notFinite);
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
