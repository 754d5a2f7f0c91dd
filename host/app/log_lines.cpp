#include "host/app/log_lines.h"

#include <algorithm>
#include <fstream>

#include "kta/text.h"

namespace maxhost::app {
namespace {

struct LineStart {
    std::string_view text;
    const char* stage;
    bool namesNode;  // in quotes behind it, to the last quote
};

constexpr LineStart kLineStarts[] = {{"Exporting material list", "materials", false},
                                     {"- Exporting node '", "nodes", true},
                                     {"- Exporting motionpart '", "motion", true},
                                     {"Bones influencing node '", nullptr, true},
                                     {"Closing file", "converter", false},
                                     {"Writing file header", "beginning", false}};

std::string WithoutDigits(std::string_view text) {
    std::string result;
    for (const char c : text) {
        const bool isDigit = c >= '0' && c <= '9';
        if (!isDigit || result.empty() || result.back() != '#') {
            result += isDigit ? '#' : c;
        }
    }
    return result;
}

}  // namespace

LogLine ReadLogLine(std::string_view line) {
    LogLine result;
    for (const LineStart& start : kLineStarts) {
        if (!line.starts_with(start.text)) {
            continue;
        }
        result.stage = start.stage;
        result.node = "";
        if (start.namesNode) {
            const std::string_view rest = line.substr(start.text.size());
            result.node = std::string(rest.substr(0, rest.rfind('\'')));
        }
        return result;
    }
    result.isWarning = line.starts_with("WARNING: ") || line.starts_with("*** Warning: ") ||
                       line.starts_with("*** Failed to ");
    return result;
}

std::vector<ExporterWarning> WarningsIn(const std::filesystem::path& log) {
    std::vector<ExporterWarning> warnings;
    std::unordered_map<std::string, std::size_t> known;
    std::ifstream file(log);
    std::string node;
    for (std::string line; std::getline(file, line);) {
        const LogLine read = ReadLogLine(line);
        node = read.node.value_or(node);
        if (!read.isWarning) {
            continue;
        }
        const std::string text = WithoutDigits(kta::OneLine(line));
        const auto [found, isNew] = known.try_emplace(node + '\n' + text, warnings.size());
        if (isNew) {
            warnings.push_back({node, text, 0});
        }
        ++warnings[found->second].count;
    }
    return warnings;
}

// ---------------------------------------------------------------- times

void StageTimes::Spend() {
    const Clock::time_point now = Clock::now();
    if (since_) {
        const double seconds = std::chrono::duration<double>(now - *since_).count();
        stages_[stage_] += seconds;
        if (!node_.empty()) {
            nodes_[node_] += seconds;
        }
    }
    since_ = now;
}

void StageTimes::OnText(std::string_view text) {
    const LogLine line = ReadLogLine(text);
    if (!since_ || line.node) {
        Spend();
        stage_ = line.stage ? line.stage : stage_;
        node_ = line.node.value_or(node_);
    }
}

std::vector<SpentTime> StageTimes::Sorted(const Sums& sums) {
    std::vector<SpentTime> times;
    for (const auto& [name, seconds] : sums) {
        times.push_back({name, seconds});
    }
    std::ranges::sort(times, [](const SpentTime& a, const SpentTime& b) {
        return a.seconds != b.seconds ? a.seconds > b.seconds : a.name < b.name;
    });
    return times;
}

std::vector<SpentTime> StageTimes::Stages() const {
    return Sorted(stages_);
}

std::vector<SpentTime> StageTimes::Nodes() const {
    return Sorted(nodes_);
}

}  // namespace maxhost::app
