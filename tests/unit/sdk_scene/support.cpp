#include "support.h"

namespace scene = maxhost::scene;

SceneTest::~SceneTest() {
    maxhost::Host::Instance().CloseScene();
}

void SceneTest::Open(scene::Scene description) {
    maxhost::Host::Instance().OpenScene(std::move(description));
}

INode* SceneTest::At(int position) {
    return maxhost::Host::Instance().Nodes().at(position);
}

INode* SceneTest::OpenNode(scene::Node node) {
    Open(MakeScene({std::move(node)}));
    return At(0);
}

scene::Node MakeNode(const std::string& name, int parent) {
    scene::Node node;
    node.name = name;
    node.parent = parent;
    return node;
}

scene::Scene MakeScene(std::vector<scene::Node> nodes) {
    scene::Scene result;
    result.nodes = std::move(nodes);
    return result;
}

scene::FloatController Constant(float value) {
    scene::FloatController controller;
    controller.kind = scene::BezierFloat{{}, value};
    return controller;
}

scene::FloatController Keyed(std::vector<scene::Key> keys) {
    scene::FloatController controller;
    controller.kind = scene::BezierFloat{std::move(keys), 0};
    return controller;
}

scene::ThreeAxisController Axes(std::optional<scene::FloatController> x,
                                std::optional<scene::FloatController> y,
                                std::optional<scene::FloatController> z) {
    scene::ThreeAxisController controller;
    controller.kind = scene::ThreeAxes{{std::move(x), std::move(y), std::move(z)}};
    return controller;
}

scene::ThreeAxisController Axes(float x, float y, float z) {
    return Axes(Constant(x), Constant(y), Constant(z));
}

scene::Transform Prs(std::optional<scene::ThreeAxisController> position,
                     std::optional<scene::ThreeAxisController> rotation,
                     std::optional<scene::ThreeAxisController> scale) {
    scene::Transform transform;
    transform.kind =
        scene::PrsTransform{std::move(position), std::move(rotation), std::move(scale)};
    return transform;
}

testing::AssertionResult MatrixNear(const Matrix3& actual, const scene::Matrix& expected) {
    for (int row = 0; row < 4; ++row) {
        const Point3 values = actual.GetRow(row);
        const scene::Vec3& wanted = expected[row];
        if (!values.Equals(Point3(wanted[0], wanted[1], wanted[2]), 1e-5f)) {
            return testing::AssertionFailure()
                   << "row " << row << " is (" << values.x << ", " << values.y << ", " << values.z
                   << "), expected (" << wanted[0] << ", " << wanted[1] << ", " << wanted[2] << ")";
        }
    }
    return testing::AssertionSuccess();
}
