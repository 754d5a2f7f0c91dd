// Controllers: what gives a value, a position, a rotation, a scale or a transform at any time.
#ifndef HOST_SDK_INCLUDE_CONTROL_H
#define HOST_SDK_INCLUDE_CONTROL_H

#include <interval.h>
#include <point3.h>
#include <quat.h>
#include <ref.h>

// Scale factors along the axes of the system `q`.
class ScaleValue {
  public:
    Point3 s;
    Quat q;

    ScaleValue() {}  // leaves the components uninitialised
    ScaleValue(const Point3& factors) : s(factors), q(0.0f, 0.0f, 0.0f, 1.0f) {}
    ScaleValue(const Point3& factors, const Quat& axes) : s(factors), q(axes) {}
};

enum GetSetMethod { CTRL_RELATIVE = 0, CTRL_ABSOLUTE = 1 };

class Control : public ReferenceTarget {
  public:
    // The value at `t`. `valid` is intersected with the range over which it stays the same. What
    // `val` points to goes by the super class; relative values are applied before the matrix:
    //
    //   super class             CTRL_ABSOLUTE        CTRL_RELATIVE
    //   CTRL_FLOAT_CLASS_ID     float                float, added to
    //   CTRL_POSITION_CLASS_ID  Point3               Matrix3, pre-translated
    //   CTRL_ROTATION_CLASS_ID  Quat                 Matrix3, pre-rotated
    //   CTRL_SCALE_CLASS_ID     ScaleValue           Matrix3, pre-scaled
    //   CTRL_MATRIX3_CLASS_ID   no value is given    Matrix3: in the parent's, out the node's
    virtual void GetValue(TimeValue t, void* val, Interval& valid,
                          GetSetMethod method = CTRL_ABSOLUTE) = 0;

    // Sub-controllers; null where there is none. The first three are a transform's, the last three
    // those of a controller with one float controller an axis.
    virtual Control* GetPositionController() { return NULL; }
    virtual Control* GetRotationController() { return NULL; }
    virtual Control* GetScaleController() { return NULL; }
    virtual Control* GetXController() { return NULL; }
    virtual Control* GetYController() { return NULL; }
    virtual Control* GetZController() { return NULL; }

  protected:
    virtual ~Control() {}
};

// The base class of controllers with interfaces of their own.
class StdControl : public Control {
  protected:
    virtual ~StdControl() {}
};

#endif  // HOST_SDK_INCLUDE_CONTROL_H
