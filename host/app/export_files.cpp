#include "host/app/export_files.h"

#include "kta/text.h"

namespace maxhost::app {
namespace {

namespace fs = std::filesystem;

// What the plug-in has for a path, its NUL included.
constexpr std::size_t kMostPathBytes = 260;

constexpr const char* kEarlier = "made by an earlier export, not by this one";

fs::path With(const fs::path& exportFile, const char* suffix) {
    fs::path path = exportFile;
    path += suffix;
    return path;
}

std::string WhyNotMade(const fs::path& file) {
    const std::string name = file.string();
    const fs::path directory = file.parent_path();
    std::error_code error;
    if (name.size() >= kMostPathBytes) {
        return "the path of " + name + " has " + std::to_string(name.size()) +
               " bytes, expected at most " + std::to_string(kMostPathBytes - 1);
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
    return name + " cannot be written";
}

}  // namespace

ExportFiles::ExportFiles(const fs::path& exportFile) : exportFile_(exportFile) {
    files_.push_back({With(exportFile, "temp1"), kFileKindActor, {}, {}});
    files_.push_back({With(exportFile, "temp2"), kFileKindMotion, {}, {}});
    for (const OutputFile& file : files_) {
        marks_.emplace_back(file.path);
    }
}

std::string ExportFiles::WhyNotMade() const {
    // The exporter makes the files in order and gives up at the first that it cannot make.
    return app::WhyNotMade(files_[marks_[0].IsWritten() ? 1 : 0].path);
}

std::vector<std::string> ExportFiles::Leftovers() const {
    std::vector<std::string> lines;
    for (const FileMark& mark : marks_) {
        if (mark.IsThere()) {
            lines.push_back(mark.File().string() + ": " +
                            (mark.IsWritten() ? "left behind by the failed export, not a whole one"
                                              : kEarlier));
        }
    }
    return lines;
}

std::string ExportFiles::EarlierFiles() const {
    std::vector<std::string> names;
    for (const FileMark& mark : marks_) {
        if (mark.IsThere() && !mark.IsWritten()) {
            names.push_back(mark.File().string());
        }
    }
    return names.empty() ? std::string() : kta::Joined(names) + ": " + kEarlier;
}

bool ExportFiles::AnyWritten() const {
    return marks_[0].IsWritten() || marks_[1].IsWritten();
}

void ExportFiles::Verify() {
    for (OutputFile& file : files_) {
        const std::string name = file.path.string();
        file.reading = kta::ReadFile(name, file.kind);
        file.faults = kta::FaultLines(name, file.reading);
    }
}

}  // namespace maxhost::app
