// The driver, run as 3ds Max runs it: the module loaded, an exporter made by its class descriptor.
#include <gtest/gtest.h>
#include <windows.h>

#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>

#include "tests/support/chunks.h"
#include "tests/support/export_run.h"
#include "tests/support/kta_bytes.h"
#include "tests/support/scene_parts.h"

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using maxhost::scene::Node;
using maxhost::scene::OtherModifier;
using maxhost::scene::Scene;
using maxhost::scene::Skin;
using support::Export;
using support::ExportChoices;
using support::ExportRun;
using support::MakeNode;
using support::WorkDirectory;

// The default settings as they lie in the file.
std::string DefaultSettings() {
    return support::Bytes()
        .U8(0)
        .U8(0)
        .U8(1)
        .U8(0)
        .U8(1)
        .U8(1)
        .U8(0)
        .U8(0)
        .F32({0.075f})
        .U32(4)
        .U8(0)
        .U8(0)
        .U8(0)
        .U8(0)
        .U32(2)
        .Str();
}

std::string SettingsWithHiddenObjects() {
    std::string settings = DefaultSettings();
    settings[1] = 1;
    return settings;
}

std::string SettingsWithSamples() {
    std::string settings = DefaultSettings();
    settings[17] = 1;
    settings[20] = 1;
    return settings;
}

// The names of the node chunks of an actor file, in file order. Behind the materials, it holds no
// other chunks.
std::vector<std::string> NodeNames(const ExportRun& run) {
    std::vector<std::string> names;
    if (!run.actor) {
        return names;
    }
    for (const support::Chunk& chunk : support::Chunks(*run.actor)) {
        if (chunk.id != 6 && chunk.id != 7) {
            EXPECT_EQ(chunk.id, 0u);
            EXPECT_EQ(chunk.size, 632u);
            EXPECT_EQ(chunk.version, 3u);
            names.push_back(chunk.body.c_str());
        }
    }
    return names;
}

using Names = std::vector<std::string>;

// The calls that the converter gets in a whole export into `directory`.
Names CompleteCalls(const fs::path& directory, std::size_t actorSize, std::size_t motionSize) {
    const std::string file = (directory / "out.hdo").string();
    const std::string library = fs::path(HDO_RECORDING_CONVERTER).parent_path().string();
    return {"InitSpecialHalden(\"" + library + "\", \"" + file + "\", true)",
            "WriteKTActorFile(\"" + file + "temp1\") " + std::to_string(actorSize) + " bytes",
            "WriteKTMotionFile(\"" + file + "temp2\") " + std::to_string(motionSize) + " bytes",
            "WriteKTMotionFile(null)", "EndSpecialHalden()"};
}

TEST(Driver, EmptySceneWritesTheExtraMaterialAndMakesAllCalls) {
    const WorkDirectory directory;
    const ExportRun run = Export(Scene{}, {}, directory);
    EXPECT_EQ(run.result, 1);
    EXPECT_EQ(run.actor, support::ActorBeginning());
    EXPECT_EQ(run.motion, support::FileHeader(false));
    EXPECT_EQ(run.motion->size(), 7u);
    EXPECT_EQ(run.dialogs, Names{"Max to Halden Exporter"});
    EXPECT_EQ(run.converterCalls, CompleteCalls(directory.Path(), 7 + 120, 7));
    EXPECT_EQ(run.log, (Names{"Writing file header version 1.1", "Exporting material list",
                              "Closing file", "Writing file header version 1.1", "Closing file"}));
    EXPECT_EQ(run.progressTitles, (Names{"Exporting object...", "Exporting object..."}));
    EXPECT_EQ(run.progressEnds, 2);
    EXPECT_TRUE(run.messageBoxes.empty());
}

TEST(Driver, EmptySelectionIsExportedLikeAnEmptyScene) {
    Scene scene;
    scene.nodes = {MakeNode("A")};
    ExportChoices choices;
    choices.selectedOnly = true;
    const ExportRun run = Export(scene, choices);
    EXPECT_EQ(run.result, 1);
    EXPECT_EQ(run.actor, support::ActorBeginning());
    EXPECT_EQ(run.motion, support::FileHeader(false));
    EXPECT_EQ(run.dialogs.size(), 1u);
    EXPECT_EQ(run.converterCalls.size(), 5u);
}

TEST(Driver, TemporaryNamesAreAppendedToTheWholeFileName) {
    const WorkDirectory directory;
    ExportChoices choices;
    choices.fileName = "tree.hdo";
    Export(Scene{}, choices, directory);
    EXPECT_TRUE(fs::exists(directory.Path() / "tree.hdotemp1"));
    EXPECT_TRUE(fs::exists(directory.Path() / "tree.hdotemp2"));
    EXPECT_FALSE(fs::exists(directory.Path() / "tree.hdo"));
}

TEST(Driver, WholeSceneIsWrittenDepthFirstInChildOrder) {
    Scene scene;
    scene.nodes = {MakeNode("A"),     MakeNode("B"),      MakeNode("A1", 0),
                   MakeNode("A2", 0), MakeNode("A1a", 2), MakeNode("B1", 1)};
    const ExportRun run = Export(scene);
    EXPECT_EQ(NodeNames(run), (Names{"A", "A1", "A1a", "A2", "B", "B1"}));
    // Six nodes in each of two passes; percentages truncated.
    EXPECT_EQ(run.progress, (std::vector<int>{16, 33, 50, 66, 83, 100, 16, 33, 50, 66, 83, 100}));
}

TEST(Driver, SelectedNodeAndItsParentGiveTheParentOnce) {
    Scene scene;
    scene.nodes = {MakeNode("Other"), MakeNode("Parent"), MakeNode("Child", 1)};
    scene.selection = {2, 1};
    ExportChoices choices;
    choices.selectedOnly = true;
    EXPECT_EQ(NodeNames(Export(scene, choices)), (Names{"Parent", "Child"}));
}

TEST(Driver, SelectedChildOfAnUnselectedParentIsARoot) {
    Scene scene;
    scene.nodes = {MakeNode("Parent"), MakeNode("Child", 0), MakeNode("Grandchild", 1)};
    scene.selection = {1};
    ExportChoices choices;
    choices.selectedOnly = true;
    EXPECT_EQ(NodeNames(Export(scene, choices)), (Names{"Child", "Grandchild"}));
}

TEST(Driver, SelectionClimbsOnlyWhileParentsAreSelected) {
    Scene scene;
    scene.nodes = {MakeNode("Top"), MakeNode("Gap", 0), MakeNode("Low", 1), MakeNode("Lowest", 2)};
    scene.selection = {3, 2, 0};
    ExportChoices choices;
    choices.selectedOnly = true;
    // Low is a root of its own, before Top; below Top it has been written already.
    EXPECT_EQ(NodeNames(Export(scene, choices)), (Names{"Low", "Lowest", "Top", "Gap"}));
}

TEST(Driver, OptionsOtherThanSelectedExportTheWholeScene) {
    Scene scene;
    scene.nodes = {MakeNode("A"), MakeNode("B")};
    scene.selection = {1};
    EXPECT_EQ(NodeNames(Export(scene)), (Names{"A", "B"}));
    ExportChoices choices;
    choices.otherOptions = 2;
    EXPECT_EQ(NodeNames(Export(scene, choices)), (Names{"A", "B"}));
    choices.selectedOnly = true;
    EXPECT_EQ(NodeNames(Export(scene, choices)), (Names{"A", "B"})) << "options 3";
    choices.otherOptions = 0;
    EXPECT_EQ(NodeNames(Export(scene, choices)), (Names{"B"}));
}

TEST(Driver, DialogIsShownThoughPromptsAreSuppressed) {
    ExportChoices choices;
    choices.suppressPrompts = true;
    EXPECT_EQ(Export(Scene{}, choices).dialogs, Names{"Max to Halden Exporter"});
}

TEST(Driver, CancelledDialogSucceedsAndWritesNothing) {
    const WorkDirectory directory;
    ExportChoices choices;
    choices.cancelDialog = true;
    choices.settings = "old";
    Scene scene;
    scene.nodes = {MakeNode("A")};
    const ExportRun run = Export(scene, choices, directory);
    EXPECT_EQ(run.result, 1);
    EXPECT_FALSE(run.actor);
    EXPECT_FALSE(run.motion);
    EXPECT_TRUE(run.converterCalls.empty());
    EXPECT_TRUE(run.progressTitles.empty());
    EXPECT_EQ(support::ReadFile(support::SettingsFile(directory.Path())), "old");
}

TEST(Driver, SettingsAreSavedAfterTheDialogAndReloaded) {
    const WorkDirectory directory;
    ExportChoices choices;
    const fs::path settings = support::SettingsFile(directory.Path());
    choices.inDialog = [&](win32::Dialog& dialog) {
        EXPECT_FALSE(fs::exists(settings));
        support::PressExport(dialog);
    };
    Export(Scene{}, choices, directory);
    EXPECT_EQ(support::ReadFile(settings), DefaultSettings());

    // Every export is a new exporter: what the next one knows, it knows from the file.
    Scene scene;
    scene.nodes = {MakeNode("Hidden")};
    scene.nodes[0].hidden = true;
    ExportChoices changed;
    changed.settings = SettingsWithHiddenObjects();
    Export(scene, changed, directory);
    EXPECT_EQ(NodeNames(Export(scene, {}, directory)), Names{"Hidden"});
    EXPECT_EQ(support::ReadFile(settings), SettingsWithHiddenObjects());
}

TEST(Driver, ShortSettingsReplaceTheFirstFieldsAlone) {
    const WorkDirectory directory;
    ExportChoices choices;
    choices.settings = std::string("\x00\x01\x00\x01", 4);
    Export(Scene{}, choices, directory);
    std::string expected = DefaultSettings();
    expected.replace(0, 4, *choices.settings);
    EXPECT_EQ(support::ReadFile(support::SettingsFile(directory.Path())), expected);
}

TEST(Driver, LongSettingsCountToTheir24thByteAndPaddingIsKept) {
    const WorkDirectory directory;
    ExportChoices choices;
    choices.settings = "\1\1\1\1\1\1PQ\0\0\0\0\7\0\0\0\0\0RS\3\0\0\0more"s;
    Export(Scene{}, choices, directory);
    EXPECT_EQ(support::ReadFile(support::SettingsFile(directory.Path())),
              choices.settings->substr(0, 24));
}

TEST(Driver, UnwritableSettingsAreIgnored) {
    const WorkDirectory directory;
    // A directory in the file's place can be neither read nor written.
    fs::create_directories(support::SettingsFile(directory.Path()));
    const ExportRun run = Export(Scene{}, {}, directory);
    EXPECT_EQ(run.result, 1);
    EXPECT_EQ(run.actor, support::ActorBeginning());
}

TEST(Driver, ModifierAboveSkinIsRefused) {
    const WorkDirectory directory;
    Scene scene;
    scene.nodes = {MakeNode("Root"), MakeNode("Skinned", 0)};
    scene.nodes[1].modifiers = {maxhost::scene::Modifier{true, OtherModifier{{0x10, 0x20}}},
                                maxhost::scene::Modifier{true, Skin{}}};
    ExportChoices choices;
    choices.settings = "old";
    const ExportRun run = Export(scene, choices, directory);
    EXPECT_EQ(run.result, 0);
    ASSERT_EQ(run.messageBoxes.size(), 1u);
    EXPECT_EQ(run.messageBoxes[0].title, "Modifier Order Issue");
    EXPECT_EQ(run.messageBoxes[0].text,
              "Your object contains meshes that combine skin modifiers with other modifiers.\n"
              "Please make sure that the skin modifiers are at the end of the stack.");
#ifndef _WIN32
    EXPECT_EQ(run.messageBoxes[0].flags, 0x30u);
#endif
    EXPECT_TRUE(run.dialogs.empty());
    EXPECT_TRUE(run.converterCalls.empty());
    EXPECT_FALSE(run.actor);
    EXPECT_EQ(support::ReadFile(support::SettingsFile(directory.Path())), "old");
}

TEST(Driver, SkinOnTopOrBelowDisabledModifiersIsAccepted) {
    const maxhost::scene::Modifier skin{true, Skin{}};
    const maxhost::scene::Modifier disabledSkin{false, Skin{}};
    const maxhost::scene::Modifier other{true, OtherModifier{{0x10, 0x20}}};
    const maxhost::scene::Modifier disabled{false, OtherModifier{{0x10, 0x20}}};
    for (const auto& stack :
         {std::vector{skin, other}, std::vector{disabled, skin}, std::vector{skin, skin},
          std::vector{other, disabledSkin}, std::vector{other, other}}) {
        Scene scene;
        scene.nodes = {MakeNode("A")};
        scene.nodes[0].modifiers = stack;
        EXPECT_EQ(Export(scene).result, 1);
    }
}

TEST(Driver, ModifierOnAReferenceAboveSkinIsRefused) {
    Scene scene;
    scene.nodes = {MakeNode("A")};
    scene.nodes[0].modifiers = {maxhost::scene::Modifier{true, Skin{}}};
    scene.nodes[0].referenceModifiers = {
        maxhost::scene::Modifier{true, OtherModifier{{0x10, 0x20}}}};
    EXPECT_EQ(Export(scene).result, 0);
}

TEST(Driver, SkinOrderIsCheckedForTheExportedRootsAlone) {
    Scene scene;
    scene.nodes = {MakeNode("Good"), MakeNode("Bad")};
    scene.nodes[1].modifiers = {maxhost::scene::Modifier{true, OtherModifier{{0x10, 0x20}}},
                                maxhost::scene::Modifier{true, Skin{}}};
    scene.selection = {0};
    ExportChoices choices;
    choices.selectedOnly = true;
    EXPECT_EQ(Export(scene, choices).result, 1);
    EXPECT_EQ(Export(scene).result, 0);
}

TEST(Driver, UncreatableActorFileFails) {
    const WorkDirectory directory;
    ExportChoices choices;
    choices.fileName = "missing/out.hdo";
    const ExportRun run = Export(Scene{}, choices, directory);
    EXPECT_EQ(run.result, 0);
    EXPECT_FALSE(run.actor);
    // The converter was initialised and is not told of the end.
    ASSERT_EQ(run.converterCalls.size(), 1u);
    EXPECT_EQ(run.converterCalls[0].substr(0, 18), "InitSpecialHalden(");
    EXPECT_TRUE(run.messageBoxes.empty());
}

TEST(Driver, UncreatableMotionFileFailsAndTheActorFileStays) {
    const WorkDirectory directory;
    fs::create_directory(directory.Path() / "out.hdotemp2");
    const ExportRun run = Export(Scene{}, {}, directory);
    EXPECT_EQ(run.result, 0);
    EXPECT_EQ(run.actor, support::ActorBeginning());
    EXPECT_FALSE(run.motion);
    Names expected = CompleteCalls(directory.Path(), 7 + 120, 7);
    expected.resize(2);
    EXPECT_EQ(run.converterCalls, expected);
}

TEST(Driver, NameThatDoesNotFitItsFieldFails) {
    const WorkDirectory directory;
    const std::size_t room = 259 - 5 - directory.Path().string().size() - 1;
    ExportChoices choices;
    choices.fileName = std::string(room - 4, 'n') + ".hdo";
    EXPECT_EQ(Export(Scene{}, choices, directory).result, 1);
    choices.fileName = "n" + choices.fileName;
    const ExportRun run = Export(Scene{}, choices, directory);
    EXPECT_EQ(run.result, 0);
    EXPECT_FALSE(run.actor);
}

TEST(Driver, CancelDuringTheActorPassStillClosesAndConvertsBothFiles) {
    const WorkDirectory directory;
    Scene scene;
    scene.nodes = {MakeNode("A"), MakeNode("A1", 0), MakeNode("B")};
    ExportChoices choices;
    choices.cancelAtUpdate = 2;
    const ExportRun run = Export(scene, choices, directory);
    EXPECT_EQ(run.result, 1);
    EXPECT_EQ(NodeNames(run), Names{"A"});
    EXPECT_EQ(run.motion, support::FileHeader(false));
    EXPECT_EQ(run.progress.size(), 2u);
    EXPECT_EQ(run.converterCalls, CompleteCalls(directory.Path(), 7 + 4 * 120 + 644, 7));
    EXPECT_EQ(run.progressEnds, 2);
}

TEST(Driver, CancelDuringTheMotionPassKeepsWhatIsWrittenAndConvertsIt) {
    Scene scene;
    scene.nodes = {MakeNode("A"), MakeNode("A1", 0), MakeNode("B")};
    for (auto& node : scene.nodes) {
        maxhost::scene::SampledTransform samples;
        samples.samples.resize(2);
        samples.samples[1].time = 1600;
        samples.samples[1].matrix[3] = {1, 2, 3};
        node.transform = maxhost::scene::Transform{"", {}, samples};
    }
    ExportChoices choices;
    choices.settings = SettingsWithSamples();
    choices.cancelAtUpdate = 5;
    const ExportRun run = Export(scene, choices);
    EXPECT_EQ(run.result, 1);
    EXPECT_EQ(NodeNames(run), (Names{"A", "A1", "B"}));
    const std::vector<support::Chunk> parts = support::ChunksOf(run.motion.value(), 1);
    ASSERT_EQ(parts.size(), 1u);
    EXPECT_EQ(parts[0].body.substr(0, 2), std::string("A\0", 2));
    EXPECT_EQ(run.converterCalls.size(), 5u);
    EXPECT_EQ(run.progressEnds, 2);
}

TEST(Driver, CancelAtARootWritesNothingOfIt) {
    Scene scene;
    scene.nodes = {MakeNode("A"), MakeNode("B"), MakeNode("B1", 1)};
    ExportChoices choices;
    choices.cancelAtUpdate = 2;
    EXPECT_EQ(NodeNames(Export(scene, choices)), Names{"A"});
}

TEST(Driver, HiddenNodesAreLeftOutButTheirChildrenVisited) {
    Scene scene;
    scene.nodes = {MakeNode("Hidden"), MakeNode("Child", 0), MakeNode("HiddenToo", 1),
                   MakeNode("Deep", 2)};
    scene.nodes[0].hidden = true;
    scene.nodes[2].hidden = true;
    EXPECT_EQ(NodeNames(Export(scene)), (Names{"Child", "Deep"}));

    ExportChoices choices;
    choices.settings = SettingsWithHiddenObjects();
    EXPECT_EQ(NodeNames(Export(scene, choices)), (Names{"Hidden", "Child", "HiddenToo", "Deep"}));
}

// The sink of an export that was refused or cancelled, unless it removed it, takes down the lines
// of the next one too.
void ExpectLogStaysOpen(const Scene& refused, const ExportChoices& choices, int result) {
    const WorkDirectory directory;
    const support::LoadedPlugIn loaded;
    ASSERT_EQ(Export(refused, choices, directory).result, result);
    const WorkDirectory elsewhere;  // where the next one opens a log of its own
    ASSERT_EQ(Export(Scene{}, {}, elsewhere).result, 1);
    const std::string lines = support::ReadFile(directory.Path() / "KTAExporter.log");
    EXPECT_NE(lines.find("Closing file"), std::string::npos);
}

TEST(Driver, LogStaysOpenAfterARefusedStackAndACancelledDialog) {
    Scene scene;
    scene.nodes = {MakeNode("Wrong")};
    scene.nodes[0].modifiers = {maxhost::scene::Modifier{true, OtherModifier{{0x10, 0x20}}},
                                maxhost::scene::Modifier{true, Skin{}}};
    ExpectLogStaysOpen(scene, {}, 0);
    ExportChoices cancelled;
    cancelled.cancelDialog = true;
    ExpectLogStaysOpen(Scene{}, cancelled, 1);
}

// Whether a file that is open for writing cannot be opened so again, which is what fopen_s is for.
// Wine's lets it be opened.
bool AreOpenFilesExclusive(const fs::path& directory) {
    const std::string name = (directory / "probe").string();
    FILE* first = nullptr;
    FILE* second = nullptr;
    EXPECT_EQ(fopen_s(&first, name.c_str(), "w"), 0);
    const bool isExclusive = fopen_s(&second, name.c_str(), "w") != 0;
    if (second != nullptr) {
        std::fclose(second);
    }
    std::fclose(first);
    return isExclusive;
}

TEST(Driver, LogOfAFailedExportStaysOpenUntilALaterExportEnds) {
    const WorkDirectory directory;
    const support::LoadedPlugIn loaded;  // as 3ds Max keeps it between exports
    if (!AreOpenFilesExclusive(directory.Path())) {
        GTEST_SKIP() << "this system's fopen_s opens a file twice";
    }
    fs::create_directory(directory.Path() / "bad.hdotemp2");
    ExportChoices failing;
    failing.fileName = "bad.hdo";
    Scene first;
    first.nodes = {MakeNode("First")};
    ASSERT_EQ(Export(first, failing, directory).result, 0);
    // The first export's sink still holds the file, which a second writer cannot open; the lines of
    // the second export are taken down behind those of the first.
    const ExportRun second = Export(Scene{}, {}, directory);
    EXPECT_EQ(second.result, 1);
    EXPECT_EQ(support::CountLines(second, "- Exporting node 'First'"), 1);
    EXPECT_EQ(support::CountLines(second, "Closing file"), 3);
    const Names complete = {"Writing file header version 1.1", "Exporting material list",
                            "Closing file", "Writing file header version 1.1", "Closing file"};
    ASSERT_GT(second.log.size(), complete.size());
    EXPECT_EQ(Names(second.log.end() - 5, second.log.end()), complete);
    EXPECT_EQ(Export(Scene{}, {}, directory).log, complete);
}

double SecondsOfExport(const Scene& scene, const ExportChoices& choices) {
    const std::clock_t start = std::clock();
    EXPECT_EQ(Export(scene, choices).result, 1);
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

TEST(Driver, DeepChainOfSelectedNodesIsClimbedOnce) {
    // Every node of the chain is selected, the lowest first: climbing from each anew would be 200
    // million steps. Cancelled at once, so that gathering the roots is what costs.
    Scene scene;
    scene.materials = {std::make_shared<maxhost::scene::Material>()};
    const int depth = 20000;
    for (int i = 0; i < depth; ++i) {
        scene.nodes.push_back(MakeNode("n", i - 1));
        scene.nodes.back().material = 0;
        scene.selection.insert(scene.selection.begin(), i);
    }
    ExportChoices choices;
    choices.cancelAtUpdate = 1;
    const double whole = SecondsOfExport(scene, choices);
    choices.selectedOnly = true;
    EXPECT_LT(SecondsOfExport(scene, choices), 4 * whole + 0.5);

    choices.cancelAtUpdate = 0;
    scene.nodes.resize(1000);
    scene.selection.erase(scene.selection.begin(), scene.selection.end() - 1000);
    EXPECT_EQ(NodeNames(Export(scene, choices)).size(), 1000u);
}

TEST(Driver, SecondExportGivesTheSameBytes) {
    Scene scene;
    scene.nodes = {MakeNode("A"), MakeNode("B", 0), MakeNode("C", 1)};
    const ExportRun first = Export(scene), second = Export(scene);
    EXPECT_EQ(first.actor, second.actor);
    EXPECT_EQ(first.motion, second.motion);
    EXPECT_EQ(first.log, second.log);
}

}  // namespace
