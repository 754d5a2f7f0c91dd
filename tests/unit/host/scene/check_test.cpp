// The rules for plain data that no reader made, as an importer or a test may hand it over.
#include "host/scene/check.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <memory>
#include <string>

#include "host/scene/error.h"
#include "tests/support/every_field.h"

using namespace maxhost::scene;

namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

// The fault of the scene of every field after a change to it.
std::string FaultAfter(const std::function<void(Scene&)>& change) {
    Scene scene = EveryFieldScene();
    change(scene);
    try {
        Check(scene);
        return "";
    } catch (const SceneError& fault) {
        return fault.what();
    }
}

PrsTransform& Prs(Scene& scene, int node) {
    return std::get<PrsTransform>(scene.nodes[node].transform->kind);
}

FloatController& Axis(Scene& scene, int axis) {
    return *std::get<ThreeAxes>(Prs(scene, 0).position->kind).axes[axis];
}

void ChangeMesh(Scene& scene, const std::function<void(Mesh&)>& change) {
    const auto mesh = std::make_shared<Mesh>(*scene.nodes[0].object->mesh);
    change(*mesh);
    scene.nodes[0].object->mesh = mesh;
}

void ChangeMaterial(Scene& scene, int index, const std::function<void(Material&)>& change) {
    const auto material = std::make_shared<Material>(*scene.materials[index]);
    change(*material);
    scene.materials[index] = material;
}

TEST(Check, PassesAGoodScene) {
    EXPECT_EQ(FaultAfter([](Scene&) {}), "");
}

TEST(Check, TextsAreUtf8WithoutNul) {
    EXPECT_EQ(FaultAfter([](Scene& s) { s.nodes[2].name = "caf\xe9"; }),
              "/nodes/2/name: text that is not UTF-8, expected UTF-8");
    EXPECT_EQ(FaultAfter([](Scene& s) { s.nodes[1].userProperties = std::string("a\0b", 3); }),
              "/nodes/1/userProperties: text with a NUL character, expected text without");
    EXPECT_EQ(FaultAfter([](Scene& s) { Axis(s, 0).id = std::string("x\xff"); }),
              "/nodes/0/transform/position/x/id: text that is not UTF-8, expected UTF-8");
    EXPECT_EQ(FaultAfter([](Scene& s) {
                  std::get<WireFloat>(Axis(s, 2).kind).wires[1].expression = std::string("x\x80");
              }),
              "/nodes/0/transform/position/z/wires/1/expression: text that is not UTF-8, expected "
              "UTF-8");
    EXPECT_EQ(FaultAfter([](Scene& s) {
                  std::get<Morpher>(s.nodes[0].referenceModifiers[0].kind).channels[1].name =
                      std::string("x\xc3");
              }),
              "/nodes/0/referenceModifiers/0/channels/1/name: text that is not UTF-8, expected "
              "UTF-8");
    EXPECT_EQ(FaultAfter([](Scene& s) {
                  ChangeMaterial(s, 1, [](Material& m) { m.name = std::string("\xed\xa0\x80"); });
              }),
              "/materials/1/name: text that is not UTF-8, expected UTF-8");
    EXPECT_EQ(FaultAfter([](Scene& s) {
                  ChangeMaterial(s, 2, [](Material& m) {
                      const auto map = std::make_shared<Map>();
                      map->kind = BitmapMap{"\xf8"};
                      m.maps[0].map = map;
                  });
              }),
              "/materials/2/maps/0/map/file: text that is not UTF-8, expected UTF-8");
}

struct Number {
    const char* pointer;
    std::function<void(Scene&, float)> set;
};

// Every float of the form.
TEST(Check, NumbersAreFinite) {
    const Number numbers[] = {
        {"/materials/0/ambient/0",
         [](Scene& s, float f) { ChangeMaterial(s, 0, [f](Material& m) { m.ambient[0] = f; }); }},
        {"/materials/0/diffuse/1",
         [](Scene& s, float f) { ChangeMaterial(s, 0, [f](Material& m) { m.diffuse[1] = f; }); }},
        {"/materials/0/specular/2",
         [](Scene& s, float f) { ChangeMaterial(s, 0, [f](Material& m) { m.specular[2] = f; }); }},
        {"/materials/0/selfIllumination/0",
         [](Scene& s, float f) {
             ChangeMaterial(s, 0, [f](Material& m) { m.selfIllumination[0] = f; });
         }},
        {"/materials/0/shininess",
         [](Scene& s, float f) { ChangeMaterial(s, 0, [f](Material& m) { m.shininess = f; }); }},
        {"/materials/0/shininessStrength",
         [](Scene& s, float f) {
             ChangeMaterial(s, 0, [f](Material& m) { m.shininessStrength = f; });
         }},
        {"/materials/0/transparency",
         [](Scene& s, float f) { ChangeMaterial(s, 0, [f](Material& m) { m.transparency = f; }); }},
        {"/materials/0/maps/1/amount",
         [](Scene& s, float f) {
             ChangeMaterial(s, 0, [f](Material& m) { m.maps[1].amount = f; });
         }},
        {"/nodes/0/transform/position/jointParams/min/1",
         [](Scene& s, float f) { Prs(s, 0).position->jointParams->min[1] = f; }},
        {"/nodes/0/transform/position/jointParams/max/0",
         [](Scene& s, float f) { Prs(s, 0).position->jointParams->max[0] = f; }},
        {"/nodes/0/transform/position/x/value",
         [](Scene& s, float f) { std::get<BezierFloat>(Axis(s, 0).kind).value = f; }},
        {"/nodes/0/transform/position/x/keys/2/value",
         [](Scene& s, float f) { std::get<BezierFloat>(Axis(s, 0).kind).keys[2].value = f; }},
        {"/nodes/0/transform/position/x/keys/2/inTangent",
         [](Scene& s, float f) { std::get<BezierFloat>(Axis(s, 0).kind).keys[2].inTangent = f; }},
        {"/nodes/0/transform/position/x/keys/2/outTangent",
         [](Scene& s, float f) { std::get<BezierFloat>(Axis(s, 0).kind).keys[2].outTangent = f; }},
        {"/nodes/0/transform/position/x/keys/2/inLength",
         [](Scene& s, float f) { std::get<BezierFloat>(Axis(s, 0).kind).keys[2].inLength = f; }},
        {"/nodes/0/transform/position/x/keys/2/outLength",
         [](Scene& s, float f) { std::get<BezierFloat>(Axis(s, 0).kind).keys[2].outLength = f; }},
        {"/nodes/0/transform/position/y/items/1/weight",
         [](Scene& s, float f) { std::get<FloatList>(Axis(s, 1).kind).items[1].weight = f; }},
        {"/nodes/0/transform/position/y/items/0/controller/value",
         [](Scene& s, float f) {
             const auto constant = std::make_shared<FloatController>();
             constant->kind = BezierFloat{{}, f};
             std::get<FloatList>(Axis(s, 1).kind).items[0].controller = constant;
         }},
        {"/nodes/0/transform/position/z/value",
         [](Scene& s, float f) { std::get<WireFloat>(Axis(s, 2).kind).value = f; }},
        {"/nodes/0/transform/scale/value/1",
         [](Scene& s, float f) { std::get<BezierScale>(Prs(s, 0).scale->kind).value[1] = f; }},
        {"/nodes/0/transform/scale/keys/1/value/2",
         [](Scene& s, float f) {
             std::get<BezierScale>(Prs(s, 0).scale->kind).keys[1].value[2] = f;
         }},
        {"/nodes/0/transform/scale/keys/1/inTangent/0",
         [](Scene& s, float f) {
             std::get<BezierScale>(Prs(s, 0).scale->kind).keys[1].inTangent[0] = f;
         }},
        {"/nodes/0/transform/scale/keys/1/outTangent/0",
         [](Scene& s, float f) {
             std::get<BezierScale>(Prs(s, 0).scale->kind).keys[1].outTangent[0] = f;
         }},
        {"/nodes/0/transform/scale/keys/0/inLength/0",
         [](Scene& s, float f) {
             std::get<BezierScale>(Prs(s, 0).scale->kind).keys[0].inLength[0] = f;
         }},
        {"/nodes/0/transform/scale/keys/0/outLength/0",
         [](Scene& s, float f) {
             std::get<BezierScale>(Prs(s, 0).scale->kind).keys[0].outLength[0] = f;
         }},
        {"/nodes/1/transform/rotation/value/3",
         [](Scene& s, float f) { std::get<OtherThree>(Prs(s, 1).rotation->kind).value[3] = f; }},
        {"/nodes/3/transform/matrix/1/2",
         [](Scene& s, float f) {
             std::get<MatrixTransform>(s.nodes[3].transform->kind).matrix[1][2] = f;
         }},
        {"/nodes/4/transform/samples/1/matrix/3/0",
         [](Scene& s, float f) {
             std::get<SampledTransform>(s.nodes[4].transform->kind).samples[1].matrix[3][0] = f;
         }},
        {"/nodes/5/transform/matrix/0/0",
         [](Scene& s, float f) {
             std::get<FootprintTransform>(s.nodes[5].transform->kind).matrix[0][0] = f;
         }},
        {"/nodes/6/transform/matrix/2/1",
         [](Scene& s, float f) {
             std::get<IkChainTransform>(s.nodes[6].transform->kind).matrix[2][1] = f;
         }},
        {"/nodes/7/objectOffset/0/1", [](Scene& s, float f) { s.nodes[7].objectOffset[0][1] = f; }},
        {"/nodes/0/object/parameter0",
         [](Scene& s, float f) { s.nodes[0].object->parameter0 = f; }},
        {"/nodes/0/object/vertices/3/2",
         [](Scene& s, float f) { ChangeMesh(s, [f](Mesh& m) { m.vertices[3][2] = f; }); }},
        {"/nodes/0/object/channels/1/vertices/2/1",
         [](Scene& s, float f) {
             ChangeMesh(s, [f](Mesh& m) { m.channels[1].vertices[2][1] = f; });
         }},
        {"/nodes/0/object/normals/3/0",
         [](Scene& s, float f) { ChangeMesh(s, [f](Mesh& m) { m.normals[3][0] = f; }); }},
        {"/nodes/0/modifiers/0/weights/1/0/1",
         [](Scene& s, float f) {
             std::get<Skin>(s.nodes[0].modifiers[0].kind).weights[1][0].weight = f;
         }},
        {"/nodes/0/modifiers/1/vertices/1/blended/0/1",
         [](Scene& s, float f) {
             auto& vertices = std::get<Physique>(s.nodes[0].modifiers[1].kind).vertices;
             std::get<PhysiqueBlended>(vertices[1]).nodes[0].weight = f;
         }},
        {"/nodes/0/referenceModifiers/0/channels/0/points/1/2",
         [](Scene& s, float f) {
             auto& morpher = std::get<Morpher>(s.nodes[0].referenceModifiers[0].kind);
             morpher.channels[0].points[1][2] = f;
         }},
    };
    for (const Number& number : numbers) {
        EXPECT_EQ(FaultAfter([&number](Scene& s) { number.set(s, kInfinity); }),
                  std::string(number.pointer) + ": inf, expected a finite number");
        const std::string fault = FaultAfter([&number](Scene& s) { number.set(s, kNan); });
        EXPECT_EQ(fault.substr(0, fault.find(':')), number.pointer);
    }
}

TEST(Check, MapNumbersAreFinite) {
    float BitmapMap::*const members[] = {&BitmapMap::uOffset, &BitmapMap::vOffset,
                                         &BitmapMap::uTiling, &BitmapMap::vTiling,
                                         &BitmapMap::angle};
    const char* const names[] = {"uOffset", "vOffset", "uTiling", "vTiling", "angle"};
    for (std::size_t i = 0; i < std::size(members); ++i) {
        EXPECT_EQ(FaultAfter([member = members[i]](Scene& s) {
                      ChangeMaterial(s, 2, [member](Material& m) {
                          const auto map = std::make_shared<Map>();
                          std::get<BitmapMap>(map->kind).*member = -kInfinity;
                          m.maps[0].map = map;
                      });
                  }),
                  "/materials/2/maps/0/map/" + std::string(names[i]) +
                      ": -inf, expected a finite number");
    }
}

TEST(Check, NothingThatMustBeThereIsMissing) {
    EXPECT_EQ(FaultAfter([](Scene& s) { s.materials[1] = nullptr; }),
              "/materials/1: nothing, expected a material");
    EXPECT_EQ(FaultAfter([](Scene& s) {
                  ChangeMaterial(s, 1, [](Material& m) {
                      m.subMaterials[0] = std::shared_ptr<const Material>();
                  });
              }),
              "/materials/1/subMaterials/0: nothing, expected a material");
    EXPECT_EQ(FaultAfter([](Scene& s) {
                  ChangeMaterial(s, 0, [](Material& m) { m.maps[0].map = nullptr; });
              }),
              "/materials/0/maps/0/map: nothing, expected a map");
    EXPECT_EQ(FaultAfter([](Scene& s) {
                  std::get<FloatList>(Axis(s, 1).kind).items[0].controller = nullptr;
              }),
              "/nodes/0/transform/position/y/items/0/controller: nothing, expected a float "
              "controller");
    EXPECT_EQ(FaultAfter([](Scene& s) { s.nodes[1].object->superClassId.reset(); }),
              "/nodes/1/object/superClassId: nothing, expected a super class id");
    EXPECT_EQ(FaultAfter([](Scene& s) { s.nodes[1].object->classId.reset(); }),
              "/nodes/1/object/classId: nothing, expected a class id");
    EXPECT_EQ(FaultAfter([](Scene& s) { Prs(s, 1).position->classId.reset(); }),
              "/nodes/1/transform/position/classId: nothing, expected a class id");
    EXPECT_EQ(FaultAfter([](Scene& s) {
                  std::get<ThreeAxes>(Prs(s, 2).rotation->kind).axes[2]->classId.reset();
              }),
              "/nodes/2/transform/rotation/z/classId: nothing, expected a class id");
}

TEST(Check, PositionsThatAReaderCannotMake) {
    EXPECT_EQ(FaultAfter([](Scene& s) { s.nodes[3].parent = -2; }),
              "/nodes/3/parent: -2, expected a position in nodes, of which there are 11");
    EXPECT_EQ(
        FaultAfter([](Scene& s) { std::get<Skin>(s.nodes[0].modifiers[0].kind).bones[1] = kNone; }),
        "/nodes/0/modifiers/0/bones/1: -1, expected a position in nodes, of which there are "
        "11");
    EXPECT_EQ(FaultAfter([](Scene& s) {
                  ChangeMaterial(s, 1, [](Material& m) { m.subMaterials[1] = -1; });
              }),
              "/materials/1/subMaterials/1: -1, expected a position in materials, of which there "
              "are 3");
    EXPECT_EQ(FaultAfter([](Scene& s) { s.selection = {-1}; }),
              "/selection/0: -1, expected a position in nodes, of which there are 11");
    EXPECT_EQ(
        FaultAfter([](Scene& s) { ChangeMesh(s, [](Mesh& m) { m.channels[-1]; }); }).substr(0, 29),
        "/nodes/0/object/channels/-1: ");
}

TEST(Check, MultiMaterialsHaveNoMaps) {
    EXPECT_EQ(FaultAfter([](Scene& s) {
                  ChangeMaterial(s, 0, [](Material& m) { m.kind = MaterialKind::multi; });
              }),
              "/materials/0/maps: maps of a multi material, expected none");
}

}  // namespace
