// Exports of many scenes in one run.
#pragma once

#include <string>

#include "host/app/console.h"
#include "host/app/options.h"
#include "host/app/run_report.h"

namespace maxhost::app {

// What is wrong with the options of a batch beside the others, in one line; empty: nothing.
std::string FaultOfBatch(const Options& options);

// Finds the scenes that --batch names and exports them. Returns the exit status: 0 when all went
// well, 1 when any failed, 128 + the signal's number when it was interrupted. Throws
// Failure(kExitRefused) where there is nothing to do, before anything is done.
int RunBatch(const Options& options, Interrupts& interrupts, Console& console, RunReport& report,
             bool showsProgress);

}  // namespace maxhost::app
