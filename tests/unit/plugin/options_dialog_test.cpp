// The plug-in's dialogs, made from its resources and acted on as a person would.

#include <custcont.h>
#include <gtest/gtest.h>
#include <max.h>
#include <winutil.h>

#include <climits>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>

#include "export/export_pass.h"
#include "host/sdk/host.h"
#include "plugin/kta_exp.h"
#include "resources/resource.h"
#include "tests/support/export_run.h"

namespace {

using win32::Dialog;

class PlugInDialog : public testing::Test {
  protected:
    void SetUp() override {
        maxhost::Host::Instance().SetPlugInDirs(
            {std::filesystem::path(HDO_RECORDING_CONVERTER).parent_path().string()});
        module_ = LoadLibraryA(HDO_PLUGIN_FILE);
        ASSERT_NE(module_, nullptr);
    }
    void TearDown() override { FreeLibrary(module_); }

    INT_PTR Show(int number, DLGPROC procedure, LPARAM parameter,
                 std::function<void(Dialog&)> acts) {
        user_.acts = std::move(acts);
        return DialogBoxParamA(module_, MAKEINTRESOURCEA(number), nullptr, procedure, parameter);
    }

    support::PlayedUser user_;

  private:
    HMODULE module_ = nullptr;
};

class OptionsDialog : public PlugInDialog {
  protected:
    INT_PTR Show(std::function<void(Dialog&)> acts) {
        return PlugInDialog::Show(IDD_OPTIONS, OptionsDialogProcedure,
                                  reinterpret_cast<LPARAM>(&exporter_), std::move(acts));
    }
    ExportOptions& Options() { return exporter_.Options(); }

  private:
    KTAExp exporter_;
};

bool SameBytes(const ExportOptions& a, const ExportOptions& b) {
    return std::memcmp(&a, &b, sizeof(a)) == 0;
}

struct CheckBox {
    int id;
    Plinth::UInt8 ExportOptions::*option;
};

constexpr CheckBox kCheckBoxes[] = {
    {1032, &ExportOptions::exportHidden},     {1038, &ExportOptions::nonRenderable},
    {1052, &ExportOptions::morphers},         {1034, &ExportOptions::optimizeSkin},
    {1037, &ExportOptions::motionsForHidden}, {1049, &ExportOptions::sampleAnimation}};

TEST_F(OptionsDialog, ShowsItsTexts) {
    Show([](Dialog& dialog) {
        EXPECT_EQ(dialog.Title(), "Max to Halden Exporter");
        EXPECT_EQ(dialog.Text(1032), "Export hidden objects");
        EXPECT_EQ(dialog.Text(1038), "Export meshes for non-renderable objects");
        EXPECT_EQ(dialog.Text(1052), "Export morphers");
        EXPECT_EQ(dialog.Text(1034), "Optimize skinning info (recommended)");
        EXPECT_EQ(dialog.Text(1053), "Weight threshold:");
        EXPECT_EQ(dialog.Text(1037), "Export motions for hidden objects");
        EXPECT_EQ(dialog.Text(1049), "Sample animation");
        EXPECT_EQ(dialog.Text(1050), "Export a keyframe every");
        EXPECT_EQ(dialog.Text(1051), "frame(s).");
        EXPECT_EQ(dialog.Text(3), "Export");
        EXPECT_EQ(dialog.Text(2), "Cancel");
        EXPECT_EQ(dialog.DefaultButton(), 3);
        EXPECT_FALSE(dialog.IsEnabled(1046));
        EXPECT_EQ(dialog.Text(1046), "") << "no such control";
    });
}

TEST_F(OptionsDialog, ShowsTheDefaults) {
    Show([](Dialog& dialog) {
        EXPECT_FALSE(dialog.IsChecked(1032));
        EXPECT_FALSE(dialog.IsChecked(1038));
        EXPECT_TRUE(dialog.IsChecked(1052));
        EXPECT_TRUE(dialog.IsChecked(1034));
        EXPECT_EQ(dialog.Text(1044), "0.075");
        EXPECT_FALSE(dialog.IsChecked(1037));
        EXPECT_FALSE(dialog.IsChecked(1049));
        EXPECT_EQ(dialog.Text(1042), "2");
    });
}

TEST_F(OptionsDialog, EveryCheckBoxShowsItsOption) {
    for (const CheckBox& shown : kCheckBoxes) {
        for (const int value : {0, 1, 2, 255}) {
            for (const CheckBox& box : kCheckBoxes) {
                Options().*box.option = box.id != shown.id;
            }
            Options().*shown.option = static_cast<Plinth::UInt8>(value);
            Show([&](Dialog& dialog) {
                for (const CheckBox& box : kCheckBoxes) {
                    EXPECT_EQ(dialog.IsChecked(box.id), box.id != shown.id || value != 0) << box.id;
                }
            });
        }
    }
}

TEST_F(OptionsDialog, EveryCheckBoxSetsItsOption) {
    for (const CheckBox& clicked : kCheckBoxes) {
        ExportOptions expected = Options();
        expected.*clicked.option = expected.*clicked.option ? 0 : 1;
        EXPECT_EQ(Show([&](Dialog& dialog) {
                      dialog.Click(clicked.id);
                      dialog.Click(3);
                  }),
                  1);
        EXPECT_TRUE(SameBytes(Options(), expected)) << clicked.id;
    }
}

TEST_F(OptionsDialog, ThresholdIsEnabledWithItsCheckBox) {
    const auto expectEnabled = [](const Dialog& dialog, bool isEnabled) {
        for (const int id : {1053, 1044, 1045}) {
            EXPECT_EQ(dialog.IsEnabled(id), isEnabled) << id;
        }
    };
    for (const bool atStart : {true, false}) {
        Options().optimizeSkin = atStart;
        Show([&](Dialog& dialog) {
            expectEnabled(dialog, atStart);
            dialog.Click(1034);
            expectEnabled(dialog, !atStart);
            dialog.Click(1034);
            expectEnabled(dialog, atStart);
        });
    }
}

TEST_F(OptionsDialog, SampleRateIsEnabledWithItsCheckBox) {
    const auto expectEnabled = [](const Dialog& dialog, bool isEnabled) {
        for (const int id : {1050, 1051, 1042}) {
            EXPECT_EQ(dialog.IsEnabled(id), isEnabled) << id;
        }
    };
    for (const bool atStart : {true, false}) {
        Options().sampleAnimation = atStart;
        Show([&](Dialog& dialog) {
            expectEnabled(dialog, atStart);
            dialog.Click(1049);
            expectEnabled(dialog, !atStart);
            dialog.Click(1049);
            expectEnabled(dialog, atStart);
        });
    }
}

TEST_F(OptionsDialog, ThresholdIsLimited) {
    const struct {
        float threshold;
        const char* text;
        float saved;
    } cases[] = {{0.0f, "0", 0.0f},
                 {0.9999f, "0.9999", 0.9999f},
                 {0.99995f, "0.9999", 0.9999f},
                 {7.0f, "0.9999", 0.9999f},
                 {-1.0f, "0", 0.0f},
                 {0.12345678f, "0.1235", 0.12345678f},
                 {std::numeric_limits<float>::infinity(), "0.9999", 0.9999f}};
    for (const auto& c : cases) {
        Options().weightThreshold = c.threshold;
        Show([&](Dialog& dialog) {
            EXPECT_EQ(dialog.Text(1044), c.text);
            dialog.Click(3);
        });
        EXPECT_EQ(Options().weightThreshold, c.saved) << c.threshold;
    }
    Options().weightThreshold = std::nanf("");
    Show([](Dialog& dialog) { dialog.Click(3); });
    EXPECT_EQ(Options().weightThreshold, 0.0f);
}

TEST_F(OptionsDialog, TypedThresholdIsLimitedAndSaved) {
    const struct {
        const char* typed;
        const char* shown;
        float saved;
    } cases[] = {{"0.5", "0.5", 0.5f},      {"5", "0.9999", 0.9999f}, {"-3", "0", 0.0f},
                 {"0.1200", "0.12", 0.12f}, {"abc", "0.075", 0.075f}, {"", "0.075", 0.075f},
                 {".25x", "0.25", 0.25f}};
    for (const auto& c : cases) {
        Options().weightThreshold = 0.075f;
        Show([&](Dialog& dialog) {
            dialog.Type(1044, c.typed);
            EXPECT_EQ(dialog.Text(1044), c.shown) << c.typed;
            dialog.Click(3);
        });
        EXPECT_EQ(Options().weightThreshold, c.saved) << c.typed;
    }
}

TEST_F(OptionsDialog, ThresholdIsSavedThoughOptimizingIsOff) {
    EXPECT_EQ(Show([](Dialog& dialog) {
                  dialog.Type(1044, "0.3");
                  dialog.Click(1034);
                  dialog.Type(1044, "0.6");
                  EXPECT_EQ(dialog.Text(1044), "0.3") << "disabled";
                  dialog.Click(3);
              }),
              1);
    EXPECT_EQ(Options().optimizeSkin, 0);
    EXPECT_EQ(Options().weightThreshold, 0.3f);
    Show([](Dialog& dialog) {
        EXPECT_EQ(dialog.Text(1044), "0.3");
        EXPECT_FALSE(dialog.IsEnabled(1044));
    });
}

TEST_F(OptionsDialog, SampleRatesBelowOneAreRefused) {
    Options().sampleAnimation = 1;
    Options().sampleRate = 7;
    for (const char* const rate : {"0", "-5", "", "abc", "x3", "-", "-99999999999"}) {
        user_.boxes.clear();
        EXPECT_EQ(Show([&](Dialog& dialog) {
                      dialog.Type(1042, rate);
                      dialog.Click(3);
                      EXPECT_TRUE(dialog.IsOpen()) << rate;
                      EXPECT_EQ(dialog.Text(1042), "7") << rate;
                      dialog.Click(2);
                      EXPECT_FALSE(dialog.IsOpen());
                  }),
                  0);
        ASSERT_EQ(user_.boxes.size(), 1u) << rate;
        EXPECT_EQ(user_.boxes[0].title, "Invalid value");
        EXPECT_EQ(user_.boxes[0].text,
                  "The motion sample rate cannot be below one!\n"
                  "A value of two gives high quality results.\n"
                  "Higher values will result in lower quality.");
#ifndef _WIN32
        EXPECT_EQ(user_.boxes[0].flags, 0x30u);
#endif
        EXPECT_EQ(Options().sampleRate, 7);
    }
}

TEST_F(OptionsDialog, RefusalKeepsWhatWasReadBeforeIt) {
    Options().sampleAnimation = 1;
    EXPECT_EQ(Show([](Dialog& dialog) {
                  dialog.Click(1032);
                  dialog.Click(1038);
                  dialog.Click(1052);
                  dialog.Click(1034);
                  dialog.Click(1037);
                  dialog.Type(1042, "0");
                  dialog.Click(3);
                  dialog.Click(2);
              }),
              0);
    ExportOptions expected = DefaultExportOptions();
    expected.exportHidden = 1;
    expected.nonRenderable = 1;
    expected.morphers = 0;
    expected.optimizeSkin = 0;
    expected.motionsForHidden = 1;
    expected.sampleAnimation = 1;
    EXPECT_TRUE(SameBytes(Options(), expected));
}

TEST_F(OptionsDialog, AnotherRateAfterARefusalIsTaken) {
    Options().sampleAnimation = 1;
    EXPECT_EQ(Show([](Dialog& dialog) {
                  dialog.Type(1042, "0");
                  dialog.Click(3);
                  dialog.Type(1042, "1");
                  dialog.Click(3);
              }),
              1);
    EXPECT_EQ(Options().sampleRate, 1);
    EXPECT_EQ(user_.boxes.size(), 1u);
}

TEST_F(OptionsDialog, SampleRatesAreReadUpToTheFirstOtherCharacter) {
    Options().sampleAnimation = 1;
    const struct {
        const char* typed;
        int rate;
    } cases[] = {{"1", 1},    {"3x", 3},
                 {" 12", 12}, {"+4", 4},
                 {"2.9", 2},  {"2147483647", INT_MAX},
                 {"007", 7},  {"99999999999", INT_MAX}};
    for (const auto& c : cases) {
        EXPECT_EQ(Show([&](Dialog& dialog) {
                      dialog.Type(1042, c.typed);
                      dialog.Click(3);
                  }),
                  1)
            << c.typed;
        EXPECT_EQ(Options().sampleRate, c.rate) << c.typed;
    }
    EXPECT_TRUE(user_.boxes.empty());
}

TEST_F(OptionsDialog, StoredRateBelowOneIsRefusedToo) {
    for (const int rate : {0, -5, INT_MIN}) {
        Options().sampleRate = rate;
        Show([&](Dialog& dialog) {
            EXPECT_EQ(dialog.Text(1042), std::to_string(rate));
            dialog.Click(3);
            EXPECT_TRUE(dialog.IsOpen());
        });
        EXPECT_EQ(Options().sampleRate, rate);
    }
    EXPECT_EQ(user_.boxes.size(), 3u);
}

TEST_F(OptionsDialog, ExportChangesNothingThatWasNotTouched) {
    ExportOptions odd = DefaultExportOptions();
    const unsigned char bytes[] = {0x81, 1, 0xfe, 1, 0, 0, 'P', 'Q'};
    std::memcpy(&odd, bytes, sizeof(bytes));
    odd.maxWeightsPerVertex = -9;
    odd.motionsForHidden = 1;
    odd.padding1[0] = 'R';
    odd.padding1[1] = 'S';
    Options() = odd;
    EXPECT_EQ(Show([](Dialog& dialog) { dialog.Click(3); }), 1);
    EXPECT_TRUE(SameBytes(Options(), odd));
}

TEST_F(OptionsDialog, CancelChangesNothing) {
    EXPECT_EQ(Show([](Dialog& dialog) {
                  for (const CheckBox& box : kCheckBoxes) {
                      dialog.Click(box.id);
                  }
                  dialog.Type(1042, "9");
                  dialog.Click(2);
              }),
              0);
    EXPECT_TRUE(SameBytes(Options(), DefaultExportOptions()));
    EXPECT_EQ(Show([](Dialog&) {}), 0) << "closed without a button";
}

TEST_F(OptionsDialog, ExportIsForTheActorPass) {
    g_motionPass = 1;
    Show([](Dialog& dialog) {
        EXPECT_EQ(g_motionPass, 1);
        dialog.Click(3);
    });
    EXPECT_EQ(g_motionPass, 0);
}

TEST_F(OptionsDialog, OtherCommandForTheMotionPassDoesNotReadTheMorphers) {
    EXPECT_EQ(Show([](Dialog& dialog) {
                  dialog.Click(1049);
                  for (const int id : {1032, 1038, 1052, 1034, 1037}) {
                      dialog.Click(id);
                  }
                  dialog.Type(1042, "0");
                  dialog.Command(1028);
                  EXPECT_TRUE(dialog.IsOpen());
                  EXPECT_EQ(dialog.Text(1042), "2");
                  dialog.Type(1042, "9");
                  dialog.Command(1028);
                  EXPECT_FALSE(dialog.IsOpen());
              }),
              1);
    EXPECT_EQ(g_motionPass, 1);
    g_motionPass = 0;
    EXPECT_EQ(user_.boxes.size(), 1u);
    ExportOptions expected = DefaultExportOptions();
    expected.exportHidden = 1;
    expected.nonRenderable = 1;
    expected.optimizeSkin = 0;
    expected.motionsForHidden = 1;
    expected.sampleAnimation = 1;
    expected.sampleRate = 9;
    EXPECT_EQ(expected.morphers, 1) << "though it was unchecked";
    EXPECT_TRUE(SameBytes(Options(), expected));
}

TEST_F(OptionsDialog, OtherCommandsDoNothing) {
    Show([](Dialog& dialog) {
        for (const int id : {0, 1, 4, 1027, 1029, 1046, 1050, 9999}) {
            dialog.Command(id);
            EXPECT_TRUE(dialog.IsOpen()) << id;
        }
    });
    EXPECT_TRUE(SameBytes(Options(), DefaultExportOptions()));
}

TEST(OptionsDialogProcedure, AnswersMessages) {
    EXPECT_EQ(OptionsDialogProcedure(nullptr, CC_SPINNER_CHANGE, 0, 0), TRUE);
    EXPECT_EQ(OptionsDialogProcedure(nullptr, CC_SPINNER_CHANGE, MAKEWPARAM(1045, TRUE), 0), TRUE);
    EXPECT_EQ(OptionsDialogProcedure(nullptr, WM_COMMAND, 9999, 0), TRUE);
    for (const UINT message : {UINT{WM_CLOSE}, UINT{WM_DESTROY}, UINT{CC_SPINNER_BUTTONDOWN},
                               UINT{CC_SPINNER_BUTTONUP}, UINT{WM_USER}}) {
        EXPECT_EQ(OptionsDialogProcedure(nullptr, message, 0, 0), FALSE) << message;
    }
}

// Runs the dialog's procedure and notes its window and how its messages are answered.
HWND g_seenWindow = nullptr;
INT_PTR g_answerToStart = -1;

INT_PTR CALLBACK WatchedProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    const INT_PTR answer = OptionsDialogProcedure(window, message, wParam, lParam);
    if (message == WM_INITDIALOG) {
        g_seenWindow = window;
        g_answerToStart = answer;
    }
    return answer;
}

TEST_F(PlugInDialog, OptionsDialogIsCentredAndKeepsTheExporter) {
    KTAExp exporter;
    Show(IDD_OPTIONS, WatchedProcedure, reinterpret_cast<LPARAM>(&exporter), [&](Dialog&) {
        EXPECT_EQ(GetWindowLongPtrA(g_seenWindow, GWLP_USERDATA),
                  reinterpret_cast<LONG_PTR>(&exporter));
        RECT before, after;
        ASSERT_TRUE(GetWindowRect(g_seenWindow, &before));
        EXPECT_GT(before.left, 0);
        EXPECT_GT(before.top, 0);
        CenterWindow(g_seenWindow, nullptr);
        ASSERT_TRUE(GetWindowRect(g_seenWindow, &after));
        EXPECT_EQ(before.left, after.left);
        EXPECT_EQ(before.top, after.top);
    });
    EXPECT_EQ(g_answerToStart, TRUE);
}

TEST_F(PlugInDialog, SpinnerChangeChangesNothing) {
    KTAExp exporter;
    Show(IDD_OPTIONS, WatchedProcedure, reinterpret_cast<LPARAM>(&exporter), [](Dialog& dialog) {
        SendMessageA(g_seenWindow, CC_SPINNER_CHANGE, MAKEWPARAM(1045, FALSE), 0);
        EXPECT_TRUE(dialog.IsOpen());
        EXPECT_EQ(dialog.Text(1044), "0.075");
        dialog.Click(2);
    });
    EXPECT_TRUE(SameBytes(exporter.Options(), DefaultExportOptions()));
}

TEST_F(PlugInDialog, AboutBoxIsEndedByItsButton) {
    const auto showAbout = [&](std::function<void(Dialog&)> acts) {
        return Show(IDD_ABOUT, AboutDialogProcedure, 0, std::move(acts));
    };
    EXPECT_EQ(showAbout([](Dialog& dialog) {
                  EXPECT_EQ(dialog.Title(), "About Max to Halden exporter");
                  EXPECT_EQ(dialog.Text(1), "Back to 3D Studio Max");
                  EXPECT_EQ(dialog.DefaultButton(), 1);
                  for (const int id : {2, 3, 9999}) {
                      dialog.Command(id);
                      EXPECT_TRUE(dialog.IsOpen()) << id;
                  }
                  dialog.Click(1);
                  EXPECT_FALSE(dialog.IsOpen());
              }),
              1);
    EXPECT_EQ(AboutDialogProcedure(nullptr, WM_COMMAND, 2, 0), TRUE);
    EXPECT_EQ(AboutDialogProcedure(nullptr, WM_CLOSE, 0, 0), FALSE);
}

}  // namespace
