#include "scene/decompose.h"

#include <float.h>
#include <math.h>
#include <string.h>

// Everything below works on column-vector matrices (the transposed 3 x 3 part) and on quaternions
// by the right-hand rule, as the published algorithm does; the two conversions stand at the end.
// It is carried out in double precision and rounded once.

namespace {

const double kSqrtHalf = 0.70710678118654752440;
const double kPolarTolerance = 1.0e-6;
// The iteration converges quadratically; the bound only ends it for a matrix that is not finite.
const int kMaxPolarSteps = 100;
// Of a determinant, in parts of the sum of its products' magnitudes: two roundings in a product, a
// difference and three additions, with some room.
const double kDeterminantRounding = 8.0 * DBL_EPSILON;
const int kMaxJacobiSweeps = 20;

struct Vector {
    double v[3];
};

struct Matrix33 {
    double m[3][3];
};

struct Quaternion {
    double q[4];  // x, y, z, w
};

Vector MakeVector(double x, double y, double z) {
    Vector result;
    result.v[0] = x;
    result.v[1] = y;
    result.v[2] = z;
    return result;
}

Quaternion MakeQuaternion(double x, double y, double z, double w) {
    Quaternion result;
    result.q[0] = x;
    result.q[1] = y;
    result.q[2] = z;
    result.q[3] = w;
    return result;
}

Quaternion Conjugate(const Quaternion& a) {
    // Differences, because a negated zero would show as -0.000000 in the log.
    return MakeQuaternion(0.0 - a.q[0], 0.0 - a.q[1], 0.0 - a.q[2], a.q[3]);
}

Quaternion Multiply(const Quaternion& a, const Quaternion& b) {
    return MakeQuaternion(a.q[3] * b.q[0] + a.q[0] * b.q[3] + a.q[1] * b.q[2] - a.q[2] * b.q[1],
                          a.q[3] * b.q[1] + a.q[1] * b.q[3] + a.q[2] * b.q[0] - a.q[0] * b.q[2],
                          a.q[3] * b.q[2] + a.q[2] * b.q[3] + a.q[0] * b.q[1] - a.q[1] * b.q[0],
                          a.q[3] * b.q[3] - a.q[0] * b.q[0] - a.q[1] * b.q[1] - a.q[2] * b.q[2]);
}

double Dot(const Vector& a, const Vector& b) {
    return a.v[0] * b.v[0] + a.v[1] * b.v[1] + a.v[2] * b.v[2];
}

Vector Cross(const Vector& a, const Vector& b) {
    return MakeVector(a.v[1] * b.v[2] - a.v[2] * b.v[1], a.v[2] * b.v[0] - a.v[0] * b.v[2],
                      a.v[0] * b.v[1] - a.v[1] * b.v[0]);
}

Vector Row(const Matrix33& a, int i) {
    return MakeVector(a.m[i][0], a.m[i][1], a.m[i][2]);
}

Vector Column(const Matrix33& a, int i) {
    return MakeVector(a.m[0][i], a.m[1][i], a.m[2][i]);
}

Matrix33 Transpose(const Matrix33& a) {
    Matrix33 result;
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            result.m[i][j] = a.m[j][i];
        }
    }
    return result;
}

Matrix33 Multiply(const Matrix33& a, const Matrix33& b) {
    Matrix33 result;
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            result.m[i][j] = Dot(Row(a, i), Column(b, j));
        }
    }
    return result;
}

Matrix33 Identity() {
    Matrix33 result;
    memset(&result, 0, sizeof(result));
    result.m[0][0] = result.m[1][1] = result.m[2][2] = 1.0;
    return result;
}

// The transposed adjoint: its rows are the cross products of the matrix's rows.
Matrix33 AdjointTranspose(const Matrix33& a) {
    Matrix33 result;
    for (int i = 0; i < 3; ++i) {
        const Vector row = Cross(Row(a, (i + 1) % 3), Row(a, (i + 2) % 3));
        memcpy(result.m[i], row.v, sizeof(row.v));
    }
    return result;
}

// Zero where rounding alone can have made it differ from zero: its sign would be chance.
double Determinant(const Matrix33& a) {
    double determinant = 0.0, magnitude = 0.0;
    for (int i = 0; i < 3; ++i) {
        const int j = (i + 1) % 3, k = (i + 2) % 3;
        const double forward = a.m[0][i] * a.m[1][j] * a.m[2][k];
        const double backward = a.m[0][i] * a.m[1][k] * a.m[2][j];
        determinant += forward - backward;
        magnitude += fabs(forward) + fabs(backward);
    }
    return fabs(determinant) > kDeterminantRounding * magnitude ? determinant : 0.0;
}

// Largest sum of absolute values of a row (infinity norm); of a column (one norm) for the
// transposed matrix.
double InfinityNorm(const Matrix33& a) {
    double largest = 0.0;
    for (int i = 0; i < 3; ++i) {
        const double sum = fabs(a.m[i][0]) + fabs(a.m[i][1]) + fabs(a.m[i][2]);
        if (sum > largest) {
            largest = sum;
        }
    }
    return largest;
}

double OneNorm(const Matrix33& a) {
    return InfinityNorm(Transpose(a));
}

// The column that holds the element of the largest magnitude; -1 for the zero matrix.
int LargestColumn(const Matrix33& a) {
    double largest = 0.0;
    int column = -1;
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            if (fabs(a.m[i][j]) > largest) {
                largest = fabs(a.m[i][j]);
                column = j;
            }
        }
    }
    return column;
}

// The Householder vector whose reflection takes v to the z axis (v is not zero).
Vector Reflector(const Vector& v) {
    const double length = sqrt(Dot(v, v));
    Vector u = v;
    u.v[2] += v.v[2] < 0.0 ? -length : length;
    const double scale = sqrt(2.0 / Dot(u, u));
    return MakeVector(u.v[0] * scale, u.v[1] * scale, u.v[2] * scale);
}

Matrix33 ReflectColumns(const Matrix33& a, const Vector& u) {
    Matrix33 result = a;
    for (int j = 0; j < 3; ++j) {
        const double s = Dot(u, Column(a, j));
        for (int i = 0; i < 3; ++i) {
            result.m[i][j] -= u.v[i] * s;
        }
    }
    return result;
}

Matrix33 ReflectRows(const Matrix33& a, const Vector& u) {
    return Transpose(ReflectColumns(Transpose(a), u));
}

// The rotation nearest to a matrix of rank 2 whose transposed adjoint (of rank 1) is given, to one
// of rank 1, or to zero. The stretch has a null direction, along which the factor's sign is free:
// it is chosen so that the factor is a rotation.
Matrix33 RotationOfSingular(const Matrix33& a, const Matrix33& adjoint) {
    // The null directions of the image and of the matrix, or, for rank 1, the image itself and the
    // row space: either way the rest is a 2 x 2 problem.
    const int nullColumn = LargestColumn(adjoint);
    const bool rankTwo = nullColumn >= 0;
    const Matrix33& source = rankTwo ? adjoint : a;
    const int column = rankTwo ? nullColumn : LargestColumn(a);
    if (column < 0) {
        return Identity();
    }
    const Vector left = Reflector(Column(source, column));
    Matrix33 reflected = ReflectColumns(source, left);
    const Vector right = Reflector(Row(reflected, 2));
    reflected = ReflectRows(ReflectColumns(a, left), right);

    Matrix33 q = Identity();
    if (rankTwo) {
        const double w = reflected.m[0][0], x = reflected.m[0][1];
        const double y = reflected.m[1][0], z = reflected.m[1][1];
        const bool proper = w * z > x * y;
        double c = proper ? z + w : z - w;
        double s = proper ? y - x : y + x;
        const double d = sqrt(s * s + c * c);
        if (d > 0.0) {
            c /= d;
            s /= d;
        } else {
            c = 1.0;
        }
        q.m[0][0] = proper ? c : -c;
        q.m[1][1] = c;
        q.m[0][1] = proper ? -s : s;
        q.m[1][0] = s;
        q.m[2][2] = proper ? 1.0 : -1.0;
    } else if (reflected.m[2][2] < 0.0) {
        q.m[2][2] = -1.0;
        q.m[0][0] = -1.0;
    }
    return ReflectRows(ReflectColumns(q, left), right);
}

// The orthogonal polar factor of `a`: Newton's iteration with Higham's acceleration.
Matrix33 OrthogonalFactor(const Matrix33& a) {
    Matrix33 q = Transpose(a);
    double one = OneNorm(q), infinity = InfinityNorm(q), change = 0.0;
    int steps = 0;
    do {
        const Matrix33 adjoint = AdjointTranspose(q);
        const double determinant = Determinant(q);
        if (determinant == 0.0) {
            q = RotationOfSingular(q, adjoint);
            break;
        }
        const double gamma =
            sqrt(sqrt((OneNorm(adjoint) * InfinityNorm(adjoint)) / (one * infinity)) /
                 fabs(determinant));
        const double keep = gamma * 0.5;
        const double mix = 0.5 / (gamma * determinant);
        Matrix33 difference;
        for (int i = 0; i < 3; ++i) {
            for (int j = 0; j < 3; ++j) {
                const double next = keep * q.m[i][j] + mix * adjoint.m[i][j];
                difference.m[i][j] = q.m[i][j] - next;
                q.m[i][j] = next;
            }
        }
        change = OneNorm(difference);
        one = OneNorm(q);
        infinity = InfinityNorm(q);
    } while (change > one * kPolarTolerance && ++steps < kMaxPolarSteps);
    return Transpose(q);
}

// The stretch that the orthogonal factor leaves: transpose(q) * a, made exactly symmetric.
Matrix33 StretchFactor(const Matrix33& q, const Matrix33& a) {
    Matrix33 stretch = Multiply(Transpose(q), a);
    for (int i = 0; i < 3; ++i) {
        for (int j = i + 1; j < 3; ++j) {
            stretch.m[i][j] = stretch.m[j][i] = 0.5 * (stretch.m[i][j] + stretch.m[j][i]);
        }
    }
    return stretch;
}

// One Jacobi rotation in the plane of the axes p and q: makes a.m[p][q] zero and turns the columns
// of `axes` along.
void RotatePlane(Matrix33& a, Matrix33& axes, int p, int q) {
    const double element = a.m[p][q];
    if (element == 0.0) {
        return;
    }
    const double theta = (a.m[q][q] - a.m[p][p]) / (2.0 * element);
    const double root = fabs(theta) + sqrt(theta * theta + 1.0);
    const double t = theta < 0.0 ? -1.0 / root : 1.0 / root;
    const double c = 1.0 / sqrt(t * t + 1.0);
    const double s = t * c;
    for (int i = 0; i < 3; ++i) {
        const double ap = a.m[i][p], aq = a.m[i][q];
        a.m[i][p] = c * ap - s * aq;
        a.m[i][q] = s * ap + c * aq;
    }
    for (int i = 0; i < 3; ++i) {
        const double ap = a.m[p][i], aq = a.m[q][i];
        a.m[p][i] = c * ap - s * aq;
        a.m[q][i] = s * ap + c * aq;
        const double up = axes.m[i][p], uq = axes.m[i][q];
        axes.m[i][p] = c * up - s * uq;
        axes.m[i][q] = s * up + c * uq;
    }
    a.m[p][q] = a.m[q][p] = 0.0;
}

// Eigenvalues of a symmetric matrix and, as the columns of `axes`, a rotation of eigenvectors.
Vector SpectralDecomposition(Matrix33 a, Matrix33& axes) {
    axes = Identity();
    for (int sweep = 0; sweep < kMaxJacobiSweeps; ++sweep) {
        if (fabs(a.m[0][1]) + fabs(a.m[0][2]) + fabs(a.m[1][2]) == 0.0) {
            break;
        }
        // The published order of the planes: it decides where two factors tie.
        RotatePlane(a, axes, 0, 1);
        RotatePlane(a, axes, 2, 0);
        RotatePlane(a, axes, 1, 2);
    }
    return MakeVector(a.m[0][0], a.m[1][1], a.m[2][2]);
}

// The quaternion of a rotation matrix, from its largest component for accuracy.
Quaternion QuaternionOf(const Matrix33& m) {
    const double trace = m.m[0][0] + m.m[1][1] + m.m[2][2];
    Quaternion result;
    if (trace >= 0.0) {
        double s = sqrt(trace + 1.0);
        result.q[3] = s * 0.5;
        s = 0.5 / s;
        for (int i = 0; i < 3; ++i) {
            const int j = (i + 1) % 3, k = (i + 2) % 3;
            result.q[i] = (m.m[k][j] - m.m[j][k]) * s;
        }
        return result;
    }
    int i = 0;
    if (m.m[1][1] > m.m[0][0]) {
        i = 1;
    }
    if (m.m[2][2] > m.m[i][i]) {
        i = 2;
    }
    const int j = (i + 1) % 3, k = (i + 2) % 3;
    double s = sqrt(m.m[i][i] - (m.m[j][j] + m.m[k][k]) + 1.0);
    result.q[i] = s * 0.5;
    s = 0.5 / s;
    result.q[j] = (m.m[i][j] + m.m[j][i]) * s;
    result.q[k] = (m.m[k][i] + m.m[i][k]) * s;
    result.q[3] = (m.m[k][j] - m.m[j][k]) * s;
    return result;
}

void Swap(float& a, float& b) {
    const float kept = a;
    a = b;
    b = kept;
}

// (k0, k1, k2) becomes (k1, k2, k0), or (k2, k0, k1) the other way round.
void Cycle(float k[3], bool forward) {
    const float a = k[0], b = k[1], c = k[2];
    k[0] = forward ? b : c;
    k[1] = forward ? c : a;
    k[2] = forward ? a : b;
}

// Two equal factors: their plane may be turned at will. `single` is the axis of the third factor.
Quaternion SnuggleAroundAxis(const Quaternion& u, float k[3], int single) {
    Quaternion toZ = MakeQuaternion(0.0, 0.0, 0.0, 1.0);
    if (single == 0) {
        toZ = MakeQuaternion(0.0, kSqrtHalf, 0.0, kSqrtHalf);
    } else if (single == 1) {
        toZ = MakeQuaternion(kSqrtHalf, 0.0, 0.0, kSqrtHalf);
    }
    Swap(k[single], k[2]);
    const Quaternion q = Conjugate(Multiply(u, toZ));
    // How near the axis lies to z, x and y; the sign says from which side.
    double nearness[3];
    nearness[0] = q.q[2] * q.q[2] + q.q[3] * q.q[3] - 0.5;
    nearness[1] = q.q[0] * q.q[2] - q.q[1] * q.q[3];
    nearness[2] = q.q[1] * q.q[2] + q.q[0] * q.q[3];
    int nearest = 2;
    if (fabs(nearness[0]) > fabs(nearness[1])) {
        nearest = fabs(nearness[0]) > fabs(nearness[2]) ? 0 : 2;
    } else if (fabs(nearness[1]) > fabs(nearness[2])) {
        nearest = 1;
    }
    const bool negative = nearness[nearest] < 0.0;
    Quaternion p;
    if (nearest == 0) {
        p = negative ? MakeQuaternion(1.0, 0.0, 0.0, 0.0) : MakeQuaternion(0.0, 0.0, 0.0, 1.0);
    } else if (nearest == 1) {
        p = negative ? MakeQuaternion(0.5, 0.5, -0.5, -0.5) : MakeQuaternion(0.5, 0.5, 0.5, 0.5);
        Cycle(k, false);
    } else {
        p = negative ? MakeQuaternion(-0.5, 0.5, -0.5, -0.5) : MakeQuaternion(0.5, 0.5, 0.5, -0.5);
        Cycle(k, true);
    }
    const Quaternion turned = Multiply(q, p);
    const double t = sqrt(fabs(nearness[nearest]) + 0.5);
    p = Multiply(p, MakeQuaternion(0.0, 0.0, 0.0 - turned.q[2] / t, turned.q[3] / t));
    return Multiply(toZ, Conjugate(p));
}

// Of equal ones the published choice, which decides the order of stretch factors.
void FindLargestTwo(const double a[4], int& high, int& low) {
    low = a[0] > a[1] ? 0 : 1;
    high = a[2] > a[3] ? 2 : 3;
    if (a[low] > a[high]) {
        const int first = low;
        low = a[first ^ 1] > a[high] ? first ^ 1 : high;
        high = first;
    } else if (a[high ^ 1] > a[low]) {
        low = high ^ 1;
    }
}

// Three different factors: one of the 24 rotations that take axes to axes. The nearest one has the
// largest scalar product with u, which is one of: the largest component alone, the two largest
// times sqrt(1/2), or half the sum of all four.
Quaternion SnuggleDistinct(const Quaternion& u, float k[3]) {
    double a[4], sign[4];
    bool odd = false;
    for (int i = 0; i < 4; ++i) {
        a[i] = fabs(u.q[i]);
        sign[i] = u.q[i] < 0.0 ? -1.0 : 1.0;
        odd = odd != (u.q[i] < 0.0);
    }
    int high, low;
    FindLargestTwo(a, high, low);
    const double all = (a[0] + a[1] + a[2] + a[3]) * 0.5;
    const double two = (a[high] + a[low]) * kSqrtHalf;
    const double big = a[high];
    double p[4] = {0.0, 0.0, 0.0, 0.0};
    if (all > two && all > big) {
        for (int i = 0; i < 4; ++i) {
            p[i] = sign[i] * 0.5;
        }
        Cycle(k, odd);
    } else if (all <= two && two > big) {
        p[high] = sign[high] * kSqrtHalf;
        p[low] = sign[low] * kSqrtHalf;
        if (high == 3 || low == 3) {
            // A quarter turn about one axis exchanges the other two.
            const int axis = high == 3 ? low : high;
            Swap(k[(axis + 1) % 3], k[(axis + 2) % 3]);
        } else {
            Swap(k[high], k[low]);
        }
    } else {
        p[high] = sign[high];
    }
    return MakeQuaternion(0.0 - p[0], 0.0 - p[1], 0.0 - p[2], p[3]);
}

// The rotation p that makes u * p smallest, with the stretch factors brought into its order.
Quaternion Snuggle(const Quaternion& u, float k[3]) {
    if (k[0] == k[1]) {
        return k[0] == k[2] ? Conjugate(u) : SnuggleAroundAxis(u, k, 2);
    }
    if (k[0] == k[2]) {
        return SnuggleAroundAxis(u, k, 1);
    }
    if (k[1] == k[2]) {
        return SnuggleAroundAxis(u, k, 0);
    }
    return SnuggleDistinct(u, k);
}

// The transposed 3 x 3 part.
Matrix33 ColumnsOf(const Matrix3& matrix) {
    Matrix33 result;
    for (int i = 0; i < 3; ++i) {
        const Point3 row = matrix.GetRow(i);
        result.m[0][i] = row.x;
        result.m[1][i] = row.y;
        result.m[2][i] = row.z;
    }
    return result;
}

// By the left-hand rule, as the SDK keeps them.
Quat ToSdk(const Quaternion& a) {
    const Quaternion c = Conjugate(a);
    return Quat(static_cast<float>(c.q[0]), static_cast<float>(c.q[1]), static_cast<float>(c.q[2]),
                static_cast<float>(c.q[3]));
}

}  // namespace

void DecomposeTransform(const Matrix3& matrix, AffineParts& parts) {
    const Matrix33 a = ColumnsOf(matrix);
    Matrix33 q = OrthogonalFactor(a);
    const Matrix33 stretch = StretchFactor(q, a);
    const bool mirrors = Determinant(a) < 0.0;
    if (mirrors) {
        for (int i = 0; i < 9; ++i) {
            q.m[i / 3][i % 3] = 0.0 - q.m[i / 3][i % 3];
        }
    }
    Matrix33 axes;
    const Vector factors = SpectralDecomposition(stretch, axes);
    // Factors that are one f32 are equal; the rest of their digits is noise.
    float k[3];
    for (int i = 0; i < 3; ++i) {
        k[i] = static_cast<float>(factors.v[i]);
    }
    Quaternion u = QuaternionOf(axes);
    u = Multiply(u, Snuggle(u, k));

    parts.t = matrix.GetTrans();
    parts.q = ToSdk(QuaternionOf(q));
    parts.u = ToSdk(u);
    parts.k = Point3(k[0], k[1], k[2]);
    parts.f = mirrors ? -1.0f : 1.0f;
}
