#include "tests/unit/kta/sample.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>
#include <sstream>

#include "kta/dump.h"
#include "kta/info.h"

namespace sample {

// ---------------------------------------------------------------- files

std::string ActorFile(const std::vector<NodeFields>& nodes) {
    std::string file = kActor;
    for (const NodeFields& node : nodes) {
        file += NodeChunk(node);
    }
    return file;
}

NodeFields DistinctNode() {
    NodeFields node;
    node.name = "Arm \"left\"";
    node.parentName = "scene root";
    node.translation = {1, 3, 2};
    node.rotation = {0.25f, -0.5f, 0.75f, 0.125f};
    node.scale = {-1.5f, -2.5f, -3.5f};
    for (std::size_t i = 0; i < node.matrix.size(); ++i) {
        node.matrix[i] = i % 4 == 3 ? 0 : static_cast<float>(i) + 0.1f;
    }
    node.isBone = 1;
    node.hasHelperSize = 1;
    node.helperSize = 12.5f;
    return node;
}

NodeFields NodeAt(const std::string& name, const std::string& parent,
                  const std::array<float, 3>& local, const std::array<float, 3>& world) {
    NodeFields node;
    node.name = name;
    node.parentName = parent;
    node.translation = local;
    for (std::size_t i = 0; i < 3; ++i) {
        node.matrix[12 + i] = -world[i];
    }
    return node;
}

NodeFields RootAt(const std::string& name, const std::array<float, 3>& world) {
    return NodeAt(name, "", world, world);
}

std::string MotionOf(const std::string& name, const Pose& pose, const std::string& tracks) {
    return kMotion + support::MotionPart(name, pose) + tracks;
}

MeshFields Triangle(std::uint32_t material, std::uint32_t mapChannelCount, std::uint32_t pairs) {
    MeshFields mesh;
    mesh.originalVertexCount = 9;
    mesh.mapChannelCount = mapChannelCount;
    SubMeshFields& subMesh = mesh.subMeshes.emplace_back();
    subMesh.material = material;
    subMesh.faces = {{0, 2, 1}};
    float next = 0.5f;
    const auto number = [&] { return next += 1; };
    for (const std::uint32_t original : {2u, 5u, 8u}) {
        VertexFields vertex;
        vertex.original = original;
        vertex.position = {number(), number(), number()};
        vertex.normal = {number(), number(), number()};
        for (std::uint32_t i = 0; i < pairs; ++i) {
            vertex.pairs.push_back({number(), number()});
        }
        subMesh.vertices.push_back(vertex);
    }
    return mesh;
}

MaterialFields Grey(const std::string& name) {
    return {.name = name,
            .ambient = {0, 0, 0},
            .diffuse = {0.75f, 0.75f, 0.75f},
            .specular = {1, 1, 1},
            .shininess = 0};
}

std::string PosedPart(const std::string& name) {
    return MotionPart(name, {{1, 3, 2}, {0.5f, -0.5f, 0.25f, 0.75f}, {4, 6, 5}});
}

std::string JointLimitsChunk() {
    Bytes chunk = ChunkHeader(8, 88, 1).U32(3);
    for (int i = 0; i < 12; ++i) {
        chunk.F32({static_cast<float>(i) - 5.5f});
    }
    chunk.F32({1, 1, 1, 1, 1, 1});
    return chunk.U8(1).U8(0).U8(0).U8(0).U8(0).U8(1).U16(0).U32(0).Str();
}

std::string SampleWire() {
    return WireChunk({.node = "Driver"}, {"Slave", "X_Position * 2", "Z_Scale", 2, 2, 0.5f, 0.25f},
                     2);
}

std::string IkChainChunk() {
    return ChunkHeader(15, 1064, 1)
        .Name("Chain")
        .Name("Thigh")
        .Name("Foot")
        .U8(1)
        .Name("Target")
        .Zeros(3)
        .F32({1.5f})
        .U8(7)
        .Zeros(3)
        .F32({2, 4, 3})
        .Str();
}

std::string RigFile() {
    const std::vector<VertexWeights> weights = {{{1, 1}},
                                                {{1, 0.5f}, {0, 0.5f}},
                                                {{1, 1}},
                                                {{-1, 1}},
                                                {{1, 1}},
                                                {{1, 1}},
                                                {{1, 0.25f}, {0, 0.25f}, {-1, 0.5f}},
                                                {{1, 1}},
                                                {{1, 1}}};
    return kActor + MaterialChunk(Grey()) + LayerChunk({.texture = "wood.png", .material = 0}) +
           NodeChunk({.name = "Skin"}) + MeshChunk(Triangle(0, 1, 1)) +
           NodeChunk({.name = "Bone"}) + WeightsChunk(0, weights) + JointLimitsChunk() +
           IkChainChunk() + SampleWire() + MorphChunk({.packed = {{0, 1, 2}, {65535, 256, 3}}}) +
           NodeChunk({.name = "Last"});
}

std::string TracksFile() {
    return kMotion + PosedPart("Sampled") +
           SampledTrack('P', {{0, {1, 3, 2}}, {0.5f, {2, 4, 3}}, {0.5f, {2, 4, 3}}}) +
           SampledTrack('R', {{0, {0, 0, 0, 1}}, {0.5f, {0.5f, -0.5f, 0.5f, 0.5f}}}) +
           SampledTrack('S', {{0, {1, 1, 1}}}) + PosedPart("Curves") +
           KeyframedTrack('P',
                          {KeyRecord(0, {1, 2, 3}, 7, {5, 1, 3, 4, 1, 5}, {{0.5f, 2}, {1, -4}}),
                           KeyRecord(1, {0, 7, 0}, 2, {1, 3, 1, 1, 4, 1})}) +
           KeyframedTrack('r', {KeyRecord(0, {90, 0, -90})}) +
           KeyframedTrack('S', {KeyRecord(0, {1, 2, 3}, 7, {5, 5, 5, 5, 5, 5},
                                          {{0.5f, 0}, {1, 0}, {2, 1}, {2, 2}, {2, 3}, {2, 4}})});
}

// ---------------------------------------------------------------- reading

kta::Reading ReadExact(const std::string& bytes) {
    const auto block = std::make_unique<std::uint8_t[]>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), block.get());
    return kta::Read(std::span<const std::uint8_t>(block.get(), bytes.size()));
}

std::vector<std::string> FaultsOf(const std::string& bytes) {
    return kta::FaultLines("f", ReadExact(bytes));
}

std::string OnlyFaultOf(const std::string& bytes) {
    const auto lines = FaultsOf(bytes);
    EXPECT_EQ(lines.size(), 1u);
    return lines.empty() ? "" : lines[0];
}

std::string FaultLine(std::size_t offset, const std::string& kind, const std::string& text) {
    return "f: offset " + std::to_string(offset) + ": " + kind + " chunk: " + text;
}

std::string Patched(std::string bytes, std::size_t offset, const std::string& others) {
    return bytes.replace(offset, others.size(), others);
}

std::string U8(std::uint8_t value) {
    return Bytes().U8(value).Str();
}

std::string U32(std::uint32_t value) {
    return Bytes().U32(value).Str();
}

std::string F32(float value) {
    return Bytes().F32({value}).Str();
}

std::string PatchedU8(const std::string& bytes, std::size_t offset, std::uint8_t value) {
    return Patched(bytes, offset, U8(value));
}

std::string PatchedU32(const std::string& bytes, std::size_t offset, std::uint32_t value) {
    return Patched(bytes, offset, U32(value));
}

std::string PatchedF32(const std::string& bytes, std::size_t offset, float value) {
    return Patched(bytes, offset, F32(value));
}

void ExpectFaults(const std::string& file, const std::string& kind,
                  const std::vector<FaultRow>& rows) {
    for (const auto& [offset, bytes, text] : rows) {
        EXPECT_EQ(OnlyFaultOf(Patched(file, offset, bytes)), FaultLine(offset, kind, text));
    }
}

namespace {

void ExpectWhole(const kta::Mesh& mesh) {
    std::size_t vertices = 0;
    std::size_t faces = 0;
    for (const kta::SubMesh& subMesh : mesh.subMeshes) {
        vertices += subMesh.vertices.size();
        faces += subMesh.faces.size();
        EXPECT_EQ(subMesh.textureCoordinates.size(),
                  subMesh.vertices.size() * static_cast<std::size_t>(mesh.pairsPerVertex));
        for (const auto& face : subMesh.faces) {
            EXPECT_LT(std::max({face[0], face[1], face[2]}), subMesh.vertices.size());
        }
        EXPECT_GE(subMesh.materialNumber, 0);
    }
    EXPECT_EQ(vertices, static_cast<std::size_t>(mesh.head.vertexCount));
    EXPECT_EQ(faces * 3, static_cast<std::size_t>(mesh.head.indexCount));
    EXPECT_GE(mesh.pairsPerVertex, mesh.head.mapChannelCount);
    EXPECT_LE(mesh.pairsPerVertex, 98);
}

void ExpectSound(const kta::Reading& reading, std::size_t size) {
    for (const kta::Fault& fault : reading.faults) {
        EXPECT_LE(fault.offset, size);
        EXPECT_FALSE(fault.where.empty());
        EXPECT_FALSE(fault.text.empty());
    }
    EXPECT_EQ(reading.file.value().size, size);
    EXPECT_TRUE(!reading.Good() || reading.file->end == size);
    std::uint64_t end = 7;
    for (const kta::Chunk& chunk : reading.file->chunks) {
        EXPECT_GE(chunk.offset, end);
        end = chunk.offset + 12;
        if (const auto* mesh = chunk.As<kta::Mesh>()) {
            ExpectWhole(*mesh);
        }
    }
    EXPECT_GE(reading.file->end, reading.file->chunks.empty() ? 7 : end);
    EXPECT_LE(reading.file->end, size);
}

}  // namespace

int ReadDamaged(const std::string& file) {
    std::mt19937 random(20120317);
    std::vector<std::size_t> structure;
    const kta::Reading whole = ReadExact(file);
    for (const kta::Chunk& chunk : whole.file.value().chunks) {
        for (std::size_t i = 0; i < 32; ++i) {
            structure.push_back(std::min<std::size_t>(chunk.offset + i, file.size() - 1));
        }
    }
    int faulty = 0;
    for (int round = 0; round < 10000 && !testing::Test::HasFailure(); ++round) {
        std::string bytes = file;
        for (auto count = random() % 6 + 1; count > 0; --count) {
            const std::size_t anywhere = 7 + random() % (bytes.size() - 7);
            bytes[random() % 2 == 0 ? anywhere : structure[random() % structure.size()]] =
                static_cast<char>(random() % 2 == 0 ? random() : random() % 4);
        }
        bytes.resize(random() % 4 == 0 ? 7 + random() % (bytes.size() - 6) : bytes.size());
        const kta::Reading reading = ReadExact(bytes);
        faulty += reading.Good() ? 0 : 1;
        ExpectSound(reading, bytes.size());
    }
    return faulty;
}

void ReadPrefixes(const std::string& file) {
    const kta::Reading whole = ReadExact(file);
    ASSERT_TRUE(whole.Good()) << FaultsOf(file)[0];
    std::vector<std::uint64_t> starts;
    for (const kta::Chunk& chunk : whole.file->chunks) {
        starts.push_back(chunk.offset);
    }
    starts.push_back(file.size());
    for (std::size_t length = 7; length < file.size(); ++length) {
        const kta::Reading reading = ReadExact(file.substr(0, length));
        const auto next = std::upper_bound(starts.begin(), starts.end(), length) - 1;
        const bool between = *next == length;
        ASSERT_EQ(reading.faults.size(), between ? 0u : 1u) << length;
        ASSERT_EQ(reading.file.value().end, *next) << length;
        ASSERT_EQ(reading.file->chunks.size(), static_cast<std::size_t>(next - starts.begin()));
        if (!between) {
            ASSERT_GE(reading.faults[0].offset, *next) << length;
            ASSERT_LE(reading.faults[0].offset, length);
            ASSERT_NE(reading.faults[0].text.find("cut off: "), std::string::npos)
                << length << reading.faults[0].text;
        }
    }
}

// ---------------------------------------------------------------- dumps

std::string DumpOf(const std::string& bytes) {
    std::ostringstream out;
    kta::DumpText("x", ReadExact(bytes).file.value(), out);
    return out.str();
}

std::string JsonDumpOf(const std::string& bytes) {
    std::ostringstream out;
    const kta::Reading reading = ReadExact(bytes);
    kta::DumpJson("x", reading, out);
    return out.str();
}

std::string InfoOf(const std::string& bytes) {
    std::ostringstream out;
    kta::WriteInfo("x", ReadExact(bytes).file.value(), out);
    return out.str();
}

}  // namespace sample
