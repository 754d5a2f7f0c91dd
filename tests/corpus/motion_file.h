// An exported motion file, read without the toolkit, and the poses that a reader rebuilds from it.
// Throws Difference on what it does not know. Everything is in 3ds Max's axes, z up, and for column
// vectors.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "tests/corpus/model.h"

namespace corpus {

// Translation, rotation, and scale along the node's own axes.
struct Pose {
    Vector translation, scale{1, 1, 1};
    Rotation rotation;

    Matrix ToMatrix() const { return Compose(translation, rotation, scale); }
};

struct SampledTrack {
    std::vector<float> times;
    std::vector<std::array<float, 4>> values;  // x, y, z and, of rotations, w
};

struct CurveKey {
    float time, value;
    int inCode, outCode;
    std::array<float, 2> in, out;  // handle length and slope
};

struct KeyframedTrack {
    std::array<std::vector<CurveKey>, 3> axes;
};

// The tracks of one of a motion part's three components; at most one of each is set.
struct Tracks {
    std::optional<SampledTrack> sampled;
    std::optional<KeyframedTrack> keyframed;
};

struct MotionPart {
    std::string name;
    Pose rest;
    Tracks position, rotation, scale;

    // Between two sampled keys the first one holds: ask at their times.
    Pose At(double seconds) const;
};

std::vector<MotionPart> ReadMotion(const std::string& path);

}  // namespace corpus
