// What differs between two files: which chunks are compared with which, and what is told of them.
#include "kta/diff/diff.h"

#include <cmath>
#include <nlohmann/json.hpp>
#include <random>
#include <sstream>

#include "tests/unit/kta/sample.h"

namespace {

using namespace sample;
using kta::Change;

constexpr float kNotANumber = std::numeric_limits<float>::quiet_NaN();

kta::Diff DiffOf(const std::string& a, const std::string& b, const kta::Tolerance& tolerance = {}) {
    return kta::Compare(ReadExact(a).file.value(), ReadExact(b).file.value(), tolerance);
}

// The report's lines without the names of the files.
std::string TextOf(const kta::Diff& diff, std::size_t mostLines = 0) {
    std::ostringstream out;
    kta::WriteDiff(diff, {.nameA = "a", .nameB = "b", .mostLines = mostLines}, out);
    const std::string text = out.str();
    EXPECT_TRUE(text.starts_with("--- a\n+++ b\n")) << text;
    return text.substr(12);
}

std::string TextOf(const std::string& a, const std::string& b,
                   const kta::Tolerance& tolerance = {}) {
    return TextOf(DiffOf(a, b, tolerance));
}

bool Equal(const std::string& a, const std::string& b, const kta::Tolerance& tolerance = {}) {
    return !DiffOf(a, b, tolerance).Different(true);
}

// ---------------------------------------------------------------- numbers

TEST(DiffTolerance, IsAbsoluteOrInProportionToTheGreaterNumber) {
    EXPECT_EQ(kta::DeviationOf(1, 1.5f, {}), 0.5);
    EXPECT_EQ(kta::DeviationOf(1, 1.5f, {.absolute = 0.5}), 0);
    EXPECT_EQ(kta::DeviationOf(1, 1.5f, {.absolute = 0.49}), 0.5);
    EXPECT_EQ(kta::DeviationOf(-100, -101, {.relative = 0.01}), 0);
    EXPECT_EQ(kta::DeviationOf(100, 102, {.relative = 0.01}), 2);
    EXPECT_EQ(kta::DeviationOf(100, 102, {.absolute = 2, .relative = 0.01}), 0);
    EXPECT_EQ(kta::DeviationOf(0, -0.0f, {}), 0);
}

TEST(DiffTolerance, NumbersThatAreNotFiniteAreEqualToThemselvesAlone) {
    constexpr double kFar = std::numeric_limits<double>::infinity();
    const kta::Tolerance wide{.absolute = 1e30, .relative = 1};
    EXPECT_EQ(kta::DeviationOf(kNotANumber, kNotANumber, {}), 0);
    EXPECT_EQ(kta::DeviationOf(kNotANumber, 0, wide), kFar);
    EXPECT_EQ(kta::DeviationOf(0, kNotANumber, wide), kFar);
    EXPECT_EQ(kta::DeviationOf(kInfinity, kInfinity, {}), 0);
    EXPECT_EQ(kta::DeviationOf(kInfinity, -kInfinity, wide), kFar);
    EXPECT_EQ(kta::DeviationOf(kInfinity, 1, wide), kFar);
}

// ---------------------------------------------------------------- equal files

TEST(Diff, AFileIsEqualToItself) {
    for (const std::string& file : {RigFile(), TracksFile(), kActor, kMotion}) {
        EXPECT_TRUE(Equal(file, file));
    }
    EXPECT_EQ(TextOf(RigFile(), RigFile()), "equal: 11 chunks\n");
}

TEST(Diff, BytesThatMeanNothingAreNotCompared) {
    const std::string file = ActorFile({{.name = "Box"}});
    EXPECT_TRUE(Equal(file, PatchedU8(file, kBody + 4, 'x')));   // behind the name's NUL
    EXPECT_TRUE(Equal(file, PatchedU8(file, kBody + 626, 1)));   // padding
    EXPECT_FALSE(Equal(file, PatchedU8(file, kBody + 2, 'X')));  // of the name
}

// The dump is the witness: where it shows another file, so does the comparison, and only there.
void ExpectEveryByteCounts(const std::string& file) {
    const std::string dump = JsonDumpOf(file);
    for (std::size_t at = 7; at < file.size(); ++at) {
        if (file[at] == 0 && at % 4 != 0) {
            continue;  // one of many alike: the rest of a text, or of a number
        }
        const std::string changed = PatchedU8(file, at, static_cast<std::uint8_t>(file[at] ^ 0x40));
        if (ReadExact(changed).Good()) {
            ASSERT_EQ(Equal(file, changed), JsonDumpOf(changed) == dump) << "byte " << at;
        }
    }
}

TEST(Diff, EveryByteOfAnActorCounts) {
    ExpectEveryByteCounts(RigFile());
}

TEST(Diff, EveryByteOfAMotionCounts) {
    ExpectEveryByteCounts(TracksFile());
}

TEST(Diff, DamagedFilesAreCompared) {
    const std::string files[] = {RigFile(), TracksFile()};
    std::mt19937 random(20120317);
    for (int round = 0; round < 3000; ++round) {
        const std::string& whole = files[round % 2];
        std::string damaged = whole;
        for (auto count = random() % 6 + 1; count > 0; --count) {
            damaged[7 + random() % (damaged.size() - 7)] = static_cast<char>(random());
        }
        damaged.resize(random() % 4 == 0 ? 7 + random() % (damaged.size() - 6) : damaged.size());
        ASSERT_FALSE(TextOf(damaged, whole).empty());
        ASSERT_TRUE(Equal(damaged, damaged)) << "round " << round;
    }
}

// ---------------------------------------------------------------- what belongs together

TEST(Diff, NodesAreComparedByName) {
    const std::string a = ActorFile({{.name = "Root"}, {.name = "Old"}, {.name = "Arm"}});
    const std::string b =
        ActorFile({{.name = "New"}, {.name = "Root"}, {.name = "Arm", .parentName = "Root"}});
    EXPECT_EQ(TextOf(a, b),
              "node: 1 added, 1 removed, 1 changed, 1 equal\n"
              "  - \"Old\"\n"
              "  ~ \"Arm\"\n"
              "      parentName: \"\" -> \"Root\"\n"
              "  + \"New\"\n"
              "different: 1 added, 1 removed, 1 changed, 1 equal\n");
}

TEST(Diff, OfAMatrixTheRowsThatDifferAreShown) {
    NodeFields moved;
    moved.matrix[13] = -2.5f;
    EXPECT_EQ(TextOf(ActorFile({{}}), ActorFile({moved})),
              "node: 1 changed\n"
              "  ~ \"node\"\n"
              "      inverseWorldMatrix: [3] [0.0,0.0,0.0,0.0] -> [0.0,-2.5,0.0,0.0], by 2.5\n"
              "different: 1 changed\n");
}

TEST(Diff, OfSeveralOfOneNameTheFirstBelongsToTheFirst) {
    const NodeFields moved{.name = "Box", .translation = {0, 0, 2}};
    const std::string a = ActorFile({{.name = "Box"}, {.name = "Box"}, {.name = "Box"}});
    const std::string b = ActorFile({{.name = "Box"}, moved});
    EXPECT_EQ(TextOf(a, b),
              "node: 1 removed, 1 changed, 1 equal\n"
              "  ~ \"Box\" (2)\n"
              "      translation: [0.0,0.0,0.0] -> [0.0,0.0,2.0], by 2\n"
              "  - \"Box\" (3)\n"
              "different: 1 removed, 1 changed, 1 equal\n");
}

// A file whose nodes and materials all have other numbers when it begins with one more of each.
std::string NumberedFile(bool oneMore) {
    const std::uint32_t first = oneMore ? 1 : 0;
    const auto bone = static_cast<std::int16_t>(first + 1);
    MeshFields mesh = Triangle(first + 1, 1, 1);
    mesh.node = first;
    std::string file = oneMore ? kActor + MaterialChunk(Grey("Zinc")) : kActor;
    file += MaterialChunk(Grey("Oak")) + MaterialChunk(Grey("Skin")) +
            LayerChunk({.texture = "skin.png", .material = static_cast<std::uint16_t>(first + 1)});
    file += oneMore ? NodeChunk({.name = "Camera"}) : "";
    return file + NodeChunk({.name = "Body"}) + MeshChunk(mesh) + NodeChunk({.name = "Bone"}) +
           WeightsChunk(first, std::vector<VertexWeights>(9, {{bone, 1}})) +
           PatchedU32(JointLimitsChunk(), 12, first + 1);
}

TEST(Diff, NumbersOfNodesAndMaterialsAreComparedByWhatTheyStandFor) {
    EXPECT_EQ(TextOf(NumberedFile(false), NumberedFile(true)),
              "node: 1 added, 2 equal\n"
              "  + \"Camera\"\n"
              "material: 1 added, 2 equal\n"
              "  + \"Zinc\"\n"
              "different: 2 added, 8 equal\n");
}

TEST(Diff, LayersAreComparedByMaterialTypeAndFile) {
    const auto file = [](const std::string& diffuse, std::uint8_t secondType, float amount) {
        return kActor + MaterialChunk(Grey("Wood")) +
               LayerChunk({.texture = diffuse, .type = 1, .material = 0}) +
               LayerChunk(
                   {.texture = "bump.png", .type = secondType, .material = 0, .amount = amount});
    };
    EXPECT_EQ(TextOf(file("oak.png", 3, 0.5f), file("elm.png", 3, 0.25f)),
              "material layer: 2 changed\n"
              "  ~ \"Wood\", layer \"diffuse\", texture \"oak.png\"\n"
              "      textureFileName: \"oak.png\" -> \"elm.png\"\n"
              "  ~ \"Wood\", layer \"bump\", texture \"bump.png\"\n"
              "      amount: 0.5 -> 0.25, by 0.25\n"
              "different: 2 changed, 1 equal\n");
    EXPECT_EQ(TextOf(file("oak.png", 3, 1), file("oak.png", 6, 1)),
              "material layer: 1 added, 1 removed, 1 equal\n"
              "  - \"Wood\", layer \"bump\", texture \"bump.png\"\n"
              "  + \"Wood\", layer \"opacity\", texture \"bump.png\"\n"
              "different: 1 added, 1 removed, 2 equal\n");
}

TEST(Diff, ALayersNumberCountsWhereItIsNotThatOfTheMaterialBeforeIt) {
    const auto file = [](std::uint16_t material) {
        return kActor + MaterialChunk(Grey("Wood")) + MaterialChunk(Grey("Tin")) +
               LayerChunk({.texture = "a.png", .material = material});
    };
    EXPECT_EQ(TextOf(file(1), file(0)),
              "material layer: 1 changed\n"
              "  ~ \"Tin\", layer \"diffuse\", texture \"a.png\"\n"
              "      parentMaterial: 1 -> 0\n"
              "different: 1 changed, 2 equal\n");
}

// The layer's 16 bits hold 40000 as -25536.
TEST(Diff, LayersOfMaterialsBeyondTheirNumbersRangeAreThoseOfTheMaterialBefore) {
    const auto file = [](std::size_t count) {
        std::string bytes = kActor;
        for (std::size_t i = 0; i < count; ++i) {
            bytes += MaterialChunk({.name = "Oak"});
        }
        const auto number = static_cast<std::uint16_t>(count);
        return bytes + MaterialChunk({.name = "Last"}) +
               LayerChunk({.texture = "a.png", .material = number});
    };
    EXPECT_EQ(TextOf(file(40000), file(40001)),
              "material: 1 added, 40001 equal\n"
              "  + \"Oak\" (40001)\n"
              "different: 1 added, 40002 equal\n");
}

TEST(Diff, WiresAreComparedByTheirEndsAndChainsByTheirJoints) {
    const auto file = [](std::uint32_t component, const char* end) {
        const WireEnd second = {"Slave", "X_Position", std::string(1, "XYZ"[component]) + "_Scale",
                                2, component};
        const std::string chain = IkChainChunk();
        return kActor + WireChunk({.node = "Driver"}, second, 1) +
               Patched(chain, 12 + 520, Bytes().Name(end).Str());
    };
    EXPECT_TRUE(Equal(file(2, "Foot"), file(2, "Foot")));
    EXPECT_EQ(TextOf(file(2, "Foot"), file(1, "Toe")),
              "parameter wiring: 1 changed\n"
              "  ~ \"Driver\", firstVariable \"\", secondNode \"Slave\", secondVariable "
              "\"Z_Scale\"\n"
              "      secondVariable: \"Z_Scale\" -> \"Y_Scale\"\n"
              "      secondComponent: 2 -> 1\n"
              "IK chain: 1 changed\n"
              "  ~ \"Chain\", startJoint \"Thigh\", endJoint \"Foot\"\n"
              "      endJoint: \"Foot\" -> \"Toe\"\n"
              "different: 2 changed\n");
}

// ---------------------------------------------------------------- order

TEST(Diff, AnotherOrderIsToldAndCountsOnRequest) {
    const std::string a = ActorFile({{.name = "A"}, {.name = "B"}, {.name = "C"}});
    const std::string b = ActorFile({{.name = "C"}, {.name = "A"}, {.name = "B"}});
    const kta::Diff diff = DiffOf(a, b);
    EXPECT_TRUE(diff.Moved());
    EXPECT_FALSE(diff.Different(false));
    EXPECT_TRUE(diff.Different(true));
    EXPECT_EQ(TextOf(diff),
              "node: 3 equal\n"
              "  order differs, first at \"C\"\n"
              "equal but for the order: 3 chunks\n");
}

// Meshes stand behind their nodes, so that their order tells nothing new.
TEST(Diff, TheOrderOfWhatHangsFromNodesIsThatOfTheNodes) {
    const auto body = [](const std::string& name, std::uint32_t number) {
        MeshFields mesh = Triangle(0, 0, 0);
        mesh.node = number;
        return NodeChunk({.name = name}) + MeshChunk(mesh);
    };
    const std::string a = kActor + body("A", 0) + body("B", 1);
    const std::string b = kActor + body("B", 0) + body("A", 1);
    EXPECT_EQ(TextOf(a, b),
              "node: 2 equal\n"
              "  order differs, first at \"B\"\n"
              "equal but for the order: 4 chunks\n");
}

// ---------------------------------------------------------------- meshes

// A strip of four triangles in one sub-mesh; of the original vertices 0 to 5, each with one pair.
MeshFields Strip() {
    MeshFields mesh;
    mesh.originalVertexCount = 6;
    mesh.mapChannelCount = 1;
    SubMeshFields& subMesh = mesh.subMeshes.emplace_back();
    for (std::uint32_t i = 0; i < 6; ++i) {
        const auto at = static_cast<float>(i);
        subMesh.vertices.push_back({i, {at, 0, at}, {0, 1, 0}, {{at, 0}}});
    }
    subMesh.faces = {{0, 1, 2}, {1, 3, 2}, {2, 3, 4}, {3, 5, 4}};
    return mesh;
}

std::string StripFile(const MeshFields& mesh) {
    return kActor + MaterialChunk(Grey("Oak")) + MaterialChunk(Grey("Tin")) +
           NodeChunk({.name = "Strip"}) + MeshChunk(mesh);
}

std::string StripDiff(const MeshFields& b, const kta::Tolerance& tolerance = {}) {
    return TextOf(StripFile(Strip()), StripFile(b), tolerance);
}

TEST(DiffMesh, TheVertexThatDiffersMostIsNamed) {
    MeshFields mesh = Strip();
    mesh.subMeshes[0].vertices[2].position = {2, 0.25f, 2};
    mesh.subMeshes[0].vertices[4].position = {4, -0.5f, 4};
    mesh.subMeshes[0].vertices[5].pairs[0] = {5, 0.125f};
    EXPECT_EQ(StripDiff(mesh),
              "mesh: 1 changed\n"
              "  ~ \"Strip\"\n"
              "      sub-mesh \"Oak\": position of 2 of 6 vertices, most at vertex 4, "
              "originalVertex 4: [4.0,0.0,4.0] -> [4.0,-0.5,4.0], by 0.5\n"
              "      sub-mesh \"Oak\": textureCoordinates[0] of 1 of 6 vertices, most at vertex 5, "
              "originalVertex 5: [5.0,0.0] -> [5.0,0.125], by 0.125\n"
              "different: 1 changed, 3 equal\n");
    EXPECT_EQ(StripDiff(mesh, {.absolute = 0.5}), "equal: 4 chunks\n");
}

// A corner with a normal of its own makes one vertex more, behind which all faces have other
// numbers.
TEST(DiffMesh, AVertexMoreLeavesTheOthersTheirCounterparts) {
    MeshFields mesh = Strip();
    auto& [material, vertices, faces] = mesh.subMeshes[0];
    vertices.insert(vertices.begin() + 2, vertices[2]);
    vertices[3].normal = {1, 0, 0};
    faces = {{0, 1, 2}, {1, 4, 2}, {3, 4, 5}, {4, 6, 5}};
    EXPECT_EQ(StripDiff(mesh),
              "mesh: 1 changed\n"
              "  ~ \"Strip\"\n"
              "      vertexCount: 6 -> 7\n"
              "      sub-mesh \"Oak\": 1 vertex added\n"
              "      sub-mesh \"Oak\": 1 face removed\n"
              "      sub-mesh \"Oak\": 1 face added\n"
              "different: 1 changed, 3 equal\n");
}

TEST(DiffMesh, FacesThatBeginWithAnotherCornerOrStandElsewhereAreTheSame) {
    MeshFields mesh = Strip();
    mesh.subMeshes[0].faces = {{1, 3, 2}, {2, 0, 1}, {2, 3, 4}, {3, 5, 4}};
    EXPECT_EQ(StripDiff(mesh),
              "mesh: 1 with another order of items\n"
              "  ~ \"Strip\"\n"
              "      sub-mesh \"Oak\": 4 faces in another order\n"
              "equal but for the order: 4 chunks\n");
    mesh.subMeshes[0].faces[1] = {2, 1, 0};  // seen from behind
    EXPECT_NE(StripDiff(mesh).find("1 face removed"), std::string::npos);
}

TEST(DiffMesh, SubMeshesAreComparedByMaterialThenInTheirOrder) {
    MeshFields mesh = Strip();
    mesh.subMeshes.push_back(mesh.subMeshes[0]);
    mesh.subMeshes[1].material = 1;
    MeshFields exchanged = mesh;
    std::swap(exchanged.subMeshes[0], exchanged.subMeshes[1]);
    EXPECT_EQ(TextOf(StripFile(mesh), StripFile(exchanged)),
              "mesh: 1 with another order of items\n"
              "  ~ \"Strip\"\n"
              "      sub-meshes in another order\n"
              "equal but for the order: 4 chunks\n");
    const std::string more = StripDiff(mesh);
    EXPECT_NE(more.find("      sub-mesh \"Tin\" added\n"), std::string::npos) << more;
    EXPECT_EQ(more.find("vertices"), std::string::npos) << more;
    MeshFields tin = Strip();
    tin.subMeshes[0].material = 1;
    EXPECT_EQ(StripDiff(tin),
              "mesh: 1 changed\n"
              "  ~ \"Strip\"\n"
              "      sub-mesh \"Oak\": materialNumber: \"Oak\" -> \"Tin\"\n"
              "different: 1 changed, 3 equal\n");
}

TEST(DiffMesh, PairsOfTextureCoordinatesThatTheHeadDoesNotCountAreTold) {
    MeshFields mesh = Strip();
    for (VertexFields& vertex : mesh.subMeshes[0].vertices) {
        vertex.pairs.push_back({0, 1});
    }
    const std::string text = StripDiff(mesh);
    EXPECT_NE(text.find("      pairsPerVertex: 1 -> 2\n"), std::string::npos) << text;
}

// ---------------------------------------------------------------- rigs

std::string WeightedFile(const std::vector<VertexWeights>& weights) {
    return ActorFile({{.name = "Skin"}, {.name = "Arm"}, {.name = "Leg"}}) +
           WeightsChunk(0, weights);
}

std::string SkinDiff(const std::vector<VertexWeights>& a, const std::vector<VertexWeights>& b,
                     const kta::Tolerance& tolerance = {}) {
    return TextOf(WeightedFile(a), WeightedFile(b), tolerance);
}

TEST(DiffWeights, AreComparedByBoneAndOneThatIsNotThereIsZero) {
    const std::string text =
        SkinDiff({{{1, 1}}, {{1, 0.5f}, {2, 0.5f}}}, {{{1, 0.75f}, {2, 0.25f}}, {{2, 1}}});
    EXPECT_EQ(text,
              "skinning weights: 1 changed\n"
              "  ~ \"Skin\"\n"
              "      weights of 2 of 2 vertices, most at vertex 1, bone \"Arm\": 0.5 -> 0.0, by "
              "0.5\n"
              "different: 1 changed, 3 equal\n");
    EXPECT_EQ(SkinDiff({{{1, 1}}}, {{{1, 0.9995f}, {2, 0.0005f}}}, {.absolute = 0.001}),
              "equal: 4 chunks\n");
}

TEST(DiffWeights, TheOrderOfBonesAtAVertexIsAnOrder) {
    EXPECT_EQ(SkinDiff({{{1, 0.25f}, {2, 0.75f}}, {{1, 1}}}, {{{2, 0.75f}, {1, 0.25f}}, {{1, 1}}}),
              "skinning weights: 1 with another order of items\n"
              "  ~ \"Skin\"\n"
              "      weights of 1 vertex in another order\n"
              "equal but for the order: 4 chunks\n");
}

TEST(DiffWeights, VerticesMoreAndBonesThatOneFileLacks) {
    EXPECT_EQ(SkinDiff({{{1, 1}}, {{2, 1}}}, {{{7, 0.5f}}}),
              "skinning weights: 1 changed\n"
              "  ~ \"Skin\"\n"
              "      1 vertex removed\n"
              "      weights of 1 of 1 vertex, most at vertex 0, bone \"Arm\": 1.0 -> 0.0, by 1\n"
              "different: 1 changed, 3 equal\n");
}

TEST(DiffMorph, ChannelsAreComparedByNodeAndNameAndPointsAsTheyAreUnpacked) {
    const auto file = [](std::uint16_t packed, const char* second) {
        return kActor + MorphChunk({.channel = second}) +
               MorphChunk({.maximum = 6553.5f, .packed = {{0, 1000, 0}, {packed, 0, 0}}});
    };
    // 10 steps a hundredth of a unit.
    EXPECT_EQ(
        TextOf(file(1000, "Frown"), file(3000, "Blink")),
        "morph: 1 added, 1 removed, 1 changed\n"
        "  - \"Head\", channel \"Frown\"\n"
        "  ~ \"Head\", channel \"Smile\"\n"
        "      position of 1 of 2 points, most at point 1: [1.0,0.0,0.0] -> [3.0,0.0,0.0], by "
        "2\n"
        "  + \"Head\", channel \"Blink\"\n"
        "different: 1 added, 1 removed, 1 changed\n");
}

// ---------------------------------------------------------------- motion

std::string SamplesFile(const std::vector<SampleFields>& samples) {
    return kMotion + MotionPart("Arm") + SampledTrack('P', samples);
}

TEST(DiffTrack, AsManyKeysAreComparedInTheirOrder) {
    EXPECT_EQ(TextOf(SamplesFile({{0, {1, 2, 3}}, {0.5f, {1, 2, 3}}, {1, {1, 2, 3}}}),
                     SamplesFile({{0, {1, 2, 3}}, {0.75f, {1, 2, 3}}, {1, {1, 2, 7}}})),
              "key track: 1 changed\n"
              "  ~ \"Arm\", track \"P\"\n"
              "      time of 1 of 3 keys, most at key 1, time 0.5: 0.5 -> 0.75, by 0.25\n"
              "      values of 1 of 3 keys, most at key 2, time 1.0: [1.0,2.0,3.0] -> "
              "[1.0,2.0,7.0], by 4\n"
              "different: 1 changed, 1 equal\n");
}

TEST(DiffTrack, AnotherNumberOfKeysIsComparedByTime) {
    EXPECT_EQ(
        TextOf(SamplesFile({{0, {1, 2, 3}}, {0.5f, {1, 2, 3}}, {1, {1, 2, 3}}}),
               SamplesFile({{0, {1, 2, 3}}, {1, {1, 2, 4}}, {1.5f, {0, 0, 0}}, {2, {0, 0, 0}}})),
        "key track: 1 changed\n"
        "  ~ \"Arm\", track \"P\"\n"
        "      keyCount: 3 -> 4\n"
        "      1 key removed\n"
        "      2 keys added\n"
        "      values of 1 of 2 keys, most at key 2, time 1.0: [1.0,2.0,3.0] -> "
        "[1.0,2.0,4.0], by 1\n"
        "different: 1 changed, 1 equal\n");
}

// A quarter turn about the second axis is (0, sin 45, 0, cos 45).
TEST(DiffTrack, RotationsAreTurnedApart) {
    const auto file = [](const std::vector<float>& values) {
        return kMotion + MotionPart("Arm") + SampledTrack('R', {{0, values}});
    };
    const auto ends = [&](const std::vector<float>& values, const std::string& ending) {
        const std::string text = TextOf(file({0, 0, 0, 1}), file(values));
        EXPECT_NE(text.find(ending + "\ndifferent: "), std::string::npos) << text;
    };
    const float half = std::sqrt(0.5f);
    ends({0, half, 0, half}, ", by 0.70710677, turned by 90 degrees");
    ends({0, 0, 0, -1}, ", by 2, turned by 0 degrees");
    ends({0, 1, 0, 0}, ", by 1, turned by 180 degrees");
    ends({0, 0, 0, 0}, ", by 1");  // no rotation
}

TEST(DiffTrack, SampledAndKeyframedKeysAreNotCompared) {
    const std::string a = kMotion + MotionPart("Arm") + SampledTrack('R', {{0, {0, 0, 0, 1}}});
    const std::string b =
        kMotion + MotionPart("Arm") + KeyframedTrack('r', {KeyRecord(0, {0, 0, 0})});
    EXPECT_EQ(TextOf(a, b),
              "key track: 1 changed\n"
              "  ~ \"Arm\", track \"R\"\n"
              "      trackLetter: \"R\" -> \"r\"\n"
              "      version: 1 -> 2\n"
              "different: 1 changed, 1 equal\n");
}

TEST(DiffTrack, TangentsOfKeyframedKeys) {
    const auto file = [](std::uint8_t code, float slope) {
        const std::vector<ExpectedTangent> tangents =
            code == 5 ? std::vector<ExpectedTangent>{{0.5f, slope}}
                      : std::vector<ExpectedTangent>{};
        return kMotion + MotionPart("Arm") +
               KeyframedTrack('P', {KeyRecord(0, {1, 2, 3}, 7, {3, 3, 3, code, 3, 3}, tangents)});
    };
    EXPECT_TRUE(Equal(file(5, 2), file(5, 2.25f), {.absolute = 0.25}));
    const std::string slope = TextOf(file(5, 2), file(5, 2.25f));
    EXPECT_NE(slope.find("tangentRecords of 1 of 1 key, most at key 0, time 0.0: [3] [0.5,2.0] -> "
                         "[0.5,2.25], by 0.25\n"),
              std::string::npos)
        << slope;
    const std::string code = TextOf(file(3, 0), file(4, 0));
    EXPECT_NE(code.find("tangentCodes of 1 of 1 key, first at key 0, time 0.0: [3,3,3,3,3,3] -> "
                        "[3,3,3,4,3,3]\n"),
              std::string::npos)
        << code;
}

// ---------------------------------------------------------------- reports

TEST(DiffReport, ShowsSoManyLinesOfAKindOfChunk) {
    std::vector<NodeFields> nodes(5);
    const std::string text = TextOf(DiffOf(ActorFile({}), ActorFile(nodes)), 2);
    EXPECT_EQ(text,
              "node: 5 added\n"
              "  + \"node\"\n"
              "  + \"node\" (2)\n"
              "  and 3 more lines\n"
              "different: 5 added\n");
}

TEST(DiffReport, AsJson) {
    MeshFields mesh = Strip();
    mesh.subMeshes[0].vertices[2].position = {2, 0.1f, kInfinity};
    mesh.subMeshes[0].faces.pop_back();
    const kta::Diff diff =
        DiffOf(StripFile(Strip()), StripFile(mesh) + NodeChunk({.name = "\xe9"}));
    std::ostringstream out;
    kta::WriteDiffJson(diff, kFileKindActor,
                       {.nameA = "a", .nameB = "b", .tolerance = {.relative = 0.5}}, out);
    const auto json = nlohmann::json::parse(out.str());
    EXPECT_EQ(json.at("kind"), "actor");
    EXPECT_EQ(json.at("equal"), false);
    EXPECT_EQ(json.at("tolerance"), nlohmann::json({{"absolute", 0.0}, {"relative", 0.5}}));
    EXPECT_EQ(
        json.at("totals"),
        nlohmann::json({{"added", 1}, {"removed", 0}, {"changed", 1}, {"moved", 0}, {"equal", 3}}));
    EXPECT_EQ(json.at("kinds").at("material").at("equal"), 2);
    EXPECT_EQ(json.at("kinds").at("node").at("orderDiffers"), false);
    const auto& node = json.at("changes").at(0);
    EXPECT_EQ(node.at("node"), "\u00e9");
    EXPECT_EQ(node.at("inA"), nullptr);
    EXPECT_EQ(node.at("inB").at("node"), 1);
    const auto& changed = json.at("changes").at(1);
    EXPECT_EQ(changed.at("kind"), "mesh");
    EXPECT_EQ(changed.at("inA"), nlohmann::json({{"offset", 7 + 2 * 120 + 644}, {"node", 0}}));
    const auto& position = changed.at("fields").at(1);
    EXPECT_EQ(position.dump(),
              R"({"a":[2.0,0.0,2.0],"at":{"originalVertex":2,"vertex":2},"b":[2.0,0.1,"inf"],)"
              R"("change":"changed","compared":6,"count":1,"deviation":"inf","field":"position",)"
              R"("item":"vertex","subMesh":"Oak"})");
    const auto& face = changed.at("fields").at(2);
    EXPECT_EQ(face.at("change"), "removed");
    EXPECT_EQ(face.at("item"), "face");
    EXPECT_EQ(face.at("count"), 1);
}

}  // namespace
