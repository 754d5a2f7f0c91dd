// Receipts: what deviates from the scene, what was lost, what it costs, and what counts as failed.
#include "host/app/receipt.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "host/app/exit_status.h"
#include "host/app/report_page.h"
#include "tests/support/kta_bytes.h"
#include "tests/unit/host/app/support.h"

namespace maxhost::app {
namespace {

using nlohmann::json;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

// ---------------------------------------------------------------- planted deviations

// The plug-in writes what the test says of a scene of one triangle, whose node stands at (1, 2, 3)
// and is turned by a quarter about z. In the files' axes the triangle's vertices are (1, 3, 2),
// (1, 3, 6) and (1, 6, 2): it is 5 units across.
class DeviationTest : public InDirectory {
  protected:
    void SetUp() override {
        Write("s.maxscene.json", R"({"maxscene": 1, "nodes": [{"name": "a",
            "transform": {"matrix": [[0, 1, 0], [-1, 0, 0], [0, 0, 1], [1, 2, 3]]},
            "object": {"class": "mesh", "vertices": [[0, 0, 0], [4, 0, 0], [0, 0, 3]],
                       "faces": [[0, 1, 2]]}}]})");
        plugIn_.doExport = [this](const std::string& name, DWORD) {
            Write(name + "temp1", support::ActorBeginning() + support::WireColorMaterial(1) +
                                      support::NodeChunk(node_) + support::MeshChunk(mesh_) +
                                      afterMesh_);
            Write(name + "temp2", support::FileHeader(false) + motion_);
            return IMPEXP_SUCCESS;
        };
    }

    Outcome Export(std::vector<std::string> arguments = {}) {
        const std::vector<std::string> others = {
            "-q",           "--plugin", FAKE_PLUGIN, "--plugin-dir", SILENT_CONVERTER_DIR,
            "--config-dir", "cfg",      "--receipt", "r.json",       "s.maxscene.json"};
        arguments.insert(arguments.end(), others.begin(), others.end());
        return RunProgram(arguments);
    }
    json Deviation() {
        const Outcome outcome = Export();
        EXPECT_EQ(outcome.status, kExitDone) << outcome.error;
        return Receipt()["deviation"];
    }
    static json Receipt() { return json::parse(Read("r.json")); }
    static double PercentOf5(double distance) { return distance / 5 * 100; }

    FakePlugInBehaviour& plugIn_ = ResetFakePlugIn();
    support::NodeFields node_{.name = "a",
                              .translation = {1, 3, 2},
                              .rotation = {0, -0.70710678f, 0, 0.70710678f},
                              .matrix = {0, 0, -1, 0, 0, 1, 0, 0, 1, 0, 0, 0, -2, -3, 1, 0}};
    support::MeshFields mesh_{
        .originalVertexCount = 3,
        .subMeshes = {{.material = 1,
                       .vertices = {{.original = 0, .position = {0, 0, 0}, .normal = {0, 0, -1}},
                                    {.original = 1, .position = {4, 0, 0}, .normal = {0, 0, -1}},
                                    {.original = 2, .position = {0, 3, 0}, .normal = {0, 0, -1}}},
                       .faces = {{0, 1, 2}}}}};
    std::string afterMesh_, motion_;
};

TEST_F(DeviationTest, WhatIsWrittenRightDoesNotDeviate) {
    const json deviation = Deviation();
    EXPECT_NEAR(deviation["size"], 5, 1e-5);
    EXPECT_NEAR(deviation["worst"], 0, 1e-4);
    EXPECT_EQ(deviation["vertices"]["compared"], 3);
    EXPECT_GT(deviation["poses"]["times"], 1);
    EXPECT_EQ(deviation["skins"]["compared"], 0);
    EXPECT_EQ(deviation["morphs"]["compared"], 0);
    EXPECT_EQ(Receipt()["losses"], json::array());
}

// 50,000 from the origin the coordinates of a triangle of size 5 are rounded by 0.004.
TEST_F(DeviationTest, FarFromTheOriginASceneIsNoSmallerThanAThousandthOfItsDistance) {
    std::string scene = Read("s.maxscene.json");
    const std::string place = "[1, 2, 3]";
    Write("s.maxscene.json", scene.replace(scene.find(place), place.size(), "[30000, 40000, 0]"));
    node_.translation = {30000, 0, 40000};
    node_.matrix = {0, 0, -1, 0, 0, 1, 0, 0, 1, 0, 0, 0, -40000, 0, 30000, 0};
    const json deviation = Deviation();
    EXPECT_NEAR(deviation["size"], 50, 0.01);
    EXPECT_LT(deviation["worst"], 0.01);
}

TEST_F(DeviationTest, ThePageWritesSizesWithoutExponents) {
    std::string scene = Read("s.maxscene.json");
    const std::string place = "[1, 2, 3]";
    Write("s.maxscene.json",
          scene.replace(scene.find(place), place.size(), "[3000000, 4000000, 0]"));
    Export({"--report", "r.html"});
    EXPECT_THAT(Read("r.html"), HasSubstr("The scene is 5000 units across"));
}

TEST_F(DeviationTest, AVertexThatStandsElsewhereIsNamed) {
    mesh_.subMeshes[0].vertices[1].position = {4, 0.25f, 0};
    const json worst = Deviation()["vertices"]["worst"];
    EXPECT_NEAR(worst["distance"], 0.25, 1e-5);
    EXPECT_NEAR(worst["percent"], PercentOf5(0.25), 1e-4);
    EXPECT_EQ(worst["path"], "/a");
    EXPECT_EQ(worst["vertex"], 1);
}

TEST_F(DeviationTest, ANodeThatStandsOrTurnsElsewhereIsNamed) {
    // By 1 along z, and not turned.
    node_.translation = {1, 4, 2};
    node_.rotation = {0, 0, 0, 1};
    node_.matrix = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, -1, -4, -2, 0};
    const json poses = Deviation()["poses"];
    EXPECT_NEAR(poses["worst"]["distance"], 1, 1e-5);
    EXPECT_NEAR(poses["worstAngle"]["degrees"], 90, 1e-3);
    EXPECT_EQ(poses["worstAngle"]["path"], "/a");
}

TEST_F(DeviationTest, APoseThatTheSceneDoesNotHaveIsNamedWithItsFrame) {
    // Moves by 2 within a second; the scene's node stands still.
    motion_ =
        support::MotionPart("a", {.translation = node_.translation, .rotation = node_.rotation}) +
        support::SampledTrack('P', {{0, {1, 3, 2}}, {1, {1, 5, 2}}});
    const json poses = Deviation()["poses"];
    EXPECT_NEAR(poses["worst"]["distance"], 2, 1e-5);
    EXPECT_EQ(poses["worst"]["frame"], 30);
}

TEST_F(DeviationTest, TrianglesOfOtherVerticesAreALoss) {
    mesh_.subMeshes[0].faces = {{0, 2, 1}};
    ASSERT_EQ(Export().status, kExitDone);
    const json losses = Receipt()["losses"];
    ASSERT_EQ(losses.size(), 1u);
    EXPECT_EQ(losses[0]["code"], "triangles-changed");
    EXPECT_EQ(losses[0]["path"], "/a");
    mesh_.subMeshes[0].faces = {{1, 2, 0}};
    ASSERT_EQ(Export().status, kExitDone);
    EXPECT_EQ(Receipt()["losses"], json::array()) << "it is the same triangle";
}

TEST_F(DeviationTest, MoreThanIsAllowedFailsAndNothingIsPutInPlace) {
    mesh_.subMeshes[0].vertices[1].position = {4, 0.25f, 0};  // 5 percent
    const Outcome failed = Export({"--max-error", "4.9"});
    EXPECT_EQ(failed.status, kExitFaultyOutput);
    EXPECT_THAT(failed.error, HasSubstr("vertices of meshes are off by 5 % of the scene's size, "
                                        "expected at most 4.9\n"));
    EXPECT_FALSE(std::filesystem::exists("s.hdotemp1"));
    EXPECT_EQ(Receipt()["status"], kExitFaultyOutput);
    EXPECT_NEAR(Receipt()["maxError"], 4.9, 1e-6);
    EXPECT_EQ(Export({"--max-error", "5.1"}).status, kExitDone);
    EXPECT_TRUE(std::filesystem::exists("s.hdotemp1"));
    EXPECT_EQ(Receipt()["status"], kExitDone);
}

TEST_F(DeviationTest, FaultsOfTheCheckAreStatus4) {
    node_.rotation = {0, -0.5f, 0, 0.5f};
    const Outcome outcome = Export();
    EXPECT_EQ(outcome.status, kExitFaultyOutput);
    EXPECT_THAT(outcome.error, HasSubstr("[rotation-not-unit]"));
    const json receipt = Receipt();
    EXPECT_EQ(receipt["status"], kExitFaultyOutput);
    ASSERT_EQ(receipt["faults"].size(), 1u);
    EXPECT_THAT(receipt["faults"][0], HasSubstr("[rotation-not-unit]"));
    EXPECT_EQ(receipt["issues"][0]["code"], "rotation-not-unit");
    EXPECT_EQ(receipt["deviation"]["vertices"]["compared"], 3);
}

TEST_F(DeviationTest, FilesThatCannotBeReadHaveAReceiptOfTheirFaults) {
    afterMesh_ = "cut";
    const Outcome outcome = Export({"--report", "r.html"});
    EXPECT_EQ(outcome.status, kExitFaultyOutput);
    const json receipt = Receipt();
    EXPECT_TRUE(receipt["deviation"].is_null());
    EXPECT_EQ(receipt["costs"], json::array());
    ASSERT_EQ(receipt["faults"].size(), 1u);
    EXPECT_THAT(receipt["faults"][0], HasSubstr("cut off: "));
    EXPECT_THAT(outcome.error, HasSubstr(receipt["faults"][0].get<std::string>()));
    EXPECT_THAT(Read("r.html"), HasSubstr("Failed"));
    EXPECT_THAT(Read("r.html"), HasSubstr("cut off: "));
}

// The receipt of an export that cannot be put in place would describe files that are not there.
TEST_F(DeviationTest, AReceiptComesWithItsFiles) {
    ASSERT_EQ(Export({"--report", "r.html"}).status, kExitDone);
    const std::string former = Read("r.json");
    std::filesystem::remove("s.hdotemp2");
    std::filesystem::create_directories("s.hdotemp2/in the way");
    mesh_.subMeshes[0].vertices[1].position = {4, 0.25f, 0};
    const Outcome outcome = Export({"--report", "r.html"});
    EXPECT_NE(outcome.status, kExitDone);
    EXPECT_EQ(Read("r.json"), former);
}

TEST_F(DeviationTest, ANormalThatPointsElsewhereIsNamed) {
    // By 30 degrees about the second axis.
    mesh_.subMeshes[0].vertices[2].normal = {0.5f, 0, -0.8660254f};
    const json deviation = Deviation();
    EXPECT_EQ(deviation["normals"]["compared"], 3);
    EXPECT_NEAR(deviation["normals"]["worst"]["degrees"], 30, 1e-3);
    EXPECT_EQ(deviation["normals"]["worst"]["path"], "/a");
    EXPECT_EQ(deviation["normals"]["worst"]["vertex"], 2);
    EXPECT_NEAR(deviation["worst"], 0, 1e-4) << "normals are no distance";
}

TEST_F(DeviationTest, TextureCoordinatesThatAreOffAreNamed) {
    std::string scene = Read("s.maxscene.json");
    const std::string faces = R"("faces": [[0, 1, 2]])";
    Write("s.maxscene.json",
          scene.replace(scene.find(faces), faces.size(),
                        faces + R"(, "channels": {"1": {"vertices": [[0, 0], [1, 0.25]],
                                                        "faces": [[0, 1, 1]]}})"));
    mesh_.mapChannelCount = 1;
    for (support::VertexFields& vertex : mesh_.subMeshes[0].vertices) {
        vertex.pairs.push_back(vertex.original == 0 ? std::array<float, 2>{0, 1}
                                                    : std::array<float, 2>{1, 0.75f});
    }
    EXPECT_EQ(Deviation()["textureCoordinates"]["worst"]["difference"], 0);
    mesh_.subMeshes[0].vertices[1].pairs[0] = {1, 0.25f};  // v was not turned over
    const json coordinates = Deviation()["textureCoordinates"];
    EXPECT_EQ(coordinates["compared"], 3);
    EXPECT_NEAR(coordinates["worst"]["difference"], 0.5, 1e-6);
    EXPECT_EQ(coordinates["worst"]["vertex"], 1);
}

TEST_F(DeviationTest, AReceiptThatCannotBeWrittenIsStatus4) {
    std::filesystem::create_directory("r.json");
    EXPECT_EQ(Export().status, kExitRefused) << "a directory is seen before";
    std::filesystem::remove("r.json");
    const Outcome outcome = Export({"--report", "none/r.html"});
    EXPECT_EQ(outcome.status, kExitFaultyOutput);
    EXPECT_THAT(outcome.error, HasSubstr("r.html: "));
    EXPECT_FALSE(std::filesystem::exists("s.hdotemp1"));
}

// ---------------------------------------------------------------- the ledger

class LedgerTest : public ProgramTest {
  protected:
    // "code path subject" of each loss.
    static std::vector<std::string> Losses() {
        std::vector<std::string> losses;
        const json receipt = json::parse(Read("r.json"));
        for (const json& loss : receipt["losses"]) {
            losses.push_back(loss["code"].get<std::string>() + " " +
                             loss["path"].get<std::string>() + " " +
                             loss["subject"].get<std::string>());
        }
        return losses;
    }
    std::vector<std::string> LossesOf(const std::string& scene, const std::string& options = "") {
        Write("l.maxscene.json", R"({"maxscene": 1, )" + scene + "}");
        const Outcome outcome = RunReal("-q --receipt r.json " + options + " l.maxscene.json");
        EXPECT_EQ(outcome.status, kExitDone) << outcome.error;
        return Losses();
    }
};

const std::string kTriangle =
    R"("object": {"class": "mesh", "vertices": [[0, 0, 0], [1, 0, 0], [0, 1, 0]],
                  "faces": [[0, 1, 2]]})";

TEST_F(LedgerTest, NodesThatAreNotExported) {
    EXPECT_THAT(
        LossesOf(R"("nodes": [{"name": "a"}, {"name": "b/c", "parent": 0, "hidden": true}])"),
        ElementsAre("node-hidden /a/b\\x2fc "));
    EXPECT_THAT(LossesOf(R"("nodes": [{"name": "a"}, {"name": "b"}])", "--select b"),
                ElementsAre("node-not-selected /a "));
    EXPECT_THAT(LossesOf(R"("nodes": [{"name": "a", "transform": {"class": "footprint"}}])"),
                ElementsAre("node-footprint /a "));
}

TEST_F(LedgerTest, NamesThatTheFilesCannotTell) {
    EXPECT_THAT(LossesOf(R"("nodes": [{"name": "a"}, {"name": "a", "parent": 0}])"),
                ElementsAre("name-shared /a ", "name-shared /a/a "));
}

TEST_F(LedgerTest, ObjectsMeshesAndProperties) {
    EXPECT_THAT(LossesOf(R"("nodes": [
        {"name": "eye", "object": {"class": "object", "superClassId": "0x20",
                                   "classId": ["0x1001", 0]}},
        {"name": "told", "userProperties": "a = 1"},
        {"name": "wall", "userProperties": "CollisionMesh", )" +
                         kTriangle + R"(},
        {"name": "ghost", "renderable": false, )" +
                         kTriangle + R"(},
        {"name": "points", "object": {"class": "mesh", "vertices": [[0, 0, 0]], "faces": []}}])"),
                ElementsAre("object-left-out /eye ", "user-properties-left-out /told ",
                            "user-properties-left-out /wall ", "mesh-collision /wall ",
                            "mesh-not-renderable /ghost ", "mesh-empty /points "));
}

TEST_F(LedgerTest, WeightsThatOptimizationChanges) {
    const std::string scene = R"("nodes": [{"name": "m", )" + kTriangle + R"(, "modifiers": [
        {"class": "skin", "bones": [1, 2],
         "weights": [[[0, 1]], [[0, 0.95], [1, 0.05]], [[1, 1]]]}]},
        {"name": "x"}, {"name": "y"}])";
    EXPECT_THAT(LossesOf(scene), ElementsAre("weights-changed /m "));
    const json loss = json::parse(Read("r.json"))["losses"][0];
    EXPECT_EQ(loss["count"], 1);
    EXPECT_EQ(loss["reason"], "bone weights changed by as much as 0.05");
    EXPECT_THAT(LossesOf(scene, "--no-optimize-skin"), IsEmpty());
}

TEST_F(LedgerTest, MorphChannels) {
    const std::string scene = R"("nodes": [{"name": "m", )" + kTriangle + R"(, "modifiers": [
        {"class": "morpher", "channels": [
            {"name": "up", "points": [[0, 0, 1], [1, 0, 1], [0, 1, 1]]},
            {"name": "far", "points": [[0, 0, 0], [700, 0, 0], [0, 1, 0]]}]}]}])";
    EXPECT_THAT(LossesOf(scene), ElementsAre("morph-flattened /m channel 'far'"));
    EXPECT_THAT(LossesOf(scene, "--no-morphers"),
                ElementsAre("morph-left-out /m channel 'up'", "morph-left-out /m channel 'far'"));
}

TEST_F(LedgerTest, MotionThatKeysDoNotTell) {
    const std::string scene = R"("time": {"frameRate": 30, "ticksPerFrame": 160, "start": 0,
        "end": 1600}, "nodes": [{"name": "baked", "transform": {"samples": [
            {"time": 0, "matrix": [[1, 0, 0], [0, 1, 0], [0, 0, 1], [0, 0, 0]]},
            {"time": 1600, "matrix": [[1, 0, 0], [0, 1, 0], [0, 0, 1], [8, 0, 0]]}]}}])";
    EXPECT_THAT(LossesOf(scene), ElementsAre("motion-not-keyed /baked "));
    const json pose = json::parse(Read("r.json"))["deviation"]["poses"]["worst"];
    EXPECT_NEAR(pose["distance"], 8, 1e-5);
    EXPECT_EQ(pose["frame"], 10);
    EXPECT_THAT(LossesOf(scene, "--sample-animation"), IsEmpty());
    EXPECT_NEAR(json::parse(Read("r.json"))["deviation"]["worst"], 0, 1e-4);
}

TEST_F(LedgerTest, MaterialsAndTextures) {
    const std::string material = R"("materials": [{"class": "standard", "name": "paint", "maps": [
        {"slot": 1, "map": {"class": "bitmap", "file": "c:\\t\\a.png"}},
        {"slot": 2, "enabled": false, "map": {"class": "bitmap", "file": "off.png"}},
        {"slot": 3, "map": {"class": "other", "classId": [7, 8]}}]}], )";
    EXPECT_THAT(
        LossesOf(material + R"("nodes": [{"name": "m", "material": 0, )" + kTriangle + "}]"),
        ElementsAre("texture-off /m material 'paint', texture 'off.png'",
                    "map-left-out /m material 'paint'"));
}

TEST_F(LedgerTest, WarningsOfTheExportersLog) {
    EXPECT_THAT(
        LossesOf(R"("nodes": [{"name": "m", )" + kTriangle + R"(, "modifiers": [
        {"class": "skin", "bones": [], "context": false, "weights": []}]}])"),
        Contains("exporter-warning /m *** Failed to get the skin context for node 'm' ***"));
}

#ifndef _WIN32  // where models are not read
TEST_F(LedgerTest, WhatReadingLeavesOutNamesTheNode) {
    Write("m.obj", "o part\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\nl 1 2\n");
    ASSERT_EQ(RunReal("-q --receipt r.json m.obj").status, kExitDone);
    EXPECT_THAT(Losses(), Contains(HasSubstr("points-and-lines /")));
}
#endif

// ---------------------------------------------------------------- accepted losses

TEST_F(LedgerTest, OnlyNewLossesFail) {
    const std::string scene = R"({"maxscene": 1, "nodes": [{"name": "a", "hidden": true})";
    Write("l.maxscene.json", scene + "]}");
    ASSERT_EQ(RunReal("-q --receipt base.json l.maxscene.json").status, kExitDone);
    EXPECT_EQ(RunReal("-q --accept base.json l.maxscene.json").status, kExitDone);
    Write("l.maxscene.json", scene + R"(, {"name": "b", "hidden": true}]})");
    const Outcome outcome = RunReal("-q --accept base.json --receipt r.json l.maxscene.json");
    EXPECT_EQ(outcome.status, kExitFaultyOutput);
    EXPECT_THAT(outcome.error, HasSubstr("new loss: node-hidden: /b: hidden\n"));
    EXPECT_THAT(outcome.error, Not(HasSubstr("/a:")));
    const json receipt = json::parse(Read("r.json"));
    EXPECT_EQ(receipt["newLosses"], 1);
    EXPECT_EQ(receipt["losses"][0]["accepted"], true);
    EXPECT_EQ(receipt["losses"][1]["accepted"], false);
    // The receipt of the failed run may be the next baseline.
    EXPECT_EQ(RunReal("-q --accept r.json l.maxscene.json").status, kExitDone);
}

TEST_F(LedgerTest, StrictRunsWithAReceiptTakeAnyLossForAFailure) {
    EXPECT_EQ(RunReal("-q --strict s.maxscene.json").status, kExitDone) << "as ever";
    EXPECT_EQ(RunReal("-q --strict --receipt r.json s.maxscene.json").status, kExitFaultyOutput);
    EXPECT_EQ(RunReal("-q --strict --accept r.json s.maxscene.json").status, kExitDone);
}

TEST_F(LedgerTest, AcceptedWarningsDoNotEndAStrictRun) {
    Write("l.maxscene.json", R"({"maxscene": 1, "nodes": [{"name": "a"}, {"name": "a"}]})");
    ASSERT_EQ(RunReal("-q --receipt base.json l.maxscene.json").status, kExitDone);
    EXPECT_EQ(RunReal("-q --strict l.maxscene.json").status, kExitFaultyOutput);
    EXPECT_EQ(RunReal("-q --strict --accept base.json l.maxscene.json").status, kExitDone);
}

TEST_F(LedgerTest, WhatIsNoReceiptIsRefused) {
    for (const char* const text : {"", "{", "[1]", "{}", R"({"receipt": 2, "losses": []})",
                                   R"({"receipt": 1, "losses": [{"code": 3}]})",
                                   R"({"receipt": 1, "losses": [{"code": "a", "path": "", "subject":
                                   "", "count": -1}]})"}) {
        Write("base.json", text);
        const Outcome outcome = RunReal("--accept base.json s.maxscene.json");
        EXPECT_EQ(outcome.status, kExitRefused) << text;
        EXPECT_THAT(outcome.error, HasSubstr("expected a receipt of hdo-export")) << text;
    }
    EXPECT_EQ(RunReal("--accept none.json s.maxscene.json").status, kExitRefused);
}

TEST_F(LedgerTest, ReceiptsOfTheSameExportAreEqualButForTheTimes) {
    for (const char* const name : {"1", "2"}) {
        ASSERT_EQ(RunReal(std::string("-q --no-times --receipt r") + name + ".json --report r" +
                          name + ".html s.maxscene.json")
                      .status,
                  kExitDone);
    }
    EXPECT_EQ(Read("r1.json"), Read("r2.json"));
    EXPECT_EQ(Read("r1.html"), Read("r2.html"));
    EXPECT_FALSE(json::parse(Read("r1.json")).contains("times"));
    ASSERT_EQ(RunReal("-q --receipt r3.json s.maxscene.json").status, kExitDone);
    json timed = json::parse(Read("r3.json"));
    EXPECT_FALSE(timed["times"]["stages"].empty());
    EXPECT_FALSE(timed["times"]["nodes"].empty());
    timed.erase("times");
    EXPECT_EQ(timed, json::parse(Read("r1.json")));
}

TEST_F(LedgerTest, CostsAddUpToTheFiles) {
    Write("l.maxscene.json",
          R"({"maxscene": 1, "nodes": [{"name": "a", )" + kTriangle + R"(}, {"name": "b"}]})");
    ASSERT_EQ(RunReal("-q --receipt r.json l.maxscene.json").status, kExitDone);
    const json receipt = json::parse(Read("r.json"));
    std::uint64_t bytes = 14;  // both headers
    for (const json& cost : receipt["costs"]) {
        bytes += cost["bytes"].get<std::uint64_t>();
    }
    EXPECT_EQ(bytes, Read("l.hdotemp1").size() + Read("l.hdotemp2").size());
    EXPECT_EQ(receipt["costs"][0]["path"], "/a");
    EXPECT_EQ(receipt["costs"][0]["chunks"]["mesh"]["count"], 1);
}

// ---------------------------------------------------------------- the page

TEST(ReportPage, EscapesWhatComesFromTheScene) {
    Receipt receipt;
    receipt.scene = "<b>&\"'.fbx";
    receipt.files = {{"x.hdotemp1", "actor", 7, {}}};
    receipt.losses = {{scene::LossCode::nodeHidden, "/<script>", "a\nb", "<i>", 2}};
    const std::string page = PageOf(receipt, true);
    EXPECT_THAT(page, HasSubstr("&lt;b&gt;&amp;&quot;&#39;.fbx"));
    EXPECT_THAT(page, HasSubstr("/&lt;script&gt;"));
    EXPECT_THAT(page, HasSubstr("&lt;i&gt; (2)"));
    EXPECT_THAT(page, Not(HasSubstr("<script")));
    EXPECT_THAT(page, Not(HasSubstr("<i>")));
}

TEST(ReportPage, NeedsNothingElse) {
    const std::string page = PageOf(Receipt(), true);
    EXPECT_THAT(page, testing::StartsWith("<!DOCTYPE html>"));
    for (const char* const outside : {"http:", "https:", "src=", "href=", "url(", "@import"}) {
        EXPECT_THAT(page, Not(HasSubstr(outside))) << outside;
    }
}

TEST(ReportPage, LongListsSayHowMuchMoreThereIs) {
    Receipt receipt;
    receipt.losses.assign(60, {scene::LossCode::nodeHidden, "/a", "", "hidden"});
    receipt.costs.assign(130, {"/a", 10, {}});
    const std::string page = PageOf(receipt, false);
    EXPECT_THAT(page, HasSubstr("and 10 more, which the receipt lists"));
    EXPECT_THAT(page, HasSubstr("and 30 more, which the receipt lists"));
}

}  // namespace
}  // namespace maxhost::app
