// Files that live as long as a test.
#pragma once

#include <filesystem>
#include <string>

class TemporaryFiles {
  public:
    TemporaryFiles();
    ~TemporaryFiles();
    TemporaryFiles(const TemporaryFiles&) = delete;
    TemporaryFiles& operator=(const TemporaryFiles&) = delete;

    const std::filesystem::path& Folder() const { return folder_; }
    // Writes a file and returns its path.
    std::string Write(const std::string& name, const std::string& content) const;

  private:
    std::filesystem::path folder_;
};

std::string ReadFile(const std::filesystem::path& path);
