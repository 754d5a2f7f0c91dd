// A run that tells what it would write and writes nothing.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "host/app/json_parts.h"
#include "host/app/ledger.h"
#include "host/app/put_in_place.h"
#include "kta/whole_file.h"

namespace maxhost::app {

// What the run makes stands in a private directory among the temporary files of the user, and is
// gone at the object's end.
class DryRun {
  public:
    // Throws Failure(kExitRefused) when that directory cannot be made. Whether directories that are
    // not there would be made for the export.
    explicit DryRun(bool makesDirectories = false);

    const std::filesystem::path& Room() const { return room_.Path(); }
    bool MakesDirectories() const { return makesDirectories_; }

    // Where to write what is to stand at `target`. Throws std::system_error with the code that
    // writing there in earnest gives, as far as that shows: no directory, one that is
    // write-protected, something else than a regular file.
    std::filesystem::path Divert(const std::filesystem::path& target);
    // Tells of files that are put in place together; throws what that does, as far as it shows.
    void Add(const std::vector<Replacement>& files);
    // Tells of a file that was made in a place of the caller's own.
    void Add(const std::filesystem::path& target, const std::filesystem::path& made);

    // The losses of the export, which a receipt would tell.
    void SetLosses(std::vector<LedgerEntry> losses) { losses_ = std::move(losses); }

    // To be called when all is written: notes the sizes of what was diverted.
    void Measure();

    // Lines for people; the first losses, or all of them.
    std::vector<std::string> Lines(bool namesAll) const;
    Json WouldWrite() const;  // a list: path, bytes, replaces; pathEscaped, see AddEscaped
    Json Losses() const;      // as in a receipt

  private:
    struct File {
        std::filesystem::path target, made;
        std::optional<std::uintmax_t> bytes;   // absent: not written yet
        std::optional<std::uintmax_t> former;  // the size of what stands there
    };

    const kta::PrivateDirectory room_;
    const bool makesDirectories_;
    std::vector<File> files_;
    std::vector<LedgerEntry> losses_;
};

// The last line of what a dry run says.
constexpr const char* kDryRunEnd = "dry run: nothing was written";

// "would write FILE: 5 bytes, in the place of 4 bytes", of an entry of WouldWrite().
std::string WouldWriteLine(const Json& file);

// Why nothing can be made in the directory, as far as that shows; no error where nothing does.
std::error_code WhyNotWritable(const std::filesystem::path& directory);
// The same where the directory is made first if there is none.
std::error_code WhyNotMade(const std::filesystem::path& directory);

// Where to write what is to stand at `target`: there, or with a dry run in its directory.
std::filesystem::path PlaceToWrite(DryRun* dryRun, const std::filesystem::path& target);

}  // namespace maxhost::app
