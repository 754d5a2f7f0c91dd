#include "host/sdk/scene/controllers.h"

#include <iiksys.h>

#include <algorithm>

namespace maxhost {
namespace {

const Class_ID kBipedSlaveClassId(0x9154, 0);
const Class_ID kFootprintClassId(0x3011, 0);
const Class_ID kIkChainClassId(0x78724378, 0x8a4fd9);

class TransformControl : public MatrixControl {
  public:
    SClass_ID SuperClassID() override { return CTRL_MATRIX3_CLASS_ID; }
    Class_ID ClassID() override { return classId_; }

  protected:
    explicit TransformControl(Class_ID classId) : classId_(classId) {}

  private:
    Class_ID classId_;
};

class PrsControl final : public TransformControl {
  public:
    PrsControl(const scene::PrsTransform& description, Class_ID classId, SceneLinks& links)
        : TransformControl(classId) {
        if (description.position) {
            position_ = MakePositionControl(*description.position, links);
        }
        if (description.rotation) {
            rotation_ = MakeRotationControl(*description.rotation, links);
        }
        if (description.scale) {
            scale_ = MakeScaleControl(*description.scale, links);
        }
    }

    Affine Local(TimeValue t, Interval& valid) const override {
        Affine result;
        for (const auto* control : {&scale_, &rotation_, &position_}) {
            if (*control) {
                result = result * (*control)->Local(t, valid);
            }
        }
        return result;
    }

    Control* GetPositionController() override { return position_.get(); }
    Control* GetRotationController() override { return rotation_.get(); }
    Control* GetScaleController() override { return scale_.get(); }

  private:
    std::unique_ptr<MatrixControl> position_, rotation_, scale_;
};

class ConstantControl : public TransformControl {
  public:
    ConstantControl(const scene::Matrix& matrix, Class_ID classId)
        : TransformControl(classId), matrix_(ToAffine(matrix)) {}

    Affine Local(TimeValue, Interval&) const override { return matrix_; }

  private:
    Affine matrix_;
};

class IkChainControl final : public ConstantControl, public IIKChainControl {
  public:
    IkChainControl(const scene::IkChainTransform& description, Class_ID classId,
                   const SceneLinks& links)
        : ConstantControl(description.matrix, classId), description_(description), links_(links) {}

    using ConstantControl::GetInterface;
    void* GetInterface(ULONG id) override {
        return id == I_IKCHAINCONTROL ? static_cast<IIKChainControl*>(this) : nullptr;
    }
    INode* StartJoint() const override { return links_.NodeAt(description_.startJoint); }
    INode* EndJoint() const override { return links_.NodeAt(description_.endJoint); }

  private:
    const scene::IkChainTransform& description_;
    const SceneLinks& links_;
};

// Element by element; `s` from 0 to 1.
Affine Interpolate(const Affine& from, const Affine& to, double s) {
    Affine result;
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 3; ++column) {
            const double start = from.rows[row][column];
            result.rows[row][column] = start + (to.rows[row][column] - start) * s;
        }
    }
    return result;
}

class SampledControl final : public TransformControl {
  public:
    SampledControl(const std::vector<scene::MatrixSample>& samples, Class_ID classId)
        : TransformControl(classId), samples_(samples) {}

    Affine Local(TimeValue t, Interval& valid) const override {
        if (samples_.size() == 1) {
            return ToAffine(samples_.front().matrix);
        }
        const auto after = std::upper_bound(
            samples_.begin(), samples_.end(), t,
            [](TimeValue time, const scene::MatrixSample& sample) { return time < sample.time; });
        if (after == samples_.begin()) {
            valid &= Interval(TIME_NegInfinity, samples_.front().time);
            return ToAffine(samples_.front().matrix);
        }
        const scene::MatrixSample& before = *(after - 1);
        if (after == samples_.end()) {
            valid &= Interval(before.time, TIME_PosInfinity);
            return ToAffine(before.matrix);
        }
        valid &= Interval(t, t);
        const double duration = static_cast<double>(after->time) - before.time;
        const double passed = static_cast<double>(t) - before.time;
        return Interpolate(ToAffine(before.matrix), ToAffine(after->matrix), passed / duration);
    }

  private:
    const std::vector<scene::MatrixSample>& samples_;
};

struct TransformControlMaker {
    const std::optional<scene::ClassId>& classId;
    SceneLinks& links;

    std::unique_ptr<MatrixControl> operator()(const scene::PrsTransform& kind) const {
        return std::make_unique<PrsControl>(kind, Choose(Class_ID(PRS_CONTROL_CLASS_ID, 0)), links);
    }
    std::unique_ptr<MatrixControl> operator()(const scene::MatrixTransform& kind) const {
        return Constant(kind.matrix, Class_ID(PRS_CONTROL_CLASS_ID, 0));
    }
    std::unique_ptr<MatrixControl> operator()(const scene::SampledTransform& kind) const {
        return std::make_unique<SampledControl>(kind.samples, Choose(kBipedSlaveClassId));
    }
    std::unique_ptr<MatrixControl> operator()(const scene::FootprintTransform& kind) const {
        return Constant(kind.matrix, kFootprintClassId);
    }
    std::unique_ptr<MatrixControl> operator()(const scene::IkChainTransform& kind) const {
        return std::make_unique<IkChainControl>(kind, Choose(kIkChainClassId), links);
    }

    std::unique_ptr<MatrixControl> Constant(const scene::Matrix& matrix, Class_ID own) const {
        return std::make_unique<ConstantControl>(matrix, Choose(own));
    }
    Class_ID Choose(Class_ID own) const { return ChooseClassId(classId, own); }
};

}  // namespace

std::unique_ptr<MatrixControl> MakeTransformControl(const scene::Transform& description,
                                                    SceneLinks& links) {
    std::unique_ptr<MatrixControl> control =
        std::visit(TransformControlMaker{description.classId, links}, description.kind);
    links.AddControl(description.id, control.get());
    return control;
}

}  // namespace maxhost
