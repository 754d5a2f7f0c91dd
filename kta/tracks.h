// The key tracks of a motion file as functions of time.
#pragma once

#include <cstdint>
#include <vector>

#include "kta/reader.h"
#include "kta/vector.h"

namespace kta {

// A key of one axis. A side has a handle where its code is kTangentBezier; its length is in (0, 3).
struct CurveKey {
    double time = 0;
    double value = 0;
    KTATangentCode inCode = kTangentLinear;
    KTATangentCode outCode = kTangentLinear;
    KTATangent in{};
    KTATangent out{};
};

// By ascending time.
using Curve = std::vector<CurveKey>;

// The first and the last value hold before and behind the keys, and a step's until the next key.
// Between two keys runs a cubic Bezier curve over time. Its inner control points lie a third of the
// handle's length (in the time between the keys) and a third of its slope (in values a second)
// away; a side without handle has a third of the way to the other key. `without` is what a curve
// without keys gives.
double CurveAt(const Curve& curve, double seconds, double without);

struct VectorSample {
    double time = 0;
    Vector3 value{};
};

struct RotationSample {
    double time = 0;
    Quaternion value = {0, 0, 0, 1};  // of length 1
};

// One of the three parts of a node's motion; at most one of the vectors has keys. Those that cannot
// be placed are left out: of a number that is not finite, or a time before the key before.
struct Track {
    std::vector<VectorSample> vectorSamples;  // in the file's axes, as are those of rotations
    std::vector<RotationSample> rotationSamples;
    std::array<Curve, 3> curves;  // keyframed: of 3ds Max's X, Y and Z; rotations in degrees

    bool IsSampled() const { return !vectorSamples.empty() || !rotationSamples.empty(); }
    bool IsKeyframed() const;
    // Of all keys; 0 without any.
    double FirstTime() const;
    double LastTime() const;
};

Track TrackOf(const KeyTrack& keys);

// A position or scale, in the file's axes. Between two samples the way is straight. `without` is
// for a track without keys, and for an axis without.
Vector3 VectorAt(const Track& track, double seconds, const Vector3& without);

// A rotation, in the file's axes. Between two samples it turns at even speed. Keyframed rotations
// turn about 3ds Max's X, then about its Y, then about its Z axis.
Quaternion RotationAt(const Track& track, double seconds, const Quaternion& without);

}  // namespace kta
