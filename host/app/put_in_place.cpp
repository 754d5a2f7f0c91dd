#include "host/app/put_in_place.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>
#include <type_traits>

#ifdef _WIN32
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#endif

namespace maxhost::app {
namespace {

namespace fs = std::filesystem;

bool HaveSameContent(const fs::path& one, const fs::path& other) {
    using Bytes = std::istreambuf_iterator<char>;
    std::error_code error;
    if (!fs::is_regular_file(other, error) ||
        fs::file_size(one, error) != fs::file_size(other, error) || error) {
        return false;
    }
    std::ifstream a(one, std::ios::binary), b(other, std::ios::binary);
    return a && b && std::equal(Bytes(a), {}, Bytes(b), {});
}

// Fails with file_exists where something stands at the target, even if it came there just now.
std::error_code MoveToNewPlace(const fs::path& made, const fs::path& target) {
#ifdef _WIN32
    if (MoveFileExW(made.c_str(), target.c_str(), 0) != 0) {
        return {};
    }
    const DWORD error = GetLastError();
    return error == ERROR_ALREADY_EXISTS || error == ERROR_FILE_EXISTS
               ? std::make_error_code(std::errc::file_exists)
               : std::error_code(static_cast<int>(error), std::system_category());
#else
#ifdef RENAME_NOREPLACE
    if (renameat2(AT_FDCWD, made.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0) {
        return {};
    }
    if (errno == EEXIST) {
        return std::make_error_code(std::errc::file_exists);
    }
#endif
    // Not every file system has that, and not every one hard links; making a new file is left.
    std::error_code error, ignored;
    fs::create_hard_link(made, target, error);
    if (error && error != std::errc::file_exists) {
        fs::copy_file(made, target, fs::copy_options::none, error);
        if (error && error != std::errc::file_exists) {
            fs::remove(target, ignored);  // what there is of it
        }
    }
    if (!error) {
        fs::remove(made, ignored);
    }
    return error;
#endif
}

class Move {
  public:
    explicit Move(const std::vector<Replacement>& files) : files_(files) {}

    // Where it cannot be done: the error, and the number of the file in `failed`.
    std::error_code All(std::size_t& failed) {
        std::error_code error;
        for (failed = 0; failed < files_.size() && !error; ++failed) {
            error = Keep(failed);
        }
        if (!error) {
            for (failed = 0; failed < files_.size() && !error; ++failed) {
                error = Place(files_[failed]);
            }
            for (std::size_t i = failed; error && i-- > 0;) {
                GiveBack(i);
            }
        }
        --failed;
        return error;
    }

  private:
    fs::path Former(std::size_t i) const { return files_[i].room / ("former" + std::to_string(i)); }

    // Gives the former file, if there is one, a second name: it stays in its place meanwhile.
    std::error_code Keep(std::size_t i) const {
        const fs::path& target = files_[i].target;
        std::error_code error;
        const fs::file_status status = fs::symlink_status(target, error);
        if (!files_[i].replaces || !fs::exists(status)) {
            return {};
        }
        if (fs::is_directory(status)) {
            return std::make_error_code(std::errc::is_a_directory);
        }
        fs::create_hard_link(target, Former(i), error);
        if (error) {
            // Not every file system has hard links.
            error.clear();
            fs::copy(target, Former(i), fs::copy_options::copy_symlinks, error);
        }
        return error;
    }

    static std::error_code Place(const Replacement& file) {
        std::error_code error;
        if (file.replaces) {
            fs::rename(file.made, file.target, error);
        } else {
            error = MoveToNewPlace(file.made, file.target);
        }
        const bool isThere = error == std::errc::file_exists && !file.replaces;
        return isThere && HaveSameContent(file.made, file.target) ? std::error_code() : error;
    }

    void GiveBack(std::size_t i) const {
        std::error_code ignored;
        if (fs::exists(fs::symlink_status(Former(i), ignored))) {
            fs::rename(Former(i), files_[i].target, ignored);
        } else if (!fs::exists(fs::symlink_status(files_[i].made, ignored))) {
            fs::remove(files_[i].target, ignored);
        }
    }

    const std::vector<Replacement>& files_;
};

[[noreturn]] void Throw(const Replacement& failed, std::error_code error) {
    throw fs::filesystem_error("cannot be put in place", failed.target, error);
}

void MoveHere(const std::vector<Replacement>& files) {
    std::size_t failed = 0;
    if (const std::error_code error = Move(files).All(failed)) {
        Throw(files[failed], error);
    }
}

#ifndef _WIN32
// Without padding, since its bytes are written to a pipe.
struct Result {
    std::int64_t error = 0;
    std::uint64_t failed = 0;
};
static_assert(std::has_unique_object_representations_v<Result>);

// The other process: moves, tells what came of it, and ends. Where nobody is left to be told, it
// tidies up in that one's place.
[[noreturn]] void MoveAndEnd(const std::vector<Replacement>& files, int toTell) {
    setsid();  // what is sent to the group of a terminal or a job does not reach it
    std::signal(SIGPIPE, SIG_IGN);
    std::size_t failed = 0;
    const std::error_code error = Move(files).All(failed);
    const Result result{error.value(), failed};
    if (write(toTell, &result, sizeof(result)) != static_cast<ssize_t>(sizeof(result))) {
        for (const Replacement& file : files) {
            std::error_code ignored;
            fs::remove_all(file.room, ignored);
        }
    }
    _exit(0);
}
#endif

}  // namespace

void PutInPlace(const std::vector<Replacement>& files) {
#ifndef _WIN32
    int ends[2];
    if (pipe(ends) != 0) {
        return MoveHere(files);
    }
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        MoveAndEnd(files, ends[1]);
    }
    close(ends[1]);
    Result result{EIO, 0};
    const bool isTold =
        child > 0 && read(ends[0], &result, sizeof(result)) == static_cast<ssize_t>(sizeof(result));
    close(ends[0]);
    if (child < 0) {
        return MoveHere(files);
    }
    waitpid(child, nullptr, 0);
    if (!isTold || result.error != 0) {
        Throw(files[result.failed],
              std::error_code(static_cast<int>(result.error), std::generic_category()));
    }
#else
    MoveHere(files);
#endif
}

}  // namespace maxhost::app
