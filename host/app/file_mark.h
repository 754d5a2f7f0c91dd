// Whether a file was written meanwhile.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <ratio>

namespace maxhost::app {

// Remembers a file, or that there is none. Made from a file that was written a moment ago, it waits
// until the file system's clock, by which it tells, has moved on: 20 ms at most.
class FileMark {
  public:
    explicit FileMark(std::filesystem::path file);

    // Whether there is a regular file now, and whether it was made or written since.
    bool IsThere() const;
    bool IsWritten() const;

    const std::filesystem::path& File() const { return file_; }

  private:
    struct Stamp {
        std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>> time;  // of the last writing
        std::uintmax_t size = 0;
        bool operator==(const Stamp&) const = default;
    };
    std::optional<Stamp> Now() const;

    std::filesystem::path file_;
    std::optional<Stamp> before_;
};

}  // namespace maxhost::app
