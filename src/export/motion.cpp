// The motion of a node: the motion part with the rest pose, and the tracks behind it, which are
// sampled on a grid of frames or copied from a controller's keys.
#include <limits.h>
#include <math.h>

#include <max.h>

#include <istdplug.h>
#include <maxapi.h>
#include <quat.h>

#include "core/array.h"
#include "core/format.h"
#include "core/log.h"
#include "export/export_pass.h"
#include "scene/bezier_keys.h"
#include "scene/node.h"

using Plinth::Float32;
using Plinth::Int32;
using Plinth::Int64;
using Plinth::UInt16;
using Plinth::UInt32;
using Plinth::UInt8;

namespace {

// Times of keys are ticks inside 3ds Max and seconds in the file. The product is formed as an
// integer and rounded once.
Float32 TicksPerSecond() {
    return static_cast<Float32>(static_cast<Int64>(GetFrameRate()) * GetTicksPerFrame());
}

Float32 Seconds(TimeValue ticks) {
    return static_cast<Float32>(ticks) / TicksPerSecond();
}

// Makes the samples those of the node on the export's grid.
void ChooseSamples(ExportPass& pass, INode* node) {
    const Int64 step = static_cast<Int64>(GetTicksPerFrame()) * pass.options.sampleRate;
    pass.transformSamples.Choose(node, pass.ip->GetAnimRange(), step);
}

// The pose at tick 0, wherever the animation range starts.
TransformSample RestPose(ExportPass& pass, INode* node) {
    if (!pass.options.sampleAnimation) {
        return SampleTransform(NodePlace(node), 0);
    }
    ChooseSamples(pass, node);
    return pass.transformSamples.At(0);
}

}  // namespace

void ExportMotionPart(ExportPass& pass, INode* node) {
    if (IsFootprintNode(node)) {
        Plinth::Log("  + Skipped node, because it's a biped footprint");
        return;
    }
    KTAMotionPart record = ZeroedRecord<KTAMotionPart>();
    const TransformSample pose = RestPose(pass, node);
    StoreVector(record.translation, pose.translation);
    StoreQuaternion(record.rotation, pose.rotation);
    StoreVector(record.scale, pose.scale);
    Plinth::Log("- Exporting motionpart '%s'", node->GetName());
    Plinth::CopyName(record.nodeName, sizeof(record.nodeName), node->GetName());

    bool position, rotation, scale;
    if (DetectAnimation(pass, node, position, rotation, scale)) {
        pass.writer.WriteChunk(record);
        ExportAnimation(pass, node, position, rotation, scale);
    }
    pass.transformSamples.Release();
}

void ExportAnimation(ExportPass& pass, INode* node, bool position, bool rotation, bool scale) {
    if (!position && !rotation && !scale) {
        Plinth::Log("  + Node '%s' is not animated...", node->GetName());
        return;
    }
    const bool sampled = pass.options.sampleAnimation != 0;
    Plinth::Log(sampled ? "  + Animation detected, now exporting samples..."
                        : "  + Exporting animation keyframes");
    if (position) {
        sampled ? WriteSampledTrack(pass, node, 'P') : WriteKeyframedTrack(pass, node, 'P');
    }
    if (rotation) {
        sampled ? WriteSampledTrack(pass, node, 'R') : WriteKeyframedTrack(pass, node, 'r');
    }
    if (scale) {
        sampled ? WriteSampledTrack(pass, node, 'S') : WriteKeyframedScaleTrack(pass, node);
    }
}

// ---------------------------------------------------------------- what is animated

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

// The extra key at the end is not looked at.
void DetectInSamples(ExportPass& pass, INode* node, bool& position, bool& rotation, bool& scale) {
    ChooseSamples(pass, node);
    if (pass.transformSamples.GridCount() == 0) {
        return;
    }
    const TransformSample first = pass.transformSamples.KeySample(0);
    const Turn firstTurn(first.rotation);
    for (Plinth::Int64 i = 1; i < pass.transformSamples.GridCount(); ++i) {
        const TransformSample& sample = pass.transformSamples.KeySample(i);
        position = position || Differs(sample.translation, first.translation);
        rotation = rotation || Turn(sample.rotation).DiffersFrom(firstTurn);
        scale = scale || Differs(sample.scale, first.scale);
        if (position && rotation && scale) {
            return;
        }
    }
}

}  // namespace

bool DetectAnimation(ExportPass& pass, INode* node, bool& position, bool& rotation, bool& scale) {
    position = rotation = scale = false;
    if (pass.options.sampleAnimation) {
        DetectInSamples(pass, node, position, rotation, scale);
    } else if (Control* transform = node->GetTMController()) {
        position = HasAxisKeys(transform->GetPositionController());
        rotation = HasAxisKeys(transform->GetRotationController());
        scale = HasScaleKeys(transform->GetScaleController());
    }
    return position || rotation || scale;
}

// ---------------------------------------------------------------- sampled tracks

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

void WriteSample(KTAWriter& writer, char track, TimeValue time, const TransformSample& sample) {
    if (track == 'R') {
        KTARotationSample record = {Seconds(time), {0, 0, 0, 0}};
        StoreQuaternion(record.values, sample.rotation);
        writer.WriteRecord(record);
        return;
    }
    KTAVectorSample record = {Seconds(time), {0, 0, 0}};
    StoreVector(record.values, track == 'P' ? sample.translation : sample.scale);
    writer.WriteRecord(record);
}

}  // namespace

void WriteSampledTrack(ExportPass& pass, INode* node, char track) {
    ChooseSamples(pass, node);
    const Int64 count = pass.transformSamples.KeyCount();
    // The format's counts and sizes have 32 bits.
    const KTAKeyTrack header = {static_cast<UInt32>(count), 'L', track, {0, 0}};
    const UInt32 size = static_cast<UInt32>(sizeof(header) + count * RecordSize(track));
    Plinth::Log("    + NrKeys = %d", static_cast<int>(header.keyCount));
    Plinth::Log("    + Type   = %c", track);
    Plinth::Log("    + Size   = %d bytes", static_cast<int>(size));
    pass.writer.BeginChunk(header, size, kKeyTrackSampled);
    if (RecordSize(track) == 0) {
        return;
    }
    // The last key stands at the end of the range. Where the last grid key does so too, that time
    // is written twice: the count includes both, and readers expect them.
    for (Int64 i = 0; i < count; ++i) {
        WriteSample(pass.writer, track, pass.transformSamples.KeyTime(i),
                    pass.transformSamples.KeySample(i));
    }
}

// ---------------------------------------------------------------- keyframed tracks
// They keep the controller's own axis order.

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

// The keys of one time, before they are put into the file's form.
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
    KeyRecordWriter(KTAWriter& ktaWriter, Float32 trackScale)
        : writer(ktaWriter),
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
        writer.WriteRecord(head);
        writer.WriteRecord(codes);
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
        writer.WriteRecord(tangent);
    }

    KTAWriter& writer;
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

// Appends a record for each time at which an axis has a key.
void MergeKeys(AxisKeys axes[kNumAxes], Plinth::Array<KeyRecord>& records) {
    while (!axes[0].AtEnd() || !axes[1].AtEnd() || !axes[2].AtEnd()) {
        KeyRecord record;
        record.time = EarliestTime(axes);
        record.axes = 0;
        for (int i = 0; i < kNumAxes; ++i) {
            axes[i].Take(record, i);
        }
        records.AddAmortized(record);
    }
}

}  // namespace

void WriteKeyframedTrack(ExportPass& pass, INode* node, char track) {
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

    Plinth::Array<KeyRecord> records;
    MergeKeys(axes, records);

    // The declared size never covers the records.
    const KTAKeyTrack header = {static_cast<UInt32>(records.Count()), 'L', track, {0, 0}};
    pass.writer.BeginChunk(header, sizeof(header), kKeyTrackKeyframed);
    KeyRecordWriter writer(pass.writer, isRotation ? kDegreesPerRadian : 1.0f);
    for (Int32 i = 0; i < records.Count(); ++i) {
        writer.Write(records[i]);
    }
}

void WriteKeyframedScaleTrack(ExportPass& pass, INode* node) {
    Control* transform = node->GetTMController();
    IKeyControl* keys = transform == NULL ? NULL : BezierScaleKeys(transform->GetScaleController());
    if (keys == NULL) {
        return;
    }
    const int count = keys->GetNumKeys();
    const KTAKeyTrack header = {static_cast<UInt32>(count), 'L', 'S', {0, 0}};
    pass.writer.BeginChunk(header, sizeof(header), kKeyTrackKeyframed);
    KeyRecordWriter writer(pass.writer, 1.0f);
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
