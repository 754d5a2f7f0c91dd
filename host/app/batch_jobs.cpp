#include "host/app/batch_jobs.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iterator>
#include <optional>
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

std::string TextOf(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

JobResult Failed(std::string error) {
    JobResult result;
    result.status = JobStatus::failed;
    result.exitStatus = kExitRefused;
    result.error = std::move(error);
    return result;
}

std::vector<std::string> Strings(const Json& json, const char* member, const char* part) {
    std::vector<std::string> strings;
    for (const Json& entry : json.value(member, Json::array())) {
        strings.push_back(part ? entry.at(part).get<std::string>() : entry.get<std::string>());
    }
    return strings;
}

// What a process that ended by itself said of its export; `json` is what it printed.
void TakeReport(const Json& json, const std::string& scene, JobResult& result) {
    result.warnings = json.value("warnings", Json::array());
    result.warningCount = result.warnings.size();
    result.status = result.exitStatus == kExitDone ? JobStatus::exported : JobStatus::failed;
    if (result.exitStatus != kExitDone) {
        result.error = "exit status " + std::to_string(result.exitStatus);
        if (const Json error = json.value("error", Json()); error.is_string()) {
            const std::string text = error.get<std::string>(), subject = scene + ": ";
            result.error += ": " + text.substr(text.starts_with(subject) ? subject.size() : 0);
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
            result.error = "crashed, signal " + std::to_string(end.number);
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

// ---------------------------------------------------------------- one job

JobResult JobRun::Export(const Job& job, const std::vector<std::string>& options,
                         unsigned worker) const {
    std::vector<std::string> command = {ProgramFile().string(), "-q", "--json", "--progress=never"};
    command.insert(command.end(), options.begin(), options.end());
    command.insert(command.end(), {"-o", job.output.string(), job.scene});
    const fs::path out = room_.Path() / ("out" + std::to_string(worker));
    const fs::path error = room_.Path() / ("error" + std::to_string(worker));
    const ExportStart start;
    const ProcessEnd end = RunProcess(command, out, error, settings_.limits, &stop_);
    JobResult result;
    result.memory = end.memory;
    result.said = TextOf(error);
    if (end.how != ProcessEnd::How::exited) {
        TakeEnd(end, settings_.limits, result);
        TidyUp(job.output.parent_path());
        return result;
    }
    result.exitStatus = end.number;
    try {
        const Json json = Json::parse(TextOf(out));
        TakeReport(json, job.scene, result);
        const std::vector<std::string> files = Strings(json, "files", "path");
        if (result.status == JobStatus::exported && !files.empty()) {
            start.WriteIndex({Absolute(job.scene), job.output, settings_.program, options},
                             Strings(json, "inputs", nullptr), files, result.warningCount);
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
      room_(fs::temp_directory_path()),
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

// Another batch may be at the same export: others are done first then.
void JobRun::Work(unsigned worker) {
    while (const std::optional<std::size_t> number = Next()) {
        const Job& job = jobs_[*number];
        const Stopwatch watch;
        JobResult result;
        try {
            if (!job.refusal.empty()) {
                Finish(*number, Failed(job.refusal));
                continue;
            }
            if (!fs::exists(Absolute(job.scene))) {
                Finish(*number, Failed("does not exist, expected a scene file"));
                continue;
            }
            fs::create_directories(job.output.parent_path());
            const std::optional<OutputLock> lock = OutputLock::Try(job.output);
            if (!lock) {
                constexpr std::chrono::milliseconds kPatience(20);
                std::this_thread::sleep_for(kPatience);
                const std::lock_guard guard(mutex_);
                std::erase(running_, *number);
                waiting_.push_back(*number);
                continue;
            }
            result = Run(job, worker);
        } catch (const fs::filesystem_error& error) {
            result = Failed(error.path1().string() + ": " + error.code().message());
        } catch (const std::exception& error) {
            result = Failed(error.what());
        }
        result.seconds = watch.Seconds();
        Finish(*number, std::move(result));
    }
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
