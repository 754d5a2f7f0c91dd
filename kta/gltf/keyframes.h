// Key tracks as what a glTF animation can hold: keys at common times of all components, between
// which values step, go straight (rotations turn evenly), or follow cubic splines.
#pragma once

#include <vector>

#include "kta/tracks.h"

namespace kta::gltf {

enum class Interpolation { step, linear, cubic };

struct Keyframes {
    Interpolation interpolation = Interpolation::linear;
    std::vector<float> times;   // ascending
    std::vector<float> values;  // of each key; a cubic one has its tangent in, value, tangent out
    bool isCut = false;         // has not the keys that it takes to be as exact as it should be
};

// How exactly curves that no such keys can follow are sampled.
constexpr double kMostDegreesOff = 0.01;
constexpr double kMostShareOff = 1e-4;  // of the range of the track's values

// Keys of a curve that is sampled: so many for each of its own, and these.
constexpr std::size_t kMostKeysPerKey = 64;
constexpr std::size_t kMostKeysMore = 4096;

// Of a position or scale, each component multiplied by its factor. Times are those of the file less
// `start`. Steps beside other keys stand as two keys with the least time there is between them. The
// result is empty for a track without keys.
Keyframes VectorKeyframes(const Track& track, const Vector3& without, const Vector3& factors,
                          double start);

// In glTF's axes (see Exchanged).
Keyframes RotationKeyframes(const Track& track, double start);

}  // namespace kta::gltf
