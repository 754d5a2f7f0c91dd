#include "kta/info.h"

#include <algorithm>
#include <iostream>
#include <memory>

#include "kta/command/command.h"
#include "kta/text.h"

namespace kta::command {
namespace {

struct InfoOptions {
    std::vector<std::string> files;
    bool json = false;
};

Status Info(const InfoOptions& options) {
    Status worst = kDone;
    bool first = true;
    for (const std::string& path : options.files) {
        const Reading reading = ReadGiven(path);
        const std::string name = NameOf(path);
        if (options.json) {
            WriteInfoJson(name, reading, std::cout);
        } else if (reading.file) {
            std::cout << (first ? "" : "\n");
            WriteInfo(name, *reading.file, std::cout);
            first = false;
        }
        worst = std::max(worst, Report(FirstFaults(FaultLines(name, reading), name), reading));
    }
    return worst;
}

}  // namespace

Command AddInfo(CLI::App& kta) {
    const auto options = std::make_shared<InfoOptions>();
    CLI::App* info = kta.add_subcommand(
        "info", "What is in the files: kind, size, chunks, nodes, geometry, motion");
    info->add_option("FILE", options->files, "Actor or motion files; - is standard input")
        ->required();
    info->add_flag("--json", options->json, "One JSON object a file");
    return {info, [options] { return Info(*options); }};
}

}  // namespace kta::command
