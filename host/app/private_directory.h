// Room for a file in the making.
#pragma once

#include <filesystem>

namespace maxhost::app {

// A new directory of a name that nothing else has, taken away with all it holds at the object's
// end. What is made in it comes to its place whole, by renaming, since both are on one file system.
class PrivateDirectory {
  public:
    // Throws std::filesystem::filesystem_error when no directory can be made in `parent`.
    explicit PrivateDirectory(const std::filesystem::path& parent);
    ~PrivateDirectory();

    const std::filesystem::path& Path() const { return path_; }

    PrivateDirectory(const PrivateDirectory&) = delete;
    PrivateDirectory& operator=(const PrivateDirectory&) = delete;

  private:
    std::filesystem::path path_;
};

// Where a file to be replaced really stands: what symbolic links lead to, so that they stay.
std::filesystem::path BehindLinks(const std::filesystem::path& file);

}  // namespace maxhost::app
