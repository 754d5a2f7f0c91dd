// The motion of a node: the motion part with the rest pose, and the tracks behind it.
#include <string.h>

#include <max.h>

#include <decomp.h>

#include "core/copy_name.h"
#include "core/log.h"
#include "format/axis_order.h"
#include "format/records.h"
#include "plugin/kta_exp.h"
#include "scene/decompose.h"
#include "scene/local_transform.h"

void KTAExp::ExportMotionPart(INode* node) {
    if (IsFootprintNode(node)) {
        Plinth::Log("  + Skipped node, because it's a biped footprint");
        return;
    }
    KTAMotionPart record;
    memset(&record, 0, sizeof(record));
    // The pose at tick 0, wherever the animation range starts.
    AffineParts parts;
    DecomposeTransform(GetLocalTransform(node, 0), parts);
    StoreVector(record.translation, parts.t);
    StoreQuaternion(record.rotation, parts.q);
    StoreVector(record.scale, parts.k);
    Plinth::Log("- Exporting motionpart '%s'", node->GetName());
    Plinth::CopyName(record.nodeName, sizeof(record.nodeName), node->GetName());

    bool position, rotation, scale;
    if (DetectAnimation(node, position, rotation, scale)) {
        WriteChunk(kChunkMotionPart, sizeof(record), &record,
                   FindChunkType(kChunkMotionPart)->version);
        ExportAnimation(node, position, rotation, scale);
    }
    transformSamples.Clear();
}

void KTAExp::ExportAnimation(INode* node, bool position, bool rotation, bool scale) {
    if (!position && !rotation && !scale) {
        Plinth::Log("  + Node '%s' is not animated...", node->GetName());
        return;
    }
    const bool sampled = exportOptions.sampleAnimation != 0;
    Plinth::Log(sampled ? "  + Animation detected, now exporting samples..."
                        : "  + Exporting animation keyframes");
    if (position) {
        sampled ? WriteSampledTrack(node, 'P') : WriteKeyframedTrack(node, 'P');
    }
    if (rotation) {
        sampled ? WriteSampledTrack(node, 'R') : WriteKeyframedTrack(node, 'r');
    }
    if (scale) {
        sampled ? WriteSampledTrack(node, 'S') : WriteKeyframedScaleTrack(node);
    }
}
