// Every option of the command line with its meaning, value and default: the one place to add one.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "host/app/options.h"

namespace maxhost::app {

// Presets and sidecar files may hold the options that are configurable(): those that say what is
// exported and how. What names files or says how the program runs is for the command line alone,
// since a sidecar may come from anywhere. Parsing fills `options`, which outlive `app`.
void AddOptions(CLI::App& app, Options& options);

// Options::passedOn of what was parsed.
std::vector<std::string> PassedOn(const CLI::App& app);

}  // namespace maxhost::app
