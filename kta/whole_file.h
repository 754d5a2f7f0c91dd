// Files that are read whole, and files that come to their place whole: a former file is replaced by
// a finished one or stays.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <limits>
#include <optional>
#include <ostream>
#include <string>

namespace kta {

// The file's bytes, of a longer one `most`; nothing where it cannot be read.
std::optional<std::string> ReadWholeFile(
    const std::filesystem::path& file,
    std::size_t most = static_cast<std::size_t>(std::numeric_limits<std::streamsize>::max()));

// A new directory of a name that nothing else has, taken away with all it holds at the object's
// end. What is made in it comes to its place whole, by renaming, since both are on one file system.
// A file "owner" in it is locked meanwhile: directories in `parent` that nobody owns any more,
// since their program was killed, are taken away first.
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
    std::intptr_t owner_;  // the open file, as the system knows it
};

// Where a file to be replaced really stands: what symbolic links lead to, so that they stay.
std::filesystem::path BehindLinks(const std::filesystem::path& file);

// Whether there is a file that may not be written to.
bool IsWriteProtected(const std::filesystem::path& file);

// Throws the std::system_error of ReplaceWholeFile where something stands that is not replaced.
void CheckReplaceable(const std::filesystem::path& file);

// Makes a file, or replaces it as a whole, by what `write` writes. When that cannot be, the former
// file stays and a std::system_error is thrown whose code says why (no space left on the device);
// so it is when anything but a regular file stands there, or one that is write-protected. What
// `write` throws goes through. The stream throws, so that `write` ends where the disk is full.
void ReplaceWholeFile(const std::filesystem::path& file,
                      const std::function<void(std::ostream& out)>& write);

}  // namespace kta
