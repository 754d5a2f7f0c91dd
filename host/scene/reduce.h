// The parts of a scene, one kind after the other, that a smaller scene may do without: for the
// search for what an export fails at.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "host/scene/scene.h"

namespace maxhost::scene {

// A kind of parts, numbered in the order of the scene from 0.
struct PartKind {
    const char* name;  // in the plural: "nodes with all below them"
    std::size_t (*count)(const Scene& scene);
    // The scene without the parts that are marked in `gone`, which has as many elements. What
    // refers to them is left out too: bones, weights, wires, the selection. The scene shares what
    // is unchanged. Of a checked scene it may be one that does not pass Check().
    Scene (*without)(const Scene& scene, const std::vector<bool>& gone);
};

// From the largest parts to the smallest. Counting and leaving out are linear in the scene.
std::span<const PartKind> PartKinds();

// How much there is of what people count.
struct SceneSize {
    std::size_t nodes = 0;
    std::size_t modifiers = 0;
    std::size_t materials = 0;
    std::size_t keys = 0;
    std::size_t morphChannels = 0;
    std::size_t faces = 0;
};
SceneSize SizeOf(const Scene& scene);

}  // namespace maxhost::scene
