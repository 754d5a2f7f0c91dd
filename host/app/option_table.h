// Every option of the command line with its meaning, value and default: the one place to add one.
#pragma once

#include <CLI/CLI.hpp>

#include "host/app/options.h"

namespace maxhost::app {

// Parsing fills `options`, which outlive `app`.
void AddOptions(CLI::App& app, Options& options);

}  // namespace maxhost::app
