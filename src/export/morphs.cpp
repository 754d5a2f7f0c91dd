// Morph targets: the channels of a node's Morpher, their points packed as 16-bit integers.
#include <max.h>

#include <MorpherApi.h>

#include "core/array.h"
#include "core/format.h"
#include "export/export_pass.h"
#include "scene/node.h"

using Plinth::Float32;
using Plinth::Int32;
using Plinth::Int64;
using Plinth::UInt16;

namespace {

const Float32 kCoordinateScale = 100.0f;
const Float32 kMostSteps = 65535.0f;

// The coordinates of a point in the file's order and scale.
struct ScaledPoint {
    Float32 values[3];
};

typedef Plinth::Array<ScaledPoint> ScaledPoints;

void ReadPoints(const MaxMorphChannel& channel, ScaledPoints& points) {
    const Int32 count = channel.NumMorphPoints();
    points.Resize(0);
    if (points.Capacity() < count) {
        points.Reserve(count);
    }
    for (Int32 i = 0; i < count; ++i) {
        ScaledPoint scaled;
        StoreVector(scaled.values, channel.GetMorphPoint(i));
        for (int k = 0; k < 3; ++k) {
            scaled.values[k] *= kCoordinateScale;
        }
        points.Add(scaled);
    }
}

void FindRange(const ScaledPoints& points, Float32& minimum, Float32& maximum) {
    minimum = 1e10f;
    maximum = -1e10f;
    for (Int32 i = 0; i < points.Count(); ++i) {
        for (int k = 0; k < 3; ++k) {
            const Float32 value = points[i].values[k];
            minimum = value < minimum ? value : minimum;
            maximum = value > maximum ? value : maximum;
        }
    }
}

// The low 16 bits of the value without its fraction; 0 for a value that no integer holds.
UInt16 LowBits(Float32 value) {
    const Float32 limit = 9.0e18f;
    if (!(value > -limit && value < limit)) {
        return 0;
    }
    return static_cast<UInt16>(static_cast<Int64>(value) & 0xffff);
}

// How the coordinates of a range become integers.
class Packing {
  public:
    Packing(Float32 rangeMinimum, Float32 rangeMaximum);
    UInt16 Pack(Float32 scaled) const { return LowBits((scaled * factor - minimum) * steps); }

  private:
    Float32 factor;
    Float32 minimum;
    Float32 steps;  // of a unit; 0 by design where the range is above 65535
};

Packing::Packing(Float32 rangeMinimum, Float32 rangeMaximum)
    : factor(1.0f), minimum(rangeMinimum), steps(0.0f) {
    Float32 range = rangeMaximum - rangeMinimum;
    if (range == 0.0f) {
        return;
    }
    if (range < 1.0f) {
        factor = 1.0f / range;
        minimum = rangeMinimum * factor;
        range = 1.0f;
    }
    steps = static_cast<Float32>(LowBits(kMostSteps / range));
}

void WriteChannelRecord(KTAWriter& writer, const MaxMorphChannel& channel) {
    KTAMorphChannel record = ZeroedRecord<KTAMorphChannel>();
    Plinth::CopyName(record.channelName, kNameSize, channel.GetName());
    record.at264 = 1.0f;
    record.at276 = 1;
    // The size deliberately leaves out what follows the record.
    writer.WriteChunk(record);
}

// `points` is room that is used again from channel to channel.
void WritePoints(KTAWriter& writer, INode* node, const MaxMorphChannel& channel,
                 ScaledPoints& points) {
    ReadPoints(channel, points);
    KTAMorphPoints header = ZeroedRecord<KTAMorphPoints>();
    Plinth::CopyName(header.nodeName, kNameSize, node->GetName());
    header.pointCount = points.Count();
    FindRange(points, header.minimum, header.maximum);
    writer.WriteRecord(header);

    const Packing packing(header.minimum, header.maximum);
    for (Int32 i = 0; i < points.Count(); ++i) {
        const Float32* const scaled = points[i].values;
        const KTAMorphPoint point = {
            {packing.Pack(scaled[0]), packing.Pack(scaled[1]), packing.Pack(scaled[2])}};
        writer.WriteRecord(point);
    }
    const char zeros[3] = {0, 0, 0};
    for (Int32 i = 0; i < points.Count(); ++i) {
        writer.WriteRecord(zeros);
    }
    for (Int32 i = 0; i < points.Count(); ++i) {
        writer.WriteRecord(i);
    }
}

}  // namespace

void ExportMorphTargets(ExportPass& pass, INode* node) {
    Modifier* const modifier = FindModifier(node, kMorpherModifierClassId).modifier;
    if (modifier == NULL) {
        return;
    }
    MaxMorphModifier morpher(modifier);
    ScaledPoints points;
    for (int i = 0; i < morpher.NumMorphChannels(); ++i) {
        const MaxMorphChannel channel = morpher.GetMorphChannel(i);
        if (channel.NumMorphPoints() > 0) {
            WriteChannelRecord(pass.writer, channel);
            WritePoints(pass.writer, node, channel, points);
        }
    }
}
