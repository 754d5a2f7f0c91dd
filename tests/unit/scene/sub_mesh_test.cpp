#include "scene/sub_mesh.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include "tests/support/array_storage.h"

namespace {

using Triple = std::array<float, 3>;
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

CornerVertex Corner(int original, const Triple& normal = {0, 0, 1},
                    const std::vector<float>& uvs = {}) {
    return {{original, {}, {normal[0], normal[1], normal[2]}}, uvs.data()};
}

// A list of the faces, through both passes; `faces` are original vertices.
class Built {
  public:
    struct Face {
        int material;
        std::array<CornerVertex, 3> corners;
    };

    explicit Built(const std::vector<Face>& faces, int pairs = 0) {
        EXPECT_TRUE(list.Reserve(static_cast<int>(faces.size()), pairs));
        for (const Face& face : faces) {
            EXPECT_TRUE(list.AddFace(face.material, face.corners.data()));
        }
        list.NumberVertices();
        for (std::size_t i = 0; i < faces.size(); ++i) {
            std::array<int, 3> indices;
            found.push_back(list.IndexFace(static_cast<int>(i), indices.data()));
            results.push_back(indices);
        }
    }

    // The sub-mesh's vertices, by their original ones.
    std::vector<int> Originals(int subMesh) const {
        std::vector<int> originals;
        for (int i = 0; i < list[subMesh].numVertices; ++i) {
            originals.push_back(list.VertexOf(list[subMesh], i).originalVertex);
        }
        return originals;
    }

    SubMeshList list;
    std::vector<bool> found;
    std::vector<std::array<int, 3>> results;
};

TEST(SubMeshList, VerticesAreNumberedByOriginalVertex) {
    const Triple up = {0, 0, 1}, down = {0, 0, -1};
    const Built built({{5, {Corner(7, up), Corner(2, up), Corner(4, up)}},
                       {5, {Corner(2, down), Corner(7, up), Corner(0, up)}}});
    ASSERT_EQ(built.list.Count(), 1);
    EXPECT_EQ(built.list[0].material, 5);
    EXPECT_EQ(built.list[0].numFaces, 2);
    EXPECT_EQ(built.Originals(0), (std::vector{0, 2, 2, 4, 7}));
    EXPECT_EQ(built.results[0], (std::array{4, 1, 3}));
    EXPECT_EQ(built.results[1], (std::array{2, 4, 0}));
    EXPECT_EQ(built.list.VertexOf(built.list[0], 1).normal[2], 1.0f);
    EXPECT_EQ(built.list.VertexOf(built.list[0], 2).normal[2], -1.0f);
    EXPECT_EQ(built.list.FacesOf(built.list[0])[1].indices[2], 0);
}

TEST(SubMeshList, SubMeshesStandInOrderOfCreationAndShareNothing) {
    const std::array<CornerVertex, 3> corners = {Corner(0), Corner(1), Corner(2)};
    const Built built({{9, corners}, {0, corners}, {9, {Corner(2), Corner(1), Corner(3)}}});
    ASSERT_EQ(built.list.Count(), 2);
    EXPECT_EQ(built.list[0].material, 9);
    EXPECT_EQ(built.Originals(0), (std::vector{0, 1, 2, 3}));
    EXPECT_EQ(built.list[0].numFaces, 2);
    EXPECT_EQ(built.list[1].material, 0);
    EXPECT_EQ(built.Originals(1), (std::vector{0, 1, 2}));
    EXPECT_EQ(built.list.FacesOf(built.list[0])[1].indices[0], 2);
    EXPECT_EQ(built.list.FacesOf(built.list[1])[0].indices[1], 1);
}

TEST(SubMeshList, ZerosOfBothSignsAreEqualAndTheFirstIsKept) {
    const std::vector<float> plus = {0.0f, 1}, minus = {-0.0f, 1};
    const Built built({{1,
                        {Corner(0, {0, -0.0f, 1}, plus), Corner(0, {-0.0f, 0, 1}, minus),
                         Corner(0, {0, 0, 1}, minus)}}},
                      1);
    ASSERT_EQ(built.list[0].numVertices, 1);
    EXPECT_TRUE(std::signbit(built.list.VertexOf(built.list[0], 0).normal[1]));
    EXPECT_FALSE(std::signbit(built.list.PairsOf(built.list[0], 0)[0]));
}

TEST(SubMeshList, EveryComponentCounts) {
    const std::vector<float> base = {1, 2, 3, 4};
    std::vector<std::vector<float>> others(4, base);
    for (int i = 0; i < 4; ++i) {
        others[i][i] = 9;
    }
    const Triple n = {1, 2, 3};
    const Built built(
        {{1, {Corner(0, n, base), Corner(0, n, others[0]), Corner(0, n, others[1])}},
         {1, {Corner(0, n, others[2]), Corner(0, n, others[3]), Corner(0, n, base)}},
         {1, {Corner(0, {9, 2, 3}, base), Corner(0, {1, 9, 3}, base), Corner(0, {1, 2, 9}, base)}}},
        2);
    EXPECT_EQ(built.list[0].numVertices, 8);
    EXPECT_EQ(built.results[1], (std::array{3, 4, 0}));
    EXPECT_EQ(built.results[2], (std::array{5, 6, 7}));
}

TEST(SubMeshList, PositionsAreNotCompared) {
    CornerVertex moved = Corner(0);
    moved.record.position[0] = 5;
    const Built built({{1, {Corner(0), moved, Corner(1)}}});
    EXPECT_EQ(built.list[0].numVertices, 2);
    EXPECT_EQ(built.list.VertexOf(built.list[0], 0).position[0], 0.0f);
}

TEST(SubMeshList, NotANumberIsNeverFound) {
    const std::vector<float> uv = {kNaN, 0}, good = {0, 0};
    const Triple n = {0, 0, 1};
    const Built built({{1, {Corner(0, n, good), Corner(1, {kNaN, 0, 1}, good), Corner(2, n, good)}},
                       {1, {Corner(0, n, good), Corner(1, {kNaN, 0, 1}, good), Corner(2, n, uv)}},
                       {1, {Corner(0, n, good), Corner(3, n, good), Corner(2, n, good)}}},
                      1);
    EXPECT_EQ(built.found, (std::vector{false, false, true}));
    EXPECT_EQ(built.results[0], (std::array{0, -1, 3}));
    EXPECT_EQ(built.results[1], (std::array{0, -1, -1}));
    EXPECT_EQ(built.Originals(0), (std::vector{0, 1, 1, 2, 2, 3}));
    EXPECT_EQ(built.list[0].numFaces, 1);
    EXPECT_EQ(built.list.FacesOf(built.list[0])[0].indices[1], 5);
}

TEST(SubMeshList, WithoutFacesThereIsNothing) {
    const Built built({});
    EXPECT_EQ(built.list.Count(), 0);
}

TEST(SubMeshList, TooManyFacesAreRefused) {
    SubMeshList list;
    EXPECT_FALSE(list.Reserve(std::numeric_limits<int>::max() / 3 + 1, 0));
}

// ---------------------------------------------------------------- cost

// A fan of faceted faces: each corner at the middle has a normal of its own.
std::vector<Built::Face> Fan(int count, bool numbers) {
    std::vector<Built::Face> faces;
    for (int i = 0; i < count; ++i) {
        const Triple normal = {numbers ? static_cast<float>(i) : kNaN, 1, 0};
        faces.push_back({1, {Corner(0, normal), Corner(i + 1, normal), Corner(i + 2, normal)}});
    }
    return faces;
}

TEST(SubMeshListCost, FanAroundOneVertex) {
    constexpr int kFaces = 100000;
    const Built built(Fan(kFaces, true));
    EXPECT_EQ(built.list[0].numVertices, 3 * kFaces);
    EXPECT_EQ(built.list[0].numFaces, kFaces);
    EXPECT_LT(built.list.Comparisons(), 3 * kFaces);
}

// The vertices of one original vertex are found again, be they few or a crowd.
TEST(SubMeshListCost, CrowdsAreFoundAgain) {
    for (const int crowd : {1, 2, 15, 16, 17, 18, 100, 1000}) {
        std::vector<Built::Face> faces;
        for (int i = 0; i < 3 * crowd; ++i) {
            const Triple normal = {static_cast<float>(i % crowd), 1, 0};
            faces.push_back({i % 2, {Corner(0, normal), Corner(1), Corner(2)}});
        }
        const Built built(faces);
        int vertices = 0;
        for (int i = 0; i < built.list.Count(); ++i) {
            vertices += built.list[i].numVertices - 2;
        }
        EXPECT_EQ(vertices, crowd % 2 == 0 ? crowd : 2 * crowd) << crowd;
        for (std::size_t i = 0; i < faces.size(); ++i) {
            const SubMesh& subMesh = built.list[i % 2 == 0 ? 0 : 1];
            const KTAVertex& vertex = built.list.VertexOf(subMesh, built.results[i][0]);
            ASSERT_EQ(vertex.normal[0], static_cast<float>(i % crowd)) << crowd << ", " << i;
        }
        EXPECT_LE(built.list.Comparisons(), 3 * 17 * 3 * crowd);
    }
}

TEST(SubMeshListCost, FanOfNormalsThatAreNoNumbers) {
    constexpr int kFaces = 100000;
    const Built built(Fan(kFaces, false));
    EXPECT_EQ(built.list[0].numVertices, 3 * kFaces);
    EXPECT_EQ(built.list[0].numFaces, 0);
    EXPECT_LT(built.list.Comparisons(), 3 * kFaces);
}

TEST(SubMeshListCost, OneSubMeshForEachOfManyMaterials) {
    constexpr int kMaterials = 65536;
    std::vector<Built::Face> faces;
    for (int i = 0; i < kMaterials; ++i) {
        faces.push_back({kMaterials - i, {Corner(0), Corner(500000 + i), Corner(1)}});
    }
    const Built built(faces);
    ASSERT_EQ(built.list.Count(), kMaterials);
    EXPECT_LT(built.list.Comparisons(), 3 * kMaterials);
    for (int i = 0; i < kMaterials; ++i) {
        ASSERT_EQ(built.list[i].material, kMaterials - i);
        ASSERT_EQ(built.Originals(i), (std::vector{0, 1, 500000 + i}));
        ASSERT_EQ(built.results[i], (std::array{0, 2, 1}));
    }
}

// ---------------------------------------------------------------- memory

// Faces of which each corner has one of `distinct` normals at an original vertex of its own, and so
// many pairs.
void BuildCorners(SubMeshList& list, int faceCount, int distinct, int pairs) {
    const std::vector<float> uvs(2 * pairs, 0.5f);
    std::array<int, 3> indices;
    EXPECT_TRUE(list.Reserve(faceCount, pairs, distinct));
    for (int i = 0; i < faceCount; ++i) {
        std::array<CornerVertex, 3> corners;
        for (int k = 0; k < 3; ++k) {
            corners[k] = Corner((3 * i + k) % distinct, {0, 0, 1}, uvs);
        }
        EXPECT_TRUE(list.AddFace(1, corners.data()));
    }
    list.NumberVertices();
    for (int i = 0; i < faceCount; ++i) {
        EXPECT_TRUE(list.IndexFace(i, indices.data()));
    }
    EXPECT_EQ(list[0].numVertices, distinct);
}

TEST(SubMeshListMemory, IsThreeTimesTheChunkAtMost) {
    constexpr int kFaces = 10000;
    for (const int pairs : {0, 1, 2, 8}) {
        // From closed meshes with half as many vertices as faces to none that is shared.
        for (const int vertices : {5000, 8193, 10000, 15001, 16385, 20000, 26215, 30000}) {
            const ArrayStorage storage;
            {
                SubMeshList list;
                BuildCorners(list, kFaces, vertices, pairs);
            }
            const std::size_t chunk = 28 + 12 + kFaces * 12 + vertices * (28 + 8 * pairs);
            EXPECT_LE(storage.Peak(), 3 * chunk) << vertices << " vertices, " << pairs << " pairs";
            EXPECT_GT(storage.Peak(), chunk / 2);
        }
    }
}

TEST(SubMeshListMemory, WhereItIsMissingTheListSaysSo) {
    int failing = 0;
    for (bool done = false; !done; ++failing) {
        const ArrayStorage storage(failing);
        try {
            SubMeshList list;
            BuildCorners(list, 200, 400, 1);
            done = true;
        } catch (const std::bad_alloc&) {
        }
        EXPECT_EQ(done, storage.Requests() <= failing);
        ASSERT_LT(failing, 1000);
    }
    EXPECT_GT(failing, 10);
}

}  // namespace
