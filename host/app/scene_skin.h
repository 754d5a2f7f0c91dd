// A node's skin as the scene's plain data has it: which bones move a vertex, and where to.
#pragma once

#include <cstddef>
#include <variant>
#include <vector>

#include "host/scene/scene.h"
#include "kta/vector.h"

namespace maxhost::app {

// The topmost modifier of the kind that is enabled; null: there is none.
template <class Kind>
const Kind* EnabledModifier(const scene::Node& node) {
    for (const auto* const stack : {&node.referenceModifiers, &node.modifiers}) {
        for (const scene::Modifier& modifier : *stack) {
            if (modifier.enabled && std::holds_alternative<Kind>(modifier.kind)) {
                return &std::get<Kind>(modifier.kind);
            }
        }
    }
    return nullptr;
}

// From where each node stands in the first to where it stands in the second; nothing for a node
// that has no extent in the first.
std::vector<kta::Affine> WaysBetween(const std::vector<kta::Affine>& from,
                                     const std::vector<kta::Affine>& to);

// Weights of a vertex by node; a node may stand there several times. Physique comes before Skin.
class SceneSkin {
  public:
    // `own`: the node's number, with which a vertex moves that no bone moves.
    SceneSkin(const scene::Node& node, int own, std::size_t vertices);

    // Whether the node has an enabled Physique or Skin.
    bool IsThere() const { return isThere_; }
    std::vector<scene::NodeWeight> Of(std::size_t vertex) const;
    // The bone with most of the vertex; kNone where no bone moves it.
    int MostOf(std::size_t vertex) const;

    // Where the vertex comes to that stands in the world at `position` at tick 0, by the ways of
    // all nodes from there.
    kta::Vector3 Position(std::size_t vertex, const std::vector<kta::Affine>& ways,
                          const kta::Vector3& position) const;

  private:
    std::vector<scene::NodeWeight> influences_;  // of all vertices, one behind the other
    std::vector<std::size_t> ends_;
    int own_;
    bool isThere_ = false;
};

}  // namespace maxhost::app
