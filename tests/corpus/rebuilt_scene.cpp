#include "tests/corpus/rebuilt_scene.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "tests/corpus/file_bytes.h"
#include "tests/corpus/matrices.h"

namespace corpus {
namespace {

Matrix WorldOf(const ActorNode& node) {
    const Matrix inverse = InverseWorldOf(node);
    return IsFlat(inverse) ? Matrix() * 0.0 : Inverse(inverse);
}

constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

// The actor's node of each of the model's. Nodes that do not stand ahead have the model's order.
std::vector<std::size_t> NodesOf(const ModelPoses& model, const Actor& actor) {
    const std::vector<Matrix> worlds = model.Worlds(0);
    std::vector<std::size_t> order(worlds.size(), kNone);
    for (std::size_t i = 0; i < actor.nodes.size(); ++i) {
        const ActorNode& node = actor.nodes[i];
        const Vector place = Column(WorldOf(node), 3);
        std::size_t nearest = kNone;
        double least = std::numeric_limits<double>::infinity();
        for (std::size_t k = 0; node.isAhead && k < worlds.size(); ++k) {
            const double distance = (Column(worlds[k], 3) - place).Length();
            if (order[k] == kNone && model.Nodes()[k].node->mName.C_Str() == node.name &&
                distance < least) {
                nearest = k;
                least = distance;
            }
        }
        if (node.isAhead && nearest == kNone) {
            Differ("bone \"" + node.name + "\" is no node of the model");
        }
        if (node.isAhead) {
            order[nearest] = i;
        }
    }
    std::size_t at = 0;
    for (std::size_t i = 0; i < actor.nodes.size(); ++i) {
        if (!actor.nodes[i].isAhead) {
            at = static_cast<std::size_t>(
                std::find(order.begin() + static_cast<std::ptrdiff_t>(at), order.end(), kNone) -
                order.begin());
            order.at(at) = i;
        }
    }
    return order;
}

}  // namespace

Actor InOrderOf(const ModelPoses& model, Actor actor) {
    ExpectEqual("the number of nodes", actor.nodes.size(), model.Nodes().size());
    const std::vector<std::size_t> order = NodesOf(model, actor);
    std::vector<int> numbers(order.size());
    std::vector<ActorNode> nodes;
    for (std::size_t i = 0; i < order.size(); ++i) {
        nodes.push_back(actor.nodes[order[i]]);
        numbers[order[i]] = static_cast<int>(i);
    }
    actor.nodes = std::move(nodes);
    const auto renumber = [&numbers](int& node) {
        node = numbers.at(static_cast<std::size_t>(node));
    };
    for (ActorMesh& mesh : actor.meshes) {
        renumber(mesh.node);
        for (ActorWeights& weights : mesh.weights) {
            for (auto& [bone, weight] : weights) {
                renumber(bone);
            }
        }
    }
    std::stable_sort(actor.meshes.begin(), actor.meshes.end(),
                     [](const ActorMesh& a, const ActorMesh& b) { return a.node < b.node; });
    return actor;
}

RebuiltScene::RebuiltScene(const Actor& actor, std::vector<MotionPart> parts,
                           const std::vector<ModelNode>& nodes)
    : parts_(std::move(parts)) {
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        parents_.push_back(nodes[i].parent);
        atTickZero_.push_back(WorldOf(actor.nodes[i]));
    }
    MatchParts(actor);
}

// Parts stand in the nodes' order; nodes of one name are told apart by their place.
void RebuiltScene::MatchParts(const Actor& actor) {
    partOf_.assign(parents_.size(), nullptr);
    std::size_t at = 0;
    for (const MotionPart& part : parts_) {
        const auto fits = [&part](const ActorNode& node) {
            const Vector place(node.translation[0], node.translation[2], node.translation[1]);
            return node.name == part.name && place == part.rest.translation;
        };
        while (at < parents_.size() && !fits(actor.nodes[at])) {
            ++at;
        }
        if (at == parents_.size()) {
            Differ("motion part \"" + part.name + "\" fits no node");
        }
        partOf_[at++] = &part;
    }
}

Matrix RebuiltScene::Local(std::size_t node, double seconds) const {
    if (partOf_[node]) {
        return partOf_[node]->At(seconds).ToMatrix();
    }
    const int parent = parents_[node];
    return parent < 0 ? atTickZero_[node]
                      : Inverse(atTickZero_[static_cast<std::size_t>(parent)]) * atTickZero_[node];
}

std::vector<Matrix> RebuiltScene::Worlds(double seconds) const {
    std::vector<Matrix> worlds;
    for (std::size_t i = 0; i < parents_.size(); ++i) {
        const Matrix local = Local(i, seconds);
        worlds.push_back(parents_[i] < 0 ? local
                                         : worlds[static_cast<std::size_t>(parents_[i])] * local);
    }
    return worlds;
}

}  // namespace corpus
