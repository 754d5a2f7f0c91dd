// Curves of positions, rotations and scales over time, as the formats define them between keys, and
// a node's local transform over time as the product of fixed and of moving ones.
#pragma once

#include <assimp/scene.h>

#include <cstddef>
#include <optional>
#include <unordered_map>
#include <vector>

#include "host/assimp/maths.h"
#include "host/assimp/tree/tree.h"

namespace maxhost::import {

// ---------------------------------------------------------------- curves

// linear: the straight line, of rotations the shorter great arc. step: the first key's value.
// cubic: Hermite's curve with the keys' slopes, component by component, of rotations brought to
// unit length.
enum class Interpolation { linear, step, cubic };

template <typename T>
struct CurveKey {
    double time = 0;
    T value;
    T inSlope, outSlope;  // of a cubic curve, in value per time, both forward in time
};

// A curve over keys whose times ascend. Held before the first and behind the last. Of keys with one
// time the last counts at that time.
template <typename T>
struct Curve {
    std::vector<CurveKey<T>> keys;
    Interpolation interpolation = Interpolation::linear;

    T At(double time) const;  // there must be a key
    // The same; `behind` is a guess at the position of the first key behind the time, and becomes
    // that.
    T At(double time, std::size_t& behind) const;
    // Whether the value is the same, to `tolerance` in each component, at all times.
    bool IsConstant(double tolerance) const;
};

// Hermite's cubic from `a` (s = 0) to `b` (s = 1), `duration` later, with these slopes per time.
template <typename T>
T Hermite(const T& a, const T& outSlope, const T& b, const T& inSlope, double duration, double s) {
    const double v = 1 - s;
    return (1 + 2 * s) * v * v * a + s * v * v * duration * outSlope + s * s * (3 - 2 * s) * b +
           -s * s * v * duration * inSlope;
}

// A value as a curve shows it: a rotation is of unit length.
inline Vector OnCurve(const Vector& v) {
    return v;
}
inline Quaternion OnCurve(const Quaternion& q) {
    return Unit(q);
}

// The channel's three curves are a node's translation, rotation and scale (column vectors:
// translation * rotation * scale). None is without keys.
struct Channel {
    Curve<Vector> position;
    Curve<Quaternion> rotation;
    Curve<Vector> scale;

    // Holds the pose at time 0.
    static Channel Still(const Vector& position, const Quaternion& rotation, const Vector& scale);

    Matrix4 At(double time) const;
};

// By the node that each moves: the node's own transform at each time, in ticks, before the turn to
// z up. Rotations are of unit length, times ascend, and all is finite.
using Channels = std::unordered_map<const aiNode*, Channel>;

// ---------------------------------------------------------------- chains

class AnimatedChain {
  public:
    // The product goes on, on the right, with a fixed transform or with one that moves (or does
    // not: a channel that stands still counts as fixed where it is at time 0). A tolerance for the
    // position of the latter; lengths below it are no motion.
    void Append(const Matrix4& fixed);
    void Append(const Channel& channel, double stillness);

    bool Moves() const { return !moving_.empty(); }
    Matrix4 At(double time) const;
    // The pose nearest to the matrix of that time. Of a mirrored one, or one with an axis of no
    // length, the rotation is the one that the chain's own rotations make.
    Pose PoseAt(double time) const;

    // The channel whose position, rotation and scale are the chain's at every time, with its keys
    // as they stand between the keys, too; none where the chain is more than that.
    std::optional<Channel> AsChannel() const;

    // All the times of keys (ascending), twice where the pose jumps.
    std::vector<double> Times() const;
    // cubic where a curve that moves is, else linear where one is, else step.
    Interpolation CommonInterpolation() const;

    // Bounds over all times: how far the transform moves the origin, how much longer it makes
    // anything.
    double MostOffset() const;
    double MostScale() const;

  private:
    Quaternion RotationAt(double time) const;

    std::vector<Matrix4> fixed_{Matrix4()};  // one more than those that move, around them
    std::vector<Channel> moving_;
};

// The channel after the turn.
Channel Turned(const Channel& channel, const AxisTurn& turn);

// Appends the node's local matrix over time, after the turn, to the chain. `stillness` is
// the tolerance for its position.
void AppendLocal(AnimatedChain& chain, const SourceNode& node, const Channels& channels,
                 const AxisTurn& turn, double stillness);

// The matrices of the tree's nodes at tick 0, relative to their parents and before the turn: where
// their channels put them, else as the file has them at rest.
std::vector<Matrix4> LocalsAtStart(const SourceTree& tree, const Channels& channels);

}  // namespace maxhost::import
