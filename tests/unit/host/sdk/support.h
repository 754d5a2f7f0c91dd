// Scenes for the tests of the SDK work-alike.
#pragma once

#include <gmock/gmock.h>
#include <inode.h>

#include "host/sdk/host.h"
#include "tests/support/scene_parts.h"
#include "tests/support/sdk_values.h"

// Every test opens its scene with this and leaves the host empty.
class SceneTest : public testing::Test {
  protected:
    ~SceneTest() override;

    static void Open(maxhost::scene::Scene scene);
    // The node at a position of the open scene.
    static INode* At(int position);
    // Opens a scene of this node alone.
    static INode* OpenNode(maxhost::scene::Node node);
};

using support::Axes;
using support::Constant;
using support::Keyed;
using support::MakeNode;
using support::Prs;
maxhost::scene::Scene MakeScene(std::vector<maxhost::scene::Node> nodes);

template <class Kind>
maxhost::scene::FloatController FloatOf(Kind kind, const std::string& id = "") {
    maxhost::scene::FloatController controller;
    controller.id = id;
    controller.kind = std::move(kind);
    return controller;
}

constexpr float kQuarterTurn = 1.57079632679f;

// Whether no element differs by more than 1e-5.
testing::AssertionResult MatrixNear(const Matrix3& actual, const maxhost::scene::Matrix& expected);
MATCHER_P3(PointNear, x, y, z, "") {
    return IsNear(arg, Point3(x, y, z), 1e-5f);
}
