#include <gtest/gtest.h>

#include "kta/reader.h"
#include "tests/unit/kta/sample_file.h"

namespace {

using sample::Bytes;
using sample::Kind;
using sample::Writer;

constexpr std::size_t kBody = 7 + 12;

Bytes FileOf(const sample::Material& material) {
    Writer writer;
    return AddMaterial(AddHeader(writer, Kind::actor), material).bytes;
}

Bytes FileOf(const sample::Layer& layer) {
    Writer writer;
    return AddLayer(AddHeader(writer, Kind::actor), layer).bytes;
}

std::string OnlyFault(const Bytes& bytes) {
    const auto lines = kta::FaultLines("f", kta::Read(bytes));
    EXPECT_EQ(lines.size(), 1u);
    return lines.empty() ? "" : lines[0];
}

Bytes Patched(Bytes bytes, std::size_t offset, std::initializer_list<std::uint8_t> values) {
    std::copy(values.begin(), values.end(), bytes.begin() + static_cast<std::ptrdiff_t>(offset));
    return bytes;
}

template <typename Body>
Body BodyOf(const Bytes& bytes) {
    const kta::Reading reading = kta::Read(bytes);
    return std::get<Body>(reading.file.value().chunks.at(0).body);
}

TEST(MaterialReaderTest, FieldsComeFromTheirOffsets) {
    const Bytes bytes = FileOf(sample::Material{.name = "Brick wall",
                                                .ambient = {1, 2, 3},
                                                .diffuse = {4, 5, 6},
                                                .specular = {7, 8, 9},
                                                .selfIllumination = {10, 11, 12},
                                                .rest = {13, 14, 15, 16},
                                                .twoSided = 1,
                                                .wire = 0,
                                                .transparencyType = 'S'});
    ASSERT_EQ(bytes.size(), kBody + 108);
    const kta::Reading reading = kta::Read(bytes);
    ASSERT_TRUE(reading.Good());
    EXPECT_EQ(reading.file->chunks.at(0).type->id, kChunkMaterial);
    const auto material = BodyOf<kta::Material>(bytes);
    EXPECT_EQ(material.materialName, "Brick wall");
    EXPECT_EQ(material.ambient, (std::array<float, 3>{1, 2, 3}));
    EXPECT_EQ(material.diffuse, (std::array<float, 3>{4, 5, 6}));
    EXPECT_EQ(material.specular, (std::array<float, 3>{7, 8, 9}));
    EXPECT_EQ(material.selfIllumination, (std::array<float, 3>{10, 11, 12}));
    EXPECT_EQ(material.shininess, 13);
    EXPECT_EQ(material.shininessStrength, 14);
    EXPECT_EQ(material.opacity, 15);
    EXPECT_EQ(material.indexOfRefraction, 16);
    EXPECT_TRUE(material.twoSided);
    EXPECT_FALSE(material.wire);
    EXPECT_EQ(material.transparencyType, 'S');
}

// The layout once more, at absolute positions.
TEST(MaterialReaderTest, BodyOffsets) {
    Bytes bytes = FileOf(sample::Material{});
    for (const std::size_t offset : {40 + 8, 52 + 4, 64, 76 + 8, 88, 92, 96, 100}) {
        bytes = Patched(bytes, kBody + offset, {0, 0, 0x20, 0x41});  // 10.0f
    }
    bytes = Patched(bytes, kBody + 105, {1, 'U', 0xff});
    const auto material = BodyOf<kta::Material>(bytes);
    EXPECT_EQ(material.ambient[2], 10);
    EXPECT_EQ(material.diffuse[1], 10);
    EXPECT_EQ(material.specular[0], 10);
    EXPECT_EQ(material.selfIllumination[2], 10);
    EXPECT_EQ(material.shininess, 10);
    EXPECT_EQ(material.shininessStrength, 10);
    EXPECT_EQ(material.opacity, 10);
    EXPECT_EQ(material.indexOfRefraction, 10);
    EXPECT_TRUE(material.wire);
    EXPECT_EQ(material.transparencyType, 'U');
    EXPECT_TRUE(kta::Read(bytes).Good());
}

TEST(MaterialReaderTest, LayerFieldsComeFromTheirOffsets) {
    const Bytes bytes = FileOf(sample::Layer{
        .texture = "brick.tga", .type = 9, .material = 0xfffe, .rest = {1, 2, 3, 4, 5, 6}});
    ASSERT_EQ(bytes.size(), kBody + 288);
    EXPECT_EQ(bytes[kBody + 260], 9);
    const kta::Reading reading = kta::Read(bytes);
    ASSERT_TRUE(reading.Good());
    EXPECT_EQ(reading.file->chunks.at(0).type->id, kChunkMaterialLayer);
    const auto layer = BodyOf<kta::MaterialLayer>(bytes);
    EXPECT_EQ(layer.textureFileName, "brick.tga");
    EXPECT_EQ(layer.layerType, 9);
    EXPECT_EQ(layer.parentMaterial, -2);  // a signed number of two bytes
    EXPECT_EQ(layer.amount, 1);
    EXPECT_EQ(layer.uOffset, 2);
    EXPECT_EQ(layer.vOffset, 3);
    EXPECT_EQ(layer.uTiling, 4);
    EXPECT_EQ(layer.vTiling, 5);
    EXPECT_EQ(layer.rotationAngle, 6);
    EXPECT_EQ(BodyOf<kta::MaterialLayer>(Patched(bytes, kBody + 262, {0x34, 0x12})).parentMaterial,
              0x1234);
}

TEST(MaterialReaderTest, EmptyNameAndLongestNames) {
    EXPECT_EQ(BodyOf<kta::Material>(FileOf(sample::Material{.name = ""})).materialName, "");
    const std::string name(39, 'm');
    EXPECT_EQ(BodyOf<kta::Material>(FileOf(sample::Material{.name = name})).materialName, name);
    const std::string texture(259, 't');
    EXPECT_EQ(BodyOf<kta::MaterialLayer>(FileOf(sample::Layer{.texture = texture})).textureFileName,
              texture);
}

TEST(MaterialReaderFaultTest, FieldsOutOfRange) {
    const Bytes file = FileOf(sample::Material{});
    EXPECT_EQ(OnlyFault(FileOf(sample::Material{.name = std::string(40, 'm')})),
              "f: offset 19: material chunk: material name has no NUL in its 40 bytes, expected "
              "one");
    EXPECT_EQ(OnlyFault(Patched(file, kBody + 104, {2})),
              "f: offset 123: material chunk: two-sided flag is 2, expected 0 or 1");
    EXPECT_EQ(OnlyFault(Patched(file, kBody + 105, {3})),
              "f: offset 124: material chunk: wire flag is 3, expected 0 or 1");
    for (const char type : {'f', '\0', 'X'}) {
        EXPECT_EQ(OnlyFault(Patched(file, kBody + 106, {static_cast<std::uint8_t>(type)})),
                  "f: offset 125: material chunk: transparency type is byte " +
                      std::to_string(int{type}) + ", expected S, A, F or U");
    }
    EXPECT_EQ(OnlyFault(Patched(file, kBody + 100, {0, 0, 0x80, 0x7f})),
              "f: offset 119: material chunk: index of refraction is not a finite number");
    EXPECT_EQ(OnlyFault(FileOf(sample::Layer{.type = 12})),
              "f: offset 279: material layer chunk: layer type is 12, expected 0 to 11");
    EXPECT_TRUE(kta::Read(FileOf(sample::Layer{.type = 11})).Good());
}

TEST(MaterialReaderFaultTest, SizesAndVersions) {
    EXPECT_EQ(OnlyFault(Patched(FileOf(sample::Material{}), 11, {107})),
              "f: offset 11: material chunk: size is 107, expected 108");
    EXPECT_EQ(OnlyFault(Patched(FileOf(sample::Material{}), 15, {1})),
              "f: offset 15: material chunk: version is 1, expected 2");
    EXPECT_EQ(OnlyFault(Patched(FileOf(sample::Layer{}), 11, {0, 0})),
              "f: offset 11: material layer chunk: size is 0, expected 288");
    EXPECT_EQ(OnlyFault(Patched(FileOf(sample::Layer{}), 15, {2})),
              "f: offset 15: material layer chunk: version is 2, expected 3");
    Bytes cut = FileOf(sample::Layer{});
    cut.pop_back();
    EXPECT_EQ(OnlyFault(cut),
              "f: offset 19: material layer chunk: body cut off: 288 bytes expected, 287 are "
              "there");
}

}  // namespace
