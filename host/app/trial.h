// One export in a process of its own, which may crash or hang, and how it ended.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "host/app/child_process.h"
#include "host/app/options.h"
#include "host/scene/scene.h"

namespace maxhost::app {

// How an export came out. Two fail in the same way where `kind` is the same: the status or the
// signal with the first message, names and numbers left aside, or its issue's code where it is one
// of a check.
struct TrialResult {
    bool fails = false;
    bool isRefused = false;  // the run ended before the exporter did anything, with status 2 or 3
    std::string kind;
    std::string shown;  // for people, one line
    double seconds = 0;
};

// Exports scenes as the options say, in `room`, a directory that nobody else uses.
class Trial {
  public:
    Trial(const Options& options, std::filesystem::path room);

    // Lets hdo-export export the scene, and check what it made, for at most so many seconds.
    // Throws Failure where the scene cannot be written or the program not be started.
    TrialResult Run(const scene::Scene& scene, double seconds) const;

  private:
    TrialResult ResultOf(const ProcessEnd& end, double seconds) const;
    std::filesystem::path Made() const { return room_ / "made"; }

    std::filesystem::path room_;
    bool isStrict_;
    std::vector<std::string> command_;
};

}  // namespace maxhost::app
