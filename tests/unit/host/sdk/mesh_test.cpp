// Map channels and normals of meshes.
#include <triobj.h>

#include <cmath>
#include <limits>

#include "tests/unit/host/sdk/support.h"

namespace scene = maxhost::scene;

namespace {

struct Corners {
    int a, b, c;
    DWORD smoothing = 0;
    int material = 0;
};

void Fill(Mesh& mesh, const std::vector<Point3>& vertices, const std::vector<Corners>& faces) {
    mesh.setNumVerts(static_cast<int>(vertices.size()));
    std::copy(vertices.begin(), vertices.end(), mesh.verts);
    mesh.setNumFaces(static_cast<int>(faces.size()));
    for (int i = 0; i < mesh.numFaces; ++i) {
        mesh.faces[i].setVerts(faces[i].a, faces[i].b, faces[i].c);
        mesh.faces[i].setSmGroup(faces[i].smoothing);
        mesh.faces[i].setMatID(static_cast<MtlID>(faces[i].material));
    }
}

DWORD NormalCount(Mesh& mesh, int vertex) {
    return mesh.getRVert(vertex).rFlags & NORCT_MASK;
}

// The smoothing groups of a vertex's normals, in order.
std::vector<DWORD> Groups(Mesh& mesh, int vertex) {
    RVertex& rendered = mesh.getRVert(vertex);
    const DWORD count = NormalCount(mesh, vertex);
    if (count == 1) {
        return {rendered.rn.getSmGroup()};
    }
    std::vector<DWORD> groups;
    for (DWORD i = 0; i < count; ++i) {
        groups.push_back(rendered.ern[i].getSmGroup());
    }
    return groups;
}

// Vertex 0 in the middle, 1 to 4 along x, y, z and -x. Faces 0: xy, 1: yz, 2: zx, 3: flat on y and
// -x; areas are all 1/2.
const std::vector<Point3> kStar = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {-1, 0, 0}};

std::vector<Corners> Star(const std::vector<DWORD>& groups, const std::vector<int>& materials) {
    return {{0, 1, 2, groups[0], materials[0]},
            {0, 2, 3, groups[1], materials[1]},
            {0, 3, 1, groups[2], materials[2]},
            {0, 2, 4, groups[3], materials[3]}};
}

// ---------------------------------------------------------------- map channels

TEST(MeshMaps, AnUnsupportedChannelHasNothing) {
    Mesh mesh;
    for (const int channel : {-2, -1, 0, 1, 99, 100}) {
        EXPECT_FALSE(mesh.mapSupport(channel)) << channel;
        mesh.setNumMapVerts(channel, 3);
        EXPECT_EQ(mesh.getNumMapVerts(channel), 0) << channel;
        EXPECT_EQ(mesh.mapVerts(channel), nullptr) << channel;
        EXPECT_EQ(mesh.mapFaces(channel), nullptr) << channel;
    }
    mesh.setMapSupport(-1);
    mesh.setMapSupport(100);
    EXPECT_FALSE(mesh.mapSupport(-1));
    EXPECT_FALSE(mesh.mapSupport(100));
}

TEST(MeshMaps, ElementsAreKeptOnRequest) {
    Mesh mesh;
    mesh.setNumFaces(1);
    mesh.setMapSupport(99);
    EXPECT_TRUE(mesh.mapSupport(99));
    EXPECT_EQ(mesh.getNumMapVerts(99), 0);
    ASSERT_NE(mesh.mapFaces(99), nullptr);
    EXPECT_EQ(mesh.mapFaces(99)[0].t[2], DWORD{0});
    mesh.setNumMapVerts(99, 2);
    mesh.mapVerts(99)[1] = Point3(1, 2, 3);
    mesh.mapFaces(99)[0].setTVerts(1, 0, 1);
    mesh.setNumMapVerts(99, 3, TRUE);
    EXPECT_EQ(mesh.mapVerts(99)[1], Point3(1, 2, 3));
    EXPECT_EQ(mesh.mapVerts(99)[2], Point3(0, 0, 0));
    mesh.setNumMapVerts(99, -1, TRUE);
    EXPECT_EQ(mesh.getNumMapVerts(99), 3);
    mesh.setNumMapVerts(99, 3);
    EXPECT_EQ(mesh.mapVerts(99)[1], Point3(0, 0, 0));
    // Map faces follow the faces.
    mesh.setNumFaces(2, TRUE);
    EXPECT_EQ(mesh.mapFaces(99)[0].t[2], DWORD{1});
    EXPECT_EQ(mesh.mapFaces(99)[1].t[2], DWORD{0});
    mesh.setMapSupport(99, TRUE);
    EXPECT_EQ(mesh.getNumMapVerts(99), 3);
    mesh.setMapSupport(99, FALSE);
    EXPECT_EQ(mesh.mapVerts(99), nullptr);
}

class MeshInScene : public SceneTest {
  protected:
    static Mesh& OpenMesh(scene::Mesh description, std::optional<scene::ClassId> classId = {}) {
        scene::Node node = MakeNode("n");
        node.object.emplace().mesh = std::make_shared<const scene::Mesh>(std::move(description));
        node.object->classId = classId;
        Object* const object = OpenNode(node)->EvalWorldState(0).obj;
        return static_cast<TriObject*>(object->ConvertToType(0, triObjectClassID))->GetMesh();
    }
};

TEST_F(MeshInScene, ChannelsAndSpecifiedNormalsAreAsDescribed) {
    scene::Mesh description;
    description.vertices = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    description.faces = {{{0, 1, 2}, 1, 0}};
    description.channels[1] = {{{0.25f, 0.75f}, {0.5f, 1}}, {{1, 0, 1}}};
    description.channels[98] = {};
    description.normals[2] = {0, 3, 0};
    Mesh& mesh = OpenMesh(description);
    ASSERT_EQ(mesh.getNumMapVerts(1), 2);
    EXPECT_EQ(mesh.mapVerts(1)[0], Point3(0.25f, 0.75f, 0.0f));
    EXPECT_EQ(mesh.mapFaces(1)[0].t[0], DWORD{1});
    EXPECT_EQ(mesh.mapFaces(1)[0].t[1], DWORD{0});
    EXPECT_TRUE(mesh.mapSupport(98));
    EXPECT_EQ(mesh.getNumMapVerts(98), 0);
    EXPECT_FALSE(mesh.mapSupport(2));
    for (int run = 0; run < 2; ++run) {
        mesh.buildNormals();
        EXPECT_EQ(mesh.getRVert(2).rFlags, DWORD{SPECIFIED_NORMAL | 1});
        EXPECT_EQ(mesh.getRVert(2).rn.getNormal(), Point3(0, 3, 0));
        EXPECT_EQ(mesh.getRVert(1).rFlags, DWORD{1});
        EXPECT_EQ(mesh.getRVert(1).rn.getNormal(), Point3(0, 0, 1));
    }
}

// ---------------------------------------------------------------- normals

TEST(MeshNormals, FaceNormalsHaveLengthOneOrNone) {
    Mesh mesh;
    Fill(mesh, {{0, 0, 0}, {2, 0, 0}, {0, 2, 0}, {4, 0, 0}}, {{0, 1, 2}, {0, 2, 1}, {0, 1, 3}});
    mesh.buildNormals();
    EXPECT_EQ(mesh.getFaceNormal(0), Point3(0, 0, 1));
    EXPECT_EQ(mesh.getFaceNormal(1), Point3(0, 0, -1));
    EXPECT_EQ(mesh.getFaceNormal(2), Point3(0, 0, 0));
}

TEST(MeshNormals, FacetedFacesAndLooseVerticesHaveNone) {
    Mesh mesh;
    Fill(mesh, kStar, Star({0, 0, 4, 0}, {0, 0, 0, 0}));
    mesh.buildNormals();
    EXPECT_EQ(Groups(mesh, 0), std::vector<DWORD>{4});
    EXPECT_EQ(mesh.getRVert(0).rn.getNormal(), Point3(0, 1, 0));
    EXPECT_EQ(NormalCount(mesh, 2), DWORD{0});
    EXPECT_EQ(NormalCount(mesh, 4), DWORD{0});
}

TEST(MeshNormals, DisjointGroupsHaveNormalsInOrderOfTheirFirstFaces) {
    Mesh mesh;
    Fill(mesh, kStar, Star({2, 1, 2, 4}, {7, 7, 7, 7}));
    mesh.buildNormals();
    EXPECT_EQ(Groups(mesh, 0), (std::vector<DWORD>{2, 1, 4}));
    const float half = std::sqrt(0.5f);
    RVertex& middle = mesh.getRVert(0);
    EXPECT_EQ(middle.rFlags, DWORD{3});
    EXPECT_EQ(middle.ern[0].getNormal(), Point3(0.0f, half, half));
    EXPECT_EQ(middle.ern[1].getNormal(), Point3(1, 0, 0));
    EXPECT_EQ(middle.ern[2].getNormal(), Point3(0, 0, 1));
    EXPECT_EQ(middle.ern[2].getMtlIndex(), 7);
    EXPECT_EQ(mesh.getRVert(4).rn.getNormal(), Point3(0, 0, 1));
}

TEST(MeshNormals, GroupsThatOverlapThroughALaterFaceAreOne) {
    Mesh mesh;
    // 1 and 2 meet in 3, which comes last; 4 stays apart and second.
    Fill(mesh, kStar, Star({1, 4, 2, 3}, {0, 0, 0, 0}));
    mesh.buildNormals();
    EXPECT_EQ(Groups(mesh, 0), (std::vector<DWORD>{3, 4}));
    const float length = std::sqrt(5.0f);
    const Point3 joined = mesh.getRVert(0).ern[0].getNormal();
    EXPECT_TRUE(IsNear(joined, Point3(0.0f, 1 / length, 2 / length)));
}

TEST(MeshNormals, MaterialsDoNotShare) {
    Mesh mesh;
    Fill(mesh, kStar, Star({1, 1, 1, 1}, {0, 65535, 0, 65535}));
    mesh.buildNormals();
    ASSERT_EQ(Groups(mesh, 0), (std::vector<DWORD>{1, 1}));
    const float half = std::sqrt(0.5f);
    EXPECT_EQ(mesh.getRVert(0).ern[0].getMtlIndex(), 0);
    EXPECT_EQ(mesh.getRVert(0).ern[1].getMtlIndex(), 65535);
    EXPECT_EQ(mesh.getRVert(0).ern[0].getNormal(), Point3(0.0f, half, half));
    EXPECT_EQ(mesh.getRVert(0).ern[1].getNormal(), Point3(half, 0.0f, half));
}

TEST(MeshNormals, GroupsMeetOnlyThroughFacesOfTheirMaterial) {
    Mesh mesh;
    Fill(mesh, kStar, Star({1, 2, 3, 4}, {0, 0, 1, 0}));
    mesh.buildNormals();
    EXPECT_EQ(Groups(mesh, 0), (std::vector<DWORD>{1, 2, 3, 4}));
}

TEST(MeshNormals, LargeFacesWeighMore) {
    Mesh mesh;
    Fill(mesh, {{0, 0, 0}, {3, 0, 0}, {0, 1, 0}, {0, 0, 1}}, {{0, 1, 2, 1}, {0, 2, 3, 1}});
    mesh.buildNormals();
    const Point3 normal = mesh.getRVert(0).rn.getNormal();
    const float length = std::sqrt(10.0f);
    EXPECT_TRUE(IsNear(normal, Point3(1 / length, 0.0f, 3 / length)));
}

TEST(MeshNormals, ASumOfZeroStays) {
    Mesh mesh;
    Fill(mesh, kStar, {{0, 1, 2, 1}, {0, 2, 1, 1}, {3, 3, 3, 2}});
    mesh.buildNormals();
    EXPECT_EQ(Groups(mesh, 0), std::vector<DWORD>{1});
    EXPECT_EQ(mesh.getRVert(0).rn.getNormal(), Point3(0, 0, 0));
    EXPECT_EQ(Groups(mesh, 3), std::vector<DWORD>{2});
    EXPECT_EQ(mesh.getRVert(3).rn.getNormal(), Point3(0, 0, 0));
}

TEST(MeshNormals, BuildingAgainFollowsTheMesh) {
    Mesh mesh;
    Fill(mesh, kStar, Star({1, 2, 4, 0}, {0, 0, 0, 0}));
    mesh.buildNormals();
    EXPECT_EQ(NormalCount(mesh, 0), DWORD{3});
    mesh.faces[0].setSmGroup(0);
    mesh.faces[1].setSmGroup(0);
    mesh.checkNormals(TRUE);
    EXPECT_EQ(NormalCount(mesh, 0), DWORD{3});
    mesh.buildNormals();
    EXPECT_EQ(NormalCount(mesh, 0), DWORD{1});
    EXPECT_EQ(mesh.getRVert(0).ern, nullptr);
    EXPECT_EQ(mesh.getRVert(0).rn.getNormal(), Point3(0, 1, 0));
}

TEST(MeshNormals, CheckBuildsWhatIsMissing) {
    Mesh mesh;
    Fill(mesh, kStar, Star({1, 0, 0, 0}, {0, 0, 0, 0}));
    mesh.checkNormals(FALSE);
    EXPECT_EQ(mesh.getRVert(0).rFlags, DWORD{0});
    mesh.checkNormals(TRUE);
    EXPECT_EQ(mesh.getRVert(0).rFlags, DWORD{1});
    EXPECT_EQ(mesh.getFaceNormal(1), Point3(1, 0, 0));
    mesh.setNumVerts(6, TRUE);
    mesh.checkNormals(FALSE);
    EXPECT_EQ(mesh.getRVert(5).rFlags, DWORD{0});
    EXPECT_EQ(mesh.getRVert(0).rFlags, DWORD{0});
}

TEST(MeshNormals, AnEmptyMeshHasNone) {
    Mesh mesh;
    mesh.buildNormals();
    mesh.checkNormals(TRUE);
    EXPECT_EQ(mesh.getNumVerts(), 0);
}

TEST(MeshNormals, OverflowGivesWhatIsNotANumber) {
    Mesh mesh;
    const float big = std::numeric_limits<float>::max();
    Fill(mesh, {{-big, 0.0f, 0.0f}, {big, 0.0f, 0.0f}, {0, 1, 0}}, {{0, 1, 2, 1}});
    mesh.buildNormals();
    const Point3 normal = mesh.getFaceNormal(0);
    EXPECT_TRUE(std::isnan(normal.x) || std::isnan(normal.y) || std::isnan(normal.z));
}

// A fan around vertex 0 in the plane of x and y.
Mesh& Fan(Mesh& mesh, int faces) {
    std::vector<Point3> vertices = {{0, 0, 0}};
    for (int i = 0; i <= faces; ++i) {
        const double angle = 6.0 * i / faces;
        vertices.push_back(Point3(std::cos(angle), std::sin(angle), 0.0));
    }
    std::vector<Corners> corners;
    for (int i = 0; i < faces; ++i) {
        corners.push_back({0, i + 1, i + 2, 1, i % 65536});
    }
    Fill(mesh, vertices, corners);
    return mesh;
}

TEST(MeshNormals, AVertexHas255AtMost) {
    for (const int count : {255, 256, 257, 600}) {
        Mesh mesh;
        Fan(mesh, count).buildNormals();
        EXPECT_EQ(mesh.getRVert(0).rFlags, DWORD{255});
        EXPECT_EQ(mesh.getRVert(0).ern[254].getMtlIndex(), 254);
        EXPECT_TRUE(IsNear(mesh.getRVert(0).ern[254].getNormal(), Point3(0, 0, 1)));
        // Those of the next vertices are where they belong.
        EXPECT_EQ(mesh.getRVert(2).rFlags, DWORD{2});
        EXPECT_EQ(mesh.getRVert(2).ern[1].getMtlIndex(), 1);
    }
}

// Quadratic cost would take minutes.
TEST(MeshNormals, CostIsLinearInTheMaterialsAndFacesAtAVertex) {
    Mesh mesh;
    Fan(mesh, 65536).buildNormals();
    EXPECT_EQ(NormalCount(mesh, 0), DWORD{255});
    EXPECT_EQ(NormalCount(mesh, 65536), DWORD{2});
    for (int i = 0; i < mesh.numFaces; ++i) {
        mesh.faces[i].setSmGroup(DWORD{1} << (i % 32));
        mesh.faces[i].setMatID(3);
    }
    mesh.buildNormals();
    EXPECT_EQ(NormalCount(mesh, 0), DWORD{32});
}

}  // namespace
