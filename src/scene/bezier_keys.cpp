#include "scene/bezier_keys.h"

namespace {

const Class_ID kBezierFloatClassId(HYBRIDINTERP_FLOAT_CLASS_ID, 0);
const Class_ID kBezierScaleClassId(HYBRIDINTERP_SCALE_CLASS_ID, 0);

IKeyControl* KeysOf(Control* controller, const Class_ID& classId) {
    if (controller == NULL || controller->ClassID() != classId) {
        return NULL;
    }
    return GetKeyControlInterface(controller);
}

}  // namespace

bool IsBezierFloat(Control* controller) {
    return controller != NULL && controller->ClassID() == kBezierFloatClassId;
}

IKeyControl* BezierFloatKeys(Control* controller) {
    return KeysOf(controller, kBezierFloatClassId);
}

IKeyControl* BezierScaleKeys(Control* controller) {
    return KeysOf(controller, kBezierScaleClassId);
}

bool FindAxisKeys(Control* controller, IKeyControl* axes[3]) {
    if (controller == NULL) {
        return false;
    }
    axes[0] = BezierFloatKeys(controller->GetXController());
    axes[1] = BezierFloatKeys(controller->GetYController());
    axes[2] = BezierFloatKeys(controller->GetZController());
    return axes[0] != NULL && axes[1] != NULL && axes[2] != NULL;
}
