// A written scene is read back to the bit, and is written again as the same text.
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <limits>
#include <memory>
#include <random>
#include <sstream>
#include <string>

#include "host/scene_file/scene_description.h"
#include "tests/support/every_field.h"

using namespace maxhost::scene;
using maxhost::scene::SceneError;
using maxhost::scene_file::ReadSceneDescriptionFromText;
using maxhost::scene_file::WriteSceneDescription;

namespace {

std::string Write(const Scene& scene) {
    std::ostringstream out;
    WriteSceneDescription(scene, out);
    return out.str();
}

void ExpectRoundTrip(const Scene& scene) {
    const std::string text = Write(scene);
    const Scene again = ReadSceneDescriptionFromText(text);
    EXPECT_EQ(Difference(again, scene), "") << text;
    EXPECT_EQ(Write(again), text);
}

TEST(Writing, EveryFieldComesBack) {
    ExpectRoundTrip(EveryFieldScene());
}

TEST(Writing, DefaultsAreLeftOut) {
    Scene scene;
    EXPECT_EQ(Write(scene), "{\"maxscene\": 1}\n");
    scene.nodes.resize(2);
    scene.nodes[1].parent = 0;
    EXPECT_EQ(Write(scene),
              "{\"maxscene\": 1,\n"
              "  \"nodes\": [\n"
              "    {\"name\": \"\"},\n"
              "    {\"name\": \"\", \"parent\": 0}\n"
              "  ]}\n");
    ExpectRoundTrip(scene);
}

TEST(Writing, SelectionIsWrittenWhereItIsNotTheSelectedNodes) {
    Scene scene;
    scene.nodes.resize(3);
    scene.nodes[1].selected = true;
    scene.nodes[2].selected = true;
    for (const std::vector<int>& selection : {std::vector<int>{1, 2}, {2, 1}, {}, {0}, {1, 2, 0}}) {
        scene.selection = selection;
        ExpectRoundTrip(scene);
    }
    scene.selection = {1, 2};
    EXPECT_EQ(Write(scene).find("selection"), std::string::npos);
}

TEST(Writing, LinesStayReadable) {
    Scene scene;
    auto mesh = std::make_shared<Mesh>();
    mesh->vertices.resize(1000, Vec3{-1.2345678f, 0.33333334f, 1e-30f});
    mesh->faces.resize(1000, Face{{999, 998, 997}, 1, 2});
    scene.nodes.resize(1);
    scene.nodes[0].object = Object{std::nullopt, std::nullopt, std::nullopt, mesh};
    std::istringstream lines(Write(scene));
    std::string line;
    std::size_t count = 0;
    while (std::getline(lines, line)) {
        EXPECT_LE(line.size(), 140u) << line;
        EXPECT_EQ(line.find('\r'), std::string::npos);
        ++count;
    }
    EXPECT_GT(count, 300u);
    EXPECT_LT(count, 2000u) << "several elements a line";
    ExpectRoundTrip(scene);
}

Scene SceneWith(float number) {
    Scene scene;
    scene.nodes.resize(1);
    scene.nodes[0].objectOffset[3] = {number, -number, 1};
    PrsTransform transform;
    FloatController axis;
    axis.kind = BezierFloat{{Key{0, number}}, number};
    transform.position.emplace().kind = ThreeAxes{{axis, std::nullopt, axis}};
    scene.nodes[0].transform = Transform{"", std::nullopt, transform};
    return scene;
}

TEST(Writing, EveryKindOfFloatComesBack) {
    using Limits = std::numeric_limits<float>;
    for (const float number : {0.0f, -0.0f, 1.0f, 0.1f, 1.0f / 3, 16777216.0f, 1e10f, 1e20f,
                               123456789.0f, Limits::max(), Limits::lowest(), Limits::min(),
                               Limits::denorm_min(), 3 * Limits::denorm_min(), Limits::epsilon()}) {
        ExpectRoundTrip(SceneWith(number));
    }
}

TEST(Writing, RandomFloatsComeBack) {
    std::mt19937 random(7);
    Scene scene = SceneWith(1);
    auto mesh = std::make_shared<Mesh>();
    while (mesh->vertices.size() < 20000) {
        Vec3 vertex;
        for (float& part : vertex) {
            const std::uint32_t bits = random();
            const bool isFinite = (bits & 0x7f800000) != 0x7f800000;
            part = std::bit_cast<float>(isFinite ? bits : bits & 0x807fffff);
        }
        mesh->vertices.push_back(vertex);
    }
    scene.nodes[0].object = Object{std::nullopt, std::nullopt, std::nullopt, mesh};
    ExpectRoundTrip(scene);
}

// Where a default is 0, -0 is not the default.
TEST(Writing, NegativeZeroIsNoDefault) {
    Scene scene = EveryFieldScene();
    scene.nodes[9].objectOffset[3] = {-0.0f, 0, 0};
    auto material = std::make_shared<Material>(*scene.materials[0]);
    material->transparency = -0.0f;
    material->selfIllumination = {0, -0.0f, 0};
    scene.materials[0] = material;
    ExpectRoundTrip(scene);
}

TEST(Writing, FormsThatLookAlikeStayApart) {
    Scene scene;
    scene.nodes.resize(5);
    scene.nodes[0].transform->kind = MatrixTransform();
    scene.nodes[1].transform->kind = SampledTransform{{MatrixSample()}};
    scene.nodes[2].transform.reset();
    scene.nodes[3].transform->id = "only a name";
    ThreeAxisController named;
    named.id = "named";
    FloatController constant;
    constant.kind = BezierFloat{{}, 2};
    named.kind = ThreeAxes{{constant, constant, constant}};
    FloatController empty;
    ThreeAxisController mixed;
    empty.id = "axis";
    mixed.kind = ThreeAxes{{constant, empty, constant}};
    ThreeAxisController bare;
    bare.kind = ThreeAxes{{constant, constant, constant}};
    scene.nodes[4].transform->kind = PrsTransform{named, mixed, bare};
    ExpectRoundTrip(scene);
    EXPECT_NE(Write(scene).find("\"scale\": [2, 2, 2]"), std::string::npos);
}

TEST(Writing, TextsAreEscaped) {
    Scene scene;
    scene.nodes.resize(1);
    scene.nodes[0].name = "\"\\\n\r\t\x01\x7f/\xc3\xa9\xf0\x9f\x98\x80";
    ExpectRoundTrip(scene);
}

TEST(Writing, SharedDataIsWrittenAtEachPlace) {
    Scene scene;
    auto mesh = std::make_shared<Mesh>();
    mesh->vertices = {{1, 2, 3}};
    scene.nodes.resize(2);
    scene.nodes[0].object = Object{std::nullopt, std::nullopt, std::nullopt, mesh};
    scene.nodes[1].object = scene.nodes[0].object;
    ExpectRoundTrip(scene);
}

TEST(Writing, RefusesBeforeItWrites) {
    Scene scene;
    scene.nodes.resize(2);
    scene.nodes[1].parent = 5;
    std::ostringstream out;
    EXPECT_THROW(WriteSceneDescription(scene, out), SceneError);
    EXPECT_EQ(out.str(), "");
}

}  // namespace
