// The command `kta`. Results go to standard output, everything else to standard error.
#include <CLI/CLI.hpp>
#include <cerrno>
#include <exception>
#include <functional>
#include <iostream>
#include <map>
#include <string>
#include <system_error>
#include <vector>

#include "kta/command/command.h"
#include "kta/completion.h"
#include "kta/help.h"
#include "kta/manual_page.h"
#include "kta/text.h"

namespace {

using kta::command::Command;
using kta::command::Complain;
using kta::command::Status;

const kta::Manual& ManualOfKta() {
    static const kta::Manual manual = {
        "look into the KTA files that the HDO exporter writes",
        {{"ENVIRONMENT",
          {{"COLUMNS",
            "The width that help texts are wrapped to, where it is set; else the "
            "terminal's."},
           {"NO_COLOR, TERM", "No colours where NO_COLOR is set and not empty, or TERM is dumb."}}},
         {"EXAMPLES",
          {{"kta info figure.hdotemp1 figure.hdotemp2",
            "What an export holds: nodes, meshes, materials, tracks."},
           {"kta check figure.hdotemp1 figure.hdotemp2",
            "Whether readers can rely on both files; status 1 where they cannot."},
           {"kta preview figure.hdotemp1 figure.hdotemp2 -o figure.html",
            "A page for browsers that plays the motion."},
           {"kta glb figure.hdotemp1 figure.hdotemp2 -o figure.glb",
            "The same for programs that read glTF."},
           {"kta diff --tolerance 0.001 old.hdotemp1 new.hdotemp1",
            "What changed from one export to the next, rounding left out."}}},
         {"SEE ALSO", {{"", "hdo-export(1)"}}}}};
    return manual;
}

// How the files of the commands are named, for completion.
void OfferFileNames(CLI::App& app) {
    const std::map<std::string, std::vector<std::string>> endings = {{"ACTOR", {"temp1"}},
                                                                     {"MOTION", {"temp2"}},
                                                                     {"FILE", {"temp1", "temp2"}},
                                                                     {"FILES", {"temp1", "temp2"}}};
    for (CLI::App* command : app.get_subcommands(std::function<bool(CLI::App*)>())) {
        for (CLI::Option* option : command->get_options()) {
            if (option->get_positional()) {
                const bool isSeveral = option->get_items_expected_max() > 1;
                kta::OfferFiles(option, endings.at(isSeveral ? "FILES" : option->get_name(true)));
            }
        }
    }
    const auto offer = [&app](const char* command, const char* option,
                              const std::vector<std::string>& named) {
        kta::OfferFiles(app.get_subcommand(command)->get_option(option), named);
    };
    offer("glb", "--output", {".glb"});
    offer("preview", "--output", {".png", ".apng", ".html"});
    offer("diff", "--preview", {".html"});
    offer("check", "--rules", {".json"});
}

std::vector<Command> Describe(CLI::App& app) {
    kta::WrapHelp(app, kta::TerminalColumns());
    app.set_version_flag("--version", "kta " KTA_VERSION);
    kta::AddGenerate(app, ManualOfKta(), "Options", OfferFileNames);
    app.require_subcommand(1);
    app.allow_windows_style_options(false);  // "/dir/file" is a path on Windows too
    app.footer(
        "Exit status: 0 done, 1 a file is faulty, 2 bad usage, a file that cannot be read or has\n"
        "nothing to show, or output that cannot be written.");
    return {kta::command::AddInfo(app), kta::command::AddDump(app),    kta::command::AddCheck(app),
            kta::command::AddDiff(app), kta::command::AddPreview(app), kta::command::AddGlb(app)};
}

std::string DidYouMean(const std::string& nearest) {
    return nearest.empty() ? "" : "; did you mean " + nearest + "?";
}

// CLI11's own text does not tell what stands in the command's place.
std::string WithoutCommand(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands({})) {
        names.push_back(command->get_name());
    }
    const std::vector<std::string> rest = app.remaining();
    const std::string nearest = rest.empty() ? "" : kta::NearestWord(rest.front(), names);
    return (rest.empty() ? "no command given" : "\"" + rest.front() + "\": no such command") +
           ", expected one of " + kta::Joined(names) + DidYouMean(nearest);
}

// Of the first word that looks like an option and is none of the command's.
std::string NearestOption(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands()) {
        for (const CLI::Option* option : command->get_options()) {
            for (const std::string& name : option->get_lnames()) {
                names.push_back("--" + name);
            }
        }
    }
    for (const std::string& word : app.remaining(true)) {
        if (word.starts_with("--")) {
            return kta::NearestWord(word.substr(0, word.find('=')), names);
        }
    }
    return {};
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
        Complain(
            (lacksCommand ? WithoutCommand(app) : error.what() + DidYouMean(NearestOption(app))) +
            " (see kta --help)");
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
