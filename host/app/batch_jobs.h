// A list of exports, each by hdo-export in a process of its own, several at once.
//
//     std::vector<Job> jobs = {{.name = "walk", .scene = "a.fbx", .arguments = {"--animation=0"},
//                               .output = "/scenes/a.walk.hdo"}, ...};
//     JobRun run(settings, jobs);
//     while (const std::optional<std::size_t> ended = run.Wait(0.1)) { ... }
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "host/app/child_process.h"
#include "host/app/json_parts.h"
#include "kta/whole_file.h"

namespace maxhost::app {

enum class JobStatus { exported, unchanged, failed, crashed, timeout, memory, interrupted };
// As reports name it, in one word.
const char* NameOf(JobStatus status);

struct JobResult {
    JobStatus status = JobStatus::interrupted;  // also of a job that was not begun
    int exitStatus = 0;                         // of hdo-export, where it ended by itself
    std::string error;                          // why it failed, one line; empty where it did not
    std::string why;                            // it was done and not left as it was
    std::string notice;                         // something else to be told, one line; or empty
    Json warnings = Json::array();              // code and text of each, as in --json
    std::size_t warningCount = 0;               // also of one that was left as it was
    std::vector<std::string> animations;        // of its scene, where they were asked for
    double seconds = 0;
    std::uint64_t memory = 0;                                 // bytes, see ProcessEnd
    std::string said;                                         // all lines of its standard error
    Json wouldWrite = Json::array(), losses = Json::array();  // of a dry run, as in --json
};

// One export.
struct Job {
    std::string name;                        // for people: the scene, or what of it is exported
    std::string scene;                       // SCENE of the command line
    std::vector<std::string> arguments{};    // options of this export alone, as --name=value
    std::filesystem::path output;            // the export file, absolute; its directory is made
    std::optional<std::string> animation{};  // one of all of the scene's: its name
    std::string part{};                      // the same for people: "animation Walk"; or empty
    std::optional<JobResult> known{};        // what comes of it, where it is not to be tried
};

// One that is not tried, since it cannot be done.
JobResult Refused(std::string error);

// What is done of each job: its export, or finding out which animations its scene has.
enum class JobKind { exports, animations };

struct JobSettings {
    std::vector<std::string> options;  // of every export, as --name=value
    unsigned atOnce = 1;
    ProcessLimits limits;  // of each export
    bool force = false;    // also those that nothing has changed for
    std::string program;   // see HashOfPrograms; empty: all exports are done
    JobKind kind = JobKind::exports;
    bool isDryRun = false;  // nothing is written; `exported` is what would be
};

// The exports of a list, going on until the object ends, which ends those that run. What has been
// put in place until then stays, whole.
class JobRun {
  public:
    JobRun(JobSettings settings, std::vector<Job> jobs);
    ~JobRun();

    // Waits until another job has ended, at most `seconds`; its number, by the order of ending.
    // Nothing where none did meanwhile.
    std::optional<std::size_t> Wait(double seconds);
    // Begins no other job and ends those that run. Wait() gives what ended before.
    void Stop();

    const std::vector<Job>& Jobs() const { return jobs_; }
    // Of a job that Wait() gave; of all others that they were interrupted.
    const JobResult& Result(std::size_t job) const { return results_[job]; }
    // The numbers of those that run now, in order.
    std::vector<std::size_t> Running() const;

    JobRun(const JobRun&) = delete;
    JobRun& operator=(const JobRun&) = delete;

  private:
    void Work(unsigned worker);
    std::optional<std::size_t> Next();
    void Finish(std::size_t job, JobResult result);
    JobResult Run(const Job& job, unsigned worker) const;
    JobResult Export(const Job& job, const std::vector<std::string>& options,
                     unsigned worker) const;
    std::vector<std::string> CommandOf(const Job& job,
                                       const std::vector<std::string>& options) const;
    std::optional<JobResult> Try(const Job& job, unsigned worker) const;
    std::optional<JobResult> RunLocked(const Job& job, unsigned worker) const;
    void PutBack(std::size_t job);

    const JobSettings settings_;
    const std::vector<Job> jobs_;
    const kta::PrivateDirectory room_;
    std::atomic<bool> stop_ = false;

    mutable std::mutex mutex_;  // of what follows
    std::condition_variable hasEnded_;
    std::deque<std::size_t> waiting_, ended_;
    std::vector<std::size_t> running_;
    std::vector<JobResult> results_;

    std::vector<std::thread> workers_;
};

}  // namespace maxhost::app
