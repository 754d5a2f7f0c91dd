// Keys of scenes made by hand, and what becomes of them.
#pragma once

#include <assimp/scene.h>

#include <array>
#include <string>
#include <utility>
#include <vector>

#include "host/scene/scene.h"

using PositionKeys = std::vector<std::pair<double, aiVector3D>>;
using RotationKeys = std::vector<std::pair<double, aiQuaternion>>;

// A channel of a node that Assimp would give: one key for what does not move.
void SetKeys(aiNodeAnim& channel, const PositionKeys& position,
             const RotationKeys& rotation = {{0, aiQuaternion()}},
             const PositionKeys& scale = {{0, {1, 1, 1}}});

// By the right-hand rule.
aiQuaternion Turned(const aiVector3D& axis, double degrees);

// The keys of axis x, y or z; empty where it is constant.
using AxisKeys = std::vector<maxhost::scene::Key>;
const AxisKeys& PositionKeysOf(const maxhost::scene::Node& node, int axis);
const AxisKeys& RotationKeysOf(const maxhost::scene::Node& node, int axis);
const maxhost::scene::BezierScale& ScaleOf(const maxhost::scene::Node& node);

std::vector<int> TimesOf(const AxisKeys& keys);
std::vector<float> ValuesOf(const AxisKeys& keys);
// Rounded to a thousandth of a degree.
std::vector<double> DegreesOf(const AxisKeys& keys);

bool IsConstant(const maxhost::scene::Node& node);
