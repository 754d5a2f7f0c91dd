#include "kta/preview/page.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/unit/kta/sample.h"

namespace {

using namespace sample;
using nlohmann::json;

// A rig of a bone in a root, a mesh that the bone moves, and a material with a texture.
std::string RigBytes(const std::string& boneName = "bone") {
    MeshFields mesh = Triangle(0, 0, 0);
    mesh.node = 0;
    const std::size_t points = mesh.originalVertexCount;
    std::vector<VertexWeights> weights(points, {{1, 0.25f}, {0, 0.75f}});
    weights[0] = {{1, 1.0f}};
    return kActor + MaterialChunk(Grey("wall")) + LayerChunk({.texture = "brick.png"}) +
           NodeChunk({.name = "root"}) + MeshChunk(mesh) +
           NodeChunk({.name = boneName, .parentName = "root", .isBone = 1}) +
           WeightsChunk(0, weights);
}

std::string SlideBytes() {
    return kMotion + MotionPart("bone") + SampledTrack('P', {{0, {1, 2, 3}}, {2, {4, 5, 6}}}) +
           MotionPart("nobody") + SampledTrack('R', {{0, {0, 0, 0, 1}}, {1, {0, 0, 0, 1}}});
}

struct PageFiles {
    kta::Reading actor;
    kta::Reading motion;
    kta::PageSource source{};

    explicit PageFiles(const std::string& actorBytes, const std::string& motionBytes = SlideBytes())
        : actor(ReadExact(actorBytes)), motion(ReadExact(motionBytes)) {
        source.actor = &actor;
        source.motion = &motion;
        source.title = "x.hdotemp1";
        source.actorName = "x.hdotemp1";
        source.motionName = "x.hdotemp2";
    }
    PageFiles(const PageFiles&) = delete;
    PageFiles& operator=(const PageFiles&) = delete;
};

json DetailsOf(const PageFiles& files) {
    return json::parse(kta::PageDetails(files.source));
}

TEST(PageDetailsTest, NodesAndMaterials) {
    PageFiles files(RigBytes());
    json details = DetailsOf(files);
    EXPECT_EQ(details["title"], "x.hdotemp1");
    EXPECT_EQ(details["counts"], "2 nodes, 1 triangle, 2 tracks");
    EXPECT_EQ(details["times"], json({0, 2}));
    EXPECT_EQ(details["nodes"][0]["triangles"], 1);
    EXPECT_EQ(details["nodes"][0]["parent"], nullptr);
    EXPECT_EQ(details["nodes"][1]["name"], "bone");
    EXPECT_EQ(details["nodes"][1]["parent"], 0);
    EXPECT_EQ(details["nodes"][1]["isBone"], true);
    EXPECT_EQ(details["materials"][0]["name"], "wall");
    const json layer = details["materials"][0]["layers"][0];
    EXPECT_EQ(layer["type"], "Diffuse map");
    EXPECT_EQ(layer["file"], "brick.png");
    EXPECT_EQ(layer["found"], nullptr);  // not looked for
    files.source.findTexture = [](std::string_view) { return std::nullopt; };
    details = DetailsOf(files);
    EXPECT_EQ(details["materials"][0]["layers"][0]["found"], false);
}

TEST(PageDetailsTest, SkinsTellTheShareOfEachBone) {
    const json skin = DetailsOf(PageFiles(RigBytes()))["skins"][0];
    EXPECT_EQ(skin["node"], 0);
    const auto vertices = skin["vertices"].get<int>();
    ASSERT_EQ(skin["bones"].size(), 2u);
    EXPECT_EQ(skin["bones"][0], json({{"node", 0},
                                      {"vertices", vertices - 1},
                                      {"greatest", 0.75},
                                      {"sum", 0.75 * (vertices - 1)}}));
    EXPECT_EQ(skin["bones"][1], json({{"node", 1},
                                      {"vertices", vertices},
                                      {"greatest", 1},
                                      {"sum", 1 + 0.25 * (vertices - 1)}}));
}

// In 3ds Max's order of axes: the file has x, z, y.
TEST(PageDetailsTest, SampledTracks) {
    const json tracks = DetailsOf(PageFiles(RigBytes()))["tracks"];
    ASSERT_EQ(tracks.size(), 2u);
    EXPECT_EQ(tracks[0]["node"], 1);
    EXPECT_EQ(tracks[0]["letter"], "P");
    EXPECT_EQ(tracks[0]["keyframed"], false);
    EXPECT_EQ(tracks[0]["keys"], 2);
    const auto expectCurve = [&](std::size_t axis, const char* name, double from, double to) {
        const json& curve = tracks[0]["curves"][axis];
        EXPECT_EQ(curve["axis"], name);
        EXPECT_EQ(curve["points"], json({{0, from}, {2, to}}));
    };
    expectCurve(0, "X", 1, 4);
    expectCurve(1, "Y", 3, 6);
    expectCurve(2, "Z", 2, 5);
    EXPECT_EQ(tracks[1]["node"], nullptr);  // the actor has no such node
    EXPECT_EQ(tracks[1]["curves"].size(), 4u);
}

TEST(PageDetailsTest, KeyframedTracksHaveTheCurvesBetweenKeys) {
    const std::string track =
        KeyframedTrack('r', {KeyRecord(0, {0, 0, 10}), KeyRecord(1, {90, 0, 10})});
    const json curves = DetailsOf(
        PageFiles(RigBytes(), kMotion + MotionPart("bone") + track))["tracks"][0]["curves"];
    ASSERT_EQ(curves.size(), 3u);
    EXPECT_EQ(curves[0]["keys"], json({{0, 0}, {1, 90}}));
    EXPECT_GT(curves[0]["points"].size(), 100u);
    EXPECT_EQ(curves[0]["points"].back(), json({1, 90}));
    EXPECT_EQ(curves[2]["points"].front(), json({0, 10}));
}

TEST(PageDetailsTest, IssuesTellWhatTheyAreAbout) {
    // A key whose time is before the one before it.
    const std::string motion =
        kMotion + MotionPart("bone") + SampledTrack('P', {{2, {1, 2, 3}}, {1, {4, 5, 6}}});
    PageFiles files(RigBytes(), motion);
    const json issues = DetailsOf(files)["issues"];
    const auto found = std::find_if(issues.begin(), issues.end(), [](const json& issue) {
        return issue["code"] == "key-time-order";
    });
    ASSERT_NE(found, issues.end()) << issues.dump(1);
    EXPECT_EQ((*found)["severity"], "error");
    EXPECT_EQ((*found)["file"], "x.hdotemp2");
    EXPECT_EQ((*found)["node"], 1);
    EXPECT_EQ((*found)["material"], nullptr);
    EXPECT_EQ(issues[0]["severity"], "error");  // the worst first
}

// ---------------------------------------------------------------- the page

std::string EncodedPage(const PageFiles& files) {
    std::vector<std::string> warnings;
    return kta::EncodePage(files.source, warnings);
}

std::size_t CountOf(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; ++at) {
        ++count;
    }
    return count;
}

TEST(PageTest, IsWholeAndAlwaysTheSame) {
    const PageFiles files(RigBytes());
    const std::string page = EncodedPage(files);
    EXPECT_TRUE(page.starts_with("<!DOCTYPE html>"));
    EXPECT_TRUE(page.ends_with("</html>\n"));
    for (const char* const place : {"title", "licence", "details", "glb", "page.css", "main.js"}) {
        EXPECT_EQ(page.find("{{" + std::string(place)), std::string::npos) << place;
    }
    EXPECT_NE(page.find("Permission is hereby granted, free of charge"), std::string::npos);
    EXPECT_EQ(CountOf(page, " src="), 0u);
    EXPECT_EQ(page, EncodedPage(files));
}

// Elements end where they end without the tricky names.
TEST(PageTest, NamesDoNotGetOutOfTheirElement) {
    const std::string tricky = "</script><script>alert(1)</script><!--<script>";
    const std::string plain = EncodedPage(PageFiles(RigBytes()));
    PageFiles files(RigBytes(tricky), kMotion + MotionPart(tricky));
    files.source.title = tricky;
    files.source.actorName = tricky;
    const std::string page = EncodedPage(files);
    for (const char* const part : {"<script", "</script", "<!--"}) {
        EXPECT_EQ(CountOf(page, part), CountOf(plain, part)) << part;
    }
    EXPECT_NE(page.find("<title>&lt;/script&gt;"), std::string::npos);
    EXPECT_EQ(DetailsOf(files)["nodes"][1]["name"], tricky);
}

}  // namespace
