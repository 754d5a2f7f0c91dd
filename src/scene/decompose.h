// Polar decomposition of an affine transform, after Ken Shoemake, "Polar Matrix Decomposition",
// Graphics Gems IV, Academic Press 1994.
#ifndef SCENE_DECOMPOSE_H
#define SCENE_DECOMPOSE_H

#include <decomp.h>
#include <max.h>

// Takes a row-vector matrix apart so that, applied in this order,
//     matrix = (inverse(u) * diag(k) * u) * f * q * t
// where u and q are the SDK's quaternions (their conversion to a matrix gives the row-vector
// matrix), f is -1 for a mirroring matrix and 1 otherwise, and t is the fourth row. A matrix that
// rounding cannot tell from a singular one counts as not mirroring. Of all the orders and turns of
// the stretch axes the one nearest to the coordinate axes is taken. Any finite matrix, flat and
// singular ones included, is the product of its parts.
void DecomposeTransform(const Matrix3& matrix, AffineParts& parts);

#endif
