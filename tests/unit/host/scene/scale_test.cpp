// The numbers of a scene that are lengths are scaled, and no others.
#include "host/scene/scale.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>

#include "host/scene/error.h"
#include "tests/support/every_field.h"

using namespace maxhost::scene;

namespace {

void Double(float& length) {
    length *= 2;
}

void Double(Vec3& point) {
    for (float& part : point) {
        Double(part);
    }
}

void Double(std::vector<Vec3>& points) {
    for (Vec3& point : points) {
        Double(point);
    }
}

void DoublePosition(Scene& scene) {
    auto& root = *std::get<PrsTransform>(scene.nodes[0].transform->kind).position;
    auto& axes = std::get<ThreeAxes>(root.kind).axes;
    auto& keyed = std::get<BezierFloat>(axes[0]->kind);
    Double(keyed.value);
    for (Key& key : keyed.keys) {
        Double(key.value);
        Double(key.inTangent);
        Double(key.outTangent);
    }
    const auto constant = std::make_shared<FloatController>();
    constant->kind = BezierFloat{{}, 6};
    std::get<FloatList>(axes[1]->kind).items[0].controller = constant;
    Double(std::get<WireFloat>(axes[2]->kind).value);
    root.jointParams->min = {-2, -4};
    root.jointParams->max = {2, 4};
    auto& arm = *std::get<PrsTransform>(scene.nodes[1].transform->kind).position;
    std::get<OtherThree>(arm.kind).value = {2, 4, 6, 0};
}

// Every number of the scene of every field that is a length, each named once here.
TEST(ScaleLengths, ScalesLengthsAndNothingElse) {
    Scene expected = EveryFieldScene();
    DoublePosition(expected);
    for (Node& node : expected.nodes) {
        Double(node.objectOffset[3]);
    }
    Double(std::get<MatrixTransform>(expected.nodes[3].transform->kind).matrix[3]);
    Double(std::get<SampledTransform>(expected.nodes[4].transform->kind).samples[1].matrix[3]);
    Double(std::get<FootprintTransform>(expected.nodes[5].transform->kind).matrix[3]);
    Double(std::get<IkChainTransform>(expected.nodes[6].transform->kind).matrix[3]);
    const auto mesh = std::make_shared<Mesh>(*expected.nodes[0].object->mesh);
    Double(mesh->vertices);
    expected.nodes[0].object->mesh = mesh;
    expected.nodes[0].object->parameter0 = 5;
    expected.nodes[1].object->parameter0 = 40;
    Double(std::get<Morpher>(expected.nodes[0].referenceModifiers[0].kind).channels[0].points);

    Scene scene = EveryFieldScene();
    ScaleLengths(scene, 2);
    EXPECT_EQ(Difference(scene, expected), "");
}

TEST(ScaleLengths, ByOneChangesNothing) {
    Scene scene = EveryFieldScene();
    ScaleLengths(scene, 1);
    EXPECT_EQ(Difference(scene, EveryFieldScene()), "");
}

TEST(ScaleLengths, ScalesSharedDataOnceAndKeepsItShared) {
    const auto mesh = std::make_shared<Mesh>();
    mesh->vertices = {{1, 2, 3}};
    const auto part = std::make_shared<FloatController>();
    part->kind = BezierFloat{{}, 5};
    FloatController list;
    list.kind = FloatList{{{1, part}, {1, part}}};
    PrsTransform transform;
    transform.position.emplace().kind = ThreeAxes{{list, list, std::nullopt}};
    Scene scene;
    scene.nodes.resize(3);
    for (Node& node : scene.nodes) {
        node.object = Object{std::nullopt, std::nullopt, std::nullopt, mesh};
        node.transform->kind = transform;
    }
    ScaleLengths(scene, 10);
    const auto item = [&scene](int node, int axis, int index) {
        const auto& position = *std::get<PrsTransform>(scene.nodes[node].transform->kind).position;
        const auto& controller = *std::get<ThreeAxes>(position.kind).axes[axis];
        return std::get<FloatList>(controller.kind).items[index].controller;
    };
    EXPECT_EQ(scene.nodes[2].object->mesh->vertices[0], (Vec3{10, 20, 30}));
    EXPECT_EQ(scene.nodes[2].object->mesh, scene.nodes[0].object->mesh);
    EXPECT_EQ(std::get<BezierFloat>(item(2, 1, 1)->kind).value, 50);
    EXPECT_EQ(item(2, 1, 1), item(0, 0, 0));
    EXPECT_EQ(mesh->vertices[0], (Vec3{1, 2, 3})) << "what others may still hold stays";
}

TEST(ScaleLengths, JointLimitsFollowTheirOwnFlags) {
    for (const auto& [flags, limit] : {std::pair(0x80000009u, 30.0f), std::pair(0x40000009u, 3.0f),
                                       std::pair(0xc0000009u, 3.0f), std::pair(9u, 3.0f)}) {
        PrsTransform transform;
        transform.rotation.emplace().jointParams =
            JointParams{flags, 3, {3, 3, 3}, {3, 3, 3}, false};
        transform.position = transform.rotation;
        Scene scene;
        scene.nodes.resize(1);
        scene.nodes[0].transform->kind = transform;
        ScaleLengths(scene, 10);
        const auto& scaled = std::get<PrsTransform>(scene.nodes[0].transform->kind);
        EXPECT_EQ(scaled.rotation->jointParams->min[2], limit) << flags;
        EXPECT_EQ(scaled.position->jointParams->max[0], limit) << flags;
    }
}

TEST(ScaleLengths, ParameterOfCamerasAndLightsStays) {
    for (const auto& [superClass, parameter] :
         {std::pair(0x10u, 20.0f), std::pair(0x20u, 2.0f), std::pair(0x30u, 2.0f),
          std::pair(0x40u, 20.0f), std::pair(0x50u, 20.0f), std::pair(0x60u, 2.0f)}) {
        Scene scene;
        scene.nodes.resize(1);
        scene.nodes[0].object = Object{superClass, ClassId{1, 2}, 2.0f, nullptr};
        ScaleLengths(scene, 10);
        EXPECT_EQ(scene.nodes[0].object->parameter0, parameter) << superClass;
    }
}

TEST(ScaleLengths, RefusesLengthsThatAreNoLongerFinite) {
    Scene scene;
    scene.nodes.resize(2);
    scene.nodes[1].objectOffset[3] = {0, 1e20f, 0};
    try {
        ScaleLengths(scene, 1e20f);
        FAIL() << "nothing was refused";
    } catch (const SceneError& fault) {
        EXPECT_STREQ(fault.what(), "/nodes/1/objectOffset/3/1: inf, expected a finite number");
    }
}

}  // namespace
