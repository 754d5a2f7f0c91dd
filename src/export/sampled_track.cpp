// Tracks of a node's transform, sampled on a grid of frames.
#include <max.h>

#include <maxapi.h>

#include "core/log.h"
#include "format/axis_order.h"
#include "format/records.h"
#include "plugin/kta_exp.h"
#include "scene/key_time.h"

using Plinth::Int64;
using Plinth::UInt32;

namespace {

// Of one key; 0 for a letter that names no sampled track.
size_t RecordSize(char track) {
    switch (track) {
        case 'P':
        case 'S':
            return sizeof(KTAVectorSample);
        case 'R':
            return sizeof(KTARotationSample);
        default:
            return 0;
    }
}

void WriteSample(KTAExp& exporter, char track, TimeValue time, const TransformSample& sample) {
    if (track == 'R') {
        KTARotationSample record = {Seconds(time), {0, 0, 0, 0}};
        StoreQuaternion(record.values, sample.rotation);
        exporter.WriteRaw(&record, sizeof(record));
        return;
    }
    KTAVectorSample record = {Seconds(time), {0, 0, 0}};
    StoreVector(record.values, track == 'P' ? sample.translation : sample.scale);
    exporter.WriteRaw(&record, sizeof(record));
}

}  // namespace

void KTAExp::ChooseSamples(INode* node) {
    const Int64 step = static_cast<Int64>(GetTicksPerFrame()) * exportOptions.sampleRate;
    transformSamples.Choose(node, ip->GetAnimRange(), step);
}

void KTAExp::WriteSampledTrack(INode* node, char track) {
    ChooseSamples(node);
    const Int64 count = transformSamples.KeyCount();
    // The format's counts and sizes have 32 bits.
    const KTAKeyTrack header = {static_cast<UInt32>(count), 'L', track, {0, 0}};
    const UInt32 size = static_cast<UInt32>(sizeof(header) + count * RecordSize(track));
    Plinth::Log("    + NrKeys = %d", static_cast<int>(header.keyCount));
    Plinth::Log("    + Type   = %c", track);
    Plinth::Log("    + Size   = %d bytes", static_cast<int>(size));
    WriteChunkHeader(kChunkKeyTrack, size, kKeyTrackSampled);
    WriteRaw(&header, sizeof(header));
    if (RecordSize(track) == 0) {
        return;
    }
    // The last key stands at the end of the range. Where the last grid key does so too, that time
    // is written twice: the count includes both, and readers expect them.
    for (Int64 i = 0; i < count; ++i) {
        WriteSample(*this, track, transformSamples.KeyTime(i), transformSamples.KeySample(i));
    }
}
