// The settings file around whole exports, with the dialog between reading and writing it.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tests/support/export_run.h"

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using maxhost::scene::Scene;
using support::Export;
using support::ExportChoices;
using support::ExportRun;
using support::WorkDirectory;
using win32::Dialog;

const std::string kDefaults = "\0\0\1\0\1\1\0\0\x9a\x99\x99\x3d\4\0\0\0\0\0\0\0\2\0\0\0"s;
// Everything the other way round; threshold 0.5, 9 weights, rate 7, and padding that says
// something.
const std::string kOthers = "\1\1\0\1\0\0PQ\0\0\0\x3f\x09\0\0\0\1\1RS\7\0\0\0"s;

struct Seen {
    bool exportHidden, nonRenderable, morphers, optimizeSkin, motionsForHidden, sampleAnimation;
    std::string threshold, sampleRate;
    bool operator==(const Seen&) const = default;
};

const Seen kDefaultsSeen = {false, false, true, true, false, false, "0.075", "2"};
const Seen kOthersSeen = {true, true, false, false, true, true, "0.5", "7"};

Seen Look(const Dialog& dialog) {
    return {dialog.IsChecked(1032), dialog.IsChecked(1038), dialog.IsChecked(1052),
            dialog.IsChecked(1034), dialog.IsChecked(1037), dialog.IsChecked(1049),
            dialog.Text(1044),      dialog.Text(1042)};
}

// An export that starts from these settings; what the dialog shows, and the file afterwards.
class SettingsTest : public testing::Test {
  protected:
    Seen ExportWith(const std::optional<std::string>& settings) {
        Seen seen{};
        ExportChoices choices;
        choices.settings = settings;
        choices.inDialog = [&](Dialog& dialog) {
            seen = Look(dialog);
            if (acts_) {
                acts_(dialog);
            }
            support::PressExport(dialog);
        };
        EXPECT_EQ(Export(Scene{}, choices, directory_).result, 1);
        return seen;
    }
    fs::path File() const { return support::SettingsFile(directory_.Path()); }
    std::string Saved() const { return support::ReadFile(File()); }

    WorkDirectory directory_;
    std::function<void(Dialog&)> acts_;
};

TEST_F(SettingsTest, AbsentOnesAreTheDefaults) {
    EXPECT_EQ(ExportWith(std::nullopt), kDefaultsSeen);
    EXPECT_EQ(Saved(), kDefaults);
}

TEST_F(SettingsTest, EveryFieldIsShownAndSavedAsItWas) {
    EXPECT_EQ(ExportWith(kOthers), kOthersSeen);
    EXPECT_EQ(Saved(), kOthers);
    EXPECT_EQ(ExportWith(std::nullopt), kOthersSeen) << "from the file that was saved";
    EXPECT_EQ(Saved(), kOthers);
}

TEST_F(SettingsTest, ShortOnesReplaceTheFirstBytesAlone) {
    for (std::size_t size = 0; size < 24; ++size) {
        ExportWith(kOthers.substr(0, size));
        EXPECT_EQ(Saved(), kOthers.substr(0, size) + kDefaults.substr(size)) << size;
    }
}

TEST_F(SettingsTest, LongOnesCountToTheir24thByte) {
    EXPECT_EQ(ExportWith(kOthers + "more"), kOthersSeen);
    EXPECT_EQ(Saved(), kOthers);
}

TEST_F(SettingsTest, ReadOnlyOnesAreReadAndStayIfTheSystemSaysSo) {
    fs::create_directories(File().parent_path());
    support::WriteFile(File(), kOthers);
    fs::permissions(File(), fs::perms::owner_read | fs::perms::group_read);
    const bool isProtected = !std::ofstream(File(), std::ios::app);  // not from root
    acts_ = [](Dialog& dialog) { dialog.Click(1032); };
    EXPECT_EQ(ExportWith(std::nullopt), kOthersSeen);
    std::string changed = kOthers;
    changed[1] = 0;
    EXPECT_EQ(Saved(), isProtected ? kOthers : changed);
    fs::permissions(File(), fs::perms::owner_all);
}

TEST_F(SettingsTest, DialogsChoicesAreSaved) {
    acts_ = [](Dialog& dialog) {
        for (const int id : {1032, 1038, 1052, 1037, 1049}) {
            dialog.Click(id);
        }
        dialog.Type(1044, "0.5");
        dialog.Type(1042, "7");
        dialog.Click(1034);
    };
    ExportWith(std::nullopt);
    std::string expected = kOthers;
    expected[0] = 0;
    expected[2] = 1;
    expected[6] = expected[7] = expected[18] = expected[19] = 0;
    expected[12] = 4;
    EXPECT_EQ(Saved(), expected);
}

TEST_F(SettingsTest, MaximumWeightsComeFromTheFileAlone) {
    ExportWith(std::nullopt);
    EXPECT_EQ(Saved()[12], 4);
    std::string settings = kDefaults;
    settings[12] = 11;
    ExportWith(settings);
    EXPECT_EQ(Saved(), settings);
}

TEST_F(SettingsTest, CancelLeavesTheFileUntouched) {
    ExportChoices choices;
    choices.settings = "short";
    choices.inDialog = [](Dialog& dialog) {
        dialog.Click(1032);
        dialog.Type(1044, "0.5");
        support::PressCancel(dialog);
    };
    const ExportRun run = Export(Scene{}, choices, directory_);
    EXPECT_EQ(run.result, 1);
    EXPECT_FALSE(run.actor);
    EXPECT_EQ(Saved(), "short");

    fs::remove(File());
    choices.settings.reset();
    Export(Scene{}, choices, directory_);
    EXPECT_FALSE(fs::exists(File()));
}

TEST_F(SettingsTest, RefusedRateThenCancelLeavesTheFileUntouched) {
    ExportChoices choices;
    choices.settings = kOthers;
    choices.inDialog = [](Dialog& dialog) {
        dialog.Type(1042, "0");
        support::PressExport(dialog);
        EXPECT_TRUE(dialog.IsOpen());
        support::PressCancel(dialog);
    };
    const ExportRun run = Export(Scene{}, choices, directory_);
    EXPECT_EQ(run.result, 1);
    EXPECT_EQ(run.messageBoxes.size(), 1u);
    EXPECT_TRUE(run.converterCalls.empty());
    EXPECT_EQ(Saved(), kOthers);
}

TEST_F(SettingsTest, CommandForTheMotionExportsBothFiles) {
    ExportChoices choices;
    choices.inDialog = [](Dialog& dialog) { dialog.Command(1028); };
    const ExportRun run = Export(Scene{}, choices, directory_);
    EXPECT_EQ(run.result, 1);
    ASSERT_TRUE(run.actor && run.motion);
    EXPECT_NE(*run.actor, *run.motion) << "the passes set the kind of file themselves";
    EXPECT_EQ(run.converterCalls.size(), 5u);
}

}  // namespace
