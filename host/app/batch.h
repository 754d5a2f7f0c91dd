// Exports of many scenes in one run.
#pragma once

#include <string>
#include <vector>

#include "host/app/batch_jobs.h"
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

// The same for exports that somebody else lists, each with the options of the command line that
// Options::passedOn holds and its own ones. Shows their progress and prints the summary, or with
// --json puts it into the report.
int ExportAll(const Options& options, std::vector<Job> jobs, Interrupts& interrupts,
              Console& console, RunReport& report, bool showsProgress);

}  // namespace maxhost::app
