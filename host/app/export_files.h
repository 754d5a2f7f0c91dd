// The files that an export makes, whether they are whole, and what is said about them.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <ratio>
#include <string>
#include <vector>

#include "kta/reader.h"

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

struct OutputFile {
    std::filesystem::path path;
    KTAFileKind kind = kFileKindActor;
    kta::Reading reading;             // filled by Verify()
    std::vector<std::string> faults;  // filled by Verify(): what is wrong with it, a line each
};

class ExportFiles {
  public:
    // Made before the export, so that what an earlier one left can be told from its own work.
    explicit ExportFiles(const std::filesystem::path& exportFile);

    // After a failed export: why a file could not be made, as far as that shows afterwards.
    std::string WhyNotMade() const;
    // After a failed export: a line for each of the files that is there all the same, saying
    // whether this export left it, whole or not, or an earlier one made it. `log` is the export's,
    // empty where it has none; nothing counts as whole then.
    std::vector<std::string> Leftovers(const std::filesystem::path& log) const;
    // Where no export was made: one line that names the files that an earlier one made; empty when
    // there are none.
    std::string EarlierFiles() const;

    // Whether this export has begun to write.
    bool AnyWritten() const;

    const std::filesystem::path& ExportFile() const { return exportFile_; }

    // After an export: reads both files.
    void Verify();
    const std::vector<OutputFile>& Files() const { return files_; }  // actor, motion

  private:
    std::filesystem::path exportFile_;
    std::vector<OutputFile> files_;
    std::vector<FileMark> marks_;  // by file
};

// The lines to show: the faults of each verified file, then what the converter says beside them.
// Repeats are left out, and of each file's faults and of the converter's the first are shown (see
// kta::FirstFaults). Linear.
std::vector<std::string> FaultReport(const std::vector<OutputFile>& files,
                                     const std::vector<std::string>& converterFaults);

struct NodeToExport {
    std::string name;
    const char* whyNot = nullptr;  // why an export may leave it out; null: it has no such reason
};

struct ExportOutcome {
    std::vector<NodeToExport> nodes{};  // of the scene
    bool namesAll = false;              // all nodes that were not exported, not the first ten
    std::size_t warnings = 0;
    std::filesystem::path log{};    // empty: this export wrote none
    std::size_t coloredMeshes = 0;  // whose vertex colours are lost
};

// The lines of the summary of files that were verified.
std::vector<std::string> Summarize(const std::vector<OutputFile>& files,
                                   const ExportOutcome& outcome);

}  // namespace maxhost::app
