#include "kta/items.h"

#include <utility>

namespace kta {
namespace {

using Visit = std::function<void(std::uint64_t, const Json&)>;

constexpr ItemList kKeys = {"keys", "key"};
constexpr ItemList kVertices = {"vertices", "vertex"};
constexpr ItemList kPoints = {"points", "point"};

Json ValueOf(const KeyTrack& track, const SampledKey& key) {
    Json value = Value(key.value);
    value.erase(value.begin() + static_cast<std::ptrdiff_t>(track.ValuesPerKey()), value.end());
    return {{"time", Value(key.time)}, {"values", std::move(value)}};
}

Json ValueOf(const CurveKey& key) {
    Json tangents = Json::array();
    for (std::size_t i = 0; i < key.tangents.size(); ++i) {
        if (key.tangentCodes[i] == kTangentWithHandle) {
            tangents.push_back(Value(key.tangents[i]));
        }
    }
    return {{"time", Value(key.time)},
            {"values", Value(key.values)},
            {"axisMask", key.axisMask},
            {"tangentCodes", key.tangentCodes},
            {"tangentRecords", std::move(tangents)}};
}

void VisitItemsOf(const KeyTrack& track, std::uint64_t body, const Visit& visit) {
    std::uint64_t offset = body + kTrackHeadSize;
    for (const SampledKey& key : track.sampledKeys) {
        visit(offset, ValueOf(track, key));
        offset += 4 * (1 + track.ValuesPerKey());
    }
    for (const CurveKey& key : track.curveKeys) {
        const Json value = ValueOf(key);
        visit(offset, value);
        offset += kCurveKeySize + value.at("tangentRecords").size() * kTangentSize;
    }
}

void VisitItemsOf(const Weights& weights, std::uint64_t body, const Visit& visit) {
    std::uint64_t offset = body + kWeightsHeadSize;
    auto entry = weights.entries.begin();
    for (const std::uint8_t count : weights.counts) {
        Json entries = Json::array();
        for (std::uint8_t i = 0; i < count; ++i, ++entry) {
            entries.push_back(Json::array({entry->bone, Value(entry->weight)}));
        }
        visit(offset, {{"weightCount", count}, {"weights", std::move(entries)}});
        offset += 1 + std::uint64_t{count} * kWeightEntrySize;
    }
}

void VisitItemsOf(const Morph& morph, std::uint64_t body, const Visit& visit) {
    std::uint64_t offset = body + kMorphRecordSize + kPointBlockHeadSize;
    for (std::size_t i = 0; i < morph.packedPoints.size(); ++i) {
        visit(offset, {{"pointNumber", morph.pointNumbers[i]},
                       {"packed", morph.packedPoints[i]},
                       {"position", Value(MorphPosition(morph, i))}});
        offset += kPackedPointSize;
    }
}

template <typename Body>
void VisitItemsOf(const Body&, std::uint64_t, const Visit&) {
}

}  // namespace

const ItemList* ItemListOf(const Chunk& chunk) {
    if (std::holds_alternative<KeyTrack>(chunk.body)) {
        return &kKeys;
    }
    if (std::holds_alternative<Weights>(chunk.body)) {
        return &kVertices;
    }
    return std::holds_alternative<Morph>(chunk.body) ? &kPoints : nullptr;
}

void VisitItems(const Chunk& chunk, const Visit& visit) {
    const std::uint64_t body = chunk.offset + kChunkHeaderSize;
    std::visit([&](const auto& content) { VisitItemsOf(content, body, visit); }, chunk.body);
}

}  // namespace kta
