// One refused description per rule: the place, what stands there, and what was expected.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "host/scene_file/scene_description.h"

using maxhost::scene::SceneError;
using maxhost::scene_file::ReadSceneDescriptionFromText;

namespace {

struct Refusal {
    const char* rule;
    std::string text;
    std::string message;
};

void PrintTo(const Refusal& refusal, std::ostream* out) {
    *out << refusal.rule;
}

std::string InScene(const std::string& fields) {
    return R"({"maxscene": 1, )" + fields + "}";
}

// The fields of the one node.
std::string InNode(const std::string& fields) {
    return InScene(R"("nodes": [{"name": "n", )" + fields + "}]");
}

std::string InTransform(const std::string& fields) {
    return InNode(R"("transform": {)" + fields + "}");
}

// The x axis of the position.
std::string InAxis(const std::string& controller) {
    return InTransform(R"("position": {"class": "positionXYZ", "x": )" + controller + "}");
}

std::string InMesh(const std::string& fields) {
    return InNode(R"("object": {"class": "mesh", )" + fields + "}");
}

std::string InModifier(const std::string& fields) {
    return InNode(R"("modifiers": [{)" + fields + "}]");
}

std::string InMaterial(const std::string& fields) {
    return InScene(R"("materials": [{)" + fields + "}]");
}

std::string InMap(const std::string& map) {
    return InMaterial(R"("class": "standard", "maps": [{"map": )" + map + "}]");
}

std::string Repeated(const std::string& text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i) {
        all += text;
    }
    return all;
}

std::string MessageOf(const std::string& text) {
    try {
        ReadSceneDescriptionFromText(text);
        return "nothing was refused";
    } catch (const SceneError& fault) {
        return fault.what();
    }
}

class Refused : public testing::TestWithParam<Refusal> {};

TEST_P(Refused, NamesPlaceFoundAndExpected) {
    EXPECT_EQ(MessageOf(GetParam().text), GetParam().message);
}

std::string RuleOf(const testing::TestParamInfo<Refusal>& info) {
    return info.param.rule;
}

const std::string kWhole32 = "a whole number from -2147483648 to 2147483647";
const std::string kUnsigned32 = "a whole number from 0 to 4294967295";
const std::string kWord = kUnsigned32 + R"( or the same as "0x...")";
const std::string kNewPosition = "a whole number from 0 to 2147483647";

INSTANTIATE_TEST_SUITE_P(
    Text, Refused,
    testing::Values(
        Refusal{"Empty", "",
                "line 1, column 1: unexpected end of input; expected '[', '{', or a literal"},
        Refusal{"Blank", " \n ",
                "line 2, column 2: unexpected end of input; expected '[', '{', or a literal"},
        Refusal{"Truncated", "{\"maxscene\": 1,\n  \"nodes\": [",
                "line 2, column 13: unexpected end of input; expected '[', '{', or a literal"},
        Refusal{"TrailingText", "{\"maxscene\": 1}\nx",
                "line 2, column 1: invalid literal at \"x\"; expected end of input"},
        Refusal{"TrailingValue", "{\"maxscene\": 1} {}",
                "line 1, column 17: unexpected '{'; expected end of input"},
        Refusal{"TrailingComma", "{\"maxscene\": 1,}",
                "line 1, column 16: unexpected '}'; expected string literal"},
        Refusal{"TrailingCommaBehindNumbers", "{\"maxscene\": [1, -2.5,\n ]}",
                "line 2, column 2: unexpected ']'; expected '[', '{', or a literal"},
        Refusal{"NumbersWithoutComma", "{\"maxscene\": [1, 2 3]}",
                "line 1, column 20: unexpected number literal; expected ']'"},
        Refusal{"LeadingZeroBehindNumbers", "{\"maxscene\": [1, 2, 03]}",
                "line 1, column 22: unexpected number literal; expected ']'"},
        Refusal{"MinusWithoutDigits", "{\"maxscene\": [1, -]}",
                "line 1, column 19: invalid number; expected digit after '-' at \"]}\""},
        Refusal{"ListOfNumbersCutOff", "{\"maxscene\": [1, 2",
                "line 1, column 19: unexpected end of input; expected ']'"},
        Refusal{"Comment", "{\"maxscene\": 1 // one\n}",
                "line 1, column 16: invalid literal at \"// one\"; expected '}'"},
        Refusal{"NotANumber", "{\"maxscene\": NaN}",
                "line 1, column 14: invalid literal at \"NaN}\""},
        Refusal{"NulByteBehind", std::string("{\"maxscene\": 1}\0x", 17),
                "line 1, column 16: a NUL byte, expected JSON text"},
        Refusal{"NulByteWithin", std::string("{\"max\0scene\": 1}", 16),
                "line 1, column 6: a NUL byte, expected JSON text"},
        Refusal{"NotUtf8", "{\"maxscene\": 1, \"nodes\": [{\"name\": \"\xe9\"}]}",
                "line 1, column 37: invalid string: ill-formed UTF-8 byte at \"\\xe9\"}]}\""},
        Refusal{"NotUtf8InACharacter", "{\"maxscene\": 1,\n\"\xc3\xa9\": \"\xe2\x82z\"}",
                "line 2, column 8: invalid string: ill-formed UTF-8 byte at \"\\xe2\\x82z\"}\""},
        Refusal{"NotUtf8OutsideTexts", "{\"maxscene\": \xff}",
                "line 1, column 14: invalid literal at \"\\xff}\""},
        Refusal{"NotUtf8BehindAnotherFault", "{\"maxscene\": }\xff",
                "line 1, column 14: unexpected '}'; expected '[', '{', or a literal"},
        Refusal{"LoneSurrogate", InScene(R"("nodes": [{"name": "\ud800"}])"),
                "line 1, column 43: invalid string: surrogate U+D800..U+DBFF must be followed by "
                "U+DC00..U+DFFF at \"\"}]}\""},
        Refusal{"LowSurrogateAlone", InScene(R"("nodes": [{"name": "a\udc00"}])"),
                "line 1, column 43: invalid string: surrogate U+DC00..U+DFFF must follow "
                "U+D800..U+DBFF at \"0\"}]}\""},
        Refusal{"UnknownEscape", InScene(R"("nodes": [{"name": "\x"}])"),
                "line 1, column 38: invalid string: forbidden character after backslash at "
                "\"x\"}]}\""},
        Refusal{"LeadingZero", "{\"maxscene\": 01}",
                "line 1, column 15: unexpected number literal; expected '}'"},
        Refusal{"PointWithoutDigits", "{\"maxscene\": 1.}",
                "line 1, column 16: invalid number; expected digit after '.' at \"}\""},
        Refusal{"ByteOrderMarkTwice", "\xef\xbb\xbf\xef\xbb\xbf{\"maxscene\": 1}",
                "line 1, column 4: invalid literal at \"\xef\xbb\xbf{\"maxscene\": 1}\""},
        Refusal{"FaultBehindManyLines", "{\"maxscene\": 1," + std::string(200000, '\n') + "x}",
                "line 200001, column 1: invalid literal at \"x}\"; expected string literal"},
        Refusal{"ControlCharacter", "{\"a\nb\": 1}",
                "line 1, column 4: invalid string: control character U+000A (LF) must be escaped "
                "to \\u000A or \\n at \"\"; expected string literal"}),
    RuleOf);

INSTANTIATE_TEST_SUITE_P(
    Shape, Refused,
    testing::Values(
        Refusal{"RootIsList", "[]", "/: an empty list, expected a scene description"},
        Refusal{"RootIsNumber", "7", "/: 7, expected a scene description"},
        Refusal{"VersionMissing", "{}", "/maxscene: nothing, expected 1"},
        Refusal{"VersionNull", R"({"maxscene": null})", "/maxscene: null, expected 1"},
        Refusal{"VersionTwo", R"({"maxscene": 2})", "/maxscene: 2, expected 1"},
        Refusal{"VersionAsText", R"({"maxscene": "1"})", "/maxscene: \"1\", expected 1"},
        Refusal{"VersionAsReal", R"({"maxscene": 1.0})", "/maxscene: 1.0, expected 1"},
        Refusal{"UnknownField", InScene(R"("Nodes": [])"),
                R"(/Nodes: an unknown field, expected "maxscene", "time", "materials", "nodes" )"
                R"(or "selection")"},
        Refusal{"UnknownFieldThoughNull", InScene(R"("cameras": null)"),
                R"(/cameras: an unknown field, expected "maxscene", "time", "materials", "nodes" )"
                R"(or "selection")"},
        Refusal{"UnknownBeforeMissing", InScene(R"("nodes": [{"nmae": "x"}])"),
                R"(/nodes/0/nmae: an unknown field, expected "name", "parent", "hidden", )"
                R"("selected", "renderable", "wireColor", "userProperties", "material", )"
                R"("transform", "objectOffset", "object", "modifiers" or "referenceModifiers")"},
        Refusal{"PointerEscapes", InScene(R"("time": {"a/b~c\n": 1})"),
                R"(/time/a~1b~0c\u000a: an unknown field, expected "frameRate", "ticksPerFrame", )"
                R"("start" or "end")"},
        Refusal{"FieldTwice", InNode(R"("hidden": true, "hidden": true)"),
                "/nodes/0/hidden: a field given twice, expected it once"},
        Refusal{"ChannelTwice", InMesh(R"("channels": {"1": {}, "1": {}})"),
                "/nodes/0/object/channels/1: a field given twice, expected it once"},
        Refusal{"NodesObject", InScene(R"("nodes": {})"),
                "/nodes: an empty object, expected a list"},
        Refusal{"NodeNumber", InScene(R"("nodes": [{"name": "a"}, 5])"),
                "/nodes/1: 5, expected a node"},
        Refusal{"NodeNull", InScene(R"("nodes": [null])"), "/nodes/0: null, expected a node"},
        Refusal{"NameMissing", InScene(R"("nodes": [{}])"),
                "/nodes/0/name: nothing, expected a text"},
        Refusal{"NameNull", InScene(R"("nodes": [{"name": null}])"),
                "/nodes/0/name: null, expected a text"},
        Refusal{"NameNumber", InScene(R"("nodes": [{"name": 3.5}])"),
                "/nodes/0/name: 3.5, expected a text"},
        Refusal{"FlagNumber", InNode(R"("hidden": 1)"),
                "/nodes/0/hidden: 1, expected true or false"},
        Refusal{"WholeAsReal", InScene(R"("time": {"start": 1.5})"),
                "/time/start: 1.5, expected " + kWhole32},
        Refusal{"WholeWithAPoint", InScene(R"("time": {"start": 160.0})"),
                "/time/start: 160.0, expected " + kWhole32},
        Refusal{"WholeWithAnExponent", InScene(R"("time": {"start": -1e2})"),
                "/time/start: -100.0, expected " + kWhole32},
        Refusal{"SmoothingWithAPoint",
                InMesh(R"("vertices": [[0, 0, 0]], "faces": [[0, 0, 0, 1.0]])"),
                "/nodes/0/object/faces/0/3: 1.0, expected " + kWord},
        Refusal{"MinusZeroIsNoText", InScene(R"("nodes": [{"name": -0}])"),
                "/nodes/0/name: -0, expected a text"},
        Refusal{"WholeBeyond32Bits", InScene(R"("time": {"start": 2147483648})"),
                "/time/start: 2147483648, expected " + kWhole32},
        Refusal{"WholeBeyond64Bits", InScene(R"("time": {"end": -99999999999999999999})"),
                "/time/end: -1e+20, expected " + kWhole32},
        Refusal{"NotFinite", InNode(R"("objectOffset": [[1, 0, 0], [0, 1e400, 0]])"),
                "/nodes/0/objectOffset/1/1: 1e400, expected a number that is finite as f32"},
        Refusal{"NotFiniteAsF32", InAxis("-3.5e38"),
                "/nodes/0/transform/position/x: -3.5e38, expected a number that is finite as f32"},
        Refusal{"NulInText", InScene(R"("nodes": [{"name": "a\u0000b"}])"),
                "/nodes/0/name: text with a NUL character, expected text without"},
        Refusal{"NulInFieldName", InScene(R"("a\u0000b": 1)"),
                R"(/a\u0000b: text with a NUL character, expected text without)"},
        Refusal{"RealText", InAxis(R"("1")"),
                "/nodes/0/transform/position/x: \"1\", expected a float controller or a number"},
        Refusal{"LongTextCut", InNode(R"("hidden": ")" + std::string(80, 'x') + '"'),
                "/nodes/0/hidden: \"" + std::string(60, 'x') + "...\", expected true or false"},
        Refusal{"DeepNesting", InScene(R"("nodes": )" + Repeated("[", 100000)),
                "/nodes" + Repeated("/0", 319) +
                    ": lists and objects nested more than 320 levels deep, expected at most 320 "
                    "levels"}),
    RuleOf);

INSTANTIATE_TEST_SUITE_P(
    Scene, Refused,
    testing::Values(
        Refusal{"FrameRateZero", InScene(R"("time": {"frameRate": 0})"),
                "/time/frameRate: 0, expected a whole number of at least 1"},
        Refusal{"TicksPerFrameZero", InScene(R"("time": {"ticksPerFrame": 0})"),
                "/time/ticksPerFrame: 0, expected a whole number of at least 1"},
        Refusal{"TicksPerFrameBelow1", InScene(R"("time": {"frameRate": 4801})"),
                "/time/ticksPerFrame: nothing, expected a whole number of at least 1, as 4800 / "
                "frameRate is less"},
        Refusal{"TicksPerFrameNullBelow1",
                InScene(R"("time": {"frameRate": 9600, "ticksPerFrame": null})"),
                "/time/ticksPerFrame: null, expected a whole number of at least 1, as 4800 / "
                "frameRate is less"},
        Refusal{"TicksPerSecondDoNotFit",
                InScene(R"("time": {"ticksPerFrame": 71582789, "end": 0})"),
                "/time/ticksPerFrame: 71582789, expected at most 71582788, as frameRate is 30 and "
                "ticks a second have 32 bits"},
        Refusal{"EndDoesNotFit", InScene(R"("time": {"ticksPerFrame": 21474837})"),
                "/time/end: nothing, expected a time, as 100 frames are more ticks than fit"},
        Refusal{"ParentOutOfRange", InNode(R"("parent": 1)"),
                "/nodes/0/parent: 1, expected a position in nodes, of which there are 1"},
        Refusal{"ParentNegative", InNode(R"("parent": -1)"),
                "/nodes/0/parent: -1, expected " + kNewPosition},
        Refusal{"ParentItself", InNode(R"("parent": 0)"),
                "/nodes/0/parent: 0, expected a node that is not below this one"},
        Refusal{"ParentCycle",
                InScene(R"("nodes": [{"name": "a", "parent": 2}, {"name": "b", "parent": 3},
                                     {"name": "c", "parent": 1}, {"name": "d", "parent": 2}])"),
                "/nodes/1/parent: 3, expected a node that is not below this one"},
        Refusal{"WireColorShort", InNode(R"("wireColor": [1, 2])"),
                "/nodes/0/wireColor: a list of 2, expected a list of 3 whole numbers"},
        Refusal{"ListOfManyKinds", InNode(R"("wireColor": [1, 2.5, null, [3, 4], -5])"),
                "/nodes/0/wireColor: a list of 5, expected a list of 3 whole numbers"},
        Refusal{"WireColorByte", InNode(R"("wireColor": [1, 256, 3])"),
                "/nodes/0/wireColor/1: 256, expected a whole number from 0 to 255"},
        Refusal{"MaterialOutOfRange", InNode(R"("material": 0)"),
                "/nodes/0/material: 0, expected a position in materials, of which there are 0"},
        Refusal{"SelectionOutOfRange", InScene(R"("nodes": [{"name": "a"}], "selection": [0, 1])"),
                "/selection/1: 1, expected a position in nodes, of which there are 1"},
        Refusal{"OffsetRow", InNode(R"("objectOffset": [[1, 0, 0], [0, 1, 0], [0, 0], [0, 0, 0]])"),
                "/nodes/0/objectOffset/2: a list of 2, expected a list of 3 numbers"},
        Refusal{"OffsetRows", InNode(R"("objectOffset": [[1, 0, 0], [0, 1, 0], [0, 0, 1]])"),
                "/nodes/0/objectOffset: a list of 3, expected a list of 4 lists of 3 numbers"},
        Refusal{"OffsetElement",
                InNode(R"("objectOffset": [[1, 0, 0], [0, null, 0], [0, 0, 1], [0, 0, 0]])"),
                "/nodes/0/objectOffset/1/1: null, expected a number"}),
    RuleOf);

INSTANTIATE_TEST_SUITE_P(
    Transform, Refused,
    testing::Values(
        Refusal{"NotAnObject", InNode(R"("transform": [1])"),
                "/nodes/0/transform: a list of 1, expected a transform"},
        Refusal{"ClassUnknown", InTransform(R"("class": "prs")"),
                R"(/nodes/0/transform/class: "prs", expected "footprint" or "ikChain")"},
        Refusal{"ClassEmpty", InTransform(R"("class": "")"),
                R"(/nodes/0/transform/class: "", expected "footprint" or "ikChain")"},
        Refusal{"MatrixAndPosition",
                InTransform(R"("matrix": [[1,0,0],[0,1,0],[0,0,1],[0,0,0]], "position": [0,0,0])"),
                R"(/nodes/0/transform/position: an unknown field, expected "id", "classId" or )"
                R"("matrix")"},
        Refusal{"SamplesEmpty", InTransform(R"("samples": [])"),
                "/nodes/0/transform/samples: an empty list, expected at least one sample"},
        Refusal{"SampleWithoutMatrix", InTransform(R"("samples": [{"time": 0}])"),
                "/nodes/0/transform/samples/0/matrix: nothing, expected a list of 4 lists of 3 "
                "numbers"},
        Refusal{"SamplesNotAscending",
                InTransform(R"("samples": [{"time": 5, "matrix": [[1,0,0],[0,1,0],[0,0,1],[0,0,0]]},
                                           {"time": 5, "matrix": [[1,0,0],[0,1,0],[0,0,1],[0,0,0]]}])"),
                "/nodes/0/transform/samples/1/time: 5, expected a time after 5"},
        Refusal{"JointOutOfRange",
                InTransform(R"("class": "ikChain", "startJoint": 0, "endJoint": 1)"),
                "/nodes/0/transform/endJoint: 1, expected a position in nodes, of which there are "
                "1"},
        Refusal{"IdEmpty", InTransform(R"("id": "")"),
                "/nodes/0/transform/id: \"\", expected a text that is not empty"},
        Refusal{"IdTwice",
                InTransform(R"("id": "a", "position": {"class": "positionXYZ", "y": )"
                            R"({"class": "bezierFloat", "id": "a"}})"),
                "/nodes/0/transform/position/y/id: \"a\", expected an id that no other controller "
                "has"},
        Refusal{"ClassIdShort", InTransform(R"("classId": [1])"),
                "/nodes/0/transform/classId: a list of 1, expected a list of 2 whole numbers or "
                "\"0x...\""},
        Refusal{"ClassIdNegative", InTransform(R"("classId": [1, -1])"),
                "/nodes/0/transform/classId/1: -1, expected " + kWord},
        Refusal{"ClassIdTooLarge", InTransform(R"("classId": [4294967296, 1])"),
                "/nodes/0/transform/classId/0: 4294967296, expected " + kWord},
        Refusal{"ClassIdNotHexadecimal", InTransform(R"("classId": ["0x12g", 1])"),
                "/nodes/0/transform/classId/0: \"0x12g\", expected " + kWord},
        Refusal{"ClassIdWithoutPrefix", InTransform(R"("classId": ["1234", 1])"),
                "/nodes/0/transform/classId/0: \"1234\", expected " + kWord},
        Refusal{"ClassIdNinDigits", InTransform(R"("classId": ["0x000000001", 1])"),
                "/nodes/0/transform/classId/0: \"0x000000001\", expected " + kWord},
        Refusal{"ClassIdPrefixAlone", InTransform(R"("classId": ["0x", 1])"),
                "/nodes/0/transform/classId/0: \"0x\", expected " + kWord}),
    RuleOf);

INSTANTIATE_TEST_SUITE_P(
    Controller, Refused,
    testing::Values(
        Refusal{"ClassMissing", InTransform(R"("position": {"x": 1})"),
                R"(/nodes/0/transform/position/class: nothing, expected "positionXYZ" or "other")"},
        Refusal{"ClassOfAnotherPlace", InTransform(R"("rotation": {"class": "positionXYZ"})"),
                R"(/nodes/0/transform/rotation/class: "positionXYZ", expected "eulerXYZ" or )"
                R"("other")"},
        Refusal{"BezierScaleAsPosition", InTransform(R"("position": {"class": "bezierScale"})"),
                R"(/nodes/0/transform/position/class: "bezierScale", expected "positionXYZ" or )"
                R"("other")"},
        Refusal{"ScaleClass", InTransform(R"("scale": {"class": "bezierFloat"})"),
                R"(/nodes/0/transform/scale/class: "bezierFloat", expected "scaleXYZ", )"
                R"("bezierScale" or "other")"},
        Refusal{"BareNumber", InTransform(R"("position": 5)"),
                "/nodes/0/transform/position: 5, expected a controller or a list of 3 numbers"},
        Refusal{"BareListOfTwo", InTransform(R"("position": [1, 2])"),
                "/nodes/0/transform/position: a list of 2, expected a list of 3 numbers"},
        Refusal{"BareListOfController", InTransform(R"("position": [1, {"class": "wire"}, 2])"),
                "/nodes/0/transform/position/1: an object, expected a number"},
        Refusal{"OtherWithoutClassId",
                InTransform(R"("position": {"class": "other", "value": [0, 0, 0]})"),
                "/nodes/0/transform/position/classId: nothing, expected a list of 2 whole numbers "
                "or \"0x...\""},
        Refusal{"OtherWithoutValue",
                InTransform(R"("position": {"class": "other", "classId": [1, 2]})"),
                "/nodes/0/transform/position/value: nothing, expected a list of 3 numbers"},
        Refusal{
            "OtherRotationOfThree",
            InTransform(R"("rotation": {"class": "other", "classId": [1, 2], "value": [0,0,1]})"),
            "/nodes/0/transform/rotation/value: a list of 3, expected a list of 4 numbers"},
        Refusal{
            "OtherScaleOfFour",
            InTransform(R"("scale": {"class": "other", "classId": [1, 2], "value": [0,0,0,1]})"),
            "/nodes/0/transform/scale/value: a list of 4, expected a list of 3 numbers"},
        Refusal{"ZeroQuaternion",
                InTransform(
                    R"("rotation": {"class": "other", "classId": [1, 2], "value": [0,-0,0.0,0]})"),
                "/nodes/0/transform/rotation/value: a zero quaternion, expected a rotation"},
        Refusal{
            "OtherWithKeys",
            InTransform(
                R"("scale": {"class": "other", "classId": [1, 2], "value": [0,0,0], "keys": []})"),
            R"(/nodes/0/transform/scale/keys: an unknown field, expected "class", "id", )"
            R"("classId", "jointParams" or "value")"},
        Refusal{"JointWithoutFlags",
                InTransform(R"("position": {"class": "positionXYZ", "jointParams": {}})"),
                "/nodes/0/transform/position/jointParams/flags: nothing, expected a whole number "
                "or \"0x...\""},
        Refusal{
            "JointWithoutDofs",
            InTransform(
                R"("position": {"class": "positionXYZ", "jointParams": {"flags": 1, "dofs": 0}})"),
            "/nodes/0/transform/position/jointParams/dofs: 0, expected 1 to 6 degrees of "
            "freedom"},
        Refusal{"JointWithSevenDofs",
                InTransform(
                    R"("position": {"class": "positionXYZ", "jointParams": {"flags": 1, "dofs": 7,
                        "min": [1, 2, 3, 4, 5, 6, 7]}})"),
                "/nodes/0/transform/position/jointParams/dofs: 7, expected 1 to 6 degrees of "
                "freedom"},
        Refusal{
            "JointLimitsShort",
            InTransform(
                R"("position": {"class": "positionXYZ", "jointParams": {"flags": 1, "max": [1, 2]}})"),
            "/nodes/0/transform/position/jointParams/max: a list of 2, expected a list of 3 "
            "numbers"},
        Refusal{"FloatClassUnknown", InAxis(R"({"class": "bezier"})"),
                R"(/nodes/0/transform/position/x/class: "bezier", expected "bezierFloat", )"
                R"("floatList", "wire" or "other")"},
        Refusal{"FloatOtherWithoutClassId", InAxis(R"({"class": "other"})"),
                "/nodes/0/transform/position/x/classId: nothing, expected a list of 2 whole "
                "numbers or \"0x...\""},
        Refusal{"ItemWithoutController", InAxis(R"({"class": "floatList", "items": [{}]})"),
                "/nodes/0/transform/position/x/items/0/controller: nothing, expected a float "
                "controller or a number"},
        Refusal{"KeyWithoutTime", InAxis(R"({"class": "bezierFloat", "keys": [{"value": 1}]})"),
                "/nodes/0/transform/position/x/keys/0/time: nothing, expected a whole number"},
        Refusal{"KeyWithoutValue", InAxis(R"({"class": "bezierFloat", "keys": [{"time": 1}]})"),
                "/nodes/0/transform/position/x/keys/0/value: nothing, expected a number"},
        Refusal{
            "KeyType",
            InAxis(
                R"({"class": "bezierFloat", "keys": [{"time": 1, "value": 1, "inType": "auto"}]})"),
            R"(/nodes/0/transform/position/x/keys/0/inType: "auto", expected "smooth", )"
            R"("linear", "step", "fast", "slow", "custom" or "flat")"},
        Refusal{"KeysNotAscending",
                InAxis(R"({"class": "bezierFloat", "keys": [{"time": 1, "value": 1}, )"
                       R"({"time": 0, "value": 1}]})"),
                "/nodes/0/transform/position/x/keys/1/time: 0, expected a time after 1"},
        Refusal{"ScaleKeysNotAscending",
                InTransform(R"("scale": {"class": "bezierScale", "keys": [{"time": 1, "value": )"
                            R"([1, 1, 1]}, {"time": 1, "value": [1, 1, 1]}]})"),
                "/nodes/0/transform/scale/keys/1/time: 1, expected a time after 1"},
        Refusal{"ScaleKeyTangent",
                InTransform(R"("scale": {"class": "bezierScale", "keys": [{"time": 1, "value": )"
                            R"([1, 1, 1], "inTangent": 0}]})"),
                "/nodes/0/transform/scale/keys/0/inTangent: 0, expected a list of 3 numbers"},
        Refusal{"WireParentUnknown", InAxis(R"({"class": "wire", "wires": [{}, {"parent": "x"}]})"),
                "/nodes/0/transform/position/x/wires/1/parent: \"x\", expected the id of a "
                "controller or transform of the scene"},
        Refusal{"WireControllerUnknown",
                InAxis(R"({"class": "wire", "wires": [{"coController": "x"}]})"),
                "/nodes/0/transform/position/x/wires/0/coController: \"x\", expected the id of a "
                "controller or transform of the scene"},
        Refusal{"WireControllerNotAFloat",
                InTransform(R"("id": "t", "position": {"class": "positionXYZ", "x": )"
                            R"({"class": "wire", "wires": [{"coController": "t"}]}})"),
                "/nodes/0/transform/position/x/wires/0/coController: \"t\", expected the id of a "
                "float controller"},
        Refusal{"ListsTooDeep",
                InAxis(Repeated(R"({"class": "floatList", "items": [{"controller": )", 64) +
                       R"({"class": "floatList"})" + Repeated("}]}", 64)),
                "/nodes/0/transform/position/x" + Repeated("/items/0/controller", 64) +
                    ": a list controller at level 65, expected at most 64 levels"}),
    RuleOf);

INSTANTIATE_TEST_SUITE_P(
    Object, Refused,
    testing::Values(
        Refusal{"ClassMissing", InNode(R"("object": {})"),
                R"(/nodes/0/object/class: nothing, expected "mesh" or "object")"},
        Refusal{"ClassUnknown", InNode(R"("object": {"class": "camera"})"),
                R"(/nodes/0/object/class: "camera", expected "mesh" or "object")"},
        Refusal{"WithoutSuperClassId",
                InNode(R"("object": {"class": "object", "classId": [1, 2]})"),
                "/nodes/0/object/superClassId: nothing, expected a whole number or \"0x...\""},
        Refusal{"WithoutClassId", InNode(R"("object": {"class": "object", "superClassId": 1})"),
                "/nodes/0/object/classId: nothing, expected a list of 2 whole numbers or "
                "\"0x...\""},
        Refusal{
            "VerticesOfAnObject",
            InNode(
                R"("object": {"class": "object", "superClassId": 1, "classId": [1, 2], "vertices": []})"),
            R"(/nodes/0/object/vertices: an unknown field, expected "class", "superClassId", )"
            R"("classId" or "parameter0")"},
        Refusal{"VertexOfTwo", InMesh(R"("vertices": [[0, 0]])"),
                "/nodes/0/object/vertices/0: a list of 2, expected a list of 3 numbers"},
        Refusal{"FaceOfTwo", InMesh(R"("vertices": [[0, 0, 0]], "faces": [[0, 0]])"),
                "/nodes/0/object/faces/0: a list of 2, expected a list of 3 vertices, a smoothing "
                "mask and a material id"},
        Refusal{"FaceOfSix", InMesh(R"("vertices": [[0, 0, 0]], "faces": [[0, 0, 0, 0, 0, 0]])"),
                "/nodes/0/object/faces/0: a list of 6, expected a list of 3 vertices, a smoothing "
                "mask and a material id"},
        Refusal{"FaceVertexOutOfRange",
                InMesh(R"("vertices": [[0, 0, 0]], "faces": [[0, 0, 0], [0, 1, 0]])"),
                "/nodes/0/object/faces/1/1: 1, expected a position in vertices, of which there are "
                "1"},
        Refusal{"FaceVertexNegative", InMesh(R"("vertices": [[0, 0, 0]], "faces": [[0, -1, 0]])"),
                "/nodes/0/object/faces/0/1: -1, expected " + kUnsigned32},
        Refusal{"SmoothingNegative", InMesh(R"("vertices": [[0, 0, 0]], "faces": [[0, 0, 0, -1]])"),
                "/nodes/0/object/faces/0/3: -1, expected " + kWord},
        Refusal{"FaceMaterialTooLarge",
                InMesh(R"("vertices": [[0, 0, 0]], "faces": [[0, 0, 0, 0, 65536]])"),
                "/nodes/0/object/faces/0/4: 65536, expected a whole number from 0 to 65535"},
        Refusal{"ChannelZero", InMesh(R"("channels": {"0": {}})"),
                "/nodes/0/object/channels/0: map channel 0, expected a map channel from 1 to 99"},
        Refusal{"ChannelHundred", InMesh(R"("channels": {"100": {}})"),
                "/nodes/0/object/channels/100: map channel 100, expected a map channel from 1 to "
                "99"},
        Refusal{"ChannelName", InMesh(R"("channels": {"uv": {}})"),
                "/nodes/0/object/channels/uv: the name \"uv\", expected a number as name"},
        Refusal{"ChannelLeadingZero", InMesh(R"("channels": {"01": {}})"),
                "/nodes/0/object/channels/01: the name \"01\", expected a number as name"},
        Refusal{"MapVertexOfThree", InMesh(R"("channels": {"1": {"vertices": [[0, 0, 0]]}})"),
                "/nodes/0/object/channels/1/vertices/0: a list of 3, expected a list of 2 numbers"},
        Refusal{"MapFacesMissing",
                InMesh(R"("vertices": [[0, 0, 0]], "faces": [[0, 0, 0], [0, 0, 0]],
                          "channels": {"1": {"vertices": [[0, 0]], "faces": [[0, 0, 0]]}})"),
                "/nodes/0/object/channels/1/faces: 1 map faces, expected 2, one for each face of "
                "the mesh"},
        Refusal{"MapFacesWithoutVertices", InMesh(R"("vertices": [[0, 0, 0]], "faces": [[0, 0, 0]],
                          "channels": {"2": {"faces": [[0, 0, 0]]}})"),
                "/nodes/0/object/channels/2/faces: 1 map faces, expected none in a channel without "
                "vertices"},
        Refusal{"MapFaceOutOfRange", InMesh(R"("vertices": [[0, 0, 0]], "faces": [[0, 0, 0]],
                          "channels": {"1": {"vertices": [[0, 0]], "faces": [[0, 0, 1]]}})"),
                "/nodes/0/object/channels/1/faces/0/2: 1, expected a position in vertices of the "
                "channel, of which there are 1"},
        Refusal{"NormalOutOfRange",
                InMesh(R"("vertices": [[0, 0, 0]], "normals": {"1": [0, 0, 1]})"),
                "/nodes/0/object/normals/1: 1, expected a position in vertices, of which there are "
                "1"},
        Refusal{"NormalName", InMesh(R"("vertices": [[0, 0, 0]], "normals": {"-0": [0, 0, 1]})"),
                "/nodes/0/object/normals/-0: the name \"-0\", expected a number as name"}),
    RuleOf);

INSTANTIATE_TEST_SUITE_P(
    Modifier, Refused,
    testing::Values(
        Refusal{"ClassUnknown", InModifier(R"("class": "bend")"),
                R"(/nodes/0/modifiers/0/class: "bend", expected "skin", "physique", "morpher" or )"
                R"("other")"},
        Refusal{"OtherWithoutClassId", InModifier(R"("class": "other")"),
                "/nodes/0/modifiers/0/classId: nothing, expected a list of 2 whole numbers or "
                "\"0x...\""},
        Refusal{"BoneOutOfRange", InModifier(R"("class": "skin", "bones": [0, 1])"),
                "/nodes/0/modifiers/0/bones/1: 1, expected a position in nodes, of which there are "
                "1"},
        Refusal{"BoneNull", InModifier(R"("class": "skin", "bones": [null])"),
                "/nodes/0/modifiers/0/bones/0: null, expected " + kNewPosition},
        Refusal{"WeightSlotOutOfRange",
                InModifier(R"("class": "skin", "bones": [0], "weights": [[], [[0, 1], [1, 1]]])"),
                "/nodes/0/modifiers/0/weights/1/1/0: 1, expected a position in bones, of which "
                "there are 1"},
        Refusal{"WeightOfThree",
                InModifier(R"("class": "skin", "bones": [0], "weights": [[[0, 1, 2]]])"),
                "/nodes/0/modifiers/0/weights/0/0: a list of 3, expected a list of a slot and a "
                "weight"},
        Refusal{"PhysiqueOutOfRange",
                InModifier(R"("class": "physique", "vertices": [null, {"rigid": 1}])"),
                "/nodes/0/modifiers/0/vertices/1/rigid: 1, expected a position in nodes, of which "
                "there are 1"},
        Refusal{"PhysiqueBlendedOutOfRange",
                InModifier(R"("class": "physique", "vertices": [{"blended": [[0, 1], [2, 1]]}])"),
                "/nodes/0/modifiers/0/vertices/0/blended/1/0: 2, expected a position in nodes, of "
                "which there are 1"},
        Refusal{"PhysiqueBoth",
                InModifier(R"("class": "physique", "vertices": [{"blended": [], "rigid": 0}])"),
                "/nodes/0/modifiers/0/vertices/0: an object, expected an object with \"rigid\" or "
                "\"blended\", or null"},
        Refusal{"PhysiqueNeither", InModifier(R"("class": "physique", "vertices": [{}])"),
                "/nodes/0/modifiers/0/vertices/0: an empty object, expected an object with "
                "\"rigid\" or \"blended\", or null"},
        Refusal{"MorphPoint", InModifier(R"("class": "morpher", "channels": [{"points": [1]}])"),
                "/nodes/0/modifiers/0/channels/0/points/0: 1, expected a list of 3 numbers"},
        Refusal{"InReferenceModifiers",
                InNode(R"("referenceModifiers": [{"class": "skin", "bones": [7]}])"),
                "/nodes/0/referenceModifiers/0/bones/0: 7, expected a position in nodes, of which "
                "there are 1"}),
    RuleOf);

INSTANTIATE_TEST_SUITE_P(
    Material, Refused,
    testing::Values(
        Refusal{"ClassUnknown", InMaterial(R"("class": "blinn")"),
                R"(/materials/0/class: "blinn", expected "standard", "multi" or "other")"},
        Refusal{"Null", InScene(R"("materials": [null])"),
                "/materials/0: null, expected a material"},
        Refusal{"OtherWithoutClassId", InMaterial(R"("class": "other")"),
                "/materials/0/classId: nothing, expected a list of 2 whole numbers or \"0x...\""},
        Refusal{"ClassIdOfMulti", InMaterial(R"("class": "multi", "classId": [2, 0])"),
                R"(/materials/0/classId: an unknown field, expected "class", "name" or )"
                R"("subMaterials")"},
        Refusal{"MapsOfMulti", InMaterial(R"("class": "multi", "maps": [])"),
                R"(/materials/0/maps: an unknown field, expected "class", "name" or )"
                R"("subMaterials")"},
        Refusal{"TwoSidedOfOther",
                InMaterial(R"("class": "other", "classId": [1, 2], "twoSided": true)"),
                R"(/materials/0/twoSided: an unknown field, expected "class", "classId", "name", )"
                R"("ambient", "diffuse", "specular", "selfIllumination", "shininess", )"
                R"("shininessStrength", "transparency", "maps" or "subMaterials")"},
        Refusal{"ColourOfTwo", InMaterial(R"("class": "standard", "diffuse": [1, 2])"),
                "/materials/0/diffuse: a list of 2, expected a list of 3 numbers"},
        Refusal{"SlotTwice",
                InMaterial(R"("class": "standard", "maps": [{"slot": 1, "map": {"class": "bitmap"}},
                              {"map": {"class": "bitmap"}}])"),
                "/materials/0/maps/1/slot: 1, expected a slot that no other map of the material "
                "has"},
        Refusal{"SlotNegative",
                InMaterial(
                    R"("class": "standard", "maps": [{"slot": -1, "map": {"class": "bitmap"}}])"),
                "/materials/0/maps/0/slot: -1, expected a slot from 0 to 999"},
        Refusal{"SlotTooLarge",
                InMaterial(
                    R"("class": "standard", "maps": [{"slot": 1000, "map": {"class": "bitmap"}}])"),
                "/materials/0/maps/0/slot: 1000, expected a slot from 0 to 999"},
        Refusal{"SlotWithoutMap", InMaterial(R"("class": "standard", "maps": [{"slot": 1}])"),
                "/materials/0/maps/0/map: nothing, expected a map"},
        Refusal{"MapNull", InMap("null"), "/materials/0/maps/0/map: null, expected a map"},
        Refusal{"MapClass", InMap(R"({"class": "checker"})"),
                R"(/materials/0/maps/0/map/class: "checker", expected "bitmap" or "other")"},
        Refusal{"OtherMapWithoutClassId", InMap(R"({"class": "other"})"),
                "/materials/0/maps/0/map/classId: nothing, expected a list of 2 whole numbers or "
                "\"0x...\""},
        Refusal{"SubMapNumber", InMap(R"({"class": "bitmap", "subMaps": [0]})"),
                "/materials/0/maps/0/map/subMaps/0: 0, expected a map"},
        Refusal{"SubMaterialText", InMaterial(R"("class": "multi", "subMaterials": ["a"])"),
                "/materials/0/subMaterials/0: \"a\", expected a material, a position in the "
                "scene's materials or null"},
        Refusal{"SubMaterialOutOfRange", InMaterial(R"("class": "multi", "subMaterials": [1])"),
                "/materials/0/subMaterials/0: 1, expected a position in materials, of which there "
                "are 1"},
        Refusal{"SubMaterialItself", InMaterial(R"("class": "multi", "subMaterials": [null, 0])"),
                "/materials/0/subMaterials/1: 0, expected a material that does not lead back to "
                "this one"},
        Refusal{"MaterialCycle", InScene(R"("materials": [{"class": "multi", "subMaterials": [1]},
                    {"class": "multi", "subMaterials": [{"class": "standard", "subMaterials": [2]}]},
                    {"class": "multi", "subMaterials": [1]}])"),
                "/materials/2/subMaterials/0: 1, expected a material that does not lead back to "
                "this one"},
        Refusal{
            "MaterialsTooDeep",
            InScene(R"("materials": [)" + Repeated(R"({"class": "multi", "subMaterials": [)", 64) +
                    R"({"class": "standard"})" + Repeated("]}", 64) + "]"),
            "/materials/0" + Repeated("/subMaterials/0", 64) +
                ": a material at level 65, expected at most 64 levels"},
        Refusal{"MapsTooDeep",
                InMap(Repeated(R"({"class": "bitmap", "subMaps": [)", 64) +
                      R"({"class": "bitmap"})" + Repeated("]}", 64)),
                "/materials/0/maps/0/map" + Repeated("/subMaps/0", 64) +
                    ": a map at level 65, expected at most 64 levels"}),
    RuleOf);

// 64 materials, each the sub-material of the one before, are one level each; so are 65.
std::string ChainOfMaterials(int length) {
    std::string list;
    for (int i = 0; i + 1 < length; ++i) {
        list += R"({"class": "multi", "subMaterials": [)" + std::to_string(i + 1) + "]}, ";
    }
    return InScene(R"("materials": [)" + list + R"({"class": "standard"}])");
}

TEST(Nesting, CountsReferencesOfMaterials) {
    EXPECT_EQ(MessageOf(ChainOfMaterials(64)), "nothing was refused");
    EXPECT_EQ(MessageOf(ChainOfMaterials(65)),
              "/materials/0/subMaterials/0: 1, which makes 65 levels of materials, expected at "
              "most 64 levels");
    // The first fault is the lowest reference with 65 levels below and including its material.
    EXPECT_EQ(MessageOf(ChainOfMaterials(100000)).substr(0, 39),
              "/materials/99935/subMaterials/0: 99936,");
}

TEST(Nesting, SixtyFourLevelsAreFine) {
    EXPECT_EQ(MessageOf(InAxis(Repeated(R"({"class": "floatList", "items": [{"controller": )", 64) +
                               "1" + Repeated("}]}", 64))),
              "nothing was refused");
    EXPECT_EQ(MessageOf(InMap(Repeated(R"({"class": "bitmap", "subMaps": [)", 63) +
                              R"({"class": "bitmap"})" + Repeated("]}", 63))),
              "nothing was refused");
    EXPECT_EQ(MessageOf(InScene(R"("materials": [)" +
                                Repeated(R"({"class": "multi", "subMaterials": [)", 63) +
                                R"({"class": "standard"})" + Repeated("]}", 63) + "]")),
              "nothing was refused");
}

// Every path through the references doubles at each level: only a check that visits each material
// once comes to an end.
TEST(Nesting, CostsNoMoreThanThereAreMaterials) {
    std::string list;
    for (int i = 1; i < 64; ++i) {
        const std::string next = std::to_string(i);
        list += R"({"class": "multi", "subMaterials": [)" + next + ", " + next + "]}, ";
    }
    EXPECT_EQ(MessageOf(InScene(R"("materials": [)" + list + R"({"class": "standard"}])")),
              "nothing was refused");
}

TEST(Messages, AreOneLine) {
    const std::string message = MessageOf(InNode("\"object\": {\"class\": \"a\\nb\\r\\u0007\"}"));
    EXPECT_EQ(message,
              R"(/nodes/0/object/class: "a\u000ab\u000d\u0007", expected "mesh" or "object")");
}

TEST(Messages, StayShort) {
    const std::string text = InNode("\"" + std::string(100000, 'y') + "\": 1");
    EXPECT_TRUE(
        MessageOf(text).starts_with("/nodes/0/" + std::string(100, 'y') + "...: an unknown"));
    EXPECT_LT(MessageOf("\"" + std::string(100000, 'z')).size(), 200u);
    EXPECT_LT(MessageOf(InAxis("1" + std::string(100000, '0'))).size(), 200u);
}

TEST(Reading, RefusesAStreamThatCannotBeRead) {
    std::istringstream in("{\"maxscene\": 1}");
    in.setstate(std::ios::badbit);
    EXPECT_THROW(maxhost::scene_file::ReadSceneDescription(in), SceneError);
}

}  // namespace
