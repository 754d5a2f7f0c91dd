// Wired channels for the scenes of tests, and the chunks that hang from a node.
#pragma once

#include <gtest/gtest.h>

#include "tests/support/chunks.h"
#include "tests/support/export_run.h"
#include "tests/support/scene_parts.h"

namespace support {

// The float controller that others name by `id`.
inline maxhost::scene::FloatController Named(const std::string& id) {
    maxhost::scene::FloatController controller = Constant(0);
    controller.id = id;
    return controller;
}

inline maxhost::scene::FloatController WireOf(maxhost::scene::WireFloat wire,
                                              const std::string& id = "") {
    maxhost::scene::FloatController controller;
    controller.id = id;
    controller.kind = std::move(wire);
    return controller;
}

// A wire in one direction that follows the channel of that id.
inline maxhost::scene::FloatController Follow(const std::string& driver,
                                              const std::string& expression,
                                              const std::string& id = "") {
    return WireOf({false, true, false, {{"", 0, driver, expression}}, 0}, id);
}

// One end of a wire in both directions.
inline maxhost::scene::FloatController TwoWay(bool master, const std::string& other,
                                              const std::string& expression,
                                              const std::string& id) {
    return WireOf({master, !master, true, {{"", 0, other, expression}}, 0}, id);
}

// A node whose position's X axis is that controller, its one channel.
inline maxhost::scene::Node XNode(const std::string& name, maxhost::scene::FloatController x) {
    maxhost::scene::Node node = MakeNode(name);
    node.transform = Prs(Axes(std::move(x), {}, {}));
    return node;
}

inline maxhost::scene::Scene SceneOf(std::vector<maxhost::scene::Node> nodes) {
    maxhost::scene::Scene scene;
    scene.nodes = std::move(nodes);
    return scene;
}

// The ids of the chunks behind the materials, in order.
inline std::vector<std::uint32_t> ChunkIds(const ExportRun& run) {
    std::vector<std::uint32_t> ids;
    for (const Chunk& chunk : Chunks(run.actor.value())) {
        if (chunk.id != 6 && chunk.id != 7) {
            ids.push_back(chunk.id);
        }
    }
    return ids;
}

}  // namespace support
