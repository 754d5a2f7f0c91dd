// A node's local transform over time as the product of fixed and of moving ones.
#pragma once

#include <optional>
#include <vector>

#include "host/assimp/motion/animation_curves.h"
#include "host/assimp/tree/tree.h"

namespace maxhost::import {

// Column vectors: translation * rotation * scale.
struct Pose {
    Vector position;
    Quaternion rotation;
    Vector scale{1, 1, 1};
    double shear = 0;  // what the three leave of the matrix, in parts of its axes' lengths
};

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

// `reference` decides what the matrix leaves open: the signs of the scale's factors, and the
// rotation of axes without length. Without one the factors are all positive or all negative.
Pose PoseOf(const Matrix4& matrix, const Quaternion* reference = nullptr);

}  // namespace maxhost::import
