// One run of hdo-export.
#pragma once

#include <string>
#include <vector>

#include "host/app/console.h"

namespace maxhost::app {

// Parses the arguments (without the program's name), does what they say and returns the exit
// status. `isTerminal`: whether messages go to a terminal.
int Run(const std::vector<std::string>& arguments, Console& console, bool isTerminal);

}  // namespace maxhost::app
