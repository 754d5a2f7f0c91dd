#include "tests/support/every_field.h"

#include <memory>

#include "host/scene/difference.h"

using namespace maxhost::scene;

const std::string_view kEveryField = R"({
  "maxscene": 1,
  "time": {"frameRate": 24, "ticksPerFrame": 200, "start": -400, "end": 4800},
  "materials": [
    {"class": "standard", "name": "Skin \u00e9", "ambient": [0.1, 0.2, 0.3],
     "diffuse": [0.4, 0.5, 0.6], "specular": [0.7, 0.8, 1], "selfIllumination": [0.01, 0.02, 0.03],
     "shininess": 0.25, "shininessStrength": 0.75, "transparency": 0.5, "twoSided": true,
     "wire": true, "transparencyType": 1,
     "maps": [
       {"slot": 8, "enabled": false, "amount": 0.3,
        "map": {"class": "bitmap", "file": "a\\b.png", "uOffset": 0.1, "vOffset": 0.2, "uTiling": 3,
                "vTiling": 4, "angle": 1.5, "coordinates": false,
                "subMaps": [null, {"class": "other", "classId": ["0x230", 0],
                                   "subMaps": [{"class": "bitmap"}]}]}},
       {"map": {"class": "other", "classId": [560, "0xFFFFFFFF"]}}],
     "subMaterials": [null, 2]},
    {"class": "multi", "name": "Multi",
     "subMaterials": [{"class": "standard", "name": "Own"}, 0, null]},
    {"class": "other", "classId": ["0x12", "0x34"], "name": "Other", "ambient": [1, 0, 0],
     "diffuse": [0, 1, 0], "specular": [0, 0, 1], "selfIllumination": [1, 1, 0], "shininess": 1,
     "shininessStrength": 2, "transparency": 1,
     "maps": [{"slot": 0, "map": {"class": "bitmap", "file": "c.tga"}}],
     "subMaterials": [{"class": "multi"}]}],
  "nodes": [
    {"name": "Root", "parent": null, "hidden": true, "selected": true, "renderable": false,
     "wireColor": [0, 128, 255], "userProperties": "a = 1\r\nb = \"x\"", "material": 1,
     "transform": {
       "id": "root", "classId": [1, 2],
       "position": {"class": "positionXYZ", "id": "pos", "classId": ["0xA", 11],
         "x": {"class": "bezierFloat", "id": "x", "classId": [3, 4], "value": 7,
               "keys": [{"time": -10, "value": 1.5, "inType": "linear", "outType": "step",
                         "inTangent": -0.5, "outTangent": 0.25, "inLength": 0.2, "outLength": 0.9},
                        {"time": 0, "value": 0, "inType": "fast", "outType": "slow"},
                        {"time": 10, "value": 1, "inType": "custom", "outType": "flat"},
                        {"time": 11, "value": 2, "inType": "smooth", "outType": "smooth"}]},
         "y": {"class": "floatList", "id": "list", "classId": [5, 6],
               "items": [{"weight": 0.5, "controller": 3}, {"controller": {"class": "floatList"}}]},
         "z": {"class": "wire", "id": "w", "classId": [7, 8], "master": true, "slave": false,
               "twoWay": true, "value": 9,
               "wires": [{"parent": "arm", "subnum": 2, "coController": "other", "expression": "a+1"},
                         {"parent": null, "coController": null}, {}]},
         "jointParams": {"flags": "0x80000009", "dofs": 2, "min": [-1, -2], "max": [1, 2],
                         "default": true}},
       "rotation": [0.1, 0.2, 0.3],
       "scale": {"class": "bezierScale", "id": "sc", "classId": [9, 10], "value": [2, 2, 2],
         "keys": [{"time": 0, "value": [1, 2, 3], "inType": "flat", "outType": "custom",
                   "inTangent": [1, 2, 3], "outTangent": [4, 5, 6], "inLength": [0.1, 0.2, 0.3],
                   "outLength": [0.4, 0.5, 0.6]},
                  {"time": 1, "value": [4, 5, 6]}],
         "jointParams": {"flags": 7}}},
     "objectOffset": [[1, 0, 0], [0, 0, 1], [0, -1, 0], [5, 6, 7]],
     "object": {"class": "mesh", "superClassId": 16, "classId": ["0xe44f10b3", 0], "parameter0": 2.5,
       "vertices": [[0, 0, 0], [1, 0, 0], [1, 1, 0], [0, 1, -0.0]],
       "faces": [[0, 1, 2], [0, 2, 3, 5], [3, 2, 1, "0xffffffff", 65535]],
       "channels": {"1": {"vertices": [[0, 0], [1, 0], [1, 1]],
                          "faces": [[0, 1, 2], [0, 0, 0], [2, 2, 2]]},
                    "99": {}},
       "normals": {"0": [0, 0, 1], "3": [0, 1, 0]}},
     "modifiers": [
       {"class": "skin", "enabled": false, "bones": [1, 2], "context": false,
        "weights": [[[0, 1]], [[1, 0.5], [-1, 0.5]], []]},
       {"class": "physique", "enabled": true,
        "vertices": [{"rigid": 1}, {"blended": [[2, 0.25], [1, 0.75]]}, null, {"blended": []}]}],
     "referenceModifiers": [
       {"class": "morpher", "channels": [{"name": "Smile", "points": [[1, 2, 3], [4, 5, 6]]}, {}]},
       {"class": "other", "enabled": false, "classId": ["0x100", "0x200"]}]},
    {"name": "Arm", "parent": 4,
     "transform": {"id": "arm",
       "position": {"class": "other", "classId": [1, 1], "value": [1, 2, 3], "id": "p2",
                    "jointParams": {"flags": 0, "dofs": 6, "min": [1, 2, 3, 4, 5, 6],
                                    "max": [6, 5, 4, 3, 2, 1]}},
       "rotation": {"class": "other", "classId": [2, 2], "value": [0, 0, 3, 4]},
       "scale": {"class": "other", "classId": [3, 3], "value": [1, 1, 2]}},
     "object": {"class": "object", "superClassId": "0x50", "classId": ["0x2011", 0],
                "parameter0": 20}},
    {"name": "", "parent": 0,
     "transform": {
       "rotation": {"class": "eulerXYZ", "x": 1, "y": null,
                    "z": {"class": "other", "id": "other", "classId": ["0x2001", 0], "value": 4}},
       "scale": {"class": "scaleXYZ", "z": {"class": "bezierFloat"}}}},
    {"name": "Matrix", "selected": true, "transform": {"classId": [1, 0], "id": "m",
     "matrix": [[1, 2, 3], [4, 5, 6], [7, 8, 9], [10, 11, 12]]}},
    {"name": "Samples", "transform": {"id": "s", "samples": [
      {"time": 0, "matrix": [[1, 0, 0], [0, 1, 0], [0, 0, 1], [0, 0, 0]]},
      {"time": 160, "matrix": [[1, 0, 0], [0, 1, 0], [0, 0, 1], [0, 0, 5]]}]}},
    {"name": "Foot", "transform": {"class": "footprint", "id": "f", "classId": [1, 3],
     "matrix": [[1, 0, 0], [0, 1, 0], [0, 0, 1], [1, 2, 3]]}},
    {"name": "Chain", "transform": {"class": "ikChain", "startJoint": 1, "endJoint": 0, "id": "c",
     "matrix": [[1, 0, 0], [0, 1, 0], [0, 0, 1], [4, 5, 6]]}},
    {"name": "Chain 2", "transform": {"class": "ikChain", "startJoint": null}},
    {"name": "Foot 2", "transform": {"class": "footprint"}},
    {"name": "No transform", "transform": null, "object": null},
    {"name": "Mesh only", "object": {"class": "mesh"}}],
  "selection": [3, 1]
})";

namespace {

FloatController Constant(float value) {
    FloatController controller;
    controller.kind = BezierFloat{{}, value};
    return controller;
}

std::shared_ptr<Map> Bitmap(const std::string& file) {
    auto map = std::make_shared<Map>();
    std::get<BitmapMap>(map->kind).file = file;
    return map;
}

std::shared_ptr<const Material> SkinMaterial() {
    auto material = std::make_shared<Material>();
    material->name = "Skin \xc3\xa9";
    material->ambient = {0.1f, 0.2f, 0.3f};
    material->diffuse = {0.4f, 0.5f, 0.6f};
    material->specular = {0.7f, 0.8f, 1};
    material->selfIllumination = {0.01f, 0.02f, 0.03f};
    material->shininess = 0.25f;
    material->shininessStrength = 0.75f;
    material->transparency = 0.5f;
    material->twoSided = true;
    material->wire = true;
    material->transparencyType = 1;

    const auto mix = std::make_shared<Map>();
    mix->kind = OtherMap{{0x230, 0}};
    mix->subMaps = {Bitmap("")};
    const auto bump = std::make_shared<Map>();
    bump->kind = BitmapMap{"a\\b.png", 0.1f, 0.2f, 3, 4, 1.5f, false};
    bump->subMaps = {nullptr, mix};
    const auto other = std::make_shared<Map>();
    other->kind = OtherMap{{0x230, 0xffffffff}};
    material->maps = {{8, false, 0.3f, bump}, {1, true, 1, other}};
    material->subMaterials = {std::monostate(), 2};
    return material;
}

std::shared_ptr<const Material> MultiMaterial() {
    const auto own = std::make_shared<Material>();
    own->name = "Own";
    auto material = std::make_shared<Material>();
    material->kind = MaterialKind::multi;
    material->name = "Multi";
    material->subMaterials = {std::shared_ptr<const Material>(own), 0, std::monostate()};
    return material;
}

std::shared_ptr<const Material> OtherMaterial() {
    const auto multi = std::make_shared<Material>();
    multi->kind = MaterialKind::multi;
    auto material = std::make_shared<Material>();
    material->kind = MaterialKind::other;
    material->classId = {0x12, 0x34};
    material->name = "Other";
    material->ambient = {1, 0, 0};
    material->diffuse = {0, 1, 0};
    material->specular = {0, 0, 1};
    material->selfIllumination = {1, 1, 0};
    material->shininess = 1;
    material->shininessStrength = 2;
    material->transparency = 1;
    material->maps = {{0, true, 1, Bitmap("c.tga")}};
    material->subMaterials = {std::shared_ptr<const Material>(multi)};
    return material;
}

FloatController KeyedController() {
    FloatController controller;
    controller.id = "x";
    controller.classId = ClassId{3, 4};
    BezierFloat bezier;
    bezier.value = 7;
    bezier.keys = {
        {-10, 1.5f, Tangent::linear, Tangent::step, -0.5f, 0.25f, 0.2f, 0.9f},
        {0, 0, Tangent::fast, Tangent::slow, 0, 0, 0.333333f, 0.333333f},
        {10, 1, Tangent::custom, Tangent::flat, 0, 0, 0.333333f, 0.333333f},
        {11, 2, Tangent::smooth, Tangent::smooth, 0, 0, 0.333333f, 0.333333f},
    };
    controller.kind = bezier;
    return controller;
}

FloatController ListController() {
    const auto empty = std::make_shared<FloatController>();
    empty->kind = FloatList();
    FloatController controller;
    controller.id = "list";
    controller.classId = ClassId{5, 6};
    controller.kind =
        FloatList{{{0.5f, std::make_shared<FloatController>(Constant(3))}, {1, empty}}};
    return controller;
}

FloatController WireController() {
    FloatController controller;
    controller.id = "w";
    controller.classId = ClassId{7, 8};
    controller.kind = WireFloat{true, false, true, {{"arm", 2, "other", "a+1"}, Wire(), Wire()}, 9};
    return controller;
}

Transform RootTransform() {
    ThreeAxisController position;
    position.id = "pos";
    position.classId = ClassId{10, 11};
    position.jointParams = JointParams{0x80000009, 2, {-1, -2}, {1, 2}, true};
    position.kind = ThreeAxes{{KeyedController(), ListController(), WireController()}};
    ThreeAxisController rotation;
    rotation.kind = ThreeAxes{{Constant(0.1f), Constant(0.2f), Constant(0.3f)}};
    ThreeAxisController scale;
    scale.id = "sc";
    scale.classId = ClassId{9, 10};
    scale.jointParams = JointParams{7, 3, {}, {}, false};
    Key3 second;
    second.time = 1;
    second.value = {4, 5, 6};
    scale.kind = BezierScale{{{0,
                               {1, 2, 3},
                               Tangent::flat,
                               Tangent::custom,
                               {1, 2, 3},
                               {4, 5, 6},
                               {0.1f, 0.2f, 0.3f},
                               {0.4f, 0.5f, 0.6f}},
                              second},
                             {2, 2, 2}};
    return {"root", ClassId{1, 2}, PrsTransform{position, rotation, scale}};
}

Object RootObject() {
    const auto mesh = std::make_shared<Mesh>();
    mesh->vertices = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, -0.0f}};
    mesh->faces = {{{0, 1, 2}, 0, 0}, {{0, 2, 3}, 5, 0}, {{3, 2, 1}, 0xffffffff, 65535}};
    mesh->channels[1] = {{{0, 0}, {1, 0}, {1, 1}}, {{0, 1, 2}, {0, 0, 0}, {2, 2, 2}}};
    mesh->channels[99] = {};
    mesh->normals = {{0, {0, 0, 1}}, {3, {0, 1, 0}}};
    return {16, ClassId{0xe44f10b3, 0}, 2.5f, mesh};
}

Node RootNode() {
    Node node;
    node.name = "Root";
    node.hidden = true;
    node.selected = true;
    node.renderable = false;
    node.wireColor = {0, 128, 255};
    node.userProperties = "a = 1\r\nb = \"x\"";
    node.material = 1;
    node.transform = RootTransform();
    node.objectOffset = {{{1, 0, 0}, {0, 0, 1}, {0, -1, 0}, {5, 6, 7}}};
    node.object = RootObject();
    node.modifiers = {{false, Skin{{1, 2}, {{{0, 1}}, {{1, 0.5f}, {-1, 0.5f}}, {}}, false}},
                      {true, Physique{{PhysiqueRigid{1}, PhysiqueBlended{{{2, 0.25f}, {1, 0.75f}}},
                                       std::monostate(), PhysiqueBlended{}}}}};
    node.referenceModifiers = {{true, Morpher{{{"Smile", {{1, 2, 3}, {4, 5, 6}}}, MorphChannel()}}},
                               {false, OtherModifier{{0x100, 0x200}}}};
    return node;
}

Node ArmNode() {
    ThreeAxisController position;
    position.id = "p2";
    position.classId = ClassId{1, 1};
    position.jointParams = JointParams{0, 6, {1, 2, 3, 4, 5, 6}, {6, 5, 4, 3, 2, 1}, false};
    position.kind = OtherThree{{1, 2, 3, 0}};
    ThreeAxisController rotation;
    rotation.classId = ClassId{2, 2};
    rotation.kind = OtherThree{{0, 0, 0.6f, 0.8f}};
    ThreeAxisController scale;
    scale.classId = ClassId{3, 3};
    scale.kind = OtherThree{{1, 1, 2, 0}};
    Node node;
    node.name = "Arm";
    node.parent = 4;
    node.transform = Transform{"arm", std::nullopt, PrsTransform{position, rotation, scale}};
    node.object = Object{0x50, ClassId{0x2011, 0}, 20, nullptr};
    return node;
}

Node NamelessNode() {
    FloatController other;
    other.id = "other";
    other.classId = ClassId{0x2001, 0};
    other.kind = OtherFloat{4};
    ThreeAxisController rotation;
    rotation.kind = ThreeAxes{{Constant(1), std::nullopt, other}};
    ThreeAxisController scale;
    scale.kind = ThreeAxes{{std::nullopt, std::nullopt, Constant(0)}};
    Node node;
    node.parent = 0;
    node.transform = Transform{"", std::nullopt, PrsTransform{std::nullopt, rotation, scale}};
    return node;
}

Matrix At(float x, float y, float z) {
    Matrix matrix = kIdentity;
    matrix[3] = {x, y, z};
    return matrix;
}

Node Named(const std::string& name, std::optional<Transform> transform) {
    Node node;
    node.name = name;
    node.transform = transform;
    return node;
}

}  // namespace

Scene EveryFieldScene() {
    const Matrix counting = {{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {10, 11, 12}}};
    Scene scene;
    scene.time = {24, 200, -400, 4800};
    scene.materials = {SkinMaterial(), MultiMaterial(), OtherMaterial()};
    scene.nodes = {
        RootNode(),
        ArmNode(),
        NamelessNode(),
        Named("Matrix", Transform{"m", ClassId{1, 0}, MatrixTransform{counting}}),
        Named("Samples",
              Transform{"s", std::nullopt, SampledTransform{{{0, kIdentity}, {160, At(0, 0, 5)}}}}),
        Named("Foot", Transform{"f", ClassId{1, 3}, FootprintTransform{At(1, 2, 3)}}),
        Named("Chain", Transform{"c", std::nullopt, IkChainTransform{1, 0, At(4, 5, 6)}}),
        Named("Chain 2", Transform{"", std::nullopt, IkChainTransform()}),
        Named("Foot 2", Transform{"", std::nullopt, FootprintTransform()}),
        Named("No transform", std::nullopt),
        Named("Mesh only", Transform()),
    };
    scene.nodes[3].selected = true;
    scene.nodes[10].object =
        Object{std::nullopt, std::nullopt, std::nullopt, std::make_shared<Mesh>()};
    scene.selection = {3, 1};
    return scene;
}

std::string Difference(const Scene& a, const Scene& b) {
    return maxhost::scene::Difference<Scene>(a, b);
}
