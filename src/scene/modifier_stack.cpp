#include "scene/modifier_stack.h"

const Class_ID kMorpherModifierClassId(0x17bb6854, 0xa5cba2a3);
const Class_ID kPhysiqueModifierClassId(0x100, 0);
const Class_ID kSkinModifierClassId(9815843, 87654);

ModifierLookup FindModifier(INode* node, const Class_ID& classId) {
    ModifierLookup result = {NULL, false};
    Object* object = node->GetObjectRef();
    while (object != NULL && object->SuperClassID() == GEN_DERIVOB_CLASS_ID) {
        IDerivedObject* derived = static_cast<IDerivedObject*>(object);
        for (int i = 0; i < derived->NumModifiers(); ++i) {
            Modifier* modifier = derived->GetModifier(i);
            if (modifier->TestAFlag(A_MOD_DISABLED)) {
                continue;
            }
            if (modifier->ClassID() == classId) {
                result.modifier = modifier;
                return result;
            }
            result.otherAbove = true;
        }
        object = derived->GetObjRef();
    }
    result.otherAbove = false;
    return result;
}
