// The readers of the chunks' bodies. Each reads, into a chunk whose header is filled, the body at
// which the cursor stands, or stops the cursor.
#pragma once

#include <cstdint>

#include "kta/cursor.h"
#include "kta/reader.h"

namespace kta {

// The sizes of bodies that are one record.
constexpr std::uint32_t kNodeSize = 632;
constexpr std::uint32_t kMaterialSize = 108;
constexpr std::uint32_t kMaterialLayerSize = 288;

void ReadNodeBody(Cursor& cursor, Chunk& chunk);
void ReadMeshBody(Cursor& cursor, Chunk& chunk);
void ReadMaterialBody(Cursor& cursor, Chunk& chunk);
void ReadMaterialLayerBody(Cursor& cursor, Chunk& chunk);

}  // namespace kta
