// The file's axis order: its second axis is 3ds Max's z axis, its third is 3ds Max's y axis.
#ifndef FORMAT_AXIS_ORDER_H
#define FORMAT_AXIS_ORDER_H

#include <max.h>

#include <quat.h>

#include "core/types.h"

// x, z, y.
inline void StoreVector(Plinth::Float32 field[3], const Point3& v) {
    field[0] = v.x;
    field[1] = v.z;
    field[2] = v.y;
}

// x, z, y, w.
inline void StoreQuaternion(Plinth::Float32 field[4], const Quat& q) {
    field[0] = q.x;
    field[1] = q.z;
    field[2] = q.y;
    field[3] = q.w;
}

#endif
