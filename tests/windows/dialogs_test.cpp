// How the plug-in's dialogs look: size, places, texts, tab order. Leaves a picture of each in the
// current directory, about-box.bmp and options-dialog.bmp.
#include <gtest/gtest.h>
#include <impexp.h>
#include <max.h>
#include <plugin.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <set>

#include "host/sdk/host.h"
#include "host/win32/module.h"
#include "host/win32/user.h"
#include "tests/windows/dialog_window.h"

namespace {

namespace fs = std::filesystem;
using support::ControlOnScreen;
using support::ControlsOf;

struct Looker : win32::User {
    explicit Looker(std::function<void(win32::Dialog&)> look) : look_(std::move(look)) {
        win32::SetUser(this);
    }
    ~Looker() override { win32::SetUser(nullptr); }

    void OnDialog(win32::Dialog& dialog) override {
        ++dialogs;
        look_(dialog);
    }
    void OnMessageBox(const std::string& title, const std::string& text, unsigned) override {
        ADD_FAILURE() << title << ": " << text;
    }

    int dialogs = 0;

  private:
    std::function<void(win32::Dialog&)> look_;
};

class DialogsTest : public testing::Test {
  protected:
    void SetUp() override {
        const fs::path plugIn(HDO_PLUGIN_FILE);
        maxhost::Host& host = maxhost::Host::Instance();
        host.SetPlugInDirs({plugIn.parent_path().string()});
        host.SetDir(APP_PLUGCFG_DIR, (fs::current_path() / "no settings").string());
        module_ = LoadLibraryA(HDO_PLUGIN_FILE);
        ASSERT_NE(module_, nullptr);
        ClassDesc* const description =
            win32::ModuleFunction<ClassDesc* (*)(int)>(module_, "LibClassDesc")(0);
        exporter_ = static_cast<SceneExport*>(description->Create(FALSE));
    }
    void TearDown() override {
        delete exporter_;
        FreeLibrary(module_);
    }

    void ShowAbout(std::function<void(HWND, win32::Dialog&)> look) {
        Looker looker([&look](win32::Dialog& dialog) {
            look(support::FindDialog(dialog.Title()), dialog);
            dialog.Click(1);
        });
        exporter_->ShowAbout(nullptr);
        EXPECT_EQ(looker.dialogs, 1);
    }
    void ShowOptions(std::function<void(HWND, win32::Dialog&)> look) {
        Looker looker([&look](win32::Dialog& dialog) {
            look(support::FindDialog(dialog.Title()), dialog);
            dialog.Click(2);
        });
        const std::string file = (fs::current_path() / "never.hdo").string();
        exporter_->DoExport(file.c_str(), nullptr, maxhost::Host::Instance().GetInterface(), FALSE,
                            0);
        EXPECT_EQ(looker.dialogs, 1);
    }

    HMODULE module_ = nullptr;
    SceneExport* exporter_ = nullptr;
};

bool Contains(const RECT& outer, const RECT& inner) {
    return outer.left <= inner.left && outer.top <= inner.top && outer.right >= inner.right &&
           outer.bottom >= inner.bottom;
}

bool Overlap(const RECT& a, const RECT& b) {
    RECT common;
    return IntersectRect(&common, &a, &b) != FALSE;
}

std::string Name(const ControlOnScreen& control) {
    return control.className + " " + std::to_string(control.id) + " \"" + control.text + "\"";
}

void ExpectTidy(HWND dialog) {
    RECT client;
    GetClientRect(dialog, &client);
    const std::vector<ControlOnScreen> controls = ControlsOf(dialog);
    for (const ControlOnScreen& control : controls) {
        EXPECT_TRUE(Contains(client, control.rect)) << Name(control) << " leaves the dialog";
        const SIZE room = support::RoomFor(control);
        EXPECT_LE(room.cx, control.rect.right - control.rect.left) << Name(control) << " is cut";
        if (!control.text.empty() && !control.isGroup) {
            EXPECT_LE(room.cy, control.rect.bottom - control.rect.top) << Name(control);
        }
        for (const ControlOnScreen& other : controls) {
            if (&other != &control && !other.isGroup && !control.isGroup) {
                EXPECT_FALSE(Overlap(other.rect, control.rect))
                    << Name(control) << " and " << Name(other);
            }
        }
    }
}

// Row by row, left to right; controls whose middles are closer than a line are of one row.
void ExpectTabOrderAsRead(HWND dialog) {
    const int line = support::FromDialogUnits(dialog, 0, 8).cy;
    const auto middle = [](const RECT& rect) { return (rect.top + rect.bottom) / 2; };
    const ControlOnScreen* former = nullptr;
    const std::vector<ControlOnScreen> controls = ControlsOf(dialog);
    for (const ControlOnScreen& control : controls) {
        if (!control.isTabStop) {
            continue;
        }
        if (former != nullptr) {
            const int down = middle(control.rect) - middle(former->rect);
            EXPECT_TRUE(down >= line || (down > -line && control.rect.left >= former->rect.right))
                << Name(control) << " comes after " << Name(*former);
        }
        former = &control;
    }
    EXPECT_NE(former, nullptr);
}

void ExpectClientSize(HWND dialog, int width, int height) {
    RECT client;
    GetClientRect(dialog, &client);
    const SIZE expected = support::FromDialogUnits(dialog, width, height);
    EXPECT_EQ(client.right, expected.cx);
    EXPECT_EQ(client.bottom, expected.cy);
}

std::set<int> IdsInGroup(HWND dialog, const std::string& text) {
    std::set<int> ids;
    const std::vector<ControlOnScreen> controls = ControlsOf(dialog);
    const auto group = std::find_if(controls.begin(), controls.end(), [&](const auto& control) {
        return control.isGroup && control.text == text;
    });
    if (group == controls.end()) {
        ADD_FAILURE() << "no group \"" << text << "\"";
        return ids;
    }
    for (const ControlOnScreen& control : controls) {
        if (&control != &*group && Overlap(group->rect, control.rect)) {
            EXPECT_TRUE(Contains(group->rect, control.rect)) << Name(control);
            ids.insert(control.id);
        }
    }
    return ids;
}

TEST_F(DialogsTest, AboutBoxIsTidy) {
    ShowAbout([](HWND dialog, win32::Dialog& seen) {
        ASSERT_NE(dialog, nullptr);
        EXPECT_EQ(seen.Title(), "About Max to Halden exporter");
        EXPECT_EQ(seen.Text(1), "Back to 3D Studio Max");
        EXPECT_EQ(seen.DefaultButton(), 1);
        EXPECT_EQ(ControlsOf(dialog).size(), 4u);
        ExpectClientSize(dialog, 229, 61);
        ExpectTidy(dialog);
        ExpectTabOrderAsRead(dialog);
        support::SavePicture(dialog, "about-box.bmp");
    });
}

TEST_F(DialogsTest, OptionsDialogIsTidy) {
    ShowOptions([](HWND dialog, win32::Dialog& seen) {
        ASSERT_NE(dialog, nullptr);
        EXPECT_EQ(seen.Title(), "Max to Halden Exporter");
        EXPECT_EQ(ControlsOf(dialog).size(), 16u);
        ExpectClientSize(dialog, 203, 189);
        ExpectTidy(dialog);
        ExpectTabOrderAsRead(dialog);
        support::SavePicture(dialog, "options-dialog.bmp");
        seen.Click(1049);  // with its edit enabled
        ExpectTabOrderAsRead(dialog);
    });
}

TEST_F(DialogsTest, GroupsFrameTheirOwn) {
    ShowOptions([](HWND dialog, win32::Dialog&) {
        ASSERT_NE(dialog, nullptr);
        EXPECT_EQ(IdsInGroup(dialog, "Actor Export Settings"),
                  (std::set<int>{1032, 1034, 1038, 1044, 1045, 1052, 1053}));
        EXPECT_EQ(IdsInGroup(dialog, "Motion Export Settings"),
                  (std::set<int>{1037, 1042, 1049, 1050, 1051}));
    });
}

TEST_F(DialogsTest, SampleRateTakesDigitsAlone) {
    ShowOptions([](HWND dialog, win32::Dialog& seen) {
        ASSERT_NE(dialog, nullptr);
        seen.Click(1049);
        const HWND edit = GetDlgItem(dialog, 1042);
        SendMessageA(edit, EM_SETSEL, 0, -1);
        for (const char c : std::string("-1x2")) {
            SendMessageA(edit, WM_CHAR, static_cast<unsigned char>(c), 0);
        }
        EXPECT_EQ(seen.Text(1042), "12");
    });
}

}  // namespace
