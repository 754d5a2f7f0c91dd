// The morph chunk: a record that the declared size covers, and the points, which it does not.
#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "kta/read_bodies.h"
#include "kta/read_checks.h"

namespace kta {
namespace {

constexpr std::uint32_t kPointSize = kPackedPointSize + 3 + 4;  // with its zeros and number

// Offsets in the body: 0 channel name[260], 260 f32, 264 f32, 268 i32, 272 u8, 273 padding[3],
// 276 i32, 280 i32, 284 i32, 288 f32.
void ReadChannelRecord(Cursor& cursor, Morph& morph) {
    morph.channelName = cursor.Text(kNameSize, "channel name");
    morph.at260 = ReadF32Of(cursor, "number at 260", 0);
    morph.at264 = ReadF32Of(cursor, "number at 264", 1);
    morph.at268 = ReadI32Of(cursor, "number at 268", 0);
    morph.at272 = ReadU8Of(cursor, "byte at 272", 0);
    cursor.Skip(3);
    morph.at276 = ReadI32Of(cursor, "number at 276", 1);
    morph.at280 = ReadI32Of(cursor, "number at 280", 0);
    morph.at284 = ReadI32Of(cursor, "number at 284", 0);
    morph.at288 = ReadF32Of(cursor, "number at 288", 0);
}

// Offsets in the body: 292 node name[260], 552 points i32, 556 minimum f32, 560 maximum f32,
// 564 u8, 565 padding[3]. Returns the number of points; a channel without any is never written.
std::uint32_t ReadPointBlockHead(Cursor& cursor, Morph& morph) {
    morph.nodeName = cursor.Text(kNameSize, "node name");
    const std::int32_t count = ReadAtLeast(cursor, "point count", 1);
    const std::uint64_t offset = cursor.Offset();
    morph.minimum = cursor.F32("minimum");
    morph.maximum = cursor.F32("maximum");
    if (morph.minimum > morph.maximum) {
        cursor.Report(offset, Expected("minimum", Digits(morph.minimum),
                                       "at most " + Digits(morph.maximum) + ", the maximum"));
    }
    morph.at564 = ReadU8Of(cursor, "byte at 564", 0);
    cursor.Skip(3);
    return cursor.Stopped() ? 0 : static_cast<std::uint32_t>(count);
}

void ReadZeros(Cursor& cursor, std::uint64_t count) {
    Repeated zeros("channel");
    for (std::uint64_t i = 0; i < count; ++i) {
        const std::uint64_t offset = cursor.Offset();
        const std::uint8_t value = cursor.U8();
        if (value != 0) {
            zeros.Note(offset, [&] { return Expected("byte behind the points", value, "0"); });
        }
    }
    zeros.Report(cursor);
}

void ReadPointNumbers(Cursor& cursor, std::uint32_t count, Morph& morph) {
    Repeated wrong("channel");
    morph.pointNumbers.reserve(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::uint64_t offset = cursor.Offset();
        const std::int32_t number = cursor.I32();
        if (static_cast<std::uint32_t>(number) != i) {
            wrong.Note(offset, [&] { return Expected("point number", number, std::to_string(i)); });
        }
        morph.pointNumbers.push_back(number);
    }
    wrong.Report(cursor);
}

void ReadPoints(Cursor& cursor, std::uint32_t count, Morph& morph) {
    morph.packedPoints.reserve(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        morph.packedPoints.push_back({cursor.U16(), cursor.U16(), cursor.U16()});
    }
    ReadZeros(cursor, std::uint64_t{count} * 3);
    ReadPointNumbers(cursor, count, morph);
}

}  // namespace

void ReadMorphBody(Cursor& cursor, Chunk& chunk) {
    if (chunk.size != kMorphRecordSize) {
        cursor.Stop(chunk.offset + 4,
                    Expected("size", chunk.size, std::to_string(kMorphRecordSize)));
    }
    Morph morph;
    if (cursor.Require(kMorphRecordSize, "channel record")) {
        ReadChannelRecord(cursor, morph);
    }
    std::uint32_t count = 0;
    if (cursor.Require(kPointBlockHeadSize, "head of the points")) {
        count = ReadPointBlockHead(cursor, morph);
    }
    if (cursor.Require(std::uint64_t{count} * kPointSize, "points")) {
        ReadPoints(cursor, count, morph);
        chunk.body = std::move(morph);
    }
}

std::array<float, 3> MorphPosition(const Morph& morph, std::size_t point) {
    constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
    constexpr double kUnit = 100;  // a scene's unit in the channel's
    const float range = morph.maximum - morph.minimum;
    if (range == 0) {
        const auto all = static_cast<float>(morph.minimum / kUnit);
        return {all, all, all};
    }
    const double scale = range < 1 ? 1 / double{range} : 1;
    const float steps = std::trunc(65535.0f / std::max(1.0f, range));  // in f32, as packed
    if (!(range > 0) || steps == 0) {
        return {kNone, kNone, kNone};
    }
    std::array<float, 3> position{};
    for (std::size_t i = 0; i < 3; ++i) {
        const double value = morph.packedPoints[point][i] / steps + morph.minimum * scale;
        position[i] = static_cast<float>(value / scale / kUnit);
    }
    return position;
}

}  // namespace kta
