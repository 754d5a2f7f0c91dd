// Quaternions and angle-axis pairs. Both turn by the LEFT-hand rule, against the matrices: the
// quaternion (0, 0, sin a/2, cos a/2) is RotateZMatrix(-a). The 3 x 3 part of a quaternion's
// row-vector matrix is, element by element, the textbook's column-vector matrix; so, with
// Hamilton's product, p * q turns by p first, as matrices do.
//
// Computed in double and rounded once to float.
#ifndef HOST_SDK_INCLUDE_QUAT_H
#define HOST_SDK_INCLUDE_QUAT_H

#include <coreexp.h>
#include <matrix3.h>
#include <point3.h>

class Quat;

// `angle` in radians about `axis`; it may exceed a turn.
class GEOMexport AngAxis {
  public:
    Point3 axis;
    float angle;

    AngAxis() {}  // leaves the components uninitialised
    AngAxis(const Point3& Axis, float Angle) : axis(Axis), angle(Angle) {}
    AngAxis(const Quat& q);
};

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
    Quat(const AngAxis& angAxis);

    // `i` from 0 to 3.
    float& operator[](int i) { return i == 0 ? x : i == 1 ? y : i == 2 ? z : w; }
    const float& operator[](int i) const { return i == 0 ? x : i == 1 ? y : i == 2 ? z : w; }

    Quat operator-() const { return Quat(-x, -y, -z, -w); }
    Quat operator*(const Quat& next) const;
    Quat& operator*=(const Quat& next) { return *this = *this * next; }

    int operator==(const Quat& b) const { return x == b.x && y == b.y && z == b.z && w == b.w; }
    int operator!=(const Quat& b) const { return !(*this == b); }
    // Whether no component differs by more than `epsilon`; q and -q differ.
    int Equals(const Quat& b, float epsilon = 1E-6f) const;

    Quat& Identity() { return *this = Quat(0.0f, 0.0f, 0.0f, 1.0f); }
    int IsIdentity() const { return x == 0 && y == 0 && z == 0 && w == 1; }

    // In place. A quaternion of length zero, or of no finite one, becomes the identity.
    Quat& Invert();
    Quat& Normalize();

    // The rotation as a matrix, for a quaternion of any length but zero (which gives the identity).
    void MakeMatrix(Matrix3& matrix) const;
};

GEOMexport Quat IdentQuat();
GEOMexport Quat Inverse(const Quat& q);
GEOMexport Quat Normalize(const Quat& q);

// `q` of unit length; the angle is 2 acos(w), from 0 to 2 pi, with w cut to -1 .. 1. The axis has
// length 1; it is (1, 0, 0) where the vector part is zero.
GEOMexport void AngAxisFromQ(const Quat& q, float* ang, Point3& axis);
// The axis may have any length but zero (which gives the identity).
GEOMexport Quat QFromAngAxis(float ang, const Point3& axis);

// Multiply the matrix from the right (the rotation comes last) and from the left.
GEOMexport void RotateMatrix(Matrix3& matrix, const Quat& q);
GEOMexport void RotateMatrix(Matrix3& matrix, const AngAxis& angAxis);
GEOMexport void PreRotateMatrix(Matrix3& matrix, const Quat& q);
GEOMexport void PreRotateMatrix(Matrix3& matrix, const AngAxis& angAxis);

#endif  // HOST_SDK_INCLUDE_QUAT_H
