// Chunks whose body is one record of fixed size.
#include <string_view>

#include "kta/read_bodies.h"

namespace kta {
namespace {

constexpr std::size_t kNameSize = 260;
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

}  // namespace kta
