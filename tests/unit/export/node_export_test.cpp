#include <gtest/gtest.h>
#include <max.h>
#include <maxapi.h>
#include <stdmat.h>

#include <cmath>
#include <tuple>

#include "core/log.h"
#include "host/sdk/host.h"
#include "scene/node.h"
#include "tests/support/chunks.h"
#include "tests/support/export_run.h"
#include "tests/support/kta_bytes.h"
#include "tests/support/open_pass.h"
#include "tests/support/scene_parts.h"

namespace {

namespace scene = maxhost::scene;
using scene::Node;
using scene::Scene;
using support::Bytes;
using support::CountLines;
using support::Export;
using support::ExportChoices;
using support::ExportRun;
using support::MakeNode;

constexpr double kPi = 3.14159265358979323846;

scene::Transform Constant(const scene::Matrix& matrix) {
    scene::Transform transform;
    transform.kind = scene::MatrixTransform{matrix};
    return transform;
}

scene::Matrix Translation(float x, float y, float z) {
    scene::Matrix matrix = scene::kIdentity;
    matrix[3] = {x, y, z};
    return matrix;
}

scene::Object Triangle() {
    scene::Mesh mesh;
    mesh.vertices = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    mesh.faces.resize(1);
    mesh.faces[0].v = {0, 1, 2};
    scene::Object object;
    object.mesh = std::make_shared<const scene::Mesh>(mesh);
    return object;
}

scene::Object Other(std::uint32_t superClass, scene::ClassId classId) {
    scene::Object object;
    object.superClassId = superClass;
    object.classId = classId;
    return object;
}

// The nodes of an actor file of materials and nodes alone.
std::string Nodes(const ExportRun& run) {
    EXPECT_TRUE(run.actor);
    return run.actor ? run.actor->substr(support::EndOfMaterials(*run.actor)) : "";
}

// The body of the n-th node chunk.
std::string Body(const ExportRun& run, std::size_t n = 0) {
    return support::ChunksOf(run.actor.value(), 0).at(n).body;
}

void ExpectF32(const std::string& body, std::size_t offset, std::initializer_list<float> expected) {
    for (const float value : expected) {
        EXPECT_NEAR(support::F32At(body, offset), value, 1e-6) << "at offset " << offset;
        offset += 4;
    }
}

TEST(NodeExport, TranslatedNodeByteForByte) {
    Scene scene;
    scene.nodes = {MakeNode("Pole")};
    scene.nodes[0].transform = Constant(Translation(1, 2, 3));
    const std::string expected = Bytes()
                                     .Text(support::ActorBeginning())
                                     .Text(support::WireColorMaterial(1))
                                     .U32(0)
                                     .U32(632)
                                     .U32(3)
                                     .Name("Pole")
                                     .Name("")
                                     .F32({1, 3, 2})
                                     .F32({0, 0, 0, 1})
                                     .F32({1, 1, 1})
                                     .F32({1, 0, 0, 0})
                                     .F32({0, 1, 0, 0})
                                     .F32({0, 0, 1, 0})
                                     .F32({-1, -3, -2, 0})
                                     .U8(1)  // a dummy is a helper
                                     .U8(0)
                                     .U8(0)
                                     .U8(0)
                                     .F32({0})
                                     .Str();
    EXPECT_EQ(Export(scene).actor, expected);
}

TEST(NodeExport, LogOfANode) {
    Scene scene;
    scene.nodes = {MakeNode("Post"), MakeNode("Sign", 0)};
    // Stretched by 2 along z, turned a quarter about z, and moved.
    scene.nodes[1].transform = Constant({{{0, 1, 0}, {-1, 0, 0}, {0, 0, 2}, {1, 2, 3}}});
    const ExportRun run = Export(scene);
    const std::vector<std::string> expected = {
        "",
        "",
        "- Exporting node 'Sign'",
        "  + Parent = 'Post'",
        "Node 'Sign' transformation:",
        "+ Translation = 1.000000, 3.000000, 2.000000",
        "+ Rotation    = 0.000000, -0.707107, 0.000000, 0.707107",
        "+ Scale Rot   = 0.000000, 0.000000, 0.000000, 1.000000",
        "+ Scale       = 1.000000, 2.000000, 1.000000",
        "+ Determinant = 1.000000",
        "+ Parity      = 0.000000",
        "Scale Axis  = 1.000000, 0.000000, 0.000000",
        "Scale Angle = 0.000000",
        "Closing file"};
    // Behind the header's line, three of materials and those of the first node; before the motion.
    ASSERT_EQ(run.log.size(), 4 + 13 + 13 + 1 + 4u);
    EXPECT_EQ(std::vector(run.log.begin() + 17, run.log.begin() + 31), expected);
    EXPECT_EQ(run.log[7], "  + Parent = ''");
}

TEST(NodeExport, LogOfAStretchAlongADirectionBetweenTheAxes) {
    // diag(4, 2, 1) in axes that are turned by 30 degrees about y, as a row-vector matrix.
    const double c = std::cos(kPi / 6), s = std::sin(kPi / 6);
    const auto f = [](double x) { return static_cast<float>(x); };
    Scene scene;
    scene.nodes = {MakeNode("Stretched")};
    scene.nodes[0].transform = Constant({{{f(4 * c * c + s * s), 0, f(-3 * c * s)},
                                          {0, 2, 0},
                                          {f(-3 * c * s), 0, f(4 * s * s + c * c)},
                                          {0, 0, 0}}});
    const ExportRun run = Export(scene);
    // sin and cos of 15 degrees, by the left-hand rule; the slots are x, z, y (, w).
    EXPECT_EQ(CountLines(run, "+ Scale Rot   = 0.000000, 0.000000, -0.258819, 0.965926"), 1);
    EXPECT_EQ(CountLines(run, "Scale Axis  = 0.000000, 0.000000, -1.000000"), 1);
    EXPECT_EQ(CountLines(run, "Scale Angle = 0.523599"), 1);
    ExpectF32(Body(run), 532, {0, 0, 0, 1});
}

TEST(NodeExport, RotationIsWrittenInTheFilesAxes) {
    Scene scene;
    scene.nodes = {MakeNode("Z"), MakeNode("X")};
    scene.nodes[0].transform = Constant({{{0, 1, 0}, {-1, 0, 0}, {0, 0, 1}, {0, 0, 0}}});
    scene.nodes[1].transform = Constant({{{1, 0, 0}, {0, 0, 1}, {0, -1, 0}, {0, 0, 0}}});
    const ExportRun run = Export(scene);
    ExpectF32(Body(run, 0), 532, {0, -support::kHalfRoot, 0, support::kHalfRoot});
    ExpectF32(Body(run, 1), 532, {-support::kHalfRoot, 0, 0, support::kHalfRoot});
}

TEST(NodeExport, TheSignOfTheScaleIsThePlainSignOfTheTripleProduct) {
    // The product is exactly -36, a part in 10^17 of what its terms come to; it changes its sign
    // with the first row.
    scene::Matrix matrix = {{{-9767697, 1117645, 158415},
                             {-10357503, 1159231, 162807},
                             {193861, -21681, -3044},
                             {0, 0, 0}}};
    for (const bool mirrored : {true, false}) {
        Scene scene;
        scene.nodes = {MakeNode("Flat")};
        scene.nodes[0].transform = Constant(matrix);
        const std::string body = Body(Export(scene));
        for (const std::size_t offset : {548, 552, 556}) {
            EXPECT_EQ(support::F32At(body, offset) < 0, mirrored) << offset;
        }
        for (float& value : matrix[0]) {
            value = -value;
        }
    }
}

TEST(NodeExport, ScaleIsTheLengthsOfTheRows) {
    Scene scene;
    scene.nodes = {MakeNode("Sheared")};
    scene.nodes[0].transform = Constant({{{3, 4, 0}, {0, 2, 0}, {0, 0, 7}, {0, 0, 0}}});
    ExpectF32(Body(Export(scene)), 548, {5, 7, 2});
}

TEST(NodeExport, MirroredNodeHasAllScalesNegated) {
    Scene scene;
    scene.nodes = {MakeNode("Mirrored")};
    scene.nodes[0].transform = Constant({{{-1, 0, 0}, {0, 2, 0}, {0, 0, 3}, {0, 0, 0}}});
    const ExportRun run = Export(scene);
    ExpectF32(Body(run), 548, {-1, -3, -2});
    // Beside the sign of all three axes, half a turn about x is left.
    EXPECT_NEAR(std::fabs(support::F32At(Body(run), 532)), 1, 1e-6);
    ExpectF32(Body(run), 536, {0, 0, 0});
    EXPECT_EQ(CountLines(run, "+ Determinant = -1.000000"), 1);
    EXPECT_EQ(CountLines(run, "+ Parity      = 0.000000"), 1);
}

TEST(NodeExport, FourthColumnOfTheInverseMatrixIsZeroInAllRows) {
    Scene scene;
    scene.nodes = {MakeNode("Turned")};
    scene.nodes[0].transform = Constant({{{0, 1, 0}, {-1, 0, 0}, {0, 0, 2}, {5, 6, 7}}});
    const std::string body = Body(Export(scene));
    for (std::size_t row = 0; row < 4; ++row) {
        EXPECT_EQ(body.substr(560 + row * 16 + 12, 4), std::string(4, '\0'));
    }
    // The inverse's rows are (0,-1,0), (1,0,0), (0,0,0.5) and (-6,5,-3.5).
    ExpectF32(body, 560, {0, 0, -1});
    ExpectF32(body, 576, {0, 0.5f, 0});
    ExpectF32(body, 592, {1, 0, 0});
    ExpectF32(body, 608, {-6, -3.5f, 5});
}

TEST(NodeExport, WorldMatrixIsInvertedWithAllParents) {
    Scene scene;
    scene.nodes = {MakeNode("Parent"), MakeNode("Child", 0)};
    scene.nodes[0].transform = Constant(Translation(10, 0, 0));
    scene.nodes[1].transform = Constant(Translation(1, 2, 3));
    const std::string child = Body(Export(scene), 1);
    ExpectF32(child, 520, {1, 3, 2});
    ExpectF32(child, 608, {-11, -3, -2});
}

TEST(NodeExport, ChildOfATurnedParentStandsInTheParentsAxes) {
    Scene scene;
    scene.nodes = {MakeNode("Turned"), MakeNode("Child", 0)};
    scene.nodes[0].transform = Constant({{{0, 1, 0}, {-1, 0, 0}, {0, 0, 1}, {10, 0, 0}}});
    scene.nodes[1].transform = Constant(Translation(1, 2, 3));
    const std::string child = Body(Export(scene), 1);
    ExpectF32(child, 520, {1, 3, 2});
    ExpectF32(child, 532, {0, 0, 0, 1});
    // In the world it stands at (8, 1, 3): the parent takes x to y and y to -x.
    ExpectF32(child, 560, {0, 0, -1, 0});
    ExpectF32(child, 592, {1, 0, 0, 0});
    ExpectF32(child, 608, {-1, -3, 8, 0});
}

TEST(LocalTransform, IsThatOfTheGivenTimeWithoutTheParents) {
    Scene scene;
    scene.nodes = {MakeNode("Turning"), MakeNode("Moving", 0)};
    scene::SampledTransform turning, moving;
    turning.samples = {{0, scene::kIdentity},
                       {160, {{{0, 1, 0}, {-1, 0, 0}, {0, 0, 1}, {5, 6, 7}}}}};
    moving.samples = {{0, Translation(1, 0, 0)}, {160, Translation(3, 0, 4)}};
    scene.nodes[0].transform.emplace().kind = turning;
    scene.nodes[1].transform.emplace().kind = moving;
    maxhost::Host::Instance().OpenScene(scene);
    INode* const node = maxhost::Host::Instance().Nodes()[1];
    for (const auto& [time, x, z] : {std::tuple(0, 1.0f, 0.0f), std::tuple(160, 3.0f, 4.0f)}) {
        const Matrix3 local = NodePlace(node).Local(time);
        EXPECT_NEAR(local.GetTrans().x, x, 1e-6) << time;
        EXPECT_NEAR(local.GetTrans().y, 0, 1e-6) << time;
        EXPECT_NEAR(local.GetTrans().z, z, 1e-6) << time;
        EXPECT_NEAR(local.GetRow(0).x, 1, 1e-6) << time;
        EXPECT_NEAR(local.GetRow(0).y, 0, 1e-6) << time;
    }
    maxhost::Host::Instance().CloseScene();
}

TEST(NodeExport, ParentNameIsEmptyOnlyBelowTheSceneRoot) {
    Scene scene;
    scene.nodes = {MakeNode("scene root"), MakeNode("Child", 0), MakeNode("Scene Root"),
                   MakeNode("Orphan", 2)};
    const ExportRun run = Export(scene);
    EXPECT_EQ(Body(run, 0).substr(260, 260), Bytes().Name("").Str());
    EXPECT_EQ(Body(run, 1).substr(260, 260), Bytes().Name("scene root").Str());
    EXPECT_EQ(Body(run, 3).substr(260, 260), Bytes().Name("").Str());
    EXPECT_EQ(CountLines(run, "  + Parent = 'scene root'"), 1);
}

TEST(NodeExport, LongNamesAreCutToTheirFields) {
    Scene scene;
    const std::string name = std::string(258, 'a') + "bcd";
    scene.nodes = {MakeNode(name), MakeNode(std::string(259, 'x'), 0),
                   MakeNode(std::string(5000, 'y'))};
    const ExportRun run = Export(scene);
    EXPECT_EQ(Body(run, 0).substr(0, 260), Bytes().Name(name.substr(0, 259)).Str());
    EXPECT_EQ(Body(run, 1).substr(0, 260), Bytes().Name(std::string(259, 'x')).Str());
    EXPECT_EQ(Body(run, 1).substr(260, 260), Bytes().Name(name.substr(0, 259)).Str());
    EXPECT_EQ(Body(run, 2).substr(0, 260), Bytes().Name(std::string(259, 'y')).Str());
    // A log line is cut at 4095 characters.
    EXPECT_EQ(CountLines(run, "- Exporting node '" + std::string(4095 - 18, 'y')), 1);
}

TEST(NodeExport, GeometricNodesStandWhereTheirObjectStands) {
    Scene scene;
    scene.nodes = {MakeNode("Mesh"), MakeNode("Helper"), MakeNode("Target"), MakeNode("Child", 0)};
    for (int i = 0; i < 3; ++i) {
        scene.nodes[i].transform = Constant(Translation(1, 0, 0));
        scene.nodes[i].objectOffset = Translation(0, 0, 5);
    }
    scene.nodes[0].object = Triangle();
    scene.nodes[2].object = Other(0x10, {0x1020, 0});
    ExportChoices withoutMeshes;
    withoutMeshes.settings = std::string(4, '\0');
    const ExportRun run = Export(scene, withoutMeshes);
    ExpectF32(Body(run, 0), 520, {1, 5, 0});
    ExpectF32(Body(run, 0), 608, {-1, -5, 0});
    // The offset is not inherited by the child, which follows its parent.
    ExpectF32(Body(run, 1), 520, {0, 0, 0});
    ExpectF32(Body(run, 1), 608, {-1, 0, 0});
    ExpectF32(Body(run, 2), 520, {1, 0, 0});
    ExpectF32(Body(run, 3), 520, {1, 0, 0});
}

struct Classification {
    std::uint32_t superClass;
    scene::ClassId classId;
    int isBone;
    int hasHelperSize;
};

TEST(NodeExport, ObjectsAreClassifiedByTheirReference) {
    const Classification rows[] = {{0x50, {0x2010, 0}, 0, 1},
                                   {0x50, {0x2011, 0}, 0, 1},
                                   {0x50, {0x2013, 0}, 0, 1},
                                   {0x50, {0x2014, 0}, 0, 1},
                                   {0x50, {0x2012, 0}, 1, 0},
                                   {0x50, {0x2013, 1}, 1, 0},
                                   {0x10, {0x2013, 0}, 0, 1},
                                   {0x50, {0x1c706482, 0x3e82994}, 0, 1},
                                   {0x40, {0xa, 0}, 0, 1},
                                   {0x50, {0x876234, 0}, 1, 0},
                                   {0x10, {0x28bf6e8d, 0x2ecca840}, 1, 0},
                                   {0x10, {0x9, 0}, 0, 0},
                                   {0x20, {0x1001, 0}, 0, 0},
                                   {0x30, {0x1011, 0}, 0, 0},
                                   {0x10, {0x1020, 0}, 0, 0}};
    Scene scene;
    for (const Classification& row : rows) {
        scene.nodes.push_back(MakeNode("n"));
        scene.nodes.back().object = Other(row.superClass, row.classId);
        scene.nodes.back().object->parameter0 = 12.5f;
    }
    const ExportRun run = Export(scene);
    int n = 0;
    for (const Classification& row : rows) {
        const std::string body = Body(run, n);
        EXPECT_EQ(body[624], row.isBone) << n;
        EXPECT_EQ(body[625], row.hasHelperSize) << n;
        EXPECT_EQ(support::F32At(body, 628), row.hasHelperSize ? 12.5f : 0.0f) << n;
        ++n;
    }
}

TEST(NodeExport, HelperWithoutParameterBlockHasSizeZero) {
    Scene scene;
    scene.nodes = {MakeNode("Point")};
    scene.nodes[0].object = Other(0x50, {0x2013, 0});
    const std::string body = Body(Export(scene));
    EXPECT_EQ(body[625], 1);
    EXPECT_EQ(support::F32At(body, 628), 0.0f);
}

TEST(NodeExport, DerivedObjectCountsAsSizedHelperWithoutSize) {
    Scene scene;
    scene.nodes = {MakeNode("Modified")};
    scene.nodes[0].object = Triangle();
    scene.nodes[0].object->parameter0 = 3;
    scene.nodes[0].modifiers = {scene::Modifier{true, scene::OtherModifier{{1, 2}}}};
    const std::string body = Body(Export(scene));
    EXPECT_EQ(body[624], 0);
    EXPECT_EQ(body[625], 1);
    EXPECT_EQ(support::F32At(body, 628), 0.0f);
}

TEST(NodeExport, FootprintNodeIsSkippedWithALogLine) {
    Scene scene;
    scene.nodes = {MakeNode("Steps"), MakeNode("Foot", 0)};
    scene.nodes[0].transform->kind = scene::FootprintTransform{};
    const ExportRun run = Export(scene);
    EXPECT_EQ(Nodes(run).size(), 12 + 632u);
    EXPECT_EQ(Body(run).substr(0, 260), Bytes().Name("Foot").Str());
    EXPECT_EQ(Body(run).substr(260, 260), Bytes().Name("Steps").Str());
    EXPECT_EQ(CountLines(run, "- Exporting node 'Steps'"), 1);
    EXPECT_EQ(CountLines(run, "  + Skipped, because it's a biped footprint"), 1);
    EXPECT_EQ(CountLines(run, "  + Parent = ''"), 0);
}

TEST(NodeExport, NodeWithoutTransformControllerStandsAtItsParent) {
    Scene scene;
    scene.nodes = {MakeNode("Parent"), MakeNode("Child", 0)};
    scene.nodes[0].transform = Constant(Translation(4, 5, 6));
    scene.nodes[1].transform.reset();
    const std::string child = Body(Export(scene), 1);
    ExpectF32(child, 520, {0, 0, 0});
    ExpectF32(child, 608, {-4, -6, -5});
}

// ---------------------------------------------------------------- which mesh is exported

constexpr char kMeshLine[] = "  + Exporting mesh...";
constexpr char kCollisionLine[] = "  + Exporting collision mesh...";

std::string MeshSettings(bool collision, bool meshes, bool nonRenderable) {
    return Bytes().U8(collision).U8(0).U8(meshes).U8(nonRenderable).Str();
}

ExportRun ExportTriangle(const std::string& userProperties, bool renderable,
                         const std::string& settings) {
    Scene scene;
    scene.nodes = {MakeNode("Mesh")};
    scene.nodes[0].object = Triangle();
    scene.nodes[0].userProperties = userProperties;
    scene.nodes[0].renderable = renderable;
    ExportChoices choices;
    choices.settings = settings;
    return Export(scene, choices);
}

TEST(NodeExport, UserPropertyInAnyCaseMakesACollisionMesh) {
    for (const char* text : {"CollisionMesh", "xx collisionmeshes", "a = 1\r\nCOLLISIONMESH\r\n"}) {
        const ExportRun on = ExportTriangle(text, false, MeshSettings(true, true, false));
        EXPECT_EQ(CountLines(on, kCollisionLine), 1) << text;
        EXPECT_EQ(CountLines(on, kMeshLine), 0) << text;
        const ExportRun off = ExportTriangle(text, true, MeshSettings(false, true, true));
        EXPECT_EQ(CountLines(off, kCollisionLine), 0) << text;
        EXPECT_EQ(CountLines(off, kMeshLine), 0) << text;
    }
}

TEST(NodeExport, OrdinaryMeshesFollowTheirSwitches) {
    const struct {
        bool renderable, meshes, nonRenderable;
        int lines;
    } rows[] = {{true, true, false, 1}, {true, false, false, 0}, {false, true, false, 0},
                {false, true, true, 1}, {false, false, true, 0}, {true, false, true, 0}};
    for (const auto& row : rows) {
        const ExportRun run = ExportTriangle("collision mesh", row.renderable,
                                             MeshSettings(true, row.meshes, row.nonRenderable));
        EXPECT_EQ(CountLines(run, kMeshLine), row.lines);
        EXPECT_EQ(CountLines(run, kCollisionLine), 0);
    }
}

TEST(NodeExport, NodesThatAreNotGeometricHaveNoMesh) {
    Scene scene;
    scene.nodes = {MakeNode("Helper"), MakeNode("Target"), MakeNode("Camera")};
    scene.nodes[1].object = Other(0x10, {0x1020, 0});
    scene.nodes[2].object = Other(0x20, {0x1001, 0});
    EXPECT_EQ(CountLines(Export(scene), kMeshLine), 0);
}

// ---------------------------------------------------------------- the pass itself

TEST(Exporter, NodeExportedTwiceHasOneChunkAndLogsOnce) {
    const support::WorkDirectory directory;
    Scene scene;
    scene.nodes = {MakeNode("Twice"), MakeNode("Steps")};
    scene.nodes[1].transform->kind = scene::FootprintTransform{};
    maxhost::Host::Instance().OpenScene(scene);
    const auto nodes = maxhost::Host::Instance().Nodes();
    Plinth::GetLogManager().AddLogFileCallback("log");
    {
        support::OpenPass pass;
        for (int i = 0; i < 2; ++i) {
            ExportNode(*pass, nodes[0]);
            ExportNode(*pass, nodes[1]);
        }
        EXPECT_EQ(pass.Size(), 12 + 632);
        EXPECT_EQ(pass->exportedNodes.Count(), 1);
    }
    Plinth::GetLogManager().ClearLogCallbacks();
    const std::string log = support::ReadFile("log");
    const auto count = [&](const std::string& text) {
        int n = 0;
        for (std::size_t at = log.find(text); at != std::string::npos;
             at = log.find(text, at + 1)) {
            ++n;
        }
        return n;
    };
    EXPECT_EQ(count("- Exporting node 'Twice'"), 1);
    // A footprint is not remembered.
    EXPECT_EQ(count("- Exporting node 'Steps'"), 2);
    EXPECT_EQ(count("  + Skipped, because it's a biped footprint"), 2);
    maxhost::Host::Instance().CloseScene();
}

TEST(Exporter, TreeWithoutProgressCountsItsNodesAndIsNotCancelled) {
    Scene scene;
    scene.nodes = {MakeNode("A"), MakeNode("B", 0), MakeNode("C", 0)};
    maxhost::Host& host = maxhost::Host::Instance();
    host.OpenScene(scene);
    {
        support::OpenPass pass;
        pass->nodeTotal = 3;
        host.CancelAtUpdate(1);
        EXPECT_FALSE(ExportNodeTree(*pass, host.Nodes()[0], true));
        EXPECT_EQ(pass->nodeDone, 1);
        EXPECT_EQ(pass->exportedNodes.Count(), 0);
        EXPECT_TRUE(ExportNodeTree(*pass, host.Nodes()[0], false));
        EXPECT_EQ(pass->nodeDone, 1 + 3);
        EXPECT_EQ(pass->exportedNodes.Count(), 3);
    }
    host.CancelAtUpdate(0);
    host.CloseScene();
}

TEST(Exporter, NodeWithoutParentAndObjectIsAnOrdinaryOne) {
    maxhost::Host::Instance().OpenScene(Scene());
    {
        support::OpenPass pass;
        INode* const root = maxhost::Host::Instance().GetInterface()->GetRootNode();
        ASSERT_EQ(root->GetParentNode(), nullptr);
        ASSERT_EQ(root->GetObjectRef(), nullptr);
        ExportNode(*pass, root);
        EXPECT_EQ(pass.Size(), 12 + 632);
        EXPECT_EQ(pass.Written().substr(12 + 260, 260), std::string(260, '\0'));
        EXPECT_EQ(pass.Written().substr(12 + 624, 8), std::string(8, '\0'));
    }
    maxhost::Host::Instance().CloseScene();
}

TEST(Exporter, NodesWithoutMaterialGetOneInTheirWireColour) {
    Scene scene;
    scene.nodes = {MakeNode("A"), MakeNode("B"), MakeNode("C", 0), MakeNode("D")};
    auto shared = std::make_shared<scene::Material>();
    shared->name = "Steel";
    scene.materials = {shared};
    scene.nodes[1].material = 0;
    scene.nodes[3].material = 0;
    scene.nodes[2].wireColor = {255, 51, 0};
    maxhost::Host::Instance().OpenScene(scene);
    const auto nodes = maxhost::Host::Instance().Nodes();
    {
        support::OpenPass pass;
        int counter = 0;
        PrepareNodes(*pass, nodes[0], counter);
        EXPECT_EQ(counter, 2);
        PrepareNodes(*pass, nodes[1], counter);
        PrepareNodes(*pass, nodes[3], counter);
        EXPECT_EQ(counter, 4);
        ASSERT_EQ(pass->sceneMaterials.Count(), 3);
        EXPECT_STREQ(pass->sceneMaterials[0]->GetName().data(), "Wire Color 1");
        EXPECT_STREQ(pass->sceneMaterials[1]->GetName().data(), "Wire Color 2");
        EXPECT_STREQ(pass->sceneMaterials[2]->GetName().data(), "Steel");
        EXPECT_EQ(pass->defaultMaterials.Find(nodes[2]), pass->sceneMaterials[1]);
        EXPECT_EQ(pass->defaultMaterials.Find(nodes[1]), nullptr);
        const Color diffuse = pass->sceneMaterials[1]->GetDiffuse();
        EXPECT_FLOAT_EQ(diffuse.r, 1.0f);
        EXPECT_FLOAT_EQ(diffuse.g, 0.2f);
        EXPECT_FLOAT_EQ(diffuse.b, 0.0f);
        EXPECT_FLOAT_EQ(pass->sceneMaterials[1]->GetAmbient().r, 0.588f);

        pass.Reset();
        EXPECT_EQ(pass->sceneMaterials.Count(), 0);
        PrepareNodes(*pass, nodes[2], counter);
        EXPECT_STREQ(pass->sceneMaterials[0]->GetName().data(), "Wire Color 1");
    }
    maxhost::Host::Instance().CloseScene();
}

}  // namespace
