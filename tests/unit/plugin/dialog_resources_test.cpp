// The plug-in's dialogs as its resources hold them, and where their procedures put them.
#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "host/sdk/host.h"
#include "host/win32/module.h"
#include "host/win32/resources.h"
#include "host/win32/window.h"
#include "plugin/kta_exp.h"
#include "resources/resource.h"
#include "tests/support/played_user.h"

namespace {

HWND g_startedWindow = nullptr;
DLGPROC g_procedure = nullptr;

INT_PTR CALLBACK NotingProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    g_startedWindow = window;
    return g_procedure(window, message, wParam, lParam);
}

// A window of its own.
struct Owner : WindowObject {
    Owner() : WindowObject(nullptr) {}
    bool IsControl() const override { return false; }
};

class DialogResources : public testing::Test {
  protected:
    void SetUp() override {
        maxhost::Host::Instance().SetPlugInDirs(
            {std::filesystem::path(HDO_RECORDING_CONVERTER).parent_path().string()});
        plugIn_.reset(LoadLibraryA(HDO_PLUGIN_FILE));
        ASSERT_TRUE(plugIn_);
    }

    win32::DialogTemplate Template(std::uint16_t number) const {
        const auto data = win32::FindResource(Resources(), win32::kDialogType, number);
        const auto form = data ? win32::ReadDialogTemplate(*data) : std::nullopt;
        return form.value_or(win32::DialogTemplate());
    }
    std::span<const std::byte> Resources() const { return win32::ResourcesOf(plugIn_.get()); }

    // Where the dialog stands once its procedure has started it, its owner being there.
    RECT Started(int number, DLGPROC procedure, LPARAM parameter, const RECT& ownerRect) {
        Owner owner;
        owner.rect = ownerRect;
        g_procedure = procedure;
        RECT rect = {};
        support::PlayedUser user;
        user.acts = [&](win32::Dialog&) { EXPECT_TRUE(GetWindowRect(g_startedWindow, &rect)); };
        DialogBoxParamA(plugIn_.get(), MAKEINTRESOURCEA(number), &owner, NotingProcedure,
                        parameter);
        EXPECT_EQ(user.titles.size(), 1u);
        return rect;
    }

  private:
    struct Free {
        void operator()(HMODULE module) const { FreeLibrary(module); }
    };
    std::unique_ptr<std::remove_pointer_t<HMODULE>, Free> plugIn_;
};

void ExpectForm(const win32::DialogTemplate& form, const std::string& title, int width,
                int height) {
    EXPECT_EQ(form.title, title);
    EXPECT_EQ(form.rect.width, width);
    EXPECT_EQ(form.rect.height, height);
    EXPECT_EQ(form.font, "MS Sans Serif");
    EXPECT_EQ(form.fontSize, 8);
}

TEST_F(DialogResources, AboutBoxNamesTheExporterAndItsMaker) {
    const win32::DialogTemplate about = Template(102);
    ExpectForm(about, "About Max to Halden exporter", 229, 61);
    std::vector<std::string> statics, buttons;
    for (const win32::ControlTemplate& control : about.controls) {
        (control.className == "Static" ? statics : buttons).push_back(control.text);
    }
    EXPECT_EQ(statics,
              (std::vector<std::string>{"Max to Halden Exporter", win32::FindString(Resources(), 6),
                                        KTAExp().OtherMessage1()}));
    EXPECT_EQ(statics[1].find("Copyright"), 0u);
    EXPECT_EQ(buttons, std::vector<std::string>{"Back to 3D Studio Max"});
}

TEST_F(DialogResources, OptionsDialogHasItsSizeAndFont) {
    ExpectForm(Template(103), "Max to Halden Exporter", 203, 189);
}

TEST_F(DialogResources, DialogsAreCentredOnTheirParent) {
    KTAExp exporter;
    for (const RECT& owner : {RECT{1000, 600, 2000, 1400}, RECT{40, 20, 840, 720}}) {
        for (const int number : {IDD_ABOUT, IDD_OPTIONS}) {
            const RECT rect = number == IDD_ABOUT
                                  ? Started(number, AboutDialogProcedure, 0, owner)
                                  : Started(number, OptionsDialogProcedure,
                                            reinterpret_cast<LPARAM>(&exporter), owner);
            EXPECT_GT(rect.right, rect.left);
            EXPECT_NEAR(rect.left + rect.right, owner.left + owner.right, 1) << number;
            EXPECT_NEAR(rect.top + rect.bottom, owner.top + owner.bottom, 1) << number;
        }
    }
}

}  // namespace
