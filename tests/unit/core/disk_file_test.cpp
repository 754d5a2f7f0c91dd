#include "core/disk_file.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/temporary_directory.h"
#include "wrapped_calls.h"

namespace {

using Plinth::DiskFile;
using Plinth::String;

class DiskFileTest : public testing::Test {
  protected:
    DiskFileTest() : path(directory.PathOf("file.bin")) {}

    bool Open(Plinth::UInt32 mode, bool binary = true) {
        return file.Open(path.c_str(), mode, binary);
    }

    support::TemporaryDirectory directory;
    std::string path;
    DiskFile file;
};

TEST_F(DiskFileTest, StandsInTheClassTree) {
    EXPECT_TRUE((std::is_base_of_v<Plinth::Stream, Plinth::File>));
    EXPECT_TRUE((std::is_base_of_v<Plinth::File, DiskFile>));
    EXPECT_FALSE(std::is_copy_constructible_v<DiskFile>);
}

// ---------------------------------------------------------------- opening

TEST_F(DiskFileTest, ReadingNeedsTheFile) {
    EXPECT_FALSE(Open(1));
    EXPECT_FALSE(Open(3));
    support::WriteFile(path, "abc");
    EXPECT_TRUE(Open(1));
    EXPECT_TRUE(Open(3));
}

TEST_F(DiskFileTest, WritingEmptiesTheFile) {
    support::WriteFile(path, "abc");
    ASSERT_TRUE(Open(2, false));
    file.Close();
    EXPECT_EQ(support::ReadFile(path), "");
    support::WriteFile(path, "abc");
    ASSERT_TRUE(Open(4));
    file.Close();
    EXPECT_EQ(support::ReadFile(path), "");
}

TEST_F(DiskFileTest, UpdateKeepsTheFile) {
    support::WriteFile(path, "abc");
    ASSERT_TRUE(Open(3));
    EXPECT_TRUE(file.PutChar('X'));
    file.Close();
    EXPECT_EQ(support::ReadFile(path), "Xbc");
}

TEST_F(DiskFileTest, AppendingGoesOnAtTheEnd) {
    ASSERT_TRUE(Open(5));
    EXPECT_TRUE(file.PutChar('a'));
    ASSERT_TRUE(Open(6));
    EXPECT_TRUE(file.PutChar('b'));
    EXPECT_TRUE(file.Seek(0));
    EXPECT_EQ(file.GetChar(), 'a');
    file.Close();
    EXPECT_EQ(support::ReadFile(path), "ab");
}

TEST_F(DiskFileTest, ReadOnlyAndWriteOnlyModes) {
    support::WriteFile(path, "abc");
    ASSERT_TRUE(Open(1));
    EXPECT_EQ(file.Write("x", 1), 0u);
    EXPECT_FALSE(file.PutChar('x'));
    ASSERT_TRUE(Open(2));
    char byte;
    EXPECT_EQ(file.Read(&byte, 1), 0u);
    EXPECT_EQ(file.GetChar(), -1);
}

TEST_F(DiskFileTest, UnknownModesFail) {
    support::WriteFile(path, "abc");
    for (Plinth::UInt32 mode : {0u, 7u, 4294967295u}) {
        EXPECT_FALSE(Open(mode, false));
        EXPECT_FALSE(Open(mode, true));
        EXPECT_FALSE(file.IsOpen());
        EXPECT_EQ(file.Mode(), mode);
    }
    EXPECT_EQ(support::ReadFile(path), "abc");
}

TEST_F(DiskFileTest, NameWithoutTextFails) {
    EXPECT_FALSE(file.Open(String(), 2, true));
    EXPECT_FALSE(file.Open("", 2, true));
    EXPECT_FALSE(file.IsOpen());
}

TEST_F(DiskFileTest, KeepsModeAndNameOfEveryOpen) {
    EXPECT_EQ(file.Mode(), 0u);
    EXPECT_STREQ(file.Name().Text(), "");
    ASSERT_TRUE(Open(2));
    EXPECT_EQ(file.Mode(), 2u);
    EXPECT_STREQ(file.Name().Data(), path.c_str());
    const std::string missing = directory.PathOf("missing/file");
    EXPECT_FALSE(file.Open(missing.c_str(), 1, true));
    EXPECT_EQ(file.Mode(), 1u);
    EXPECT_STREQ(file.Name().Data(), missing.c_str());
    file.Close();
    EXPECT_STREQ(file.Name().Data(), missing.c_str());
}

TEST_F(DiskFileTest, OpeningClosesTheOpenFile) {
    ASSERT_TRUE(Open(2));
    ASSERT_EQ(file.Write("abc", 3), 3u);
    EXPECT_FALSE(file.Open(directory.PathOf("missing").c_str(), 1, true));
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(support::ReadFile(path), "abc");
}

TEST_F(DiskFileTest, OpensAgainUnderItsOwnName) {
    support::WriteFile(path, "abc");
    ASSERT_TRUE(Open(1));
    ASSERT_TRUE(file.Open(file.Name(), 1, true));
    EXPECT_EQ(file.GetChar(), 'a');
}

#ifndef _WIN32
TEST_F(DiskFileTest, ModesOfTheCLibrary) {
    TakeOpenModes();
    for (Plinth::UInt32 mode = 1; mode <= 6; ++mode) {
        Open(mode, false);
        Open(mode, true);
    }
    Open(0, false);
    Open(7, true);
    const std::vector<std::string> expected = {"rt",  "rb",  "wt", "wb", "r+t", "r+b",
                                               "w+t", "w+b", "at", "ab", "a+t", "a+b"};
    EXPECT_EQ(TakeOpenModes(), expected);
}
#endif

TEST_F(DiskFileTest, TextModeWritesTheSystemsLineEnds) {
    ASSERT_TRUE(Open(2, false));
    ASSERT_EQ(file.Write("a\nb\n", 4), 4u);
    file.Close();
    EXPECT_EQ(support::ReadFile(path), support::OnDisk("a\nb\n"));
    ASSERT_TRUE(Open(2, true));
    ASSERT_EQ(file.Write("a\nb\n", 4), 4u);
    file.Close();
    EXPECT_EQ(support::ReadFile(path), "a\nb\n");
}

// ---------------------------------------------------------------- closing

TEST_F(DiskFileTest, ClosedFileAnswersWithoutHandle) {
    char byte = 'x';
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(file.Size(), 4294967295u);
    EXPECT_EQ(file.Position(), 4294967295u);
    EXPECT_EQ(file.Read(&byte, 1), 0u);
    EXPECT_EQ(file.Write(&byte, 1), 0u);
    EXPECT_TRUE(file.AtEnd());
    EXPECT_EQ(file.GetChar(), -1);
    EXPECT_FALSE(file.PutChar('x'));
    EXPECT_FALSE(file.Skip(0));
    EXPECT_FALSE(file.Seek(0));
    file.Flush();
    file.Close();
    EXPECT_EQ(byte, 'x');
}

TEST_F(DiskFileTest, CloseTakesTheHandle) {
    ASSERT_TRUE(Open(2));
    EXPECT_TRUE(file.IsOpen());
    file.Close();
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(file.Size(), 4294967295u);
    file.Close();
}

TEST_F(DiskFileTest, DestructionClosesTheFile) {
    std::unique_ptr<Plinth::Stream> stream;
    {
        auto opened = std::make_unique<DiskFile>();
        ASSERT_TRUE(opened->Open(path.c_str(), 2, true));
        ASSERT_EQ(opened->Write("abc", 3), 3u);
        stream = std::move(opened);
    }
    EXPECT_EQ(support::ReadFile(path), "");
    stream.reset();
    EXPECT_EQ(support::ReadFile(path), "abc");
}

// ---------------------------------------------------------------- transfer and position

TEST_F(DiskFileTest, TransfersAreAllOrNothing) {
    ASSERT_TRUE(Open(4));
    EXPECT_EQ(file.Write("abcde", 5), 5u);
    EXPECT_EQ(file.Write("abcde", 0), 0u);
    ASSERT_TRUE(file.Seek(0));
    char buffer[8] = {};
    EXPECT_EQ(file.Read(buffer, 3), 3u);
    EXPECT_STREQ(buffer, "abc");
    EXPECT_EQ(file.Read(buffer, 3), 0u);
    EXPECT_TRUE(file.AtEnd());
}

TEST_F(DiskFileTest, EndIsMetByAReadAlone) {
    support::WriteFile(path, "a");
    ASSERT_TRUE(Open(1));
    EXPECT_FALSE(file.AtEnd());
    EXPECT_EQ(file.GetChar(), 'a');
    EXPECT_FALSE(file.AtEnd());
    EXPECT_EQ(file.GetChar(), -1);
    EXPECT_TRUE(file.AtEnd());
}

TEST_F(DiskFileTest, GetCharGivesUnsignedBytes) {
    ASSERT_TRUE(Open(4));
    EXPECT_TRUE(file.PutChar('\xff'));
    ASSERT_TRUE(file.Seek(0));
    EXPECT_EQ(file.GetChar(), 255);
}

TEST_F(DiskFileTest, SizeKeepsThePosition) {
    support::WriteFile(path, "abcdef");
    ASSERT_TRUE(Open(1));
    EXPECT_EQ(file.Position(), 0u);
    ASSERT_TRUE(file.Seek(2));
    EXPECT_EQ(file.Size(), 6u);
    EXPECT_EQ(file.Position(), 2u);
    EXPECT_EQ(file.GetChar(), 'c');
}

// Where `long` has 32 bits, no position is that far.
#ifndef _WIN32
TEST_F(DiskFileTest, SizeKeepsAPositionBeyond2GiB) {
    support::WriteFile(path, "");
    std::filesystem::resize_file(path, 3u << 30);
    ASSERT_TRUE(Open(1));
    ASSERT_TRUE(file.Seek(0x7fffffffu));
    ASSERT_TRUE(file.Skip(0x10));
    EXPECT_EQ(file.Size(), 3u << 30);
    EXPECT_EQ(file.Position(), 0x8000000fu);
}
#endif

TEST_F(DiskFileTest, SkipGoesForwardSeekFromTheStart) {
    support::WriteFile(path, "abcdef");
    ASSERT_TRUE(Open(1));
    EXPECT_TRUE(file.Skip(2));
    EXPECT_EQ(file.GetChar(), 'c');
    EXPECT_TRUE(file.Skip(1));
    EXPECT_EQ(file.GetChar(), 'e');
    EXPECT_TRUE(file.Seek(1));
    EXPECT_EQ(file.GetChar(), 'b');
    EXPECT_FALSE(file.Skip(4294967295u));
    EXPECT_FALSE(file.Seek(0x80000000u));
    EXPECT_EQ(file.Position(), 2u);
}

TEST_F(DiskFileTest, FlushPutsBytesOnDisk) {
    ASSERT_TRUE(Open(2));
    ASSERT_EQ(file.Write("abc", 3), 3u);
    file.Flush();
    EXPECT_EQ(std::filesystem::file_size(path), 3u);
}

TEST_F(DiskFileTest, TypedOperatorsThroughTheFile) {
    ASSERT_TRUE(Open(4));
    file << "halden" << 7 << 2.5f << true;
    EXPECT_EQ(file.Size(), 7u + 4 + 4 + 1);
    ASSERT_TRUE(file.Seek(0));
    String text;
    int number = 0;
    float real = 0;
    bool flag = false;
    file >> text >> number >> real >> flag;
    EXPECT_STREQ(text.Data(), "halden");
    EXPECT_EQ(number, 7);
    EXPECT_EQ(real, 2.5f);
    EXPECT_TRUE(flag);
}

}  // namespace
