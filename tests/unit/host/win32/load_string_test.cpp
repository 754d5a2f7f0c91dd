#include <gtest/gtest.h>
#include <windows.h>

#include <string>

namespace {

class LoadStringTest : public testing::Test {
  protected:
    void SetUp() override {
        module_ = LoadLibraryA(MODULE_DIR "/win32_test_accepting.dll");
        ASSERT_NE(module_, nullptr);
    }
    void TearDown() override { FreeLibrary(module_); }

    int Load(UINT id, int size) { return LoadStringA(module_, id, buffer_, size); }

    HMODULE module_ = nullptr;
    char buffer_[256] = "before";
};

TEST_F(LoadStringTest, GivesTextAndLength) {
    EXPECT_EQ(Load(1, sizeof(buffer_)), 14);
    EXPECT_STREQ(buffer_, "Fourteen bytes");
}

TEST_F(LoadStringTest, FindsTextsInEveryBlock) {
    EXPECT_EQ(Load(15, sizeof(buffer_)), 15);
    EXPECT_STREQ(buffer_, "last of a block");
    EXPECT_EQ(Load(16, sizeof(buffer_)), 16);
    EXPECT_STREQ(buffer_, "first of a block");
    EXPECT_EQ(Load(100, sizeof(buffer_)), 8);
    EXPECT_STREQ(buffer_, "far away");
}

TEST_F(LoadStringTest, CutsToSizeLessOne) {
    EXPECT_EQ(Load(1, 9), 8);
    EXPECT_STREQ(buffer_, "Fourteen");
    EXPECT_EQ(Load(1, 15), 14);
    EXPECT_STREQ(buffer_, "Fourteen bytes");
    EXPECT_EQ(Load(1, 14), 13);
    EXPECT_STREQ(buffer_, "Fourteen byte");
    EXPECT_EQ(Load(1, 1), 0);
    EXPECT_STREQ(buffer_, "");
}

TEST_F(LoadStringTest, MissingTextGivesZero) {
    EXPECT_EQ(Load(0, sizeof(buffer_)), 0);
    EXPECT_EQ(Load(2, sizeof(buffer_)), 0);
    EXPECT_EQ(Load(17, sizeof(buffer_)), 0) << "an empty text is not kept";
    EXPECT_EQ(Load(99, sizeof(buffer_)), 0);
    EXPECT_EQ(Load(65535, sizeof(buffer_)), 0);
}

#ifndef _WIN32

TEST_F(LoadStringTest, BadArgumentsGiveZero) {
    EXPECT_EQ(LoadStringA(nullptr, 1, buffer_, sizeof(buffer_)), 0);
    EXPECT_EQ(LoadStringA(module_, 1, nullptr, sizeof(buffer_)), 0);
    EXPECT_EQ(Load(1, 0), 0);
    EXPECT_EQ(Load(1, -1), 0);
    EXPECT_EQ(Load(65536 + 1, sizeof(buffer_)), 0);
}

#endif

}  // namespace
