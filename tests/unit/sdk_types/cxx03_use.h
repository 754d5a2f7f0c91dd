// Uses of the helper types as plug-ins make them, compiled as C++03.
#ifndef TESTS_UNIT_SDK_TYPES_CXX03_USE_H
#define TESTS_UNIT_SDK_TYPES_CXX03_USE_H

#include <interval.h>
#include <matrix3.h>
#include <strclass.h>

// "Wire Color <number>".
TSTR WireColorName(int number);

// How many of the ticks 0, `step`, 2 `step` ... lie in the part of `range` up to `end`.
int CountSteps(const Interval& range, TimeValue end, TimeValue step);

// The transform relative to the parent's.
Matrix3 LocalTransform(const Matrix3& node, const Matrix3& parent);

// The sum of the points that a table gathers from `count` copies of (1, 2, 3).
Point3 SumOfGathered(int count);

#endif  // TESTS_UNIT_SDK_TYPES_CXX03_USE_H
