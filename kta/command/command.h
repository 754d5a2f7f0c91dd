// The commands of `kta`: each has a file here that adds it to the command line.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "kta/reader.h"
#include "kta/texture_files.h"

namespace kta::command {

// The program's exit status.
enum Status { kDone = 0, kFaultyFile = 1, kDifferent = 1, kUnusable = 2 };

// A command's part of the command line, and what it does once that was parsed. The function owns
// what the options were read into.
struct Command {
    CLI::App* app;
    std::function<Status()> run;
};

Command AddCheck(CLI::App& kta);
Command AddDiff(CLI::App& kta);
Command AddDump(CLI::App& kta);
Command AddGlb(CLI::App& kta);
Command AddInfo(CLI::App& kta);
Command AddPreview(CLI::App& kta);

// ---------------------------------------------------------------- for the commands

// One line to standard error, headed by the program's name.
void Complain(const std::string& text);

// Complains in those lines; the status that the reading gives a command that needs the file whole.
Status Report(const std::vector<std::string>& faultLines, const Reading& reading);

// "-" is the standard input; in messages it is called so.
Reading ReadGiven(const std::string& path);
std::string NameOf(const std::string& path);

// Reads a given file that must be of a kind, and complains of what is wrong with it; `status`
// becomes at least what that gives. There is no file in a reading of which nothing of the kind can
// be shown.
Reading ReadPart(const std::string& path, KTAFileKind kind, Status& status);

// Looks beside the actor file, unless that is the standard input, and then in the folders.
TextureFinder FinderFor(const std::string& actor, const std::vector<std::string>& folders);

// For options that say how many; empty where the text is a whole number of 0 or more, else why not.
std::string CheckCount(const std::string& text);

// Adds an option whose value is a list that commas separate, as in a,b; each element is what `each`
// does not refuse, and none is empty.
CLI::Option* AddList(CLI::App& app, const std::string& name, std::vector<std::string>& list,
                     const std::string& description, const CLI::Validator& each);

// Makes the file or replaces it as a whole. False when it cannot be, which was complained of.
bool WriteOutput(const std::string& path, std::span<const std::uint8_t> bytes);

}  // namespace kta::command
