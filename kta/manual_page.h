// The programs' manual pages, made of their command lines.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <vector>

namespace kta {

// A term, such as a command or a file, with what is said of it; a paragraph where it is empty.
struct ManualEntry {
    std::string term;
    std::string text;
};

struct ManualSection {
    std::string heading;
    std::vector<ManualEntry> entries;
};

// What a manual page holds beside what the help says.
struct Manual {
    std::string summary;  // behind the program's name, in one line of small letters
    std::vector<ManualSection> sections;
};

// The page in the macros of man(7), for section 1. The help's description and footer become the
// description, but for the footer's paragraph "Exit status: ...", which has a section of its own;
// each group of options has its heading, and each command a section of commands.
std::string ManualPage(CLI::App& app, const Manual& manual);

// Adds --generate, which prints the manual page or the bash completion and ends the program as
// --version does: with a CLI::CallForVersion that holds the text. `addOffers` adds what completion
// alone needs and would cost every start its time.
void AddGenerate(CLI::App& app, const Manual& manual, const std::string& group = "Options",
                 const std::function<void(CLI::App&)>& addOffers = {});

}  // namespace kta
