// Euler angles: three right-handed rotations in radians about the axes that the order names. With
// static axes the matrix of EULERTYPE_XYZ is, for row vectors,
//   RotateXMatrix(ang[0]) * RotateYMatrix(ang[1]) * RotateZMatrix(ang[2])
// and likewise for the others; with EULERTYPE_RF (rotating frame) the product is reversed.
//
// An unknown order gives the identity, and angles of 0.
#ifndef HOST_SDK_INCLUDE_EULER_H
#define HOST_SDK_INCLUDE_EULER_H

#include <coreexp.h>
#include <matrix3.h>
#include <quat.h>

#define EULERTYPE_XYZ 0
#define EULERTYPE_XZY 1
#define EULERTYPE_YZX 2
#define EULERTYPE_YXZ 3
#define EULERTYPE_ZXY 4
#define EULERTYPE_ZYX 5
#define EULERTYPE_XYX 6
#define EULERTYPE_YZY 7
#define EULERTYPE_ZXZ 8

#define EULERTYPE_RF 16

GEOMexport void EulerToMatrix(float* ang, Matrix3& mat, int type);
GEOMexport void EulerToQuat(float* ang, Quat& q, int type);

// For matrices that neither scale nor mirror. The middle angle is from -pi/2 to pi/2, with equal
// outer axes from 0 to pi; where it leaves the outer angles undetermined, the last rotation (with a
// rotating frame the first) is 0. `flag` changes nothing here.
// (Shoemake, Euler Angle Conversion, Graphics Gems IV (1994).)
GEOMexport void MatrixToEuler(const Matrix3& mat, float* ang, int type, BOOL flag = FALSE);
GEOMexport void QuatToEuler(const Quat& q, float* ang, int type, bool flag = false);

#endif  // HOST_SDK_INCLUDE_EULER_H
