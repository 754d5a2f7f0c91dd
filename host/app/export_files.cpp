#include "host/app/export_files.h"

#include <algorithm>
#include <fstream>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <unordered_set>

#include "kta/info.h"
#include "kta/text.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace maxhost::app {

// ---------------------------------------------------------------- whether a file was written

namespace {

namespace fs = std::filesystem;

// Windows counts time in these, and finer differences mean nothing elsewhere.
using Time = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;

// Time stamps come from the system's tick, which is 16 ms where it is longest.
constexpr std::chrono::milliseconds kTick(20);

#ifdef _WIN32
// The standard library of mingw-w64 tells whole seconds only.
Time TimeOf(const FILETIME& time) {
    return Time(static_cast<std::int64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime);
}

Time LastWriting(const fs::path& file) {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    GetFileAttributesExW(file.c_str(), GetFileExInfoStandard, &data);
    return TimeOf(data.ftLastWriteTime);
}

Time ClockOfFiles() {
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    return TimeOf(now);
}
#else
Time TimeOf(fs::file_time_type time) {
    return std::chrono::duration_cast<Time>(time.time_since_epoch());
}

Time LastWriting(const fs::path& file) {
    std::error_code error;
    return TimeOf(fs::last_write_time(file, error));
}

Time ClockOfFiles() {
    return TimeOf(fs::file_time_type::clock::now());
}
#endif

void WaitUntilOld(Time time) {
    const Time age = ClockOfFiles() - time;
    if (age >= age.zero() && age < kTick) {
        std::this_thread::sleep_for(kTick - age);
    }
}

}  // namespace

FileMark::FileMark(fs::path file) : file_(std::move(file)), before_(Now()) {
    if (before_) {
        WaitUntilOld(before_->time);
    }
}

bool FileMark::IsThere() const {
    return Now().has_value();
}

bool FileMark::IsWritten() const {
    const std::optional<Stamp> now = Now();
    return now && now != before_;
}

std::optional<FileMark::Stamp> FileMark::Now() const {
    std::error_code error;
    if (!fs::is_regular_file(file_, error)) {
        return std::nullopt;
    }
    return Stamp{LastWriting(file_), fs::file_size(file_, error)};
}

// ---------------------------------------------------------------- the two files

namespace {

// What the plug-in has for a path, its NUL included.
constexpr std::size_t kMostPathBytes = 260;

constexpr const char* kEarlier = "made by an earlier export, not by this one";

fs::path With(const fs::path& exportFile, const char* suffix) {
    fs::path path = exportFile;
    path += suffix;
    return path;
}

// How many files the export wrote to their ends, in order: its log has a line for each, upon which
// the converter gets the file.
std::size_t CountClosedFiles(const fs::path& log) {
    std::ifstream file(log);
    std::size_t count = 0;
    for (std::string line; std::getline(file, line);) {
        count += line == "Closing file" || line == "Closing file\r" ? 1 : 0;
    }
    return count;
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

std::vector<std::string> ExportFiles::Leftovers(const fs::path& log) const {
    const std::size_t closed = CountClosedFiles(log);
    std::vector<std::string> lines;
    for (std::size_t i = 0; i < marks_.size(); ++i) {
        const FileMark& mark = marks_[i];
        if (mark.IsThere()) {
            const char* const made =
                i < closed
                    ? "left behind by the failed export, but whole and given to the converter"
                    : "left behind by the failed export, not a whole one";
            lines.push_back(mark.File().string() + ": " + (mark.IsWritten() ? made : kEarlier));
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

// ---------------------------------------------------------------- what is said about them

std::vector<std::string> FaultReport(const std::vector<OutputFile>& files,
                                     const std::vector<std::string>& converterFaults) {
    std::vector<std::string> report;
    std::unordered_set<std::string_view> known;
    const auto add = [&](const std::vector<std::string>& lines, const std::string& subject) {
        std::vector<std::string> distinct;
        for (const std::string& line : lines) {
            if (known.insert(line).second) {
                distinct.push_back(line);
            }
        }
        for (std::string& line : kta::FirstFaults(std::move(distinct), subject)) {
            report.push_back(std::move(line));
        }
    };
    for (const OutputFile& file : files) {
        add(file.faults, file.path.string());
    }
    // The converter reads the files with the same library, so most of its faults are known already.
    add(converterFaults, "haldenexport");
    return report;
}

namespace {

std::string Line(const OutputFile& output, const kta::File& file, const kta::Summary& summary) {
    std::string line = output.path.string() + ": " + kta::KindName(file.kind) + " file, " +
                       kta::Counted(file.size, "byte") + ", " +
                       kta::Counted(file.chunks.size(), "chunk");
    std::vector<std::string> kinds;
    for (const kta::ChunkTotal& total : summary.chunks) {
        kinds.push_back(std::to_string(total.count) + " " + total.type->name);
    }
    return line + (kinds.empty() ? "" : " (" + kta::Joined(kinds) + ")");
}

constexpr std::size_t kMostNodeLines = 10;

// The scene's nodes that the actor file does not hold. Of several with one name, those without a
// reason to be left out count as held first.
std::vector<const NodeToExport*> NodesLeftOut(const kta::File& actor,
                                              const std::vector<NodeToExport>& nodes) {
    std::unordered_map<std::string, std::size_t> held;
    for (const kta::Chunk& chunk : actor.chunks) {
        if (const auto* const node = chunk.As<KTANode>()) {
            ++held[std::string(kta::TextOf(node->nodeName))];
        }
    }
    std::vector<bool> isHeld(nodes.size());
    for (const bool hasReason : {false, true}) {
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            std::size_t& left = held[nodes[i].name.substr(0, sizeof(KTANode::nodeName) - 1)];
            if ((nodes[i].whyNot != nullptr) == hasReason && left > 0) {
                isHeld[i] = true;
                --left;
            }
        }
    }
    std::vector<const NodeToExport*> leftOut;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        if (!isHeld[i]) {
            leftOut.push_back(&nodes[i]);
        }
    }
    return leftOut;
}

void AddNodesLeftOut(const kta::File& actor, const ExportOutcome& outcome,
                     std::vector<std::string>& lines) {
    const std::vector<const NodeToExport*> nodes = NodesLeftOut(actor, outcome.nodes);
    const std::size_t shown =
        outcome.namesAll ? nodes.size() : std::min(nodes.size(), kMostNodeLines);
    for (std::size_t i = 0; i < shown; ++i) {
        lines.push_back("not exported: \"" + kta::Escaped(nodes[i]->name) + "\": " +
                        (nodes[i]->whyNot ? nodes[i]->whyNot : "left out by the exporter"));
    }
    if (shown < nodes.size()) {
        lines.push_back("not exported: " + kta::Counted(nodes.size() - shown, "other node") +
                        " (-v names all)");
    }
}

}  // namespace

std::vector<std::string> Summarize(const std::vector<OutputFile>& files,
                                   const ExportOutcome& outcome) {
    std::vector<std::string> lines;
    std::size_t nodes = 0;
    for (const OutputFile& output : files) {
        if (output.reading.file) {
            const kta::Summary summary = kta::Summarize(*output.reading.file);
            nodes += summary.nodes;
            lines.push_back(Line(output, *output.reading.file, summary));
        }
    }
    if (!outcome.log.empty()) {
        lines.push_back(outcome.log.string() + ": log");
    }
    lines.push_back("exported " + std::to_string(nodes) + " of " +
                    kta::Counted(outcome.nodes.size(), "node"));
    if (const kta::Reading& actor = files.front().reading; actor.file && actor.Good()) {
        AddNodesLeftOut(*actor.file, outcome, lines);
    }
    if (outcome.warnings > 0) {
        lines.push_back(kta::Counted(outcome.warnings, "warning") + " from reading the scene");
    }
    if (outcome.coloredMeshes > 0) {
        lines.push_back("not exported: vertex colours of " +
                        kta::Counted(outcome.coloredMeshes, "mesh"));
    }
    return lines;
}

}  // namespace maxhost::app
