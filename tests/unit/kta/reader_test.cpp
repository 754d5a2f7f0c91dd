#include "kta/reader.h"

#include <cmath>
#include <sstream>

#include "tests/unit/kta/sample.h"

namespace {

using namespace sample;
using kta::TextOf;

constexpr std::size_t kNodeChunk = 644;  // header and body

const std::string kEmptyActor = ActorFile({});
const std::string kOneNode = ActorFile({{}});

// ---------------------------------------------------------------- whole files

TEST(ReaderTest, HeadersOfBothKinds) {
    for (const bool actor : {false, true}) {
        const std::string bytes = FileHeader(actor);
        ASSERT_EQ(bytes.size(), 7u);
        const kta::Reading reading = ReadExact(bytes);
        EXPECT_TRUE(reading.Good());
        ASSERT_TRUE(reading.file);
        EXPECT_EQ(reading.file->kind, actor ? kFileKindActor : kFileKindMotion);
        EXPECT_STREQ(kta::KindName(reading.file->kind), actor ? "actor" : "motion");
        EXPECT_EQ(reading.file->version, (std::array<std::uint8_t, 2>{1, 1}));
        EXPECT_TRUE(reading.file->chunks.empty());
        EXPECT_EQ(reading.file->size, 7u);
        EXPECT_EQ(reading.file->end, 7u);
    }
}

TEST(ReaderTest, ChunksFollowOneAnotherWithoutPadding) {
    const kta::Reading reading =
        ReadExact(ActorFile({{.name = "a"}, {.name = "b", .parentName = "a"}}));
    ASSERT_TRUE(reading.Good());
    ASSERT_EQ(reading.file->chunks.size(), 2u);
    EXPECT_EQ(reading.file->chunks[1].offset, 7 + kNodeChunk);
    EXPECT_EQ(TextOf(BodyOf<KTANode>(reading, 1).nodeName), "b");
    EXPECT_EQ(TextOf(BodyOf<KTANode>(reading, 1).parentName), "a");
    EXPECT_EQ(reading.file->end, 7 + 2 * kNodeChunk);
}

// ---------------------------------------------------------------- nodes

TEST(NodeReaderTest, FieldsComeFromTheirOffsets) {
    const NodeFields node = DistinctNode();
    const kta::Reading reading = ReadExact(ActorFile({node}));
    ASSERT_TRUE(reading.Good());
    const kta::Chunk& chunk = reading.file.value().chunks.at(0);
    EXPECT_EQ(chunk.type->id, kChunkNode);
    EXPECT_STREQ(chunk.type->name, "node");
    EXPECT_EQ(chunk.offset, 7u);
    EXPECT_EQ(chunk.size, 632u);
    EXPECT_EQ(chunk.version, 3u);
    EXPECT_EQ(chunk.As<KTAMaterial>(), nullptr);
    const auto& read = BodyOf<KTANode>(reading);
    EXPECT_EQ(TextOf(read.nodeName), node.name);
    EXPECT_EQ(TextOf(read.parentName),
              "scene root");  // another case than the scene root's own name
    EXPECT_EQ(ListOf(read.translation), (std::vector<float>{1, 3, 2}));
    EXPECT_EQ(ListOf(read.rotation), (std::vector<float>{0.25f, -0.5f, 0.75f, 0.125f}));
    EXPECT_EQ(ListOf(read.scale), (std::vector<float>{-1.5f, -2.5f, -3.5f}));
    for (std::size_t row = 0; row < 4; ++row) {
        for (std::size_t column = 0; column < 4; ++column) {
            EXPECT_EQ(read.inverseWorldMatrix[row][column], node.matrix[row * 4 + column]);
        }
        EXPECT_EQ(read.inverseWorldMatrix[row][3], 0);
    }
    EXPECT_EQ(read.isBone, 1);
    EXPECT_EQ(read.hasHelperSize, 1);
    EXPECT_EQ(read.helperSize, 12.5f);
}

// The body's layout once more, as bytes written by hand at absolute positions.
TEST(NodeReaderTest, BodyOffsets) {
    std::string bytes = Patched(kOneNode, kBody, std::string("N\0", 2));
    bytes = Patched(bytes, kBody + 260, std::string("P\0", 2));
    for (const std::size_t offset : {520 + 8, 532 + 4, 560 + 4 * 13}) {
        bytes = PatchedU32(bytes, kBody + offset, 0x3f800000);  // 1.0f
    }
    bytes = PatchedU8(bytes, kBody + 625, 1);
    bytes = PatchedU32(bytes, kBody + 628, 0xc1200000);  // -10.0f
    const kta::Reading reading = ReadExact(bytes);
    ASSERT_TRUE(reading.Good());
    const auto& node = BodyOf<KTANode>(reading);
    EXPECT_EQ(TextOf(node.nodeName), "N");
    EXPECT_EQ(TextOf(node.parentName), "P");
    EXPECT_EQ(ListOf(node.translation), (std::vector<float>{0, 0, 1}));
    EXPECT_EQ(ListOf(node.rotation), (std::vector<float>{0, 1, 0, 1}));
    EXPECT_EQ(ListOf(node.inverseWorldMatrix[3]), (std::vector<float>{0, 1, 0, 0}));
    EXPECT_EQ(node.isBone, 0);
    EXPECT_EQ(node.hasHelperSize, 1);
    EXPECT_EQ(node.helperSize, -10.0f);
}

TEST(NodeReaderTest, TextEndsAtItsNulAndMayFillItsField) {
    const std::string longest(259, 'x');
    const kta::Reading full = ReadExact(ActorFile({{.name = longest}}));
    EXPECT_TRUE(full.Good());
    EXPECT_EQ(TextOf(BodyOf<KTANode>(full).nodeName), longest);

    // Bytes behind a NUL and padding mean nothing.
    const std::string bytes = Patched(ActorFile({{.name = "ab"}}), kBody + 3, "z\xff\x07");
    const kta::Reading reading = ReadExact(Patched(bytes, kBody + 626, "\x09\x09"));
    EXPECT_TRUE(reading.Good());
    EXPECT_EQ(TextOf(BodyOf<KTANode>(reading).nodeName), "ab");
}

TEST(NodeReaderTest, FloatsKeepTheirBits) {
    NodeFields node;
    node.translation = {-0.0f, kInfinity, 1e-45f};
    node.helperSize = std::numeric_limits<float>::quiet_NaN();
    const kta::Reading reading = ReadExact(ActorFile({node}));
    ASSERT_TRUE(reading.file);
    const auto& read = BodyOf<KTANode>(reading);
    EXPECT_TRUE(std::signbit(read.translation[0]));
    EXPECT_EQ(read.translation[1], kInfinity);
    EXPECT_EQ(read.translation[2], 1e-45f);
    EXPECT_TRUE(std::isnan(read.helperSize));
}

TEST(NodeReaderFaultTest, FieldsOutOfRange) {
    ExpectFaults(kOneNode, "node",
                 {{11, U8(0x77), "size is 631, expected 632"},
                  {11, U32(0xffffffff), "size is 4294967295, expected 632"},
                  {kBody + 624, U8(2), "bone flag is 2, expected 0 or 1"},
                  {kBody + 625, U8(255), "helper-size flag is 255, expected 0 or 1"}});
    EXPECT_EQ(BodyOf<KTANode>(ReadExact(PatchedU8(kOneNode, kBody + 624, 2))).isBone, 2);
    EXPECT_TRUE(ReadExact(PatchedU8(kOneNode, 15, 2)).file.value().chunks.empty());
}

TEST(NodeReaderFaultTest, TextsWithoutNul) {
    const kta::Reading reading =
        ReadExact(Patched(ActorFile({{}, {.name = "next"}}), kBody, std::string(520, 'n')));
    EXPECT_EQ(
        kta::FaultLines("f", reading),
        (std::vector<std::string>{
            FaultLine(19, "node", "node name has no NUL in its 260 bytes, expected one"),
            FaultLine(279, "node", "parent name has no NUL in its 260 bytes, expected one")}));
    EXPECT_EQ(TextOf(BodyOf<KTANode>(reading).nodeName), std::string(260, 'n'));
    EXPECT_EQ(TextOf(BodyOf<KTANode>(reading, 1).nodeName), "next");
}

TEST(NodeReaderFaultTest, NumbersThatAreNotFinite) {
    const std::pair<std::size_t, const char*> rows[] = {{520, "translation"},
                                                        {536, "rotation"},
                                                        {556, "scale"},
                                                        {560, "inverse world matrix"},
                                                        {620, "inverse world matrix"},
                                                        {628, "helper size"}};
    for (const auto& [offset, what] : rows) {
        for (const std::uint32_t bits : {0x7f800000u, 0xff800000u, 0x7f800001u, 0xff800001u}) {
            ExpectFaults(
                kOneNode, "node",
                {{kBody + offset, U32(bits), std::string(what) + " is not a finite number"}});
        }
    }
}

// ---------------------------------------------------------------- materials and layers

TEST(MaterialReaderTest, FieldsComeFromTheirOffsets) {
    const std::string bytes = kActor + MaterialChunk({.name = "Brick wall",
                                                      .ambient = {1, 2, 3},
                                                      .diffuse = {4, 5, 6},
                                                      .specular = {7, 8, 9},
                                                      .selfIllumination = {10, 11, 12},
                                                      .shininess = 13,
                                                      .shininessStrength = 14,
                                                      .opacity = 15,
                                                      .indexOfRefraction = 16,
                                                      .twoSided = 1,
                                                      .transparencyType = 'S'});
    ASSERT_EQ(bytes.size(), kBody + 108);
    const kta::Reading reading = ReadExact(bytes);
    ASSERT_TRUE(reading.Good());
    EXPECT_EQ(reading.file->chunks.at(0).type->id, kChunkMaterial);
    const auto& material = BodyOf<KTAMaterial>(reading);
    EXPECT_EQ(TextOf(material.materialName), "Brick wall");
    EXPECT_EQ(ListOf(material.ambient), (std::vector<float>{1, 2, 3}));
    EXPECT_EQ(ListOf(material.diffuse), (std::vector<float>{4, 5, 6}));
    EXPECT_EQ(ListOf(material.specular), (std::vector<float>{7, 8, 9}));
    EXPECT_EQ(ListOf(material.selfIllumination), (std::vector<float>{10, 11, 12}));
    EXPECT_EQ(material.shininess, 13);
    EXPECT_EQ(material.shininessStrength, 14);
    EXPECT_EQ(material.opacity, 15);
    EXPECT_EQ(material.indexOfRefraction, 16);
    EXPECT_EQ(material.twoSided, 1);
    EXPECT_EQ(material.wire, 0);
    EXPECT_EQ(material.transparencyType, 'S');
}

// The layout once more, at absolute positions.
TEST(MaterialReaderTest, BodyOffsets) {
    std::string bytes = kActor + MaterialChunk(Grey());
    for (const std::size_t offset : {40 + 8, 52 + 4, 64, 76 + 8, 88, 92, 96, 100}) {
        bytes = PatchedU32(bytes, kBody + offset, 0x41200000);  // 10.0f
    }
    const kta::Reading reading = ReadExact(Patched(bytes, kBody + 105, "\x01U\xff"));
    EXPECT_TRUE(reading.Good());
    const auto& material = BodyOf<KTAMaterial>(reading);
    EXPECT_EQ(material.ambient[2], 10);
    EXPECT_EQ(material.diffuse[1], 10);
    EXPECT_EQ(material.specular[0], 10);
    EXPECT_EQ(material.selfIllumination[2], 10);
    EXPECT_EQ(material.shininess, 10);
    EXPECT_EQ(material.shininessStrength, 10);
    EXPECT_EQ(material.opacity, 10);
    EXPECT_EQ(material.indexOfRefraction, 10);
    EXPECT_EQ(material.wire, 1);
    EXPECT_EQ(material.transparencyType, 'U');
}

TEST(MaterialReaderTest, LayerFieldsComeFromTheirOffsets) {
    const std::string bytes = kActor + LayerChunk({.texture = "brick.tga",
                                                   .type = 9,
                                                   .material = 0xfffe,
                                                   .amount = 1,
                                                   .offset = {2, 3},
                                                   .tiling = {4, 5},
                                                   .angle = 6});
    ASSERT_EQ(bytes.size(), kBody + 288);
    EXPECT_EQ(bytes[kBody + 260], 9);
    const kta::Reading reading = ReadExact(bytes);
    ASSERT_TRUE(reading.Good());
    EXPECT_EQ(reading.file->chunks.at(0).type->id, kChunkMaterialLayer);
    const auto& layer = BodyOf<KTAMaterialLayer>(reading);
    EXPECT_EQ(TextOf(layer.textureFileName), "brick.tga");
    EXPECT_EQ(layer.layerType, 9);
    EXPECT_EQ(layer.parentMaterial, -2);  // a signed number of two bytes
    EXPECT_EQ(layer.amount, 1);
    EXPECT_EQ(layer.uOffset, 2);
    EXPECT_EQ(layer.vOffset, 3);
    EXPECT_EQ(layer.uTiling, 4);
    EXPECT_EQ(layer.vTiling, 5);
    EXPECT_EQ(layer.rotationAngle, 6);
    const kta::Reading other = ReadExact(Patched(bytes, kBody + 262, "\x34\x12"));
    EXPECT_EQ(BodyOf<KTAMaterialLayer>(other).parentMaterial, 0x1234);
}

TEST(MaterialReaderTest, EmptyNameAndLongestNames) {
    for (const std::string& name : {std::string(), std::string(39, 'm')}) {
        const kta::Reading reading = ReadExact(kActor + MaterialChunk({.name = name}));
        EXPECT_EQ(TextOf(BodyOf<KTAMaterial>(reading).materialName), name);
    }
    const std::string texture(259, 't');
    const kta::Reading reading = ReadExact(kActor + LayerChunk({.texture = texture}));
    EXPECT_EQ(TextOf(BodyOf<KTAMaterialLayer>(reading).textureFileName), texture);
}

TEST(MaterialReaderFaultTest, Fields) {
    ExpectFaults(
        kActor + MaterialChunk(Grey()), "material",
        {{11, U8(107), "size is 107, expected 108"},
         {kBody, std::string(40, 'm'), "material name has no NUL in its 40 bytes, expected one"},
         {kBody + 100, F32(kInfinity), "index of refraction is not a finite number"},
         {kBody + 104, U8(2), "two-sided flag is 2, expected 0 or 1"},
         {kBody + 105, U8(3), "wire flag is 3, expected 0 or 1"},
         {kBody + 106, U8('f'), "transparency type is byte 102, expected S, A, F or U"},
         {kBody + 106, U8(0), "transparency type is byte 0, expected S, A, F or U"},
         {kBody + 106, U8('X'), "transparency type is byte 88, expected S, A, F or U"}});
    const std::string layer = kActor + LayerChunk({});
    ExpectFaults(layer, "material layer",
                 {{11, U32(0), "size is 0, expected 288"},
                  {kBody + 260, U8(12), "layer type is 12, expected 0 to 11"}});
    EXPECT_TRUE(ReadExact(PatchedU8(layer, kBody + 260, 11)).Good());
    EXPECT_EQ(OnlyFaultOf(layer.substr(0, layer.size() - 1)),
              FaultLine(19, "material layer", "body cut off: 288 bytes expected, 287 are there"));
}

// ---------------------------------------------------------------- faults of headers

TEST(ReaderFaultTest, Header) {
    const std::pair<std::string, std::string> rows[] = {
        {Patched(kEmptyActor, 0, "PK\x03\""),
         "0: header: magic is \"PK\\x03\\x22\", expected \"KTA \""},
        {PatchedU8(kEmptyActor, 3, 0), "0: header: magic is \"KTA\\x00\", expected \"KTA \""},
        {PatchedU8(kEmptyActor, 4, 2), "4: header: version is 2.1, expected 1.1"},
        {PatchedU8(kEmptyActor, 5, 0), "4: header: version is 1.0, expected 1.1"},
        {PatchedU8(kEmptyActor, 6, 2),
         "6: header: file kind is 2, expected 0 (motion) or 1 (actor)"}};
    for (const auto& [bytes, fault] : rows) {
        EXPECT_EQ(OnlyFaultOf(bytes), "f: offset " + fault);
        EXPECT_FALSE(ReadExact(bytes).file);
    }
}

TEST(ReaderFaultTest, UnknownChunkIds) {
    for (const std::uint32_t id : {5u, 9u, 11u, 12u, 13u, 16u, 0xffffffffu}) {
        EXPECT_EQ(OnlyFaultOf(kActor + ChunkHeader(id, 0, 1).Str()),
                  "f: offset 7: chunk header: chunk id is " + std::to_string(id) +
                      ", expected that of a known chunk kind");
    }
}

TEST(ReaderFaultTest, VersionsOfEveryKind) {
    const struct {
        std::uint32_t id;
        const char* name;
        std::vector<std::uint32_t> versions;
        const char* expected;
    } kinds[] = {{0, "node", {3}, "3"},
                 {1, "motion part", {2}, "2"},
                 {2, "key track", {1, 2}, "1 or 2"},
                 {3, "mesh", {3}, "3"},
                 {4, "skinning weights", {1}, "1"},
                 {6, "material", {2}, "2"},
                 {7, "material layer", {3}, "3"},
                 {8, "joint limits", {1}, "1"},
                 {10, "morph", {3}, "3"},
                 {14, "parameter wiring", {1}, "1"},
                 {15, "IK chain", {1}, "1"}};
    for (const auto& [id, name, versions, expected] : kinds) {
        for (std::uint32_t version = 0; version < 5; ++version) {
            const std::string file =
                FileHeader(id != 1 && id != 2) + ChunkHeader(id, 0, version).Str();
            const std::string fault = FaultLine(
                15, name, "version is " + std::to_string(version) + ", expected " + expected);
            const bool known =
                std::find(versions.begin(), versions.end(), version) != versions.end();
            EXPECT_EQ(OnlyFaultOf(file) != fault, known) << fault;
        }
    }
}

TEST(ReaderFaultTest, ChunksBeforeTheFaultAreKept) {
    const kta::Reading reading = ReadExact(kOneNode + ChunkHeader(4, 0, 1).Str());
    EXPECT_FALSE(reading.Good());
    ASSERT_TRUE(reading.file);
    EXPECT_EQ(reading.file->chunks.size(), 1u);
    EXPECT_EQ(reading.file->end, 7 + kNodeChunk);
    EXPECT_EQ(reading.file->size, 7 + kNodeChunk + 12);
}

TEST(ReaderFaultTest, NodeChunkInMotionFileIsReadAllTheSame) {
    const kta::Reading reading = ReadExact(PatchedU8(ActorFile({{}, {}}), 6, 0));
    const auto lines = kta::FaultLines("f", reading);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0],
              FaultLine(7, "node",
                        "stands in a file of the kind \"motion\", expected only in \"actor\""));
    EXPECT_EQ(reading.faults[1].offset, 7 + kNodeChunk);
    EXPECT_EQ(reading.file.value().chunks.size(), 2u);
}

// ---------------------------------------------------------------- cut and damaged files

// The fault of a file of two nodes that ends after `length` bytes; empty where it has none.
std::string ExpectedCut(std::size_t length) {
    const auto cut = [](std::size_t offset, const char* where, std::size_t size,
                        std::size_t there) {
        return "f: offset " + std::to_string(offset) + ": " + where +
               "cut off: " + std::to_string(size) + " bytes expected, " + std::to_string(there) +
               " are there";
    };
    if (length < 7) {
        return cut(0, "header: ", 7, length);
    }
    const std::size_t chunk = 7 + (length - 7) / kNodeChunk * kNodeChunk;
    const std::size_t there = length - chunk;
    if (there == 0) {
        return "";
    }
    return there < 12 ? cut(chunk, "chunk header: ", 12, there)
                      : cut(chunk + 12, "node chunk: body ", 632, there - 12);
}

TEST(ReaderTruncationTest, EveryPrefixNamesWhereItEnds) {
    const std::string file = ActorFile({DistinctNode(), {}});
    for (std::size_t length = 0; length <= file.size(); ++length) {
        const auto lines = FaultsOf(file.substr(0, length));
        const std::string expected = ExpectedCut(length);
        ASSERT_EQ(lines.size(), expected.empty() ? 0u : 1u) << length;
        if (!lines.empty()) {
            ASSERT_EQ(lines[0], expected);
        }
    }
}

TEST(ReaderTruncationTest, OneByteTooManyIsACutChunkHeader) {
    EXPECT_EQ(OnlyFaultOf(kOneNode + '\0'),
              "f: offset 651: chunk header: cut off: 12 bytes expected, 1 are there");
}

TEST(ReaderMutationTest, DamagedNodesAreReportedInBounds) {
    const int faulty = ReadDamaged(ActorFile({DistinctNode(), {}, {.isBone = 1}}));
    EXPECT_GT(faulty, 1000);
    EXPECT_LT(faulty, 10000);
}

// Of the header's bytes each has one value, but for the kind, which has two.
TEST(ReaderMutationTest, EveryByteOfTheHeader) {
    for (std::size_t at = 0; at < 7; ++at) {
        int good = 0;
        for (int value = 0; value < 256; ++value) {
            const kta::Reading reading =
                ReadExact(PatchedU8(kEmptyActor, at, static_cast<std::uint8_t>(value)));
            good += reading.Good() ? 1 : 0;
            EXPECT_EQ(reading.faults.size(), reading.file ? 0u : 1u);
        }
        EXPECT_EQ(good, at == 6 ? 2 : 1);
    }
}

// ---------------------------------------------------------------- streams and files

// Hands out one byte at a time, and counts them.
class Trickle : public std::streambuf {
  public:
    explicit Trickle(std::string bytes) : bytes_(std::move(bytes)) {}
    std::size_t Taken() const { return next_; }

  protected:
    int_type underflow() override {
        if (next_ == bytes_.size()) {
            return traits_type::eof();
        }
        current_ = bytes_[next_++];
        setg(&current_, &current_, &current_ + 1);
        return traits_type::to_int_type(current_);
    }

  private:
    std::string bytes_;
    std::size_t next_ = 0;
    char current_ = 0;
};

TEST(ReaderStreamTest, StreamAndMemoryGiveTheSame) {
    const std::string bytes = ActorFile(std::vector<NodeFields>(300, DistinctNode()));
    ASSERT_GT(bytes.size(), std::size_t{1} << 16);
    Trickle trickle(bytes);
    std::istream stream(&trickle);
    const kta::Reading reading = kta::Read(stream);
    ASSERT_TRUE(reading.Good());
    EXPECT_EQ(reading.file->size, bytes.size());
    EXPECT_EQ(reading.file->chunks.size(), 300u);
    EXPECT_EQ(TextOf(BodyOf<KTANode>(reading, 299).nodeName), DistinctNode().name);
}

TEST(ReaderStreamTest, OtherFilesAreNotReadToTheirEnd) {
    Trickle trickle(std::string(1000000, 'x'));
    std::istream stream(&trickle);
    const kta::Reading reading = kta::Read(stream);
    ASSERT_EQ(reading.faults.size(), 1u);
    EXPECT_EQ(reading.faults[0].text, "magic is \"xxxx\", expected \"KTA \"");
    EXPECT_EQ(trickle.Taken(), 7u);
}

TEST(ReaderStreamTest, EmptyStream) {
    std::istringstream stream;
    EXPECT_EQ(
        kta::FaultLines("f", kta::Read(stream)),
        std::vector<std::string>{"f: offset 0: header: cut off: 7 bytes expected, 0 are there"});
}

TEST(ReaderStreamTest, FileOnDisk) {
    const std::string path = Save("on_disk", ActorFile({DistinctNode()}));
    const kta::Reading reading = kta::ReadFile(path);
    EXPECT_TRUE(reading.Good());
    EXPECT_EQ(TextOf(BodyOf<KTANode>(reading).nodeName), DistinctNode().name);
}

TEST(ReaderStreamTest, MissingFileAndDirectory) {
    const kta::Reading missing = kta::ReadFile(ScratchPath("missing"));
    EXPECT_FALSE(missing.Good());
    EXPECT_FALSE(missing.file);
    EXPECT_TRUE(missing.inputError.starts_with("cannot be opened (")) << missing.inputError;
    const auto lines = kta::FaultLines("gone", missing);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0], "gone: " + missing.inputError);

    const kta::Reading directory = kta::ReadFile(KTA_SCRATCH);
    EXPECT_FALSE(directory.Good());
    EXPECT_TRUE(directory.inputError.starts_with("cannot be ")) << directory.inputError;
}

}  // namespace
