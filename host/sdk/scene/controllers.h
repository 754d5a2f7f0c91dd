// The controllers of nodes: transforms, and below them positions, rotations, scales and floats. All
// of them read the scene description that they are made of, and add themselves to the links of the
// scene; both must outlive them.
#pragma once

#include <control.h>
#include <plugapi.h>

#include <memory>

#include "host/scene/scene.h"
#include "host/sdk/math/affine.h"
#include "host/sdk/scene/scene_links.h"

namespace maxhost {

// `given` where there is one, else `own`.
Class_ID ChooseClassId(const std::optional<scene::ClassId>& given, Class_ID own);

// A vector of the description as the SDK has it.
inline Point3 ToPoint(const scene::Vec3& v) {
    return Point3(v[0], v[1], v[2]);
}

// A float controller of whatever class the SDK has for its kind.
class FloatControl {
  public:
    virtual ~FloatControl() = default;

    virtual Control* Get() = 0;
    // The value before rounding; `valid` as in Control::GetValue.
    virtual double Value(TimeValue t, Interval& valid) const = 0;
};

std::unique_ptr<FloatControl> MakeFloatControl(const scene::FloatController& description,
                                               SceneLinks& links);

// A controller that gives a matrix to be applied before the one it is handed.
class MatrixControl : public Control {
  public:
    ~MatrixControl() override = default;

    // That matrix before rounding; `valid` as in Control::GetValue.
    virtual Affine Local(TimeValue t, Interval& valid) const = 0;

    void GetValue(TimeValue t, void* val, Interval& valid, GetSetMethod method) override;

  protected:
    // Stores the value at `t` in the form of the super class; the default stores nothing.
    virtual void StoreAbsolute(TimeValue, void*, Interval&) const {}
};

std::unique_ptr<MatrixControl> MakePositionControl(const scene::ThreeAxisController& description,
                                                   SceneLinks& links);
std::unique_ptr<MatrixControl> MakeRotationControl(const scene::ThreeAxisController& description,
                                                   SceneLinks& links);
std::unique_ptr<MatrixControl> MakeScaleControl(const scene::ThreeAxisController& description,
                                                SceneLinks& links);

// A node's; Local() gives its matrix relative to the parent.
std::unique_ptr<MatrixControl> MakeTransformControl(const scene::Transform& description,
                                                    SceneLinks& links);

}  // namespace maxhost
