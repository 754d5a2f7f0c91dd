// glTF's samplers come through with their own interpolation.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <numbers>

#include "host/assimp/import.h"
#include "host/scene/check.h"
#include "tests/support/temporary_directory.h"
#include "tests/unit/host/assimp/shown_scene.h"
#include "tests/unit/host/assimp/source_scene.h"

using maxhost::import::ImportedScene;
using maxhost::import::ImportWithAssimp;
using maxhost::scene::Node;
using maxhost::scene::Tangent;
using maxhost::scene::Vec3;
using Lines = std::vector<std::string>;
using Ticks = std::vector<int>;
using Values = std::vector<float>;
using Degrees = std::vector<double>;

namespace {

// A file made piece by piece; its bytes stand in a data URI or wherever the test puts them.
class Gltf {
  public:
    // Returns the accessor's number.
    std::size_t Add(const std::string& type, const std::vector<float>& numbers) {
        std::string bytes(numbers.size() * 4, '\0');
        std::memcpy(bytes.data(), numbers.data(), bytes.size());
        const std::size_t components = type == "SCALAR" ? 1 : type == "VEC3" ? 3 : 4;
        return AddAccessor(bytes, R"("componentType":5126,"type":")" + type + R"(","count":)" +
                                      std::to_string(numbers.size() / components));
    }
    std::size_t AddAccessor(const std::string& bytes, const std::string& fields) {
        accessors_ += Comma(accessors_) + R"({"bufferView":)" + std::to_string(AddView(bytes)) +
                      "," + fields + "}";
        return accessorCount_++;
    }
    std::size_t AddAccessorWithoutView(const std::string& fields) {
        accessors_ += Comma(accessors_) + "{" + fields + "}";
        return accessorCount_++;
    }
    std::size_t AddView(const std::string& bytes) {
        bytes_.resize((bytes_.size() + 3) / 4 * 4);
        views_ += Comma(views_) + R"({"buffer":0,"byteOffset":)" + std::to_string(bytes_.size()) +
                  R"(,"byteLength":)" + std::to_string(bytes.size()) + "}";
        bytes_ += bytes;
        return viewCount_++;
    }
    void AddChannel(int node, const std::string& path, std::size_t times, std::size_t values,
                    const std::string& interpolation = "LINEAR") {
        samplers_ += Comma(samplers_) + R"({"input":)" + std::to_string(times) + R"(,"output":)" +
                     std::to_string(values) + R"(,"interpolation":")" + interpolation + R"("})";
        channels_ += Comma(channels_) + R"({"sampler":)" + std::to_string(samplerCount_++) +
                     R"(,"target":{"node":)" + std::to_string(node) + R"(,"path":")" + path +
                     R"("}})";
    }
    void EndClip(const std::string& name) {
        clips_ += Comma(clips_) + R"({"name":")" + name + R"(","samplers":[)" + samplers_ +
                  R"(],"channels":[)" + channels_ + "]}";
        samplers_ = channels_ = "";
        samplerCount_ = 0;
    }

    std::string Text(const std::string& uri = "", const std::string& nodes = R"({"name":"a"})",
                     const std::string& roots = "0") const {
        return R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[)" + roots +
               R"(]}],"nodes":[)" + nodes + R"(],"buffers":[{)" + uri + R"("byteLength":)" +
               std::to_string(bytes_.size()) + R"(}],"bufferViews":[)" + views_ +
               R"(],"accessors":[)" + accessors_ + R"(],"animations":[)" + clips_ + "]}";
    }
    std::string TextWithData(const std::string& nodes = R"({"name":"a"})",
                             const std::string& roots = "0") const {
        return Text(R"("uri":"data:application/octet-stream;base64,)" + Base64() + R"(",)", nodes,
                    roots);
    }
    const std::string& Bytes() const { return bytes_; }

  private:
    static std::string Comma(const std::string& list) { return list.empty() ? "" : ","; }
    std::string Base64() const {
        constexpr char kDigits[] =
            "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        std::string text;
        for (std::size_t i = 0; i < bytes_.size(); i += 3) {
            unsigned bits = 0;
            for (std::size_t k = i; k < i + 3; ++k) {
                bits = bits << 8 | (k < bytes_.size() ? static_cast<unsigned char>(bytes_[k]) : 0u);
            }
            for (int digit = 0; digit < 4; ++digit) {
                const bool isThere = i + static_cast<std::size_t>(digit) <= bytes_.size();
                text += isThere ? kDigits[bits >> (18 - 6 * digit) & 63] : '=';
            }
        }
        return text;
    }

    std::string bytes_, views_, accessors_, samplers_, channels_, clips_;
    std::size_t viewCount_ = 0, accessorCount_ = 0, samplerCount_ = 0;
};

ImportedScene Import(const std::string& text, const maxhost::import::ImportChoices& choices = {}) {
    const support::TemporaryDirectory files;
    ImportedScene imported = ImportWithAssimp(files.Write("a.gltf", text), choices);
    EXPECT_NO_THROW(maxhost::scene::Check(imported.scene));
    return imported;
}

// Of a turn about y up, as glTF stores it.
std::vector<float> Turn(double degrees) {
    const double half = degrees * std::numbers::pi / 360;
    return {0, static_cast<float>(std::sin(half)), 0, static_cast<float>(std::cos(half))};
}

std::vector<float> Joined(const std::vector<std::vector<float>>& parts) {
    std::vector<float> all;
    for (const auto& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

}  // namespace

TEST(GltfAnimation, StepsHold) {
    Gltf gltf;
    const std::size_t times = gltf.Add("SCALAR", {0, 1, 2});
    gltf.AddChannel(0, "translation", times, gltf.Add("VEC3", {1, 0, 0, 2, 0, 0, 3, 0, 0}), "STEP");
    gltf.AddChannel(0, "rotation", times, gltf.Add("VEC4", Joined({Turn(0), Turn(90), Turn(180)})),
                    "STEP");
    gltf.EndClip("a");
    const ImportedScene imported = Import(gltf.TextWithData());
    const Node& node = imported.scene.nodes[0];
    EXPECT_EQ(TimesOf(PositionKeysOf(node, 0)), (Ticks{0, 4800, 9600}));
    EXPECT_EQ(ValuesOf(PositionKeysOf(node, 0)), (Values{1, 2, 3}));
    EXPECT_EQ(DegreesOf(RotationKeysOf(node, 2)), (Degrees{0, 90, 180}));
    for (const AxisKeys* const keys : {&PositionKeysOf(node, 0), &RotationKeysOf(node, 2)}) {
        for (const auto& key : *keys) {
            EXPECT_EQ(key.inType, Tangent::step);
            EXPECT_EQ(key.outType, Tangent::step);
        }
    }
    EXPECT_EQ(MatrixAt(node, 4799)[3][0], 1);
    EXPECT_NEAR(MatrixAt(node, 4799)[0][0], 1, 1e-6);
    EXPECT_EQ(MatrixAt(node, 4800)[3][0], 2);
    EXPECT_NEAR(MatrixAt(node, 4800)[0][1], 1, 1e-6);
    EXPECT_EQ(imported.scene.time.end, 9600);
    EXPECT_EQ(imported.warnings, Lines{});
}

// Each key holds in-slope, value, out-slope; slopes are in value a second.
TEST(GltfAnimation, CubicSplinesKeepTheirCurve) {
    Gltf gltf;
    const std::size_t times = gltf.Add("SCALAR", {0, 2});
    gltf.AddChannel(0, "translation", times,
                    gltf.Add("VEC3", {9, 9, 9, 1, 2, 3, 48, 0, 4.8f,  //
                                      24, 0, 9.6f, 5, 2, 1, 9, 9, 9}),
                    "CUBICSPLINE");
    gltf.AddChannel(0, "scale", times,
                    gltf.Add("VEC3", {0, 0, 0, 1, 1, 1, 4.8f, 0, 0, 0, 0, 0, 2, 1, 1, 0, 0, 0}),
                    "CUBICSPLINE");
    gltf.EndClip("a");
    const Node node = Import(gltf.TextWithData()).scene.nodes[0];
    const AxisKeys& x = PositionKeysOf(node, 0);
    EXPECT_EQ(TimesOf(x), (Ticks{0, 9600}));
    EXPECT_EQ(ValuesOf(x), (Values{1, 5}));
    EXPECT_EQ(x[0].outType, Tangent::custom);
    EXPECT_EQ(x[1].inType, Tangent::custom);
    EXPECT_FLOAT_EQ(x[0].outTangent, 48.0f / 4800);
    EXPECT_FLOAT_EQ(x[1].inTangent, -24.0f / 4800);
    EXPECT_FLOAT_EQ(PositionKeysOf(node, 1)[0].outTangent, -4.8f / 4800);  // z to the viewer
    // Half way: (1 + 5) / 2 + 2 s / 8 * (48 - 24).
    EXPECT_NEAR(MatrixAt(node, 4800)[3][0], 9, 1e-4);
    EXPECT_NEAR(MatrixAt(node, 4800)[0][0], 1.5 + 2.0 / 8 * 4.8, 1e-4);
    EXPECT_FLOAT_EQ(ScaleOf(node).keys[0].outTangent[0], 4.8f / 4800);
}

// The spline of the quaternions, brought to unit length, at every frame and halfway between.
TEST(GltfAnimation, CubicRotationsFollowTheirSpline) {
    const std::vector<std::vector<float>> values = {Turn(0), {0.3f, 0.6f, 0.2f, 0.5f}};
    const std::vector<std::vector<float>> slopes = {{0.5f, 0, -0.4f, 0.1f}, {0, 0.7f, 0.2f, -0.3f}};
    const std::vector<float> none(4, 0.0f);
    Gltf gltf;
    gltf.AddChannel(0, "rotation", gltf.Add("SCALAR", {0, 1.5f}),
                    gltf.Add("VEC4", Joined({none, values[0], slopes[0],  //
                                             slopes[1], values[1], none})),
                    "CUBICSPLINE");
    gltf.EndClip("a");
    const Node node = Import(gltf.TextWithData()).scene.nodes[0];
    for (int tick = 0; tick <= 7200; tick += 80) {
        const double s = tick / 7200.0, v = 1 - s;
        std::array<double, 4> q;
        for (std::size_t i = 0; i < 4; ++i) {
            q[i] = (1 + 2 * s) * v * v * values[0][i] + s * v * v * 1.5 * slopes[0][i] +
                   s * s * (3 - 2 * s) * values[1][i] - s * s * v * 1.5 * slopes[1][i];
        }
        const aiQuaterniont<double> turn =
            aiQuaterniont<double>(q[3], q[0], q[1], q[2]).Normalize();
        const auto m = MatrixAt(node, tick);
        // The node's x axis, with y up turned to z up.
        const auto x = turn.Rotate({1, 0, 0});
        const double cosine = m[0][0] * x.x + m[0][1] * -x.z + m[0][2] * x.y;
        EXPECT_LT(std::acos(std::min(cosine, 1.0)) * 180 / std::numbers::pi, 0.1) << tick;
    }
    EXPECT_LE(RotationKeysOf(node, 0).size(), 46u);  // a key a frame at most
    EXPECT_EQ(RotationKeysOf(node, 0)[0].outType, Tangent::custom);
}

TEST(GltfAnimation, LikeNamedNodesKeepTheirOwn) {
    Gltf gltf;
    const std::size_t times = gltf.Add("SCALAR", {0, 1});
    gltf.AddChannel(1, "translation", times, gltf.Add("VEC3", {0, 0, 0, 1, 0, 0}));
    gltf.AddChannel(2, "translation", times, gltf.Add("VEC3", {0, 0, 0, 2, 0, 0}));
    gltf.EndClip("a");
    const auto nodes =
        Import(
            gltf.TextWithData(
                R"({"name":"a","children":[1]},{"name":"a","scale":[-1,2,3]},{"name":"a"})", "0,2"))
            .scene.nodes;
    ASSERT_EQ(nodes.size(), 3u);
    EXPECT_TRUE(IsConstant(nodes[0]));
    EXPECT_EQ(ValuesOf(PositionKeysOf(nodes[1], 0)), (Values{0, 1}));
    EXPECT_EQ(ScaleOf(nodes[1]).value, (Vec3{-1, 3, 2}));
    EXPECT_EQ(ValuesOf(PositionKeysOf(nodes[2], 0)), (Values{0, 2}));
}

TEST(GltfAnimation, ClipsAreChosenByNameAndNumber) {
    Gltf gltf;
    const std::size_t times = gltf.Add("SCALAR", {0, 1});
    gltf.AddChannel(0, "translation", times, gltf.Add("VEC3", {0, 0, 0, 1, 0, 0}));
    gltf.EndClip("walk");
    gltf.AddChannel(0, "translation", times, gltf.Add("VEC3", {0, 0, 0, 2, 0, 0}));
    gltf.EndClip("run");
    const auto last = [&](const char* name) {
        return ValuesOf(PositionKeysOf(Import(gltf.TextWithData(), {name, {}}).scene.nodes[0], 0))
            .back();
    };
    EXPECT_EQ(last("walk"), 1);
    EXPECT_EQ(last("run"), 2);
    EXPECT_EQ(last("1"), 2);
    EXPECT_EQ(Import(gltf.TextWithData()).warnings,
              Lines{"animations left out beside the one imported (--animation chooses another)"});
}

// Normalised integers, a stride, and a sparse accessor.
TEST(GltfAnimation, NumbersOfEveryKindAreRead) {
    Gltf gltf;
    const std::size_t times = gltf.Add("SCALAR", {0, 1});
    const std::string shorts("\0\0\0\0\0\0\xff\x7f\0\0\xff\x7f\0\0\0\0", 16);
    gltf.AddChannel(0, "rotation", times,
                    gltf.AddAccessor(shorts, R"("componentType":5122,"normalized":true,)"
                                             R"("type":"VEC4","count":2)"));
    const float moved[3] = {4, 5, 6};
    const std::size_t places = gltf.AddView(std::string("\1", 1));
    const std::size_t values =
        gltf.AddView(std::string(reinterpret_cast<const char*>(moved), sizeof moved));
    gltf.AddChannel(
        0, "translation", times,
        gltf.AddAccessorWithoutView(
            R"("componentType":5126,"type":"VEC3","count":2,"sparse":{"count":1,)"
            R"("indices":{"bufferView":)" +
            std::to_string(places) + R"(,"componentType":5121},"values":{"bufferView":)" +
            std::to_string(values) + "}}"));
    gltf.EndClip("a");
    const Node node = Import(gltf.TextWithData()).scene.nodes[0];
    EXPECT_EQ(DegreesOf(RotationKeysOf(node, 2)), (Degrees{0, 180}));
    EXPECT_EQ(ValuesOf(PositionKeysOf(node, 0)), (Values{0, 4}));
    EXPECT_EQ(ValuesOf(PositionKeysOf(node, 1)), (Values{0, -6}));
    EXPECT_EQ(ValuesOf(PositionKeysOf(node, 2)), (Values{0, 5}));
}

TEST(GltfAnimation, BuffersStandInFilesToo) {
    Gltf gltf;
    gltf.AddChannel(0, "translation", gltf.Add("SCALAR", {0, 1}),
                    gltf.Add("VEC3", {1, 0, 0, 2, 0, 0}), "STEP");
    gltf.EndClip("a");
    const support::TemporaryDirectory files;
    files.Write("data.bin", gltf.Bytes());
    const auto plain = ImportWithAssimp(files.Write("b.gltf", gltf.Text(R"("uri":"data.bin",)")));
    EXPECT_EQ(PositionKeysOf(plain.scene.nodes[0], 0)[0].outType, Tangent::step);

    std::string text = gltf.Text();
    text.resize((text.size() + 3) / 4 * 4, ' ');
    const auto number = [](std::size_t n) {
        const std::uint32_t size = static_cast<std::uint32_t>(n);
        return std::string(reinterpret_cast<const char*>(&size), 4);
    };
    const std::string binary = "glTF" + number(2) + number(28 + text.size() + gltf.Bytes().size()) +
                               number(text.size()) + "JSON" + text + number(gltf.Bytes().size()) +
                               std::string("BIN\0", 4) + gltf.Bytes();
    const auto packed = ImportWithAssimp(files.Write("c.glb", binary));
    EXPECT_EQ(ValuesOf(PositionKeysOf(packed.scene.nodes[0], 0)), (Values{1, 2}));
    EXPECT_EQ(PositionKeysOf(packed.scene.nodes[0], 0)[0].outType, Tangent::step);
}

TEST(GltfAnimation, WhatCannotBeReadIsSaid) {
    Gltf gltf;
    const std::size_t times = gltf.Add("SCALAR", {0, 1});
    const std::size_t values = gltf.Add("VEC3", {1, 0, 0, 2, 0, 0});
    gltf.AddChannel(0, "translation", times, values, "CUBICSPLINE");  // too few values
    gltf.AddChannel(0, "scale", times, values);
    gltf.EndClip("a");
    const ImportedScene imported = Import(gltf.TextWithData());
    EXPECT_EQ(imported.warnings, Lines{"animation channels that cannot be read left out"});
    EXPECT_EQ(ScaleOf(imported.scene.nodes[0]).keys.size(), 2u);
    EXPECT_TRUE(PositionKeysOf(imported.scene.nodes[0], 0).empty());
}
