// Evaluation of key curves.
#pragma once

#include <interval.h>

#include <vector>

#include "host/scene/scene.h"
#include "host/sdk/math/affine.h"

namespace maxhost {

// The curve's value at `t`; there must be at least one key, and times must ascend. Held before the
// first and after the last key and where a step tangent says so; the straight line between two
// linear tangents; otherwise the cubic Bezier curve through the handles. `valid` is intersected
// with the range around `t` over which the value is known to stay the same.
//
// Uses the four basic operations alone, so every platform gives the same bits.
double EvaluateKeys(const std::vector<scene::Key>& keys, TimeValue t, Interval& valid);

// The same for three components that share times and tangent types.
Double3 EvaluateKeys(const std::vector<scene::Key3>& keys, TimeValue t, Interval& valid);

}  // namespace maxhost
