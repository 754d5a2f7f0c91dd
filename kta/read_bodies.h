// The readers of the chunks' bodies. Each reads, into a chunk whose header is filled, the body at
// which the cursor stands, or stops the cursor.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kta/cursor.h"
#include "kta/reader.h"

namespace kta {

constexpr std::size_t kNameSize = 260;  // of the fields for names, but those of materials

// The sizes of bodies that are one record.
constexpr std::uint32_t kNodeSize = 632;
constexpr std::uint32_t kMaterialSize = 108;
constexpr std::uint32_t kMaterialLayerSize = 288;
constexpr std::uint32_t kMotionPartSize = 300;
constexpr std::uint32_t kJointLimitsSize = 88;
constexpr std::uint32_t kWireSize = 1116;
constexpr std::uint32_t kIkChainSize = 1064;

void ReadNodeBody(Cursor& cursor, Chunk& chunk);
void ReadMeshBody(Cursor& cursor, Chunk& chunk);
void ReadMaterialBody(Cursor& cursor, Chunk& chunk);
void ReadMaterialLayerBody(Cursor& cursor, Chunk& chunk);
void ReadMotionPartBody(Cursor& cursor, Chunk& chunk);
// In the layout that the chunk's version tells.
void ReadKeyTrackBody(Cursor& cursor, Chunk& chunk);
// A body may be shorter than declared; how it is told from a cut one, see Weights.
void ReadWeightsBody(Cursor& cursor, Chunk& chunk);
void ReadJointLimitsBody(Cursor& cursor, Chunk& chunk);
void ReadMorphBody(Cursor& cursor, Chunk& chunk);
void ReadWireBody(Cursor& cursor, Chunk& chunk);
void ReadIkChainBody(Cursor& cursor, Chunk& chunk);

// Whether the file ends at the cursor, or goes on with what may be the head of an actor's chunk.
bool IsChunkEnd(const Cursor& cursor);

}  // namespace kta
