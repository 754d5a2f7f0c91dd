// Completion of the programs' command lines in bash, made of their options.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace kta {

// What is offered as the value of an option, or in a positional's place: these words; or
// directories, and files whose names end in one of these. Where neither is said, the value's name
// tells: DIR directories, FILE and the like any file, all other values nothing.
// Both give the option back.
CLI::Option* OfferWords(CLI::Option* option, const std::vector<std::string>& words);
CLI::Option* OfferFiles(CLI::Option* option, const std::vector<std::string>& endings);

// A script that bash sources. It needs nothing beside bash.
std::string BashCompletion(CLI::App& app);

}  // namespace kta
