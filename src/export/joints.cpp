// Joints: limits, from the IK joint parameters of a node's position and rotation controllers, and
// IK chains, of nodes whose transform is an IK chain controller.
#include <max.h>

#include <iiksys.h>
#include <interpik.h>

#include "core/format.h"
#include "core/log.h"
#include "export/export_pass.h"

using Plinth::Float32;
using Plinth::Int32;
using Plinth::UInt8;

namespace {

const Class_ID kIKChainClassId(0x78724378, 0x8a4fd9);

enum { kNumAxes = 3, kNumOnes = 6 };

// The place of x, y and z in the file's axis order.
const int kPlaces[kNumAxes] = {0, 2, 1};

// Null where the controller has none, or none that differ from the defaults.
JointParams* ChangedParams(Control* control) {
    JointParams* const params =
        control == NULL ? NULL
                        : static_cast<JointParams*>(control->GetProperty(PROPID_JOINTPARAMS));
    return params == NULL || params->IsDefault() ? NULL : params;
}

void StoreLimits(Float32 minimum[kNumAxes], Float32 maximum[kNumAxes], UInt8 limited[kNumAxes],
                 const JointParams& params) {
    static const DWORD kLimitedBits[kNumAxes] = {
        JNT_XACTIVE | JNT_XLIMITED, JNT_YACTIVE | JNT_YLIMITED, JNT_ZACTIVE | JNT_ZLIMITED};
    for (int i = 0; i < kNumAxes; ++i) {
        const int place = kPlaces[i];
        if (i < params.dofs) {
            minimum[place] = params.min[i];
            maximum[place] = params.max[i];
        }
        limited[place] = (params.flags & kLimitedBits[i]) == kLimitedBits[i] ? 1 : 0;
    }
}

void StoreParams(KTAJointLimits& record, const JointParams& params) {
    // The set's own flags tell its kind, whichever controller it stems from.
    const DWORD kindBits = static_cast<DWORD>(JNT_POS) | static_cast<DWORD>(JNT_ROT);
    const bool isPosition = (params.flags & kindBits) == static_cast<DWORD>(JNT_POS);
    if (params.dofs != kNumAxes) {
        Plinth::Log("*** Warning: Joint limit has not 3 %s DOFS, but %d DOFS ***",
                    isPosition ? "position" : "rotation", params.dofs);
    }
    if (isPosition) {
        StoreLimits(record.positionMinimum, record.positionMaximum, record.positionLimited, params);
    } else {
        StoreLimits(record.rotationMinimum, record.rotationMaximum, record.rotationLimited, params);
    }
}

void StoreJoint(char field[kNameSize], INode* joint) {
    if (joint != NULL) {
        Plinth::CopyName(field, kNameSize, joint->GetName());
    }
}

}  // namespace

void ExportJointLimits(ExportPass& pass, INode* node) {
    Control* const transform = node->GetTMController();
    if (transform == NULL) {
        return;
    }
    JointParams* const position = ChangedParams(transform->GetPositionController());
    JointParams* const rotation = ChangedParams(transform->GetRotationController());
    if (position == NULL && rotation == NULL) {
        return;
    }
    KTAJointLimits record = ZeroedRecord<KTAJointLimits>();
    record.nodeNumber = pass.exportedNodes.Find(node);
    for (int i = 0; i < kNumOnes; ++i) {
        record.at52[i] = 1.0f;
    }
    if (position != NULL) {
        StoreParams(record, *position);
    }
    if (rotation != NULL) {
        StoreParams(record, *rotation);
    }
    Plinth::Log("- Exporting joint limits for node '%s'", node->GetName());
    pass.writer.WriteChunk(record);
}

void ExportIKChain(ExportPass& pass, INode* node) {
    Control* const transform = node->GetTMController();
    if (transform == NULL || transform->ClassID() != kIKChainClassId) {
        return;
    }
    // The fields behind the three names are not in use.
    KTAIKChain record = ZeroedRecord<KTAIKChain>();
    Plinth::CopyName(record.nodeName, kNameSize, node->GetName());
    const IIKChainControl* const chain =
        static_cast<IIKChainControl*>(transform->GetInterface(I_IKCHAINCONTROL));
    if (chain != NULL) {
        StoreJoint(record.startJoint, chain->StartJoint());
        StoreJoint(record.endJoint, chain->EndJoint());
    }
    pass.writer.WriteChunk(record);
}
