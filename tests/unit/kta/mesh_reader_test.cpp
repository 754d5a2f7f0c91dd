#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <memory>
#include <random>

#include "kta/reader.h"
#include "tests/unit/kta/sample_file.h"

namespace {

using sample::Bytes;
using sample::Kind;
using sample::Writer;

constexpr std::size_t kBody = 7 + 12;        // of the file's first chunk
constexpr std::size_t kRecord = kBody + 28;  // of a mesh's first sub-mesh
constexpr float kInfinity = std::numeric_limits<float>::infinity();

Bytes FileOf(const std::vector<sample::Mesh>& meshes) {
    Writer writer;
    AddHeader(writer, Kind::actor);
    for (const sample::Mesh& mesh : meshes) {
        AddMesh(writer, mesh);
    }
    return writer.bytes;
}

// From a heap block of exactly the file's size, so that the sanitizers see any read past it.
kta::Reading ReadExact(const Bytes& bytes) {
    const auto block = std::make_unique<std::uint8_t[]>(bytes.size());
    std::memcpy(block.get(), bytes.data(), bytes.size());
    return kta::Read(std::span<const std::uint8_t>(block.get(), bytes.size()));
}

std::vector<std::string> Faults(const Bytes& bytes) {
    return kta::FaultLines("f", ReadExact(bytes));
}

std::string OnlyFault(const Bytes& bytes) {
    const auto lines = Faults(bytes);
    EXPECT_EQ(lines.size(), 1u);
    return lines.empty() ? "" : lines[0];
}

const kta::Mesh& MeshOf(const kta::Reading& reading, std::size_t chunk = 0) {
    return std::get<kta::Mesh>(reading.file.value().chunks.at(chunk).body);
}

Bytes Patched(Bytes bytes, std::size_t offset, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i) {
        bytes[offset + i] = static_cast<std::uint8_t>(value >> (8 * i));
    }
    return bytes;
}

Bytes PatchedByte(Bytes bytes, std::size_t offset, std::uint8_t value) {
    bytes[offset] = value;
    return bytes;
}

void ExpectSame(const kta::Mesh& read, const sample::Mesh& mesh, std::size_t pairs) {
    EXPECT_EQ(static_cast<std::uint32_t>(read.node), mesh.node);
    EXPECT_EQ(static_cast<std::uint32_t>(read.numOriginalVertices), mesh.numOriginalVertices);
    EXPECT_EQ(static_cast<std::uint32_t>(read.numMapChannels), mesh.numMapChannels);
    EXPECT_EQ(read.isCollision, mesh.isCollision != 0);
    EXPECT_EQ(static_cast<std::size_t>(read.pairsPerVertex), pairs);
    ASSERT_EQ(read.subMeshes.size(), mesh.subMeshes.size());
    for (std::size_t s = 0; s < mesh.subMeshes.size(); ++s) {
        const kta::SubMesh& subMesh = read.subMeshes[s];
        const sample::SubMesh& expected = mesh.subMeshes[s];
        EXPECT_EQ(static_cast<std::uint32_t>(subMesh.material), expected.material);
        EXPECT_EQ(subMesh.faces, expected.faces);
        ASSERT_EQ(subMesh.vertices.size(), expected.vertices.size());
        ASSERT_EQ(subMesh.textureCoordinates.size(), expected.vertices.size() * pairs);
        for (std::size_t v = 0; v < expected.vertices.size(); ++v) {
            const kta::Vertex& vertex = subMesh.vertices[v];
            EXPECT_EQ(static_cast<std::uint32_t>(vertex.originalVertex),
                      expected.vertices[v].original);
            EXPECT_EQ(vertex.position, expected.vertices[v].position);
            EXPECT_EQ(vertex.normal, expected.vertices[v].normal);
            for (std::size_t k = 0; k < pairs; ++k) {
                EXPECT_EQ(subMesh.textureCoordinates[v * pairs + k], expected.vertices[v].pairs[k]);
            }
        }
    }
}

// A cube whose corners differ by their normals alone: 24 vertices, 36 indices.
sample::Mesh Cube() {
    sample::Mesh mesh;
    mesh.numOriginalVertices = 8;
    sample::SubMesh& subMesh = mesh.subMeshes.emplace_back();
    for (std::uint32_t original = 0; original < 8; ++original) {
        const float x = original & 1 ? 1.0f : -1.0f;
        const float y = original & 2 ? 1.0f : -1.0f;
        const float z = original & 4 ? 1.0f : -1.0f;
        subMesh.vertices.push_back({original, {x, y, z}, {x, 0, 0}});
        subMesh.vertices.push_back({original, {x, y, z}, {0, y, 0}});
        subMesh.vertices.push_back({original, {x, y, z}, {0, 0, z}});
    }
    const auto face = [&](std::uint32_t side, std::uint32_t a, std::uint32_t b, std::uint32_t c) {
        subMesh.faces.push_back({3 * a + side, 3 * b + side, 3 * c + side});
    };
    for (const std::uint32_t high : {0u, 1u}) {
        face(0, high, high + 2, high + 6);
        face(0, high, high + 6, high + 4);
        face(1, 2 * high, 2 * high + 1, 2 * high + 5);
        face(1, 2 * high, 2 * high + 5, 2 * high + 4);
        face(2, 4 * high, 4 * high + 1, 4 * high + 3);
        face(2, 4 * high, 4 * high + 3, 4 * high + 2);
    }
    return mesh;
}

// ---------------------------------------------------------------- layout

// The layout as bytes written by hand, without the sample writer.
TEST(MeshReaderTest, BytesOfOneTriangle) {
    Bytes bytes = {'K', 'T', 'A', ' ', 1, 1, 1, 3, 0, 0, 0, 160, 0, 0, 0, 3, 0, 0, 0};
    const std::initializer_list<std::uint32_t> head = {7, 4, 3, 3, 1, 1, 0x00000001};
    const std::initializer_list<std::uint32_t> record = {0x00000005, 3, 3};
    Writer writer;
    writer.bytes = bytes;
    for (const std::uint32_t word : head) {
        writer.U32(word);
    }
    for (const std::uint32_t word : record) {
        writer.U32(word);
    }
    for (const std::uint32_t original : {0u, 1u, 3u}) {
        const auto base = static_cast<float>(original * 10);
        writer.U32(original);
        writer.F32(base).F32(base + 1).F32(base + 2);
        writer.F32(base + 3).F32(base + 4).F32(base + 5);
        writer.F32(base + 6).F32(base + 7);
    }
    writer.U32(2).U32(0).U32(1);
    ASSERT_EQ(writer.bytes.size(), 7u + 12 + 160);
    const kta::Reading reading = ReadExact(writer.bytes);
    ASSERT_TRUE(reading.Good());
    const kta::Chunk& chunk = reading.file->chunks.at(0);
    EXPECT_EQ(chunk.type->id, kChunkMesh);
    EXPECT_EQ(chunk.size, 160u);
    EXPECT_EQ(chunk.version, 3u);
    const kta::Mesh& mesh = MeshOf(reading);
    EXPECT_EQ(mesh.node, 7);
    EXPECT_EQ(mesh.numOriginalVertices, 4);
    EXPECT_EQ(mesh.numVertices, 3);
    EXPECT_EQ(mesh.numIndices, 3);
    EXPECT_EQ(mesh.numMapChannels, 1);
    EXPECT_TRUE(mesh.isCollision);
    EXPECT_EQ(mesh.pairsPerVertex, 1);
    const kta::SubMesh& subMesh = mesh.subMeshes.at(0);
    EXPECT_EQ(subMesh.offset, kRecord);
    EXPECT_EQ(subMesh.material, 5);
    ASSERT_EQ(subMesh.vertices.size(), 3u);
    EXPECT_EQ(subMesh.vertices[2].originalVertex, 3);
    EXPECT_EQ(subMesh.vertices[2].position, (std::array<float, 3>{30, 31, 32}));
    EXPECT_EQ(subMesh.vertices[2].normal, (std::array<float, 3>{33, 34, 35}));
    EXPECT_EQ(subMesh.textureCoordinates[1], (std::array<float, 2>{16, 17}));
    EXPECT_EQ(subMesh.faces.at(0), (std::array<std::uint32_t, 3>{2, 0, 1}));
}

TEST(MeshReaderTest, CubeOfSixSmoothingGroups) {
    const sample::Mesh cube = Cube();
    const kta::Reading reading = ReadExact(FileOf({cube}));
    ASSERT_TRUE(reading.Good());
    ExpectSame(MeshOf(reading), cube, 0);
    EXPECT_EQ(MeshOf(reading).numVertices, 24);
    EXPECT_EQ(MeshOf(reading).numIndices, 36);
}

TEST(MeshReaderTest, SubMeshesKeepTheirOrder) {
    sample::Mesh mesh = sample::Triangle(2, 1, 1);
    mesh.subMeshes.push_back(sample::Triangle(1, 1, 1).subMeshes[0]);
    const kta::Reading reading = ReadExact(FileOf({mesh}));
    ASSERT_TRUE(reading.Good());
    ExpectSame(MeshOf(reading), mesh, 1);
    EXPECT_EQ(MeshOf(reading).subMeshes[0].material, 2);
    EXPECT_EQ(MeshOf(reading).subMeshes[1].material, 1);
    EXPECT_EQ(MeshOf(reading).subMeshes[1].offset, kRecord + 12 + 3 * 36 + 12);
}

TEST(MeshReaderTest, MeshWithoutNode) {
    sample::Mesh mesh = sample::Triangle(0, 0, 0);
    mesh.node = 0xffffffff;
    const kta::Reading reading = ReadExact(FileOf({mesh}));
    ASSERT_TRUE(reading.Good());
    EXPECT_EQ(MeshOf(reading).node, -1);
}

// ---------------------------------------------------------------- what the size leaves out

TEST(MeshReaderTest, MaterialNumbersFrom128StandInFull) {
    for (const std::uint32_t material : {0u, 127u, 128u, 200u, 255u, 256u, 100000u, 0x7fffffffu}) {
        const sample::Mesh mesh = sample::Triangle(material, 1, 1);
        const Bytes bytes = FileOf({mesh, mesh});
        EXPECT_EQ(bytes[kRecord], material < 128 ? material : 255);
        const kta::Reading reading = ReadExact(bytes);
        ASSERT_TRUE(reading.Good()) << Faults(bytes)[0];
        EXPECT_EQ(reading.file->chunks[0].size, 28u + 24 + 3 * 36);
        EXPECT_EQ(reading.file->chunks[1].offset, 7u + 12 + 160 + (material < 128 ? 0 : 4));
        ExpectSame(MeshOf(reading, 1), mesh, 1);
    }
}

// Supported map channels without map vertices are written and not counted.
TEST(MeshReaderTest, PairsThatTheHeadDoesNotCount) {
    for (const std::uint32_t counted : {0u, 1u, 3u, 97u, 98u}) {
        for (const std::uint32_t pairs : {counted, counted + 1, counted + 5, 98u}) {
            if (pairs < counted || pairs > 98) {
                continue;
            }
            sample::Mesh mesh = sample::Triangle(200, counted, pairs);
            mesh.subMeshes.push_back(sample::Triangle(3, counted, pairs).subMeshes[0]);
            Writer writer;
            AddMesh(AddMesh(AddHeader(writer, Kind::actor), mesh), mesh);
            AddNode(writer, {});
            const kta::Reading reading = ReadExact(writer.bytes);
            ASSERT_TRUE(reading.Good()) << counted << " " << pairs;
            ASSERT_EQ(reading.file->chunks.size(), 3u);
            ExpectSame(MeshOf(reading, 0), mesh, pairs);
            ExpectSame(MeshOf(reading, 1), mesh, pairs);
        }
    }
}

// The default coordinates of such a channel are zeros and ones, which look like original vertices
// and faces.
TEST(MeshReaderTest, DefaultCoordinates) {
    sample::Mesh mesh;
    mesh.numOriginalVertices = 3;
    mesh.subMeshes.push_back({0,
                              {{0, {0, 0, 0}, {0, 0, 1}, {{0, 0}}},
                               {1, {1, 0, 0}, {0, 0, 1}, {{1, 0}}},
                               {2, {0, 1, 0}, {0, 0, 1}, {{0, 1}}}},
                              {{0, 1, 2}}});
    Writer writer;
    AddNode(AddMesh(AddHeader(writer, Kind::actor), mesh), {});
    for (const Bytes& bytes : {FileOf({mesh}), writer.bytes}) {
        const kta::Reading reading = ReadExact(bytes);
        ASSERT_TRUE(reading.Good()) << Faults(bytes)[0];
        ExpectSame(MeshOf(reading), mesh, 1);
    }
}

// Where all numbers are zero, several counts of pairs are in order; what stands behind decides.
TEST(MeshReaderTest, WhatFollowsDecidesBetweenCounts) {
    sample::Mesh mesh;
    mesh.numOriginalVertices = 1;
    mesh.subMeshes.push_back({0, std::vector<sample::Vertex>(3), {{0, 0, 0}, {0, 0, 0}}});
    for (std::uint32_t pairs = 0; pairs < 6; ++pairs) {
        for (sample::Vertex& vertex : mesh.subMeshes[0].vertices) {
            vertex.pairs.resize(pairs);
        }
        Writer writer;
        AddNode(AddMesh(AddHeader(writer, Kind::actor), mesh), {});
        for (const Bytes& bytes : {FileOf({mesh}), writer.bytes}) {
            const kta::Reading reading = ReadExact(bytes);
            ASSERT_TRUE(reading.Good()) << pairs << Faults(bytes)[0];
            ExpectSame(MeshOf(reading), mesh, pairs);
        }
    }
}

// A mesh in order stays when what follows is damaged, and the fault is told where it is.
TEST(MeshReaderTest, DamageBehindAMesh) {
    const sample::Mesh mesh = sample::Triangle(0, 1, 1);
    Bytes bytes = FileOf({mesh});
    const std::size_t end = bytes.size();
    bytes.insert(bytes.end(), 12, 99);
    EXPECT_EQ(OnlyFault(bytes), "f: offset " + std::to_string(end) +
                                    ": chunk header: chunk id is 1667457891, expected that of a "
                                    "known chunk kind");
    ExpectSame(MeshOf(ReadExact(bytes)), mesh, 1);
    bytes.resize(end + 5);
    EXPECT_EQ(OnlyFault(bytes), "f: offset " + std::to_string(end) +
                                    ": chunk header: cut off: 12 bytes expected, 5 are there");
}

TEST(MeshReaderTest, LargeMesh) {
    sample::Mesh mesh;
    mesh.numOriginalVertices = 200000;
    sample::SubMesh& subMesh = mesh.subMeshes.emplace_back();
    for (std::uint32_t i = 0; i < mesh.numOriginalVertices; ++i) {
        const auto x = static_cast<float>(i);
        subMesh.vertices.push_back({i, {x, 0, 0}, {0, 1, 0}, {{x, 0}, {0, 0}}});
        subMesh.faces.push_back({i, i / 2, i / 3});
    }
    const kta::Reading reading = ReadExact(FileOf({mesh}));
    ASSERT_TRUE(reading.Good());
    ExpectSame(MeshOf(reading), mesh, 2);
}

// ---------------------------------------------------------------- faults

std::string MeshFault(std::size_t offset, const std::string& text) {
    return "f: offset " + std::to_string(offset) + ": mesh chunk: " + text;
}

TEST(MeshReaderFaultTest, Version) {
    EXPECT_EQ(OnlyFault(Patched(FileOf({Cube()}), 15, 2)),
              MeshFault(15, "version is 2, expected 3"));
}

TEST(MeshReaderFaultTest, SizeThatItsCountsDoNotGive) {
    const Bytes bytes = Patched(FileOf({sample::Triangle(200, 1, 2)}), 11, 164);
    EXPECT_EQ(OnlyFault(bytes), MeshFault(11, "size is 164, expected 160 by its counts"));
    ExpectSame(MeshOf(ReadExact(bytes)), sample::Triangle(200, 1, 2), 2);
}

TEST(MeshReaderFaultTest, CountsOfTheHead) {
    const Bytes file = FileOf({Cube()});
    const struct {
        std::size_t field;
        std::uint32_t value;
        const char* text;
    } rows[] = {{0, 0xfffffffe, "node number is -2, expected -1 or more"},
                {4, 0, "original vertex count is 0, expected 1 or more"},
                {8, 2, "vertex count is 2, expected 3 or more"},
                {12, 0xfffffffd, "index count is -3, expected 3 or more"},
                {12, 35, "index count is 35, expected a multiple of 3"},
                {16, 0, "sub-mesh count is 0, expected 1 or more"},
                {20, 0x80000000, "map channel count is -2147483648, expected 0 or more"},
                {20, 99, "map channel count is 99, expected at most 98"}};
    for (const auto& [field, value, text] : rows) {
        EXPECT_EQ(OnlyFault(Patched(file, kBody + field, value)), MeshFault(kBody + field, text));
    }
    EXPECT_EQ(OnlyFault(PatchedByte(file, kBody + 24, 2)),
              MeshFault(kBody + 24, "collision flag is 2, expected 0 or 1"));
}

// No memory is asked for before the bytes are known to be there.
TEST(MeshReaderFaultTest, CountsBeyondTheFile) {
    const Bytes file = FileOf({Cube()});
    const std::size_t there = file.size() - kRecord;
    const struct {
        std::size_t field;
        std::uint32_t value;
        std::uint64_t expected;
    } rows[] = {{8, 0x7fffffff, 12 + 144 + 0x7fffffffull * 28},
                {12, 0x7ffffffe, 12 + 0x7ffffffeull * 4 + 24 * 28},
                {16, 0x7fffffff, 0x7fffffffull * 12 + 144 + 24 * 28},
                {20, 98, 12 + 144 + 24 * (28 + 98 * 8)}};
    for (const auto& [field, value, expected] : rows) {
        EXPECT_EQ(
            OnlyFault(Patched(file, kBody + field, value)),
            MeshFault(kRecord, "sub-meshes cut off: " + std::to_string(expected) +
                                   " bytes expected, " + std::to_string(there) + " are there"));
    }
}

TEST(MeshReaderFaultTest, TotalsThatTheSubMeshesDoNotGive) {
    Bytes file = FileOf({Cube()});
    file.insert(file.end(), 64, 0);  // so that the head's counts have their bytes
    const auto lines = Faults(Patched(file, kBody + 8, 25));
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], MeshFault(11, "size is 856, expected 884 by its counts"));
    EXPECT_EQ(lines[1],
              MeshFault(kBody + 8, "vertex count is 25, expected 24, the sub-meshes' sum"));
    EXPECT_EQ(Faults(Patched(file, kBody + 12, 39)).back(),
              MeshFault(kBody + 12, "index count is 39, expected 36, the sub-meshes' sum"));
}

TEST(MeshReaderFaultTest, SubMeshRecords) {
    const Bytes file = FileOf({Cube()});
    EXPECT_EQ(OnlyFault(PatchedByte(file, kRecord, 128)),
              MeshFault(kRecord, "material byte is 128, expected 0 to 127, or 255"));
    EXPECT_EQ(OnlyFault(PatchedByte(file, kRecord + 1, 9)),
              MeshFault(kRecord + 1, "byte behind the material is 9, expected 0"));
    EXPECT_EQ(OnlyFault(Patched(file, kRecord + 4, 35)),
              MeshFault(kRecord + 4, "sub-mesh index count is 35, expected a multiple of 3"));
    EXPECT_EQ(OnlyFault(Patched(file, kRecord + 4, 39)),
              MeshFault(kRecord + 4,
                        "sub-mesh index count is 39, expected 0 to 36, what the mesh's count "
                        "leaves"));
    EXPECT_EQ(OnlyFault(Patched(file, kRecord + 8, 0xffffffff)),
              MeshFault(kRecord + 8,
                        "sub-mesh vertex count is -1, expected 1 to 24, what the mesh's count "
                        "leaves"));
    EXPECT_EQ(OnlyFault(Patched(file, kRecord + 8, 0)),
              MeshFault(kRecord + 8,
                        "sub-mesh vertex count is 0, expected 1 to 24, what the mesh's count "
                        "leaves"));
    const Bytes full = FileOf({sample::Triangle(128, 0, 0)});
    EXPECT_EQ(OnlyFault(Patched(full, kRecord + 12, 127)),
              MeshFault(kRecord + 12, "material number in full is 127, expected 128 or more"));
    // Padding means nothing.
    EXPECT_TRUE(Faults(PatchedByte(PatchedByte(file, kRecord + 2, 7), kBody + 25, 7)).empty());
}

TEST(MeshReaderFaultTest, VerticesAndFaces) {
    const Bytes file = FileOf({Cube()});
    const std::size_t vertices = kRecord + 12;
    EXPECT_EQ(OnlyFault(Patched(file, vertices + 5 * 28, 8)),
              MeshFault(vertices + 5 * 28, "original vertex is 8, expected 1 to 7"));
    EXPECT_EQ(OnlyFault(Patched(file, vertices + 6 * 28, 0)),
              MeshFault(vertices + 6 * 28, "original vertex is 0, expected 1 to 7"));
    EXPECT_EQ(OnlyFault(Patched(file, vertices, 0xffffffff)),
              MeshFault(vertices, "original vertex is -1, expected 0 to 7"));
    const std::size_t faces = vertices + 24 * 28;
    EXPECT_EQ(
        OnlyFault(Patched(file, faces + 35 * 4, 24)),
        MeshFault(faces + 35 * 4, "face's vertex is 24, expected less than the sub-mesh's 24"));
    EXPECT_TRUE(ReadExact(Patched(file, faces, 24)).file.value().chunks.empty());
}

// The fault of the try that came furthest is told, and with how many pairs that was.
TEST(MeshReaderFaultTest, FaceOfAMeshWithUncountedPairs) {
    const Bytes file = FileOf({sample::Triangle(0, 1, 3)});
    const std::size_t faces = kRecord + 12 + 3 * (28 + 24);
    EXPECT_EQ(OnlyFault(Patched(file, faces + 8, 3)),
              MeshFault(faces + 8,
                        "face's vertex is 3, expected less than the sub-mesh's 3 (with 3 texture "
                        "coordinate pairs a vertex)"));
}

TEST(MeshReaderFaultTest, NumbersThatAreNotFinite) {
    sample::Mesh mesh = sample::Triangle(0, 1, 1);
    std::vector<sample::Vertex>& vertices = mesh.subMeshes[0].vertices;
    vertices[0].position[2] = kInfinity;
    vertices[1].position = {-kInfinity, kInfinity, 0};
    vertices[2].position[0] = std::numeric_limits<float>::quiet_NaN();
    vertices[1].normal[0] = kInfinity;
    vertices[2].pairs[0][1] = kInfinity;
    const Bytes bytes = FileOf({mesh});
    const std::size_t at = kRecord + 12;
    EXPECT_EQ(Faults(bytes),
              (std::vector<std::string>{
                  MeshFault(at + 4,
                            "position is not a finite number, nor are 2 more of the "
                            "sub-mesh"),
                  MeshFault(at + 36 + 16, "normal is not a finite number"),
                  MeshFault(at + 72 + 28, "texture coordinate pair is not a finite number")}));
    EXPECT_EQ(MeshOf(ReadExact(bytes)).subMeshes[0].vertices[1].position[1], kInfinity);
}

// ---------------------------------------------------------------- cut and damaged files

Bytes Quirks() {
    sample::Mesh mesh = sample::Triangle(200, 1, 2);
    mesh.subMeshes.push_back(sample::Triangle(3, 1, 2).subMeshes[0]);
    Writer writer;
    AddMaterial(AddHeader(writer, Kind::actor), {});
    AddLayer(writer, {});
    AddMesh(AddNode(writer, {}), mesh);
    AddMesh(writer, Cube());
    return writer.bytes;
}

TEST(MeshReaderTruncationTest, EveryPrefixIsOneFaultOrWholeChunks) {
    const Bytes file = Quirks();
    const kta::Reading whole = ReadExact(file);
    ASSERT_TRUE(whole.Good());
    std::vector<std::uint64_t> ends = {7};
    for (std::size_t i = 1; i < whole.file->chunks.size(); ++i) {
        ends.push_back(whole.file->chunks[i].offset);
    }
    for (std::size_t length = 7; length < file.size(); ++length) {
        const kta::Reading reading =
            ReadExact(Bytes(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(length)));
        const bool atEnd = std::find(ends.begin(), ends.end(), length) != ends.end();
        ASSERT_EQ(reading.faults.size(), atEnd ? 0u : 1u) << length;
        const std::size_t chunks = reading.file.value().chunks.size();
        ASSERT_EQ(reading.file->end, ends.at(chunks)) << length;
        ASSERT_LE(reading.file->end, length);
        if (!atEnd) {
            ASSERT_GE(reading.faults[0].offset, reading.file->end);
            ASSERT_LE(reading.faults[0].offset, length);
        }
    }
}

void CheckInvariants(const kta::Mesh& mesh) {
    std::size_t vertices = 0;
    std::size_t faces = 0;
    for (const kta::SubMesh& subMesh : mesh.subMeshes) {
        vertices += subMesh.vertices.size();
        faces += subMesh.faces.size();
        ASSERT_EQ(subMesh.textureCoordinates.size(),
                  subMesh.vertices.size() * static_cast<std::size_t>(mesh.pairsPerVertex));
        for (const auto& face : subMesh.faces) {
            ASSERT_LT(std::max({face[0], face[1], face[2]}), subMesh.vertices.size());
        }
        ASSERT_GE(subMesh.material, 0);
    }
    ASSERT_EQ(vertices, static_cast<std::size_t>(mesh.numVertices));
    ASSERT_EQ(faces * 3, static_cast<std::size_t>(mesh.numIndices));
    ASSERT_GE(mesh.pairsPerVertex, mesh.numMapChannels);
    ASSERT_LE(mesh.pairsPerVertex, 98);
}

TEST(MeshReaderMutationTest, DamagedFilesAreReportedInBounds) {
    const Bytes file = Quirks();
    std::mt19937 random(20120317);
    int faulty = 0;
    for (int round = 0; round < 20000; ++round) {
        Bytes bytes = file;
        for (auto count = random() % 6 + 1; count > 0; --count) {
            bytes[7 + random() % (bytes.size() - 7)] =
                static_cast<std::uint8_t>(random() % 2 == 0 ? random() : random() % 4);
        }
        bytes.resize(random() % 4 == 0 ? 7 + random() % (bytes.size() - 6) : bytes.size());
        const kta::Reading reading = ReadExact(bytes);
        faulty += reading.Good() ? 0 : 1;
        ASSERT_TRUE(reading.file);
        for (const kta::Fault& fault : reading.faults) {
            ASSERT_LE(fault.offset, bytes.size());
            ASSERT_FALSE(fault.text.empty());
        }
        for (const kta::Chunk& chunk : reading.file->chunks) {
            if (const auto* mesh = std::get_if<kta::Mesh>(&chunk.body)) {
                ASSERT_NO_FATAL_FAILURE(CheckInvariants(*mesh));
            }
        }
        ASSERT_TRUE(!reading.Good() || reading.file->end == bytes.size());
    }
    EXPECT_GT(faulty, 5000);
    EXPECT_LT(faulty, 20000);
}

}  // namespace
