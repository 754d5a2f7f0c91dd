// The command `kta`. Results go to standard output, everything else to standard error.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "kta/dump.h"
#include "kta/info.h"
#include "kta/reader.h"
#include "kta/text.h"

namespace {

enum Status { kDone = 0, kFaultyFile = 1, kUnusable = 2 };

struct Options {
    std::vector<std::string> infoFiles;
    std::string dumpFile;
    bool json = false;
};

void Complain(const std::string& text) {
    std::cerr << "kta: " << kta::OneLine(text) << '\n';
}

Status Report(const std::vector<std::string>& faultLines, const kta::Reading& reading) {
    for (const std::string& line : faultLines) {
        Complain(line);
    }
    if (!reading.inputError.empty()) {
        return kUnusable;
    }
    return reading.faults.empty() ? kDone : kFaultyFile;
}

Status Info(const std::vector<std::string>& paths) {
    Status worst = kDone;
    bool first = true;
    for (const std::string& path : paths) {
        const kta::Reading reading = kta::ReadFile(path);
        if (reading.file) {
            std::cout << (first ? "" : "\n");
            kta::WriteInfo(path, *reading.file, std::cout);
            first = false;
        }
        worst = std::max(worst,
                         Report(kta::FirstFaults(kta::FaultLines(path, reading), path), reading));
    }
    return worst;
}

Status Dump(const std::string& path, bool json) {
    const kta::Reading reading = kta::ReadFile(path);
    if (reading.file && json) {
        kta::DumpJson(path, *reading.file, reading.faults, std::cout);
    } else if (reading.file) {
        kta::DumpText(path, *reading.file, std::cout);
    }
    return Report(kta::FaultLines(path, reading), reading);
}

void Describe(CLI::App& app, Options& options) {
    app.set_version_flag("--version", "kta " KTA_VERSION);
    app.require_subcommand(1);
    app.allow_windows_style_options(false);  // "/dir/file" is a path on Windows too
    app.footer(
        "Exit status: 0 done, 1 a file is faulty, 2 bad usage, a file that cannot be read, or\n"
        "output that cannot be written.");

    CLI::App* info =
        app.add_subcommand("info", "What is in the files: kind, version, size, chunks, nodes");
    info->add_option("FILE", options.infoFiles, "Actor or motion files")->required();

    CLI::App* dump =
        app.add_subcommand("dump", "Every chunk and field of a file, in file order, with offsets");
    dump->add_option("FILE", options.dumpFile, "Actor or motion file")->required();
    dump->add_flag("--json", options.json, "As one JSON object");
}

// CLI11's own text does not tell what stands in the command's place.
std::string WithoutCommand(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands({})) {
        names.push_back(command->get_name());
    }
    const std::vector<std::string> rest = app.remaining();
    return (rest.empty() ? "no command given" : "\"" + rest.front() + "\": no such command") +
           ", expected one of " + kta::Joined(names);
}

Status Run(int argc, char** argv) {
    Options options;
    CLI::App app("Looks into the KTA files that the HDO exporter writes.", "kta");
    Describe(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) {
            app.exit(error);  // prints the help or the version asked for
            return kDone;
        }
        const bool lacksCommand = app.get_subcommands().empty();
        Complain((lacksCommand ? WithoutCommand(app) : error.what()) + " (see kta --help)");
        return kUnusable;
    }
    return app.got_subcommand("info") ? Info(options.infoFiles)
                                      : Dump(options.dumpFile, options.json);
}

}  // namespace

int main(int argc, char** argv) {
    std::ios::sync_with_stdio(false);
    Status status = kDone;
    try {
        status = Run(argc, argv);
    } catch (const std::exception& error) {
        Complain(error.what());
        status = kUnusable;
    }
    if (!std::cout.flush()) {
        Complain("standard output: cannot be written");
        status = kUnusable;
    }
    return status;
}
