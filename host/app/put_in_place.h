// Putting files that were made elsewhere in place, together.
#pragma once

#include <filesystem>
#include <vector>

namespace maxhost::app {

struct Replacement {
    std::filesystem::path made;
    std::filesystem::path target;  // a symbolic link is replaced itself
    // A directory that holds the former file meanwhile. All three are on one file system.
    std::filesystem::path room;
    // Not: a file that stands at the target stays, which is good where its content is the same.
    bool replaces = true;
};

// Moves the files to their targets in order, each over a former file there if it may be replaced.
// All or none: when one cannot be moved, the former files come back and
// std::filesystem::filesystem_error is thrown with that target (file_exists where another content
// stands there that may not be replaced, whoever put it there just now). The rooms may be removed
// afterwards. Elsewhere than on Windows a process of its own moves the files, so that the end of
// this one, by SIGKILL too, does not come between two of them.
void PutInPlace(const std::vector<Replacement>& files);

}  // namespace maxhost::app
