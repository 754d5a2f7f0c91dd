#include "kta/preview/preview.h"

#include <gtest/gtest.h>

#include <ctime>
#include <limits>
#include <numbers>

#include "tests/unit/kta/preview_meshes.h"
#include "tests/unit/kta/sample.h"

namespace {

using namespace sample;
using kta::Rgb;

constexpr std::array<float, 3> kTowardsFront = {0, 0, -1};  // 3ds Max's front view looks along +y

// Triangles of corners with one normal, in one sub-mesh.
MeshFields Faces(const std::vector<std::array<float, 3>>& corners,
                 const std::array<float, 3>& normal, std::uint32_t material = 0) {
    MeshFields mesh;
    SubMeshFields& subMesh = mesh.subMeshes.emplace_back();
    subMesh.material = material;
    for (std::uint32_t i = 0; i < corners.size(); ++i) {
        subMesh.vertices.push_back({i, corners[i], normal});
    }
    for (std::uint32_t i = 0; i + 2 < corners.size(); i += 3) {
        subMesh.faces.push_back({i, i + 1, i + 2});
    }
    mesh.originalVertexCount = static_cast<std::uint32_t>(corners.size());
    return mesh;
}

// A square of two triangles across the front view, `depth` away from the viewer.
MeshFields Square(float centreX, float side, float depth, std::uint32_t material = 0,
                  const std::array<float, 3>& normal = kTowardsFront) {
    const float a = centreX - side / 2;
    const float b = centreX + side / 2;
    const float c = -side / 2;
    const float d = side / 2;
    return Faces(
        {{a, c, depth}, {b, c, depth}, {b, d, depth}, {a, c, depth}, {b, d, depth}, {a, d, depth}},
        normal, material);
}

struct Actor {
    std::vector<MaterialFields> materials = {Grey()};
    std::vector<NodeFields> nodes{};
    std::vector<MeshFields> meshes{};
};

kta::File FileOf(const Actor& actor) {
    std::string file = kActor;
    for (const MaterialFields& material : actor.materials) {
        file += MaterialChunk(material);
    }
    for (const NodeFields& node : actor.nodes) {
        file += NodeChunk(node);
    }
    for (const MeshFields& mesh : actor.meshes) {
        file += MeshChunk(mesh);
    }
    return ReadExact(file).file.value();
}

constexpr kta::PreviewView kFront = {.width = 100, .height = 100, .direction = {0, 0}};

kta::Preview PreviewOf(const kta::File& file, const kta::PreviewView& view = kFront,
                       const kta::SceneChoice& choice = {}) {
    return kta::DrawPreview(kta::PreviewModel(file, nullptr, choice), view);
}

kta::Picture Draw(const Actor& actor, const kta::PreviewView& view = kFront,
                  const kta::SceneChoice& choice = {}) {
    return PreviewOf(FileOf(actor), view, choice).picture.value();
}

Rgb Colour(const std::array<double, 3>& diffuse, const kta::Vector3& normal,
           const std::array<double, 3>& selfIllumination = {}) {
    return kta::Shade({diffuse, selfIllumination}, normal);
}

const Rgb kGrey = Colour({0.75, 0.75, 0.75}, {0, 0, 1});

// ---------------------------------------------------------------- place

TEST(PreviewTest, TriangleCoversItsPixels) {
    // The right angle is at the lower left.
    const kta::Picture picture =
        Draw({.meshes = {Faces({{0, 0, 0}, {9, 0, 0}, {0, 9, 0}}, kTowardsFront)}});
    EXPECT_EQ(picture.pixels.size(), 10000u);
    EXPECT_EQ(picture.At(6, 93), kGrey);
    EXPECT_EQ(picture.At(40, 80), kGrey);
    EXPECT_EQ(picture.At(6, 10), kGrey);
    EXPECT_EQ(picture.At(88, 93), kGrey);
    EXPECT_EQ(picture.At(60, 40), kta::kBackground);
    EXPECT_EQ(picture.At(94, 6), kta::kBackground);
    EXPECT_EQ(picture.At(3, 96), kta::kBackground);
}

// A margin of 5% is left on each side of what fills the picture.
TEST(PreviewTest, FillsThePicture) {
    EXPECT_EQ(CoveredBy(Draw({.meshes = {Square(1000, 7, 3)}})),
              (std::array<int, 4>{5, 5, 94, 94}));
    const kta::PreviewView wide = {.width = 400, .height = 100, .direction = {0, 0}};
    EXPECT_EQ(CoveredBy(Draw({.meshes = {Square(0, 7, 3)}}, wide)),
              (std::array<int, 4>{155, 5, 244, 94}));
}

// Vertices that no face uses do not count.
TEST(PreviewTest, FramesWhatIsDrawn) {
    MeshFields mesh = Square(0, 2, 0);
    mesh.subMeshes[0].vertices.push_back({6, {1e6f, 1e6f, 1e6f}, {}});
    mesh.originalVertexCount = 7;
    EXPECT_EQ(CoveredBy(Draw({.meshes = {mesh}})), (std::array<int, 4>{5, 5, 94, 94}));
}

TEST(PreviewTest, EdgesAreSmoothed) {
    const kta::Picture picture =
        Draw({.meshes = {Faces({{0, 0, 0}, {9, 0, 0}, {0, 9, 0}}, kTowardsFront)}});
    int between = 0;
    for (int i = 10; i < 90; ++i) {
        for (int x = i - 1; x <= i + 1; ++x) {
            const int value = picture.At(x, i)[0];
            between += value > kta::kBackground[0] && value < kGrey[0] ? 1 : 0;
        }
    }
    EXPECT_GT(between, 50);
}

TEST(PreviewTest, NearerSurfacesHideOthers) {
    const Actor actor = {.materials = {{.diffuse = {1, 0, 0}}, {.diffuse = {0, 1, 0}}},
                         .meshes = {Square(0, 2, -1, 0), Square(0, 4, 1, 1), Square(0, 1, 5, 0)}};
    const kta::Picture front = Draw(actor);
    EXPECT_EQ(front.At(50, 50), Colour({1, 0, 0}, {0, 0, 1}));
    EXPECT_EQ(front.At(10, 50), Colour({0, 1, 0}, {0, 0, 1}));
    // From behind the smallest one is before the others.
    kta::PreviewView back = kFront;
    back.direction.azimuth = 180;
    const kta::Picture behind = Draw(actor, back);
    EXPECT_EQ(behind.At(50, 50), Colour({1, 0, 0}, {0, 0, 1}));
    EXPECT_EQ(behind.At(30, 50), Colour({0, 1, 0}, {0, 0, 1}));
}

// Right, left, top and back views show the side of a cross of squares that they look at.
TEST(PreviewTest, ViewsGoRoundTheScene) {
    const auto strip = [](const std::array<float, 3>& at, std::uint32_t material) {
        MeshFields mesh = Square(0, 1, 0, material);
        for (VertexFields& vertex : mesh.subMeshes[0].vertices) {
            const std::array<float, 3> p = vertex.position;
            const bool side = at[0] != 0;
            const bool top = at[1] != 0;
            vertex.position = side  ? std::array<float, 3>{at[0], p[0], p[1]}
                              : top ? std::array<float, 3>{p[0], at[1], p[1]}
                                    : std::array<float, 3>{p[0], p[1], at[2]};
            vertex.normal = at;
        }
        return mesh;
    };
    const Actor actor = {.materials = {{.diffuse = {1, 0, 0}},
                                       {.diffuse = {0, 1, 0}},
                                       {.diffuse = {0, 0, 1}},
                                       {.diffuse = {1, 1, 0}},
                                       {.diffuse = {0, 1, 1}}},
                         .meshes = {strip({0, 0, -1}, 0), strip({1, 0, 0}, 1), strip({0, 0, 1}, 2),
                                    strip({-1, 0, 0}, 3), strip({0, 1, 0}, 4)}};
    const struct {
        double azimuth;
        double elevation;
        std::array<double, 3> colour;
    } rows[] = {{0, 0, {1, 0, 0}},   {90, 0, {0, 1, 0}},  {180, 0, {0, 0, 1}}, {-180, 0, {0, 0, 1}},
                {270, 0, {1, 1, 0}}, {-90, 0, {1, 1, 0}}, {0, 90, {0, 1, 1}},  {90, 90, {0, 1, 1}}};
    for (const auto& [azimuth, elevation, colour] : rows) {
        kta::PreviewView view = kFront;
        view.direction.azimuth = azimuth;
        view.direction.elevation = elevation;
        EXPECT_EQ(Draw(actor, view).At(50, 50), Colour(colour, {0, 0, 1}))
            << azimuth << " " << elevation;
    }
}

// In the front view x points right and the file's second axis up; in the right view the third
// axis points right; in the top view it points up.
TEST(PreviewTest, AxesOfTheViews) {
    const auto corner = [](double azimuth, double elevation, std::array<float, 3> far) {
        kta::PreviewView view = kFront;
        view.direction.azimuth = azimuth;
        view.direction.elevation = elevation;
        // Three axes of length 1 as thin fins would hide each other; a small tetrahedron at the
        // far end of one axis and one at the origin tell where that axis points.
        const auto tetrahedron = [&](std::array<float, 3> at) {
            const auto add = [&](float x, float y, float z) {
                return std::array<float, 3>{at[0] + x, at[1] + y, at[2] + z};
            };
            const auto o = add(0, 0, 0);
            const auto x = add(0.2f, 0, 0);
            const auto y = add(0, 0.2f, 0);
            const auto z = add(0, 0, 0.2f);
            return std::vector<std::array<float, 3>>{o, x, y, o, y, z, o, x, z, x, y, z};
        };
        const Actor actor = {
            .materials = {Grey(), {.diffuse = {1, 0, 0}}},
            .meshes = {Faces(tetrahedron({0, 0, 0}), {}), Faces(tetrahedron(far), {}, 1)}};
        const kta::Picture picture = Draw(actor, view);
        double x = 0;
        double y = 0;
        int count = 0;
        for (int row = 0; row < 100; ++row) {
            for (int column = 0; column < 100; ++column) {
                const Rgb& pixel = picture.At(column, row);
                if (pixel[0] > 2 * pixel[1]) {
                    x += column;
                    y += row;
                    ++count;
                }
            }
        }
        EXPECT_GT(count, 10);
        const double dx = x / count - 50;
        const double dy = y / count - 50;
        return std::abs(dx) > std::abs(dy) ? (dx > 0 ? "right" : "left") : dy > 0 ? "down" : "up";
    };
    EXPECT_STREQ(corner(0, 0, {1, 0, 0}), "right");
    EXPECT_STREQ(corner(0, 0, {0, 1, 0}), "up");
    EXPECT_STREQ(corner(90, 0, {0, 0, 1}), "right");
    EXPECT_STREQ(corner(90, 0, {0, 1, 0}), "up");
    EXPECT_STREQ(corner(0, 90, {0, 0, 1}), "up");
    EXPECT_STREQ(corner(0, 90, {1, 0, 0}), "right");
    EXPECT_STREQ(corner(0, -90, {0, 0, 1}), "down");
}

// ---------------------------------------------------------------- nodes

// The file has the inverse of where a node stands: this one undoes a move by (10, 0, 0) and a
// doubling.
TEST(PreviewTest, MeshesStandWhereTheirNodesDo) {
    NodeFields node;
    node.matrix = {0.5f, 0, 0, 0, 0, 0.5f, 0, 0, 0, 0, 0.5f, 0, -5, 0, 0, 0};
    MeshFields moved = Square(0, 2, 0);  // in the world from 8 to 12
    moved.node = 1;
    const kta::Picture picture = Draw({.nodes = {{}, node}, .meshes = {moved, Square(0, 2, 0)}},
                                      {.width = 130, .height = 100, .direction = {0, 0}});
    // From -1 to 12 over 117 pixels with a margin of 6.5: nine pixels a unit.
    EXPECT_EQ(picture.At(7, 50), kGrey);
    EXPECT_EQ(picture.At(23, 58), kGrey);
    EXPECT_EQ(picture.At(23, 60), kta::kBackground);
    EXPECT_EQ(picture.At(50, 50), kta::kBackground);
    EXPECT_EQ(picture.At(86, 50), kta::kBackground);
    EXPECT_EQ(picture.At(88, 33), kGrey);
    EXPECT_EQ(picture.At(122, 66), kGrey);
}

// Positions of skinned meshes are in world space: their nodes do not move them.
TEST(PreviewTest, SkinnedMeshesStandWhereTheirNumbersSay) {
    NodeFields node;
    node.matrix = {0.5f, 0, 0, 0, 0, 0.5f, 0, 0, 0, 0, 0.5f, 0, -5, 0, 0, 0};
    MeshFields skinned = Square(10, 4, 0);
    MeshFields moved = Square(0, 2, 0);  // in the world at the same place
    moved.node = 1;
    const auto draw = [&](std::uint32_t nodeOfWeights) {
        const kta::Reading reading = ReadExact(
            kActor + NodeChunk(node) + NodeChunk(node) + MeshChunk(skinned) + MeshChunk(moved) +
            MeshChunk(Square(-1, 2, 0)) + WeightsChunk(nodeOfWeights, {{{1, 1}}}));
        EXPECT_TRUE(reading.Good());
        return PreviewOf(reading.file.value(), kFront).picture.value();
    };
    // The third mesh is of node 0 as well. From -2 to 12: 90 pixels.
    const kta::Picture picture = draw(0);
    EXPECT_EQ(CoveredBy(picture), (std::array<int, 4>{5, 37, 94, 62}));
    EXPECT_EQ(picture.At(70, 45), kGrey);
    EXPECT_EQ(picture.At(60, 45), kta::kBackground);
    EXPECT_EQ(picture.At(21, 50), kta::kBackground);
    // With the weights of another node they go by theirs: from 6 to 10 and 26 to 34. The second
    // mesh is still from 8 to 12.
    EXPECT_EQ(draw(5).At(21, 50), kGrey);
}

// Normals turn with their node, and stay normal when it is stretched.
TEST(PreviewTest, NormalsGoWithTheirNodes) {
    // World: a quarter turn about the up axis, x to third axis; its inverse is stored.
    NodeFields turned;
    turned.matrix = {0, 0, -1, 0, 0, 1, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0};
    MeshFields side = Faces({{0, 0, 0}, {0, 0, 3}, {0, 3, 0}}, {1, 0, 0});
    EXPECT_EQ(Draw({.nodes = {turned}, .meshes = {side}}).At(30, 80), kGrey);
    // A slope of 45 degrees, flattened: positions go by (1, 0.5, 1), normals by (1, 2, 1).
    NodeFields flat;
    flat.matrix = {1, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0};
    MeshFields slope =
        Faces({{-2, -2, -2}, {2, -2, -2}, {0, 2, 2}}, {0, 0.70710678f, -0.70710678f});
    const double length = std::sqrt(5.0);
    EXPECT_EQ(Draw({.nodes = {flat}, .meshes = {slope}}).At(50, 50),
              Colour({0.75, 0.75, 0.75}, {0, 2 / length, 1 / length}));
}

TEST(PreviewTest, MeshesWithoutPlaceStandWhereTheirNumbersSay) {
    NodeFields flat;
    flat.matrix = {};
    MeshFields mesh = Square(0, 2, 0);
    for (const std::uint32_t node : {0u, 5u, 0xffffffffu}) {
        mesh.node = node;
        EXPECT_EQ(CoveredBy(Draw({.nodes = {flat}, .meshes = {mesh}})),
                  (std::array<int, 4>{5, 5, 94, 94}))
            << node;
    }
}

TEST(PreviewTest, CollisionMeshesAreLeftOutUnlessAskedFor) {
    MeshFields collision = Square(10, 2, 0);
    collision.isCollision = 1;
    EXPECT_EQ(CoveredBy(Draw({.meshes = {collision, Square(0, 2, 0)}})),
              (std::array<int, 4>{5, 5, 94, 94}));
    EXPECT_EQ(PreviewOf(FileOf({.meshes = {collision}})).triangles, 0u);
    EXPECT_EQ(
        CoveredBy(Draw({.meshes = {collision, Square(0, 2, 0)}}, kFront, {.withCollision = true})),
        (std::array<int, 4>{5, 42, 94, 57}));
}

// ---------------------------------------------------------------- shading

TEST(PreviewTest, LightIsOfLengthOne) {
    EXPECT_DOUBLE_EQ(kta::Dot(kta::kLight, kta::kLight), 1);
}

TEST(PreviewTest, ShadeByHand) {
    EXPECT_EQ(Colour({1, 0.5, 0}, kta::kLight), (Rgb{255, 128, 0}));
    EXPECT_EQ(Colour({1, 0.5, 0}, {0, 0, 1}), (Rgb{184, 92, 0}));      // 0.3 + 0.7 * 0.6 = 0.72
    EXPECT_EQ(Colour({1, 0.5, 0}, {0.6, -0.8, 0}), (Rgb{77, 38, 0}));  // turned away: 0.3
    EXPECT_EQ(Colour({1, 0.5, 0}, {0.6, -0.8, 0}, {0, 0.5, 1}), (Rgb{77, 166, 255}));
    EXPECT_EQ(Colour({1, 1, 1}, kta::kLight, {1, 1, 1}), (Rgb{255, 255, 255}));
}

// Both windings are drawn, and normals that point away are turned round.
TEST(PreviewTest, BothSidesAreShown) {
    const std::vector<std::array<float, 3>> corners = {{0, 0, 0}, {9, 0, 0}, {0, 9, 0}};
    const std::vector<std::array<float, 3>> reversed = {{0, 0, 0}, {0, 9, 0}, {9, 0, 0}};
    for (const auto& face : {corners, reversed}) {
        for (const float z : {-1.0f, 1.0f, 0.0f}) {  // 0: without normal
            EXPECT_EQ(Draw({.meshes = {Faces(face, {0, 0, z})}}).At(30, 70), kGrey);
        }
    }
}

TEST(PreviewTest, MaterialsByNumber) {
    const Actor actor = {
        .materials = {Grey(), {.diffuse = {0, 0.5f, 1}}, {.diffuse = {-1, 7, 0.5f}}},
        .meshes = {Square(0, 2, 0, 1), Square(3, 2, 0, 2), Square(6, 2, 0, 200)}};
    const kta::Picture picture = Draw(actor, {.width = 200, .height = 60, .direction = {0, 0}});
    EXPECT_EQ(picture.At(30, 30), Colour({0, 0.5, 1}, {0, 0, 1}));
    EXPECT_EQ(picture.At(100, 30), Colour({0, 1, 0.5}, {0, 0, 1}));
    EXPECT_EQ(picture.At(170, 30), kGrey);  // a number that no material has
}

// A sphere of smooth normals, its axis along the up axis.
MeshFields Sphere(int rings) {
    MeshFields mesh;
    SubMeshFields& subMesh = mesh.subMeshes.emplace_back();
    const int sectors = 2 * rings;
    for (int ring = 0; ring <= rings; ++ring) {
        for (int sector = 0; sector <= sectors; ++sector) {
            const double polar = std::numbers::pi * ring / rings;
            const double turn = std::numbers::pi * 2 * sector / sectors;
            const std::array<float, 3> p = {static_cast<float>(std::sin(polar) * std::cos(turn)),
                                            static_cast<float>(std::cos(polar)),
                                            static_cast<float>(std::sin(polar) * std::sin(turn))};
            subMesh.vertices.push_back({mesh.originalVertexCount++, p, p});
        }
    }
    const auto stride = static_cast<std::uint32_t>(sectors + 1);
    for (std::uint32_t i = 0; i + stride + 1 < subMesh.vertices.size(); ++i) {
        if (i % stride != stride - 1) {
            subMesh.faces.push_back({i, i + 1, i + stride});
            subMesh.faces.push_back({i + 1, i + stride + 1, i + stride});
        }
    }
    return mesh;
}

TEST(PreviewTest, SphereIsRoundAndShadedFromTheUpperLeft) {
    kta::PreviewView view;  // as by default, 800 x 600
    const kta::Picture picture = Draw({.meshes = {Sphere(64)}}, view);
    ASSERT_EQ(picture.width, 800);
    ASSERT_EQ(picture.height, 600);
    // 600 pixels less 5% on each side, so a radius of 270 round the middle.
    int covered = 0;
    for (int y = 0; y < 600; ++y) {
        for (int x = 0; x < 800; ++x) {
            const double distance = std::hypot(x + 0.5 - 400, y + 0.5 - 300);
            const bool shown = picture.At(x, y) != kta::kBackground;
            covered += shown ? 1 : 0;
            if (distance < 268) {
                ASSERT_TRUE(shown) << x << " " << y;
            }
            if (distance > 271.5) {
                ASSERT_FALSE(shown) << x << " " << y;
            }
        }
    }
    EXPECT_NEAR(covered, std::numbers::pi * 270 * 270, 2500);
    // Each place has the colour of the sphere's own normal there.
    for (const auto& [x, y] : {std::pair(400, 300), {270, 130}, {500, 450}, {300, 300}}) {
        const double right = (x + 0.5 - 400) / 270;
        const double up = (300 - y - 0.5) / 270;
        const Rgb expected =
            Colour({0.75, 0.75, 0.75}, {right, up, std::sqrt(1 - right * right - up * up)});
        EXPECT_NEAR(picture.At(x, y)[0], expected[0], 2) << x << " " << y;
    }
    EXPECT_GT(picture.At(270, 130)[0], picture.At(530, 470)[0] + 80);
}

// Neighbouring triangles leave no gap: behind the sphere's front shines nothing.
TEST(PreviewTest, NoGapsBetweenTriangles) {
    Actor actor = {.materials = {Grey(), {.diffuse = {0, 0, 0}, .selfIllumination = {1, 0, 0}}},
                   .meshes = {Sphere(23), Square(0, 1, 3, 1)}};
    const kta::Picture picture = Draw(actor, {.width = 333, .height = 333, .direction = {0, 0}});
    for (const Rgb& pixel : picture.pixels) {
        ASSERT_LE(pixel[0], pixel[2] + 20);
    }
}

// ---------------------------------------------------------------- odd input

TEST(PreviewTest, NothingToShow) {
    EXPECT_EQ(PreviewOf(FileOf({}), kFront).triangles, 0u);
    EXPECT_EQ(PreviewOf(FileOf({.nodes = {{}}}), kFront).triangles, 0u);
}

// Without area, seen from the edge, or so small beside the others that no sample lies in them.
TEST(PreviewTest, TrianglesThatCoverNothing) {
    const MeshFields line = Faces({{0, 0, 0}, {1, 1, 1}, {2, 2, 2}}, kTowardsFront);
    const MeshFields point = Faces({{1, 1, 1}, {1, 1, 1}, {1, 1, 1}}, kTowardsFront);
    for (const MeshFields& mesh : {line, point}) {
        const kta::Preview preview = PreviewOf(FileOf({.meshes = {mesh}}), kFront);
        EXPECT_FALSE(preview.picture);
        EXPECT_EQ(preview.triangles, 1u);
    }
    const kta::File square = FileOf({.meshes = {Square(0, 2, 0)}});
    const kta::Preview fromTheSide = PreviewOf(square, {.direction = {90, 0}});
    EXPECT_FALSE(fromTheSide.picture);
    EXPECT_EQ(fromTheSide.triangles, 2u);
    EXPECT_TRUE(PreviewOf(square, {.direction = {89, 0}}).picture);
}

TEST(PreviewTest, NumbersThatAreNotFiniteAreLeftOut) {
    MeshFields mesh = Square(0, 2, 0);
    mesh.subMeshes[0].vertices[1].position[0] = kInfinity;  // of the first triangle
    const kta::Picture picture = Draw({.meshes = {mesh}});
    EXPECT_EQ(picture.At(10, 50), kGrey);
    EXPECT_EQ(picture.At(90, 80), kta::kBackground);
    for (VertexFields& vertex : mesh.subMeshes[0].vertices) {
        vertex.position[2] = std::numeric_limits<float>::quiet_NaN();
    }
    EXPECT_EQ(PreviewOf(FileOf({.meshes = {mesh}}), kFront).triangles, 0u);
    // Normals without direction are as good as none.
    EXPECT_EQ(Draw({.meshes = {Square(0, 2, 0, 0, {kInfinity, 0, 0})}}).At(50, 50), kGrey);
}

TEST(PreviewTest, ExtremeSizes) {
    const float kMax = std::numeric_limits<float>::max();
    for (const float side : {1e-44f, 1e-20f, 1e30f, kMax}) {
        EXPECT_EQ(CoveredBy(Draw({.meshes = {Square(0, side, 0)}})),
                  (std::array<int, 4>{5, 5, 94, 94}))
            << side;
    }
    const kta::Picture pixel =
        Draw({.meshes = {Square(0, 2, 0)}}, {.width = 1, .height = 1, .direction = {0, 0}});
    EXPECT_EQ(pixel.pixels.size(), 1u);
    EXPECT_EQ(pixel.At(0, 0), kGrey);
}

// A picture too large for one band of samples is the same at the bands' borders.
TEST(PreviewTest, LargePicture) {
    const kta::PreviewView view = {.width = 1600, .height = 1600, .direction = {0, 0}};
    const kta::Picture picture = Draw({.meshes = {Square(0, 2, 0)}}, view);
    for (int y = 0; y < 1600; ++y) {
        ASSERT_EQ(picture.At(800, y), y >= 80 && y < 1520 ? kGrey : kta::kBackground) << y;
    }
}

// Slivers from corner to corner cover few samples of the rectangle that they lie in.
TEST(PreviewTest, SliversTakeTheTimeOfWhatTheyCover) {
    std::vector<std::array<float, 3>> corners;
    for (int i = 0; i < 2500; ++i) {
        const float depth = -0.001f * static_cast<float>(i);
        corners.insert(corners.end(), {{0, 0, depth}, {1, 1, depth}, {1, 0.999f, depth}});
    }
    const Actor actor = {.meshes = {Faces(corners, kTowardsFront)}};
    const std::clock_t start = std::clock();
    const kta::Picture picture = Draw(actor, {.direction = {0, 0}});
    EXPECT_LT(static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC, 10);
    EXPECT_EQ(CoveredBy(picture), (std::array<int, 4>{130, 30, 669, 569}));
}

}  // namespace
