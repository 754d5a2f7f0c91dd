// The chunks of skinning weights, morphs and wires.
#include <cmath>
#include <limits>

#include "kta/bodies.h"

namespace kta {
namespace {

// ---------------------------------------------------------------- weights

// A count (u8) and that many weights. `end` is where the body ends by its declared size.
void ReadVertex(Cursor& cursor, std::uint64_t end, NotFinite& finiteWeights, Weights& weights) {
    const std::uint64_t offset = cursor.Offset();
    const auto count = cursor.Read<std::uint8_t>();
    const std::uint64_t room = (end - cursor.Offset()) / sizeof(KTAWeight);
    if (count > room) {
        cursor.Stop(offset, Found(IssueCode::weightCount, "weight count", count,
                                  "at most " + std::to_string(room) + ", what the size leaves"));
    }
    if (!cursor.Require(std::uint64_t{count} * sizeof(KTAWeight), "weights of a vertex")) {
        return;
    }
    weights.weightCounts.push_back(count);
    for (std::uint8_t i = 0; i < count; ++i) {
        const std::uint64_t weight = cursor.Offset() + offsetof(KTAWeight, weight);
        weights.weights.push_back(cursor.Read<KTAWeight>());
        finiteWeights.Check(weight, {&weights.weights.back().weight, 1});
    }
}

}  // namespace

// Nothing in the chunk counts its vertices: they go on to the declared size, or, where vertices
// have no record, to the next chunk's header.
void ReadWeightsBody(Cursor& cursor, Chunk& chunk) {
    constexpr std::uint32_t kHeadSize = sizeof(KTAWeights);
    if (chunk.size < kHeadSize) {
        cursor.Stop(chunk.offset + offsetof(KTAChunkHeader, size),
                    Found(IssueCode::chunkSize, "size", chunk.size,
                          std::to_string(kHeadSize) + " or more"));
    }
    const std::uint64_t end = cursor.Offset() + chunk.size;
    if (!cursor.Require(kHeadSize, "head")) {
        return;
    }
    Weights weights;
    weights.head = ReadRecord<KTAWeights>(cursor);
    NotFinite finiteWeights("weight", "chunk");
    while (!cursor.Stopped() && cursor.Offset() < end && !IsChunkEnd(cursor)) {
        ReadVertex(cursor, end, finiteWeights, weights);
    }
    finiteWeights.Report(cursor);
    if (!cursor.Stopped()) {
        weights.vertexCount = static_cast<std::uint32_t>(
            chunk.size - kHeadSize - weights.weights.size() * sizeof(KTAWeight));
        chunk.body = std::move(weights);
    }
}

// ---------------------------------------------------------------- morphs

namespace {

constexpr std::size_t kZerosPerPoint = 3;

void CheckZeros(Cursor& cursor, std::size_t count) {
    Repeated zeros("channel");
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint64_t offset = cursor.Offset();
        const auto value = cursor.Read<std::uint8_t>();
        if (value != 0) {
            zeros.Note(offset, [&] {
                return Found(IssueCode::constantValue, "byte behind the points", value, "0");
            });
        }
    }
    zeros.Report(cursor);
}

void CheckPointNumbers(Cursor& cursor, std::uint64_t offset, const Morph& morph) {
    Repeated wrong("channel");
    std::int32_t expected = 0;
    for (const std::int32_t number : morph.pointNumbers) {
        if (number != expected) {
            wrong.Note(offset, [&] {
                return Found(IssueCode::morphPointNumber, "point number", number,
                             std::to_string(expected));
            });
        }
        ++expected;
        offset += sizeof(number);
    }
    wrong.Report(cursor);
}

}  // namespace

// The declared size covers the channel's record, not the points.
void ReadMorphBody(Cursor& cursor, Chunk& chunk) {
    constexpr std::uint32_t kSize = sizeof(KTAMorphChannel);
    if (chunk.size != kSize) {
        cursor.Stop(chunk.offset + offsetof(KTAChunkHeader, size),
                    Found(IssueCode::chunkSize, "size", chunk.size, std::to_string(kSize)));
    }
    Morph morph;
    if (cursor.Require(kSize, "channel record")) {
        morph.channel = ReadRecord<KTAMorphChannel>(cursor);
    }
    if (cursor.Require(sizeof(KTAMorphPoints), "head of the points")) {
        morph.head = ReadRecord<KTAMorphPoints>(cursor);
    }
    const auto count = static_cast<std::size_t>(cursor.Stopped() ? 0 : morph.head.pointCount);
    constexpr std::size_t kPointSize =
        sizeof(KTAMorphPoint) + kZerosPerPoint + sizeof(Plinth::Int32);
    if (cursor.Require(std::uint64_t{count} * kPointSize, "points")) {
        morph.points = cursor.ReadAll<KTAMorphPoint>(count);
        CheckZeros(cursor, count * kZerosPerPoint);
        const std::uint64_t numbers = cursor.Offset();
        morph.pointNumbers = cursor.ReadAll<std::int32_t>(count);
        CheckPointNumbers(cursor, numbers, morph);
        chunk.body = std::move(morph);
    }
}

std::array<float, 3> MorphPosition(const Morph& morph, std::size_t point) {
    constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
    constexpr double kUnit = 100;  // a scene's unit in the channel's
    const float minimum = morph.head.minimum;
    const float range = morph.head.maximum - minimum;
    if (range == 0) {
        const auto all = static_cast<float>(minimum / kUnit);
        return {all, all, all};
    }
    const double scale = range < 1 ? 1 / double{range} : 1;
    const float steps = std::trunc(65535.0f / std::max(1.0f, range));  // in f32, as packed
    if (!(range > 0) || steps == 0) {
        return {kNone, kNone, kNone};
    }
    std::array<float, 3> position{};
    for (std::size_t i = 0; i < 3; ++i) {
        const double value = morph.points[point].packed[i] / steps + minimum * scale;
        position[i] = static_cast<float>(value / scale / kUnit);
    }
    return position;
}

// ---------------------------------------------------------------- wires

namespace {

// The name of a node's animated channel; empty when there is no such channel.
std::string VariableName(std::int32_t part, std::int32_t component) {
    constexpr const char* kParts[] = {"Position", "Rotation", "Scale"};
    const bool exists = part >= 0 && part <= 2 && component >= 0 && component <= 2;
    return exists ? std::string(1, "XYZ"[component]) + "_" + kParts[part] : "";
}

void CheckVariable(Cursor& cursor, std::uint64_t offset, const char* what,
                   std::string_view variable, const std::string& name, bool mayBeEmpty) {
    if (!name.empty() && variable != name && !(mayBeEmpty && variable.empty())) {
        cursor.Report(offset, {IssueCode::wireVariable, what, std::string(variable),
                               name + (mayBeEmpty ? " or none" : "")});
    }
}

}  // namespace

void ReadWireBody(Cursor& cursor, Chunk& chunk) {
    const std::uint64_t body = cursor.Offset();
    ReadRecordBody<KTAWire>(cursor, chunk);
    if (const auto* wire = chunk.As<KTAWire>()) {
        CheckVariable(cursor, body + offsetof(KTAWire, secondVariable), "second variable",
                      TextOf(wire->secondVariable),
                      VariableName(wire->secondPart, wire->secondComponent), false);
        CheckVariable(cursor, body + offsetof(KTAWire, firstVariable), "first variable",
                      TextOf(wire->firstVariable),
                      VariableName(wire->firstPart, wire->firstComponent), true);
    }
}

}  // namespace kta
