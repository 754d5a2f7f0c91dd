#include <gtest/gtest.h>
#include <max.h>
#include <maxapi.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

#include "core/log.h"
#include "host/sdk/host.h"
#include "host/sdk/live_objects.h"
#include "tests/support/chunks.h"
#include "tests/support/export_run.h"
#include "tests/support/kta_bytes.h"
#include "tests/support/open_pass.h"
#include "tests/support/scene_parts.h"

namespace {

namespace scene = maxhost::scene;
using scene::Scene;
using scene::Vec2;
using scene::Vec3;
using support::Bytes;
using support::Chunk;
using support::ChunksOf;
using support::CountLines;
using support::Export;
using support::ExportChoices;
using support::ExportRun;

constexpr std::uint32_t kMeshChunk = 3;

scene::Mesh TriangleMesh() {
    scene::Mesh mesh;
    mesh.vertices = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    mesh.faces = {{{0, 1, 2}}};
    return mesh;
}

scene::Node MeshNode(scene::Mesh mesh) {
    scene::Node node;
    node.name = "Mesh";
    node.object.emplace().mesh = std::make_shared<const scene::Mesh>(std::move(mesh));
    return node;
}

Scene MeshScene(scene::Mesh mesh) {
    Scene scene;
    scene.nodes = {MeshNode(std::move(mesh))};
    return scene;
}

// The node gets a material whose sub-materials have the numbers 1 to `count`.
void UseSubMaterials(Scene& scene, int count) {
    auto multi = std::make_shared<scene::Material>();
    multi->kind = scene::MaterialKind::multi;
    for (int i = 0; i < count; ++i) {
        multi->subMaterials.push_back(std::make_shared<const scene::Material>());
    }
    scene.materials = {multi};
    scene.nodes[0].material = 0;
}

void Place(scene::Node& node, const scene::Matrix& matrix) {
    node.transform.emplace().kind = scene::MatrixTransform{matrix};
}

std::vector<Chunk> Meshes(const ExportRun& run, int emptyChannels = 0) {
    return ChunksOf(run.actor.value(), kMeshChunk, emptyChannels);
}

Chunk OnlyMesh(const ExportRun& run, int emptyChannels = 0) {
    const std::vector<Chunk> meshes = Meshes(run, emptyChannels);
    EXPECT_EQ(meshes.size(), 1u);
    return meshes.empty() ? Chunk{} : meshes[0];
}

// The header of a mesh that is no collision mesh.
struct Header {
    std::uint32_t node = 0, original = 0, vertices = 0, indices = 0, subMeshes = 1, channels = 0;
};

Bytes HeaderBytes(const Header& h, bool isCollision = false) {
    return Bytes()
        .U32(h.node)
        .U32(h.original)
        .U32(h.vertices)
        .U32(h.indices)
        .U32(h.subMeshes)
        .U32(h.channels)
        .U32(isCollision ? 1 : 0);
}

void AddVertex(Bytes& bytes, std::uint32_t original, const Vec3& position, const Vec3& normal,
               const std::vector<Vec2>& uvs = {}) {
    bytes.U32(original)
        .F32({position[0], position[1], position[2]})
        .F32({normal[0], normal[1], normal[2]});
    for (const Vec2& uv : uvs) {
        bytes.F32({uv[0], uv[1]});
    }
}

// (v1 - v0) x (v2 - v1) of TriangleMesh's face, (1, 0, 0) x (-1, 1, 0), in the file's order of
// axes.
constexpr Vec3 kUpInFile = {0, 1, -0.0f};

// Appends the bytes behind the material number of TriangleMesh's one sub-mesh, in object space.
void AddTriangle(Bytes& bytes) {
    AddVertex(bytes, 0, {0, 0, 0}, kUpInFile);
    AddVertex(bytes, 1, {1, 0, 0}, kUpInFile);
    AddVertex(bytes, 2, {0, 0, 1}, kUpInFile);
    bytes.U32(0).U32(1).U32(2);
}

std::string TriangleBody(bool isCollision = false) {
    Bytes bytes = HeaderBytes({0, 3, 3, 3}, isCollision);
    bytes.U32(1).U32(3).U32(3);
    AddTriangle(bytes);
    return bytes.Str();
}

// The lines from the one that tells of the node's mesh on.
std::vector<std::string> LogOfTheMesh(const ExportRun& run, std::size_t count) {
    const auto begin = std::find(run.log.begin(), run.log.end(), "  + Exporting mesh...");
    const std::size_t left = static_cast<std::size_t>(run.log.end() - begin);
    return std::vector(begin, begin + static_cast<std::ptrdiff_t>(std::min(count, left)));
}

// ---------------------------------------------------------------- whole chunks

// The identity, too, is a transform: what it makes of -0 is 0.
TEST(MeshExport, PositionsOfUnskinnedMeshesPassTheIdentity) {
    scene::Mesh mesh = TriangleMesh();
    mesh.vertices[0] = {-0.0f, -0.0f, -0.0f};
    EXPECT_EQ(Export(MeshScene(mesh)).actor, Export(MeshScene(TriangleMesh())).actor);
}

TEST(MeshExport, SingleTriangleByteForByte) {
    const ExportRun run = Export(MeshScene(TriangleMesh()));
    const Chunk chunk = OnlyMesh(run);
    EXPECT_EQ(chunk.version, 3u);
    EXPECT_EQ(chunk.size, 28 + (3 + 3) * 4 + 3 * 28u);
    EXPECT_EQ(chunk.body, TriangleBody());
    // The chunk stands right behind its node's.
    const std::vector<Chunk> all = support::Chunks(*run.actor);
    ASSERT_GE(all.size(), 2u);
    EXPECT_EQ(all[all.size() - 2].id, 0u);
    EXPECT_EQ(all.back().id, kMeshChunk);
}

TEST(MeshExport, LogOfATriangle) {
    const std::vector<std::string> expected = {
        "  + Exporting mesh...",
        "Exporting mesh...",
        "EXPORTING SUBMESHES (Vertex Pass)",
        "Num SubMeshes: 1",
        "SubMesh #0:",
        "    + Material : 1",
        "    + Num Verts: 0",
        "    + Num Faces: 0",
        "EXPORTING SUBMESHES (Index Pass)",
        "Num SubMeshes: 1",
        "SubMesh #0:",
        "    + Material : 1",
        "    + Num Verts: 3",
        "    + Num Faces: 1",
        "    + Texture map channels = 0",
        "    + Original mesh vertices = 3",
        "Writing to disk...",
        "    + Vertex ratio factor = 100.0%",
    };
    EXPECT_EQ(LogOfTheMesh(Export(MeshScene(TriangleMesh())), expected.size()), expected);
}

TEST(MeshExport, EmptyMeshWritesNothing) {
    const ExportRun run = Export(MeshScene({}));
    EXPECT_TRUE(Meshes(run).empty());
    const std::vector<std::string> expected = {
        "  + Exporting mesh...",
        "Exporting mesh...",
        "EXPORTING SUBMESHES (Vertex Pass)",
        "Num SubMeshes: 0",
        "EXPORTING SUBMESHES (Index Pass)",
        "Num SubMeshes: 0",
        "    + Texture map channels = 0",
        "    + Original mesh vertices = 0",
    };
    EXPECT_EQ(LogOfTheMesh(run, expected.size()), expected);
    EXPECT_EQ(CountLines(run, "Writing to disk..."), 0);
}

TEST(MeshExport, VerticesWithoutFacesWriteNothing) {
    scene::Mesh mesh = TriangleMesh();
    mesh.faces.clear();
    EXPECT_TRUE(Meshes(Export(MeshScene(mesh))).empty());
}

TEST(MeshExport, ATriangleWithFewerThanThreeVerticesIsNotWritten) {
    scene::Mesh mesh = TriangleMesh();
    mesh.faces[0].v = {1, 1, 2};
    const ExportRun run = Export(MeshScene(mesh));
    EXPECT_TRUE(Meshes(run).empty());
    EXPECT_EQ(CountLines(run, "    + Num Verts: 2"), 1);
    EXPECT_EQ(CountLines(run, "Writing to disk..."), 0);
}

TEST(MeshExport, GeometryThatDoesNotConvertWritesNothing) {
    Scene scene;
    scene.nodes.resize(1);
    scene.nodes[0].object.emplace().superClassId = 0x10;
    scene.nodes[0].object->classId = {0x1234, 0};
    const ExportRun run = Export(scene);
    EXPECT_TRUE(Meshes(run).empty());
    EXPECT_EQ(CountLines(run, "EXPORTING SUBMESHES (Vertex Pass)"), 1);
    EXPECT_EQ(CountLines(run, "EXPORTING SUBMESHES (Index Pass)"), 1);
    EXPECT_EQ(CountLines(run, "Num SubMeshes: 0"), 0);
    EXPECT_EQ(CountLines(run, "    + Texture map channels = 0"), 0);
}

// Corners are numbered in binary: bit 0 is x, bit 1 is y, bit 2 is z.
scene::Mesh Cube() {
    scene::Mesh mesh;
    for (int i = 0; i < 8; ++i) {
        mesh.vertices.push_back({i & 1 ? 1.0f : 0.0f, i & 2 ? 1.0f : 0.0f, i & 4 ? 1.0f : 0.0f});
    }
    const std::array<std::uint32_t, 4> sides[6] = {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4},
                                                   {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}};
    for (int i = 0; i < 6; ++i) {
        const auto& s = sides[i];
        mesh.faces.push_back({{s[0], s[1], s[2]}, 1u << i, 0});
        mesh.faces.push_back({{s[0], s[2], s[3]}, 1u << i, 0});
    }
    return mesh;
}

TEST(MeshExport, CubeOfSixSmoothingGroups) {
    const ExportRun run = Export(MeshScene(Cube()));
    const Chunk chunk = OnlyMesh(run);
    const Bytes header = HeaderBytes({0, 8, 24, 36}).U32(1).U32(36).U32(24);
    EXPECT_EQ(chunk.body.substr(0, 40), header.Str());
    EXPECT_EQ(chunk.size, 28 + (36 + 3) * 4 + 24 * 28u);
    EXPECT_EQ(chunk.body.size(), chunk.size);
    EXPECT_EQ(CountLines(run, "    + Vertex ratio factor = 300.0%"), 1);
    // Three vertices for each original one, in order of the sides: -z, -y and -x at the first.
    Bytes first;
    AddVertex(first, 0, {0, 0, 0}, {0, -1, 0});
    AddVertex(first, 0, {0, 0, 0}, {0, 0, -1});
    AddVertex(first, 0, {0, 0, 0}, {-1, 0, 0});
    EXPECT_EQ(chunk.body.substr(40, 3 * 28), first.Str());
    for (std::size_t i = 0; i < 24; ++i) {
        EXPECT_EQ(support::U32At(chunk.body, 40 + i * 28), i / 3);
    }
    // The first side, and its corners' order is kept.
    const std::size_t faces = 40 + 24 * 28;
    EXPECT_EQ(chunk.body.substr(faces, 24),
              Bytes().U32(0).U32(6).U32(9).U32(0).U32(9).U32(3).Str());
}

// ---------------------------------------------------------------- materials

scene::Mesh TwoTriangles(std::uint16_t first, std::uint16_t second) {
    scene::Mesh mesh = TriangleMesh();
    mesh.faces = {{{0, 1, 2}, 0, first}, {{0, 1, 2}, 0, second}};
    return mesh;
}

TEST(MeshExport, SubMeshesStandInOrderOfTheirFirstFaces) {
    Scene scene = MeshScene(TwoTriangles(1, 0));
    UseSubMaterials(scene, 2);
    const ExportRun run = Export(scene);
    Bytes expected = HeaderBytes({0, 3, 6, 6, 2});
    for (const std::uint32_t material : {2, 1}) {
        expected.U32(material).U32(3).U32(3);
        AddTriangle(expected);
    }
    const Chunk chunk = OnlyMesh(run);
    EXPECT_EQ(chunk.body, expected.Str());
    EXPECT_EQ(chunk.size, chunk.body.size());
    EXPECT_EQ(CountLines(run, "SubMesh #1:"), 2);
    EXPECT_EQ(CountLines(run, "    + Vertex ratio factor = 200.0%"), 1);
}

TEST(MeshExport, MaterialNumbersFrom128OnFollowInFull) {
    Scene scene = MeshScene(TwoTriangles(199, 126));
    UseSubMaterials(scene, 200);
    const Chunk chunk = OnlyMesh(Export(scene));
    Bytes expected = HeaderBytes({0, 3, 6, 6, 2});
    expected.U32(255).U32(3).U32(3).U32(200);
    AddTriangle(expected);
    expected.U32(127).U32(3).U32(3);
    AddTriangle(expected);
    EXPECT_EQ(chunk.body, expected.Str());
    // The full number's four bytes are not announced.
    EXPECT_EQ(chunk.size, chunk.body.size() - 4);
}

TEST(MeshExport, MaterialNumber128IsTheFirstInFull) {
    Scene scene = MeshScene(TwoTriangles(127, 127));
    UseSubMaterials(scene, 128);
    const Chunk chunk = OnlyMesh(Export(scene));
    EXPECT_EQ(chunk.body.substr(28, 16), Bytes().U32(255).U32(6).U32(3).U32(128).Str());
    EXPECT_EQ(chunk.size, chunk.body.size() - 4);
}

TEST(MeshExport, FaceWithoutSubMaterialHasNumberZero) {
    Scene scene = MeshScene(TwoTriangles(5, 0));
    UseSubMaterials(scene, 1);
    const Chunk chunk = OnlyMesh(Export(scene));
    EXPECT_EQ(support::U32At(chunk.body, 28), 0u);
    EXPECT_EQ(support::U32At(chunk.body, 28 + 12 + 3 * 28 + 12), 1u);
}

// ---------------------------------------------------------------- texture coordinates

TEST(MeshExport, EmptyChannelGivesDefaultsThatAreNotCounted) {
    scene::Mesh mesh = TriangleMesh();
    mesh.channels[1] = {};
    const ExportRun run = Export(MeshScene(mesh));
    const Chunk chunk = OnlyMesh(run, 1);
    Bytes expected = HeaderBytes({0, 3, 3, 3});
    expected.U32(1).U32(3).U32(3);
    AddVertex(expected, 0, {0, 0, 0}, kUpInFile, {{0, 0}});
    AddVertex(expected, 1, {1, 0, 0}, kUpInFile, {{1, 0}});
    AddVertex(expected, 2, {0, 0, 1}, kUpInFile, {{0, 1}});
    expected.U32(0).U32(1).U32(2);
    EXPECT_EQ(chunk.body, expected.Str());
    EXPECT_EQ(chunk.size, chunk.body.size() - 3 * 8);
    EXPECT_EQ(CountLines(run, "    + Texture map channels = 0"), 1);
}

TEST(MeshExport, ChannelsStandInOrderWithVTurnedOver) {
    scene::Mesh mesh = TriangleMesh();
    mesh.channels[98] = {{{5, 0.25f}}, {{0, 0, 0}}};
    mesh.channels[2] = {};
    mesh.channels[1] = {{{0.5f, 0}, {1, 1}, {-2, 3}}, {{2, 1, 0}}};
    mesh.channels[99] = {{{7, 7}}, {{0, 0, 0}}};
    const ExportRun run = Export(MeshScene(mesh));
    const Chunk chunk = OnlyMesh(run, 1);
    Bytes expected = HeaderBytes({0, 3, 3, 3, 1, 2});
    expected.U32(1).U32(3).U32(3);
    AddVertex(expected, 0, {0, 0, 0}, kUpInFile, {{-2, -2}, {0, 0}, {5, 0.75f}});
    AddVertex(expected, 1, {1, 0, 0}, kUpInFile, {{1, 0}, {1, 0}, {5, 0.75f}});
    AddVertex(expected, 2, {0, 0, 1}, kUpInFile, {{0.5f, 1}, {0, 1}, {5, 0.75f}});
    expected.U32(0).U32(1).U32(2);
    EXPECT_EQ(chunk.body, expected.Str());
    EXPECT_EQ(chunk.size, 28 + (3 + 3) * 4 + 3 * 28 + 3 * 2 * 8u);
    EXPECT_EQ(CountLines(run, "    + Texture map channels = 2"), 1);
}

TEST(MeshExport, CornersOfDifferentCoordinatesAreTwoVertices) {
    scene::Mesh mesh = TriangleMesh();
    mesh.vertices.push_back({1, 1, 0});
    mesh.faces = {{{0, 1, 2}}, {{1, 3, 2}}};
    // Vertex 1 has one pair, under two numbers; vertex 2 has two.
    mesh.channels[1] = {{{0, 0}, {1, 0}, {1, 0}, {0, 1}, {0.5f, 1}}, {{0, 1, 3}, {2, 0, 4}}};
    const Chunk chunk = OnlyMesh(Export(MeshScene(mesh)));
    Bytes expected = HeaderBytes({0, 4, 5, 6, 1, 1});
    expected.U32(1).U32(6).U32(5);
    AddVertex(expected, 0, {0, 0, 0}, kUpInFile, {{0, 1}});
    AddVertex(expected, 1, {1, 0, 0}, kUpInFile, {{1, 1}});
    AddVertex(expected, 2, {0, 0, 1}, kUpInFile, {{0, 0}});
    AddVertex(expected, 2, {0, 0, 1}, kUpInFile, {{0.5f, 0}});
    AddVertex(expected, 3, {1, 0, 1}, kUpInFile, {{0, 1}});
    expected.U32(0).U32(1).U32(2).U32(1).U32(4).U32(3);
    EXPECT_EQ(chunk.body, expected.Str());
}

// ---------------------------------------------------------------- normals

// Two triangles that meet at a right angle along the edge from vertex 0 to 1: one lies in the plane
// of x and y with normal z, the other in that of x and z with normal -y.
scene::Mesh Fold(std::uint32_t firstGroup, std::uint32_t secondGroup) {
    scene::Mesh mesh;
    mesh.vertices = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    mesh.faces = {{{0, 1, 2}, firstGroup, 0}, {{0, 1, 3}, secondGroup, 0}};
    return mesh;
}

// The normals written for an original vertex, in 3ds Max's order of axes.
std::vector<Vec3> NormalsOf(const Chunk& chunk, std::uint32_t original) {
    std::vector<Vec3> normals;
    for (std::uint32_t i = 0; i < support::U32At(chunk.body, 8); ++i) {
        const std::size_t at = 40 + i * 28;
        if (support::U32At(chunk.body, at) == original) {
            normals.push_back({support::F32At(chunk.body, at + 16),
                               support::F32At(chunk.body, at + 24),
                               support::F32At(chunk.body, at + 20)});
        }
    }
    return normals;
}

using Normals = std::vector<Vec3>;
constexpr Vec3 kUp = {0, 0, 1};
constexpr Vec3 kFront = {0, -1, 0};

TEST(MeshNormals, FacetedFacesHaveTheirOwn) {
    const Chunk chunk = OnlyMesh(Export(MeshScene(Fold(0, 0))));
    EXPECT_EQ(NormalsOf(chunk, 0), (Normals{kUp, kFront}));
    EXPECT_EQ(NormalsOf(chunk, 2), Normals{kUp});
}

TEST(MeshNormals, OneNormalIsShared) {
    const Chunk chunk = OnlyMesh(Export(MeshScene(Fold(1, 1))));
    ASSERT_EQ(NormalsOf(chunk, 0).size(), 1u);
    EXPECT_FLOAT_EQ(NormalsOf(chunk, 0)[0][1], -support::kHalfRoot);
    EXPECT_FLOAT_EQ(NormalsOf(chunk, 0)[0][2], support::kHalfRoot);
}

TEST(MeshNormals, AFacetedFaceBesideASmoothOneKeepsItsOwn) {
    const Chunk chunk = OnlyMesh(Export(MeshScene(Fold(0, 4))));
    EXPECT_EQ(NormalsOf(chunk, 1), (Normals{kUp, kFront}));
}

TEST(MeshNormals, OfSeveralTheFirstThatSharesAGroup) {
    EXPECT_EQ(NormalsOf(OnlyMesh(Export(MeshScene(Fold(2, 1)))), 0), (Normals{kUp, kFront}));
    // A third face in another material, whose groups meet both: the first normal is its as well.
    scene::Mesh mesh = Fold(2, 1);
    mesh.vertices.push_back({0, 0, -1});
    mesh.faces.push_back({{0, 4, 1}, 3, 7});
    mesh.faces.push_back({{0, 2, 3}, 0, 7});
    const Chunk chunk = OnlyMesh(Export(MeshScene(mesh)));
    EXPECT_EQ(NormalsOf(chunk, 0), (Normals{kUp, kFront, {1, 0, 0}}));
    // Its own corner has its own normal alone.
    EXPECT_EQ(NormalsOf(chunk, 4), Normals{kFront});
}

TEST(MeshNormals, SpecifiedOnesComeFirst) {
    scene::Mesh mesh = Fold(0, 1);
    mesh.normals[0] = {0.6f, 0, 0.8f};
    mesh.normals[2] = {0, 2, 0};
    const Chunk chunk = OnlyMesh(Export(MeshScene(mesh)));
    EXPECT_EQ(NormalsOf(chunk, 0), (Normals{{0.6f, 0, 0.8f}}));
    EXPECT_EQ(NormalsOf(chunk, 1), (Normals{kUp, kFront}));
    EXPECT_EQ(NormalsOf(chunk, 2), (Normals{{0, 2, 0}}));
}

TEST(MeshNormals, AFaceWithoutAreaHasNone) {
    scene::Mesh mesh = TriangleMesh();
    mesh.vertices[2] = {3, 0, 0};
    EXPECT_EQ(NormalsOf(OnlyMesh(Export(MeshScene(mesh))), 2), (Normals{{0, 0, 0}}));
}

TEST(MeshExport, FacesWhoseCornersAreNotFoundAreLeftOut) {
    constexpr float kBig = std::numeric_limits<float>::max();
    scene::Mesh mesh = TriangleMesh();
    mesh.vertices.push_back({-kBig, 0, 0});
    mesh.vertices.push_back({kBig, 0, 0});
    mesh.faces = {{{3, 4, 2}, 0, 0}, {{0, 1, 2}, 0, 0}};
    mesh.channels[1] = {};
    const ExportRun run = Export(MeshScene(mesh));
    const Chunk chunk = OnlyMesh(run, 1);
    // Its vertices stay.
    EXPECT_EQ(chunk.body.substr(0, 40), HeaderBytes({0, 5, 6, 3}).U32(1).U32(3).U32(6).Str());
    EXPECT_EQ(chunk.size, 28 + (3 + 3) * 4 + 6 * 28u);
    EXPECT_EQ(chunk.body.substr(chunk.body.size() - 12), Bytes().U32(0).U32(1).U32(3).Str());
    const std::vector<std::string> expected = {
        "EXPORTING SUBMESHES (Index Pass)",
        "WARNING: Failed to find the indices for a given triangle!!!",
        "indices  = [-1, -1, -1]",
        "orgVerts = [3, 4, 2]",
        "numUVs   = [1, 1, 1]",
        "Num SubMeshes: 1",
        "SubMesh #0:",
        "    + Material : 1",
        "    + Num Verts: 6",
        "    + Num Faces: 1",
    };
    const auto begin = std::find(run.log.begin(), run.log.end(), expected[0]);
    ASSERT_GE(run.log.end() - begin, static_cast<std::ptrdiff_t>(expected.size()));
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), begin));
    EXPECT_EQ(CountLines(run, "    + Vertex ratio factor = 120.0%"), 1);
}

TEST(MeshExport, AMeshWithoutAnyFaceThatIsFoundIsNotWritten) {
    constexpr float kBig = std::numeric_limits<float>::max();
    scene::Mesh mesh = TriangleMesh();
    mesh.vertices = {{-kBig, 0, 0}, {kBig, 0, 0}, {0, 1, 0}};
    const ExportRun run = Export(MeshScene(mesh));
    EXPECT_TRUE(Meshes(run).empty());
    EXPECT_EQ(CountLines(run, "Writing to disk..."), 0);
}

// ---------------------------------------------------------------- skinned meshes

const scene::Matrix kStretchedAndMoved = {{{2, 0, 0}, {0, 3, 0}, {0, 0, 1}, {10, 20, 30}}};

// A triangle with vertices (1, 0, 0), (0, 1, 0), (0, 0, 1): its normal has three equal components.
scene::Mesh Slanted() {
    scene::Mesh mesh;
    mesh.vertices = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    mesh.faces = {{{0, 1, 2}}};
    return mesh;
}

Chunk ExportSlanted(std::vector<scene::Modifier> modifiers,
                    std::vector<scene::Modifier> referenceModifiers = {}) {
    Scene scene = MeshScene(Slanted());
    Place(scene.nodes[0], kStretchedAndMoved);
    scene.nodes[0].objectOffset[3] = {0, 0, 5};
    scene.nodes[0].modifiers = std::move(modifiers);
    scene.nodes[0].referenceModifiers = std::move(referenceModifiers);
    return OnlyMesh(Export(scene));
}

Vec3 PositionOf(const Chunk& chunk, std::size_t vertex) {
    const std::size_t at = 40 + vertex * 28;
    return {support::F32At(chunk.body, at + 4), support::F32At(chunk.body, at + 12),
            support::F32At(chunk.body, at + 8)};
}

void ExpectWorldSpace(const Chunk& chunk) {
    EXPECT_EQ(PositionOf(chunk, 0), (Vec3{12, 20, 35}));
    EXPECT_EQ(PositionOf(chunk, 1), (Vec3{10, 23, 35}));
    EXPECT_EQ(PositionOf(chunk, 2), (Vec3{10, 20, 36}));
    // The normal transform has no scale.
    const Vec3 normal = NormalsOf(chunk, 0).at(0);
    for (const float component : normal) {
        EXPECT_FLOAT_EQ(component, std::sqrt(1.0f / 3));
    }
}

void ExpectObjectSpace(const Chunk& chunk) {
    EXPECT_EQ(PositionOf(chunk, 0), (Vec3{1, 0, 0}));
    EXPECT_EQ(PositionOf(chunk, 1), (Vec3{0, 1, 0}));
    EXPECT_EQ(PositionOf(chunk, 2), (Vec3{0, 0, 1}));
}

// Knows all vertices of the triangle, but no bones.
const scene::Modifier kPhysique = {
    true, scene::Physique{decltype(scene::Physique::vertices)(3, scene::PhysiqueBlended{})}};

TEST(SkinnedMesh, StandsInWorldSpace) {
    ExpectWorldSpace(ExportSlanted({{true, scene::Skin{}}}));
    ExpectWorldSpace(ExportSlanted({kPhysique}));
    ExpectWorldSpace(ExportSlanted({{true, scene::OtherModifier{{1, 2}}}, kPhysique}));
    ExpectWorldSpace(
        ExportSlanted({{true, scene::Skin{}}}, {{false, scene::OtherModifier{{1, 2}}}}));
    ExpectWorldSpace(ExportSlanted({}, {{true, scene::Skin{}}}));
}

TEST(SkinnedMesh, OthersStandInObjectSpace) {
    ExpectObjectSpace(ExportSlanted({}));
    ExpectObjectSpace(ExportSlanted({{false, scene::Skin{}}, {false, scene::Physique{}}}));
    ExpectObjectSpace(ExportSlanted({{true, scene::OtherModifier{{1, 2}}}}));
}

TEST(SkinnedMesh, ByteForByteUnderAMirror) {
    Scene scene = MeshScene(TriangleMesh());
    // Mirrored in z and turned by a quarter about z, twice as large, moved.
    Place(scene.nodes[0], {{{0, 2, 0}, {-2, 0, 0}, {0, 0, -2}, {1, 2, 3}}});
    scene.nodes[0].modifiers = {{true, scene::Skin{}}};
    const Chunk chunk = OnlyMesh(Export(scene));
    Bytes expected = HeaderBytes({0, 3, 3, 3});
    expected.U32(1).U32(3).U32(3);
    AddVertex(expected, 0, {1, 3, 2}, {0, -1, 0});
    AddVertex(expected, 1, {1, 3, 4}, {0, -1, 0});
    AddVertex(expected, 2, {-1, 3, 2}, {0, -1, 0});
    // The winding stays as it is under a mirror as well.
    expected.U32(0).U32(1).U32(2);
    EXPECT_EQ(chunk.body, expected.Str());
}

TEST(SkinnedMesh, SpecifiedNormalsGetLengthOne) {
    Scene scene = MeshScene(TriangleMesh());
    scene::Mesh mesh = TriangleMesh();
    mesh.normals[0] = {0, 0, 5};
    scene = MeshScene(mesh);
    scene.nodes[0].modifiers = {{true, scene::Skin{}}};
    EXPECT_EQ(NormalsOf(OnlyMesh(Export(scene)), 0), Normals{kUp});
}

// ---------------------------------------------------------------- which meshes

ExportRun ExportWithSettings(const Scene& scene, bool collision, bool nonRenderable) {
    ExportChoices choices;
    choices.settings = Bytes().U8(collision).U8(0).U8(1).U8(nonRenderable).Str();
    return Export(scene, choices);
}

TEST(MeshExport, CollisionMeshesAreMarked) {
    Scene scene = MeshScene(TriangleMesh());
    scene.nodes[0].userProperties = "CollisionMesh";
    const Chunk chunk = OnlyMesh(ExportWithSettings(scene, true, false));
    EXPECT_EQ(chunk.body, TriangleBody(true));
    EXPECT_TRUE(Meshes(ExportWithSettings(scene, false, false)).empty());
}

TEST(MeshExport, NonRenderableMeshesFollowTheirOption) {
    Scene scene = MeshScene(TriangleMesh());
    scene.nodes[0].renderable = false;
    EXPECT_TRUE(Meshes(ExportWithSettings(scene, false, false)).empty());
    EXPECT_EQ(OnlyMesh(ExportWithSettings(scene, false, true)).body, TriangleBody());
}

TEST(MeshExport, NodeNumbersCountTheNodesWritten) {
    Scene scene;
    scene.nodes.resize(2);
    scene.nodes[0].name = "Helper";
    scene.nodes[1].transform.emplace().kind = scene::FootprintTransform{};
    scene.nodes.push_back(MeshNode(TriangleMesh()));
    scene.nodes.push_back(MeshNode(TriangleMesh()));
    const std::vector<Chunk> meshes = Meshes(Export(scene));
    ASSERT_EQ(meshes.size(), 2u);
    EXPECT_EQ(support::U32At(meshes[0].body, 0), 1u);
    EXPECT_EQ(support::U32At(meshes[1].body, 0), 2u);
    // Each node has a wire colour material of its own; those of the first two count as well.
    EXPECT_EQ(support::U32At(meshes[0].body, 28), 3u);
    EXPECT_EQ(support::U32At(meshes[1].body, 28), 4u);
}

TEST(MeshExport, MeshesThatConvertToNewObjectsLeaveNone) {
    const int before = maxhost::LiveObjectCount();
    Scene scene = MeshScene(TriangleMesh());
    scene.nodes.push_back(MeshNode({}));
    scene.nodes.push_back(MeshNode(TriangleMesh()));
    for (scene::Node& node : scene.nodes) {
        node.object->classId = {0x1bf8338d, 0x192f6098};
    }
    scene.nodes[2].modifiers = {{true, scene::Skin{}}};
    const ExportRun run = Export(scene);
    EXPECT_EQ(maxhost::LiveObjectCount(), before);
    ASSERT_EQ(Meshes(run).size(), 2u);
    EXPECT_EQ(Meshes(run)[0].body, TriangleBody());
}

// ---------------------------------------------------------------- the pass itself

TEST(Exporter, MeshOfANodeThatWasNotWrittenHasNodeNumberMinusOne) {
    Scene scene = MeshScene(TriangleMesh());
    maxhost::Host::Instance().OpenScene(scene);
    {
        support::OpenPass pass;
        ExportMesh(*pass, maxhost::Host::Instance().Nodes()[0], false);
        // Without a material list, the material is the number 0.
        Bytes expected = Bytes().U32(3).U32(136).U32(3);
        expected.Text(HeaderBytes({0xffffffff, 3, 3, 3}).Str()).U32(0).U32(3).U32(3);
        AddTriangle(expected);
        EXPECT_EQ(pass.Written(), expected.Str());
    }
    maxhost::Host::Instance().CloseScene();
}

TEST(Exporter, MeshWithoutAnOpenFileIsLoggedAlone) {
    const support::WorkDirectory directory;
    Scene scene = MeshScene(TriangleMesh());
    maxhost::Host::Instance().OpenScene(scene);
    Plinth::GetLogManager().AddLogFileCallback("log");
    {
        ExportPass pass(maxhost::Host::Instance().GetInterface(), DefaultExportOptions());
        ExportMesh(pass, maxhost::Host::Instance().Nodes()[0], false);
    }
    Plinth::GetLogManager().ClearLogCallbacks();
    const std::string log = support::ReadFile("log");
    EXPECT_NE(log.find("Writing to disk..."), std::string::npos);
    EXPECT_NE(log.find("    + Vertex ratio factor = 100.0%"), std::string::npos);
    maxhost::Host::Instance().CloseScene();
}

TEST(Exporter, NodeWithoutGeometryHasNoMesh) {
    Scene scene;
    scene.nodes.resize(1);
    maxhost::Host::Instance().OpenScene(scene);
    {
        support::OpenPass pass;
        ExportMesh(*pass, maxhost::Host::Instance().Nodes()[0], false);
        EXPECT_EQ(pass.Written(), "");
    }
    maxhost::Host::Instance().CloseScene();
}

// ---------------------------------------------------------------- large meshes

// A grid of squares in two triangles each, smooth, with two sets of texture coordinates.
scene::Mesh Grid(std::uint32_t side) {
    scene::Mesh mesh;
    const std::uint32_t points = side + 1;
    for (std::uint32_t y = 0; y < points; ++y) {
        for (std::uint32_t x = 0; x < points; ++x) {
            mesh.vertices.push_back({static_cast<float>(x), static_cast<float>(y), 0});
            mesh.channels[1].vertices.push_back({static_cast<float>(x), static_cast<float>(y)});
        }
    }
    for (std::uint32_t i = 0; i < side * side; ++i) {
        const std::uint32_t a = i / side * points + i % side;
        mesh.faces.push_back({{a, a + 1, a + points}, 1, 0});
        mesh.faces.push_back({{a + 1, a + points + 1, a + points}, 1, 0});
    }
    for (const scene::Face& face : mesh.faces) {
        mesh.channels[1].faces.push_back(face.v);
    }
    mesh.channels[2] = mesh.channels[1];
    return mesh;
}

TEST(LargeMesh, AHundredThousandTrianglesWithTwoSetsOfCoordinates) {
    constexpr std::uint32_t kSide = 224, kFaces = 2 * kSide * kSide;
    constexpr std::uint32_t kPoints = (kSide + 1) * (kSide + 1);
    const ExportRun run = Export(MeshScene(Grid(kSide)));
    const Chunk chunk = OnlyMesh(run);
    EXPECT_EQ(chunk.body.substr(0, 40), HeaderBytes({0, kPoints, kPoints, 3 * kFaces, 1, 2})
                                            .U32(1)
                                            .U32(3 * kFaces)
                                            .U32(kPoints)
                                            .Str());
    EXPECT_EQ(chunk.size, 28 + (3 * kFaces + 3) * 4 + kPoints * (28 + 16));
    // Vertices keep their numbers here; the last face's corners are checked for all.
    EXPECT_EQ(chunk.body.substr(chunk.body.size() - 12),
              Bytes().U32(kPoints - kSide - 2).U32(kPoints - 1).U32(kPoints - 2).Str());
    EXPECT_EQ(CountLines(run, "    + Vertex ratio factor = 100.0%"), 1);
}

TEST(LargeMesh, AFanOfAHundredThousandFacetedFaces) {
    constexpr std::uint32_t kFaces = 100000;
    scene::Mesh mesh;
    mesh.vertices = {{0, 0, 1}};
    for (std::uint32_t i = 0; i <= kFaces; ++i) {
        const double angle = 6.0 * i / kFaces;
        mesh.vertices.push_back({static_cast<float>(1000 * std::cos(angle)),
                                 static_cast<float>(1000 * std::sin(angle)),
                                 static_cast<float>(i % 7)});
    }
    for (std::uint32_t i = 0; i < kFaces; ++i) {
        mesh.faces.push_back({{0, i + 1, i + 2}, 0, 0});
    }
    const ExportRun run = Export(MeshScene(mesh));
    const Chunk chunk = OnlyMesh(run);
    EXPECT_EQ(support::U32At(chunk.body, 12), 3 * kFaces);
    EXPECT_GT(support::U32At(chunk.body, 8), 2 * kFaces);
}

}  // namespace
