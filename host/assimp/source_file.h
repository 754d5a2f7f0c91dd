// The file that a model is read from: whether it is fit to be read, how large the model is, and its
// text in UTF-8.
#pragma once

#include <assimp/DefaultIOSystem.h>

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <utility>

namespace maxhost::import {

// The same file by a path without "..", with which some readers do not find the files beside it.
std::string PathWithoutDots(const std::string& path);

// Throws ImportError for what is no file with bytes in it, and for a file whose name says that it
// is text (.obj, .ase, .dae, ...) and that holds control characters which no text has. Text may be
// UTF-16, with or without a byte order mark.
void CheckSourceFile(const std::string& path);

// Bytes of the file and of the files beside it that its format may refer to.
std::uint64_t SourceSize(const std::string& path);

// Hands out text files that are UTF-16 as UTF-8 without a byte order mark, which few of Assimp's
// readers do themselves, and all others as they are, whose reading it counts.
class SourceFiles : public Assimp::DefaultIOSystem {
  public:
    using ReportBytes = std::function<void(std::uint64_t bytes)>;

    // `report` is told how many bytes of all files were read so far.
    explicit SourceFiles(ReportBytes report) : report_(std::move(report)) {}

    bool Exists(const char* path) const override;
    Assimp::IOStream* Open(const char* path, const char* mode) override;

    // The files that were opened or looked for, there or not; absolute.
    const std::set<std::string>& Asked() const { return asked_; }

  private:
    void Note(const char* path) const;

    const ReportBytes report_;
    mutable std::set<std::string> asked_;
    std::uint64_t bytesRead_ = 0;
};

}  // namespace maxhost::import
