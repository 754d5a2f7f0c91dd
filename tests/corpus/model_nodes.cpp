#include "tests/corpus/model_nodes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

#include "tests/corpus/file_bytes.h"

namespace corpus {
namespace {

// Nodes that Assimp splits an FBX node with pivots into.
bool IsPivot(const aiNode& node) {
    return std::string_view(node.mName.C_Str()).find("_$AssimpFbx$_") != std::string_view::npos &&
           node.mNumMeshes == 0;
}

// Of those, what places the meshes of a node alone; there is an inverse for its children.
bool IsGeometric(const aiNode& node) {
    return IsPivot(node) && std::string_view(node.mName.C_Str()).find("_$AssimpFbx$_Geometric") !=
                                std::string_view::npos;
}

bool IsListed(const aiNode& parent, const aiNode* child) {
    const aiNode* const* const begin = parent.mChildren;
    const aiNode* const* const end = begin + parent.mNumChildren;
    return child && std::find(begin, end, child) != end;
}

// The nodes that hang below the node, which stands in `list`, null for the root: Assimp lists the
// bones of MDL files below one node, each of which names one before it as its parent.
std::vector<const aiNode*> ChildrenOf(const aiNode& node, const aiNode* list) {
    std::vector<const aiNode*> children;
    for (unsigned i = 0; i < node.mNumChildren; ++i) {
        const aiNode* const child = node.mChildren[i];
        if (child && (child->mParent == &node || !IsListed(node, child->mParent))) {
            children.push_back(child);
        }
    }
    for (unsigned i = 0; list && i < list->mNumChildren; ++i) {
        if (list->mChildren[i] && list->mChildren[i]->mParent == &node) {
            children.push_back(list->mChildren[i]);
        }
    }
    return children;
}

// The nodes in depth-first order without the first `wrappers` and without pivots.
std::vector<ModelNode> Flatten(const aiScene& scene, std::size_t wrappers) {
    struct Visit {
        const aiNode* node;
        const aiNode* list;  // the node that has it among its children
        int parent;
        std::vector<const aiNode*> above;
    };
    std::vector<ModelNode> nodes;
    std::vector<Visit> stack{{scene.mRootNode, nullptr, -1, {}}};
    while (!stack.empty()) {
        Visit visit = std::move(stack.back());
        stack.pop_back();
        if (!IsGeometric(*visit.node)) {
            visit.above.push_back(visit.node);
        }
        const bool isFolded = IsPivot(*visit.node) || wrappers > 0;
        wrappers -= wrappers > 0 ? 1 : 0;
        if (!isFolded) {
            nodes.push_back({visit.node, visit.parent, std::move(visit.above)});
            visit.parent = static_cast<int>(nodes.size()) - 1;
            visit.above.clear();
        }
        const std::vector<const aiNode*> children = ChildrenOf(*visit.node, visit.list);
        for (auto child = children.rbegin(); child != children.rend(); ++child) {
            const bool isSibling = !IsListed(*visit.node, *child);
            stack.push_back(
                {*child, isSibling ? visit.list : visit.node, visit.parent, visit.above});
        }
    }
    return nodes;
}

// The smallest box around what it was given.
struct Box {
    Vector low, high;
    bool isEmpty = true;

    void Take(const Vector& v) {
        if (!std::isfinite(v.Length())) {
            return;
        }
        for (unsigned k = 0; k < 3; ++k) {
            low[k] = isEmpty ? v[k] : std::min(low[k], v[k]);
            high[k] = isEmpty ? v[k] : std::max(high[k], v[k]);
        }
        isEmpty = false;
    }
};

}  // namespace

std::vector<ModelNode> MatchNodes(const aiScene& scene, std::size_t exported) {
    for (std::size_t wrappers = 0; wrappers <= 2; ++wrappers) {
        std::vector<ModelNode> nodes = Flatten(scene, wrappers);
        if (nodes.size() == exported) {
            return nodes;
        }
    }
    Differ(std::to_string(exported) + " nodes, expected about " +
           std::to_string(Flatten(scene, 0).size()));
}

ModelPoses::ModelPoses(const aiScene& scene, std::vector<ModelNode> nodes, unsigned clip)
    : scene_(scene), nodes_(std::move(nodes)), clip_(scene, clip) {
    const View view = ViewOf(scene);
    const double unit = 1 / RootScale(scene);
    const std::array<Vector, 3> rows{view.right, view.Away(), view.up};
    for (unsigned i = 0; i < 3; ++i) {
        for (unsigned k = 0; k < 3; ++k) {
            turn_[i][k] = rows[i][k] * unit;
        }
    }
}

std::vector<Matrix> ModelPoses::Worlds(double seconds) const {
    std::vector<Matrix> worlds;
    for (const ModelNode& node : nodes_) {
        Matrix world = node.parent < 0 ? turn_ : worlds[static_cast<std::size_t>(node.parent)];
        for (const aiNode* step : node.chain) {
            world = world * clip_.Local(*step, seconds);
        }
        worlds.push_back(world);
    }
    return worlds;
}

double ModelPoses::BoundingDiagonal() const {
    Box box;
    const std::vector<Matrix> worlds = Worlds(0);
    for (std::size_t i = 0; i < nodes_.size(); ++i) {
        box.Take(Vector(worlds[i].a4, worlds[i].b4, worlds[i].c4));
        const aiNode& node = *nodes_[i].node;
        for (unsigned m = 0; m < node.mNumMeshes; ++m) {
            const aiMesh& mesh = *scene_.mMeshes[node.mMeshes[m]];
            for (unsigned v = 0; mesh.mVertices && v < mesh.mNumVertices; ++v) {
                box.Take(worlds[i] *
                         Vector(mesh.mVertices[v].x, mesh.mVertices[v].y, mesh.mVertices[v].z));
            }
        }
    }
    return (box.high - box.low).Length();
}

}  // namespace corpus
