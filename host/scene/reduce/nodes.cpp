#include "host/scene/reduce/kinds.h"

#include <cstddef>
#include <utility>
#include <variant>

namespace maxhost::scene {

namespace {

void LeaveBonesOut(Skin& skin, const Places& places) {
    std::vector<int> slots(skin.bones.size(), kNone), bones;
    for (std::size_t i = 0; i < skin.bones.size(); ++i) {
        if (const int place = PlaceOf(places, skin.bones[i]); place != kNone) {
            slots[i] = static_cast<int>(bones.size());
            bones.push_back(place);
        }
    }
    skin.bones = std::move(bones);
    for (std::vector<SkinWeight>& weights : skin.weights) {
        std::erase_if(weights, [&](SkinWeight& weight) {
            const bool isSlot =
                weight.slot >= 0 && static_cast<std::size_t>(weight.slot) < slots.size();
            weight.slot = isSlot ? slots[static_cast<std::size_t>(weight.slot)] : weight.slot;
            return isSlot && weight.slot == kNone;
        });
    }
}

void LeaveBonesOut(Physique& physique, const Places& places) {
    for (auto& vertex : physique.vertices) {
        if (auto* const rigid = std::get_if<PhysiqueRigid>(&vertex)) {
            rigid->node = PlaceOf(places, rigid->node);
            if (rigid->node == kNone) {
                vertex = std::monostate();
            }
        } else if (auto* const blended = std::get_if<PhysiqueBlended>(&vertex)) {
            std::erase_if(blended->nodes, [&](NodeWeight& weight) {
                weight.node = PlaceOf(places, weight.node);
                return weight.node == kNone;
            });
        }
    }
}

void Relink(Node& node, const Places& places) {
    ForEachModifier(node, [&](Modifier& modifier) {
        if (auto* const skin = std::get_if<Skin>(&modifier.kind)) {
            LeaveBonesOut(*skin, places);
        } else if (auto* const physique = std::get_if<Physique>(&modifier.kind)) {
            LeaveBonesOut(*physique, places);
        }
    });
    if (auto* const chain =
            node.transform ? std::get_if<IkChainTransform>(&node.transform->kind) : nullptr) {
        chain->startJoint = PlaceOf(places, chain->startJoint);
        chain->endJoint = PlaceOf(places, chain->endJoint);
    }
}

// The node, or the nearest above it that stays. What goes is told to skip the way from now on, so
// that a long way is climbed once.
int NearestAbove(Scene& scene, const Places& places, int node) {
    std::vector<int> path;
    while (node != kNone && PlaceOf(places, node) == kNone) {
        path.push_back(node);
        node = scene.nodes[static_cast<std::size_t>(node)].parent;
    }
    for (const int passed : path) {
        scene.nodes[static_cast<std::size_t>(passed)].parent = node;
    }
    return node;
}

// Children of nodes that go come to the nearest node above that stays.
void RemoveNodes(Scene& scene, const std::vector<bool>& gone) {
    Places places(scene.nodes.size(), kNone);
    int count = 0;
    for (std::size_t i = 0; i < places.size(); ++i) {
        places[i] = gone[i] ? kNone : count++;
    }
    std::vector<Node> nodes;
    for (std::size_t i = 0; i < places.size(); ++i) {
        if (gone[i]) {
            continue;
        }
        Node& node = scene.nodes[i];
        node.parent = PlaceOf(places, NearestAbove(scene, places, node.parent));
        Relink(node, places);
        nodes.push_back(std::move(node));
    }
    scene.nodes = std::move(nodes);
    std::erase_if(scene.selection, [&](int& node) {
        node = PlaceOf(places, node);
        return node == kNone;
    });
}

std::vector<bool> Gone(const Scene& scene, Keeper& keep) {
    std::vector<bool> gone(scene.nodes.size());
    for (std::size_t i = 0; i < gone.size(); ++i) {
        gone[i] = !keep();
    }
    return gone;
}

}  // namespace

void CutNodesAlone(Scene& scene, Keeper& keep) {
    RemoveNodes(scene, Gone(scene, keep));
}

void CutSubtrees(Scene& scene, Keeper& keep) {
    std::vector<bool> gone = Gone(scene, keep);
    std::vector<bool> isKnown(gone.size());
    for (std::size_t i = 0; i < gone.size(); ++i) {
        std::vector<std::size_t> path;
        std::size_t at = i;
        while (!isKnown[at] && !gone[at] && scene.nodes[at].parent != kNone) {
            path.push_back(at);
            at = static_cast<std::size_t>(scene.nodes[at].parent);
        }
        for (const std::size_t node : path) {
            gone[node] = gone[at];
            isKnown[node] = true;
        }
        isKnown[at] = true;
    }
    RemoveNodes(scene, gone);
}

}  // namespace maxhost::scene
