// What a batch says: a line for each export as it ends, the progress bar, the table, the JSON.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "host/app/batch_jobs.h"
#include "host/app/console.h"
#include "host/app/options.h"
#include "host/app/run_report.h"

namespace maxhost::app {

// Counts of the ways in which exports ended.
class Totals {
  public:
    void Add(const JobResult& result) {
        ++counts_[static_cast<std::size_t>(result.status)];
        warnings_ += result.warningCount;
    }
    std::size_t Of(JobStatus status) const { return counts_[static_cast<std::size_t>(status)]; }
    std::size_t All() const;
    std::size_t Bad() const;
    std::size_t Warnings() const { return warnings_; }

    // "1 failed, 2 exported", in these words.
    std::string Text(const std::function<const char*(JobStatus)>& wordOf) const;

  private:
    std::array<std::size_t, 7> counts_{};
    std::size_t warnings_ = 0;
};

// How an export is named in JSON: name, scene and output.
Json PlaceOf(const Job& job);

class BatchReport {
  public:
    BatchReport(const Options& options, const JobRun& run, Console& console, bool showsProgress);

    // Of a job that has ended.
    void Tell(std::size_t job);
    void ShowProgress();
    void Conclude(RunReport& report);
    const Totals& SoFar() const { return totals_; }

  private:
    const char* WordOf(JobStatus status) const;  // in lines
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

}  // namespace maxhost::app
