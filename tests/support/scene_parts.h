// Nodes and controllers for the scenes of tests.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/scene/scene.h"

namespace support {

// The sine and the cosine of 45 degrees.
constexpr float kHalfRoot = 0.70710678f;

inline maxhost::scene::Node MakeNode(const std::string& name, int parent = maxhost::scene::kNone) {
    maxhost::scene::Node node;
    node.name = name;
    node.parent = parent;
    return node;
}

inline maxhost::scene::FloatController Constant(float value) {
    maxhost::scene::FloatController controller;
    controller.kind = maxhost::scene::BezierFloat{{}, value};
    return controller;
}

inline maxhost::scene::FloatController Keyed(std::vector<maxhost::scene::Key> keys) {
    maxhost::scene::FloatController controller;
    controller.kind = maxhost::scene::BezierFloat{std::move(keys), 0};
    return controller;
}

inline maxhost::scene::ThreeAxisController Axes(std::optional<maxhost::scene::FloatController> x,
                                                std::optional<maxhost::scene::FloatController> y,
                                                std::optional<maxhost::scene::FloatController> z) {
    maxhost::scene::ThreeAxisController controller;
    controller.kind = maxhost::scene::ThreeAxes{{std::move(x), std::move(y), std::move(z)}};
    return controller;
}

// Three constant axes.
inline maxhost::scene::ThreeAxisController Axes(float x, float y, float z) {
    return Axes(Constant(x), Constant(y), Constant(z));
}

inline maxhost::scene::Transform Prs(
    std::optional<maxhost::scene::ThreeAxisController> position,
    std::optional<maxhost::scene::ThreeAxisController> rotation = {},
    std::optional<maxhost::scene::ThreeAxisController> scale = {}) {
    maxhost::scene::Transform transform;
    transform.kind =
        maxhost::scene::PrsTransform{std::move(position), std::move(rotation), std::move(scale)};
    return transform;
}

}  // namespace support
