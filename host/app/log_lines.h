// What lines of the exporter's log tell: which stage and which node the export is at, how long each
// took, and what the exporter warns of.
#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace maxhost::app {

struct LogLine {
    // Of the stage that the line begins; null: it goes on.
    const char* stage = nullptr;
    // The node that the lines from here on are about. Empty with a stage: none yet.
    std::optional<std::string> node;
    bool isWarning = false;
};

LogLine ReadLogLine(std::string_view line);

struct ExporterWarning {
    std::string node;  // empty: none
    std::string text;  // digits as #, so that one kind of warning is one text
    std::size_t count = 0;
};

// Of a whole log, each kind once for a node, in the order of the first. Linear.
std::vector<ExporterWarning> WarningsIn(const std::filesystem::path& log);

struct SpentTime {
    std::string name;
    double seconds = 0;
};

// Takes the log's texts as they come, and the time between them.
class StageTimes {
  public:
    void OnText(std::string_view text);
    // The export has ended.
    void Stop() { Spend(); }

    // Most first. Nodes by name, in both passes together.
    std::vector<SpentTime> Stages() const;
    std::vector<SpentTime> Nodes() const;

  private:
    using Clock = std::chrono::steady_clock;
    using Sums = std::unordered_map<std::string, double>;

    void Spend();
    static std::vector<SpentTime> Sorted(const Sums& sums);

    std::optional<Clock::time_point> since_;
    std::string stage_ = "beginning";
    std::string node_;
    Sums stages_, nodes_;
};

}  // namespace maxhost::app
