// The files that an export makes, and whether they are whole.
#pragma once

#include <cstdint>
#include <filesystem>
#include <future>
#include <optional>
#include <string>
#include <vector>

#include "host/app/put_in_place.h"
#include "host/app/texture_files.h"
#include "kta/check.h"
#include "kta/reader.h"
#include "kta/whole_file.h"

namespace maxhost::app {

class DryRun;

struct OutputFile {
    std::filesystem::path path;  // where it is to stand
    std::filesystem::path made;  // where the exporter makes it; empty before Prepare()
    KTAFileKind kind = kFileKindActor;
    kta::Reading reading;             // filled by Verify()
    std::vector<std::string> faults;  // filled by Verify(): what is wrong with it, a line each
};

// One export's files. They are made in a private directory beside the export file and come to
// their places together, or not at all: see PutInPlace.
class ExportFiles {
  public:
    // `log` is where the export's log goes; beside the export file, as <export file>.log, when
    // absent. Both paths are absolute.
    // With a dry run, which outlives the object, nothing is put in place: it is told what would be.
    explicit ExportFiles(const std::filesystem::path& exportFile,
                         const std::optional<std::filesystem::path>& log = std::nullopt,
                         DryRun* dryRun = nullptr);

    const std::filesystem::path& ExportFile() const { return exportFile_; }
    const std::filesystem::path& Log() const { return log_; }

    // Textures that come to their places with the export. To be called before Prepare().
    void AddTextures(TextureFiles textures);
    const TextureFiles& Textures() const { return textures_; }
    // Why they cannot, in a line: their places are those of other files, or of the run's own, of
    // which `others` are not the export's. Empty where they can.
    std::string TextureObstacle(const std::vector<std::filesystem::path>& others) const;

    // Why a file cannot be made in its place, as far as that shows; empty where nothing shows.
    std::string Obstacle() const;
    // One line that names the files in their places that an earlier export made; empty when there
    // are none.
    std::string EarlierFiles() const;

    // Makes the private directory. Throws std::filesystem::filesystem_error.
    void Prepare();

    // To be called when the exporter has closed the first file: reads it beside what the exporter
    // does next, for Verify(), where there is a second processor.
    void ReadAhead();

    // The rest is for afterwards.

    // The exporter's current directory, where it writes its log, and an empty directory for
    // settings that go with the export. Both are private.
    const std::filesystem::path& WorkingDirectory() const { return room_->Path(); }
    std::filesystem::path SettingsDirectory() const;
    // The export file's name, to be given to the exporter: with its private directory, which is
    // absolute, or relative to WorkingDirectory() where the exporter's own paths have no room.
    std::string PrivateName() const;
    // A line of the converter, with the name that the user knows in the place of PrivateName().
    std::string InUsersWords(std::string line) const;

    // What the export has made so far.
    bool HasLog() const;
    const std::filesystem::path& WrittenLog() const { return writtenLog_; }  // while it is private
    bool AnyWritten() const;
    // The first of both files that was not made.
    const OutputFile& FirstMissing() const;
    // Whether the exporter gave the export up for want of memory, as its log says.
    bool LacksMemory() const;
    // A line for each of the two files that was made, saying whether it is a whole one: for
    // failed exports whose parts are kept.
    std::vector<std::string> Parts() const;
    // Why writing to the files of the export fails, in a line each: the disk is full, say. Empty
    // when it does not.
    std::vector<std::string> WriteErrors() const;

    // Reads both files; not the first one again where it is as ReadAhead() found it.
    void Verify();
    const std::vector<OutputFile>& Files() const { return files_; }  // actor, motion
    // Checks both files, which were verified and are without faults, and how they agree.
    std::vector<kta::Issue> Check() const;

    // Takes away what bears the export file's very name.
    void DropConverted() const;

    // Makes a preview of both files, which were verified and are sound, as the stand-in converter
    // does that reads them itself. Returns what it does not show, a line each; throws
    // std::system_error where it cannot be written, std::length_error where it would be too large.
    std::vector<std::string> MakePreview() const;
    // Where that is to stand.
    std::filesystem::path Preview() const;

    // Writes the log to its own place, where it was given one. Throws
    // std::filesystem::filesystem_error with that place.
    void WriteLog();
    // Whether it stands in that place, as a file.
    bool HasOwnLog() const { return hasOwnLog_; }
    // Puts everything that the export has made in its place, the log included unless it has a place
    // of its own; what bears the export file's very name comes last. Throws
    // std::filesystem::filesystem_error, with a place, when nothing was put in place.
    void PutInPlace();
    bool IsInPlace() const { return placed_.has_value(); }
    // The files that were put in place.
    std::vector<std::filesystem::path> Placed() const;
    // Where such a file can be looked at: in its place, or in a dry run where it was made.
    std::filesystem::path At(const std::filesystem::path& place) const;

  private:
    struct Stamp {
        std::uintmax_t size = 0;
        std::filesystem::file_time_type time;

        bool operator==(const Stamp&) const = default;
    };
    struct Ahead {
        Stamp stamp;  // before it was read
        std::future<kta::Reading> reading;
    };

    static Stamp StampOf(const std::filesystem::path& file);
    std::filesystem::path MadeDirectory() const;
    std::vector<Replacement> Replacements() const;

    DryRun* dryRun_;
    std::filesystem::path exportFile_;
    std::filesystem::path log_;
    std::filesystem::path writtenLog_;  // empty before Prepare()
    bool logStandsApart_;
    bool hasOwnLog_ = false;
    std::vector<OutputFile> files_;
    TextureFiles textures_;
    std::optional<kta::PrivateDirectory> room_;
    std::optional<Ahead> ahead_;  // stands behind the room, which it reads in
    std::optional<std::vector<Replacement>> placed_;
};

}  // namespace maxhost::app
