// Transforms in double, so that a chain of nodes is rounded to float once, at its end.
#pragma once

#include <matrix3.h>

#include <array>

#include "host/scene/scene.h"

namespace maxhost {

using Double3 = std::array<double, 3>;

// Four rows for row vectors, as in Matrix3; row 3 is the translation.
struct Affine {
    std::array<Double3, 4> rows{Double3{1, 0, 0}, Double3{0, 1, 0}, Double3{0, 0, 1}, Double3{}};

    // Applies `*this` first, then `next`.
    Affine operator*(const Affine& next) const;
};

Affine ToAffine(const scene::Matrix& matrix);
Affine ToAffine(const Matrix3& matrix);
Matrix3 ToMatrix3(const Affine& transform);

}  // namespace maxhost
