// The custom controls, in a dialog that records what it is told.
#include <custcont.h>
#include <gtest/gtest.h>
#include <windows.h>
#include <winutil.h>

#include <functional>
#include <string>
#include <vector>

#include "host/win32/user.h"

namespace {

constexpr int kEdit = 20;
constexpr int kSpinner = 21;
constexpr int kOtherEdit = 22;
constexpr int kOtherSpinner = 23;

struct Change {
    int id;
    int flag;
    ISpinnerControl* spinner;
    bool operator==(const Change&) const = default;
};

struct Shown {
    HWND window = nullptr;
    std::vector<Change> changes;
    std::function<void()> onChange;
} shown;

INT_PTR CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_INITDIALOG:
            shown.window = window;
            return TRUE;
        case WM_COMMAND:
            if (LOWORD(wParam) == IDCANCEL) {
                EndDialog(window, 0);
            }
            return TRUE;
        case CC_SPINNER_CHANGE:
            shown.changes.push_back(
                {LOWORD(wParam), HIWORD(wParam), reinterpret_cast<ISpinnerControl*>(lParam)});
            if (shown.onChange) {
                shown.onChange();
            }
            return TRUE;
        default:
            return FALSE;
    }
}

class ControlsTest : public testing::Test, private win32::User {
  protected:
    void SetUp() override {
        shown = {};
        module_ = LoadLibraryA(MODULE_DIR "/win32_test_dialogs.dll");
        ASSERT_NE(module_, nullptr);
    }
    void TearDown() override { FreeLibrary(module_); }

    // In the dialog, with a spinner set up as the options dialog has it.
    void Run(std::function<void(win32::Dialog&)> acts) {
        acts_ = std::move(acts);
        win32::SetUser(this);
        EXPECT_EQ(DialogBoxParamA(module_, MAKEINTRESOURCEA(5), nullptr, Procedure, 0), 0);
        win32::SetUser(nullptr);
        ReleaseISpinner(spinner_);
    }

    HWND Item(int id) const { return GetDlgItem(shown.window, id); }
    Change Told() const { return {kSpinner, FALSE, spinner_}; }

    ISpinnerControl* spinner_ = nullptr;

  private:
    void OnDialog(win32::Dialog& dialog) override {
        spinner_ = GetISpinner(Item(kSpinner));
        ASSERT_NE(spinner_, nullptr);
        spinner_->LinkToEdit(Item(kEdit), EDITTYPE_FLOAT);
        spinner_->SetLimits(0.0f, 0.9999f, TRUE);
        spinner_->SetScale(0.0001f);
        spinner_->SetValue(0.075f, FALSE);
        acts_(dialog);
    }
    void OnMessageBox(const std::string&, const std::string&, unsigned) override {}

    HMODULE module_ = nullptr;
    std::function<void(win32::Dialog&)> acts_;
};

TEST_F(ControlsTest, LinkingShowsTheValueWithAsManyDecimalsAsTheScaleHas) {
    Run([&](win32::Dialog& dialog) {
        EXPECT_EQ(dialog.Text(kEdit), "0.075");
        EXPECT_EQ(spinner_->GetFVal(), 0.075f);
        spinner_->SetValue(0.12345678f, FALSE);
        EXPECT_EQ(dialog.Text(kEdit), "0.1235");
        EXPECT_EQ(spinner_->GetFVal(), 0.12345678f) << "showing a value does not round it";
        spinner_->SetValue(0.0f, FALSE);
        EXPECT_EQ(dialog.Text(kEdit), "0");
        EXPECT_TRUE(shown.changes.empty());
    });
}

TEST_F(ControlsTest, LimitsHoldForEveryWayOfSetting) {
    Run([&](win32::Dialog& dialog) {
        spinner_->SetValue(7.0f, FALSE);
        EXPECT_EQ(spinner_->GetFVal(), 0.9999f);
        EXPECT_EQ(dialog.Text(kEdit), "0.9999");
        dialog.Type(kEdit, "-3");
        EXPECT_EQ(dialog.Text(kEdit), "0");
        EXPECT_EQ(spinner_->GetFVal(), 0.0f);
        spinner_->SetValue(0.9f, FALSE);
        spinner_->SetLimits(0.0f, 0.5f, FALSE);
        EXPECT_EQ(spinner_->GetFVal(), 0.9f);
        spinner_->SetLimits(0.0f, 0.5f, TRUE);
        EXPECT_EQ(spinner_->GetFVal(), 0.5f);
        EXPECT_EQ(dialog.Text(kEdit), "0.5");
    });
}

TEST_F(ControlsTest, TypedTextCountsWhenTheEditIsLeft) {
    Run([&](win32::Dialog& dialog) {
        dialog.Type(kEdit, "0.2500");
        EXPECT_EQ(shown.changes, std::vector{Told()});
        EXPECT_EQ(dialog.Text(kEdit), "0.25");
        EXPECT_EQ(spinner_->GetFVal(), 0.25f);
        dialog.Type(kEdit, "0.12345678");
        EXPECT_EQ(dialog.Text(kEdit), "0.1235");
        EXPECT_EQ(spinner_->GetFVal(), 0.12345678f);
        EXPECT_EQ(shown.changes.size(), 2u);
    });
}

TEST_F(ControlsTest, TypedTextCountsWhenTheValueIsAskedFor) {
    Run([&](win32::Dialog& dialog) {
        SetDlgItemTextA(shown.window, kEdit, "0.3000");
        EXPECT_TRUE(shown.changes.empty());
        EXPECT_EQ(spinner_->GetFVal(), 0.3f);
        EXPECT_EQ(dialog.Text(kEdit), "0.3");
        EXPECT_EQ(shown.changes, std::vector{Told()});
        SetDlgItemTextA(shown.window, kEdit, "5");
        EXPECT_EQ(spinner_->GetFVal(), 0.9999f);
        EXPECT_EQ(dialog.Text(kEdit), "0.9999");
    });
}

TEST_F(ControlsTest, ValueMayBeAskedForWhileTheDialogIsTold) {
    Run([&](win32::Dialog& dialog) {
        shown.onChange = [&] { EXPECT_EQ(spinner_->GetFVal(), 0.5f); };
        dialog.Type(kEdit, "0.5");
        EXPECT_EQ(shown.changes.size(), 1u);
    });
}

TEST_F(ControlsTest, TextThatIsNoNumberGivesTheValueBack) {
    Run([&](win32::Dialog& dialog) {
        for (const char* const text : {"abc", "", " ", "nan", "1e999"}) {
            dialog.Type(kEdit, text);
            EXPECT_EQ(dialog.Text(kEdit), "0.075") << text;
            EXPECT_EQ(spinner_->GetFVal(), 0.075f) << text;
        }
        EXPECT_TRUE(shown.changes.empty());
    });
}

TEST_F(ControlsTest, NotificationComesWhenAskedForAndTheValueChanges) {
    Run([&](win32::Dialog&) {
        spinner_->SetValue(0.5f, TRUE);
        spinner_->SetValue(0.5f, TRUE);
        EXPECT_EQ(shown.changes, std::vector{Told()});
    });
}

TEST_F(ControlsTest, LinkGoesToOneEditAtATime) {
    Run([&](win32::Dialog& dialog) {
        spinner_->LinkToEdit(Item(kOtherEdit), EDITTYPE_FLOAT);
        EXPECT_EQ(dialog.Text(kOtherEdit), "0.075");
        dialog.Type(kEdit, "0.5");
        EXPECT_EQ(dialog.Text(kEdit), "0.5");
        EXPECT_EQ(spinner_->GetFVal(), 0.075f);
        dialog.Type(kOtherEdit, "0.25");
        EXPECT_EQ(spinner_->GetFVal(), 0.25f);
        spinner_->LinkToEdit(nullptr, EDITTYPE_FLOAT);
        dialog.Type(kOtherEdit, "0.75");
        EXPECT_EQ(spinner_->GetFVal(), 0.25f);
    });
}

TEST_F(ControlsTest, ADisabledEditTakesNoText) {
    Run([&](win32::Dialog& dialog) {
        EnableWindow(Item(kEdit), FALSE);
        dialog.Type(kEdit, "0.5");
        EXPECT_EQ(spinner_->GetFVal(), 0.075f);
    });
}

TEST_F(ControlsTest, WindowsOfOtherClassesHaveNoSpinner) {
    Run([&](win32::Dialog&) {
        EXPECT_EQ(GetISpinner(Item(kEdit)), nullptr);
        EXPECT_EQ(GetISpinner(Item(IDCANCEL)), nullptr);
        EXPECT_EQ(GetISpinner(shown.window), nullptr);
        EXPECT_EQ(GetISpinner(nullptr), nullptr);
        ReleaseISpinner(nullptr);
    });
}

TEST_F(ControlsTest, SpinnersAreTheirWindows) {
    Run([&](win32::Dialog&) {
        ISpinnerControl* const again = GetISpinner(Item(kSpinner));
        EXPECT_EQ(again, spinner_);
        ISpinnerControl* const other = GetISpinner(Item(kOtherSpinner));
        EXPECT_NE(other, spinner_);
        ReleaseISpinner(other);
        ReleaseISpinner(again);
    });
}

TEST_F(ControlsTest, SpinnerOutlivesItsWindowWhileSomebodyHoldsIt) {
    ISpinnerControl* held = nullptr;
    Run([&](win32::Dialog&) { held = GetISpinner(Item(kOtherSpinner)); });
    held->SetValue(0.5f, TRUE);
    EXPECT_EQ(held->GetFVal(), 0.5f);
    EXPECT_TRUE(shown.changes.empty());
    ReleaseISpinner(held);
}

TEST_F(ControlsTest, CenterWindowMovesToTheMiddleOfTheParent) {
    Run([&](win32::Dialog&) {
        RECT rect;
        MoveWindow(shown.window, 100, 50, 200, 100, FALSE);
        CenterWindow(shown.window, nullptr);
        EXPECT_TRUE(GetWindowRect(shown.window, &rect));
        EXPECT_EQ(rect.left + rect.right, 640);
        EXPECT_EQ(rect.top + rect.bottom, 480);
        EXPECT_EQ(rect.right - rect.left, 200);
        // From (220, 190) on, so that the control's middle is (250, 215).
        MoveWindow(Item(kEdit), 10, 5, 40, 40, FALSE);
        CenterWindow(shown.window, Item(kEdit));
        EXPECT_TRUE(GetWindowRect(shown.window, &rect));
        EXPECT_EQ(rect.left + rect.right, 500);
        EXPECT_EQ(rect.top + rect.bottom, 430);
        CenterWindow(nullptr, shown.window);
    });
}

}  // namespace
