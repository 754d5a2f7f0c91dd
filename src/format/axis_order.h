// The file's axis order: its second axis is 3ds Max's z axis, its third is 3ds Max's y axis.
#ifndef FORMAT_AXIS_ORDER_H
#define FORMAT_AXIS_ORDER_H

#include "core/types.h"

// x, z, y of anything with these members.
template <typename Vector>
inline void StoreVector(Plinth::Float32 field[3], const Vector& v) {
    field[0] = v.x;
    field[1] = v.z;
    field[2] = v.y;
}

// x, z, y, w.
template <typename Quaternion>
inline void StoreQuaternion(Plinth::Float32 field[4], const Quaternion& q) {
    StoreVector(field, q);
    field[3] = q.w;
}

#endif
