// IK chains: the chunk of a node whose transform is an IK chain controller.
#include <string.h>

#include <max.h>

#include <iiksys.h>

#include "core/copy_name.h"
#include "format/records.h"
#include "plugin/kta_exp.h"

namespace {

const Class_ID kIKChainClassId(0x78724378, 0x8a4fd9);

void StoreJoint(char field[kNameSize], INode* joint) {
    if (joint != NULL) {
        Plinth::CopyName(field, kNameSize, joint->GetName());
    }
}

}  // namespace

void KTAExp::ExportIKChain(INode* node) {
    Control* const transform = node->GetTMController();
    if (transform == NULL || transform->ClassID() != kIKChainClassId) {
        return;
    }
    // The fields behind the three names are not in use.
    KTAIKChain record;
    memset(&record, 0, sizeof(record));
    Plinth::CopyName(record.nodeName, kNameSize, node->GetName());
    const IIKChainControl* const chain =
        static_cast<IIKChainControl*>(transform->GetInterface(I_IKCHAINCONTROL));
    if (chain != NULL) {
        StoreJoint(record.startJoint, chain->StartJoint());
        StoreJoint(record.endJoint, chain->EndJoint());
    }
    WriteChunk(kChunkIKChain, sizeof(record), &record, FindChunkType(kChunkIKChain)->version);
}
