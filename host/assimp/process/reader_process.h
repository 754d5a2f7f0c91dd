// Runs a reader of foreign files in a process of its own: readers written by others crash, hang or
// take all memory on some broken files, and then only that process ends.
#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <limits>
#include <span>
#include <string>
#include <string_view>

namespace maxhost::import {

constexpr std::uint64_t kReaderStack = std::uint64_t{1} << 30;

struct ReaderLimits {
    unsigned cpuSeconds = 45;                         // of the whole work
    std::uint64_t memory = std::uint64_t{512} << 20;  // bytes beside the stack
};

// What a reader says that had to stop for want of memory; the message tells the limit behind it.
inline constexpr char kNoMemory[] = "cannot be read: not enough memory";

// The exit status of a reader that has too little memory when its result has begun.
constexpr int kReaderLacksMemory = 98;

// The limits for a reader of this many bytes: what no sound file comes near and damaged ones ask
// for. CPU time is 45 s and 30 s more for each 100 MB, memory 512 MiB and 400 times the bytes.
inline ReaderLimits LimitsFor(std::uint64_t bytes) {
    constexpr std::uint64_t kBytesPerSecond = 100'000'000 / 30;
    // Several times what the densest packed formats grow to.
    constexpr std::uint64_t kMemoryPerByte = 400;
    ReaderLimits limits;
    limits.cpuSeconds += static_cast<unsigned>(
        std::min<std::uint64_t>(bytes / kBytesPerSecond, std::numeric_limits<int>::max()));
    limits.memory += kMemoryPerByte * bytes;
    return limits;
}

// Why a reader within these limits has too little memory.
inline std::string NoMemoryWithin(const ReaderLimits& limits) {
    return std::string(kNoMemory) + ", the reader may take " + std::to_string(limits.memory >> 20) +
           " MiB, the limit for its size (512 MiB and 400 times its bytes)";
}

// Why one is ended that takes more time.
inline std::string NoTimeWithin(const ReaderLimits& limits) {
    return "cannot be read: the reader was stopped after " + std::to_string(limits.cpuSeconds) +
           " seconds of CPU time, the limit for its size (45 s, 30 s more for each 100 MB)";
}

// Told of how much of something is done, 0 to 100.
using ReportPercent = std::function<void(int percent)>;

// Puts the next bytes of a result.
using PutResult = std::function<void(std::string_view bytes)>;

// Fills the beginning of `room` with the next bytes of a result; returns how many they are, 0 at
// the end.
using GetResult = std::function<std::size_t(std::span<char> room)>;

// Runs `work` in a child process, on a thread with a stack of kReaderStack (readers recurse through
// hierarchies), and here, as it comes over, gives its result to `take`. Nothing else that `work`
// does to this program's state stays, and what it prints is dropped; its process ends without
// destructors of what it left behind. What it reports there comes to `report` here meanwhile, in
// order, and at least twice a second the last of it once more. Throws ImportError, with the message
// of the exception that `work` throws before it puts anything or with how the process ended, which
// goes before anything that `take` throws.
void RunInReaderProcess(
    const std::function<void(const ReportPercent& report, const PutResult& put)>& work,
    const ReaderLimits& limits, const ReportPercent& report,
    const std::function<void(const GetResult& get)>& take);

// The same for a result that is a text.
std::string RunInReaderProcess(const std::function<std::string(const ReportPercent&)>& work,
                               const ReaderLimits& limits, const ReportPercent& report);
std::string RunInReaderProcess(const std::function<std::string()>& work,
                               const ReaderLimits& limits = {});

}  // namespace maxhost::import
