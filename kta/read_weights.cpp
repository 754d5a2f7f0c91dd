// The skinning weights chunk. Nothing in it counts its vertices: they go on to the declared size,
// or, where vertices have no record, to the next chunk's header.
#include <utility>

#include "kta/read_bodies.h"
#include "kta/read_checks.h"

namespace kta {
namespace {

// Offsets: 0 count u8, then for each entry 0 bone i16, 2 padding[2], 4 weight f32. `end` is where
// the body ends by its declared size.
void ReadVertex(Cursor& cursor, std::uint64_t end, NotFinite& finiteWeights, Weights& weights) {
    const std::uint64_t offset = cursor.Offset();
    const std::uint8_t count = cursor.U8();
    const std::uint64_t room = (end - cursor.Offset()) / kWeightEntrySize;
    if (count > room) {
        cursor.Stop(offset, Expected("weight count", count,
                                     "at most " + std::to_string(room) + ", what the size leaves"));
    }
    if (!cursor.Require(std::uint64_t{count} * kWeightEntrySize, "weights of a vertex")) {
        return;
    }
    weights.counts.push_back(count);
    for (std::uint8_t i = 0; i < count; ++i) {
        const std::int16_t bone = cursor.I16();
        cursor.Skip(2);
        weights.entries.push_back({bone, finiteWeights.Read<1>(cursor)[0]});
    }
}

}  // namespace

void ReadWeightsBody(Cursor& cursor, Chunk& chunk) {
    if (chunk.size < kWeightsHeadSize) {
        cursor.Stop(chunk.offset + 4,
                    Expected("size", chunk.size, std::to_string(kWeightsHeadSize) + " or more"));
    }
    const std::uint64_t end = cursor.Offset() + chunk.size;
    if (!cursor.Require(kWeightsHeadSize, "head")) {
        return;
    }
    Weights weights;
    weights.node = ReadAtLeast(cursor, "node number", -1);
    NotFinite finiteWeights("weight", "chunk");
    while (!cursor.Stopped() && cursor.Offset() < end && !IsChunkEnd(cursor)) {
        ReadVertex(cursor, end, finiteWeights, weights);
    }
    finiteWeights.Report(cursor);
    if (!cursor.Stopped()) {
        const std::uint64_t entryBytes = weights.entries.size() * kWeightEntrySize;
        weights.numVertices =
            static_cast<std::uint32_t>(chunk.size - kWeightsHeadSize - entryBytes);
        chunk.body = std::move(weights);
    }
}

}  // namespace kta
