#include "host/app/dry_run.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include "host/app/places.h"
#include "host/app/receipt.h"
#include "kta/text.h"

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace maxhost::app {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kMostLosses = 20;

std::optional<std::uintmax_t> SizeOf(const fs::path& file) {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(file, error);
    return error ? std::nullopt : std::optional(size);
}

}  // namespace

std::error_code WhyNotWritable(const fs::path& directory) {
    std::error_code error;
    const fs::file_status status = fs::status(directory, error);
    if (!fs::exists(status)) {
        return std::make_error_code(std::errc::no_such_file_or_directory);
    }
    if (!fs::is_directory(status)) {
        return std::make_error_code(std::errc::not_a_directory);
    }
#ifdef _WIN32
    constexpr int kWrite = 2;
    const bool isWritable = _waccess(directory.c_str(), kWrite) == 0;
#else
    const bool isWritable = access(directory.c_str(), W_OK | X_OK) == 0;
#endif
    return isWritable ? std::error_code() : std::error_code(errno, std::generic_category());
}

std::error_code WhyNotMade(const fs::path& directory) {
    fs::path there = directory;
    std::error_code ignored;
    while (!fs::exists(there, ignored) && there.has_relative_path()) {
        there = there.parent_path();
    }
    return WhyNotWritable(there);
}

DryRun::DryRun(bool makesDirectories)
    : room_(TemporaryRoom()), makesDirectories_(makesDirectories) {
}

fs::path DryRun::Divert(const fs::path& target) {
    kta::CheckReplaceable(target);
    const fs::path place = fs::absolute(kta::BehindLinks(target));
    if (const std::error_code error = WhyNotWritable(place.parent_path())) {
        throw std::system_error(error);
    }
    const fs::path directory = room_.Path() / std::to_string(files_.size());
    fs::create_directory(directory);
    Add(target, directory / target.filename());
    return files_.back().made;
}

void DryRun::Add(const std::vector<Replacement>& files) {
    for (const Replacement& file : files) {
        std::error_code ignored;
        if (fs::is_directory(fs::symlink_status(file.target, ignored))) {
            throw fs::filesystem_error("cannot be put in place", file.target,
                                       std::make_error_code(std::errc::is_a_directory));
        }
    }
    for (const Replacement& file : files) {
        Add(file.target, file.made);
    }
}

void DryRun::Add(const fs::path& target, const fs::path& made) {
    files_.push_back({target, made, SizeOf(made), SizeOf(target)});
}

void DryRun::Measure() {
    for (File& file : files_) {
        file.bytes = file.bytes ? file.bytes : SizeOf(file.made);
    }
    // Writing what is not there failed.
    std::erase_if(files_, [](const File& file) { return !file.bytes; });
    std::ranges::sort(files_, {}, &File::target);
}

std::string WouldWriteLine(const Json& file) {
    const Json& former = file.at("replaces");
    return "would write " + NameIn(file, "path") + ": " +
           kta::Counted(file.at("bytes").get<std::size_t>(), "byte") +
           (former.is_null()
                ? ""
                : ", in the place of " + kta::Counted(former.get<std::size_t>(), "byte"));
}

std::vector<std::string> DryRun::Lines(bool namesAll) const {
    std::vector<std::string> lines;
    for (const Json& file : WouldWrite()) {
        lines.push_back(WouldWriteLine(file));
    }
    const std::size_t shown = namesAll ? losses_.size() : std::min(losses_.size(), kMostLosses);
    for (std::size_t i = 0; i < shown; ++i) {
        const LedgerEntry& loss = losses_[i];
        std::string line = "loss: ";
        for (const std::string* const part : {&loss.path, &loss.subject}) {
            line += part->empty() ? "" : kta::OneLine(*part) + ": ";
        }
        lines.push_back(line + kta::OneLine(loss.text) + " (" + scene::KindOf(loss.code).code +
                        (loss.count > 1 ? ", " + std::to_string(loss.count) + " times)" : ")"));
    }
    if (shown < losses_.size()) {
        lines.push_back("loss: and " + std::to_string(losses_.size() - shown) +
                        " more (-v names all)");
    }
    lines.emplace_back(kDryRunEnd);
    return lines;
}

Json DryRun::WouldWrite() const {
    Json list = Json::array();
    for (const File& file : files_) {
        list.push_back({{"path", Text(file.target.string())},
                        {"bytes", *file.bytes},
                        {"replaces", file.former ? Json(*file.former) : Json()}});
        AddEscaped(list.back(), "path", file.target.string());
    }
    return list;
}

Json DryRun::Losses() const {
    Json list = Json::array();
    for (const LedgerEntry& loss : losses_) {
        list.push_back(JsonOf(loss));
    }
    return list;
}

fs::path PlaceToWrite(DryRun* dryRun, const fs::path& target) {
    return dryRun != nullptr ? dryRun->Divert(target) : target;
}

}  // namespace maxhost::app
