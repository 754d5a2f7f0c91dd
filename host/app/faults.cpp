#include "host/app/faults.h"

#include <string_view>
#include <unordered_set>

#include "kta/text.h"

namespace maxhost::app {

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

}  // namespace maxhost::app
