// Rotations as Euler angles that go on from one key to the next without jumps.
#pragma once

#include "host/assimp/motion/animation_curves.h"

namespace maxhost::import {

// The angles (radians, any number of turns) whose rotation rotX(x) * rotY(y) * rotZ(z), row vectors
// and right-hand rule, is `rotation` (of unit length), and that lie nearest to `near` of all that
// do. Where the rotation is within `poleAngle` (radians) of y = +-90 degrees, x and z turn about
// the same axis and share what is to be turned, so that both move least; the rotation then is off
// by at most twice that angle.
Vector EulerNear(const Quaternion& rotation, const Vector& near, double poleAngle);

Quaternion RotationOfEuler(const Vector& angles);

}  // namespace maxhost::import
