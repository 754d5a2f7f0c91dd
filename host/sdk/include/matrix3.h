// A transform: four rows of three floats for row vectors. Rows 0 to 2 are the axes, row 3 is the
// translation. A * B applies A first, then B.
//
// Sums are made in double and rounded once to float.
#ifndef HOST_SDK_INCLUDE_MATRIX3_H
#define HOST_SDK_INCLUDE_MATRIX3_H

#include <coreexp.h>
#include <point3.h>
#include <windows.h>

class GEOMexport Matrix3 {
  public:
    Matrix3();           // all zero; plug-ins must not rely on it
    Matrix3(BOOL init);  // 1: identity, 0: all zero
    Matrix3(const Point3& U, const Point3& V, const Point3& N, const Point3& T);  // the rows

    // `i` from 0 to 3.
    Point3 GetRow(int i) const { return rows_[i]; }
    Point3 GetTrans() const { return rows_[3]; }

    void NoTrans();
    // Every axis gets length 1; an axis without length stays as it is. Shear and mirror stay.
    void NoScale();

    Matrix3 operator*(const Matrix3& next) const;

  private:
    Point3 rows_[4];
};

// The row vector times the matrix, with the translation and without it.
GEOMexport Point3 operator*(const Matrix3& matrix, const Point3& point);
GEOMexport Point3 VectorTransform(const Matrix3& matrix, const Point3& vector);

// A matrix that has no inverse within floats gives the identity: its determinant is zero within
// the rounding of its computation in double, or the inverse has an element that is not finite.
GEOMexport Matrix3 Inverse(const Matrix3& matrix);

#endif  // HOST_SDK_INCLUDE_MATRIX3_H
