// Whether a node is animated, and in what.
#include <math.h>

#include <max.h>

#include <quat.h>

#include "plugin/kta_exp.h"
#include "scene/bezier_keys.h"

namespace {

const double kTolerance = 1e-5;

bool Differs(float a, float b) {
    return fabs(static_cast<double>(a) - b) > kTolerance;
}

bool Differs(const Point3& a, const Point3& b) {
    return Differs(a.x, b.x) || Differs(a.y, b.y) || Differs(a.z, b.z);
}

// A rotation as it is compared.
struct Turn {
    explicit Turn(const Quat& q) { AngAxisFromQ(q, &angle, axis); }

    bool DiffersFrom(const Turn& other) const {
        return Differs(angle, other.angle) || Differs(axis, other.axis);
    }

    float angle;
    Point3 axis;
};

bool HasAxisKeys(Control* controller) {
    IKeyControl* axes[3];
    if (!FindAxisKeys(controller, axes)) {
        return false;
    }
    return axes[0]->GetNumKeys() > 0 || axes[1]->GetNumKeys() > 0 || axes[2]->GetNumKeys() > 0;
}

bool HasScaleKeys(Control* controller) {
    IKeyControl* keys = BezierScaleKeys(controller);
    return keys != NULL && keys->GetNumKeys() > 0;
}

}  // namespace

bool KTAExp::DetectAnimation(INode* node, bool& position, bool& rotation, bool& scale) {
    position = rotation = scale = false;
    if (exportOptions.sampleAnimation) {
        DetectInSamples(node, position, rotation, scale);
    } else if (Control* transform = node->GetTMController()) {
        position = HasAxisKeys(transform->GetPositionController());
        rotation = HasAxisKeys(transform->GetRotationController());
        scale = HasScaleKeys(transform->GetScaleController());
    }
    return position || rotation || scale;
}

// The extra key at the end is not looked at.
void KTAExp::DetectInSamples(INode* node, bool& position, bool& rotation, bool& scale) {
    ChooseSamples(node);
    if (transformSamples.GridCount() == 0) {
        return;
    }
    const TransformSample first = transformSamples.KeySample(0);
    const Turn firstTurn(first.rotation);
    for (Plinth::Int64 i = 1; i < transformSamples.GridCount(); ++i) {
        const TransformSample& sample = transformSamples.KeySample(i);
        position = position || Differs(sample.translation, first.translation);
        rotation = rotation || Turn(sample.rotation).DiffersFrom(firstTurn);
        scale = scale || Differs(sample.scale, first.scale);
        if (position && rotation && scale) {
            return;
        }
    }
}
