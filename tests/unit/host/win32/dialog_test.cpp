// Dialogs and their controls, from the program's side and from the user's.
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

struct Command {
    int id;
    int notification;
    bool operator==(const Command&) const = default;
};

// The messages that the procedure got, and its answers.
struct Told {
    HWND window = nullptr;
    LPARAM parameter = 0;
    std::vector<UINT> messages;
    std::vector<Command> commands;
    std::function<void(HWND)> atStart;
    std::function<void(HWND, int id)> onCommand;
} told;

INT_PTR CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    told.messages.push_back(message);
    if (message == WM_INITDIALOG) {
        told.window = window;
        told.parameter = lParam;
        if (told.atStart) {
            told.atStart(window);
        }
        return TRUE;
    }
    if (message != WM_COMMAND) {
        return FALSE;
    }
    told.commands.push_back({LOWORD(wParam), HIWORD(wParam)});
    if (told.onCommand) {
        told.onCommand(window, LOWORD(wParam));
    } else if (HIWORD(wParam) == 0 && LOWORD(wParam) <= 3) {
        EndDialog(window, LOWORD(wParam));
    }
    return TRUE;
}

class DialogTest : public testing::Test {
  protected:
    void SetUp() override {
        told = {};
        module_ = LoadLibraryA(MODULE_DIR "/win32_test_dialogs.dll");
        ASSERT_NE(module_, nullptr);
    }
    void TearDown() override { FreeLibrary(module_); }

    INT_PTR Show(int number, DLGPROC procedure = Procedure, LPARAM parameter = 0,
                 HWND owner = nullptr) {
        return DialogBoxParamA(module_, MAKEINTRESOURCEA(number), owner, procedure, parameter);
    }

    HMODULE module_ = nullptr;
    PlayedUser user_;
};

using Commands = std::vector<Command>;

TEST_F(DialogTest, ProcedureStartsItAndTheUserEndsIt) {
    told.atStart = [](HWND window) { EXPECT_TRUE(IsWindow(window)); };
    user_.acts = [](win32::Dialog& dialog) {
        EXPECT_TRUE(dialog.IsOpen());
        dialog.Click(3);
        EXPECT_FALSE(dialog.IsOpen());
    };
    EXPECT_EQ(Show(1, Procedure, 77), 3);
    EXPECT_EQ(told.parameter, 77);
    EXPECT_EQ(told.messages, (std::vector<UINT>{WM_INITDIALOG, WM_COMMAND, WM_DESTROY}));
    EXPECT_EQ(user_.titles, std::vector<std::string>{"Controls"});
    EXPECT_FALSE(IsWindow(told.window));
}

TEST_F(DialogTest, WhatNobodyEndsIsCancelled) {
    EXPECT_EQ(Show(1), 2);
    EXPECT_EQ(told.commands, (Commands{{2, 0}}));
}

TEST_F(DialogTest, WhatDoesNotEndIsGivenUp) {
    told.onCommand = [](HWND, int) {};
    EXPECT_EQ(Show(1), -1);
    EXPECT_EQ(Show(1, nullptr), -1) << "no procedure";
}

TEST_F(DialogTest, WhatEndsAtItsStartIsNotShown) {
    told.atStart = [](HWND window) { EXPECT_TRUE(EndDialog(window, 5)); };
    EXPECT_EQ(Show(1), 5);
    EXPECT_TRUE(user_.titles.empty());
}

TEST_F(DialogTest, WhatCannotBeMadeIsMinusOne) {
    EXPECT_EQ(Show(3), -1) << "a class that nobody has registered";
    EXPECT_EQ(Show(99), -1);
    EXPECT_EQ(Show(0), -1);
    EXPECT_EQ(DialogBoxParamA(nullptr, MAKEINTRESOURCEA(1), nullptr, Procedure, 0), -1);
    EXPECT_EQ(DialogBoxParamA(module_, "NAME", nullptr, Procedure, 0), -1);
    EXPECT_TRUE(user_.titles.empty());
    EXPECT_TRUE(told.messages.empty());
}

TEST_F(DialogTest, ControlsAreAsTheTemplateSays) {
    user_.acts = [](win32::Dialog& dialog) {
        EXPECT_TRUE(dialog.IsEnabled(10));
        EXPECT_FALSE(dialog.IsEnabled(11));
        EXPECT_FALSE(dialog.IsEnabled(99));
        EXPECT_FALSE(dialog.IsChecked(12));
        EXPECT_FALSE(dialog.IsChecked(99));
        EXPECT_EQ(dialog.Text(12), "check");
        EXPECT_EQ(dialog.Text(14), "label");
        EXPECT_EQ(dialog.Text(99), "");
        EXPECT_EQ(dialog.DefaultButton(), 3);
        RECT rect;
        EXPECT_TRUE(GetWindowRect(told.window, &rect));
        EXPECT_EQ(rect.left, 10);
        EXPECT_EQ(rect.bottom, 120);
        EXPECT_TRUE(GetWindowRect(GetDlgItem(told.window, 10), &rect));
        EXPECT_EQ(rect.left, 15);
        EXPECT_EQ(rect.top, 26);
        EXPECT_EQ(rect.right, 75);
    };
    Show(1);
}

TEST_F(DialogTest, OlderFormAndItsDefaultButton) {
    user_.acts = [](win32::Dialog& dialog) {
        EXPECT_EQ(dialog.Title(), "Older");
        EXPECT_EQ(dialog.DefaultButton(), 1) << "the OK button, as no other is the default";
        EXPECT_EQ(dialog.Text(40000), "wide id");
        dialog.Click(40000);
        EXPECT_TRUE(dialog.IsChecked(40000));
    };
    EXPECT_EQ(Show(2), 2);
    user_.acts = [](win32::Dialog& dialog) { EXPECT_EQ(dialog.DefaultButton(), 0); };
    EXPECT_EQ(Show(4), 2);
}

TEST_F(DialogTest, ClicksToggleCheckBoxesAndAreTold) {
    user_.acts = [](win32::Dialog& dialog) {
        dialog.Click(12);
        EXPECT_TRUE(dialog.IsChecked(12));
        dialog.Click(12);
        EXPECT_FALSE(dialog.IsChecked(12));
        dialog.Click(15);
        EXPECT_FALSE(dialog.IsChecked(15)) << "left to the procedure";
        dialog.Click(13);
        EXPECT_FALSE(dialog.IsChecked(13)) << "disabled";
        for (const int passive : {10, 14, 16, 99}) {
            dialog.Click(passive);
        }
    };
    Show(1);
    EXPECT_EQ(told.commands, (Commands{{12, BN_CLICKED}, {12, BN_CLICKED}, {15, 0}, {2, 0}}));
}

TEST_F(DialogTest, TypingIsTold) {
    user_.acts = [](win32::Dialog& dialog) {
        dialog.Type(10, "-5");
        EXPECT_EQ(dialog.Text(10), "-5");
        dialog.Type(11, "disabled");
        EXPECT_EQ(dialog.Text(11), "");
        dialog.Type(14, "static");
        EXPECT_EQ(dialog.Text(14), "label");
        dialog.Type(3, "button");
        EXPECT_EQ(dialog.Text(3), "Accept");
        dialog.Type(99, "nothing");
    };
    Show(1);
    EXPECT_EQ(
        told.commands,
        (Commands{
            {10, EN_SETFOCUS}, {10, EN_UPDATE}, {10, EN_CHANGE}, {10, EN_KILLFOCUS}, {2, 0}}));
}

TEST_F(DialogTest, NothingHappensInAClosedDialog) {
    user_.acts = [](win32::Dialog& dialog) {
        dialog.Click(3);
        dialog.Click(12);
        dialog.Type(10, "late");
        dialog.Command(77);
        EXPECT_FALSE(dialog.IsChecked(12));
        EXPECT_EQ(dialog.Text(10), "");
    };
    EXPECT_EQ(Show(1), 3);
    EXPECT_EQ(told.commands, (Commands{{3, 0}}));
}

TEST_F(DialogTest, CommandsOfNoControlArrive) {
    user_.acts = [](win32::Dialog& dialog) { dialog.Command(1028); };
    Show(1);
    EXPECT_EQ(told.commands, (Commands{{1028, 0}, {2, 0}}));
}

TEST_F(DialogTest, ClosingIsCancelling) {
    user_.acts = [](win32::Dialog& dialog) {
        SendMessageA(told.window, WM_CLOSE, 0, 0);
        EXPECT_FALSE(dialog.IsOpen());
    };
    EXPECT_EQ(Show(1), 2);
}

TEST_F(DialogTest, ProgramReadsAndSetsControls) {
    told.atStart = [](HWND window) {
        EXPECT_TRUE(CheckDlgButton(window, 12, BST_CHECKED));
        EXPECT_FALSE(CheckDlgButton(window, 99, BST_CHECKED));
        EXPECT_TRUE(CheckDlgButton(window, 3, BST_CHECKED));
        EXPECT_EQ(IsDlgButtonChecked(window, 3), 0u) << "no check box";
        EXPECT_EQ(IsDlgButtonChecked(window, 12), 1u);
        EXPECT_EQ(IsDlgButtonChecked(window, 99), 0u);
        EXPECT_TRUE(SetDlgItemTextA(window, 10, "fourteen bytes"));
        EXPECT_FALSE(SetDlgItemTextA(window, 99, "text"));
        char text[16] = "before";
        EXPECT_EQ(GetDlgItemTextA(window, 10, text, 9), 8u);
        EXPECT_STREQ(text, "fourteen");
        EXPECT_EQ(GetDlgItemTextA(window, 99, text, sizeof(text)), 0u);
        EXPECT_STREQ(text, "");
        EXPECT_EQ(GetDlgItemTextA(window, 10, nullptr, 9), 0u);
        EXPECT_EQ(GetDlgItemTextA(window, 10, text, 0), 0u);
        EXPECT_EQ(SendDlgItemMessageA(window, 10, WM_GETTEXTLENGTH, 0, 0), 14);
        EXPECT_EQ(GetParent(GetDlgItem(window, 10)), window);
        EXPECT_EQ(GetDlgCtrlID(GetDlgItem(window, 10)), 10);
        EXPECT_EQ(GetDlgItem(window, 99), nullptr);
    };
    user_.acts = [](win32::Dialog& dialog) {
        EXPECT_TRUE(dialog.IsChecked(12));
        EXPECT_EQ(dialog.Text(10), "fourteen bytes");
    };
    Show(1);
    EXPECT_EQ(told.commands, (Commands{{10, EN_UPDATE}, {10, EN_CHANGE}, {2, 0}}));
}

TEST_F(DialogTest, ProgramEnablesAndDisables) {
    told.atStart = [](HWND window) {
        EXPECT_FALSE(EnableWindow(GetDlgItem(window, 10), FALSE)) << "was enabled";
        EXPECT_TRUE(EnableWindow(GetDlgItem(window, 11), TRUE)) << "was disabled";
        EXPECT_FALSE(IsWindowEnabled(GetDlgItem(window, 10)));
        EXPECT_TRUE(IsWindowEnabled(GetDlgItem(window, 11)));
    };
    user_.acts = [](win32::Dialog& dialog) {
        dialog.Type(10, "x");
        dialog.Type(11, "y");
        EXPECT_EQ(dialog.Text(10), "");
        EXPECT_EQ(dialog.Text(11), "y");
    };
    Show(1);
}

TEST_F(DialogTest, UserDataIsKept) {
    told.atStart = [](HWND window) {
        EXPECT_EQ(SetWindowLongPtrA(window, GWLP_USERDATA, 5), 0);
        EXPECT_EQ(SetWindowLongPtrA(window, GWLP_USERDATA, 6), 5);
        EXPECT_EQ(GetWindowLongPtrA(window, GWLP_USERDATA), 6);
        EXPECT_EQ(GetWindowLongPtrA(window, -4), 0);
        EXPECT_EQ(GetWindowLongPtrA(GetDlgItem(window, 10), GWLP_USERDATA), 0);
    };
    Show(1);
}

TEST_F(DialogTest, WindowsThatAreGoneAreHarmless) {
    HWND control = nullptr;
    told.atStart = [&](HWND window) { control = GetDlgItem(window, 10); };
    Show(1);
    for (const HWND gone : {told.window, control, static_cast<HWND>(nullptr)}) {
        RECT rect;
        char text[4] = "abc";
        EXPECT_FALSE(IsWindow(gone));
        EXPECT_EQ(SendMessageA(gone, WM_GETTEXTLENGTH, 0, 0), 0);
        EXPECT_EQ(GetParent(gone), nullptr);
        EXPECT_EQ(GetDlgItem(gone, 10), nullptr);
        EXPECT_EQ(GetDlgCtrlID(gone), 0);
        EXPECT_FALSE(EndDialog(gone, 1));
        EXPECT_FALSE(EnableWindow(gone, TRUE));
        EXPECT_FALSE(IsWindowEnabled(gone));
        EXPECT_FALSE(GetWindowRect(gone, &rect));
        EXPECT_FALSE(MoveWindow(gone, 0, 0, 1, 1, TRUE));
        EXPECT_FALSE(SetWindowTextA(gone, "x"));
        EXPECT_EQ(GetWindowTextA(gone, text, sizeof(text)), 0);
        EXPECT_STREQ(text, "");
        EXPECT_EQ(SetWindowLongPtrA(gone, GWLP_USERDATA, 1), 0);
    }
}

TEST_F(DialogTest, ControlsAreNoDialogs) {
    told.atStart = [](HWND window) {
        const HWND control = GetDlgItem(window, 10);
        EXPECT_FALSE(EndDialog(control, 1));
        EXPECT_EQ(GetDlgItem(control, 10), nullptr);
    };
    Show(1);
}

TEST_F(DialogTest, MessageBoxDuringAnActionIsRead) {
    told.onCommand = [](HWND window, int id) {
        if (id == 3) {
            MessageBoxA(window, "No.", "Refused", MB_OK | MB_ICONEXCLAMATION);
        } else {
            EndDialog(window, id);
        }
    };
    user_.acts = [this](win32::Dialog& dialog) {
        dialog.Click(3);
        EXPECT_EQ(user_.boxes, (Boxes{{"Refused", "No.", 48}}));
        EXPECT_TRUE(dialog.IsOpen());
    };
    EXPECT_EQ(Show(1), 2);
}

TEST_F(DialogTest, DialogOverADialogKnowsItsOwner) {
    user_.acts = [this](win32::Dialog& dialog) {
        if (user_.titles.size() == 1) {
            const HWND owner = told.window;
            EXPECT_EQ(Show(2, Procedure, 0, owner), 1);
            EXPECT_TRUE(dialog.IsOpen());
        } else {
            EXPECT_NE(GetParent(told.window), nullptr);
            dialog.Click(1);
        }
    };
    EXPECT_EQ(Show(1), 2);
    EXPECT_EQ(user_.titles, (std::vector<std::string>{"Controls", "Older"}));
}

TEST_F(DialogTest, WithoutAUserTheDefaultButtonIsPressed) {
    EXPECT_EQ(win32::SetUser(nullptr), &user_);
    EXPECT_EQ(Show(1), 3);
    EXPECT_EQ(Show(2), 1);
    EXPECT_EQ(Show(4), 2) << "no button: cancelled";
    EXPECT_EQ(MessageBoxA(nullptr, "text", "title", MB_OK), IDOK);
    EXPECT_TRUE(user_.titles.empty());
    EXPECT_TRUE(user_.boxes.empty());
}

TEST_F(DialogTest, MessageBoxesShowTitleTextAndFlags) {
    EXPECT_EQ(MessageBoxA(nullptr, "a\nb", "Title", MB_OK | MB_ICONEXCLAMATION), IDOK);
    EXPECT_EQ(MessageBoxA(nullptr, nullptr, nullptr, MB_OK), IDOK);
    EXPECT_EQ(user_.boxes, (Boxes{{"Title", "a\nb", 48}, {"Error", "", 0}}));
}

}  // namespace
