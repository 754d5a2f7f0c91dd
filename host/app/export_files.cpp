#include "host/app/export_files.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

#include "host/app/child_process.h"
#include "host/app/dry_run.h"
#include "host/app/texture_record.h"
#include "kta/glb.h"
#include "kta/text.h"
#include "kta/whole_file.h"

namespace maxhost::app {
namespace {

namespace fs = std::filesystem;

// What the plug-in has for a path, its NUL included.
constexpr std::size_t kMostPathBytes = 260;

constexpr std::string_view kFirstSuffix = "temp1";
constexpr const char* kLogName = "KTAExporter.log";  // as the exporter names it

fs::path With(const fs::path& exportFile, std::string_view suffix) {
    fs::path path = exportFile;
    path += suffix;
    return path;
}

bool IsThere(const fs::path& file) {
    std::error_code error;
    return fs::is_regular_file(file, error);
}

std::size_t CountLines(const fs::path& log, const std::string& wanted) {
    std::ifstream file(log);
    std::size_t count = 0;
    for (std::string line; std::getline(file, line);) {
        count += line == wanted || line == wanted + "\r" ? 1 : 0;
    }
    return count;
}

// How many files the export wrote to their ends, in order: its log has a line for each, upon which
// the converter gets the file.
std::size_t CountClosedFiles(const fs::path& log) {
    return CountLines(log, "Closing file");
}

// `isDirectoryMade`: where it is not there.
std::string Obstacle(const fs::path& file, bool isDirectoryMade) {
    const std::string name = file.string();
    const fs::path directory = file.parent_path();
    std::error_code error;
    if (name.size() >= kMostPathBytes) {
        return "the path of " + name + " has " + std::to_string(name.size()) +
               " bytes, expected at most " + std::to_string(kMostPathBytes - 1);
    }
    if (isDirectoryMade && !fs::exists(directory, error)) {
        return {};
    }
    if (!fs::exists(directory, error)) {
        return "the directory " + directory.string() + " does not exist";
    }
    if (!fs::is_directory(directory, error)) {
        return directory.string() + " is not a directory";
    }
    if (fs::is_directory(file, error)) {
        return name + " is a directory";
    }
    return kta::IsWriteProtected(file) ? name + " cannot be written" : std::string();
}

// The error of writing a little more at the file's end, which is left as it was; none when that
// goes well. The exporter does not look at what its writing comes to, so this does.
std::error_code ErrorOfAppending(const fs::path& file) {
    const bool isThere = IsThere(file);
    std::error_code ignored;
    const std::uintmax_t size = isThere ? fs::file_size(file, ignored) : 0;
    errno = 0;
    std::ofstream out(file, std::ios::binary | std::ios::app);
    out << std::string(4096, ' ');
    out.close();
    const std::error_code error(!out ? (errno != 0 ? errno : EIO) : 0, std::generic_category());
    if (isThere) {
        fs::resize_file(file, size, ignored);
    } else {
        fs::remove(file, ignored);
    }
    return error;
}

}  // namespace

// ---------------------------------------------------------------- the export's files

ExportFiles::ExportFiles(const fs::path& exportFile, const std::optional<fs::path>& log,
                         DryRun* dryRun)
    : dryRun_(dryRun),
      exportFile_(exportFile),
      log_(log ? *log : With(exportFile, ".log")),
      logStandsApart_(log.has_value()) {
    files_.push_back({With(exportFile, kFirstSuffix), {}, kFileKindActor, {}, {}});
    files_.push_back({With(exportFile, "temp2"), {}, kFileKindMotion, {}, {}});
}

std::string ExportFiles::Obstacle() const {
    const bool isDirectoryMade = dryRun_ != nullptr && dryRun_->MakesDirectories();
    for (const OutputFile& file : files_) {
        if (std::string reason = app::Obstacle(file.path, isDirectoryMade); !reason.empty()) {
            return reason;
        }
    }
    return app::Obstacle(exportFile_, isDirectoryMade);
}

std::string ExportFiles::EarlierFiles() const {
    std::vector<std::string> names;
    for (const OutputFile& file : files_) {
        if (!IsInPlace() && IsThere(file.path)) {
            names.push_back(file.path.string());
        }
    }
    return names.empty() ? std::string()
                         : kta::Joined(names) + ": made by an earlier export, not by this one";
}

void ExportFiles::Prepare() {
    if (dryRun_ != nullptr) {
        const fs::path directory = exportFile_.parent_path();
        if (const std::error_code error =
                dryRun_->MakesDirectories() ? WhyNotMade(directory) : WhyNotWritable(directory)) {
            throw fs::filesystem_error("nothing can be made", directory, error);
        }
    }
    const fs::path home = dryRun_ != nullptr ? dryRun_->Room() : exportFile_.parent_path();
    try {
        room_.emplace(home);
        fs::create_directory(MadeDirectory());
        fs::create_directory(SettingsDirectory());
    } catch (const fs::filesystem_error& error) {  // which names a private one
        throw fs::filesystem_error("nothing can be made", home, error.code());
    }
    writtenLog_ = room_->Path() / kLogName;
    for (OutputFile& file : files_) {
        file.made = MadeDirectory() / file.path.filename();
    }
    textures_.Make(exportFile_.parent_path(), MadeDirectory(), dryRun_);
}

void ExportFiles::AddTextures(TextureFiles textures) {
    textures_ = std::move(textures);
}

std::string ExportFiles::TextureObstacle(const std::vector<fs::path>& others) const {
    std::vector<fs::path> taken = {exportFile_, files_[0].path, files_[1].path,
                                   log_,        Preview(),      TextureRecordOf(exportFile_)};
    taken.insert(taken.end(), others.begin(), others.end());
    return textures_.Obstacle(taken);
}

fs::path ExportFiles::SettingsDirectory() const {
    return room_->Path() / "settings";
}

fs::path ExportFiles::MadeDirectory() const {
    return room_->Path() / "o";
}

std::string ExportFiles::PrivateName() const {
    const std::string name = (MadeDirectory() / exportFile_.filename()).string();
    return name.size() + kFirstSuffix.size() < kMostPathBytes
               ? name
               : (MadeDirectory().filename() / exportFile_.filename()).string();
}

std::string ExportFiles::InUsersWords(std::string line) const {
    const std::string privateName = PrivateName();
    for (std::size_t at = 0; (at = line.find(privateName, at)) != std::string::npos;) {
        line.replace(at, privateName.size(), exportFile_.string());
        at += exportFile_.string().size();
    }
    return line;
}

bool ExportFiles::HasLog() const {
    return IsThere(writtenLog_);
}

bool ExportFiles::AnyWritten() const {
    return IsThere(files_[0].made) || IsThere(files_[1].made);
}

const OutputFile& ExportFiles::FirstMissing() const {
    return files_[IsThere(files_[0].made) ? 1 : 0];
}

bool ExportFiles::LacksMemory() const {
    return CountLines(writtenLog_, "*** Out of memory: the export is given up ***") > 0;
}

std::vector<std::string> ExportFiles::Parts() const {
    const std::size_t closed = CountClosedFiles(writtenLog_);
    std::vector<std::string> lines;
    for (std::size_t i = 0; i < files_.size(); ++i) {
        if (IsThere(files_[i].made)) {
            lines.push_back(
                files_[i].path.string() + ": left behind by the failed export, " +
                (i < closed ? "but whole and given to the converter" : "not a whole one"));
        }
    }
    return lines;
}

std::vector<std::string> ExportFiles::WriteErrors() const {
    std::vector<std::string> lines;
    const auto check = [&](const fs::path& made, const fs::path& place) {
        if (const std::error_code error = ErrorOfAppending(made)) {
            lines.push_back(place.string() + ": " + error.message());
        }
    };
    for (const OutputFile& file : files_) {
        check(file.made, file.path);
    }
    if (HasLog()) {
        check(writtenLog_, log_);
    }
    return lines;
}

// The greatest size where it cannot be told.
ExportFiles::Stamp ExportFiles::StampOf(const fs::path& file) {
    std::error_code ignored;
    const std::uintmax_t size = fs::file_size(file, ignored);
    return {size, fs::last_write_time(file, ignored)};
}

void ExportFiles::ReadAhead() {
    const OutputFile& file = files_.front();
    if (std::thread::hardware_concurrency() < 2 || MemoryIsRationed()) {
        return;
    }
    try {
        const auto read = [path = file.made.string(), kind = file.kind] {
            return kta::ReadFile(path, kind);
        };
        ahead_.emplace(Ahead{StampOf(file.made), std::async(std::launch::async, read)});
    } catch (const std::exception&) {
        // There is no thread for it. It is read in its turn.
    }
}

void ExportFiles::Verify() {
    for (OutputFile& file : files_) {
        const bool isRead =
            &file == &files_.front() && ahead_ && ahead_->stamp == StampOf(file.made);
        if (isRead) {
            file.reading = ahead_->reading.get();
        }
        // What could not be read while the motion file was made may be readable now.
        if (!isRead || !file.reading.inputError.empty()) {
            file.reading = kta::ReadFile(file.made.string(), file.kind);
        }
        ahead_.reset();
        file.faults = kta::FaultLines(file.path.string(), file.reading);
    }
}

std::vector<kta::Issue> ExportFiles::Check() const {
    return kta::Check(files_[0].reading, &files_[1].reading);
}

void ExportFiles::DropConverted() const {
    std::error_code ignored;
    fs::remove(MadeDirectory() / exportFile_.filename(), ignored);
}

fs::path ExportFiles::Preview() const {
    return With(exportFile_, ".glb");
}

std::vector<std::string> ExportFiles::MakePreview() const {
    const std::optional<kta::File>& motion = files_[1].reading.file;
    return kta::WriteGlb(MadeDirectory() / Preview().filename(), files_[0].reading.file.value(),
                         motion ? &*motion : nullptr);
}

void ExportFiles::WriteLog() {
    if (!logStandsApart_ || !HasLog()) {
        return;
    }
    const std::string text = kta::ReadWholeFile(writtenLog_).value_or("");
    std::error_code error;
    const bool isDevice = fs::exists(log_, error) && !fs::is_regular_file(log_, error);
    if (isDevice && dryRun_ != nullptr) {
        error.clear();
    } else if (isDevice) {
        // A terminal, a pipe or /dev/null takes the text as it comes.
        errno = 0;
        std::ofstream out(log_, std::ios::binary);
        out << text << std::flush;
        error.assign(!out ? (errno != 0 ? errno : EIO) : 0, std::generic_category());
    } else {
        try {
            kta::ReplaceWholeFile(PlaceToWrite(dryRun_, log_),
                                  [&](std::ostream& out) { out << text; });
            error.clear();
            hasOwnLog_ = true;
        } catch (const std::system_error& thrown) {
            error = thrown.code();
        }
    }
    if (error) {
        throw fs::filesystem_error("the log cannot be written", log_, error);
    }
}

std::vector<Replacement> ExportFiles::Replacements() const {
    std::vector<Replacement> files = textures_.Replacements();
    const std::set<fs::path> notToReplace = textures_.NotToReplace();
    for (const fs::directory_entry& entry : fs::directory_iterator(MadeDirectory())) {
        const fs::path target = exportFile_.parent_path() / entry.path().filename();
        files.push_back({entry.path(), target, room_->Path(), !notToReplace.contains(target)});
    }
    if (HasLog() && !logStandsApart_) {
        // The exporter keeps the log of a failed export open, and Windows moves no open file.
        const fs::path copy = room_->Path() / "log";
        std::error_code error;
        if (!fs::copy_file(writtenLog_, copy, error)) {
            throw fs::filesystem_error("the log cannot be copied", log_, error);
        }
        files.push_back({copy, log_, room_->Path()});
    }
    // The record of the textures comes before them, the converter's file last.
    const auto rank = [this, record = TextureRecordOf(exportFile_)](const Replacement& file) {
        return std::pair(file.target == exportFile_ ? 2
                         : file.target == record    ? 0
                                                    : 1,
                         file.target);
    };
    std::ranges::sort(files, {}, rank);
    return files;
}

void ExportFiles::PutInPlace() {
    std::vector<Replacement> files = Replacements();
    if (dryRun_ != nullptr) {
        dryRun_->Add(files);
    } else {
        app::PutInPlace(files);
    }
    for (const fs::path& texture : textures_.Unchanged()) {
        files.push_back({texture, texture, {}});
    }
    placed_ = std::move(files);
}

std::vector<fs::path> ExportFiles::Placed() const {
    std::vector<fs::path> places;
    for (const Replacement& file : placed_.value_or(std::vector<Replacement>())) {
        places.push_back(file.target);
    }
    return places;
}

fs::path ExportFiles::At(const fs::path& place) const {
    if (dryRun_ == nullptr) {
        return place;
    }
    if (logStandsApart_ && place == log_) {
        return writtenLog_;
    }
    const std::vector<Replacement> placed = placed_.value_or(std::vector<Replacement>());
    const auto found = std::ranges::find(placed, place, &Replacement::target);
    return found == placed.end() ? place : found->made;
}

}  // namespace maxhost::app
