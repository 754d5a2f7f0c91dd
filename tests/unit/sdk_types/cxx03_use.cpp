#include "tests/unit/sdk_types/cxx03_use.h"

#include <bitarray.h>
#include <color.h>
#include <decomp.h>
#include <euler.h>
#include <maxheap.h>
#include <point2.h>
#include <quat.h>
#include <tab.h>

TSTR WireColorName(int number) {
    TSTR name;
    name.printf(_T("Wire Color %d"), number);
    return name;
}

int CountSteps(const Interval& range, TimeValue end, TimeValue step) {
    const Interval part = range & Interval(TIME_NegInfinity, end);
    int count = 0;
    for (TimeValue t = 0; part.InInterval(t); t += step)
        ++count;
    return count;
}

Matrix3 LocalTransform(const Matrix3& node, const Matrix3& parent) {
    Matrix3 local;
    local.IdentityMatrix();
    local = local * node * Inverse(parent);
    return local;
}

Point3 SumOfGathered(int count) {
    Tab<Point3> points;
    for (int i = 0; i < count; ++i) {
        Point3 point(1.0f, 2.0f, 3.0f);
        points.Append(1, &point, 8);
    }
    Point3 sum(0.0f, 0.0f, 0.0f);
    for (int i = 0; i < points.Count(); ++i)
        sum += points[i];
    return sum;
}
