// The meaning of a description: every field of every class, and the default of every field.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <variant>
#include <vector>

#include "host/scene_file/scene_description.h"
#include "tests/support/every_field.h"

using namespace maxhost::scene;
using maxhost::scene_file::ReadSceneDescription;
using maxhost::scene_file::ReadSceneDescriptionFromText;

namespace {

Scene Read(const std::string& text) {
    return ReadSceneDescriptionFromText(text);
}

Scene ReadNodes(const std::string& nodes) {
    return Read(R"({"maxscene": 1, "nodes": [)" + nodes + "]}");
}

Node ReadNode(const std::string& fields) {
    return ReadNodes(R"({"name": "n", )" + fields + "}").nodes[0];
}

// A position's x axis.
FloatController ReadAxis(const std::string& controller) {
    const Node node =
        ReadNode(R"("transform": {"position": {"class": "positionXYZ", "x": )" + controller + "}}");
    const auto& position = *std::get<PrsTransform>(node.transform->kind).position;
    return *std::get<ThreeAxes>(position.kind).axes[0];
}

ThreeAxisController ReadScale(const std::string& controller) {
    const Node node = ReadNode(R"("transform": {"scale": )" + controller + "}");
    return *std::get<PrsTransform>(node.transform->kind).scale;
}

Material ReadMaterial(const std::string& material) {
    return *Read(R"({"maxscene": 1, "materials": [)" + material + "]}").materials[0];
}

Modifier ReadModifier(const std::string& modifier) {
    return ReadNode(R"("modifiers": [)" + modifier + "]").modifiers[0];
}

TEST(EveryField, HoldsWhatTheTextSays) {
    EXPECT_EQ(Difference(ReadSceneDescriptionFromText(kEveryField), EveryFieldScene()), "");
}

TEST(EveryField, ReadsTheSameFromAStream) {
    std::istringstream in{std::string(kEveryField)};
    EXPECT_EQ(Difference(ReadSceneDescription(in), EveryFieldScene()), "");
}

TEST(Defaults, Scene) {
    const Scene scene = Read(R"({"maxscene": 1})");
    EXPECT_EQ(Difference(scene, Scene()), "");
    EXPECT_EQ(scene.time.frameRate, 30);
    EXPECT_EQ(scene.time.ticksPerFrame, 160);
    EXPECT_EQ(scene.time.start, 0);
    EXPECT_EQ(scene.time.end, 16000);
    EXPECT_TRUE(scene.materials.empty());
    EXPECT_TRUE(scene.nodes.empty());
    EXPECT_TRUE(scene.selection.empty());
}

TEST(Defaults, NullStandsForTheDefault) {
    EXPECT_EQ(Difference(Read(R"({"maxscene": 1, "time": null, "materials": null, "nodes": null,
                                  "selection": null})"),
                         Scene()),
              "");
    EXPECT_EQ(Difference(Read(R"({"maxscene": 1, "time": {"frameRate": null, "ticksPerFrame": null,
                                  "start": null, "end": null}})"),
                         Scene()),
              "");
    EXPECT_EQ(
        Difference(ReadNodes(R"({"name": "n", "parent": null, "hidden": null, "selected": null,
                  "renderable": null, "wireColor": null, "userProperties": null, "material": null,
                  "objectOffset": null, "object": null, "modifiers": null,
                  "referenceModifiers": null})"),
                   ReadNodes(R"({"name": "n"})")),
        "");
    EXPECT_EQ(Difference(ReadNodes(R"({"name": "n", "transform": {"matrix": null, "samples": null,
                  "class": null, "position": {"class": "positionXYZ", "x": null}, "id": null}})"),
                         ReadNodes(R"({"name": "n", "transform":
                  {"position": {"class": "positionXYZ"}}})")),
              "");
}

TEST(Defaults, Time) {
    const auto time = [](const std::string& fields) {
        return Read(R"({"maxscene": 1, "time": {)" + fields + "}}").time;
    };
    EXPECT_EQ(time(R"("frameRate": 25)").ticksPerFrame, 192);
    EXPECT_EQ(time(R"("frameRate": 25)").end, 19200);
    EXPECT_EQ(time(R"("frameRate": 7)").ticksPerFrame, 685) << "4800 / 7, whole";
    EXPECT_EQ(time(R"("frameRate": 4800)").ticksPerFrame, 1);
    EXPECT_EQ(time(R"("frameRate": 29)").ticksPerFrame, 165) << "4785 ticks a second";
    EXPECT_EQ(time(R"("frameRate": 29)").end, 16500);
    EXPECT_EQ(time(R"("frameRate": 9600, "ticksPerFrame": 1)").frameRate, 9600);
    EXPECT_EQ(time(R"("ticksPerFrame": 10)").frameRate, 30);
    EXPECT_EQ(time(R"("ticksPerFrame": 10)").end, 1000);
    EXPECT_EQ(time(R"("ticksPerFrame": 71582788, "end": 7)").end, 7);
    EXPECT_EQ(time(R"("start": -0, "end": -0)").end, 0);
}

// The exporter says what it makes of a range that ends before it starts, so a scene may have one.
TEST(Defaults, ARangeMayEndBeforeItStarts) {
    const Scene late = Read(R"({"maxscene": 1, "time": {"start": 20000}})");
    EXPECT_EQ(late.time.start, 20000);
    EXPECT_EQ(late.time.end, 16000);
    const Scene widest =
        Read(R"({"maxscene": 1, "time": {"start": 2147483647, "end": -2147483648}})");
    EXPECT_EQ(widest.time.start, 2147483647);
    EXPECT_EQ(widest.time.end, -2147483647 - 1);
}

TEST(Defaults, Node) {
    const Node node = ReadNodes(R"({"name": "n"})").nodes[0];
    EXPECT_EQ(node.parent, kNone);
    EXPECT_FALSE(node.hidden);
    EXPECT_FALSE(node.selected);
    EXPECT_TRUE(node.renderable);
    EXPECT_EQ(node.wireColor, (std::array<std::uint8_t, 3>{128, 128, 128}));
    EXPECT_EQ(node.userProperties, "");
    EXPECT_EQ(node.material, kNone);
    ASSERT_TRUE(node.transform.has_value());
    const auto& transform = std::get<PrsTransform>(node.transform->kind);
    EXPECT_FALSE(transform.position || transform.rotation || transform.scale);
    EXPECT_FALSE(node.transform->classId.has_value());
    EXPECT_EQ(node.objectOffset, kIdentity);
    EXPECT_FALSE(node.object.has_value());
    EXPECT_TRUE(node.modifiers.empty());
    EXPECT_TRUE(node.referenceModifiers.empty());
}

TEST(Defaults, NullTransformIsNone) {
    EXPECT_FALSE(ReadNode(R"("transform": null)").transform.has_value());
    EXPECT_TRUE(ReadNode(R"("transform": {})").transform.has_value());
}

TEST(Defaults, SelectionIsTheSelectedNodesInOrder) {
    const std::string nodes = R"({"maxscene": 1, "nodes": [{"name": "a", "selected": true},
        {"name": "b"}, {"name": "c", "selected": true}])";
    EXPECT_EQ(Read(nodes + "}").selection, (std::vector<int>{0, 2}));
    EXPECT_EQ(Read(nodes + R"(, "selection": []})").selection, std::vector<int>());
    EXPECT_EQ(Read(nodes + R"(, "selection": [2, 1]})").selection, (std::vector<int>{2, 1}));
}

TEST(Defaults, Controllers) {
    const auto bezier = std::get<BezierFloat>(ReadAxis(R"({"class": "bezierFloat"})").kind);
    EXPECT_EQ(bezier.value, 0);
    EXPECT_TRUE(bezier.keys.empty());
    const auto list = ReadAxis(R"({"class": "floatList", "items": [{"controller": 5}]})");
    EXPECT_EQ(std::get<FloatList>(list.kind).items[0].weight, 1);
    const auto wire = std::get<WireFloat>(ReadAxis(R"({"class": "wire", "wires": [{}]})").kind);
    EXPECT_FALSE(wire.master);
    EXPECT_TRUE(wire.slave);
    EXPECT_FALSE(wire.twoWay);
    EXPECT_EQ(wire.value, 0);
    EXPECT_EQ(wire.wires[0].parent, "");
    EXPECT_EQ(wire.wires[0].subnum, 0);
    EXPECT_EQ(wire.wires[0].coController, "");
    EXPECT_EQ(wire.wires[0].expression, "");
    const auto other = ReadAxis(R"({"class": "other", "classId": [1, 2]})");
    EXPECT_EQ(std::get<OtherFloat>(other.kind).value, 0);
    EXPECT_EQ(std::get<BezierScale>(ReadScale(R"({"class": "bezierScale"})").kind).value,
              (Vec3{1, 1, 1}));
}

TEST(Defaults, Key) {
    const auto axis = ReadAxis(R"({"class": "bezierFloat", "keys": [{"time": 1, "value": 2}]})");
    const Key key = std::get<BezierFloat>(axis.kind).keys[0];
    EXPECT_EQ(key.inType, Tangent::smooth);
    EXPECT_EQ(key.outType, Tangent::smooth);
    EXPECT_EQ(key.inTangent, 0);
    EXPECT_EQ(key.outTangent, 0);
    EXPECT_EQ(key.inLength, 0.333333f);
    EXPECT_EQ(key.outLength, 0.333333f);
    const auto scale =
        ReadScale(R"({"class": "bezierScale", "keys": [{"time": 1, "value": [1, 2, 3]}]})");
    const Key3 key3 = std::get<BezierScale>(scale.kind).keys[0];
    EXPECT_EQ(key3.inTangent, Vec3{});
    EXPECT_EQ(key3.outLength, (Vec3{0.333333f, 0.333333f, 0.333333f}));
}

TEST(Defaults, JointParams) {
    const auto scale = ReadScale(R"({"class": "scaleXYZ", "jointParams": {"flags": 1}})");
    ASSERT_TRUE(scale.jointParams.has_value());
    EXPECT_EQ(scale.jointParams->dofs, 3);
    EXPECT_EQ(scale.jointParams->min, (std::array<float, 6>{}));
    EXPECT_EQ(scale.jointParams->max, (std::array<float, 6>{}));
    EXPECT_FALSE(scale.jointParams->isDefault);
}

TEST(Defaults, Mesh) {
    const Node node = ReadNode(R"("object": {"class": "mesh"})");
    ASSERT_TRUE(node.object && node.object->mesh);
    EXPECT_FALSE(node.object->superClassId.has_value());
    EXPECT_FALSE(node.object->classId.has_value());
    EXPECT_FALSE(node.object->parameter0.has_value());
    EXPECT_TRUE(node.object->mesh->vertices.empty() && node.object->mesh->faces.empty());
}

TEST(Defaults, Face) {
    const Node node = ReadNode(R"("object": {"class": "mesh", "vertices": [[0, 0, 0]],
        "faces": [[0, 0, 0], [0, 0, 0, 7], [0, 0, 0, null, 8], [0, 0, 0, "0x80000000", null]]})");
    const auto& faces = node.object->mesh->faces;
    EXPECT_EQ(faces[0].smoothing, 0u);
    EXPECT_EQ(faces[0].material, 0);
    EXPECT_EQ(faces[1].smoothing, 7u);
    EXPECT_EQ(faces[1].material, 0);
    EXPECT_EQ(faces[2].smoothing, 0u);
    EXPECT_EQ(faces[2].material, 8);
    EXPECT_EQ(faces[3].smoothing, 0x80000000u);
}

TEST(Defaults, Modifiers) {
    EXPECT_TRUE(ReadModifier(R"({"class": "other", "classId": [1, 2]})").enabled);
    const auto skin = std::get<Skin>(ReadModifier(R"({"class": "skin"})").kind);
    EXPECT_TRUE(skin.context);
    EXPECT_TRUE(skin.bones.empty() && skin.weights.empty());
    EXPECT_TRUE(std::get<Physique>(ReadModifier(R"({"class": "physique"})").kind).vertices.empty());
    const auto morpher =
        std::get<Morpher>(ReadModifier(R"({"class": "morpher", "channels": [{}]})").kind);
    EXPECT_EQ(morpher.channels[0].name, "");
    EXPECT_TRUE(morpher.channels[0].points.empty());
}

TEST(Defaults, Material) {
    const Material material = ReadMaterial(R"({"class": "standard"})");
    EXPECT_EQ(material.name, "");
    EXPECT_EQ(material.ambient, (Vec3{0.588f, 0.588f, 0.588f}));
    EXPECT_EQ(material.diffuse, (Vec3{0.588f, 0.588f, 0.588f}));
    EXPECT_EQ(material.specular, (Vec3{0.9f, 0.9f, 0.9f}));
    EXPECT_EQ(material.selfIllumination, Vec3{});
    EXPECT_EQ(material.shininess, 0.1f);
    EXPECT_EQ(material.shininessStrength, 0);
    EXPECT_EQ(material.transparency, 0);
    EXPECT_FALSE(material.twoSided);
    EXPECT_FALSE(material.wire);
    EXPECT_EQ(material.transparencyType, 2);
    EXPECT_TRUE(material.maps.empty());
    EXPECT_TRUE(material.subMaterials.empty());
}

TEST(Defaults, Map) {
    const Material material =
        ReadMaterial(R"({"class": "standard", "maps": [{"map": {"class": "bitmap"}}]})");
    const MapSlot& slot = material.maps[0];
    EXPECT_EQ(slot.slot, 1);
    EXPECT_TRUE(slot.enabled);
    EXPECT_EQ(slot.amount, 1);
    EXPECT_TRUE(slot.map->subMaps.empty());
    const auto& bitmap = std::get<BitmapMap>(slot.map->kind);
    EXPECT_EQ(bitmap.file, "");
    EXPECT_EQ(bitmap.uOffset, 0);
    EXPECT_EQ(bitmap.vOffset, 0);
    EXPECT_EQ(bitmap.uTiling, 1);
    EXPECT_EQ(bitmap.vTiling, 1);
    EXPECT_EQ(bitmap.angle, 0);
    EXPECT_TRUE(bitmap.coordinates);
}

TEST(Controllers, BareListIsThreeConstantAxes) {
    EXPECT_EQ(Difference(ReadNodes(R"({"name": "n", "transform": {"position": [1, 2.5, -0.0]}})"),
                         ReadNodes(R"({"name": "n", "transform": {"position":
                             {"class": "positionXYZ", "x": {"class": "bezierFloat", "value": 1},
                              "y": {"class": "bezierFloat", "value": 2.5, "keys": []},
                              "z": {"class": "bezierFloat", "value": -0.0}}}})")),
              "");
}

TEST(Controllers, WiresMayPointForward) {
    const Scene scene = ReadNodes(R"(
        {"name": "a", "transform": {"position": {"class": "positionXYZ", "x": {"class": "wire",
            "wires": [{"parent": "later", "coController": "axis"}, {"parent": "axis"}]}}}},
        {"name": "b", "transform": {"id": "later", "rotation": {"class": "eulerXYZ",
            "z": {"class": "bezierFloat", "id": "axis"}}}})");
    const auto& position = *std::get<PrsTransform>(scene.nodes[0].transform->kind).position;
    const auto& axis = *std::get<ThreeAxes>(position.kind).axes[0];
    EXPECT_EQ(std::get<WireFloat>(axis.kind).wires[0].parent, "later");
    EXPECT_EQ(std::get<WireFloat>(axis.kind).wires[1].parent, "axis");
}

std::array<float, 4> ReadQuaternion(const std::string& value) {
    const Node node =
        ReadNode(R"("transform": {"rotation": {"class": "other", "classId": [1, 2], "value": )" +
                 value + "}}");
    const auto& rotation = *std::get<PrsTransform>(node.transform->kind).rotation;
    return std::get<OtherThree>(rotation.kind).value;
}

TEST(Quaternions, AreNormalised) {
    EXPECT_EQ(ReadQuaternion("[0, 0, 3, 4]"), (std::array<float, 4>{0, 0, 0.6f, 0.8f}));
    EXPECT_EQ(ReadQuaternion("[1e-44, 0, 0, 0]"), (std::array<float, 4>{1, 0, 0, 0}));
    EXPECT_EQ(ReadQuaternion("[0, 3e38, 0, -3e38]"),
              (std::array<float, 4>{0, std::sqrt(0.5f), 0, -std::sqrt(0.5f)}));
}

TEST(Quaternions, OfUnitLengthStayToTheBit) {
    EXPECT_EQ(ReadQuaternion("[0.50000024, 0.5, 0.5, 0.5]"),
              (std::array<float, 4>{0.50000024f, 0.5f, 0.5f, 0.5f}));
    EXPECT_EQ(ReadQuaternion("[0, 0, 0, 1.0000008]"), (std::array<float, 4>{0, 0, 0, 1.0000008f}));
    EXPECT_EQ(ReadQuaternion("[0, 0, 0, 1.000002]"), (std::array<float, 4>{0, 0, 0, 1}));
}

float ReadFloat(const std::string& number) {
    return std::get<BezierFloat>(ReadAxis(number).kind).value;
}

TEST(Numbers, AreRoundedOnceToF32) {
    EXPECT_EQ(ReadFloat("0.1"), 0.1f);
    EXPECT_EQ(ReadFloat("16777217"), 16777216.0f);
    EXPECT_EQ(ReadFloat("18446744073709551615"), 18446744073709551616.0f);
    EXPECT_EQ(ReadFloat("-9223372036854775808"), -9223372036854775808.0f);
    EXPECT_EQ(ReadFloat("1e10"), 1e10f);
    EXPECT_EQ(ReadFloat("3.4028235e38"), 3.4028235e38f);
    EXPECT_EQ(ReadFloat("1e-45"), 1e-45f);
    EXPECT_EQ(ReadFloat("1e-400"), 0.0f);
    // Above the middle between two f32 by less than an f64 can tell.
    EXPECT_EQ(ReadFloat("1.00000005960464477540"), 1.00000011920928955078125f);
    EXPECT_EQ(ReadFloat("1.00000005960464477538"), 1.0f);
    EXPECT_EQ(ReadFloat("123456789012345678901234567890"), 123456789012345678901234567890.0f);
    EXPECT_EQ(ReadFloat("-9223372036854775809"), -9223372036854775808.0f);
}

TEST(Numbers, TooSmallForF32AreZero) {
    for (const char* number : {"1e-46", "1e-400", "0e999", "0.00000000001e-2147483639"}) {
        EXPECT_EQ(ReadFloat(number), 0) << number;
        EXPECT_FALSE(std::signbit(ReadFloat(number))) << number;
        EXPECT_TRUE(std::signbit(ReadFloat(std::string("-") + number))) << number;
    }
}

TEST(Numbers, NegativeZeroSurvives) {
    EXPECT_TRUE(std::signbit(ReadFloat("-0.0")));
    EXPECT_TRUE(std::signbit(ReadFloat("-0")));
    EXPECT_FALSE(std::signbit(ReadFloat("0")));
}

TEST(Numbers, HexadecimalStandsBesideDecimal) {
    const Node node = ReadNode(
        R"("object": {"class": "object", "superClassId": "0x0010", "classId": ["0x1c706482", 0]})");
    EXPECT_EQ(node.object->superClassId, 0x10u);
    EXPECT_EQ(node.object->classId, (ClassId{0x1c706482, 0}));
    const auto scale =
        ReadScale(R"({"class": "scaleXYZ", "jointParams": {"flags": "0xC000000f"}})");
    EXPECT_EQ(scale.jointParams->flags, 0xc000000fu);
}

TEST(Text, GoesInAsItsBytesStand) {
    EXPECT_EQ(ReadNode(R"("userProperties": "\ud83d\ude00\t\u00e9")").userProperties,
              "\xf0\x9f\x98\x80\t\xc3\xa9");
    EXPECT_EQ(ReadNode("\"userProperties\": \"\xc3\xa9\"").userProperties, "\xc3\xa9");
    EXPECT_EQ(Difference(Read("\xef\xbb\xbf{\"maxscene\": 1}\n"), Scene()), "");
}

// A text of about a megabyte.
std::string ManyNodes() {
    std::string nodes;
    for (int i = 0; i < 20000; ++i) {
        nodes += (i ? "," : "") + std::string(R"({"name": "node", "wireColor": [1, 2, 3]})");
    }
    return R"({"maxscene": 1, "nodes": [)" + nodes + "]}";
}

TEST(Share, GrowsToTheWholeWhileTheTextIsRead) {
    std::vector<double> shares;
    ReadSceneDescriptionFromText(ManyNodes(), [&](double share) { shares.push_back(share); });
    EXPECT_GE(shares.size(), 10u);
    EXPECT_TRUE(std::is_sorted(shares.begin(), shares.end(), std::less_equal()));
    EXPECT_GT(shares.front(), 0);
    EXPECT_LT(shares.front(), 0.1);
    EXPECT_EQ(shares.back(), 1);
}

// A stream that cannot say how long it is.
class Pipe : public std::stringbuf {
  public:
    using std::stringbuf::stringbuf;

  protected:
    pos_type seekoff(off_type, std::ios::seekdir, std::ios::openmode) override {
        return off_type(-1);
    }
    pos_type seekpos(pos_type, std::ios::openmode) override { return off_type(-1); }
};

TEST(Stream, IsReadFromItsPlaceToItsEnd) {
    const std::string text = ManyNodes();
    std::istringstream file("#" + text);
    file.get();
    EXPECT_EQ(ReadSceneDescription(file).nodes.size(), 20000u);
    Pipe pipe(text, std::ios::in);
    std::istream piped(&pipe);
    EXPECT_EQ(ReadSceneDescription(piped).nodes.size(), 20000u);
}

}  // namespace
