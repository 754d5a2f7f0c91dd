#include "host/assimp/mesh/bones.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>

#include "host/assimp/text.h"

namespace maxhost::import {

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

using Vector = aiVector3t<double>;

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
        warnings.Add(node == scene::kNone ? "left out, there is no such node"
                     : isBare ? "several nodes have this name, the first without a mesh is taken"
                              : "several nodes have this name, the first is taken",
                     "bone " + Quoted(TextOf(name)));
    }
}

}  // namespace maxhost::import
