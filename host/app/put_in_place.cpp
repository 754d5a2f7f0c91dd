#include "host/app/put_in_place.h"

#include <string>
#include <system_error>

#ifndef _WIN32
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#endif

namespace maxhost::app {
namespace {

namespace fs = std::filesystem;

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
                fs::rename(files_[failed].made, files_[failed].target, error);
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
        if (!fs::exists(status)) {
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
struct Result {
    int error = 0;
    std::size_t failed = 0;
};

// The other process: moves, tells what came of it, and ends. Where nobody is left to be told, it
// tidies up in that one's place.
[[noreturn]] void MoveAndEnd(const std::vector<Replacement>& files, int toTell) {
    setsid();  // what is sent to the group of a terminal or a job does not reach it
    std::signal(SIGPIPE, SIG_IGN);
    Result result;
    result.error = Move(files).All(result.failed).value();
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
        Throw(files[result.failed], std::error_code(result.error, std::generic_category()));
    }
#else
    MoveHere(files);
#endif
}

}  // namespace maxhost::app
