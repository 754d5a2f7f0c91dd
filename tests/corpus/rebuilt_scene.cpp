#include "tests/corpus/rebuilt_scene.h"

#include <utility>

#include "tests/corpus/file_bytes.h"
#include "tests/corpus/matrices.h"

namespace corpus {
namespace {

// From the file's axes to z up.
Matrix WorldOf(const ActorNode& node) {
    static constexpr unsigned kOrder[3] = {0, 2, 1};
    Matrix inverse;
    for (unsigned row = 0; row < 3; ++row) {
        for (unsigned column = 0; column < 3; ++column) {
            inverse[row][column] = node.inverseWorld[kOrder[row]][kOrder[column]];
        }
        inverse[row][3] = node.inverseWorld[kOrder[row]][3];
    }
    return IsFlat(inverse) ? Matrix() * 0.0 : Inverse(inverse);
}

}  // namespace

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
