// One export for each of a model's animations.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "host/app/loaded_scene.h"
#include "host/app/options.h"

namespace maxhost::app {

// What stands behind the export's name for each animation: its own name, made fit for a file's, its
// number where it has none, and a number behind it ("Walk-2") where one before has it already, in
// large or small letters. Never two alike.
std::vector<std::string> NamesOfExports(const std::vector<Animation>& animations);

// The options that export the animation at that position, to robot-NAME.hdo in the place of
// robot.hdo; the files that options name beside it get NAME in the same way.
Options ForAnimation(const Options& options, std::size_t position, const std::string& name);

}  // namespace maxhost::app
