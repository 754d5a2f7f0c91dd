#include "host/win32/user.h"

#include <commctrl.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <string>
#include <vector>

namespace {

struct Recorder : win32::User {
    long OnDialog(int templateId) override {
        dialogs.push_back(templateId);
        return answer;
    }
    void OnMessageBox(const std::string& title, const std::string& text, unsigned flags) override {
        boxes.push_back(title + "|" + text + "|" + std::to_string(flags));
    }

    long answer = 0;
    std::vector<int> dialogs;
    std::vector<std::string> boxes;
};

class UserTest : public testing::Test {
  protected:
    void SetUp() override {
        module_ = LoadLibraryA(MODULE_DIR "/win32_test_accepting.dll");
        ASSERT_NE(module_, nullptr);
        win32::SetUser(&user_);
    }
    void TearDown() override {
        win32::SetUser(nullptr);
        FreeLibrary(module_);
    }
    INT_PTR Dialog(int number) {
        return DialogBoxParamA(module_, MAKEINTRESOURCEA(number), nullptr, nullptr, 0);
    }

    HMODULE module_ = nullptr;
    Recorder user_;
};

TEST_F(UserTest, DialogsAreAnsweredByNumber) {
    EXPECT_EQ(Dialog(103), 0);
    user_.answer = 1;
    EXPECT_EQ(Dialog(102), 1);
    EXPECT_EQ(user_.dialogs, (std::vector<int>{103, 102}));
}

TEST_F(UserTest, DialogOfNoModuleOrByNameFails) {
    user_.answer = 1;
    EXPECT_EQ(DialogBoxParamA(nullptr, MAKEINTRESOURCEA(103), nullptr, nullptr, 0), -1);
    EXPECT_EQ(DialogBoxParamA(module_, "NAME", nullptr, nullptr, 0), -1);
    EXPECT_EQ(Dialog(0), -1);
    EXPECT_TRUE(user_.dialogs.empty());
}

TEST_F(UserTest, MessageBoxesShowTitleTextAndFlags) {
    EXPECT_EQ(MessageBoxA(nullptr, "a\nb", "Title", MB_OK | MB_ICONEXCLAMATION), IDOK);
    EXPECT_EQ(MessageBoxA(nullptr, nullptr, nullptr, MB_OK), IDOK);
    EXPECT_EQ(user_.boxes, (std::vector<std::string>{"Title|a\nb|48", "Error||0"}));
}

TEST_F(UserTest, WithoutAUserTheDefaultButtonIsPressed) {
    EXPECT_EQ(win32::SetUser(nullptr), &user_);
    EXPECT_EQ(Dialog(103), 1);
    EXPECT_EQ(MessageBoxA(nullptr, "text", "title", MB_OK), IDOK);
    EXPECT_TRUE(user_.dialogs.empty());
    EXPECT_TRUE(user_.boxes.empty());
}

TEST(DebugOutput, GoesToTheSinkOrNowhere) {
    OutputDebugStringA("dropped");
    std::string seen;
    win32::SetDebugSink(
        [](const char* text, void* context) { static_cast<std::string*>(context)->append(text); },
        &seen);
    OutputDebugStringA("one\n");
    OutputDebugStringA(nullptr);
    OutputDebugStringA("two");
    win32::SetDebugSink(nullptr, nullptr);
    OutputDebugStringA("dropped");
    EXPECT_EQ(seen, "one\ntwo");
}

TEST(CommonControls, CanBeInitialisedRepeatedly) {
    InitCommonControls();
    InitCommonControls();
}

}  // namespace
