// Programs in processes of their own, several at once, within limits of time and memory.
#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace maxhost::app {

struct ProcessLimits {
    double seconds = 0;        // from its start; 0: none
    std::uint64_t memory = 0;  // bytes, see ProcessEnd::memory; 0: none
};

// How a program ended.
struct ProcessEnd {
    enum class How { exited, crashed, ranOutOfTime, ranOutOfMemory, stopped } how = How::exited;
    int number = 0;  // the exit status, or the signal (on Windows the exception) that ended it
    // The most that it, and on Linux the processes that it started, took at once of memory of their
    // own, which no file stands behind, in bytes: looked at twenty times a second, so that short
    // peaks can be missed. 0 for programs that end at once.
    std::uint64_t memory = 0;
};

// What a program that crashed ended by: "signal 11", on Windows "exception 0xc0000005".
std::string CauseOfCrash(const ProcessEnd& end);

// Runs a program to its end: command[0] is its file, which is not searched for. It reads from an
// empty input; its output goes to the two files. It is ended, by force, when it passes a limit,
// when `stop` (which may be null) becomes true, and when this process ends, however that comes.
// Calls on several threads at once run programs side by side. Throws std::system_error when the
// program cannot be started.
ProcessEnd RunProcess(const std::vector<std::string>& command, const std::filesystem::path& out,
                      const std::filesystem::path& error, const ProcessLimits& limits,
                      const std::atomic<bool>* stop = nullptr);

// Whether this process is given a limited amount of memory or of addresses, or the system promises
// no more memory than it has (vm.overcommit_memory 2). Windows: always false.
bool MemoryIsRationed();

}  // namespace maxhost::app
