// A transform: four rows of three floats for row vectors. Rows 0 to 2 are the axes, row 3 is the
// translation. A * B applies A first, then B. Angles are radians; rotations follow the right-hand
// rule (counter-clockwise seen from the axis' positive end).
//
// Sums are made in double and rounded once to float.
#ifndef HOST_SDK_INCLUDE_MATRIX3_H
#define HOST_SDK_INCLUDE_MATRIX3_H

#include <coreexp.h>
#include <point3.h>
#include <point4.h>
#include <windows.h>

// What a matrix is known not to do.
#define POS_IDENT 1  // it does not translate
#define ROT_IDENT 2  // it does not rotate: rows 0 to 2 point along x, y and z
#define SCL_IDENT 4  // it does not scale: rows 0 to 2 have length 1
#define MAT_IDENT (POS_IDENT | ROT_IDENT | SCL_IDENT)

typedef float MRow[3];

class GEOMexport Matrix3 {
  public:
    Matrix3();           // all zero; plug-ins must not rely on it
    Matrix3(BOOL init);  // 1: identity, 0: all zero
    Matrix3(const Point3& U, const Point3& V, const Point3& N, const Point3& T);  // the rows

    // The elements, row by row. Writing through it leaves the identity flags as they were: call
    // ValidateFlags() then. Every other function keeps them true.
    MRow* GetAddr() { return m_; }
    const MRow* GetAddr() const { return m_; }

    // From the flags alone; all three are set if and only if the elements are the identity's.
    int IsIdentity() const { return (flags_ & MAT_IDENT) == MAT_IDENT; }
    DWORD GetIdentFlag() const { return flags_; }
    void ClearIdentFlag(DWORD flags) { flags_ &= ~flags; }
    void SetNotIdent() { flags_ = 0; }
    void ValidateFlags();

    // `i` from 0 to 3 for rows, to 2 for columns.
    Point3 GetRow(int i) const { return Point3(m_[i]); }
    void SetRow(int i, const Point3& row);
    Point4 GetColumn(int i) const { return Point4(m_[0][i], m_[1][i], m_[2][i], m_[3][i]); }
    Point3 GetTrans() const { return GetRow(3); }
    void SetTrans(const Point3& translation) { SetRow(3, translation); }

    void Zero();
    void IdentityMatrix();
    void NoTrans() { SetTrans(Point3(0, 0, 0)); }
    // The axes go back to x, y, z and keep their lengths; all three are negated where the matrix
    // is mirrored.
    void NoRot();
    // Every axis gets length 1; an axis without length stays as it is. Shear and mirror stay.
    void NoScale();

    // These multiply from the right: the change comes after what the matrix does so far.
    void Translate(const Point3& translation);
    void RotateX(float angle);
    void RotateY(float angle);
    void RotateZ(float angle);
    void Scale(const Point3& scale, BOOL trans = FALSE);  // `trans`: scales the translation too
    // These multiply from the left: the change comes first.
    void PreTranslate(const Point3& translation);
    void PreRotateX(float angle);
    void PreRotateY(float angle);
    void PreRotateZ(float angle);
    void PreScale(const Point3& scale);

    void Invert();
    // Nonzero: the axes are left-handed (the determinant is negative).
    BOOL Parity() const;
    // Whether no element differs by more than `epsilon`.
    int Equals(const Matrix3& other, float epsilon = 1E-6f) const;

    Matrix3 operator*(const Matrix3& next) const;
    Matrix3& operator*=(const Matrix3& next) { return *this = *this * next; }

    Point3 PointTransform(const Point3& point) const;    // with the translation
    Point3 VectorTransform(const Point3& vector) const;  // without the translation

  private:
    MRow m_[4];
    DWORD flags_;
};

// The row vector times the matrix, with the translation, in whichever order it is written.
GEOMexport Point3 operator*(const Matrix3& matrix, const Point3& point);
GEOMexport Point3 operator*(const Point3& point, const Matrix3& matrix);
GEOMexport Point3 VectorTransform(const Matrix3& matrix, const Point3& vector);

// A matrix that has no inverse within floats gives the identity: its determinant is zero within
// the rounding of its computation in double, or the inverse has an element that is not finite.
GEOMexport Matrix3 Inverse(const Matrix3& matrix);

GEOMexport Matrix3 RotateXMatrix(float angle);
GEOMexport Matrix3 RotateYMatrix(float angle);
GEOMexport Matrix3 RotateZMatrix(float angle);
GEOMexport Matrix3 TransMatrix(const Point3& translation);
GEOMexport Matrix3 ScaleMatrix(const Point3& scale);

#endif  // HOST_SDK_INCLUDE_MATRIX3_H
