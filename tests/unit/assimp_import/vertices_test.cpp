// Which of the vertices that Assimp gives are one vertex, and which map vertices one.
#include <gtest/gtest.h>

#include <limits>

#include "tests/unit/assimp_import/source_scene.h"

using maxhost::import::ImportedScene;
using maxhost::scene::MapChannel;
using maxhost::scene::Mesh;
using maxhost::scene::Vec2;
using maxhost::scene::Vec3;
using Corners = std::array<std::uint32_t, 3>;

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
