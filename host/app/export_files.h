// The two files that an export makes beside the file that the user named.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "host/app/file_mark.h"
#include "kta/reader.h"

namespace maxhost::app {

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
    // whether this export left it incomplete or an earlier one made it.
    std::vector<std::string> Leftovers() const;
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

}  // namespace maxhost::app
