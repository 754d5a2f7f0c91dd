#include "host/sdk/scene/controllers.h"

#include <interpik.h>
#include <iparamwire.h>
#include <istdplug.h>

#include <cmath>

#include "host/sdk/calls.h"
#include "host/sdk/scene/key_curve.h"

namespace maxhost {
namespace {

const Class_ID kPositionXyzClassId(0x118f7e02, 0xffee238a);
const Class_ID kScaleXyzClassId(0x118f7c01, 0xfeee238b);
const Class_ID kWireFloatClassId(0x498702e7, 0x71f11549);

DWORD KeyFlags(scene::Tangent in, scene::Tangent out) {
    return static_cast<DWORD>(in) << BEZKEY_INTYPESHIFT | static_cast<DWORD>(out)
                                                              << BEZKEY_OUTTYPESHIFT;
}

void CopyKey(const scene::Key& from, IKey* to) {
    auto* key = static_cast<IBezFloatKey*>(to);
    key->time = from.time;
    key->flags = KeyFlags(from.inType, from.outType);
    key->intan = from.inTangent;
    key->outtan = from.outTangent;
    key->val = from.value;
    key->inLength = from.inLength;
    key->outLength = from.outLength;
}

void CopyKey(const scene::Key3& from, IKey* to) {
    auto* key = static_cast<IBezScaleKey*>(to);
    key->time = from.time;
    key->flags = KeyFlags(from.inType, from.outType);
    key->intan = ToPoint(from.inTangent);
    key->outtan = ToPoint(from.outTangent);
    key->val = ScaleValue(ToPoint(from.value));
    key->inLength = ToPoint(from.inLength);
    key->outLength = ToPoint(from.outLength);
}

template <class Key>
class KeyControl final : public IKeyControl {
  public:
    explicit KeyControl(const std::vector<Key>& keys) : keys_(keys) {}

    int GetNumKeys() override {
        ++calls.keyCounts;
        return static_cast<int>(keys_.size());
    }
    void GetKey(int i, IKey* key) override {
        ++calls.keys;
        if (i >= 0 && i < static_cast<int>(keys_.size())) {
            CopyKey(keys_[i], key);
        }
    }

  private:
    const std::vector<Key>& keys_;
};

// ---------------------------------------------------------------- floats

// A float controller of the class `Base`.
template <class Base>
class FloatControlOf : public Base, public FloatControl {
  public:
    Control* Get() override { return this; }

    SClass_ID SuperClassID() override { return CTRL_FLOAT_CLASS_ID; }
    Class_ID ClassID() override { return classId_; }
    void GetValue(TimeValue t, void* val, Interval& valid, GetSetMethod method) override {
        float& result = *static_cast<float*>(val);
        const double value = Value(t, valid);
        result = static_cast<float>(method == CTRL_RELATIVE ? result + value : value);
    }

    using Base::GetInterface;

  protected:
    explicit FloatControlOf(Class_ID classId) : classId_(classId) {}

  private:
    Class_ID classId_;
};

class BezierFloatControl final : public FloatControlOf<Control> {
  public:
    BezierFloatControl(const scene::BezierFloat& description, Class_ID classId)
        : FloatControlOf(classId), description_(description), keyControl_(description.keys) {}

    double Value(TimeValue t, Interval& valid) const override {
        return description_.keys.empty() ? description_.value
                                         : EvaluateKeys(description_.keys, t, valid);
    }

    using FloatControlOf::GetInterface;
    void* GetInterface(ULONG id) override {
        return id == I_KEYCONTROL ? static_cast<IKeyControl*>(&keyControl_) : nullptr;
    }

  private:
    const scene::BezierFloat& description_;
    KeyControl<scene::Key> keyControl_;
};

class FloatListControl final : public FloatControlOf<IListControl> {
  public:
    FloatListControl(const scene::FloatList& description, Class_ID classId, SceneLinks& links)
        : FloatControlOf(classId) {
        for (const scene::FloatListItem& item : description.items) {
            items_.push_back({item.weight, MakeFloatControl(*item.controller, links)});
        }
    }

    double Value(TimeValue t, Interval& valid) const override {
        double sum = 0;
        for (const Item& item : items_) {
            sum += item.weight * item.control->Value(t, valid);
        }
        return sum;
    }

    using FloatControlOf::GetInterface;
    BaseInterface* GetInterface(Interface_ID id) override {
        return id == LIST_CONTROLLER_INTERFACE ? this : nullptr;
    }
    int GetListCount() override { return static_cast<int>(items_.size()); }
    Control* GetSubCtrl(int i) const override {
        return Has(i) ? items_[i].control->Get() : nullptr;
    }
    float GetSubCtrlWeight(int i, TimeValue) const override {
        return Has(i) ? items_[i].weight : 0.0f;
    }

  private:
    struct Item {
        float weight;
        std::unique_ptr<FloatControl> control;
    };

    bool Has(int i) const { return i >= 0 && i < static_cast<int>(items_.size()); }

    std::vector<Item> items_;
};

class WireFloatControl final : public FloatControlOf<IBaseWireControl> {
  public:
    WireFloatControl(const scene::WireFloat& description, Class_ID classId, const SceneLinks& links)
        : FloatControlOf(classId), description_(description), links_(links) {
        for (const scene::Wire& wire : description.wires) {
            expressions_.push_back(wire.expression);
        }
    }

    double Value(TimeValue, Interval&) const override { return description_.value; }

    using FloatControlOf::GetInterface;
    BaseInterface* GetInterface(Interface_ID id) override {
        return id == WIRE_CONTROLLER_INTERFACE ? this : nullptr;
    }
    int get_num_wires() override { return static_cast<int>(description_.wires.size()); }
    Animatable* get_wire_parent(int i) override {
        return Has(i) ? links_.FindControl(description_.wires[i].parent) : nullptr;
    }
    int get_wire_subnum(int i) override { return Has(i) ? description_.wires[i].subnum : 0; }
    Control* get_co_controller(int i) override {
        return Has(i) ? links_.FindControl(description_.wires[i].coController) : nullptr;
    }
    MCHAR* get_expr_text(int i) override { return Has(i) ? expressions_[i].data() : nullptr; }
    bool is_master() override { return description_.master; }
    bool is_slave() override { return description_.slave; }
    bool is_two_way() override { return description_.twoWay; }

  private:
    bool Has(int i) { return i >= 0 && i < get_num_wires(); }

    const scene::WireFloat& description_;
    const SceneLinks& links_;
    std::vector<std::string> expressions_;  // handed out as texts that may be written to
};

class OtherFloatControl final : public FloatControlOf<Control> {
  public:
    OtherFloatControl(const scene::OtherFloat& description, Class_ID classId)
        : FloatControlOf(classId), value_(description.value) {}

    double Value(TimeValue, Interval&) const override { return value_; }

  private:
    float value_;
};

struct FloatControlMaker {
    const std::optional<scene::ClassId>& classId;
    SceneLinks& links;

    std::unique_ptr<FloatControl> operator()(const scene::BezierFloat& kind) const {
        return std::make_unique<BezierFloatControl>(
            kind, ChooseClassId(classId, Class_ID(HYBRIDINTERP_FLOAT_CLASS_ID, 0)));
    }
    std::unique_ptr<FloatControl> operator()(const scene::FloatList& kind) const {
        return std::make_unique<FloatListControl>(
            kind, ChooseClassId(classId, Class_ID(FLOATLIST_CONTROL_CLASS_ID, 0)), links);
    }
    std::unique_ptr<FloatControl> operator()(const scene::WireFloat& kind) const {
        return std::make_unique<WireFloatControl>(kind, ChooseClassId(classId, kWireFloatClassId),
                                                  links);
    }
    std::unique_ptr<FloatControl> operator()(const scene::OtherFloat& kind) const {
        return std::make_unique<OtherFloatControl>(kind, ChooseClassId(classId, Class_ID()));
    }
};

// ---------------------------------------------------------------- positions, rotations, scales

class DescribedJointParams final : public JointParams {
  public:
    explicit DescribedJointParams(const scene::JointParams& description)
        : JointParams(description.flags, description.dofs),
          isDefault_(description.isDefault),
          min_(description.min),
          max_(description.max) {
        min = min_.data();
        max = max_.data();
    }
    DescribedJointParams(const DescribedJointParams&) = delete;
    DescribedJointParams& operator=(const DescribedJointParams&) = delete;

    BOOL IsDefault() override { return isDefault_; }

  private:
    const bool isDefault_;
    std::array<float, 6> min_, max_;
};

// The base of the three kinds: up to three float controllers, or the keys of a Bezier scale, or
// constants.
class ThreeAxisControl : public MatrixControl {
  public:
    SClass_ID SuperClassID() override { return superClassId_; }
    Class_ID ClassID() override { return classId_; }

    Control* GetXController() override { return Axis(0); }
    Control* GetYController() override { return Axis(1); }
    Control* GetZController() override { return Axis(2); }

    using MatrixControl::GetInterface;
    void* GetInterface(ULONG id) override {
        return id == I_KEYCONTROL && keyControl_ ? static_cast<IKeyControl*>(&*keyControl_)
                                                 : nullptr;
    }
    void* GetProperty(ULONG id) override {
        return id == PROPID_JOINTPARAMS && jointParams_ ? static_cast<JointParams*>(&*jointParams_)
                                                        : nullptr;
    }

  protected:
    ThreeAxisControl(const scene::ThreeAxisController& description, SClass_ID superClassId,
                     Class_ID xyzClassId, SceneLinks& links)
        : description_(description), superClassId_(superClassId) {
        links.AddControl(description.id, this);
        if (description.jointParams) {
            jointParams_.emplace(*description.jointParams);
        }
        Class_ID own;
        if (const auto* three = std::get_if<scene::ThreeAxes>(&description.kind)) {
            own = xyzClassId;
            MakeAxes(*three, links);
        } else if (const auto* scale = std::get_if<scene::BezierScale>(&description.kind)) {
            own = Class_ID(HYBRIDINTERP_SCALE_CLASS_ID, 0);
            keyControl_.emplace(scale->keys);
        }
        classId_ = ChooseClassId(description.classId, own);
    }

    // The three values at `t`; `absent` stands for an axis without controller.
    Double3 Values(TimeValue t, double absent, Interval& valid) const {
        if (std::holds_alternative<scene::ThreeAxes>(description_.kind)) {
            Double3 values;
            for (int i = 0; i < 3; ++i) {
                values[i] = axes_[i] ? axes_[i]->Value(t, valid) : absent;
            }
            return values;
        }
        if (const auto* scale = std::get_if<scene::BezierScale>(&description_.kind)) {
            return scale->keys.empty() ? ToDouble(scale->value)
                                       : EvaluateKeys(scale->keys, t, valid);
        }
        const auto& other = std::get<scene::OtherThree>(description_.kind);
        return {other.value[0], other.value[1], other.value[2]};
    }

    const scene::ThreeAxisController& Description() const { return description_; }

  private:
    static Double3 ToDouble(const scene::Vec3& v) { return {v[0], v[1], v[2]}; }

    Control* Axis(int i) const { return axes_[i] ? axes_[i]->Get() : nullptr; }

    void MakeAxes(const scene::ThreeAxes& three, SceneLinks& links) {
        for (int i = 0; i < 3; ++i) {
            if (three.axes[i]) {
                axes_[i] = MakeFloatControl(*three.axes[i], links);
            }
        }
    }

    const scene::ThreeAxisController& description_;
    SClass_ID superClassId_;
    Class_ID classId_;
    std::array<std::unique_ptr<FloatControl>, 3> axes_;
    std::optional<KeyControl<scene::Key3>> keyControl_;
    std::optional<DescribedJointParams> jointParams_;
};

class PositionControl final : public ThreeAxisControl {
  public:
    PositionControl(const scene::ThreeAxisController& description, SceneLinks& links)
        : ThreeAxisControl(description, CTRL_POSITION_CLASS_ID, kPositionXyzClassId, links) {}

    Affine Local(TimeValue t, Interval& valid) const override {
        Affine result;
        result.rows[3] = Values(t, 0, valid);
        return result;
    }

  protected:
    void StoreAbsolute(TimeValue t, void* val, Interval& valid) const override {
        const Double3 p = Values(t, 0, valid);
        *static_cast<Point3*>(val) = Point3(p[0], p[1], p[2]);
    }
};

class ScaleControl final : public ThreeAxisControl {
  public:
    ScaleControl(const scene::ThreeAxisController& description, SceneLinks& links)
        : ThreeAxisControl(description, CTRL_SCALE_CLASS_ID, kScaleXyzClassId, links) {}

    Affine Local(TimeValue t, Interval& valid) const override {
        const Double3 factors = Values(t, 1, valid);
        Affine result;
        for (int i = 0; i < 3; ++i) {
            result.rows[i][i] = factors[i];
        }
        return result;
    }

  protected:
    void StoreAbsolute(TimeValue t, void* val, Interval& valid) const override {
        const Double3 s = Values(t, 1, valid);
        *static_cast<ScaleValue*>(val) = ScaleValue(Point3(s[0], s[1], s[2]));
    }
};

// A sine or cosine rounded to float: the last bits of a double differ from one mathematics library
// to the next, and differences of products would bring them into the result.
double Sine(double angle) {
    return static_cast<float>(std::sin(angle));
}
double Cosine(double angle) {
    return static_cast<float>(std::cos(angle));
}

// rotX(x) * rotY(y) * rotZ(z), each by the right-hand rule, written out for row vectors.
Affine EulerMatrix(const Double3& angles) {
    const double sx = Sine(angles[0]), cx = Cosine(angles[0]);
    const double sy = Sine(angles[1]), cy = Cosine(angles[1]);
    const double sz = Sine(angles[2]), cz = Cosine(angles[2]);
    Affine result;
    result.rows[0] = {cy * cz, cy * sz, -sy};
    result.rows[1] = {sx * sy * cz - cx * sz, sx * sy * sz + cx * cz, sx * cy};
    result.rows[2] = {cx * sy * cz + sx * sz, cx * sy * sz - sx * cz, cx * cy};
    return result;
}

// x, y, z, w by the right-hand rule, of any length but zero.
Affine QuaternionMatrix(const std::array<float, 4>& q) {
    const double x = q[0], y = q[1], z = q[2], w = q[3];
    const double s = 2 / (x * x + y * y + z * z + w * w);
    Affine result;
    result.rows[0] = {1 - s * (y * y + z * z), s * (x * y + z * w), s * (x * z - y * w)};
    result.rows[1] = {s * (x * y - z * w), 1 - s * (x * x + z * z), s * (y * z + x * w)};
    result.rows[2] = {s * (x * z + y * w), s * (y * z - x * w), 1 - s * (x * x + y * y)};
    return result;
}

class RotationControl final : public ThreeAxisControl {
  public:
    RotationControl(const scene::ThreeAxisController& description, SceneLinks& links)
        : ThreeAxisControl(description, CTRL_ROTATION_CLASS_ID, Class_ID(EULER_CONTROL_CLASS_ID, 0),
                           links) {}

    Affine Local(TimeValue t, Interval& valid) const override {
        if (const auto* other = std::get_if<scene::OtherThree>(&Description().kind)) {
            return QuaternionMatrix(other->value);
        }
        return EulerMatrix(Values(t, 0, valid));
    }

  protected:
    void StoreAbsolute(TimeValue t, void* val, Interval& valid) const override {
        *static_cast<Quat*>(val) = Quat(ToMatrix3(Local(t, valid)));
    }
};

}  // namespace

Class_ID ChooseClassId(const std::optional<scene::ClassId>& given, Class_ID own) {
    return given ? Class_ID((*given)[0], (*given)[1]) : own;
}

void MatrixControl::GetValue(TimeValue t, void* val, Interval& valid, GetSetMethod method) {
    if (method == CTRL_ABSOLUTE) {
        StoreAbsolute(t, val, valid);
        return;
    }
    Matrix3& matrix = *static_cast<Matrix3*>(val);
    matrix = ToMatrix3(Local(t, valid) * ToAffine(matrix));
}

std::unique_ptr<FloatControl> MakeFloatControl(const scene::FloatController& description,
                                               SceneLinks& links) {
    std::unique_ptr<FloatControl> control =
        std::visit(FloatControlMaker{description.classId, links}, description.kind);
    links.AddControl(description.id, control->Get());
    return control;
}

std::unique_ptr<MatrixControl> MakePositionControl(const scene::ThreeAxisController& description,
                                                   SceneLinks& links) {
    return std::make_unique<PositionControl>(description, links);
}

std::unique_ptr<MatrixControl> MakeRotationControl(const scene::ThreeAxisController& description,
                                                   SceneLinks& links) {
    return std::make_unique<RotationControl>(description, links);
}

std::unique_ptr<MatrixControl> MakeScaleControl(const scene::ThreeAxisController& description,
                                                SceneLinks& links) {
    return std::make_unique<ScaleControl>(description, links);
}

}  // namespace maxhost
