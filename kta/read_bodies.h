// The readers of the chunks' bodies. Each reads, into a chunk whose header is filled, the body at
// which the cursor stands, or stops the cursor.
#pragma once

#include "kta/cursor.h"
#include "kta/reader.h"

namespace kta {

void ReadNodeBody(Cursor& cursor, Chunk& chunk);
void ReadMeshBody(Cursor& cursor, Chunk& chunk);
void ReadMaterialBody(Cursor& cursor, Chunk& chunk);
void ReadMaterialLayerBody(Cursor& cursor, Chunk& chunk);

}  // namespace kta
