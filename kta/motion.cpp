// The key track chunk in both layouts. The keys are counted; the records of keyframed tracks
// differ in size, and no declared size covers them.
#include <cmath>
#include <limits>

#include "kta/bodies.h"

namespace kta {
namespace {

constexpr std::uint16_t kAllAxes = 7;
constexpr float kLeastHandle = 1e-5f;
constexpr float kMostHandle = 2.99999f;
constexpr std::string_view kAxisNames = "XYZ";
constexpr std::uint32_t kKeyframedKeySize = sizeof(KTAKeyHead) + kNumTangentCodes;  // or more

// ---------------------------------------------------------------- keys

// Reads the keys of one track. What is wrong with a number is told when all are read, by Report();
// what would leave it open how the bytes go on stops the cursor.
class KeyReader {
  public:
    explicit KeyReader(Cursor& cursor) : cursor_(cursor) {}

    template <typename Sample>
    std::vector<Sample> ReadSamples(std::uint32_t count) {
        std::uint64_t offset = cursor_.Offset();
        std::vector<Sample> samples = cursor_.ReadAll<Sample>(count);
        for (const Sample& sample : samples) {
            CheckTime(offset, sample.time);
            values_.Check(offset + offsetof(Sample, values), sample.values);
            offset += sizeof(Sample);
        }
        return samples;
    }

    KeyframedKey ReadKeyframed(bool allAxes) {
        KeyframedKey key;
        const std::uint64_t offset = cursor_.Offset();
        if (!cursor_.Require(kKeyframedKeySize, "key")) {
            return key;
        }
        key.head = cursor_.Read<KTAKeyHead>();
        CheckTime(offset, key.head.time);
        values_.Check(offset + offsetof(KTAKeyHead, values), key.head.values);
        CheckMask(offset + offsetof(KTAKeyHead, axisMask), key.head.axisMask, allAxes);
        CheckAbsentValues(offset + offsetof(KTAKeyHead, values), key.head);
        ReadTangents(key);
        return key;
    }

    void Report() {
        times_.Report(cursor_);
        descending_.Report(cursor_);
        values_.Report(cursor_);
        absent_.Report(cursor_);
        tangents_.Report(cursor_);
        lengths_.Report(cursor_);
    }

  private:
    // A sampled track's last time may stand twice, so equal times are in order.
    void CheckTime(std::uint64_t offset, float time) {
        times_.Check(offset, {&time, 1});
        if (time < previousTime_) {
            descending_.Note(offset, [&] {
                return Finding{IssueCode::keyTimeOrder, "key time", Digits(time),
                               "at least " + Digits(previousTime_) + ", the time before it"};
            });
        }
        if (std::isfinite(time)) {
            previousTime_ = time;
        }
    }

    void CheckMask(std::uint64_t offset, std::uint16_t mask, bool allAxes) {
        if (mask == 0 || mask > kAllAxes || (allAxes && mask != kAllAxes)) {
            cursor_.Stop(offset, Found(IssueCode::keyAxisMask, "axis mask", mask,
                                       allAxes ? "7, all axes" : "1 to 7"));
        }
    }

    void CheckAbsentValues(std::uint64_t offset, const KTAKeyHead& head) {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            if ((head.axisMask >> axis & 1) == 0 && head.values[axis] != 0) {
                absent_.Note(offset + axis * sizeof(float), [&] {
                    return Finding{IssueCode::keyAbsentValue,
                                   std::string(1, kAxisNames[axis]) + " value",
                                   Digits(head.values[axis]), "0, the mask lacks the axis"};
                });
            }
        }
    }

    void ReadTangents(KeyframedKey& key) {
        std::uint64_t withHandle = 0;
        for (std::size_t i = 0; i < key.tangentCodes.size(); ++i) {
            key.tangentCodes[i] = ReadTangentCode((key.head.axisMask >> i % 3 & 1) != 0);
            withHandle += key.tangentCodes[i] == kTangentBezier ? 1 : 0;
        }
        if (!cursor_.Require(withHandle * sizeof(KTATangent), "tangent records")) {
            return;
        }
        for (std::size_t i = 0; i < key.tangentCodes.size(); ++i) {
            if (key.tangentCodes[i] == kTangentBezier) {
                key.tangentRecords[i] = ReadTangent();
            }
        }
    }

    std::uint8_t ReadTangentCode(bool axisIsThere) {
        const std::uint64_t offset = cursor_.Offset();
        const auto code = cursor_.Read<std::uint8_t>();
        if (!axisIsThere && code != kTangentNone) {
            cursor_.Stop(offset, Found(IssueCode::keyTangentCode, "tangent code", code,
                                       "1, the mask lacks the axis"));
        } else if (code != kTangentNone && (code < kTangentLinear || code > kTangentBezier)) {
            cursor_.Stop(offset,
                         Found(IssueCode::keyTangentCode, "tangent code", code, "1, 3, 4 or 5"));
        }
        return code;
    }

    KTATangent ReadTangent() {
        const std::uint64_t offset = cursor_.Offset();
        const auto tangent = cursor_.Read<KTATangent>();
        const std::array<float, 2> numbers = {tangent.length, tangent.slope};
        tangents_.Check(offset, numbers);
        if (tangent.length < kLeastHandle || tangent.length > kMostHandle) {
            lengths_.Note(offset, [&] {
                return Finding{IssueCode::keyHandleLength, "handle length", Digits(tangent.length),
                               Digits(kLeastHandle) + " to " + Digits(kMostHandle)};
            });
        }
        return tangent;
    }

    Cursor& cursor_;
    float previousTime_ = -std::numeric_limits<float>::infinity();
    NotFinite times_{"key time", "track"};
    NotFinite values_{"key value", "track"};
    NotFinite tangents_{"tangent record", "track"};
    Repeated descending_{"track"};
    Repeated absent_{"track"};
    Repeated lengths_{"track"};
};

// ---------------------------------------------------------------- tracks

void ReadSamples(Cursor& cursor, const Chunk& chunk, KeyTrack& track) {
    const bool rotation = track.head.trackLetter == 'R';
    const std::uint64_t keySize = rotation ? sizeof(KTARotationSample) : sizeof(KTAVectorSample);
    if (!cursor.Require(track.head.keyCount * keySize, "keys")) {
        return;
    }
    const std::uint64_t size = sizeof(KTAKeyTrack) + track.head.keyCount * keySize;
    if (chunk.size != size) {
        cursor.Report(chunk.offset + offsetof(KTAChunkHeader, size),
                      Found(IssueCode::chunkSize, "size", chunk.size,
                            std::to_string(size) + " by its key count"));
    }
    KeyReader reader(cursor);
    if (rotation) {
        track.rotationSamples = reader.ReadSamples<KTARotationSample>(track.head.keyCount);
    } else {
        track.vectorSamples = reader.ReadSamples<KTAVectorSample>(track.head.keyCount);
    }
    reader.Report();
}

// All axes have a key in a track's first record, and in all of a scale track.
void ReadKeyframedKeys(Cursor& cursor, KeyTrack& track) {
    const std::uint32_t count = track.head.keyCount;
    if (!cursor.Require(std::uint64_t{count} * kKeyframedKeySize, "keys")) {
        return;
    }
    KeyReader reader(cursor);
    track.keyframedKeys.reserve(count);
    for (std::uint32_t i = 0; i < count && !cursor.Stopped(); ++i) {
        track.keyframedKeys.push_back(
            reader.ReadKeyframed(i == 0 || track.head.trackLetter == 'S'));
    }
    reader.Report();
}

}  // namespace

void ReadKeyTrackBody(Cursor& cursor, Chunk& chunk) {
    const bool sampled = chunk.version == kKeyTrackSampled;
    // The size of a keyframed track is always that of its head.
    if (!sampled && chunk.size != sizeof(KTAKeyTrack)) {
        cursor.Stop(
            chunk.offset + offsetof(KTAChunkHeader, size),
            Found(IssueCode::chunkSize, "size", chunk.size, std::to_string(sizeof(KTAKeyTrack))));
    }
    const std::uint64_t offset = cursor.Offset();
    if (!cursor.Require(sizeof(KTAKeyTrack), "head")) {
        return;
    }
    KeyTrack track;
    track.head = ReadRecord<KTAKeyTrack>(cursor);
    const std::string_view letters = sampled ? "PRS" : "PrS";
    if (letters.find(track.head.trackLetter) == std::string_view::npos) {
        cursor.Stop(offset + offsetof(KTAKeyTrack, trackLetter),
                    FoundLetter("track letter", track.head.trackLetter, letters));
    }
    if (cursor.Stopped()) {
        return;
    }
    sampled ? ReadSamples(cursor, chunk, track) : ReadKeyframedKeys(cursor, track);
    if (!cursor.Stopped()) {
        chunk.body = std::move(track);
    }
}

}  // namespace kta
