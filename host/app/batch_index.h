// What an export was made of and what it made, as hashes in a file beside it, so that a batch does
// it again only where something differs; and the lock that keeps two batches from one export.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "host/app/json_parts.h"
#include "host/app/options.h"

namespace maxhost::app {

// What decides on an export beside the files that it reads.
struct Recipe {
    std::filesystem::path scene;       // absolute
    std::filesystem::path output;      // the export file, absolute
    std::string program;               // see HashOfPrograms
    std::vector<std::string> options;  // on the command line; files that they name count as read
};

// Where the index of an export stands: <export file>.index.json.
std::filesystem::path IndexOf(const std::filesystem::path& output);

// One hash of all that runs in an export: this program and the libraries that it has loaded, the
// plug-in and the converter library. Empty where one of them cannot be read.
std::string HashOfPrograms(const Options& options);

// A former export, by its index and its files.
struct FormerExport {
    // Why it is to be done again; empty: nothing differs.
    std::string why;
    bool isIndexDamaged = false;
    std::size_t warnings = 0;             // that it gave; of one that nothing differs from
    std::vector<std::string> animations;  // that its scene was asked for
};
FormerExport LookAtFormer(const Recipe& recipe);

// An export that has just gone well.
struct MadeExport {
    std::vector<std::string> inputs;  // the files that it read or looked for, absolute
    std::vector<std::string> files;   // those that it made, absolute
    std::size_t warnings = 0;
    std::vector<std::string> animations;  // of its scene, where it was asked for them
};

// Writes the index of an export. Where a file that was read has changed since `start` nothing is
// known of the export, and no index is left. Throws std::system_error when it cannot be written.
class ExportStart {
  public:
    ExportStart();
    void WriteIndex(const Recipe& recipe, const MadeExport& made) const;

  private:
    std::int64_t time_;  // as the file system's clock gives it
};

// Held by one program at a time, for one export file; freed when the object or the program ends.
// A file `.NAME.lock` stands beside the export file meanwhile.
class OutputLock {
  public:
    // Nothing while another one holds it. Where no lock can be had at all, there is none to wait
    // for.
    static std::optional<OutputLock> Try(const std::filesystem::path& output);
    OutputLock(OutputLock&& other) noexcept;
    ~OutputLock();

    OutputLock(const OutputLock&) = delete;
    OutputLock& operator=(const OutputLock&) = delete;

  private:
    OutputLock(std::filesystem::path file, std::intptr_t handle);

    std::filesystem::path file_;
    std::intptr_t handle_;  // the open file, as the system knows it; -1: none
};

}  // namespace maxhost::app
