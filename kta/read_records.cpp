// Chunks whose body is one record of fixed size.
#include <string_view>

#include "kta/read_bodies.h"
#include "kta/read_checks.h"

namespace kta {
namespace {

constexpr std::size_t kVariableSize = 20;
constexpr std::size_t kMaterialNameSize = 40;
constexpr int kNumLayerTypes = 12;

template <typename Record>
void ReadRecord(Cursor& cursor, Chunk& chunk, std::uint32_t size, Record (*read)(Cursor&)) {
    if (chunk.size != size) {
        cursor.Stop(chunk.offset + 4,
                    "size is " + std::to_string(chunk.size) + ", expected " + std::to_string(size));
    }
    if (cursor.Require(size, "body")) {
        chunk.body = read(cursor);
    }
}

// Offsets in the body: 0 name[260], 260 parent name[260], 520 translation f32[3],
// 532 rotation f32[4], 548 scale f32[3], 560 matrix f32[4][4], 624 bone flag u8,
// 625 helper-size flag u8, 626 padding[2], 628 helper size f32.
Node ReadNode(Cursor& cursor) {
    Node node;
    node.nodeName = cursor.Text(kNameSize, "node name");
    node.parentName = cursor.Text(kNameSize, "parent name");
    node.translation = cursor.Floats<3>("translation");
    node.rotation = cursor.Floats<4>("rotation");
    node.scale = cursor.Floats<3>("scale");
    for (auto& row : node.inverseWorldMatrix) {
        row = cursor.Floats<4>("inverse world matrix");
    }
    node.isBone = cursor.Flag("bone flag");
    node.hasHelperSize = cursor.Flag("helper-size flag");
    cursor.Skip(2);
    node.helperSize = cursor.F32("helper size");
    return node;
}

char ReadTransparencyType(Cursor& cursor) {
    const std::uint64_t offset = cursor.Offset();
    const std::uint8_t type = cursor.U8();
    if (std::string_view("SAFU").find(static_cast<char>(type)) == std::string_view::npos) {
        cursor.Report(offset, "transparency type is byte " + std::to_string(int{type}) +
                                  ", expected S, A, F or U");
    }
    return static_cast<char>(type);
}

// Offsets in the body: 0 name[40], 40 ambient f32[3], 52 diffuse f32[3], 64 specular f32[3],
// 76 self-illumination f32[3], 88 shininess f32, 92 shininess strength f32, 96 opacity f32,
// 100 index of refraction f32, 104 two-sided u8, 105 wire u8, 106 transparency type char,
// 107 padding[1].
Material ReadMaterial(Cursor& cursor) {
    Material material;
    material.materialName = cursor.Text(kMaterialNameSize, "material name");
    material.ambient = cursor.Floats<3>("ambient colour");
    material.diffuse = cursor.Floats<3>("diffuse colour");
    material.specular = cursor.Floats<3>("specular colour");
    material.selfIllumination = cursor.Floats<3>("self-illumination colour");
    material.shininess = cursor.F32("shininess");
    material.shininessStrength = cursor.F32("shininess strength");
    material.opacity = cursor.F32("opacity");
    material.indexOfRefraction = cursor.F32("index of refraction");
    material.twoSided = cursor.Flag("two-sided flag");
    material.wire = cursor.Flag("wire flag");
    material.transparencyType = ReadTransparencyType(cursor);
    cursor.Skip(1);
    return material;
}

std::uint8_t ReadLayerType(Cursor& cursor) {
    const std::uint64_t offset = cursor.Offset();
    const std::uint8_t type = cursor.U8();
    if (type >= kNumLayerTypes) {
        cursor.Report(offset, "layer type is " + std::to_string(int{type}) + ", expected 0 to " +
                                  std::to_string(kNumLayerTypes - 1));
    }
    return type;
}

// Offsets in the body: 0 texture file name[260], 260 type u8, 261 padding[1], 262 material i16,
// 264 amount f32, 268 U offset f32, 272 V offset f32, 276 U tiling f32, 280 V tiling f32,
// 284 angle f32.
MaterialLayer ReadMaterialLayer(Cursor& cursor) {
    MaterialLayer layer;
    layer.textureFileName = cursor.Text(kNameSize, "texture file name");
    layer.layerType = ReadLayerType(cursor);
    cursor.Skip(1);
    layer.parentMaterial = cursor.I16();
    layer.amount = cursor.F32("amount");
    layer.uOffset = cursor.F32("U offset");
    layer.vOffset = cursor.F32("V offset");
    layer.uTiling = cursor.F32("U tiling");
    layer.vTiling = cursor.F32("V tiling");
    layer.rotationAngle = cursor.F32("rotation angle");
    return layer;
}

// Offsets in the body: 0 node i32, 4 position minimum f32[3], 16 position maximum f32[3],
// 28 rotation minimum f32[3], 40 rotation maximum f32[3], 52 f32[6], 76 position limited u8[3],
// 79 rotation limited u8[3], 82 u8[2], 84 i32.
JointLimits ReadJointLimits(Cursor& cursor) {
    JointLimits limits;
    limits.node = ReadAtLeast(cursor, "node number", -1);
    limits.positionMinimum = cursor.Floats<3>("position minimum");
    limits.positionMaximum = cursor.Floats<3>("position maximum");
    limits.rotationMinimum = cursor.Floats<3>("rotation minimum");
    limits.rotationMaximum = cursor.Floats<3>("rotation maximum");
    for (float& value : limits.at52) {
        value = ReadF32Of(cursor, "number at 52", 1);
    }
    for (bool& limited : limits.positionLimited) {
        limited = cursor.Flag("position flag");
    }
    for (bool& limited : limits.rotationLimited) {
        limited = cursor.Flag("rotation flag");
    }
    for (std::uint8_t& value : limits.at82) {
        value = ReadU8Of(cursor, "byte at 82", 0);
    }
    limits.at84 = ReadI32Of(cursor, "number at 84", 0);
    return limits;
}

// A number that is 0, 1 or 2; any other is reported.
std::int32_t ReadOneOfThree(Cursor& cursor, const char* what) {
    const std::uint64_t offset = cursor.Offset();
    const std::int32_t value = cursor.I32();
    if (value < 0 || value > 2) {
        cursor.Report(offset, Expected(what, value, "0 to 2"));
    }
    return value;
}

// The name of a node's animated channel; empty when there is no such channel.
std::string VariableName(const Wire::End& end) {
    constexpr const char* kParts[] = {"Position", "Rotation", "Scale"};
    const bool exists = end.part >= 0 && end.part <= 2 && end.component >= 0 && end.component <= 2;
    return exists ? std::string(1, "XYZ"[end.component]) + "_" + kParts[end.part] : "";
}

void CheckVariable(Cursor& cursor, const Wire::End& end, std::uint64_t offset, const char* what,
                   bool mayBeEmpty) {
    const std::string name = VariableName(end);
    if (!name.empty() && end.variable != name && !(mayBeEmpty && end.variable.empty())) {
        cursor.Report(offset, std::string(what) +
                                  " is not that of its part and component, expected " + name +
                                  (mayBeEmpty ? " or none" : ""));
    }
}

std::uint8_t ReadLinkKind(Cursor& cursor) {
    const std::uint64_t offset = cursor.Offset();
    const std::uint8_t kind = cursor.U8();
    if (kind != 1 && kind != 2) {
        cursor.Report(offset, Expected("link kind", kind, "1 or 2"));
    }
    return kind;
}

// Offsets in the body, for the first and the second end: 0, 260 node name[260], 520, 780
// expression[260], 1060, 1040 variable[20], 1080, 1084 part i32, 1088, 1092 component i32, 1096,
// 1100 weight f32, 1104, 1108 list weight f32; then 1112 link kind u8, 1113 padding[3].
Wire ReadWire(Cursor& cursor) {
    const std::uint64_t body = cursor.Offset();
    Wire wire;
    wire.first.nodeName = cursor.Text(kNameSize, "first node name");
    wire.second.nodeName = cursor.Text(kNameSize, "second node name");
    wire.first.expression = cursor.Text(kNameSize, "first expression");
    wire.second.expression = cursor.Text(kNameSize, "second expression");
    wire.second.variable = cursor.Text(kVariableSize, "second variable");
    wire.first.variable = cursor.Text(kVariableSize, "first variable");
    wire.first.part = ReadOneOfThree(cursor, "first part");
    wire.second.part = ReadOneOfThree(cursor, "second part");
    wire.first.component = ReadOneOfThree(cursor, "first component");
    wire.second.component = ReadOneOfThree(cursor, "second component");
    wire.first.weight = cursor.F32("first weight");
    wire.second.weight = cursor.F32("second weight");
    wire.first.listWeight = cursor.F32("first list weight");
    wire.second.listWeight = cursor.F32("second list weight");
    wire.linkKind = ReadLinkKind(cursor);
    cursor.Skip(3);
    CheckVariable(cursor, wire.second, body + 1040, "second variable", false);
    CheckVariable(cursor, wire.first, body + 1060, "first variable", true);
    return wire;
}

// Offsets in the body: 0 node name[260], 260 start joint[260], 520 end joint[260], 780 flag u8,
// 781 solver's node[260], 1041 padding[3], 1044 f32, 1048 u8, 1049 padding[3], 1052 f32[3].
IkChain ReadIkChain(Cursor& cursor) {
    IkChain chain;
    chain.nodeName = cursor.Text(kNameSize, "node name");
    chain.startJoint = cursor.Text(kNameSize, "start joint");
    chain.endJoint = cursor.Text(kNameSize, "end joint");
    chain.at780 = cursor.Flag("flag at 780");
    chain.solverNode = cursor.Text(kNameSize, "solver's node");
    cursor.Skip(3);
    chain.at1044 = cursor.F32("number at 1044");
    chain.at1048 = cursor.U8();
    cursor.Skip(3);
    chain.at1052 = cursor.Floats<3>("number at 1052");
    return chain;
}

// Offsets in the body: 0 node name[260], 260 translation f32[3], 272 rotation f32[4],
// 288 scale f32[3].
MotionPart ReadMotionPart(Cursor& cursor) {
    MotionPart part;
    part.nodeName = cursor.Text(kNameSize, "node name");
    part.translation = cursor.Floats<3>("translation");
    part.rotation = cursor.Floats<4>("rotation");
    part.scale = cursor.Floats<3>("scale");
    return part;
}

}  // namespace

void ReadNodeBody(Cursor& cursor, Chunk& chunk) {
    ReadRecord(cursor, chunk, kNodeSize, ReadNode);
}

void ReadMaterialBody(Cursor& cursor, Chunk& chunk) {
    ReadRecord(cursor, chunk, kMaterialSize, ReadMaterial);
}

void ReadMaterialLayerBody(Cursor& cursor, Chunk& chunk) {
    ReadRecord(cursor, chunk, kMaterialLayerSize, ReadMaterialLayer);
}

void ReadJointLimitsBody(Cursor& cursor, Chunk& chunk) {
    ReadRecord(cursor, chunk, kJointLimitsSize, ReadJointLimits);
}

void ReadWireBody(Cursor& cursor, Chunk& chunk) {
    ReadRecord(cursor, chunk, kWireSize, ReadWire);
}

void ReadIkChainBody(Cursor& cursor, Chunk& chunk) {
    ReadRecord(cursor, chunk, kIkChainSize, ReadIkChain);
}

void ReadMotionPartBody(Cursor& cursor, Chunk& chunk) {
    ReadRecord(cursor, chunk, kMotionPartSize, ReadMotionPart);
}

}  // namespace kta
