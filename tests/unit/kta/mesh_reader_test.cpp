#include "tests/unit/kta/sample.h"

namespace {

using namespace sample;

constexpr std::size_t kRecord = kBody + 28;  // of a mesh's first sub-mesh

std::string MeshFile(const std::vector<MeshFields>& meshes) {
    std::string file = kActor;
    for (const MeshFields& mesh : meshes) {
        file += MeshChunk(mesh);
    }
    return file;
}

const kta::Mesh& MeshOf(const kta::Reading& reading, std::size_t chunk = 0) {
    return BodyOf<kta::Mesh>(reading, chunk);
}

void ExpectSame(const kta::Mesh& read, const MeshFields& mesh, std::size_t pairs) {
    EXPECT_EQ(static_cast<std::uint32_t>(read.head.nodeNumber), mesh.node);
    EXPECT_EQ(static_cast<std::uint32_t>(read.head.originalVertexCount), mesh.originalVertexCount);
    EXPECT_EQ(static_cast<std::uint32_t>(read.head.mapChannelCount), mesh.mapChannelCount);
    EXPECT_EQ(read.head.isCollision, mesh.isCollision);
    EXPECT_EQ(static_cast<std::size_t>(read.pairsPerVertex), pairs);
    ASSERT_EQ(read.subMeshes.size(), mesh.subMeshes.size());
    for (std::size_t s = 0; s < mesh.subMeshes.size(); ++s) {
        const kta::SubMesh& subMesh = read.subMeshes[s];
        const SubMeshFields& expected = mesh.subMeshes[s];
        EXPECT_EQ(static_cast<std::uint32_t>(subMesh.materialNumber), expected.material);
        EXPECT_EQ(subMesh.faces, expected.faces);
        ASSERT_EQ(subMesh.vertices.size(), expected.vertices.size());
        ASSERT_EQ(subMesh.textureCoordinates.size(), expected.vertices.size() * pairs);
        for (std::size_t v = 0; v < expected.vertices.size(); ++v) {
            const KTAVertex& vertex = subMesh.vertices[v];
            EXPECT_EQ(static_cast<std::uint32_t>(vertex.originalVertex),
                      expected.vertices[v].original);
            EXPECT_EQ(std::to_array(vertex.position), expected.vertices[v].position);
            EXPECT_EQ(std::to_array(vertex.normal), expected.vertices[v].normal);
            for (std::size_t k = 0; k < pairs; ++k) {
                EXPECT_EQ(subMesh.textureCoordinates[v * pairs + k], expected.vertices[v].pairs[k]);
            }
        }
    }
}

// A cube whose corners differ by their normals alone: 24 vertices, 36 indices.
MeshFields Cube() {
    MeshFields mesh;
    mesh.originalVertexCount = 8;
    SubMeshFields& subMesh = mesh.subMeshes.emplace_back();
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
    Bytes bytes;
    bytes.Text(std::string("KTA \1\1\1", 7)).U32(3).U32(160).U32(3);
    for (const std::uint32_t word : {7, 4, 3, 3, 1, 1, 0x00000001}) {  // the head
        bytes.U32(word);
    }
    bytes.U32(0x00000005).U32(3).U32(3);  // the sub-mesh
    for (const std::uint32_t original : {0u, 1u, 3u}) {
        const auto base = static_cast<float>(original * 10);
        bytes.U32(original);
        bytes.F32({base, base + 1, base + 2, base + 3, base + 4, base + 5, base + 6, base + 7});
    }
    bytes.U32(2).U32(0).U32(1);
    ASSERT_EQ(bytes.Str().size(), 7u + 12 + 160);
    const kta::Reading reading = ReadExact(bytes.Str());
    ASSERT_TRUE(reading.Good());
    const kta::Chunk& chunk = reading.file->chunks.at(0);
    EXPECT_EQ(chunk.type->id, kChunkMesh);
    EXPECT_EQ(chunk.size, 160u);
    EXPECT_EQ(chunk.version, 3u);
    const kta::Mesh& mesh = MeshOf(reading);
    EXPECT_EQ(mesh.head.nodeNumber, 7);
    EXPECT_EQ(mesh.head.originalVertexCount, 4);
    EXPECT_EQ(mesh.head.vertexCount, 3);
    EXPECT_EQ(mesh.head.indexCount, 3);
    EXPECT_EQ(mesh.head.subMeshCount, 1);
    EXPECT_EQ(mesh.head.mapChannelCount, 1);
    EXPECT_EQ(mesh.head.isCollision, 1);
    EXPECT_EQ(mesh.pairsPerVertex, 1);
    const kta::SubMesh& subMesh = mesh.subMeshes.at(0);
    EXPECT_EQ(subMesh.offset, kRecord);
    EXPECT_EQ(subMesh.materialNumber, 5);
    ASSERT_EQ(subMesh.vertices.size(), 3u);
    EXPECT_EQ(subMesh.vertices[2].originalVertex, 3);
    EXPECT_EQ(ListOf(subMesh.vertices[2].position), (std::vector<float>{30, 31, 32}));
    EXPECT_EQ(ListOf(subMesh.vertices[2].normal), (std::vector<float>{33, 34, 35}));
    EXPECT_EQ(subMesh.textureCoordinates[1], (std::array<float, 2>{16, 17}));
    EXPECT_EQ(subMesh.faces.at(0), (std::array<std::uint32_t, 3>{2, 0, 1}));
}

TEST(MeshReaderTest, CubeOfSixSmoothingGroups) {
    const MeshFields cube = Cube();
    const kta::Reading reading = ReadExact(MeshFile({cube}));
    ASSERT_TRUE(reading.Good());
    ExpectSame(MeshOf(reading), cube, 0);
    EXPECT_EQ(MeshOf(reading).head.vertexCount, 24);
    EXPECT_EQ(MeshOf(reading).head.indexCount, 36);
}

TEST(MeshReaderTest, SubMeshesKeepTheirOrder) {
    MeshFields mesh = Triangle(2, 1, 1);
    mesh.subMeshes.push_back(Triangle(1, 1, 1).subMeshes[0]);
    const kta::Reading reading = ReadExact(MeshFile({mesh}));
    ASSERT_TRUE(reading.Good());
    ExpectSame(MeshOf(reading), mesh, 1);
    EXPECT_EQ(MeshOf(reading).subMeshes[0].materialNumber, 2);
    EXPECT_EQ(MeshOf(reading).subMeshes[1].materialNumber, 1);
    EXPECT_EQ(MeshOf(reading).subMeshes[1].offset, kRecord + 12 + 3 * 36 + 12);
}

TEST(MeshReaderTest, MeshWithoutNode) {
    MeshFields mesh = Triangle(0, 0, 0);
    mesh.node = 0xffffffff;
    const kta::Reading reading = ReadExact(MeshFile({mesh}));
    ASSERT_TRUE(reading.Good());
    EXPECT_EQ(MeshOf(reading).head.nodeNumber, -1);
}

// ---------------------------------------------------------------- what the size leaves out

TEST(MeshReaderTest, MaterialNumbersFrom128StandInFull) {
    for (const std::uint32_t material : {0u, 127u, 128u, 200u, 255u, 256u, 100000u, 0x7fffffffu}) {
        const MeshFields mesh = Triangle(material, 1, 1);
        const std::string bytes = MeshFile({mesh, mesh});
        EXPECT_EQ(static_cast<std::uint8_t>(bytes[kRecord]), material < 128 ? material : 255);
        const kta::Reading reading = ReadExact(bytes);
        ASSERT_TRUE(reading.Good()) << FaultsOf(bytes)[0];
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
            MeshFields mesh = Triangle(200, counted, pairs);
            mesh.subMeshes.push_back(Triangle(3, counted, pairs).subMeshes[0]);
            const kta::Reading reading = ReadExact(MeshFile({mesh, mesh}) + NodeChunk({}));
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
    MeshFields mesh;
    mesh.originalVertexCount = 3;
    mesh.subMeshes.push_back({0,
                              {{0, {0, 0, 0}, {0, 0, 1}, {{0, 0}}},
                               {1, {1, 0, 0}, {0, 0, 1}, {{1, 0}}},
                               {2, {0, 1, 0}, {0, 0, 1}, {{0, 1}}}},
                              {{0, 1, 2}}});
    for (const std::string& bytes : {MeshFile({mesh}), MeshFile({mesh}) + NodeChunk({})}) {
        const kta::Reading reading = ReadExact(bytes);
        ASSERT_TRUE(reading.Good()) << FaultsOf(bytes)[0];
        ExpectSame(MeshOf(reading), mesh, 1);
    }
}

// Where all numbers are zero, several counts of pairs are in order; the bytes behind decide.
TEST(MeshReaderTest, BytesBehindDecideBetweenCounts) {
    MeshFields mesh;
    mesh.originalVertexCount = 1;
    mesh.subMeshes.push_back({0, std::vector<VertexFields>(3), {{0, 0, 0}, {0, 0, 0}}});
    for (std::uint32_t pairs = 0; pairs < 6; ++pairs) {
        for (VertexFields& vertex : mesh.subMeshes[0].vertices) {
            vertex.pairs.resize(pairs);
        }
        for (const std::string& bytes : {MeshFile({mesh}), MeshFile({mesh}) + NodeChunk({})}) {
            const kta::Reading reading = ReadExact(bytes);
            ASSERT_TRUE(reading.Good()) << pairs << FaultsOf(bytes)[0];
            ExpectSame(MeshOf(reading), mesh, pairs);
        }
    }
}

// A mesh in order stays when what follows is damaged, and the fault is told where it is.
TEST(MeshReaderTest, DamageBehindAMesh) {
    const MeshFields mesh = Triangle(0, 1, 1);
    std::string bytes = MeshFile({mesh});
    const std::size_t end = bytes.size();
    bytes.append(12, 99);
    EXPECT_EQ(OnlyFaultOf(bytes), "f: offset " + std::to_string(end) +
                                      ": chunk header: chunk id is 1667457891, expected that of a "
                                      "known chunk kind");
    ExpectSame(MeshOf(ReadExact(bytes)), mesh, 1);
    bytes.resize(end + 5);
    EXPECT_EQ(OnlyFaultOf(bytes), "f: offset " + std::to_string(end) +
                                      ": chunk header: cut off: 12 bytes expected, 5 are there");
}

TEST(MeshReaderTest, LargeMesh) {
    MeshFields mesh;
    mesh.originalVertexCount = 200000;
    SubMeshFields& subMesh = mesh.subMeshes.emplace_back();
    for (std::uint32_t i = 0; i < mesh.originalVertexCount; ++i) {
        const auto x = static_cast<float>(i);
        subMesh.vertices.push_back({i, {x, 0, 0}, {0, 1, 0}, {{x, 0}, {0, 0}}});
        subMesh.faces.push_back({i, i / 2, i / 3});
    }
    const kta::Reading reading = ReadExact(MeshFile({mesh}));
    ASSERT_TRUE(reading.Good());
    ExpectSame(MeshOf(reading), mesh, 2);
}

// ---------------------------------------------------------------- faults

std::string MeshFault(std::size_t offset, const std::string& text) {
    return FaultLine(offset, "mesh", text);
}

TEST(MeshReaderFaultTest, SizeThatItsCountsDoNotGive) {
    const std::string bytes = PatchedU32(MeshFile({Triangle(200, 1, 2)}), 11, 164);
    EXPECT_EQ(OnlyFaultOf(bytes), MeshFault(11, "size is 164, expected 160 by its counts"));
    ExpectSame(MeshOf(ReadExact(bytes)), Triangle(200, 1, 2), 2);
}

TEST(MeshReaderFaultTest, CountsOfTheHead) {
    ExpectFaults(
        MeshFile({Cube()}), "mesh",
        {{kBody + 0, U32(0xfffffffe), "node number is -2, expected -1 or more"},
         {kBody + 4, U32(0), "original vertex count is 0, expected 1 or more"},
         {kBody + 8, U32(2), "vertex count is 2, expected 3 or more"},
         {kBody + 12, U32(0xfffffffd), "index count is -3, expected 3 or more"},
         {kBody + 12, U32(35), "index count is 35, expected a multiple of 3"},
         {kBody + 16, U32(0), "sub-mesh count is 0, expected 1 or more"},
         {kBody + 20, U32(0x80000000), "map channel count is -2147483648, expected 0 or more"},
         {kBody + 20, U32(99), "map channel count is 99, expected at most 98"},
         {kBody + 24, U8(2), "collision flag is 2, expected 0 or 1"}});
}

// No memory is asked for before the bytes are known to be there.
TEST(MeshReaderFaultTest, CountsBeyondTheFile) {
    const std::string file = MeshFile({Cube()});
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
            OnlyFaultOf(PatchedU32(file, kBody + field, value)),
            MeshFault(kRecord, "sub-meshes cut off: " + std::to_string(expected) +
                                   " bytes expected, " + std::to_string(there) + " are there"));
    }
}

TEST(MeshReaderFaultTest, TotalsThatTheSubMeshesDoNotGive) {
    // Bytes behind it, so that those that the head counts are there.
    const std::string file = MeshFile({Cube()}) + std::string(64, '\0');
    const auto lines = FaultsOf(PatchedU32(file, kBody + 8, 25));
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], MeshFault(11, "size is 856, expected 884 by its counts"));
    EXPECT_EQ(lines[1],
              MeshFault(kBody + 8, "vertex count is 25, expected 24, the sub-meshes' sum"));
    EXPECT_EQ(FaultsOf(PatchedU32(file, kBody + 12, 39)).back(),
              MeshFault(kBody + 12, "index count is 39, expected 36, the sub-meshes' sum"));
}

TEST(MeshReaderFaultTest, SubMeshRecords) {
    const std::string file = MeshFile({Cube()});
    ExpectFaults(file, "mesh",
                 {{kRecord, U8(128), "material byte is 128, expected 0 to 127, or 255"},
                  {kRecord + 1, U8(9), "byte behind the material is 9, expected 0"},
                  {kRecord + 4, U32(35), "sub-mesh index count is 35, expected a multiple of 3"},
                  {kRecord + 4, U32(39),
                   "sub-mesh index count is 39, expected 0 to 36, what the mesh's count leaves"},
                  {kRecord + 8, U32(0xffffffff),
                   "sub-mesh vertex count is -1, expected 1 to 24, what the mesh's count leaves"},
                  {kRecord + 8, U32(0),
                   "sub-mesh vertex count is 0, expected 1 to 24, what the mesh's count leaves"}});
    ExpectFaults(
        MeshFile({Triangle(128, 0, 0)}), "mesh",
        {{kRecord + 12, U32(127), "material number in full is 127, expected 128 or more"}});
    // Padding means nothing.
    EXPECT_TRUE(FaultsOf(PatchedU8(PatchedU8(file, kRecord + 2, 7), kBody + 25, 7)).empty());
}

TEST(MeshReaderFaultTest, VerticesAndFaces) {
    const std::string file = MeshFile({Cube()});
    constexpr std::size_t kVertices = kRecord + 12;
    constexpr std::size_t kFaces = kVertices + 24 * 28;
    ExpectFaults(
        file, "mesh",
        {{kVertices + 5 * 28, U32(8), "original vertex is 8, expected 1 to 7"},
         {kVertices + 6 * 28, U32(0), "original vertex is 0, expected 1 to 7"},
         {kVertices, U32(0xffffffff), "original vertex is -1, expected 0 to 7"},
         {kFaces + 35 * 4, U32(24), "face's vertex is 24, expected less than the sub-mesh's 24"}});
    EXPECT_TRUE(ReadExact(PatchedU32(file, kFaces, 24)).file.value().chunks.empty());
}

// The fault of the try that came furthest is told, and with how many pairs that was.
TEST(MeshReaderFaultTest, FaceOfAMeshWithUncountedPairs) {
    const std::string file = MeshFile({Triangle(0, 1, 3)});
    const std::size_t faces = kRecord + 12 + 3 * (28 + 24);
    EXPECT_EQ(OnlyFaultOf(PatchedU32(file, faces + 8, 3)),
              MeshFault(faces + 8,
                        "face's vertex is 3, expected less than the sub-mesh's 3 (with 3 texture "
                        "coordinate pairs a vertex)"));
}

TEST(MeshReaderFaultTest, NumbersThatAreNotFinite) {
    MeshFields mesh = Triangle(0, 1, 1);
    std::vector<VertexFields>& vertices = mesh.subMeshes[0].vertices;
    vertices[0].position[2] = kInfinity;
    vertices[1].position = {-kInfinity, kInfinity, 0};
    vertices[2].position[0] = std::numeric_limits<float>::quiet_NaN();
    vertices[1].normal[0] = kInfinity;
    vertices[2].pairs[0][1] = kInfinity;
    const std::string bytes = MeshFile({mesh});
    const std::size_t at = kRecord + 12;
    EXPECT_EQ(FaultsOf(bytes),
              (std::vector<std::string>{
                  MeshFault(at + 4,
                            "position is not a finite number, nor are 2 more of the "
                            "sub-mesh"),
                  MeshFault(at + 36 + 16, "normal is not a finite number"),
                  MeshFault(at + 72 + 28, "texture coordinate pair is not a finite number")}));
    EXPECT_EQ(MeshOf(ReadExact(bytes)).subMeshes[0].vertices[1].position[1], kInfinity);
}

// ---------------------------------------------------------------- cut and damaged files

std::string QuirkyMeshes() {
    MeshFields mesh = Triangle(200, 1, 2);
    mesh.subMeshes.push_back(Triangle(3, 1, 2).subMeshes[0]);
    return kActor + MaterialChunk({}) + LayerChunk({}) + NodeChunk({}) + MeshChunk(mesh) +
           MeshChunk(Cube());
}

TEST(MeshReaderTruncationTest, EveryPrefix) {
    ReadPrefixes(QuirkyMeshes());
}

TEST(MeshReaderMutationTest, DamagedMeshesAreReportedInBounds) {
    const int faulty = ReadDamaged(QuirkyMeshes());
    EXPECT_GT(faulty, 2500);
    EXPECT_LT(faulty, 10000);
}

}  // namespace
