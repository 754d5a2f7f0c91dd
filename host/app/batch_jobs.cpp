#include "host/app/batch_jobs.h"

#include <algorithm>
#include <chrono>
#include <system_error>
#include <utility>

#include "host/app/batch_index.h"
#include "host/app/exit_status.h"
#include "host/app/exporter_options.h"
#include "host/app/places.h"
#include "host/app/run_report.h"
#include "kta/text.h"

namespace maxhost::app {
namespace {

namespace fs = std::filesystem;

// Texts of a list, or of this member of its elements.
std::vector<std::string> Strings(const Json& json, const char* list, const char* member = nullptr) {
    std::vector<std::string> strings;
    for (const Json& entry : json.value(list, Json::array())) {
        strings.push_back((member ? entry.at(member) : entry).get<std::string>());
    }
    return strings;
}

// The files that an export read or looked for.
std::vector<std::string> InputsOf(const Json& json) {
    std::vector<std::string> files = Strings(json, "inputsEscaped");
    std::ranges::transform(files, files.begin(), PercentUnescaped);
    return files.empty() ? Strings(json, "inputs") : files;
}

// The files that an export made.
std::vector<std::string> FilesOf(const Json& json) {
    std::vector<std::string> files;
    for (const Json& file : json.value("files", Json::array())) {
        files.push_back(NameIn(file, "path"));
    }
    return files;
}

// What a process that ended by itself said of its export; `json` is what it printed.
void TakeReport(const Json& json, const Job& job, JobResult& result) {
    result.warnings = json.value("warnings", Json::array());
    result.warningCount = result.warnings.size();
    result.status = result.exitStatus == kExitDone ? JobStatus::exported : JobStatus::failed;
    if (result.exitStatus != kExitDone) {
        result.error = "exit status " + std::to_string(result.exitStatus);
        if (const Json error = json.value("error", Json()); error.is_string()) {
            const std::string text = error.get<std::string>();
            const std::string subject = text.starts_with(job.name + ": ") ? job.name : job.scene;
            result.error +=
                ": " + text.substr(text.starts_with(subject + ": ") ? subject.size() + 2 : 0);
        }
    }
}

// How a process that did not end by itself ended.
void TakeEnd(const ProcessEnd& end, const ProcessLimits& limits, JobResult& result) {
    switch (end.how) {
        case ProcessEnd::How::ranOutOfTime:
            result.status = JobStatus::timeout;
            result.error = "took longer than the " + Shortest(static_cast<float>(limits.seconds)) +
                           " s that --timeout allows";
            break;
        case ProcessEnd::How::ranOutOfMemory:
            result.status = JobStatus::memory;
            result.error = "took more than the " + std::to_string(limits.memory >> 20) +
                           " MB of memory that --memory allows";
            break;
        case ProcessEnd::How::crashed:
            result.status = JobStatus::crashed;
            result.error = "crashed, " + CauseOfCrash(end);
            break;
        default:
            result.status = JobStatus::interrupted;
            result.error = "interrupted";
    }
}

// Takes away the private directory of an export that was ended.
void TidyUp(const fs::path& directory) {
    try {
        const kta::PrivateDirectory tidies(directory);
    } catch (const fs::filesystem_error&) {
        // It stays until the next export to this directory.
    }
}

}  // namespace

const char* NameOf(JobStatus status) {
    static constexpr const char* kNames[] = {"exported", "unchanged", "failed",     "crashed",
                                             "timeout",  "memory",    "interrupted"};
    return kNames[static_cast<std::size_t>(status)];
}

JobResult Refused(std::string error) {
    JobResult result;
    result.status = JobStatus::failed;
    result.exitStatus = kExitRefused;
    result.error = std::move(error);
    return result;
}

// ---------------------------------------------------------------- one job

std::vector<std::string> JobRun::CommandOf(const Job& job,
                                           const std::vector<std::string>& options) const {
    std::vector<std::string> command = {ProgramFile().string(), "-q", "--json", "--progress=never"};
    command.insert(command.end(), options.begin(), options.end());
    if (settings_.kind == JobKind::exports) {
        if (settings_.isDryRun) {
            command.insert(command.end(), {"--dry-run", "--makes-directories"});
        }
        command.insert(command.end(), {"-o", job.output.string(), job.scene});
    } else {
        // So that options which exclude it are refused here, once for all animations.
        command.insert(command.end(), {"--list", "--all-animations", job.scene});
    }
    return command;
}

JobResult JobRun::Export(const Job& job, const std::vector<std::string>& options,
                         unsigned worker) const {
    const fs::path out = room_.Path() / ("out" + std::to_string(worker));
    const fs::path error = room_.Path() / ("error" + std::to_string(worker));
    const ExportStart start;
    const ProcessEnd end =
        RunProcess(CommandOf(job, options), out, error, settings_.limits, &stop_);
    JobResult result;
    result.memory = end.memory;
    result.said = kta::ReadWholeFile(error).value_or("");
    if (end.how != ProcessEnd::How::exited) {
        TakeEnd(end, settings_.limits, result);
        TidyUp(settings_.isDryRun ? room_.Path().parent_path() : job.output.parent_path());
        return result;
    }
    result.exitStatus = end.number;
    try {
        const Json json = Json::parse(kta::ReadWholeFile(out).value_or(""));
        TakeReport(json, job, result);
        result.animations = Strings(json, "animations", "name");
        MadeExport made{InputsOf(json), FilesOf(json), result.warningCount, result.animations};
        result.wouldWrite = json.value("wouldWrite", Json::array());
        result.losses = json.value("losses", Json::array());
        if (result.status == JobStatus::exported && !settings_.isDryRun &&
            (!made.files.empty() || settings_.kind == JobKind::animations)) {
            start.WriteIndex({Absolute(job.scene), job.output, settings_.program, options}, made);
        }
    } catch (const Json::exception&) {
        result.status = JobStatus::failed;
        result.error = "exit status " + std::to_string(end.number) + " without a report";
    } catch (const std::system_error& failure) {
        result.notice = std::string("the index of its export cannot be written: ") + failure.what();
    }
    return result;
}

JobResult JobRun::Run(const Job& job, unsigned worker) const {
    std::vector<std::string> options = settings_.options;
    options.insert(options.end(), job.arguments.begin(), job.arguments.end());
    const FormerExport former =
        LookAtFormer({Absolute(job.scene), job.output, settings_.program, options});
    JobResult result;
    if (former.why.empty() && !settings_.force) {
        result.status = JobStatus::unchanged;
        result.warningCount = former.warnings;
        result.animations = former.animations;
        return result;
    }
    result = Export(job, options, worker);
    result.why = settings_.force ? "--force" : former.why;
    if (former.isIndexDamaged && result.notice.empty()) {
        result.notice =
            IndexOf(job.output).string() + ": " + former.why + ", so that it is ignored";
    }
    return result;
}

// ---------------------------------------------------------------- all jobs

JobRun::JobRun(JobSettings settings, std::vector<Job> jobs)
    : settings_(std::move(settings)),
      jobs_(std::move(jobs)),
      room_(TemporaryRoom()),
      results_(jobs_.size()) {
    for (std::size_t job = 0; job < jobs_.size(); ++job) {
        waiting_.push_back(job);
    }
    const std::size_t workers = std::min<std::size_t>(std::max(1u, settings_.atOnce), jobs_.size());
    for (unsigned worker = 0; worker < workers; ++worker) {
        try {
            workers_.emplace_back([this, worker] { Work(worker); });
        } catch (const std::system_error&) {
            if (worker == 0) {
                throw;
            }
            break;  // those that the system has room for do all jobs
        }
    }
}

JobRun::~JobRun() {
    Stop();
}

void JobRun::Stop() {
    stop_ = true;
    for (std::thread& worker : workers_) {
        worker.join();
    }
    workers_.clear();
}

std::optional<std::size_t> JobRun::Next() {
    const std::lock_guard lock(mutex_);
    if (waiting_.empty() || stop_) {
        return std::nullopt;
    }
    const std::size_t job = waiting_.front();
    waiting_.pop_front();
    running_.insert(std::ranges::lower_bound(running_, job), job);
    return job;
}

// Nothing where another batch is at the same export.
std::optional<JobResult> JobRun::RunLocked(const Job& job, unsigned worker) const {
    fs::create_directories(job.output.parent_path());
    const std::optional<OutputLock> lock = OutputLock::Try(job.output);
    return lock ? std::optional(Run(job, worker)) : std::nullopt;
}

// The same of any job.
std::optional<JobResult> JobRun::Try(const Job& job, unsigned worker) const {
    if (job.known) {
        return job.known;
    }
    try {
        if (!fs::exists(Absolute(job.scene))) {
            return Refused("does not exist, expected a scene file");
        }
        return settings_.isDryRun ? Run(job, worker) : RunLocked(job, worker);
    } catch (const fs::filesystem_error& error) {
        return Refused(error.path1().string() + ": " + error.code().message());
    } catch (const std::exception& error) {
        return Refused(error.what());
    }
}

void JobRun::Work(unsigned worker) {
    while (const std::optional<std::size_t> number = Next()) {
        const Stopwatch watch;
        if (std::optional<JobResult> result = Try(jobs_[*number], worker)) {
            result->seconds = jobs_[*number].known ? result->seconds : watch.Seconds();
            Finish(*number, *std::move(result));
        } else {
            PutBack(*number);
        }
    }
}

// Others are done first.
void JobRun::PutBack(std::size_t job) {
    constexpr std::chrono::milliseconds kPatience(20);
    std::this_thread::sleep_for(kPatience);
    const std::lock_guard lock(mutex_);
    std::erase(running_, job);
    waiting_.push_back(job);
}

void JobRun::Finish(std::size_t job, JobResult result) {
    const std::lock_guard lock(mutex_);
    std::erase(running_, job);
    results_[job] = std::move(result);
    ended_.push_back(job);
    hasEnded_.notify_one();
}

std::optional<std::size_t> JobRun::Wait(double seconds) {
    std::unique_lock lock(mutex_);
    hasEnded_.wait_for(lock, std::chrono::duration<double>(seconds),
                       [this] { return !ended_.empty(); });
    if (ended_.empty()) {
        return std::nullopt;
    }
    const std::size_t job = ended_.front();
    ended_.pop_front();
    return job;
}

std::vector<std::size_t> JobRun::Running() const {
    const std::lock_guard lock(mutex_);
    return running_;
}

}  // namespace maxhost::app
