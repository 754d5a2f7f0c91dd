// Tracks that hold a controller's Bezier keys with their tangents. They keep the controller's own
// axis order.
#include <limits.h>

#include <max.h>

#include <istdplug.h>

#include "format/records.h"
#include "plugin/kta_exp.h"
#include "scene/bezier_keys.h"
#include "scene/key_time.h"

using Plinth::Float32;
using Plinth::Int32;
using Plinth::UInt16;
using Plinth::UInt32;
using Plinth::UInt8;

namespace {

const Float32 kDegreesPerRadian = 57.29578f;
const Float32 kMostLength = 2.99999f;
const Float32 kLeastLength = 1e-5f;

// One side of a key, and the other; in a record the three axes' in-tangents come first.
enum { kIn = 0, kOut = 1, kNumSides = 2, kNumAxes = 3 };

struct KeySide {
    UInt8 code;  // KTATangentCode
    Float32 tangent;
    Float32 length;
};

// What a record says of its time, before it is put into the file's form.
struct KeyRecord {
    TimeValue time;
    UInt16 axes;
    Float32 value[kNumAxes];
    KeySide side[kNumSides][kNumAxes];
};

UInt8 TangentCode(DWORD type) {
    switch (type) {
        case BEZKEY_LINEAR:
            return kTangentLinear;
        case BEZKEY_STEP:
            return kTangentStep;
        default:
            return kTangentBezier;
    }
}

UInt8 TangentCode(const IKey& key, int side) {
    return TangentCode(side == kIn ? GetInTanType(key.flags) : GetOutTanType(key.flags));
}

KeySide MakeSide(UInt8 code, Float32 tangent, Float32 length) {
    const KeySide side = {code, tangent, length};
    return side;
}

// The keys of one axis, read one by one.
class AxisKeys {
  public:
    AxisKeys() : keys(NULL), count(0), index(0) {}

    void Open(IKeyControl* control) {
        keys = control;
        count = keys->GetNumKeys();
        ReadKey();
    }

    bool AtEnd() const { return index >= count; }
    TimeValue Time() const { return AtEnd() ? INT_MAX : key.time; }

    // Puts the key into the record if it belongs there, and goes on to the next one. The first
    // record takes the first key of every axis, whatever its time; one whose time is another gives
    // its value without tangents, and an axis without keys gives 0.
    void Take(KeyRecord& record, int axis) {
        const bool isDue = !AtEnd() && key.time == record.time;
        record.value[axis] = 0.0f;
        record.side[kIn][axis] = MakeSide(kTangentNone, 0.0f, 0.0f);
        record.side[kOut][axis] = MakeSide(kTangentNone, 0.0f, 0.0f);
        if (!isDue && index > 0) {
            return;
        }
        record.axes = static_cast<UInt16>(record.axes | 1 << axis);
        if (!AtEnd()) {
            record.value[axis] = key.val;
        }
        if (isDue) {
            record.side[kIn][axis] = MakeSide(TangentCode(key, kIn), -key.intan, key.inLength);
            record.side[kOut][axis] = MakeSide(TangentCode(key, kOut), key.outtan, key.outLength);
        }
        ++index;
        ReadKey();
    }

  private:
    void ReadKey() {
        if (!AtEnd()) {
            keys->GetKey(index, &key);
        }
    }

    IKeyControl* keys;
    int count;
    int index;
    IBezFloatKey key;  // of `index`, unless that is the end
};

// Puts the records of one track into the file's form.
class KeyRecordWriter {
  public:
    KeyRecordWriter(KTAExp& trackExporter, Float32 trackScale)
        : exporter(trackExporter),
          ticksPerSecond(TicksPerSecond()),
          scale(trackScale),
          length(0.0f),
          slope(0.0f) {}

    void Write(const KeyRecord& record) {
        KTAKeyHead head = {Seconds(record.time), {0, 0, 0}, record.axes, {0, 0}};
        UInt8 codes[kNumTangentCodes];
        for (int axis = 0; axis < kNumAxes; ++axis) {
            head.values[axis] = record.value[axis] * scale;
            codes[axis] = record.side[kIn][axis].code;
            codes[kNumAxes + axis] = record.side[kOut][axis].code;
        }
        exporter.WriteRaw(&head, sizeof(head));
        exporter.WriteRaw(codes, sizeof(codes));
        for (int i = 0; i < kNumTangentCodes; ++i) {
            if (codes[i] == kTangentBezier) {
                WriteTangent(record.side[i / kNumAxes][i % kNumAxes]);
            }
        }
    }

  private:
    KeyRecordWriter(const KeyRecordWriter&);
    KeyRecordWriter& operator=(const KeyRecordWriter&);

    // A length of 0 repeats what the track's last tangent came to. The slope stems from the length
    // before it is cut.
    void WriteTangent(const KeySide& side) {
        if (side.length != 0.0f) {
            length = side.length * kMostLength;
            slope = ticksPerSecond * side.tangent * scale * length;
        }
        KTATangent tangent = {length, slope};
        if (tangent.length < kLeastLength) {
            tangent.length = kLeastLength;
        } else if (tangent.length > kMostLength) {
            tangent.length = kMostLength;
        }
        exporter.WriteRaw(&tangent, sizeof(tangent));
    }

    KTAExp& exporter;
    const Float32 ticksPerSecond;
    const Float32 scale;
    Float32 length;  // of the tangent written last, uncut
    Float32 slope;
};

TimeValue EarliestTime(const AxisKeys axes[kNumAxes]) {
    TimeValue earliest = INT_MAX;
    for (int i = 0; i < kNumAxes; ++i) {
        earliest = axes[i].Time() < earliest ? axes[i].Time() : earliest;
    }
    return earliest;
}

}  // namespace

void KTAExp::WriteKeyframedTrack(INode* node, char track) {
    Control* transform = node->GetTMController();
    if (transform == NULL) {
        return;
    }
    const bool isRotation = track == 'r';
    IKeyControl* controls[kNumAxes];
    if (!FindAxisKeys(
            isRotation ? transform->GetRotationController() : transform->GetPositionController(),
            controls)) {
        return;
    }
    AxisKeys axes[kNumAxes];
    for (int i = 0; i < kNumAxes; ++i) {
        axes[i].Open(controls[i]);
    }

    // The declared size never covers the records; only their count is known afterwards.
    KTAKeyTrack header = {0, 'L', track, {0, 0}};
    const fpos_t position = ChunkPosition();
    WriteChunkHeader(kChunkKeyTrack, sizeof(header), kKeyTrackKeyframed);
    WriteRaw(&header, sizeof(header));
    KeyRecordWriter writer(*this, isRotation ? kDegreesPerRadian : 1.0f);
    while (!axes[0].AtEnd() || !axes[1].AtEnd() || !axes[2].AtEnd()) {
        KeyRecord record;
        record.time = EarliestTime(axes);
        record.axes = 0;
        for (int i = 0; i < kNumAxes; ++i) {
            axes[i].Take(record, i);
        }
        writer.Write(record);
        ++header.keyCount;
    }
    PatchChunk(position, kChunkKeyTrack, sizeof(header), kKeyTrackKeyframed, &header,
               sizeof(header));
}

void KTAExp::WriteKeyframedScaleTrack(INode* node) {
    Control* transform = node->GetTMController();
    IKeyControl* keys = transform == NULL ? NULL : BezierScaleKeys(transform->GetScaleController());
    if (keys == NULL) {
        return;
    }
    const int count = keys->GetNumKeys();
    const KTAKeyTrack header = {static_cast<UInt32>(count), 'L', 'S', {0, 0}};
    WriteChunkHeader(kChunkKeyTrack, sizeof(header), kKeyTrackKeyframed);
    WriteRaw(&header, sizeof(header));
    KeyRecordWriter writer(*this, 1.0f);
    for (int i = 0; i < count; ++i) {
        IBezScaleKey key;
        keys->GetKey(i, &key);
        KeyRecord record;
        record.time = key.time;
        record.axes = (1 << kNumAxes) - 1;
        for (int axis = 0; axis < kNumAxes; ++axis) {
            record.value[axis] = key.val.s[axis];
            record.side[kIn][axis] =
                MakeSide(TangentCode(key, kIn), -key.intan[axis], key.inLength[axis]);
            record.side[kOut][axis] =
                MakeSide(TangentCode(key, kOut), key.outtan[axis], key.outLength[axis]);
        }
        writer.Write(record);
    }
}
