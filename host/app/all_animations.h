// One export for each of a model's animations.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "host/app/batch_jobs.h"
#include "host/app/loaded_scene.h"
#include "host/app/options.h"

namespace maxhost::app {

// What stands behind the export's name for each animation: its own name, made fit for a file's, its
// number where it has none, and a number behind it ("Walk-2") where one before has it already, in
// large or small letters. Never two alike.
std::vector<std::string> NamesOfExports(const std::vector<std::string>& animations);

// The animation at that position, for messages: "animation Walk"; its number where it has no name.
std::string SubjectOf(const std::string& animation, std::size_t position);

// The options that export the animation at that position, to robot-NAME.hdo in the place of
// robot.hdo; the files that options name beside it get NAME in the same way.
Options ForAnimation(const Options& options, std::size_t position, const std::string& name);

// The same of a job that exports a scene: one for each of its animations, with their own places.
// The job itself where it has none.
std::vector<Job> ForAnimations(const Job& scene, const std::vector<std::string>& animations);

}  // namespace maxhost::app
