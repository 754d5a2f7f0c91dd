#include "host/app/batch.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <optional>
#include <set>
#include <system_error>
#include <thread>
#include <utility>

#include "host/app/batch_index.h"
#include "host/app/batch_scenes.h"
#include "host/app/exit_status.h"
#include "host/app/places.h"
#include "host/app/run_report.h"
#include "kta/text.h"

namespace maxhost::app {
namespace {

namespace fs = std::filesystem;

std::string SecondsText(double seconds) {
    std::array<char, 32> text;
    std::snprintf(text.data(), text.size(), seconds < 10 ? "%.2f s" : "%.0f s", seconds);
    return text.data();
}

// As of one scene: "exported (0.31 s, 2 warnings)".
std::string Details(const JobResult& result) {
    std::vector<std::string> parts;
    if (result.status != JobStatus::unchanged && result.seconds > 0) {
        parts.push_back(SecondsText(result.seconds));
    }
    if (result.warningCount > 0) {
        parts.push_back(kta::Counted(result.warningCount, "warning"));
    }
    const std::string details = parts.empty() ? "" : " (" + kta::Joined(parts) + ")";
    return details + (result.error.empty() ? "" : ": " + result.error);
}

// ---------------------------------------------------------------- the report

// Counts of the ways in which exports ended.
class Totals {
  public:
    void Add(const JobResult& result) {
        ++counts_[static_cast<std::size_t>(result.status)];
        warnings_ += result.warningCount;
    }
    std::size_t Of(JobStatus status) const { return counts_[static_cast<std::size_t>(status)]; }
    std::size_t All() const {
        std::size_t all = 0;
        for (const std::size_t count : counts_) {
            all += count;
        }
        return all;
    }
    std::size_t Bad() const {
        return All() - Of(JobStatus::exported) - Of(JobStatus::unchanged) -
               Of(JobStatus::interrupted);
    }
    std::size_t Warnings() const { return warnings_; }

    // "1 failed, 2 exported"
    std::string Text() const {
        std::vector<std::string> parts;
        for (std::size_t i = 0; i < counts_.size(); ++i) {
            if (counts_[i] > 0) {
                parts.push_back(std::to_string(counts_[i]) + " " +
                                NameOf(static_cast<JobStatus>(i)));
            }
        }
        return parts.empty() ? "nothing to do" : kta::Joined(parts);
    }

  private:
    std::array<std::size_t, 7> counts_{};
    std::size_t warnings_ = 0;
};

class BatchReport {
  public:
    BatchReport(const Options& options, const JobRun& run, Console& console, bool showsProgress);

    // Of a job that has ended.
    void Tell(std::size_t job);
    void ShowProgress();
    void Conclude(RunReport& report);
    const Totals& SoFar() const { return totals_; }

  private:
    void PrintTable() const;
    Json ToJson() const;
    std::string TimeLeft() const;

    const Options& options_;
    const JobRun& run_;
    Console& console_;
    const bool showsProgress_;
    const Stopwatch watch_;
    Totals totals_;
    // Bytes of the scenes' files, by which the time that is left is told.
    std::vector<std::uint64_t> sizes_;
    std::uint64_t sizeOfAll_ = 0, sizeDone_ = 0;
};

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
    const std::string text = NameOf(result.status) + Details(result);
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
        std::string line = NameOf(result.status);
        line.append(kWidth - line.size(), ' ');
        console_.Print(line + kta::OneLine(run_.Jobs()[i].name + Details(result)));
    }
    const std::size_t warnings = totals_.Warnings();
    console_.Print(kta::Counted(totals_.All(), "export") + ": " + totals_.Text() +
                   (warnings > 0 ? ", " + kta::Counted(warnings, "warning") : "") + ", " +
                   SecondsText(watch_.Seconds()));
}

Json BatchReport::ToJson() const {
    Json json = {{"counts", Json::object()}, {"exports", Json::array()}};
    for (int i = 0; i <= static_cast<int>(JobStatus::interrupted); ++i) {
        const auto kind = static_cast<JobStatus>(i);
        json["counts"][NameOf(kind)] = totals_.Of(kind);
    }
    for (std::size_t i = 0; i < run_.Jobs().size(); ++i) {
        const Job& job = run_.Jobs()[i];
        const JobResult& result = run_.Result(i);
        Json entry = {{"name", Text(job.name)},
                      {"scene", Text(job.scene)},
                      {"output", Text(job.output.string())},
                      {"status", NameOf(result.status)},
                      {"exitStatus", result.exitStatus},
                      {"seconds", result.seconds},
                      {"memory", result.memory},
                      {"warningCount", result.warningCount},
                      {"warnings", result.warnings}};
        if (!result.error.empty()) {
            entry["error"] = Text(result.error);
        }
        if (!result.why.empty()) {
            entry["why"] = Text(result.why);
        }
        json["exports"].push_back(std::move(entry));
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

// ---------------------------------------------------------------- the jobs

std::string RefusalOf(const std::string& name) {
    return kta::OneLine(name) == name ? std::string()
                                      : "control characters in its name, expected none";
}

// Those that --array-index leaves: the I-th and every N-th behind it.
std::vector<Job> InArray(const BatchOptions& batch, std::vector<Job> jobs) {
    if (!batch.arrayIndex) {
        return jobs;
    }
    const auto size = static_cast<std::size_t>(batch.arraySize.value_or(0));
    const auto index = static_cast<std::size_t>(*batch.arrayIndex);
    const std::size_t most = size > 0 ? size : jobs.size();
    if (index > most) {
        throw Failure(kExitRefused, "--array-index",
                      std::to_string(index) + ", expected 1 to " + std::to_string(most) +
                          (size > 0 ? ", which --array-size says" : ", the number of scenes"));
    }
    std::vector<Job> chosen;
    for (std::size_t i = index - 1; i < jobs.size(); i += most) {
        chosen.push_back(std::move(jobs[i]));
    }
    return chosen;
}

std::vector<Job> JobsOf(const Options& options) {
    std::vector<Job> jobs;
    for (const BatchScene& scene : FindBatchScenes(options.batch.items, options.output, std::cin)) {
        // A name that begins with a dash is no option.
        const std::string file = scene.name.starts_with('-') ? "./" + scene.name : scene.name;
        jobs.push_back({scene.name, file, {}, scene.output, RefusalOf(scene.name)});
    }
    return InArray(options.batch, std::move(jobs));
}

}  // namespace

std::string FaultOfBatch(const Options& options) {
    const BatchOptions& batch = options.batch;
    const std::pair<bool, const char*> parts[] = {{batch.jobs.has_value(), "--jobs"},
                                                  {batch.timeout.has_value(), "--timeout"},
                                                  {batch.memory.has_value(), "--memory"},
                                                  {batch.force, "--force"},
                                                  {batch.count, "--count"},
                                                  {batch.arrayIndex.has_value(), "--array-index"},
                                                  {batch.arraySize.has_value(), "--array-size"}};
    const std::pair<bool, const char*> others[] = {
        {!options.scene.empty(), "SCENE"},
        {options.saveScene.has_value(), "--save-scene"},
        {options.log.has_value(), "--log"},
        {options.receipt.has_value(), "--receipt"},
        {options.report.has_value(), "--report"},
        {options.accept.has_value(), "--accept"},
        {options.textures.has_value(), "--textures"},
        {options.savePreset.has_value(), "--save-preset"},
        {options.savedSettings, "--saved-settings"},
        {options.configDir.has_value(), "--config-dir"},
        {options.allAnimations, "--all-animations"},
        {options.bisect, "--bisect"},
        {options.about, "--about"},
        {options.showDialog, "--show-dialog"}};
    if (batch.items.empty()) {
        for (const auto& [isGiven, name] : parts) {
            if (isGiven) {
                return std::string(name) + ": is of a batch, expected --batch beside it";
            }
        }
        return {};
    }
    for (const auto& [isGiven, name] : others) {
        if (isGiven) {
            return std::string(name) + ": is of one scene alone, expected no --batch beside it";
        }
    }
    return batch.arraySize && !batch.arrayIndex ? "--array-size: expected --array-index beside it"
                                                : "";
}

int ExportAll(const Options& options, std::vector<Job> jobs, Interrupts& interrupts,
              Console& console, RunReport& report, bool showsProgress) {
    const BatchOptions& batch = options.batch;
    const unsigned cores = std::max(1u, std::thread::hardware_concurrency());
    JobSettings settings{
        .options = options.passedOn,
        .atOnce = static_cast<unsigned>(batch.jobs.value_or(static_cast<int>(cores))),
        .limits = {.seconds = batch.timeout.value_or(0),
                   .memory = std::uint64_t(batch.memory.value_or(0)) << 20},
        .force = batch.force,
        .program = HashOfPrograms(options)};
    // A second interrupt ends the program at once, and with it the exports.
    interrupts.PressCancel();
    JobRun run(std::move(settings), std::move(jobs));
    BatchReport told(options, run, console, showsProgress);
    constexpr double kBetweenLooks = 0.1;
    while (told.SoFar().All() < run.Jobs().size() && interrupts.Status() == 0) {
        if (const std::optional<std::size_t> ended = run.Wait(kBetweenLooks)) {
            told.Tell(*ended);
        }
        told.ShowProgress();
    }
    run.Stop();
    while (const std::optional<std::size_t> ended = run.Wait(0)) {
        told.Tell(*ended);
    }
    const int status = interrupts.Status() != 0 ? interrupts.Status()
                       : told.SoFar().Bad() > 0 ? kExitExportFailed
                                                : kExitDone;
    told.Conclude(report);
    return status;
}

int RunBatch(const Options& options, Interrupts& interrupts, Console& console, RunReport& report,
             bool showsProgress) {
    std::vector<Job> jobs = JobsOf(options);
    if (!options.batch.count && !options.list) {
        return ExportAll(options, std::move(jobs), interrupts, console, report, showsProgress);
    }
    std::vector<std::string> lines;
    if (options.list) {
        for (const Job& job : jobs) {
            lines.push_back(Absolute(job.scene).string());
        }
    } else {
        lines.push_back(std::to_string(jobs.size()));
    }
    if (options.json) {
        report.batch = {{"count", jobs.size()}};
        for (const Job& job : jobs) {
            (*report.batch)["scenes"].push_back(Text(Absolute(job.scene).string()));
        }
        return kExitDone;
    }
    for (const std::string& line : lines) {
        console.Print(line);
    }
    return kExitDone;
}

}  // namespace maxhost::app
