#include <gtest/gtest.h>

#include "kta/preview/sheet.h"
#include "tests/unit/kta/preview_meshes.h"

namespace {

using namespace sample;

constexpr std::array<int, 4> kNothing = {100, 100, -1, -1};

kta::File FileFrom(const std::string& bytes) {
    return ReadExact(bytes).file.value();
}

// A node at the origin, with a square in its space.
std::string NodeAndSquare(const std::string& name = "box") {
    return NodeChunk({.name = name}) + MeshChunk(TexturedSquare());
}

// The named node goes from x = 0 at 1 second to x = 10 at 3 seconds.
kta::File MotionFrom(const std::string& name = "box") {
    return FileFrom(kMotion + MotionPart(name) +
                    SampledTrack('P', {{1, {0, 0, 0}}, {3, {10, 0, 0}}}));
}

// ---------------------------------------------------------------- one picture

TEST(PreviewTimeTest, NodesStandWhereTheyAreAtTheTime) {
    const kta::File actor =
        FileFrom(kActor + NodeAndSquare() + NodeChunk({.name = "still"}) + MeshChunk([] {
                     MeshFields mesh = TexturedSquare(12);
                     mesh.node = 1;
                     return mesh;
                 }()));
    const kta::File motion = MotionFrom();
    const kta::PreviewModel model(actor, &motion, {});
    const auto covered = [&](double seconds) {
        kta::PreviewView view = kFrontView;
        view.seconds = seconds;
        return CoveredBy(kta::DrawPreview(model, view).picture.value());
    };
    // From -1 to 13, 90 pixels wide, and at 3 seconds from 9 to 13: twice as wide as high.
    EXPECT_EQ(covered(1)[3] - covered(1)[1] + 1, 14);
    EXPECT_EQ(covered(3)[3] - covered(3)[1] + 1, 46);
    // At rest the actor file alone counts.
    EXPECT_EQ(CoveredBy(kta::DrawPreview(model, kFrontView).picture.value()), covered(1));
}

TEST(PreviewTimeTest, BonesMoveSkinsAndMorphChannelsVertices) {
    const VertexWeights byBone = {{1, 1.0f}};
    const VertexWeights byOwnNode = {{0, 1.0f}};
    MorphFields morph = {.channel = "wide", .node = "skin", .minimum = -300, .maximum = 300};
    morph.packed.clear();
    const MeshFields square = TexturedSquare();
    for (const VertexFields& vertex : square.subMeshes[0].vertices) {
        const auto packed = [](float value) {  // in 109 steps for each hundredth
            return static_cast<std::uint16_t>((value * 100 + 300) * 109);
        };
        morph.packed.push_back({packed(vertex.position[0] * 3), packed(vertex.position[1]),
                                packed(vertex.position[2])});
    }
    const kta::File actor =
        FileFrom(kActor + NodeChunk({.name = "skin"}) + MeshChunk(square) +
                 NodeChunk({.name = "bone", .isBone = 1}) +
                 WeightsChunk(0, {byBone, byBone, byOwnNode, byOwnNode}) + MorphChunk(morph));
    const kta::File motion = FileFrom(kMotion + MotionPart("bone") +
                                      SampledTrack('P', {{0, {0, 0, 0}}, {1, {0, 2, 0}}}));
    const auto covered = [&](std::optional<double> seconds, double weight) {
        kta::PreviewView view = kFrontView;
        view.seconds = seconds;
        const kta::PreviewModel model(actor, &motion, {.morphs = {{"wide", weight}}});
        return CoveredBy(kta::DrawPreview(model, view).picture.value());
    };
    EXPECT_EQ(covered({}, 0), (std::array<int, 4>{5, 5, 94, 94}));
    // The upper two vertices go up by as much as the square is high: it is 45 pixels wide.
    EXPECT_EQ(covered(1, 0), (std::array<int, 4>{27, 5, 72, 94}));
    // Three times as wide.
    EXPECT_EQ(covered({}, 1), (std::array<int, 4>{5, 35, 94, 64}));
    EXPECT_EQ(covered({}, 0.5), (std::array<int, 4>{5, 27, 94, 72}));
}

// ---------------------------------------------------------------- skeletons

TEST(SkeletonTest, ShowsBonesWithoutMeshes) {
    NodeFields arm = {.name = "arm", .parentName = "body", .isBone = 1};
    arm.matrix[13] = -10;  // ten up
    const kta::File actor = FileFrom(kActor + NodeChunk({.name = "body", .isBone = 1}) +
                                     NodeChunk(arm) + NodeChunk({.name = "no bone"}));
    const auto picture = [&](bool withBones) {
        return kta::DrawPreview(kta::PreviewModel(actor, nullptr, {.withBones = withBones}),
                                kFrontView)
            .picture;
    };
    EXPECT_FALSE(picture(false));
    const std::array<int, 4> covered = CoveredBy(picture(true).value());
    EXPECT_EQ(covered[1], 5);
    EXPECT_EQ(covered[3], 94);
    EXPECT_LT(covered[2] - covered[0], 20);  // slender
    EXPECT_NE(picture(true)->At(50, 50), kta::kBackground);
}

TEST(SkeletonTest, ShowsThroughMeshes) {
    NodeFields inside = {.name = "inside", .isBone = 1};
    const kta::File actor =
        FileFrom(kActor + NodeChunk({.name = "box"}) + MeshChunk(TexturedSquare(0, 0, -5)) +
                 MeshChunk(TexturedSquare(0, 0, 5)) + NodeChunk(inside));
    const auto pixel = [&](bool withBones) {
        return kta::DrawPreview(kta::PreviewModel(actor, nullptr, {.withBones = withBones}),
                                kFrontView)
            .picture->At(49, 50);
    };
    EXPECT_NE(pixel(true), pixel(false));
}

// ---------------------------------------------------------------- several pictures

TEST(PreviewSeriesTest, AllInOneScale) {
    const kta::File actor = FileFrom(kActor + NodeAndSquare());
    const kta::File motion = MotionFrom();
    const kta::PreviewModel model(actor, &motion, {});
    const kta::PreviewShot shots[] = {{{0, 0}, 1.0}, {{0, 0}, 2.0}, {{0, 0}, 3.0}};
    std::vector<std::array<int, 4>> covered;
    const kta::Preview preview = kta::DrawSeries(
        model, shots, 100, 100,
        [&](const kta::Picture& picture) { covered.push_back(CoveredBy(picture)); });
    // From -1 to 11 over 90 pixels: 7.5 a unit, and 15 a square.
    ASSERT_EQ(covered.size(), 3u);
    EXPECT_EQ(covered[0], (std::array<int, 4>{5, 42, 19, 57}));
    EXPECT_EQ(covered[1], (std::array<int, 4>{42, 42, 57, 57}));
    EXPECT_EQ(covered[2], (std::array<int, 4>{80, 42, 94, 57}));
    EXPECT_EQ(preview.triangles, 2u);
    EXPECT_TRUE(preview.picture);
}

TEST(PreviewSeriesTest, ViewsGoRoundTheMiddle) {
    const kta::File actor = FileFrom(kActor + NodeChunk({}) + MeshChunk(TexturedSquare(100, 7)));
    const kta::PreviewModel model(actor, nullptr, {});
    std::vector<kta::PreviewShot> shots;
    for (const double azimuth : {0.0, 60.0, 90.0}) {
        shots.push_back({{azimuth, 0}, {}});
    }
    std::vector<std::array<int, 4>> covered;
    const kta::Preview preview = kta::DrawSeries(
        model, shots, 100, 100,
        [&](const kta::Picture& picture) { covered.push_back(CoveredBy(picture)); });
    EXPECT_EQ(covered[0], (std::array<int, 4>{5, 5, 94, 94}));
    EXPECT_EQ(covered[1], (std::array<int, 4>{27, 5, 72, 94}));  // half as wide: cos 60
    EXPECT_EQ(covered[2], kNothing);                             // from the edge
    EXPECT_TRUE(preview.picture);
}

TEST(PreviewSeriesTest, NothingToShow) {
    const kta::File actor = FileFrom(kActor + NodeChunk({}));
    int pictures = 0;
    const kta::PreviewShot shots[] = {{}, {}};
    const kta::Preview preview = kta::DrawSeries(kta::PreviewModel(actor, nullptr, {}), shots, 10,
                                                 10, [&](const kta::Picture&) { ++pictures; });
    EXPECT_EQ(pictures, 2);
    EXPECT_EQ(preview.triangles, 0u);
    EXPECT_FALSE(preview.picture);
}

// ---------------------------------------------------------------- sheets

TEST(SheetTest, AsManyColumnsAsRowsOrOneMore) {
    const auto size = [](int pictures) {
        const kta::SheetSize sheet = kta::SquareSheet(pictures);
        return std::pair(sheet.columns, sheet.rows);
    };
    EXPECT_EQ(size(1), std::pair(1, 1));
    EXPECT_EQ(size(2), std::pair(2, 1));
    EXPECT_EQ(size(4), std::pair(2, 2));
    EXPECT_EQ(size(6), std::pair(3, 2));
    EXPECT_EQ(size(10), std::pair(4, 3));
}

TEST(SheetTest, FillsRowByRow) {
    kta::Sheet sheet({2, 2}, 3, 2);
    for (const std::uint8_t red : {10, 20, 30}) {
        sheet.Add(kta::PlainPicture(3, 2, {red, 0, 0}));
    }
    const kta::Picture& whole = sheet.Whole();
    EXPECT_EQ(whole.width, 6);
    EXPECT_EQ(whole.height, 4);
    EXPECT_EQ(whole.At(2, 1)[0], 10);
    EXPECT_EQ(whole.At(3, 0)[0], 20);
    EXPECT_EQ(whole.At(0, 2)[0], 30);
    EXPECT_EQ(whole.At(5, 3), kta::kBackground);
}

TEST(SheetTest, LinesStandInTheLowerLeftCorner) {
    kta::Picture picture = kta::PlainPicture(60, 40, kta::kBackground);
    kta::WriteLine(picture, "I");
    const std::array<int, 4> covered = CoveredBy(picture);
    EXPECT_GE(covered[0], 5);
    EXPECT_GE(covered[1], 15);
    EXPECT_LT(covered[2], 20);
    EXPECT_LT(covered[3], 40);
    kta::Picture small = kta::PlainPicture(3, 3, kta::kBackground);
    kta::WriteLine(small, std::string(1000, 'W') + "\n\xff");  // as far as there is room
    EXPECT_EQ(small.pixels.size(), 9u);
}

// ---------------------------------------------------------------- threads

TEST(PreviewThreadsTest, MakeNoDifference) {
    const kta::File actor =
        FileFrom(kActor + NodeAndSquare() + MeshChunk(TexturedSquare(0.5f, 0.5f, -1)));
    const kta::PreviewModel model(actor, nullptr, {});
    kta::PreviewView view = {.width = 300, .height = 700};
    view.workers = 1;
    const kta::Picture picture = kta::DrawPreview(model, view).picture.value();
    for (const int workers : {2, 5, 0}) {
        view.workers = workers;
        EXPECT_EQ(kta::DrawPreview(model, view).picture->pixels, picture.pixels) << workers;
    }
}

TEST(PreviewThreadsTest, RowsComeFinishedFromTheTop) {
    const kta::File actor = FileFrom(kActor + NodeAndSquare());
    const kta::PreviewView view = {.width = 300, .height = 700, .workers = 3};
    std::vector<kta::Rgb> rows;
    const kta::Picture picture =
        kta::DrawPreview(
            kta::PreviewModel(actor, nullptr, {}), view,
            [&](const kta::Picture& unfinished, int end) {
                const auto size = static_cast<std::size_t>(end) * 300;
                rows.insert(rows.end(),
                            unfinished.pixels.begin() + static_cast<std::ptrdiff_t>(rows.size()),
                            unfinished.pixels.begin() + static_cast<std::ptrdiff_t>(size));
            })
            .picture.value();
    EXPECT_EQ(rows, picture.pixels);
}

}  // namespace
