// What a person may do next where a run lost something or failed.
#pragma once

#include <string>
#include <vector>

#include "host/app/console.h"
#include "host/app/options.h"
#include "host/app/run_report.h"

namespace maxhost::app {

// One line's words; empty where there is nothing to say. `options` is null where the command line
// was refused. The remedies of losses are those of their table.
std::string NextStep(const Options* options, int status, const RunReport& report,
                     const std::vector<Notice>& notices);

}  // namespace maxhost::app
