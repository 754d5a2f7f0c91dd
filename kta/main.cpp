// The command `kta`. Results go to standard output, everything else to standard error.
#include <CLI/CLI.hpp>
#include <cerrno>
#include <exception>
#include <iostream>
#include <string>
#include <system_error>
#include <vector>

#include "kta/command/command.h"
#include "kta/help.h"
#include "kta/text.h"

namespace {

using kta::command::Command;
using kta::command::Complain;
using kta::command::Status;

std::vector<Command> Describe(CLI::App& app) {
    kta::WrapHelp(app, kta::TerminalColumns());
    app.set_version_flag("--version", "kta " KTA_VERSION);
    app.require_subcommand(1);
    app.allow_windows_style_options(false);  // "/dir/file" is a path on Windows too
    app.footer(
        "Exit status: 0 done, 1 a file is faulty, 2 bad usage, a file that cannot be read or has\n"
        "nothing to show, or output that cannot be written.");
    return {kta::command::AddInfo(app), kta::command::AddDump(app),    kta::command::AddCheck(app),
            kta::command::AddDiff(app), kta::command::AddPreview(app), kta::command::AddGlb(app)};
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
    CLI::App app("Looks into the KTA files that the HDO exporter writes.", "kta");
    const std::vector<Command> commands = Describe(app);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) {
            app.exit(error);  // prints the help or the version asked for
            return kta::command::kDone;
        }
        const bool lacksCommand = app.get_subcommands().empty();
        Complain((lacksCommand ? WithoutCommand(app) : error.what()) + " (see kta --help)");
        return kta::command::kUnusable;
    }
    for (const Command& command : commands) {
        if (command.app->parsed()) {
            return command.run();
        }
    }
    return kta::command::kUnusable;
}

}  // namespace

int main(int argc, char** argv) {
    std::ios::sync_with_stdio(false);
    // A result that finds no room ends the program at once, while it is known why.
    std::cout.exceptions(std::ios::failbit | std::ios::badbit);
    try {
        const Status status = Run(argc, argv);
        std::cout.flush();
        return status;
    } catch (const std::ios_base::failure&) {
        const int reason = errno;
        std::cout.exceptions(std::ios::goodbit);  // the library flushes once more in the end
        Complain("standard output: cannot be written (" + std::generic_category().message(reason) +
                 ")");
    } catch (const std::exception& error) {
        Complain(error.what());
    }
    return kta::command::kUnusable;
}
