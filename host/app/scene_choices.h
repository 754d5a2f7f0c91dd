// What the command line changes in a loaded scene before anything is done with it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "host/app/options.h"
#include "host/app/scene_loader.h"

namespace maxhost::app {

// The position of the animation that --animation names. A name counts before a number: "1" is the
// first animation of that name, and animation 1 only where none has it. Nothing: there is no such.
std::optional<std::size_t> FindAnimation(const std::string& wanted,
                                         const std::vector<Animation>& animations);

// Applies --animation, --scale, --frame-rate, --start, --end and --select. Throws
// Failure(kExitRefused) for a node or an animation that is not there, and for a range that ends
// before it starts.
void ApplyChoices(const Options& options, LoadedScene& loaded);

}  // namespace maxhost::app
