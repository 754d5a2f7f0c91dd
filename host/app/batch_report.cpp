#include "host/app/batch_report.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>

#include "host/app/dry_run.h"
#include "kta/text.h"

namespace maxhost::app {
namespace {

namespace fs = std::filesystem;

std::string SecondsText(double seconds) {
    std::array<char, 32> text;
    std::snprintf(text.data(), text.size(), seconds < 10 ? "%.2f s" : "%.0f s", seconds);
    return text.data();
}

// Behind its status: " (0.31 s, 2 warnings)".
std::string Details(const JobResult& result) {
    std::vector<std::string> parts;
    if (result.status != JobStatus::unchanged && result.seconds > 0) {
        parts.push_back(SecondsText(result.seconds));
    }
    if (result.warningCount > 0) {
        parts.push_back(kta::Counted(result.warningCount, "warning"));
    }
    if (!result.losses.empty()) {
        parts.push_back(kta::Counted(result.losses.size(), "loss"));
    }
    const std::string details = parts.empty() ? "" : " (" + kta::Joined(parts) + ")";
    return details + (result.error.empty() ? "" : ": " + result.error);
}

Json EntryOf(const Job& job, const JobResult& result, bool isDryRun) {
    Json entry = PlaceOf(job);
    entry.update({{"status", NameOf(result.status)},
                  {"exitStatus", result.exitStatus},
                  {"seconds", result.seconds},
                  {"memory", result.memory},
                  {"warningCount", result.warningCount},
                  {"warnings", result.warnings}});
    if (job.animation) {
        entry["animation"] = Text(*job.animation);
    }
    if (!result.error.empty()) {
        entry["error"] = Text(result.error);
    }
    if (!result.why.empty()) {
        entry["why"] = Text(result.why);
    }
    if (isDryRun) {
        entry["wouldWrite"] = result.wouldWrite;
        entry["losses"] = result.losses;
    }
    return entry;
}

}  // namespace

Json PlaceOf(const Job& job) {
    Json place = {{"name", Text(job.name)}, {"scene", Text(job.scene)}};
    AddEscaped(place, "scene", job.scene);
    place["output"] = Text(job.output.string());
    AddEscaped(place, "output", job.output.string());
    return place;
}

std::size_t Totals::All() const {
    std::size_t all = 0;
    for (const std::size_t count : counts_) {
        all += count;
    }
    return all;
}

std::size_t Totals::Bad() const {
    return All() - Of(JobStatus::exported) - Of(JobStatus::unchanged) - Of(JobStatus::interrupted);
}

std::string Totals::Text(const std::function<const char*(JobStatus)>& wordOf) const {
    std::vector<std::string> parts;
    for (std::size_t i = 0; i < counts_.size(); ++i) {
        if (counts_[i] > 0) {
            parts.push_back(std::to_string(counts_[i]) + " " + wordOf(static_cast<JobStatus>(i)));
        }
    }
    return parts.empty() ? "nothing to do" : kta::Joined(parts);
}

BatchReport::BatchReport(const Options& options, const JobRun& run, Console& console,
                         bool showsProgress)
    : options_(options), run_(run), console_(console), showsProgress_(showsProgress) {
    for (const Job& job : run.Jobs()) {
        std::error_code error;
        const std::uintmax_t size = fs::file_size(job.scene, error);
        sizes_.push_back(1 + (error ? 0 : size));
        sizeOfAll_ += sizes_.back();
    }
}

void BatchReport::Tell(std::size_t number) {
    const Job& job = run_.Jobs()[number];
    const JobResult& result = run_.Result(number);
    totals_.Add(result);
    sizeDone_ += sizes_[number];
    if (!result.notice.empty()) {
        console_.Report(job.name, result.notice);
    }
    if (options_.verbose) {
        console_.Copy(result.said);
    }
    const std::string text = WordOf(result.status) + Details(result);
    if (!result.error.empty()) {
        console_.Report(job.name, text);
    } else if (!options_.quiet && !showsProgress_) {
        const std::string why = options_.verbose && !result.why.empty() ? "; " + result.why : "";
        console_.Note(job.name, text + why);
    }
}

// By the share of all bytes that is done.
std::string BatchReport::TimeLeft() const {
    if (sizeDone_ == 0) {
        return {};
    }
    const double left = watch_.Seconds() * static_cast<double>(sizeOfAll_ - sizeDone_) /
                        static_cast<double>(sizeDone_);
    return ", " + std::to_string(static_cast<long long>(left + 0.5)) + " s left";
}

const char* BatchReport::WordOf(JobStatus status) const {
    return options_.dryRun && status == JobStatus::exported ? "to export" : NameOf(status);
}

void BatchReport::ShowProgress() {
    if (!showsProgress_) {
        return;
    }
    constexpr std::size_t kColumns = 79;
    std::string line = std::to_string(totals_.All()) + " of " + std::to_string(run_.Jobs().size()) +
                       (totals_.Bad() > 0 ? ", " + std::to_string(totals_.Bad()) + " failed" : "") +
                       TimeLeft();
    std::vector<std::string> names;
    for (const std::size_t job : run_.Running()) {
        names.push_back(fs::path(run_.Jobs()[job].name).filename().string());
    }
    std::string text = kta::OneLine(names.empty() ? line : line + ": " + kta::Joined(names));
    std::ranges::replace_if(
        text, [](char c) { return static_cast<unsigned char>(c) >= 0x80; }, '?');
    console_.ShowBar(text.substr(0, kColumns));
}

void BatchReport::PrintTable() const {
    constexpr std::size_t kWidth = 12;
    for (std::size_t i = 0; i < run_.Jobs().size(); ++i) {
        const JobResult& result = run_.Result(i);
        std::string line = WordOf(result.status);
        line.append(kWidth - line.size(), ' ');
        console_.Print(line + kta::OneLine(run_.Jobs()[i].name + Details(result)));
        for (const Json& file : result.wouldWrite) {
            console_.Print(WouldWriteLine(file));
        }
    }
    const std::size_t warnings = totals_.Warnings();
    console_.Print(kta::Counted(totals_.All(), "export") + ": " +
                   totals_.Text([this](JobStatus status) { return WordOf(status); }) +
                   (warnings > 0 ? ", " + kta::Counted(warnings, "warning") : "") + ", " +
                   SecondsText(watch_.Seconds()));
    if (options_.dryRun) {
        console_.Print(kDryRunEnd);
    }
}

Json BatchReport::ToJson() const {
    Json json = Json::object();
    if (options_.dryRun) {
        json["dryRun"] = true;
    }
    json["counts"] = Json::object();
    json["exports"] = Json::array();
    for (int i = 0; i <= static_cast<int>(JobStatus::interrupted); ++i) {
        const auto kind = static_cast<JobStatus>(i);
        json["counts"][NameOf(kind)] = totals_.Of(kind);
    }
    for (std::size_t i = 0; i < run_.Jobs().size(); ++i) {
        json["exports"].push_back(EntryOf(run_.Jobs()[i], run_.Result(i), options_.dryRun));
    }
    return json;
}

void BatchReport::Conclude(RunReport& report) {
    console_.HideBar();
    for (std::size_t i = totals_.All(); i < run_.Jobs().size(); ++i) {
        totals_.Add(JobResult());
    }
    if (options_.json) {
        report.batch = ToJson();
    } else if (!options_.quiet) {
        PrintTable();
    }
}

}  // namespace maxhost::app
