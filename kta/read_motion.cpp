// The key track chunk in both layouts. The keys are counted; the records of keyframed tracks
// differ in size, and no declared size covers them.
#include <limits>
#include <string_view>
#include <utility>

#include "kta/read_bodies.h"
#include "kta/read_checks.h"

namespace kta {
namespace {

constexpr std::uint16_t kAllAxes = 7;
constexpr std::uint8_t kTangentOfOtherTime = 1;  // the axis has no key at the record's time
constexpr float kLeastHandle = 1e-5f;
constexpr float kMostHandle = 2.99999f;
constexpr std::string_view kAxisNames = "XYZ";

// ---------------------------------------------------------------- keys

// Reads the keys of one track. What is wrong with a number is told when all are read, by Report();
// what would leave it open how the bytes go on stops the cursor.
class KeyReader {
  public:
    explicit KeyReader(Cursor& cursor) : cursor_(cursor) {}

    SampledKey ReadSampled(std::size_t numValues) {
        SampledKey key;
        key.time = ReadTime();
        if (numValues == 4) {
            key.value = values_.Read<4>(cursor_);
        } else {
            const std::array<float, 3> value = values_.Read<3>(cursor_);
            key.value = {value[0], value[1], value[2], 0};
        }
        return key;
    }

    // Offsets: 0 time f32, 4 values f32[3], 16 axis mask u16, 18 reserved[2], 20 tangent codes
    // u8[6], 26 tangent records, each 0 length f32, 4 slope f32.
    CurveKey ReadCurve(bool allAxes) {
        CurveKey key;
        if (!cursor_.Require(kCurveKeySize, "key")) {
            return key;
        }
        key.time = ReadTime();
        const std::uint64_t values = cursor_.Offset();
        key.values = values_.Read<3>(cursor_);
        key.axisMask = ReadMask(allAxes);
        CheckAbsentValues(key, values);
        cursor_.Skip(2);
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
    float ReadTime() {
        const std::uint64_t offset = cursor_.Offset();
        const float time = times_.Read<1>(cursor_)[0];
        if (time < previousTime_) {
            descending_.Note(offset, [&] {
                return Expected("key time", Digits(time),
                                "at least " + Digits(previousTime_) + ", the time before it");
            });
        }
        if (std::isfinite(time)) {
            previousTime_ = time;
        }
        return time;
    }

    std::uint16_t ReadMask(bool allAxes) {
        const std::uint64_t offset = cursor_.Offset();
        const std::uint16_t mask = cursor_.U16();
        if (mask == 0 || mask > kAllAxes || (allAxes && mask != kAllAxes)) {
            cursor_.Stop(offset, Expected("axis mask", mask, allAxes ? "7, all axes" : "1 to 7"));
        }
        return mask;
    }

    void CheckAbsentValues(const CurveKey& key, std::uint64_t offset) {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            if ((key.axisMask >> axis & 1) == 0 && key.values[axis] != 0) {
                absent_.Note(offset + axis * 4, [&] {
                    return Expected(std::string(1, kAxisNames[axis]) + " value",
                                    Digits(key.values[axis]), "0, the mask lacks the axis");
                });
            }
        }
    }

    void ReadTangents(CurveKey& key) {
        std::uint64_t withHandle = 0;
        for (std::size_t i = 0; i < key.tangentCodes.size(); ++i) {
            key.tangentCodes[i] = ReadTangentCode((key.axisMask >> i % 3 & 1) != 0);
            withHandle += key.tangentCodes[i] == kTangentWithHandle ? 1 : 0;
        }
        if (!cursor_.Require(withHandle * kTangentSize, "tangent records")) {
            return;
        }
        for (std::size_t i = 0; i < key.tangentCodes.size(); ++i) {
            if (key.tangentCodes[i] == kTangentWithHandle) {
                key.tangents[i] = ReadTangent();
            }
        }
    }

    std::uint8_t ReadTangentCode(bool axisIsThere) {
        const std::uint64_t offset = cursor_.Offset();
        const std::uint8_t code = cursor_.U8();
        if (!axisIsThere && code != kTangentOfOtherTime) {
            cursor_.Stop(offset, Expected("tangent code", code, "1, the mask lacks the axis"));
        } else if (code != kTangentOfOtherTime && (code < 3 || code > kTangentWithHandle)) {
            cursor_.Stop(offset, Expected("tangent code", code, "1, 3, 4 or 5"));
        }
        return code;
    }

    std::array<float, 2> ReadTangent() {
        const std::uint64_t offset = cursor_.Offset();
        const std::array<float, 2> tangent = tangents_.Read<2>(cursor_);
        if (tangent[0] < kLeastHandle || tangent[0] > kMostHandle) {
            lengths_.Note(offset, [&] {
                return Expected("handle length", Digits(tangent[0]),
                                Digits(kLeastHandle) + " to " + Digits(kMostHandle));
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

// Offsets in the body: 0 number of keys u32, 4 interpolation char, 5 track letter char,
// 6 reserved[2]. Returns the number of keys; a track without any is never written.
std::uint32_t ReadTrackHead(Cursor& cursor, std::string_view letters, KeyTrack& track) {
    const std::uint64_t offset = cursor.Offset();
    const std::uint32_t count = cursor.U32();
    if (count == 0) {
        cursor.Stop(offset, Expected("key count", 0, "1 or more"));
    }
    track.interpolation = static_cast<char>(cursor.U8());
    if (track.interpolation != 'L') {
        cursor.Report(offset + 4,
                      "interpolation letter is byte " +
                          std::to_string(static_cast<unsigned char>(track.interpolation)) +
                          ", expected L");
    }
    const std::uint8_t letter = cursor.U8();
    track.trackLetter = static_cast<char>(letter);
    if (letters.find(track.trackLetter) == std::string_view::npos) {
        cursor.Stop(offset + 5, "track letter is byte " + std::to_string(int{letter}) +
                                    ", expected " + letters[0] + ", " + letters[1] + " or " +
                                    letters[2]);
    }
    cursor.Skip(2);
    return cursor.Stopped() ? 0 : count;
}

void ReadSampledKeys(Cursor& cursor, Chunk& chunk, std::uint32_t count, KeyTrack& track) {
    const std::uint64_t size = std::uint64_t{count} * 4 * (1 + track.ValuesPerKey());
    if (!cursor.Require(size, "keys")) {
        return;
    }
    if (chunk.size != kTrackHeadSize + size) {
        cursor.Report(chunk.offset + 4,
                      Expected("size", chunk.size,
                               std::to_string(kTrackHeadSize + size) + " by its key count"));
    }
    KeyReader reader(cursor);
    track.sampledKeys.reserve(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        track.sampledKeys.push_back(reader.ReadSampled(track.ValuesPerKey()));
    }
    reader.Report();
}

// All axes have a key in a track's first record, and in all of a scale track.
void ReadCurveKeys(Cursor& cursor, std::uint32_t count, KeyTrack& track) {
    if (!cursor.Require(std::uint64_t{count} * kCurveKeySize, "keys")) {
        return;
    }
    KeyReader reader(cursor);
    track.curveKeys.reserve(count);
    for (std::uint32_t i = 0; i < count && !cursor.Stopped(); ++i) {
        track.curveKeys.push_back(reader.ReadCurve(i == 0 || track.trackLetter == 'S'));
    }
    reader.Report();
}

}  // namespace

void ReadKeyTrackBody(Cursor& cursor, Chunk& chunk) {
    const bool sampled = chunk.version == kKeyTrackSampled;
    // The size of a keyframed track is always that of its head.
    if (!sampled && chunk.size != kTrackHeadSize) {
        cursor.Stop(chunk.offset + 4, Expected("size", chunk.size, std::to_string(kTrackHeadSize)));
    }
    KeyTrack track;
    if (!cursor.Require(kTrackHeadSize, "head")) {
        return;
    }
    const std::uint32_t count = ReadTrackHead(cursor, sampled ? "PRS" : "PrS", track);
    if (cursor.Stopped()) {
        return;
    }
    sampled ? ReadSampledKeys(cursor, chunk, count, track) : ReadCurveKeys(cursor, count, track);
    if (!cursor.Stopped()) {
        chunk.body = std::move(track);
    }
}

}  // namespace kta
