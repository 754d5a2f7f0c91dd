// How a run of hdo-export ends.
#pragma once

#include <stdexcept>
#include <string>

namespace maxhost::app {

// An interrupted run ends with 128 + the signal's number (see Interrupts).
constexpr int kExitDone = 0;
constexpr int kExitExportFailed = 1;  // DoExport gave 0
constexpr int kExitRefused = 2;       // bad usage, an unreadable scene, a refused choice
constexpr int kExitNoPlugIn = 3;      // the plug-in did not load
constexpr int kExitFaultyOutput =
    4;                             // a check of what was written found a fault, or the disk is full
constexpr int kExitCancelled = 5;  // in the progress bar

// Ends the run with that status and the line "hdo-export: SUBJECT: TEXT".
class Failure : public std::runtime_error {
  public:
    Failure(int status, std::string subject, const std::string& text)
        : std::runtime_error(text), status_(status), subject_(std::move(subject)) {}

    int Status() const { return status_; }
    const std::string& Subject() const { return subject_; }  // a file or an option

  private:
    int status_;
    std::string subject_;
};

}  // namespace maxhost::app
