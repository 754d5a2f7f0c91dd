// What is in a motion file, counted.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "kta/reader.h"

namespace kta {

// The tracks of one letter and version.
struct TrackTotal {
    char trackLetter = 'P';
    std::uint32_t version = 0;
    std::size_t tracks = 0;
    std::size_t keys = 0;
};

struct PartKeys {
    std::string nodeName;
    std::size_t keys = 0;  // of all tracks of the motion part
};

struct MotionSummary {
    std::size_t parts = 0;
    std::size_t tracks = 0;
    std::size_t keys = 0;
    std::vector<TrackTotal> totals;  // the letters and versions that occur: P, R, r, S
    float firstTime = 0;             // of all keys with a finite time, in seconds
    float lastTime = 0;
    std::vector<PartKeys> mostKeys;  // the few parts with most keys, most first, then in file order
};

// Linear in the file's size.
MotionSummary SummarizeMotion(const File& file);

}  // namespace kta
