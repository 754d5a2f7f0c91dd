// The user in front of real dialogs and message boxes.
#include <gtest/gtest.h>
#include <windows.h>

#include <functional>
#include <string>
#include <vector>

#include "host/win32/user.h"
#include "tests/support/played_user.h"

namespace {

using support::Boxes;
using support::PlayedUser;

// The commands that the dialog's procedure got, and how it takes them.
struct Dialogs {
    std::vector<int> commands;
    std::vector<int> changes;  // ids of edits that changed
    bool ignoresCancel = false;
    std::string refusal;  // shown instead of ending on command 3
} dialogs;

INT_PTR CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM) {
    if (message == WM_INITDIALOG) {
        return TRUE;
    }
    if (message != WM_COMMAND) {
        return FALSE;
    }
    const int id = LOWORD(wParam);
    const int code = HIWORD(wParam);
    if (code == EN_CHANGE && id < 12) {
        dialogs.changes.push_back(id);
    }
    if (code != 0) {
        return TRUE;
    }
    dialogs.commands.push_back(id);
    if (id == 3 && !dialogs.refusal.empty()) {
        MessageBoxA(window, dialogs.refusal.c_str(), "Refused", MB_OK | MB_ICONEXCLAMATION);
    } else if (id == 3 || (id == 2 && !dialogs.ignoresCancel)) {
        EndDialog(window, id);
    }
    return TRUE;
}

class UserWindowsTest : public testing::Test {
  protected:
    void SetUp() override { dialogs = {}; }
    static INT_PTR Show(int number) {
        return DialogBoxParamA(GetModuleHandleA(nullptr), MAKEINTRESOURCEA(number), nullptr,
                               Procedure, 0);
    }

    PlayedUser user_;
};

TEST(Display, IsThere) {
    EXPECT_TRUE(win32::HasDisplay());
}

TEST_F(UserWindowsTest, SeesADialogOnceAndItsControls) {
    user_.acts = [](win32::Dialog& dialog) {
        EXPECT_TRUE(dialog.IsOpen());
        EXPECT_EQ(dialog.Title(), "Controls");
        EXPECT_TRUE(dialog.IsEnabled(10));
        EXPECT_FALSE(dialog.IsEnabled(11));
        EXPECT_FALSE(dialog.IsEnabled(99));
        EXPECT_FALSE(dialog.IsChecked(12));
        EXPECT_FALSE(dialog.IsChecked(99));
        EXPECT_EQ(dialog.Text(12), "check");
        EXPECT_EQ(dialog.Text(14), "label");
        EXPECT_EQ(dialog.Text(99), "");
        EXPECT_EQ(dialog.DefaultButton(), 3);
    };
    EXPECT_EQ(Show(1), 2) << "cancelled, as nobody answered it";
    EXPECT_EQ(user_.titles, std::vector<std::string>{"Controls"});
    EXPECT_EQ(dialogs.commands, std::vector<int>{2});
}

TEST_F(UserWindowsTest, ClicksAndTypes) {
    user_.acts = [](win32::Dialog& dialog) {
        dialog.Click(12);
        EXPECT_TRUE(dialog.IsChecked(12));
        dialog.Click(12);
        EXPECT_FALSE(dialog.IsChecked(12));
        dialog.Click(13);
        EXPECT_FALSE(dialog.IsChecked(13));
        dialog.Type(10, "old");
        dialog.Type(10, "-5");
        EXPECT_EQ(dialog.Text(10), "-5");
        dialog.Type(11, "disabled");
        EXPECT_EQ(dialog.Text(11), "");
        dialog.Type(14, "static");
        EXPECT_EQ(dialog.Text(14), "label");
        dialog.Click(99);
        dialog.Type(99, "nothing");
        dialog.Command(1028);
        EXPECT_TRUE(dialog.IsOpen());
        dialog.Click(3);
        EXPECT_FALSE(dialog.IsOpen());
        dialog.Click(2);
        dialog.Command(77);
        dialog.Type(10, "late");
    };
    EXPECT_EQ(Show(1), 3);
    EXPECT_EQ(dialogs.commands, (std::vector<int>{12, 12, 1028, 3}));
    EXPECT_EQ(dialogs.changes, (std::vector<int>{10, 10}));
}

TEST_F(UserWindowsTest, TypingLeavesTheEdit) {
    user_.acts = [](win32::Dialog& dialog) {
        dialog.Type(10, "text");
        EXPECT_NE(GetDlgCtrlID(GetFocus()), 10);
    };
    Show(1);
    EXPECT_EQ(user_.titles.size(), 1u);
}

TEST_F(UserWindowsTest, MessageBoxDuringAnActionIsRead) {
    dialogs.refusal = "No.\nNot so.";
    user_.acts = [this](win32::Dialog& dialog) {
        dialog.Click(3);
        EXPECT_EQ(user_.boxes, (Boxes{{"Refused", "No.\nNot so."}}));
        EXPECT_TRUE(dialog.IsOpen());
        dialog.Click(3);
    };
    EXPECT_EQ(Show(1), 2);
    EXPECT_EQ(user_.boxes.size(), 2u);
    EXPECT_EQ(user_.titles.size(), 1u);
}

TEST_F(UserWindowsTest, DialogOverADialogIsAnswered) {
    user_.acts = [this](win32::Dialog& dialog) {
        if (user_.titles.size() == 1) {
            EXPECT_EQ(Show(1), 3);
            EXPECT_TRUE(dialog.IsOpen());
        } else {
            dialog.Click(3);
            EXPECT_FALSE(dialog.IsOpen());
        }
    };
    EXPECT_EQ(Show(1), 2);
    EXPECT_EQ(user_.titles.size(), 2u);
}

TEST_F(UserWindowsTest, DialogThatDoesNotEndIsGivenUp) {
    dialogs.ignoresCancel = true;
    EXPECT_EQ(Show(1), -1);
    EXPECT_EQ(dialogs.commands, std::vector<int>{2});
}

TEST_F(UserWindowsTest, DialogThatIsNotVisibleByItselfIsWaitedFor) {
    user_.acts = [](win32::Dialog& dialog) { EXPECT_EQ(dialog.DefaultButton(), 0); };
    EXPECT_EQ(Show(2), 2);
    EXPECT_EQ(user_.titles, std::vector<std::string>{"Bare"});
}

TEST_F(UserWindowsTest, MessageBoxesGetTheirDefaultButton) {
    EXPECT_EQ(MessageBoxA(nullptr, "a\nb", "Title", MB_OK | MB_ICONEXCLAMATION), IDOK);
    EXPECT_EQ(MessageBoxA(nullptr, "really?", "Q", MB_YESNO | MB_DEFBUTTON2), IDNO);
    EXPECT_EQ(MessageBoxA(nullptr, "again?", "Q", MB_YESNOCANCEL), IDYES);
    EXPECT_EQ(user_.boxes, (Boxes{{"Title", "a\nb"}, {"Q", "really?"}, {"Q", "again?"}}));
    EXPECT_TRUE(user_.titles.empty());
}

TEST_F(UserWindowsTest, AnotherUserTakesOver) {
    PlayedUser second;
    MessageBoxA(nullptr, "text", "title", MB_OK);
    EXPECT_EQ(win32::SetUser(&user_), &second);
    MessageBoxA(nullptr, "text", "title", MB_OK);
    EXPECT_EQ(second.boxes.size(), 1u);
    EXPECT_EQ(user_.boxes.size(), 1u);
}

VOID CALLBACK PressOk(HWND, UINT, UINT_PTR timer, DWORD) {
    const HWND box = FindWindowA("#32770", "for a person");
    if (box != nullptr && IsWindowVisible(box)) {
        KillTimer(nullptr, timer);
        PostMessageA(box, WM_COMMAND, IDOK, 0);
    }
}

TEST_F(UserWindowsTest, WithoutAUserAPersonIsWaitedFor) {
    EXPECT_EQ(win32::SetUser(nullptr), &user_);
    SetTimer(nullptr, 0, 300, PressOk);
    const DWORD start = GetTickCount();
    MessageBoxA(nullptr, "text", "for a person", MB_OK);
    EXPECT_GE(GetTickCount() - start, 250u);
    EXPECT_TRUE(user_.boxes.empty());
}

}  // namespace
