// The factors of an affine row-vector matrix A, in the order of their action:
//   A = inverse(U) * diag(k) * U * Q * (f * identity) * translation by t
// with U and Q the matrices that MakeMatrix gives for u and q.
#ifndef HOST_SDK_INCLUDE_DECOMP_H
#define HOST_SDK_INCLUDE_DECOMP_H

#include <point3.h>
#include <quat.h>

struct AffineParts {
    Point3 t;  // translation
    Quat q;    // rotation
    Quat u;    // rotation to the axes of the stretch
    Point3 k;  // stretch factors
    float f;   // sign of the determinant: 1 or -1
};

#endif  // HOST_SDK_INCLUDE_DECOMP_H
