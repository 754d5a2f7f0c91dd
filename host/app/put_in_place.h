// Putting files that were made elsewhere in place, together.
#pragma once

#include <filesystem>
#include <vector>

namespace maxhost::app {

struct Replacement {
    std::filesystem::path made;
    std::filesystem::path target;  // on the same file system; a symbolic link is replaced itself
};

// Moves the files to their targets in order, each over a former file there. All or none: when one
// cannot be moved, the former files come back and std::filesystem::filesystem_error is thrown with
// that target. `room` is a directory of the same file system, which holds the former files
// meanwhile and may be removed afterwards. Elsewhere than on Windows a process of its own moves
// the files, so that the end of this one, by SIGKILL too, does not come between two of them.
void PutInPlace(const std::vector<Replacement>& files, const std::filesystem::path& room);

}  // namespace maxhost::app
