#include "host/scene/check.h"

#include <algorithm>
#include <limits>

#include "host/scene/scene_check_parts.h"

namespace maxhost::scene {
namespace {

// Walks up from every node; a walk ends where an earlier one went.
void CheckParents(const std::vector<Node>& nodes, const Place& place) {
    constexpr int kUnseen = -1;
    std::vector<int> seenBy(nodes.size(), kUnseen);
    for (int first = 0; first < static_cast<int>(nodes.size()); ++first) {
        int node = first;
        while (node != kNone && seenBy[node] == kUnseen) {
            seenBy[node] = first;
            node = nodes[node].parent;
        }
        if (node == kNone || seenBy[node] != first) {
            continue;
        }
        int earliest = node;
        for (int other = nodes[node].parent; other != node; other = nodes[other].parent) {
            earliest = std::min(earliest, other);
        }
        place.Refuse({"nodes", earliest, "parent"}, std::to_string(nodes[earliest].parent),
                     "a node that is not below this one");
    }
}

// Seconds are ticks divided by this product.
void CheckTicksPerSecond(const Time& time, const Place& place) {
    const int most = std::numeric_limits<int>::max() / time.frameRate;
    if (time.ticksPerFrame > most) {
        place.Refuse({"time", "ticksPerFrame"}, std::to_string(time.ticksPerFrame),
                     "at most " + std::to_string(most) + ", as frameRate is " +
                         std::to_string(time.frameRate) + " and ticks a second have 32 bits");
    }
}

class NodeCheck {
  public:
    NodeCheck(const Scene& scene, Place& place)
        : scene_(scene), place_(place), controllers_(place), objects_(place) {}

    void Check() {
        for (std::size_t i = 0; i < scene_.nodes.size(); ++i) {
            const Place::Down down(place_, {"nodes", i});
            CheckNode(scene_.nodes[i]);
        }
        CheckParents(scene_.nodes, place_);
        controllers_.CheckReferences();
    }

  private:
    void CheckNode(const Node& node) {
        place_.Text("name", node.name);
        place_.Text("userProperties", node.userProperties);
        if (node.parent != kNone) {
            place_.Position({"parent"}, node.parent, scene_.nodes.size(), "nodes");
        }
        if (node.material != kNone) {
            place_.Position({"material"}, node.material, scene_.materials.size(), "materials");
        }
        if (node.transform) {
            const Place::Down down(place_, {"transform"});
            controllers_.Check(*node.transform, scene_.nodes.size());
        }
        place_.Finite("objectOffset", node.objectOffset);
        if (node.object) {
            const Place::Down down(place_, {"object"});
            objects_.Check(*node.object);
        }
        CheckStack("modifiers", node.modifiers);
        CheckStack("referenceModifiers", node.referenceModifiers);
    }

    void CheckStack(std::string_view field, const std::vector<Modifier>& modifiers) {
        for (std::size_t i = 0; i < modifiers.size(); ++i) {
            const Place::Down down(place_, {field, i});
            objects_.Check(modifiers[i], scene_.nodes.size());
        }
    }

    const Scene& scene_;
    Place& place_;
    ControllerCheck controllers_;
    ObjectCheck objects_;
};

}  // namespace

void Check(const Scene& scene) {
    Place place;
    place.Least({"time", "frameRate"}, scene.time.frameRate, 1);
    place.Least({"time", "ticksPerFrame"}, scene.time.ticksPerFrame, 1);
    CheckTicksPerSecond(scene.time, place);
    CheckMaterials(scene, place);
    NodeCheck(scene, place).Check();
    for (std::size_t i = 0; i < scene.selection.size(); ++i) {
        place.Position({"selection", i}, scene.selection[i], scene.nodes.size(), "nodes");
    }
}

}  // namespace maxhost::scene
