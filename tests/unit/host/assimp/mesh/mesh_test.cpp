// Vertices and the source vertices that become one, faces and map channels.
#include <gtest/gtest.h>

#include <limits>
#include <map>

#include "tests/unit/host/assimp/source_scene.h"

using maxhost::import::ImportedScene;
using maxhost::scene::Face;
using maxhost::scene::MapChannel;
using maxhost::scene::Mesh;
using maxhost::scene::Vec2;
using maxhost::scene::Vec3;
using Corners = std::array<std::uint32_t, 3>;
using Lines = std::vector<std::string>;

namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();

const Mesh& MeshAt(const ImportedScene& imported, std::size_t node = 0) {
    return *imported.scene.nodes.at(node).object.value().mesh;
}

// An FBX scene that is z up already, so that numbers stay as they are.
SourceScene UnturnedScene() {
    SourceScene source(kFbx, "RootNode");
    source.Set("UpAxis", 2);
    source.AddNode(source.Root(), "Node");
    return source;
}

aiNode* NodeOf(SourceScene& source) {
    return source.Root()->mChildren[0];
}

}  // namespace

TEST(MeshPieces, OnePieceStaysAsItIs) {
    SourceScene source = UnturnedScene();
    SourceScene::Show(NodeOf(source),
                      {source.AddMesh("m", {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}},
                                      {{0, 1, 2}, {0, 2, 3}})});
    const ImportedScene imported = source.Convert();
    const Mesh& mesh = MeshAt(imported);
    EXPECT_EQ(mesh.vertices, (std::vector<Vec3>{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}));
    ASSERT_EQ(mesh.faces.size(), 2u);
    EXPECT_EQ(mesh.faces[0].v, (Corners{0, 1, 2}));
    EXPECT_EQ(mesh.faces[1].v, (Corners{0, 2, 3}));
    EXPECT_EQ(mesh.faces[1].material, 0);
    EXPECT_TRUE(mesh.channels.empty());
    EXPECT_TRUE(imported.warnings.empty());
}

TEST(MeshPieces, SeveralBecomeOneMeshWithMaterialIds) {
    SourceScene source = UnturnedScene();
    source.AddMaterial("red");
    source.AddMaterial("green");
    const unsigned a = source.AddTriangle("a", 1);
    const unsigned b = source.AddMesh("b", {{5, 0, 0}, {6, 0, 0}, {5, 1, 0}}, {{2, 1, 0}}, 0);
    const unsigned c = source.AddTriangle("c", 1);
    SourceScene::Show(NodeOf(source), {a, b, c});
    const ImportedScene imported = source.Convert();
    const Mesh& mesh = MeshAt(imported);
    ASSERT_EQ(mesh.vertices.size(), 6u);
    EXPECT_EQ(mesh.vertices[3], (Vec3{5, 0, 0}));
    ASSERT_EQ(mesh.faces.size(), 3u);
    EXPECT_EQ(mesh.faces[1].v, (Corners{5, 4, 3}));
    EXPECT_EQ(mesh.faces[2].v, (Corners{0, 1, 2}));  // c's vertices are where a's are
    // Ids count the materials in the order of the pieces.
    EXPECT_EQ(mesh.faces[0].material, 0);
    EXPECT_EQ(mesh.faces[1].material, 1);
    EXPECT_EQ(mesh.faces[2].material, 0);
}

TEST(MeshPieces, NodesWithTheSamePiecesShareTheMesh) {
    SourceScene source = UnturnedScene();
    const unsigned a = source.AddTriangle("a");
    const unsigned b = source.AddTriangle("b");
    SourceScene::Show(NodeOf(source), {a});
    SourceScene::Show(source.AddNode(source.Root(), "Copy"), {a});
    SourceScene::Show(source.AddNode(source.Root(), "Other"), {b});
    const ImportedScene imported = source.Convert();
    EXPECT_EQ(&MeshAt(imported, 0), &MeshAt(imported, 1));
    EXPECT_NE(&MeshAt(imported, 0), &MeshAt(imported, 2));
}

TEST(MeshFaces, PointsAndLinesAreLeftOutAndCounted) {
    SourceScene source = UnturnedScene();
    const unsigned mixed =
        source.AddMesh("mixed", {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{0}, {0, 1, 2}, {1, 2}, {2}});
    SourceScene::Show(NodeOf(source), {mixed});
    const ImportedScene imported = source.Convert();
    EXPECT_EQ(MeshAt(imported).faces.size(), 1u);
    EXPECT_EQ(imported.warnings, Lines{"mesh 'mixed': points and lines left out (3)"});
}

TEST(MeshFaces, AMeshOfLinesAloneIsEmptyGeometry) {
    SourceScene source = UnturnedScene();
    source.AddMaterial("red");
    SourceScene::Show(NodeOf(source), {source.AddMesh("", {{0, 0, 0}, {1, 0, 0}}, {{0, 1}})});
    const ImportedScene imported = source.Convert();
    EXPECT_TRUE(MeshAt(imported).vertices.empty());
    EXPECT_TRUE(MeshAt(imported).faces.empty());
    EXPECT_EQ(imported.scene.nodes[0].material, maxhost::scene::kNone);
    EXPECT_EQ(imported.warnings, (Lines{"mesh 0: points and lines left out",
                                        "material 'red': left out, no face shows it"}));
}

TEST(MeshFaces, IndicesOutOfRangeAreLeftOutAndCounted) {
    SourceScene source = UnturnedScene();
    const unsigned broken = source.AddMesh("broken", {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}},
                                           {{0, 1, 3}, {0, 1, 2}, {4294967295u, 1, 2}});
    SourceScene::Show(NodeOf(source), {broken});
    const ImportedScene imported = source.Convert();
    ASSERT_EQ(MeshAt(imported).faces.size(), 1u);
    EXPECT_EQ(MeshAt(imported).faces[0].v, (Corners{0, 1, 2}));
    EXPECT_EQ(imported.warnings,
              Lines{"mesh 'broken': faces with a vertex number out of range left out (2)"});
}

TEST(MeshFaces, PolygonsThatAreLeftAreCounted) {
    SourceScene source = UnturnedScene();
    const unsigned quad =
        source.AddMesh("quad", {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, {{0, 1, 2, 3}});
    SourceScene::Show(NodeOf(source), {quad});
    EXPECT_EQ(source.Convert().warnings,
              Lines{"mesh 'quad': polygons that could not be cut into triangles left out"});
}

TEST(MeshFaces, MeshesWithoutFacesOrVerticesDoNoHarm) {
    SourceScene source = UnturnedScene();
    const unsigned empty = source.AddMesh("empty", {}, {});
    delete[] source.Mesh(empty).mFaces;
    source.Mesh(empty).mFaces = nullptr;
    source.Mesh(empty).mNumFaces = 3;
    const unsigned bare = source.AddTriangle("bare");
    delete[] source.Mesh(bare).mVertices;
    source.Mesh(bare).mVertices = nullptr;
    SourceScene::Show(NodeOf(source), {empty, bare});
    const ImportedScene imported = source.Convert();
    EXPECT_TRUE(MeshAt(imported).faces.empty());
    EXPECT_EQ(imported.warnings,
              Lines{"mesh 'bare': faces with a vertex number out of range left out"});
    source.Mesh(empty).mNumFaces = 0;
}

TEST(MeshFaces, ReferencesToMissingMeshesAreLeftOut) {
    SourceScene source = UnturnedScene();
    SourceScene::Show(NodeOf(source), {source.AddTriangle("m"), 77});
    const ImportedScene imported = source.Convert();
    EXPECT_EQ(MeshAt(imported).faces.size(), 1u);
    EXPECT_EQ(imported.warnings,
              Lines{"node 'Node': references to meshes that do not exist left out"});
}

TEST(MeshVertices, NumbersThatAreNotFiniteBecomeZeroWithOneWarningAMesh) {
    SourceScene source = UnturnedScene();
    const unsigned a =
        source.AddMesh("a", {{kInfinity, 1, -kInfinity}, {1, 0, 0}, {0, 1, 0}}, {{0, 1, 2}});
    const unsigned b = source.AddTriangle("b");
    source.AddTextureCoordinates(b, 0, {{std::numeric_limits<float>::quiet_NaN(), 1, 0}, {}, {}});
    SourceScene::Show(NodeOf(source), {a});
    SourceScene::Show(source.AddNode(source.Root(), "B"), {b});
    const ImportedScene imported = source.Convert();
    EXPECT_EQ(MeshAt(imported).vertices[0], (Vec3{0, 1, 0}));
    EXPECT_EQ(MeshAt(imported, 1).channels.at(1).vertices[0], (Vec2{0, 1}));
    EXPECT_EQ(imported.warnings, (Lines{"mesh 'a': numbers that are not finite replaced by 0 (2)",
                                        "mesh 'b': numbers that are not finite replaced by 0"}));
}

TEST(MeshChannels, TextureCoordinatesBecomeMapChannelsFrom1) {
    SourceScene source = UnturnedScene();
    const unsigned m = source.AddTriangle("m");
    source.AddTextureCoordinates(m, 0, {{0.25f, 0.75f, 0}, {1, 0, 0}, {0, 1, 0}});
    source.AddTextureCoordinates(m, 2, {{9, 8, 0}, {7, 6, 0}, {5, 4, 0}});
    SourceScene::Show(NodeOf(source), {m});
    const ImportedScene imported = source.Convert();
    const auto& channels = MeshAt(imported).channels;
    ASSERT_EQ(channels.size(), 2u);
    EXPECT_EQ(channels.at(1).vertices, (std::vector<Vec2>{{0.25f, 0.75f}, {1, 0}, {0, 1}}));
    EXPECT_EQ(channels.at(1).faces, (std::vector<Corners>{{0, 1, 2}}));
    EXPECT_EQ(channels.at(3).vertices[2], (Vec2{5, 4}));
}

TEST(MeshChannels, PiecesWithoutAChannelGetZeroes) {
    SourceScene source = UnturnedScene();
    const unsigned a = source.AddTriangle("a");
    const unsigned b = source.AddTriangle("b");
    const unsigned c = source.AddTriangle("c");
    source.AddTextureCoordinates(b, 0, {{1, 2, 0}, {3, 4, 0}, {5, 6, 0}});
    SourceScene::Show(NodeOf(source), {a, b, c});
    const ImportedScene imported = source.Convert();
    const MapChannel& channel = MeshAt(imported).channels.at(1);
    ASSERT_EQ(channel.faces.size(), 3u);
    const auto coordinate = [&](std::size_t face, std::size_t corner) {
        return channel.vertices.at(channel.faces[face][corner]);
    };
    for (std::size_t corner = 0; corner < 3; ++corner) {
        EXPECT_EQ(coordinate(0, corner), (Vec2{0, 0}));
        EXPECT_EQ(coordinate(2, corner), (Vec2{0, 0}));
    }
    EXPECT_EQ(coordinate(1, 0), (Vec2{1, 2}));
    EXPECT_EQ(coordinate(1, 2), (Vec2{5, 6}));
}

// Every corner keeps its place and its coordinates, whatever the pieces of a mesh have.
TEST(MeshChannels, CornersKeepTheirCoordinatesOverManyPieces) {
    SourceScene source = UnturnedScene();
    std::vector<unsigned> pieces;
    constexpr int kPieces = 40;
    for (int i = 0; i < kPieces; ++i) {
        const float x = static_cast<float>(i);
        const unsigned piece =
            source.AddMesh("p", {{x, 0, 0}, {x, 1, 0}, {x, 0, 1}}, {{2, 0, 1}, {0, 1, 2}});
        for (unsigned set = 0; set < 3; ++set) {
            if (i % (static_cast<int>(set) + 2) == 0) {
                const float u = x + 100 * static_cast<float>(set + 1);
                source.AddTextureCoordinates(piece, set, {{u, 0, 0}, {u, 1, 0}, {u, 2, 0}});
            }
        }
        pieces.push_back(piece);
    }
    SourceScene::Show(NodeOf(source), pieces);
    const ImportedScene imported = source.Convert();
    const Mesh& mesh = MeshAt(imported);
    ASSERT_EQ(mesh.faces.size(), 2u * kPieces);
    for (std::size_t face = 0; face < mesh.faces.size(); ++face) {
        const int piece = static_cast<int>(face) / 2;
        for (std::size_t corner = 0; corner < 3; ++corner) {
            EXPECT_EQ(mesh.vertices.at(mesh.faces[face].v[corner])[0], piece);
            for (int set = 0; set < 3; ++set) {
                const MapChannel& channel = mesh.channels.at(set + 1);
                ASSERT_EQ(channel.faces.size(), mesh.faces.size());
                const Vec2 uv = channel.vertices.at(channel.faces[face][corner]);
                EXPECT_EQ(uv[0], piece % (set + 2) == 0 ? piece + 100 * (set + 1) : 0);
            }
        }
    }
}

TEST(MeshRest, WhatIsLeftOutIsSaid) {
    SourceScene source = UnturnedScene();
    const unsigned m = source.AddTriangle("m");
    source.Mesh(m).mColors[0] = new aiColor4D[3];
    SourceScene::Show(NodeOf(source), {m});
    EXPECT_EQ(source.Convert().warnings, Lines{"mesh 'm': vertex colour sets left out"});
}

TEST(MeshRest, MeshesWithVertexColoursAreCountedOnce) {
    SourceScene source = UnturnedScene();
    const unsigned plain = source.AddTriangle("plain");
    const unsigned red = source.AddTriangle("red");
    const unsigned green = source.AddTriangle("green");
    for (const unsigned piece : {red, green}) {
        source.Mesh(piece).mColors[0] = new aiColor4D[3];
    }
    SourceScene::Show(NodeOf(source), {plain});
    EXPECT_EQ(source.Convert().coloredMeshes, 0u);
    SourceScene::Show(source.AddNode(source.Root(), "both"), {plain, red, green});
    SourceScene::Show(source.AddNode(source.Root(), "again"), {plain, red, green});
    EXPECT_EQ(source.Convert().coloredMeshes, 1u) << "the mesh of two nodes";
    SourceScene::Show(source.AddNode(source.Root(), "other"), {green});
    EXPECT_EQ(source.Convert().coloredMeshes, 2u);
}

TEST(MeshRest, AThousandLikeCasesMakeAFewLines) {
    SourceScene source = UnturnedScene();
    std::vector<unsigned> pieces;
    for (int i = 0; i < 1000; ++i) {
        pieces.push_back(source.AddMesh("line" + std::to_string(i), {{0, 0, 0}}, {{0}, {0}}));
    }
    SourceScene::Show(NodeOf(source), pieces);
    const Lines warnings = source.Convert().warnings;
    ASSERT_EQ(warnings.size(), 9u);
    EXPECT_EQ(warnings[7], "mesh 'line7': points and lines left out (2)");
    EXPECT_EQ(warnings[8], "992 others: points and lines left out (1984)");
}

// ---------------------------------------------------------------- joined vertices

namespace {

// A z-up scene with one node, whose mesh is made of the pieces, and three bones.
struct OneNode {
    OneNode() : source(kFbx, "RootNode") {
        source.Set("UpAxis", 2);
        node = source.AddNode(source.Root(), "Node");
        for (const char* const bone : {"a", "b", "c"}) {
            source.AddNode(source.Root(), bone);
        }
    }

    Mesh Convert() {
        SourceScene::Show(node, pieces);
        const ImportedScene imported = source.Convert();
        return *imported.scene.nodes.at(0).object.value().mesh;
    }

    SourceScene source;
    aiNode* node;
    std::vector<unsigned> pieces;
};

// A triangle that has its three vertices twice, and so has two faces.
unsigned AddTwice(SourceScene& source) {
    return source.AddMesh("twice",
                          {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 0}, {1, 0, 0}, {0, 1, 0}},
                          {{0, 1, 2}, {5, 4, 3}});
}

}  // namespace

TEST(JoinedVertices, StandInOnePlaceInTheOrderOfTheSource) {
    OneNode scene;
    scene.pieces = {scene.source.AddMesh(
        "m", {{5, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 0, 0}, {5, 0, 0}, {9, 9, 9}},
        {{0, 1, 2}, {2, 3, 5}, {4, 3, 2}})};
    const Mesh mesh = scene.Convert();
    EXPECT_EQ(mesh.vertices, (std::vector<Vec3>{{5, 0, 0}, {1, 0, 0}, {0, 1, 0}, {9, 9, 9}}));
    EXPECT_EQ(mesh.faces[0].v, (Corners{0, 1, 2}));
    EXPECT_EQ(mesh.faces[1].v, (Corners{2, 1, 3}));
    EXPECT_EQ(mesh.faces[2].v, (Corners{0, 1, 2}));
}

TEST(JoinedVertices, DifferInTheLastBit) {
    const float next = std::nextafter(1.0f, 2.0f);
    OneNode scene;
    scene.pieces = {scene.source.AddMesh(
        "m", {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 0}, {next, 0, 0}, {0, 1, 0}},
        {{0, 1, 2}, {3, 4, 5}})};
    EXPECT_EQ(scene.Convert().vertices.size(), 4u);
}

TEST(JoinedVertices, OfNegativeZeroAreThoseOfZero) {
    OneNode scene;
    scene.pieces = {scene.source.AddMesh(
        "m", {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {-0.0f, 0, -0.0f}, {1, -0.0f, 0}, {0, 1, 0}},
        {{0, 1, 2}, {3, 4, 5}})};
    EXPECT_EQ(scene.Convert().vertices.size(), 3u);
}

TEST(JoinedVertices, AreOneAcrossPieces) {
    OneNode scene;
    for (int i = 0; i < 5; ++i) {
        const float x = static_cast<float>(i);
        scene.pieces.push_back(scene.source.AddMesh(
            "m", {{x, 0, 0}, {x + 1, 0, 0}, {x, 1, 0}, {x + 1, 1, 0}}, {{0, 1, 2}, {2, 1, 3}}));
    }
    const Mesh mesh = scene.Convert();
    EXPECT_EQ(mesh.vertices.size(), 12u);
    EXPECT_EQ(mesh.faces[2].v, (Corners{1, 4, 3}));
}

// Unlike texture coordinates, which differ at a seam, these belong to the vertex.
TEST(JoinedVertices, HaveTheSameSkinWeights) {
    OneNode scene;
    const unsigned m = AddTwice(scene.source);
    scene.source.AddBone(m, "a", {{0, 1.0f}, {3, 0.5f}, {1, 0.25f}, {4, 0.25f}, {2, 1}});
    scene.source.AddBone(m, "b", {{3, 0.5f}, {4, 0.75f}, {1, 0.75f}, {5, 0}, {99, 1}});
    scene.source.AddBone(m, "c", {{5, 1}, {4, 0}});
    scene.pieces = {m};
    const Mesh mesh = scene.Convert();
    // The pairs at (0, 0, 0) and (0, 1, 0) differ, the one at (1, 0, 0) does not.
    EXPECT_EQ(mesh.vertices.size(), 5u);
    EXPECT_EQ(mesh.faces[0].v, (Corners{0, 1, 2}));
    EXPECT_EQ(mesh.faces[1].v, (Corners{4, 1, 3}));
}

TEST(JoinedVertices, HaveWeightsOfBonesByNameAcrossPieces) {
    OneNode scene;
    const unsigned plain = scene.source.AddTriangle("plain");
    const unsigned first = scene.source.AddTriangle("first");
    const unsigned second = scene.source.AddTriangle("second");
    const unsigned last = scene.source.AddTriangle("last");
    scene.source.AddBone(first, "a", {{0, 0.5f}, {1, 1}});
    scene.source.AddBone(first, "b", {{0, 0.5f}});
    scene.source.AddBone(second, "b", {{0, 0.5f}, {1, 1}});
    scene.source.AddBone(second, "a", {{0, 0.5f}});
    scene.pieces = {plain, first, second, last};
    const Mesh mesh = scene.Convert();
    EXPECT_EQ(mesh.faces[0].v, (Corners{0, 1, 2}));
    EXPECT_EQ(mesh.faces[1].v, (Corners{3, 4, 2}));
    EXPECT_EQ(mesh.faces[2].v, (Corners{3, 5, 2}));
    EXPECT_EQ(mesh.faces[3].v, (Corners{0, 1, 2}));
}

TEST(JoinedVertices, AreMovedAlikeByMorphTargets) {
    OneNode scene;
    const unsigned m = AddTwice(scene.source);
    scene.source.AddMorphTarget(m, "x",
                                {{0, 0, 5}, {1, 0, 5}, {0, 1, 0}, {0, 0, 5}, {1, 0, 6}, {0, 1, 0}});
    scene.source.AddMorphTarget(m, "y", {{0, 0, 0}, {1, 0, 0}, {0, 1, 7}, {0, 0, 0}, {1, 0, 0}});
    const unsigned unmoved = scene.source.AddTriangle("unmoved");
    scene.pieces = {m, unmoved};
    const Mesh mesh = scene.Convert();
    EXPECT_EQ(mesh.faces[0].v, (Corners{0, 1, 2}));
    EXPECT_EQ(mesh.faces[1].v, (Corners{4, 3, 0}));
    // Without targets is where no target moves it.
    EXPECT_EQ(mesh.faces[2].v, (Corners{5, 6, 4}));
}

TEST(MapVertices, AreOneWhereBothNumbersAreTheSame) {
    OneNode scene;
    const unsigned a = AddTwice(scene.source);
    scene.source.AddTextureCoordinates(
        a, 0, {{0, 1, 0}, {2, 3, 0}, {2, 4, 0}, {0, 1, 0}, {2, 3, 0}, {0, 3, 0}});
    const unsigned b = scene.source.AddTriangle("b");
    scene.source.AddTextureCoordinates(b, 0, {{2, 4, 0}, {7, 7, 0}, {0, 0, 0}});
    scene.pieces = {a, b, scene.source.AddTriangle("c")};
    const Mesh mesh = scene.Convert();
    EXPECT_EQ(mesh.vertices.size(), 3u);
    const MapChannel& channel = mesh.channels.at(1);
    EXPECT_EQ(channel.vertices,
              (std::vector<Vec2>{{0, 1}, {2, 3}, {2, 4}, {0, 3}, {7, 7}, {0, 0}}));
    EXPECT_EQ(channel.faces, (std::vector<Corners>{{0, 1, 2}, {3, 1, 0}, {2, 4, 5}, {5, 5, 5}}));
}

TEST(MapVertices, OfAllEightSetsBecomeChannels) {
    OneNode scene;
    const unsigned m = scene.source.AddTriangle("m");
    for (unsigned set = 0; set < 8; ++set) {
        const float u = static_cast<float>(set);
        scene.source.AddTextureCoordinates(m, set, {{u, 0, 0}, {u, 1, 0}, {u, 2, 0}});
    }
    scene.pieces = {m};
    const Mesh mesh = scene.Convert();
    ASSERT_EQ(mesh.channels.size(), 8u);
    for (int channel = 1; channel <= 8; ++channel) {
        const float u = static_cast<float>(channel - 1);
        EXPECT_EQ(mesh.channels.at(channel).vertices, (std::vector<Vec2>{{u, 0}, {u, 1}, {u, 2}}));
        EXPECT_EQ(mesh.channels.at(channel).faces, (std::vector<Corners>{{0, 1, 2}}));
    }
}

// Joining vertices leaves each corner what it has at its vertex of the source.
TEST(MapVertices, StayWithTheirCornersWhereVerticesAreJoined) {
    OneNode scene;
    std::vector<aiVector3D> places, coordinates;
    std::vector<std::vector<unsigned>> faces;
    for (unsigned i = 0; i < 300; ++i) {
        places.push_back({static_cast<float>(i % 7), static_cast<float>(i % 5), 0});
        coordinates.push_back({static_cast<float>(i % 11), static_cast<float>(i % 3), 0});
        if (i % 3 == 2) {
            faces.push_back({i, i - 2, i - 1});
        }
    }
    const unsigned m = scene.source.AddMesh("m", places, faces);
    scene.source.AddTextureCoordinates(m, 3, coordinates);
    scene.pieces = {m};
    const Mesh mesh = scene.Convert();
    EXPECT_EQ(mesh.vertices.size(), 35u);
    const MapChannel& channel = mesh.channels.at(4);
    EXPECT_EQ(channel.vertices.size(), 33u);
    for (std::size_t face = 0; face < faces.size(); ++face) {
        for (std::size_t k = 0; k < 3; ++k) {
            const unsigned i = faces[face][k];
            EXPECT_EQ(mesh.vertices.at(mesh.faces[face].v[k]),
                      (Vec3{places[i].x, places[i].y, places[i].z}));
            EXPECT_EQ(channel.vertices.at(channel.faces[face][k]),
                      (Vec2{coordinates[i].x, coordinates[i].y}));
        }
    }
}
