// What the command line changes in a loaded scene before anything is done with it.
#pragma once

#include "host/app/options.h"
#include "host/app/scene_loader.h"

namespace maxhost::app {

// Applies --scale, --frame-rate, --start, --end and --select, and checks that there is what
// --animation names, which loading has chosen. Throws
// Failure(kExitRefused) for a node or an animation that is not there, and for a range that ends
// before it starts.
void ApplyChoices(const Options& options, LoadedScene& loaded);

}  // namespace maxhost::app
