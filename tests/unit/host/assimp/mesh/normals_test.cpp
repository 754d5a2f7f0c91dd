// Normals of the file: what a mesh shows in 3ds Max is what the file states, within 1 degree.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <set>

#include "tests/unit/host/assimp/shown_scene.h"
#include "tests/unit/host/assimp/source_scene.h"

using maxhost::import::ImportedScene;
using maxhost::scene::Face;
using maxhost::scene::Mesh;
using maxhost::scene::Vec3;
using Lines = std::vector<std::string>;

namespace {

// Triangles with three vertices of their own, each with its normal.
struct Soup {
    std::vector<aiVector3D> places, normals;

    void Add(const std::array<aiVector3D, 3>& corners, const std::array<aiVector3D, 3>& stated) {
        places.insert(places.end(), corners.begin(), corners.end());
        normals.insert(normals.end(), stated.begin(), stated.end());
    }
    void AddFlat(const aiVector3D& a, const aiVector3D& b, const aiVector3D& c) {
        const aiVector3D n = ((b - a) ^ (c - a)).Normalize();
        Add({a, b, c}, {n, n, n});
    }
    // Corners in order around the quad.
    void AddFlatQuad(const aiVector3D& a, const aiVector3D& b, const aiVector3D& c,
                     const aiVector3D& d) {
        AddFlat(a, b, c);
        AddFlat(a, c, d);
    }

    unsigned PutInto(SourceScene& source, unsigned material = 0) const {
        std::vector<std::vector<unsigned>> faces;
        for (unsigned i = 0; i < places.size(); i += 3) {
            faces.push_back({i, i + 1, i + 2});
        }
        const unsigned mesh = source.AddMesh("soup", places, faces, material);
        source.Mesh(mesh).mNormals = new aiVector3D[normals.size()];
        std::copy(normals.begin(), normals.end(), source.Mesh(mesh).mNormals);
        return mesh;
    }
};

// Z up, so that numbers stay as they are.
struct Conversion {
    explicit Conversion(const std::vector<Soup>& pieces) {
        SourceScene source(kFbx, "RootNode");
        source.Set("UpAxis", 2);
        std::vector<unsigned> meshes;
        for (const Soup& piece : pieces) {
            source.AddMaterial("m" + std::to_string(meshes.size()));
            meshes.push_back(piece.PutInto(source, static_cast<unsigned>(meshes.size())));
        }
        SourceScene::Show(source.AddNode(source.Root(), "Node"), meshes);
        const ImportedScene imported = source.Convert();
        mesh = *imported.scene.nodes.at(0).object.value().mesh;
        warnings = imported.warnings;
    }

    Mesh mesh;
    Lines warnings;
};

double DegreesOff(const Vec3& shown, const aiVector3D& stated) {
    const aiVector3t<double> a(shown[0], shown[1], shown[2]);
    const aiVector3t<double> b(stated.x, stated.y, stated.z);
    return std::atan2((a ^ b).Length(), a * b) * 180 / std::numbers::pi;
}

bool HasDirection(const aiVector3D& v) {
    const double length = std::hypot(double{v.x}, double{v.y}, double{v.z});
    return length > 0 && std::isfinite(length);
}

// The greatest angle between what the corners show and what they state, where they state something.
double WorstAngle(const Mesh& mesh, const std::vector<Soup>& pieces) {
    const std::vector<CornerNormals> shown = ShownNormals(mesh);
    std::size_t corner = 0;
    double worst = 0;
    for (const Soup& piece : pieces) {
        for (const aiVector3D& stated : piece.normals) {
            const double angle =
                HasDirection(stated) ? DegreesOff(shown.at(corner / 3)[corner % 3], stated) : 0;
            worst = std::max(worst, std::isnan(angle) ? 180 : angle);
            ++corner;
        }
    }
    EXPECT_EQ(corner, 3 * shown.size());
    return worst;
}

std::set<std::uint32_t> MasksOf(const Mesh& mesh) {
    std::set<std::uint32_t> masks;
    for (const Face& face : mesh.faces) {
        masks.insert(face.smoothing);
    }
    return masks;
}

aiVector3D OnSphere(int segment, int segments, int ring, int rings) {
    const double around = 2 * std::numbers::pi * (segment % segments) / segments,
                 down = std::numbers::pi * ring / rings;
    const double radius = ring == 0 || ring == rings ? 0 : std::sin(down);
    return {static_cast<float>(radius * std::cos(around)),
            static_cast<float>(radius * std::sin(around)), static_cast<float>(std::cos(down))};
}

Soup Sphere(int segments, int rings) {
    Soup sphere;
    for (int ring = 0; ring < rings; ++ring) {
        for (int i = 0; i < segments; ++i) {
            const aiVector3D a = OnSphere(i, segments, ring, rings);
            const aiVector3D b = OnSphere(i, segments, ring + 1, rings);
            const aiVector3D c = OnSphere(i + 1, segments, ring + 1, rings);
            const aiVector3D d = OnSphere(i + 1, segments, ring, rings);
            if (ring + 1 < rings) {
                sphere.Add({a, b, c}, {a, b, c});
            }
            if (ring > 0) {
                sphere.Add({a, c, d}, {a, c, d});
            }
        }
    }
    return sphere;
}

Soup Cube() {
    Soup cube;
    const auto at = [](int i) {
        return aiVector3D(static_cast<float>(i & 1), static_cast<float>(i >> 1 & 1),
                          static_cast<float>(i >> 2));
    };
    static constexpr int kSides[6][4] = {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4},
                                         {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}};
    for (const auto& side : kSides) {
        cube.AddFlatQuad(at(side[0]), at(side[1]), at(side[2]), at(side[3]));
    }
    return cube;
}

aiVector3D OnCircle(int i, int sides, float z) {
    const double angle = 2 * std::numbers::pi * (i % sides) / sides;
    return {static_cast<float>(std::cos(angle)), static_cast<float>(std::sin(angle)), z};
}

Soup Cylinder(int sides) {
    Soup cylinder;
    for (int i = 0; i < sides; ++i) {
        const aiVector3D a = OnCircle(i, sides, -1), b = OnCircle(i + 1, sides, -1);
        const aiVector3D c = OnCircle(i + 1, sides, 1), d = OnCircle(i, sides, 1);
        const aiVector3D n = OnCircle(i, sides, 0), next = OnCircle(i + 1, sides, 0);
        cylinder.Add({a, b, c}, {n, next, next});
        cylinder.Add({a, c, d}, {n, next, n});
        const aiVector3D up(0, 0, 1);
        cylinder.Add({d, c, {0, 0, 1}}, {up, up, up});
        cylinder.Add({b, a, {0, 0, -1}}, {-up, -up, -up});
    }
    return cylinder;
}

aiVector3D RandomDirection(std::mt19937& random) {
    std::uniform_real_distribution<float> number(-1, 1);
    aiVector3D v;
    do {
        v = aiVector3D(number(random), number(random), number(random));
    } while (v.Length() < 0.1f);
    return v.Normalize();
}

}  // namespace

// ---------------------------------------------------------------- smoothing groups

TEST(SmoothingGroups, MakeASphereSmooth) {
    const Soup sphere = Sphere(96, 48);
    const Conversion converted({sphere});
    EXPECT_EQ(converted.mesh.vertices.size(), 96u * 47 + 2);
    EXPECT_TRUE(converted.mesh.normals.empty());
    EXPECT_EQ(MasksOf(converted.mesh), std::set<std::uint32_t>{1});
    EXPECT_LT(WorstAngle(converted.mesh, {sphere}), 1);
    EXPECT_TRUE(converted.warnings.empty());
}

TEST(SmoothingGroups, KeepTheSidesOfACubeApart) {
    const Soup cube = Cube();
    const Conversion converted({cube});
    EXPECT_EQ(converted.mesh.vertices.size(), 8u);
    EXPECT_TRUE(converted.mesh.normals.empty());
    const std::vector<CornerNormals> shown = ShownNormals(converted.mesh);
    for (std::size_t face = 0; face < 12; face += 2) {
        EXPECT_NE(converted.mesh.faces[face].smoothing, 0u);
        EXPECT_EQ(converted.mesh.faces[face].smoothing, converted.mesh.faces[face + 1].smoothing);
        // To the bit, so that an exporter needs 24 vertices and not 36.
        EXPECT_EQ(shown[face], shown[face + 1]);
    }
    EXPECT_LT(WorstAngle(converted.mesh, {cube}), 1e-3);
}

TEST(SmoothingGroups, KeepTheCapsOfACylinderHard) {
    const Soup cylinder = Cylinder(96);
    const Conversion converted({cylinder});
    EXPECT_EQ(converted.mesh.vertices.size(), 2u * 96 + 2);
    EXPECT_TRUE(converted.mesh.normals.empty());
    // The caps do not meet, and have one group.
    EXPECT_EQ(MasksOf(converted.mesh), (std::set<std::uint32_t>{1, 2}));
    EXPECT_LT(WorstAngle(converted.mesh, {cylinder}), 1);
}

TEST(SmoothingGroups, AreNotNeededBySingleFacets) {
    Soup tetrahedron;
    const aiVector3D a(0, 0, 0), b(1, 0, 0), c(0, 1, 0), d(0, 0, 1);
    tetrahedron.AddFlat(a, c, b);
    tetrahedron.AddFlat(a, b, d);
    tetrahedron.AddFlat(a, d, c);
    tetrahedron.AddFlat(b, c, d);
    const Conversion converted({tetrahedron});
    EXPECT_EQ(converted.mesh.vertices.size(), 4u);
    EXPECT_EQ(MasksOf(converted.mesh), std::set<std::uint32_t>{0});
    EXPECT_TRUE(converted.mesh.normals.empty());
    EXPECT_LT(WorstAngle(converted.mesh, {tetrahedron}), 1e-3);
}

TEST(SmoothingGroups, EndWhereThePieceOfAnotherMaterialIsHard) {
    Soup floor, wall;
    floor.AddFlatQuad({0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0});
    wall.AddFlatQuad({0, 1, 0}, {1, 1, 0}, {1, 1, 1}, {0, 1, 1});
    const Conversion converted({floor, wall});
    EXPECT_EQ(converted.mesh.vertices.size(), 6u);
    EXPECT_TRUE(converted.mesh.normals.empty());
    EXPECT_LT(WorstAngle(converted.mesh, {floor, wall}), 1e-3);
}

TEST(SmoothingGroups, AreFoundForNormalsThatDifferByLittle) {
    Soup sphere = Sphere(96, 48);
    std::mt19937 random(5);
    for (aiVector3D& normal : sphere.normals) {
        normal += RandomDirection(random) * 0.0003f;
    }
    const Conversion converted({sphere});
    EXPECT_TRUE(converted.mesh.normals.empty());
    EXPECT_LT(WorstAngle(converted.mesh, {sphere}), 1);
}

// A corner that states nothing may show anything.
TEST(SmoothingGroups, PassOverNormalsWithoutADirection) {
    Soup sphere = Sphere(96, 48);
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    sphere.normals[500] = {0, 0, 0};
    sphere.normals[1000] = {0, kNan, 1};
    sphere.normals[1001] = {kInfinity, 0, 0};
    const Conversion converted({sphere});
    EXPECT_EQ(MasksOf(converted.mesh), std::set<std::uint32_t>{1});
    EXPECT_LT(WorstAngle(converted.mesh, {sphere}), 1);
    EXPECT_EQ(converted.warnings, Lines{"mesh 'soup': normals without a direction left out (3)"});
}

TEST(SmoothingGroups, TakeNormalsOfAnyLength) {
    Soup sphere = Sphere(96, 48);
    for (std::size_t i = 0; i < sphere.normals.size(); ++i) {
        sphere.normals[i] *= i % 2 ? 1e-20f : 1e20f;
    }
    const Conversion converted({sphere});
    EXPECT_EQ(MasksOf(converted.mesh), std::set<std::uint32_t>{1});
    EXPECT_LT(WorstAngle(converted.mesh, {sphere}), 1);
}

TEST(SmoothingGroups, AreNoneWithoutNormals) {
    SourceScene source("Some Importer");
    SourceScene::Show(source.Root(), {source.AddTriangle("m")});
    const Mesh mesh = *source.Convert().scene.nodes.at(0).object.value().mesh;
    EXPECT_EQ(MasksOf(mesh), std::set<std::uint32_t>{0});
    EXPECT_TRUE(mesh.normals.empty());

    Soup cube = Cube();
    std::fill(cube.normals.begin(), cube.normals.end(), aiVector3D());
    const Conversion converted({cube});
    EXPECT_EQ(MasksOf(converted.mesh), std::set<std::uint32_t>{0});
    EXPECT_TRUE(converted.mesh.normals.empty());
    EXPECT_EQ(converted.mesh.vertices.size(), 8u);
}

// Faces without normals do not take part in the smoothness of the others around them.
TEST(SmoothingGroups, LeaveOutPiecesWithoutNormals) {
    const Soup sphere = Sphere(96, 48);
    Soup hood = sphere;
    std::fill(hood.normals.begin(), hood.normals.end(), aiVector3D());
    for (const bool isFirst : {false, true}) {
        const std::vector<Soup> pieces =
            isFirst ? std::vector<Soup>{hood, sphere} : std::vector<Soup>{sphere, hood};
        const Conversion converted(pieces);
        const std::size_t half = sphere.places.size() / 3;
        EXPECT_EQ(converted.mesh.vertices.size(), 96u * 47 + 2);
        EXPECT_EQ(converted.mesh.faces[isFirst ? 0 : half].smoothing, 0u);
        EXPECT_EQ(converted.mesh.faces[isFirst ? half : 0].smoothing, 1u);
        EXPECT_LT(WorstAngle(converted.mesh, pieces), 1);
    }
}

// In one piece too: the first side of the cube states nothing, and smooths nothing over its edges.
TEST(SmoothingGroups, LeaveOutFacesWithoutNormals) {
    Soup cube = Cube();
    std::fill_n(cube.normals.begin(), 6, aiVector3D());
    const Conversion converted({cube});
    EXPECT_TRUE(converted.mesh.normals.empty());
    for (std::size_t face = 0; face < 12; ++face) {
        EXPECT_EQ(converted.mesh.faces[face].smoothing == 0, face < 2) << face;
    }
    EXPECT_LT(WorstAngle(converted.mesh, {cube}), 1e-3);
}

// Each facet of a many-sided cone looks the way of the next, but not that of the one opposite.
TEST(SmoothingGroups, AreLeftOutWhereFacetsAreTooManyToTellApart) {
    constexpr int kFacets = 1000;
    Soup cone;
    for (int i = 0; i < kFacets; ++i) {
        cone.AddFlat({0, 0, 0.1f}, OnCircle(i, kFacets, 0), OnCircle(i + 1, kFacets, 0));
    }
    const Conversion converted({cone});
    EXPECT_TRUE(converted.mesh.normals.empty());
    EXPECT_EQ(MasksOf(converted.mesh), std::set<std::uint32_t>{0});
    EXPECT_LT(WorstAngle(converted.mesh, {cone}), 0.01);
}

TEST(SmoothingGroups, TellTheSidesOfADoubleSheetApart) {
    const Soup sphere = Sphere(96, 48);
    Soup both;
    for (std::size_t i = 0; i < sphere.places.size(); i += 3) {
        const std::array<aiVector3D, 3> p{sphere.places[i], sphere.places[i + 1],
                                          sphere.places[i + 2]};
        both.Add(p, p);
        both.Add({p[0], p[2], p[1]}, {-p[0], -p[2], -p[1]});
    }
    const Conversion converted({both});
    EXPECT_TRUE(converted.mesh.normals.empty());
    EXPECT_EQ(converted.mesh.vertices.size(), 96u * 47 + 2);
    EXPECT_EQ(MasksOf(converted.mesh), (std::set<std::uint32_t>{1, 2}));
    EXPECT_LT(WorstAngle(converted.mesh, {both}), 1);
}

TEST(SmoothingGroups, TurnWithTheMesh) {
    SourceScene source("Some Importer");  // y up
    const Soup sphere = Sphere(96, 48);
    SourceScene::Show(source.Root(), {sphere.PutInto(source)});
    const Mesh mesh = *source.Convert().scene.nodes.at(0).object.value().mesh;
    EXPECT_TRUE(mesh.normals.empty());
    Soup turned = sphere;
    for (aiVector3D& n : turned.normals) {
        n = {n.x, -n.z, n.y};
    }
    EXPECT_LT(WorstAngle(mesh, {turned}), 1);
}

// ---------------------------------------------------------------- geometric transforms

namespace {

Mesh ConvertBelow(const aiMatrix4x4& geometric, const Soup& soup) {
    SourceScene source(kFbx, "RootNode");
    source.Set("UpAxis", 2);
    aiNode* const above = source.AddNode(source.Root(), "Box_$AssimpFbx$_GeometricScaling");
    above->mTransformation = geometric;
    SourceScene::Show(source.AddNode(above, "Box"), {soup.PutInto(source)});
    return *source.Convert().scene.nodes.at(0).object.value().mesh;
}

// The faces' second and third corners change places under a mirroring.
Soup MovedSoup(const Soup& soup, const aiMatrix4x4& m) {
    Soup moved = soup;
    aiMatrix3x3 normalMatrix(m);
    normalMatrix.Inverse().Transpose();
    for (std::size_t i = 0; i < soup.places.size(); ++i) {
        const std::size_t from = m.Determinant() < 0 && i % 3 > 0 ? i / 3 * 3 + 3 - i % 3 : i;
        moved.places[i] = m * soup.places[from];
        moved.normals[i] = normalMatrix * soup.normals[from];
    }
    return moved;
}

bool FacesAgreeWithNormals(const Soup& soup) {
    for (std::size_t i = 0; i < soup.places.size(); i += 3) {
        const aiVector3D product =
            (soup.places[i + 1] - soup.places[i]) ^ (soup.places[i + 2] - soup.places[i]);
        if (!(product * soup.normals[i] > 0)) {
            return false;
        }
    }
    return true;
}

}  // namespace

TEST(GeometricTransforms, TurnTheNormalsOver) {
    const aiMatrix4x4 mirrored(-1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1);
    const Soup cube = Cube(), expected = MovedSoup(cube, mirrored);
    ASSERT_TRUE(FacesAgreeWithNormals(expected));
    const Mesh mesh = ConvertBelow(mirrored, cube);
    EXPECT_TRUE(mesh.normals.empty());
    EXPECT_LT(WorstAngle(mesh, {expected}), 1e-3);
    EXPECT_EQ(mesh.vertices.at(mesh.faces[3].v[1]),
              (Vec3{expected.places[10].x, expected.places[10].y, expected.places[10].z}));
}

TEST(GeometricTransforms, StretchTheNormalsTheOtherWay) {
    const Soup sphere = Sphere(48, 24);
    const aiMatrix4x4 kMatrices[] = {
        {5, 0, 0, 1, 0, 1, 0, 2, 0, 0, 0.5f, 3, 0, 0, 0, 1},
        {5, 0, 0, 0, 0, -1, 0, 0, 0, 0, 0.5f, 0, 0, 0, 0, 1},
        {1, 2, 0, 0, 0, 1, 0, 0, 0.5f, 0, -3, 0, 0, 0, 0, 1},
    };
    for (const aiMatrix4x4& m : kMatrices) {
        const Soup expected = MovedSoup(sphere, m);
        ASSERT_TRUE(FacesAgreeWithNormals(expected));
        EXPECT_LT(WorstAngle(ConvertBelow(m, sphere), {expected}), 1);
    }
}

TEST(GeometricTransforms, ThatAreFlatDoNoHarm) {
    const aiMatrix4x4 flat(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1);
    const Mesh mesh = ConvertBelow(flat, Sphere(48, 24));
    ASSERT_FALSE(mesh.normals.empty());
    for (const auto& [vertex, normal] : mesh.normals) {
        EXPECT_NEAR(std::abs(normal[2]), 1, 1e-6);
    }
    EXPECT_EQ(mesh.faces.size(), Sphere(48, 24).places.size() / 3);
}

// ---------------------------------------------------------------- specified normals

namespace {

// A vertex for each place and normal, all of them with their normals, to the last bit but one.
void ExpectSpecified(const std::vector<Soup>& pieces) {
    const Conversion converted(pieces);
    std::set<std::array<float, 6>> expected;
    for (const Soup& piece : pieces) {
        for (std::size_t i = 0; i < piece.places.size(); ++i) {
            const aiVector3D &p = piece.places[i], &n = piece.normals[i];
            expected.insert({p.x, p.y, p.z, n.x, n.y, n.z});
        }
    }
    EXPECT_EQ(converted.mesh.vertices.size(), expected.size());
    EXPECT_EQ(converted.mesh.normals.size(), expected.size());
    EXPECT_EQ(MasksOf(converted.mesh), std::set<std::uint32_t>{0});
    EXPECT_LT(WorstAngle(converted.mesh, pieces), 1e-4);
}

}  // namespace

TEST(SpecifiedNormals, AreForNormalsOfNoSurface) {
    Soup cube = Cube();
    std::mt19937 random(1);
    for (aiVector3D& normal : cube.normals) {
        normal = RandomDirection(random);
    }
    ExpectSpecified({cube});
}

TEST(SpecifiedNormals, AreForNormalsThatAreNotWeightedByArea) {
    ExpectSpecified({Cylinder(12)});
}

TEST(SpecifiedNormals, AreForFacesThatAreInsideOut) {
    Soup cube = Cube();
    for (aiVector3D& normal : cube.normals) {
        normal = -normal;
    }
    ExpectSpecified({cube});
}

// A normal is shared by faces of one material alone.
TEST(SpecifiedNormals, AreForSmoothnessAcrossMaterials) {
    const Soup sphere = Sphere(96, 48);
    Soup upper, lower;
    for (std::size_t i = 0; i < sphere.places.size(); i += 3) {
        Soup& half = i < sphere.places.size() / 2 ? upper : lower;
        const auto three = [i](const std::vector<aiVector3D>& from) {
            return std::array<aiVector3D, 3>{from[i], from[i + 1], from[i + 2]};
        };
        half.Add(three(sphere.places), three(sphere.normals));
    }
    ExpectSpecified({upper, lower});
    // The same sphere of one material needs none; see above.
    EXPECT_TRUE(Conversion({sphere}).mesh.normals.empty());
}

// Forty creased leaves at one vertex, each smooth over its crease.
TEST(SpecifiedNormals, AreForMoreThan32SmoothPatchesAtAVertex) {
    const auto leaves = [](int count) {
        Soup soup;
        for (int i = 0; i < count; ++i) {
            const aiVector3D left = OnCircle(3 * i, 3 * count, 0);
            const aiVector3D middle = OnCircle(3 * i + 1, 3 * count, 0.05f);
            const aiVector3D right = OnCircle(3 * i + 2, 3 * count, 0);
            const aiVector3D tip(0, 0, 0);
            const aiVector3D a = (left - tip) ^ (middle - tip), b = (middle - tip) ^ (right - tip);
            const aiVector3D na = aiVector3D(a).Normalize(), nb = aiVector3D(b).Normalize();
            const aiVector3D n = (a + b).Normalize();
            soup.Add({tip, left, middle}, {n, na, n});
            soup.Add({tip, middle, right}, {n, n, nb});
        }
        return soup;
    };
    const Conversion converted({leaves(32)});
    EXPECT_TRUE(converted.mesh.normals.empty());
    EXPECT_EQ(MasksOf(converted.mesh).size(), 32u);
    EXPECT_LT(WorstAngle(converted.mesh, {leaves(32)}), 1e-3);
    ExpectSpecified({leaves(33)});
}

TEST(SpecifiedNormals, AreNotGivenToCornersWithoutANormal) {
    Soup cube = Cube();
    std::mt19937 random(2);
    for (aiVector3D& normal : cube.normals) {
        normal = RandomDirection(random);
    }
    for (const std::size_t i : {0u, 1u, 2u, 7u}) {
        cube.normals[i] = aiVector3D();
    }
    const Conversion converted({cube});
    EXPECT_EQ(converted.mesh.normals.size(), 32u);
    EXPECT_LT(WorstAngle(converted.mesh, {cube}), 1e-4);
    // They show their faces'.
    EXPECT_EQ(ShownNormals(converted.mesh)[0][1], (Vec3{0, 0, -1}));
}

TEST(SpecifiedNormals, KeepSkinWeightsApart) {
    Soup cube = Cube();
    for (aiVector3D& normal : cube.normals) {
        normal = {1, 0, 0};
    }
    SourceScene source(kFbx, "RootNode");
    const unsigned mesh = cube.PutInto(source);
    source.AddBone(mesh, "bone", {{0, 1.0f}});
    SourceScene::Show(source.AddNode(source.Root(), "Node"), {mesh});
    source.AddNode(source.Root(), "bone");
    const Mesh made = *source.Convert().scene.nodes.at(0).object.value().mesh;
    EXPECT_EQ(made.vertices.size(), 9u);
    EXPECT_EQ(made.normals.size(), 9u);
}

// ---------------------------------------------------------------- size

namespace {

constexpr int kMany = 100000;

}  // namespace

TEST(ManyFacesAtAVertex, OfOneNormal) {
    Soup disc;
    for (int i = 0; i < kMany; ++i) {
        disc.AddFlat({0, 0, 0}, OnCircle(i, kMany, 0) * 1000.0f,
                     OnCircle(i + 1, kMany, 0) * 1000.0f);
    }
    for (aiVector3D& normal : disc.normals) {
        normal = {0, 0, 1};
    }
    const Conversion converted({disc});
    EXPECT_TRUE(converted.mesh.normals.empty());
    EXPECT_EQ(MasksOf(converted.mesh), std::set<std::uint32_t>{1});
    EXPECT_LT(WorstAngle(converted.mesh, {disc}), 1);
}

TEST(ManyFacesAtAVertex, EachWithItsOwnNormals) {
    Soup disc;
    std::mt19937 random(3);
    for (int i = 0; i < kMany; ++i) {
        disc.Add({aiVector3D(), OnCircle(i, kMany, 0), OnCircle(i + 1, kMany, 0)},
                 {RandomDirection(random), RandomDirection(random), RandomDirection(random)});
    }
    const Conversion converted({disc});
    EXPECT_EQ(converted.mesh.normals.size(), converted.mesh.vertices.size());
    EXPECT_LT(WorstAngle(converted.mesh, {disc}), 1e-4);
}

// 100000 quads that share a vertex and nothing else.
TEST(ManyFacesAtAVertex, InAsManyFlatPatches) {
    Soup leaves;
    for (int i = 0; i < kMany; ++i) {
        const aiVector3D out = OnCircle(i, kMany, 0), up(0, 0, 1);
        leaves.AddFlatQuad({0, 0, 0}, out, out + up, up * static_cast<float>(i + 1));
    }
    const Conversion converted({leaves});
    EXPECT_TRUE(converted.mesh.normals.empty());
    // There is a group for 32 of them; the rest do without.
    EXPECT_EQ(MasksOf(converted.mesh).size(), 33u);
    EXPECT_LT(WorstAngle(converted.mesh, {leaves}), 1);
}

TEST(ManyFacesAtAVertex, AtOneEdge) {
    Soup leaves;
    for (int i = 0; i < kMany; ++i) {
        leaves.AddFlat({0, 0, 0}, OnCircle(i, kMany, 0), {0, 0, 1});
    }
    const Conversion converted({leaves});
    EXPECT_TRUE(converted.mesh.normals.empty());
    EXPECT_LT(WorstAngle(converted.mesh, {leaves}), 1);
}

// ---------------------------------------------------------------- any mesh

namespace {

Vec3 ToVec3(const aiVector3D& v) {
    return {v.x, v.y, v.z};
}

aiVector3D GridPoint(std::mt19937& random) {
    std::uniform_int_distribution<int> number(0, 3);
    return {static_cast<float>(number(random)), static_cast<float>(number(random)),
            static_cast<float>(number(random))};
}

// Triangles between the points of a small grid: doubled, folded, without area, of many sheets.
std::vector<Soup> RandomPieces(std::mt19937& random, int pieces, int faces) {
    std::vector<Soup> made(static_cast<std::size_t>(pieces));
    for (int i = 0; i < faces; ++i) {
        Soup& piece = made[static_cast<std::size_t>(i % pieces)];
        piece.Add({GridPoint(random), GridPoint(random), GridPoint(random)}, {});
    }
    return made;
}

// The mesh of the pieces, one material each, with random smoothing groups.
Mesh WithRandomGroups(const std::vector<Soup>& pieces, std::mt19937& random) {
    Mesh mesh;
    std::map<Vec3, std::uint32_t> ids;
    const int groups = std::uniform_int_distribution<int>(1, 6)(random);
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        for (std::size_t k = 0; k < pieces[i].places.size(); k += 3) {
            Face face;
            for (std::size_t c = 0; c < 3; ++c) {
                const Vec3 place = ToVec3(pieces[i].places[k + c]);
                const auto next = static_cast<std::uint32_t>(mesh.vertices.size());
                const auto [found, isNew] = ids.try_emplace(place, next);
                if (isNew) {
                    mesh.vertices.push_back(place);
                }
                face.v[c] = found->second;
            }
            const int group = std::uniform_int_distribution<int>(0, groups)(random);
            face.smoothing = group == 0 ? 0 : 1u << group;
            face.material = static_cast<std::uint16_t>(i);
            mesh.faces.push_back(face);
        }
    }
    return mesh;
}

// The mesh shows the normals that the pieces state.
void State(const Mesh& mesh, std::vector<Soup>& pieces) {
    const std::vector<CornerNormals> shown = ShownNormals(mesh);
    std::size_t corner = 0;
    for (Soup& piece : pieces) {
        for (aiVector3D& normal : piece.normals) {
            const Vec3& n = shown[corner / 3][corner % 3];
            normal = {n[0], n[1], n[2]};
            ++corner;
        }
    }
}

}  // namespace

TEST(AnyMesh, ShowsTheNormalsThatItsSmoothingGroupsMade) {
    std::mt19937 random(11);
    int withGroups = 0;
    for (int i = 0; i < 400; ++i) {
        std::vector<Soup> pieces = RandomPieces(random, 1 + i % 3, 2 + i % 40);
        State(WithRandomGroups(pieces, random), pieces);
        const Conversion converted(pieces);
        ASSERT_LT(WorstAngle(converted.mesh, pieces), 1) << i;
        withGroups += converted.mesh.normals.empty() ? 1 : 0;
    }
    EXPECT_GT(withGroups, 20);
    EXPECT_LT(withGroups, 380);
}

TEST(AnyMesh, ShowsAnyNormalsThatItsFileStates) {
    std::mt19937 random(12);
    for (int i = 0; i < 400; ++i) {
        std::vector<Soup> pieces = RandomPieces(random, 1 + i % 3, 2 + i % 40);
        std::vector<aiVector3D> choice{{0, 0, 0}};
        for (int k = 0; k <= i % 5; ++k) {
            choice.push_back(RandomDirection(random));
        }
        std::uniform_int_distribution<std::size_t> any(0, choice.size() - 1);
        for (Soup& piece : pieces) {
            for (aiVector3D& normal : piece.normals) {
                normal = choice[any(random)];
            }
        }
        ASSERT_LT(WorstAngle(Conversion(pieces).mesh, pieces), 1) << i;
    }
}
