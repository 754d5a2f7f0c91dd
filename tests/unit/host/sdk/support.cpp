#include "tests/unit/host/sdk/support.h"

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

scene::Scene MakeScene(std::vector<scene::Node> nodes) {
    scene::Scene result;
    result.nodes = std::move(nodes);
    return result;
}

testing::AssertionResult MatrixNear(const Matrix3& actual, const scene::Matrix& expected) {
    for (int row = 0; row < 4; ++row) {
        const Point3 values = actual.GetRow(row);
        const scene::Vec3& wanted = expected[row];
        if (!IsNear(values, Point3(wanted[0], wanted[1], wanted[2]), 1e-5f)) {
            return testing::AssertionFailure()
                   << "row " << row << " is (" << values.x << ", " << values.y << ", " << values.z
                   << "), expected (" << wanted[0] << ", " << wanted[1] << ", " << wanted[2] << ")";
        }
    }
    return testing::AssertionSuccess();
}
