// Directories that live as long as a test, and whole files.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <string>
#include <system_error>

namespace support {

// All bytes of a file. Throws std::runtime_error when it cannot be read.
inline std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    if (!stream) {
        throw std::runtime_error(path.string() + " cannot be read");
    }
    return {std::istreambuf_iterator<char>(stream), {}};
}

// Throws std::runtime_error when the file cannot be written.
inline void WriteFile(const std::filesystem::path& path, const std::string& bytes) {
    std::ofstream stream(path, std::ios::binary);
    stream << bytes;
    if (!stream.flush()) {
        throw std::runtime_error(path.string() + " cannot be written");
    }
}

// A text as a text-mode C stream puts it on disk.
inline std::string OnDisk(const std::string& text) {
    std::string bytes;
    for (const char c : text) {
#ifdef _WIN32
        if (c == '\n') {
            bytes += '\r';
        }
#endif
        bytes += c;
    }
    return bytes;
}

// Begins empty, under a name that no other test has; goes with all that is in it.
class TemporaryDirectory {
  public:
    TemporaryDirectory() {
        std::random_device seed;
        const std::string name = std::to_string(seed()) + std::to_string(seed());
        path_ = std::filesystem::temp_directory_path() / ("hdo-test-" + name);
        std::filesystem::create_directories(path_);
        path_ = std::filesystem::canonical(path_);
    }
    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::filesystem::path& Path() const { return path_; }
    std::string PathOf(const std::string& name) const { return (path_ / name).string(); }
    // Writes a file and returns its path.
    std::string Write(const std::string& name, const std::string& bytes) const {
        WriteFile(path_ / name, bytes);
        return PathOf(name);
    }

  private:
    std::filesystem::path path_;
};

// Makes a directory the current one while it lives.
class CurrentDirectory {
  public:
    explicit CurrentDirectory(const std::filesystem::path& path)
        : former_(std::filesystem::current_path()) {
        std::filesystem::current_path(path);
    }
    ~CurrentDirectory() {
        std::error_code ignored;
        std::filesystem::current_path(former_, ignored);
    }
    CurrentDirectory(const CurrentDirectory&) = delete;
    CurrentDirectory& operator=(const CurrentDirectory&) = delete;

  private:
    std::filesystem::path former_;
};

// A temporary directory that is the current one.
class WorkDirectory {
  public:
    WorkDirectory() : current_(directory_.Path()) {}

    const std::filesystem::path& Path() const { return directory_.Path(); }

  private:
    TemporaryDirectory directory_;
    CurrentDirectory current_;
};

}  // namespace support
