#include "core/holder.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "tests/support/temporary_directory.h"

namespace {

std::vector<int> released;

void Note(int* value) {
    released.push_back(*value);
}

using NotingHolder = Plinth::Holder<int, Note>;

class HolderTest : public testing::Test {
  protected:
    void SetUp() override { released.clear(); }

    int one = 1;
    int two = 2;
};

TEST_F(HolderTest, ReleasesWhenItGoesOutOfScope) {
    {
        const NotingHolder holder(&one);
        EXPECT_EQ(holder.Get(), &one);
        EXPECT_TRUE(released.empty());
    }
    EXPECT_EQ(released, std::vector<int>{1});
}

TEST_F(HolderTest, NothingIsNeverReleased) {
    {
        NotingHolder holder;
        EXPECT_EQ(holder.Get(), nullptr);
        holder.Reset(nullptr);
    }
    EXPECT_TRUE(released.empty());
}

TEST_F(HolderTest, ResetReleasesTheFormer) {
    {
        NotingHolder holder(&one);
        holder.Reset(&one);
        EXPECT_TRUE(released.empty());
        holder.Reset(&two);
        EXPECT_EQ(released, std::vector<int>{1});
        holder.Reset(nullptr);
        EXPECT_EQ(released, (std::vector<int>{1, 2}));
    }
    EXPECT_EQ(released.size(), 2u);
}

TEST_F(HolderTest, ReleaseHandsThePointerOver) {
    {
        NotingHolder holder(&one);
        EXPECT_EQ(holder.Release(), &one);
        EXPECT_EQ(holder.Get(), nullptr);
    }
    EXPECT_TRUE(released.empty());
}

TEST_F(HolderTest, FilesAreClosed) {
    const support::TemporaryDirectory directory;
    const std::string path = directory.PathOf("file");
    {
        const Plinth::FileHolder file(std::fopen(path.c_str(), "wb"));
        ASSERT_NE(file.Get(), nullptr);
        ASSERT_EQ(std::fwrite("abc", 3, 1, file.Get()), 1u);
    }
    EXPECT_EQ(support::ReadFile(path), "abc");
}

struct Counted {
    explicit Counted(int& count) : alive(count) { ++alive; }
    ~Counted() { --alive; }
    int& alive;
};

TEST_F(HolderTest, ObjectsAreDestroyed) {
    int alive = 0;
    {
        const Plinth::ObjectHolder<Counted> holder(new Counted(alive));
        EXPECT_EQ(holder->alive, 1);
    }
    EXPECT_EQ(alive, 0);
}

}  // namespace
