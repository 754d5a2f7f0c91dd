// What stands behind the fields of some chunks as a list: the keys of tracks, the weights of
// vertices, the points of morphs.
#pragma once

#include <cstdint>
#include <functional>

#include "kta/fields.h"

namespace kta {

struct ItemList {
    const char* name;  // of the list
    const char* item;  // of one of its items
};

// Null for a chunk without such a list.
const ItemList* ItemListOf(const Chunk& chunk);

// Each item's offset from the start of the file and its value, in file order. Linear.
void VisitItems(const Chunk& chunk,
                const std::function<void(std::uint64_t offset, const Json& value)>& visit);

}  // namespace kta
