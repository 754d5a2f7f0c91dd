#include "kta/whole_file.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <system_error>

#include "tests/support/temporary_directory.h"

#ifndef _WIN32
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <thread>
#endif

namespace {

namespace fs = std::filesystem;

std::vector<std::string> NamesIn(const fs::path& directory) {
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(directory)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

void Replace(const fs::path& file, const std::string& text) {
    kta::ReplaceWholeFile(file, [&](std::ostream& out) { out << text; });
}

std::error_code WhyNotReplaced(const fs::path& file, const std::string& text = "new") {
    try {
        Replace(file, text);
    } catch (const std::system_error& error) {
        return error.code();
    }
    return {};
}

TEST(PrivateDirectoryTest, GoesWithAllItHolds) {
    const support::TemporaryDirectory parent;
    {
        const kta::PrivateDirectory room(parent.Path());
        EXPECT_TRUE(fs::is_directory(room.Path()));
        EXPECT_EQ(room.Path().parent_path(), parent.Path());
        support::WriteFile(room.Path() / "f", "text");
    }
    EXPECT_TRUE(fs::is_empty(parent.Path()));
}

#ifndef _WIN32
// Leaves a private directory with a file in it, as a program does that is killed.
void LeaveOrphan(const fs::path& parent) {
    const pid_t child = fork();
    if (child == 0) {
        const kta::PrivateDirectory room(parent);
        support::WriteFile(room.Path() / "f", "text");
        _exit(0);
    }
    waitpid(child, nullptr, 0);
}

TEST(PrivateDirectoryTest, OrphansAreTakenAwayByTheNext) {
    const support::TemporaryDirectory parent;
    LeaveOrphan(parent.Path());
    LeaveOrphan(parent.Path());
    ASSERT_EQ(NamesIn(parent.Path()).size(), 1u) << "the second took the first one's away";
    { const kta::PrivateDirectory room(parent.Path()); }
    EXPECT_TRUE(fs::is_empty(parent.Path()));
}

TEST(PrivateDirectoryTest, ProgramsKilledEarlyLeaveOrphansToo) {
    const support::TemporaryDirectory parent;
    LeaveOrphan(parent.Path());
    const fs::path orphan = parent.Path() / NamesIn(parent.Path()).at(0);
    fs::remove(orphan / "f");
    fs::remove(orphan / "owner");
    { const kta::PrivateDirectory room(parent.Path()); }
    EXPECT_TRUE(fs::is_empty(parent.Path()));
    LeaveOrphan(parent.Path());
    fs::resize_file(parent.Path() / NamesIn(parent.Path()).at(0) / "owner", 0);
    { const kta::PrivateDirectory room(parent.Path()); }
    EXPECT_TRUE(fs::is_empty(parent.Path()));
}

TEST(PrivateDirectoryTest, OrphanOfAnotherMachineStaysForADay) {
    const support::TemporaryDirectory parent;
    LeaveOrphan(parent.Path());
    std::string name = NamesIn(parent.Path()).at(0);
    name[5] = name[5] == '0' ? '1' : '0';  // the first digit of what stands for the machine
    const fs::path orphan = parent.Path() / name;
    fs::rename(parent.Path() / NamesIn(parent.Path()).at(0), orphan);
    { const kta::PrivateDirectory room(parent.Path()); }
    EXPECT_TRUE(fs::exists(orphan));
    fs::last_write_time(orphan / "owner",
                        fs::file_time_type::clock::now() - std::chrono::hours(25));
    { const kta::PrivateDirectory room(parent.Path()); }
    EXPECT_FALSE(fs::exists(orphan));
}

TEST(PrivateDirectoryTest, DirectoriesOfOthersStay) {
    const support::TemporaryDirectory parent;
    for (const char* const name :
         {".hdo-mine", ".hdo-0123abcd", ".hdo-012345ABCD", "hdo-012345abcd"}) {
        fs::create_directory(parent.Path() / name);
    }
    fs::create_directory(parent.Path() / ".hdo-012345abcd");
    support::WriteFile(parent.Path() / ".hdo-012345abcd" / "f", "without an owner");
    { const kta::PrivateDirectory room(parent.Path()); }
    EXPECT_EQ(NamesIn(parent.Path()).size(), 5u);
}
#endif

TEST(PrivateDirectoryTest, EachHasItsOwn) {
    const support::TemporaryDirectory parent;
    const kta::PrivateDirectory first(parent.Path()), second(parent.Path());
    EXPECT_NE(first.Path(), second.Path());
    EXPECT_EQ(NamesIn(parent.Path()).size(), 2u);
}

TEST(PrivateDirectoryTest, NeedsItsParent) {
    const support::TemporaryDirectory parent;
    EXPECT_THROW(kta::PrivateDirectory(parent.Path() / "no"), fs::filesystem_error);
    EXPECT_THROW(kta::PrivateDirectory(parent.Write("f", "")), fs::filesystem_error);
}

TEST(ReadFileTest, GivesEveryByteOrNothing) {
    const support::TemporaryDirectory directory;
    const fs::path file = directory.Path() / "file";
    EXPECT_EQ(kta::ReadWholeFile(file), std::nullopt);
    EXPECT_EQ(kta::ReadWholeFile(directory.Path()), std::nullopt);
    Replace(file, "");
    EXPECT_EQ(kta::ReadWholeFile(file), "");
    const std::string bytes("a\r\n\x1a\0\xff", 6);
    Replace(file, bytes);
    EXPECT_EQ(kta::ReadWholeFile(file), bytes);
}

TEST(ReplaceFileTest, MakesAFileOrReplacesTheFormerOne) {
    const support::TemporaryDirectory directory;
    const fs::path file = directory.Path() / "f";
    Replace(file, "first");
    EXPECT_EQ(support::ReadFile(file), "first");
    support::WriteFile(file, std::string(100000, 'x'));
    Replace(file, "second\n");
    EXPECT_EQ(support::ReadFile(file), "second\n");
    EXPECT_EQ(NamesIn(directory.Path()), std::vector<std::string>{"f"});
}

TEST(ReplaceFileTest, TakesANameWithoutDirectory) {
    const support::WorkDirectory directory;
    Replace("f", "text");
    EXPECT_EQ(support::ReadFile(directory.Path() / "f"), "text");
}

TEST(ReplaceFileTest, FormerFileStaysUntilTheNewOneIsWhole) {
    const support::TemporaryDirectory directory;
    const std::string file = directory.Write("f", "former");
    const auto breakOff = [&](std::ostream& out) {
        out << std::string(100000, 'x') << std::flush;
        EXPECT_EQ(support::ReadFile(file), "former");
        throw std::runtime_error("broken off");
    };
    EXPECT_THROW(kta::ReplaceWholeFile(file, breakOff), std::runtime_error);
    EXPECT_EQ(support::ReadFile(file), "former");
    EXPECT_EQ(NamesIn(directory.Path()), std::vector<std::string>{"f"});
}

TEST(ReplaceFileTest, SaysWhyAFileCannotBeWritten) {
    const support::TemporaryDirectory directory;
    EXPECT_EQ(WhyNotReplaced(directory.Path() / "no" / "f"), std::errc::no_such_file_or_directory);
    fs::create_directory(directory.Path() / "d");
    EXPECT_EQ(WhyNotReplaced(directory.Path() / "d"), std::errc::is_a_directory);
    EXPECT_EQ(NamesIn(directory.Path()), std::vector<std::string>{"d"});
}

#ifndef _WIN32
TEST(ReplaceFileTest, SymbolicLinksAndPermissionsStay) {
    const support::TemporaryDirectory directory;
    const std::string file = directory.Write("f", "former");
    fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write);
    fs::create_symlink("f", directory.Path() / "link");
    Replace(directory.Path() / "link", "new");
    EXPECT_TRUE(fs::is_symlink(directory.Path() / "link"));
    EXPECT_EQ(support::ReadFile(file), "new");
    EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST(ReplaceFileTest, DevicesAreLeftAlone) {
    EXPECT_EQ(WhyNotReplaced("/dev/null"), std::errc::operation_not_supported);
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST(ReplaceFileTest, OnesSideBySideAreEachWhole) {
    const support::TemporaryDirectory directory;
    const fs::path file = directory.Path() / "f";
    std::vector<std::thread> writers;
    for (const char letter : {'a', 'b', 'c', 'd'}) {
        writers.emplace_back([&, letter] {
            for (int i = 0; i < 20; ++i) {
                Replace(file, std::string(50000, letter));
            }
        });
    }
    for (std::thread& writer : writers) {
        writer.join();
    }
    const std::string text = support::ReadFile(file);
    EXPECT_EQ(text, std::string(50000, text.at(0)));
    EXPECT_EQ(NamesIn(directory.Path()), std::vector<std::string>{"f"});
}

// No room for more is told as the system tells it; the limit stands for the disk's end.
TEST(ReplaceFileTest, LackOfRoomIsNoticedAndTheFormerFileStays) {
    const support::TemporaryDirectory directory;
    const std::string file = directory.Write("f", "former");
    rlimit former{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &former), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit tight = {10, former.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &tight), 0);
    const std::error_code small = WhyNotReplaced(file, std::string(11, 'x'));
    const std::error_code large = WhyNotReplaced(file, std::string(100000, 'x'));
    setrlimit(RLIMIT_FSIZE, &former);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(small, std::errc::file_too_large);
    EXPECT_EQ(large, std::errc::file_too_large);
    EXPECT_EQ(support::ReadFile(file), "former");
    EXPECT_EQ(NamesIn(directory.Path()), std::vector<std::string>{"f"});
}
#endif

}  // namespace
