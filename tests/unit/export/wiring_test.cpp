#include <gtest/gtest.h>
#include <max.h>

#include "host/sdk/host.h"
#include "tests/support/array_storage.h"
#include "tests/support/kta_bytes.h"
#include "tests/support/open_pass.h"
#include "tests/unit/export/rig_scene.h"

namespace {

namespace scene = maxhost::scene;
using scene::FloatController;
using scene::Node;
using support::Axes;
using support::Bytes;
using support::Constant;
using support::Export;
using support::ExportChoices;
using support::ExportRun;
using support::Follow;
using support::MakeNode;
using support::Named;
using support::Prs;
using support::SceneOf;
using support::TwoWay;
using support::WireEnd;
using support::WireOf;
using support::XNode;

constexpr std::uint32_t kWireChunk = 14;

std::string Record(const WireEnd& first, const WireEnd& second, std::uint8_t kind) {
    return support::WireChunk(first, second, kind).substr(12);
}

using Records = std::vector<std::string>;

Records Wires(const ExportRun& run) {
    Records records;
    for (const support::Chunk& chunk : support::ChunksOf(run.actor.value(), kWireChunk)) {
        EXPECT_EQ(chunk.size, 1116u);
        EXPECT_EQ(chunk.version, 1u);
        records.push_back(chunk.body);
    }
    return records;
}

Records WiresOf(std::vector<Node> nodes, const ExportChoices& choices = {}) {
    return Wires(Export(SceneOf(std::move(nodes)), choices));
}

// The end that is no wire, when it is met first and when it completes a record.
WireEnd PlainFirst(const std::string& node) {
    return {node, "", ""};
}
WireEnd PlainSecond(const std::string& node) {
    return {node, "X_Position", "X_Position"};
}
WireEnd Wired(const std::string& node, const std::string& expression) {
    return {node, expression, "X_Position"};
}

FloatController ListOf(std::vector<std::pair<float, FloatController>> items,
                       const std::string& id = "") {
    scene::FloatList list;
    for (auto& [weight, controller] : items) {
        list.items.push_back(
            {weight, std::make_shared<const FloatController>(std::move(controller))});
    }
    FloatController controller;
    controller.id = id;
    controller.kind = std::move(list);
    return controller;
}

// A wire in one direction that names what it follows by its owner.
FloatController FollowSubnum(const std::string& parent, int subnum,
                             const std::string& expression = "e") {
    return WireOf({false, true, false, {{parent, subnum, "", expression}}, 0});
}

TEST(Wiring, DriverBeforeItsFollowerByteForByte) {
    const Records records =
        WiresOf({XNode("Driver", Named("d")), XNode("Follower", Follow("d", "X_Position * 2"))});
    EXPECT_EQ(records, Records({Bytes()
                                    .Name("Driver")
                                    .Name("Follower")
                                    .Name("")
                                    .Name("X_Position * 2")
                                    .Name("X_Position", 20)
                                    .Name("", 20)
                                    .U32(0)
                                    .U32(0)
                                    .U32(0)
                                    .U32(0)
                                    .F32({1, 1, 0, 0})
                                    .U32(1)
                                    .Str()}));
}

TEST(Wiring, FollowerBeforeItsDriverByteForByte) {
    const Records records =
        WiresOf({XNode("Follower", Follow("d", "X_Position * 2")), XNode("Driver", Named("d"))});
    EXPECT_EQ(records, Records({Bytes()
                                    .Name("Follower")
                                    .Name("Driver")
                                    .Name("X_Position * 2")
                                    .Name("X_Position")
                                    .Name("X_Position", 20)
                                    .Name("X_Position", 20)
                                    .U32(0)
                                    .U32(0)
                                    .U32(0)
                                    .U32(0)
                                    .F32({1, 1, 0, 0})
                                    .U32(2)
                                    .Str()}));
}

TEST(Wiring, MasterTurnsTheLinkKindOver) {
    FloatController follower = Follow("d", "e");
    std::get<scene::WireFloat>(follower.kind).master = true;
    EXPECT_EQ(WiresOf({XNode("D", Named("d")), XNode("F", follower)}),
              Records({Record(PlainFirst("D"), Wired("F", "e"), 2)}));
    EXPECT_EQ(WiresOf({XNode("F", follower), XNode("D", Named("d"))}),
              Records({Record(Wired("F", "e"), PlainSecond("D"), 1)}));
}

TEST(Wiring, LinksInBothDirectionsAreOneRecordInEitherOrder) {
    const Node master = XNode("Master", TwoWay(true, "s", "of the slave", "m"));
    const Node slave = XNode("Slave", TwoWay(false, "m", "of the master", "s"));
    EXPECT_EQ(
        WiresOf({master, slave}),
        Records({Record(Wired("Master", "of the slave"), Wired("Slave", "of the master"), 1)}));
    EXPECT_EQ(
        WiresOf({slave, master}),
        Records({Record(Wired("Slave", "of the master"), Wired("Master", "of the slave"), 2)}));
}

TEST(Wiring, EachAxisOfEachPartHasItsName) {
    const char* const names[3][3] = {{"X_Position", "Y_Position", "Z_Position"},
                                     {"X_Rotation", "Y_Rotation", "Z_Rotation"},
                                     {"X_Scale", "Y_Scale", "Z_Scale"}};
    Node driver = MakeNode("D"), follower = MakeNode("F");
    std::optional<scene::ThreeAxisController> driving[3], following[3];
    Records expected;
    for (std::uint32_t part = 0; part < 3; ++part) {
        scene::ThreeAxes plain, wires;
        for (std::uint32_t i = 0; i < 3; ++i) {
            const std::string name = names[part][i];
            plain.axes[i] = Named(name);
            wires.axes[i] = Follow(name, "follows " + name);
            expected.push_back(
                Record({"D", "", "", part, i}, {"F", "follows " + name, name, part, i}, 1));
        }
        driving[part].emplace().kind = plain;
        following[part].emplace().kind = wires;
    }
    driver.transform = Prs(driving[0], driving[1], driving[2]);
    follower.transform = Prs(following[0], following[1], following[2]);
    EXPECT_EQ(WiresOf({driver, follower}), expected);
}

TEST(Wiring, EndsMayBeDifferentChannels) {
    Node driver = MakeNode("D"), follower = MakeNode("F");
    driver.transform = Prs({}, Axes({}, Named("d"), {}));
    follower.transform = Prs({}, {}, Axes({}, {}, Follow("d", "e")));
    EXPECT_EQ(WiresOf({driver, follower}),
              Records({Record({"D", "", "", 1, 1}, {"F", "e", "Z_Scale", 2, 2}, 1)}));
    EXPECT_EQ(
        WiresOf({follower, driver}),
        Records({Record({"F", "e", "Z_Scale", 2, 2}, {"D", "Y_Rotation", "Y_Rotation", 1, 1}, 2)}));
}

TEST(Wiring, ChannelsOfOneNodeMayBeWired) {
    Node node = MakeNode("N");
    node.transform = Prs(Axes(Named("d"), Follow("d", "e"), {}));
    EXPECT_EQ(WiresOf({node}),
              Records({Record({"N", "", "", 0, 0}, {"N", "e", "Y_Position", 0, 1}, 1)}));
}

TEST(Wiring, RecordsWithoutTheirOtherEndAreNotWritten) {
    Node hidden = XNode("Hidden", Named("d"));
    hidden.hidden = true;
    EXPECT_EQ(WiresOf({hidden, XNode("F", Follow("d", "e"))}), Records());
    EXPECT_EQ(WiresOf({XNode("F", Follow("d", "e")), hidden}), Records());
    EXPECT_EQ(WiresOf({XNode("A", TwoWay(true, "d", "e", "a")), hidden}), Records());
    EXPECT_EQ(WiresOf({XNode("A", Constant(1)), XNode("B", Constant(2))}), Records());
}

TEST(Wiring, RecordsThatWaitEndWithTheFile) {
    // The first export must leave nothing behind: otherwise the follower would find its driver in
    // the second one, as a plain channel.
    const scene::Scene scene =
        SceneOf({XNode("Follower", Follow("d", "e")), XNode("Driver", Named("d"))});
    ExportChoices twice;
    twice.exports = 2;
    const ExportRun run = Export(scene, twice);
    EXPECT_EQ(Wires(run), Records({Record(Wired("Follower", "e"), PlainSecond("Driver"), 2)}));
    EXPECT_EQ(run.actor, Export(scene).actor);
}

TEST(Wiring, APlainChannelCompletesOneFollowerThatComesBehindIt) {
    EXPECT_EQ(WiresOf({XNode("D", Named("d")), XNode("F", Follow("d", "f")),
                       XNode("G", Follow("d", "g"))}),
              Records({Record(PlainFirst("D"), Wired("F", "f"), 1)}));
}

TEST(Wiring, AllFollowersThatWaitAreCompletedInTheirOrder) {
    EXPECT_EQ(WiresOf({XNode("F", Follow("d", "f")), XNode("G", Follow("d", "g")),
                       XNode("D", Named("d")), XNode("H", Follow("d", "h"))}),
              Records({Record(Wired("F", "f"), PlainSecond("D"), 2),
                       Record(Wired("G", "g"), PlainSecond("D"), 2),
                       Record(PlainFirst("D"), Wired("H", "h"), 1)}));
}

TEST(Wiring, OlderOfTwoMatchingRecordsIsCompleted) {
    // The slave's record of the master is older than that of its plain channel.
    scene::WireFloat both{true, false, true, {{"", 0, "s", "one"}, {"", 0, "s", "two"}}, 0};
    EXPECT_EQ(WiresOf({XNode("S", TwoWay(false, "m", "back", "s")), XNode("M", WireOf(both, "m"))}),
              Records({Record(Wired("S", "back"), Wired("M", "one"), 2),
                       Record(PlainFirst("S"), Wired("M", "two"), 2)}));
}

TEST(Wiring, AWireWithSeveralDriversMakesARecordEach) {
    const scene::WireFloat wire{
        false, true, true, {{"", 0, "a", "of a"}, {"", 0, "", "none"}, {"", 0, "b", "of b"}}, 0};
    EXPECT_EQ(WiresOf({XNode("A", Named("a")), XNode("W", WireOf(wire)), XNode("B", Named("b"))}),
              Records({Record(PlainFirst("A"), Wired("W", "of a"), 1),
                       Record(Wired("W", "of b"), PlainSecond("B"), 2)}));
}

TEST(Wiring, AWireThatFollowsItselfIsCompletedByItself) {
    EXPECT_EQ(WiresOf({XNode("W", Follow("w", "e", "w"))}),
              Records({Record(Wired("W", "e"), PlainSecond("W"), 2)}));
}

TEST(Wiring, WiresInAChain) {
    // B is a driver beside being a wire: it completes the record that waits for it, and what comes
    // behind it finds it as a plain channel.
    EXPECT_EQ(WiresOf({XNode("C", Follow("b", "c")), XNode("B", Follow("a", "b", "b")),
                       XNode("A", Named("a")), XNode("D", Follow("b", "d"))}),
              Records({Record(Wired("C", "c"), PlainSecond("B"), 2),
                       Record(Wired("B", "b"), PlainSecond("A"), 2),
                       Record(PlainFirst("B"), Wired("D", "d"), 1)}));
}

// A node whose position of the given class, with id "p", has three named axes.
Node Driver(std::optional<scene::ClassId> classId) {
    Node node = MakeNode("D");
    scene::ThreeAxisController position = Axes(Named("x"), Named("y"), Named("z"));
    position.id = "p";
    position.classId = classId;
    node.transform = Prs(position);
    return node;
}

TEST(Wiring, TheFirstDriverIsAnAxisOfItsOwner) {
    for (const std::optional<scene::ClassId>& classId :
         {std::optional<scene::ClassId>(), std::optional(scene::ClassId{0x2012, 0})}) {
        for (int subnum = 0; subnum < 3; ++subnum) {
            const Node follower = XNode("F", FollowSubnum("p", subnum));
            const auto component = static_cast<std::uint32_t>(subnum);
            EXPECT_EQ(
                WiresOf({Driver(classId), follower}),
                Records({Record({"D", "", "", 0, component}, {"F", "e", "X_Position", 0, 0}, 1)}));
            const std::string name = std::string(1, "XYZ"[subnum]) + "_Position";
            EXPECT_EQ(WiresOf({follower, Driver(classId)}),
                      Records({Record({"F", "e", "X_Position", 0, 0},
                                      {"D", name, name, 0, component}, 2)}));
        }
        for (const int subnum : {-1, 3}) {
            EXPECT_EQ(WiresOf({Driver(classId), XNode("F", FollowSubnum("p", subnum))}), Records());
        }
    }
}

TEST(Wiring, DriversOfOtherPartsAreFoundByTheirOwner) {
    Node driver = MakeNode("D");
    scene::ThreeAxisController rotation = Axes({}, {}, Named("z"));
    rotation.id = "r";
    driver.transform = Prs({}, rotation);
    EXPECT_EQ(WiresOf({driver, XNode("F", FollowSubnum("r", 2))}),
              Records({Record({"D", "", "", 1, 2}, {"F", "e", "X_Position", 0, 0}, 1)}));
    EXPECT_EQ(WiresOf({driver, XNode("F", FollowSubnum("r", 0))}), Records()) << "no such axis";
}

TEST(Wiring, DriversThatArePassedOver) {
    // A position, rotation and scale transform, by its class id whatever it is; and owners without
    // axes: another transform, a float controller.
    EXPECT_EQ(WiresOf({Driver(scene::ClassId{0x2005, 0}), XNode("F", FollowSubnum("p", 0))}),
              Records());
    for (const auto& classId :
         {std::optional<scene::ClassId>(), std::optional(scene::ClassId{0x9999, 1})}) {
        Node driver = XNode("D", Named("x"));
        driver.transform->id = "t";
        driver.transform->classId = classId;
        EXPECT_EQ(WiresOf({driver, XNode("F", FollowSubnum("t", 0))}), Records());
    }
    EXPECT_EQ(WiresOf({XNode("D", Named("x")), XNode("F", FollowSubnum("x", 0))}), Records());
    EXPECT_EQ(WiresOf({XNode("D", Named("x")), XNode("F", FollowSubnum("", 0))}), Records());
    EXPECT_EQ(WiresOf({XNode("D", Named("x")), XNode("F", WireOf({}))}), Records());
}

TEST(Wiring, AnOwnerThatIsPassedOverKeepsTheControllersLinks) {
    Node driver = XNode("D", Named("x"));
    driver.transform->id = "t";
    const scene::WireFloat wire{false, true, false, {{"t", 0, "x", "e"}}, 0};
    EXPECT_EQ(WiresOf({driver, XNode("F", WireOf(wire))}),
              Records({Record(PlainFirst("D"), Wired("F", "e"), 1)}));
}

TEST(Wiring, OnlyTheFirstWireIsAskedForItsOwner) {
    const scene::WireFloat wire{false, true, false, {{"p", 1, "", "y"}, {"p", 2, "", "z"}}, 0};
    EXPECT_EQ(WiresOf({Driver({}), XNode("F", WireOf(wire))}),
              Records({Record({"D", "", "", 0, 1}, {"F", "y", "X_Position", 0, 0}, 1)}));
}

TEST(Wiring, AWireInOneDirectionIsLinkedByOwnerAndByController) {
    // The same driver twice: the second link finds no record behind the driver's.
    const scene::WireFloat wire{false, true, false, {{"p", 0, "x", "e"}}, 0};
    const Node follower = XNode("F", WireOf(wire));
    EXPECT_EQ(WiresOf({Driver({}), follower}),
              Records({Record(PlainFirst("D"), Wired("F", "e"), 1)}));
    const std::string twice = Record(Wired("F", "e"), PlainSecond("D"), 2);
    EXPECT_EQ(WiresOf({follower, Driver({})}), Records({twice, twice}));
}

TEST(Wiring, AWireInBothDirectionsIsNotLinkedByItsOwner) {
    const scene::WireFloat wire{false, true, true, {{"p", 0, "", "e"}}, 0};
    EXPECT_EQ(WiresOf({Driver({}), XNode("F", WireOf(wire))}), Records());
}

TEST(Wiring, WiresInAListHaveItsWeights) {
    const FloatController list = ListOf({{0.125f, Constant(1)},
                                         {0.5f, Follow("d", "e")},
                                         {0.75f, Constant(2)},
                                         {2, Follow("c", "f")}});
    WireEnd first = Wired("F", "e"), second = Wired("F", "f");
    first.weight = 0.5f;
    second.weight = 2;
    first.listWeight = second.listWeight = 0.75f;  // that of the last Bezier entry
    EXPECT_EQ(WiresOf({XNode("D", Named("d")), XNode("F", list), XNode("C", Named("c"))}),
              Records({Record(PlainFirst("D"), first, 1), Record(second, PlainSecond("C"), 2)}));
}

TEST(Wiring, AListWithoutBezierEntryHasNoListWeight) {
    FloatController other = Constant(1);
    other.classId = {0x2001, 0};
    WireEnd wired = Wired("F", "e");
    wired.weight = 0.25f;
    EXPECT_EQ(WiresOf({XNode("D", Named("d")),
                       XNode("F", ListOf({{3, other}, {0.25f, Follow("d", "e")}}))}),
              Records({Record(PlainFirst("D"), wired, 1)}));
}

TEST(Wiring, ListsInsideListsAreNotLookedInto) {
    EXPECT_EQ(WiresOf({XNode("D", Named("d")),
                       XNode("F", ListOf({{1, ListOf({{1, Follow("d", "e")}})}}))}),
              Records());
    EXPECT_EQ(WiresOf({XNode("D", Named("d")), XNode("F", ListOf({}))}), Records());
}

TEST(Wiring, AListIsAPlainChannelForItsFollowers) {
    EXPECT_EQ(
        WiresOf({XNode("L", ListOf({{0.5f, Named("b")}}, "l")), XNode("F", Follow("l", "e"))}),
        Records({Record(PlainFirst("L"), Wired("F", "e"), 1)}));
    EXPECT_EQ(
        WiresOf({XNode("L", ListOf({{0.5f, Named("b")}}, "l")), XNode("F", Follow("b", "e"))}),
        Records())
        << "an entry is no channel";
}

TEST(Wiring, AWireInAListAndOneOutsideLinkInBothDirections) {
    const Node listed =
        XNode("L", ListOf({{0.25f, Constant(0)}, {0.5f, TwoWay(true, "s", "l", "m")}}));
    const Node slave = XNode("S", TwoWay(false, "m", "s", "s"));
    WireEnd wired = Wired("L", "l");
    wired.weight = 0.5f;
    wired.listWeight = 0.25f;
    EXPECT_EQ(WiresOf({listed, slave}), Records({Record(wired, Wired("S", "s"), 1)}));
    EXPECT_EQ(WiresOf({slave, listed}), Records({Record(Wired("S", "s"), wired, 2)}));
}

TEST(Wiring, ClassIdsDecideWhatIsAWireOrAList) {
    FloatController noWire = Follow("d", "e");
    noWire.classId = {0x498702e7, 1};
    FloatController noList = ListOf({{1, Follow("d", "e")}});
    noList.classId = {0x4b4b1001, 0};
    FloatController emptyWire, emptyList;
    emptyWire.kind = emptyList.kind = scene::OtherFloat{};
    emptyWire.classId = {0x498702e7, 0x71f11549};
    emptyList.classId = {0x4b4b1000, 0};
    for (const FloatController& controller : {noWire, noList, emptyWire, emptyList}) {
        EXPECT_EQ(WiresOf({XNode("D", Named("d")), XNode("F", controller)}), Records());
    }
}

TEST(Wiring, LongTextsAreCutToTheirFields) {
    const std::string name(300, 'n'), expression(259, 'x');
    EXPECT_EQ(WiresOf({XNode(name, Named("d")), XNode("F", Follow("d", expression + "yz"))}),
              Records({Record(PlainFirst(name.substr(0, 259)), Wired("F", expression), 1)}));
    EXPECT_EQ(WiresOf({XNode("F", Follow("d", expression + "yz")), XNode(name, Named("d"))}),
              Records({Record(Wired("F", expression), PlainSecond(name.substr(0, 259)), 2)}));
}

TEST(Wiring, NodesWithoutChannelsTakeNoPart) {
    Node none = MakeNode("none"), matrix = MakeNode("matrix");
    none.transform.reset();
    matrix.transform.emplace().kind = scene::MatrixTransform{};
    EXPECT_EQ(WiresOf({none, matrix, XNode("F", Follow("d", "e")), XNode("D", Named("d"))}),
              Records({Record(Wired("F", "e"), PlainSecond("D"), 2)}));
}

TEST(Wiring, StandsBehindTheNodesMeshAndIsNoPartOfTheMotionFile) {
    scene::Mesh mesh;
    mesh.vertices = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    mesh.faces = {{{0, 1, 2}}};
    Node follower = XNode("F", Follow("d", "e"));
    follower.object.emplace().mesh = std::make_shared<const scene::Mesh>(mesh);
    scene::JointParams limits;
    limits.flags = 0x80000009;
    std::get<scene::PrsTransform>(follower.transform->kind).position->jointParams = limits;
    follower.modifiers = {{true, scene::Morpher{{{"m", {{1, 2, 3}}}}}}};
    const ExportRun run = Export(SceneOf({XNode("D", Named("d")), follower}));
    EXPECT_EQ(support::ChunkIds(run), (std::vector<std::uint32_t>{0, 0, 3, 8, 14, 10}));
    EXPECT_EQ(run.motion.value().find("X_Position"), std::string::npos);
}

TEST(Wiring, StandsBehindTheWeightsOfASkinnedNode) {
    scene::Mesh mesh;
    mesh.vertices = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    mesh.faces = {{{0, 1, 2}}};
    Node follower = XNode("F", Follow("d", "e"));
    follower.object.emplace().mesh = std::make_shared<const scene::Mesh>(mesh);
    scene::JointParams limits;
    limits.flags = 0x80000009;
    std::get<scene::PrsTransform>(follower.transform->kind).position->jointParams = limits;
    follower.modifiers = {{true, scene::Skin{{2}, {{{0, 1}}, {{0, 1}}, {{0, 1}}}, true}},
                          {true, scene::Morpher{{{"m", {{1, 2, 3}}}}}}};
    const ExportRun run = Export(SceneOf({XNode("D", Named("d")), follower, MakeNode("Bone")}));
    EXPECT_EQ(support::ChunkIds(run), (std::vector<std::uint32_t>{0, 0, 3, 0, 4, 8, 14, 10}));
}

// ---------------------------------------------------------------- cost

void ExportAllWires(ExportPass& pass) {
    for (INode* node : maxhost::Host::Instance().Nodes()) {
        ExportWires(pass, node);
    }
}

constexpr int kCrowd = 10000;
constexpr long kRecordSize = 12 + 1116;

TEST(WiringCost, ChannelsOfAllNodesAreKeptInLittleMemoryAndSearchedNowhere) {
    const scene::ThreeAxisController axes = Axes(1, 2, 3);
    Node node = MakeNode("n");
    node.transform = Prs(axes, axes, axes);
    maxhost::Host::Instance().OpenScene(SceneOf(std::vector<Node>(kCrowd, node)));
    support::OpenPass pass;
    const ArrayStorage storage;
    ExportAllWires(*pass);
    EXPECT_EQ(pass->pendingWires.Count(), 9 * kCrowd);
    EXPECT_EQ(pass->pendingWires.NumVisited(), 0u);
    EXPECT_LT(storage.Peak(), 100u * 9 * kCrowd);
    EXPECT_EQ(pass.Size(), 0);
    maxhost::Host::Instance().CloseScene();
}

TEST(WiringCost, LookUpsGrowWithTheWires) {
    // A chain whose nodes follow the next one, a driver with followers behind it and before it.
    std::vector<Node> chain, before, behind;
    behind.push_back(XNode("d", Named("d")));
    for (int i = 0; i < kCrowd; ++i) {
        const std::string id = std::to_string(i);
        chain.push_back(XNode("n", Follow(std::to_string((i + 1) % kCrowd), "e", id)));
        before.push_back(XNode("n", Follow("d", "e", id)));
        behind.push_back(before.back());
    }
    before.push_back(XNode("d", Named("d")));
    const struct {
        const std::vector<Node>& nodes;
        int records;
    } rows[] = {{chain, kCrowd}, {before, kCrowd}, {behind, 1}};
    for (const auto& row : rows) {
        maxhost::Host::Instance().OpenScene(SceneOf(row.nodes));
        support::OpenPass pass;
        ExportAllWires(*pass);
        EXPECT_EQ(pass.Size(), row.records * kRecordSize);
        EXPECT_LE(pass->pendingWires.NumVisited(), 6u * kCrowd);
        maxhost::Host::Instance().CloseScene();
    }
}

}  // namespace
