// A directory for a test's files.
#pragma once

#include <filesystem>
#include <string>

// Made empty for the running test; removed with all that is in it.
class TemporaryDirectory {
  public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    std::string PathOf(const std::string& name) const { return (path_ / name).string(); }

  private:
    std::filesystem::path path_;
};

// All bytes of a file; fails the test when it cannot be read.
std::string ReadBytes(const std::string& path);
void WriteBytes(const std::string& path, const std::string& bytes);

// A text as a text-mode C stream puts it on disk.
std::string OnDisk(const std::string& text);
