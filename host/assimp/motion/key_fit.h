// Curves of three numbers fitted to a motion: with keys at the motion's own times and, where these
// do not do, at frames in between.
#pragma once

#include <cstddef>
#include <vector>

#include "host/assimp/motion/curves.h"
#include "host/scene/scene.h"

namespace maxhost::import {

// A motion that a curve is fitted to. Times are ticks, not whole ones in general.
class Motion {
  public:
    struct Sample {
        double time = 0;
        Vector value;         // exact
        Quaternion rotation;  // what the value stands for, of a rotation
    };

    virtual ~Motion() = default;
    // Of the values that stand for the same pose the one nearest to `near`.
    virtual Sample At(double time, const Vector& near) const = 0;
    // The same for the time of a sample.
    virtual Sample Again(const Sample& sample, const Vector& near) const = 0;
    // How far the pose of `value` is from that of the sample, in the unit of the tolerance.
    virtual double Error(const Vector& value, const Sample& sample) const = 0;
    // The same for the pose at a time.
    virtual double ErrorAt(const Vector& value, double time) const = 0;
};

// A key of three curves that share their times. Tangents are in value per tick and as the scene
// stores them, an in-tangent back in time; handles have the default length.
struct FittedKey {
    int time = 0;
    Vector value;
    scene::Tangent inType = scene::Tangent::linear;
    scene::Tangent outType = scene::Tangent::linear;
    Vector inTangent, outTangent;
};

struct Knot {
    int tick = 0;
    std::size_t key = 0;   // position in the times
    bool isMoved = false;  // another time falls on the same tick
};

// The times (ascending) on whole ticks, strictly ascending. Of those that fall on one tick the
// first and the last are kept, and one of them moves to the neighbouring tick, so that a jump stays
// one; where that is taken, the last alone is kept. Of a step curve a key stands on the first tick
// at which its value holds, and the last of several on one tick is kept.
std::vector<Knot> KnotsOf(const std::vector<double>& times, bool isStep);

struct FitRules {
    double tolerance = 0;
    // Ticks; 0: no keys in between, and no fit in between either.
    int frame = 0;
    // Between the motion's own times.
    Interpolation interpolation = Interpolation::linear;
};

// Keys at `times` (ascending, at least one) and, of a motion that is not a step one, in between
// where otherwise the curve would stray by more than the tolerance at a frame or halfway between
// two. Straight lines are tried first, then keys at frames in between; where there is no frame in
// between, the sides of the two keys get the slopes of the motion, or those of the parabola through
// the point halfway. Where a rotation turns about a pole of its angles, a key may stand one tick
// behind another. No frame gets more than one key beside the motion's own. Cost: n log n in frames
// and times.
std::vector<FittedKey> FitKeys(const Motion& motion, const std::vector<double>& times,
                               const FitRules& rules);

// The curve's own keys, its times in ticks, with its own interpolation. A value is that of the
// curve at the key's tick where rounding the time costs more than a part of the tolerance.
std::vector<FittedKey> KeysOf(const Curve<Vector>& curve, double tolerance);

}  // namespace maxhost::import
