// Quaternions. They turn by the LEFT-hand rule, against the matrices: the quaternion
// (0, 0, sin a/2, cos a/2) is a turn by -a about z. The 3 x 3 part of a quaternion's row-vector
// matrix is, element by element, the textbook's column-vector matrix.
//
// Computed in double and rounded once to float.
#ifndef HOST_SDK_INCLUDE_QUAT_H
#define HOST_SDK_INCLUDE_QUAT_H

#include <coreexp.h>
#include <matrix3.h>
#include <point3.h>

class GEOMexport Quat {
  public:
    float x, y, z, w;

    Quat() {}  // leaves the components uninitialised
    Quat(float X, float Y, float Z, float W) : x(X), y(Y), z(Z), w(W) {}
    Quat(double X, double Y, double Z, double W)
        : x((float)X), y((float)Y), z((float)Z), w((float)W) {}
    // The rotation of a matrix that neither scales nor mirrors, as a unit quaternion with w >= 0.
    // (Shepperd, Quaternion from Rotation Matrix, Journal of Guidance and Control 1 (1978).)
    Quat(const Matrix3& matrix);
};

// `q` of unit length; the angle is 2 acos(w), from 0 to 2 pi, with w cut to -1 .. 1. The axis has
// length 1; it is (1, 0, 0) where the vector part is zero.
GEOMexport void AngAxisFromQ(const Quat& q, float* ang, Point3& axis);

#endif  // HOST_SDK_INCLUDE_QUAT_H
