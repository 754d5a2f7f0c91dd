#include "plugin/kta_exp_class_desc.h"

#include "plugin/kta_exp.h"
#include "plugin/module.h"
#include "resources/resource.h"

int KTAExpClassDesc::IsPublic() {
    return 1;
}

void* KTAExpClassDesc::Create(BOOL) {
    return new KTAExp;
}

const MCHAR* KTAExpClassDesc::ClassName() {
    return GetString(IDS_CLASS_NAME);
}

SClass_ID KTAExpClassDesc::SuperClassID() {
    return SCENE_EXPORT_CLASS_ID;
}

Class_ID KTAExpClassDesc::ClassID() {
    return Class_ID(0x35728F0C, 0x4E26450A);
}

const MCHAR* KTAExpClassDesc::Category() {
    return GetString(IDS_CATEGORY);
}

ClassDesc* GetKTAExpClassDesc() {
    static KTAExpClassDesc description;
    return &description;
}
