// The materials that stand in the actor file, with an index for the question of mesh export.
#ifndef EXPORT_MATERIAL_TABLE_H
#define EXPORT_MATERIAL_TABLE_H

#include <max.h>

#include "core/array.h"
#include "core/key_index.h"
#include "core/types.h"

// The index of refraction of every material that has none of its own.
const float kUsualIndexOfRefraction = 1.5f;

// A written material; the "Extra material" has no entry.
struct MaterialTableEntry {
    Plinth::Int32 listIndex;   // the place of its topmost material among the scene's materials
    Plinth::Int32 subIndex;    // its place in the material that holds it; 0 at the top level
    Plinth::Int32 numberLess;  // its number in the file, less 1
    Plinth::Int32 numLayers;
    Mtl* material;
};

class MaterialTable {
  public:
    MaterialTable();

    // Appends a material without layers.
    void Add(Mtl* material, Plinth::Int32 listIndex, Plinth::Int32 subIndex, Plinth::Int32 number);
    // Counts a layer of the last entry, if there is one.
    void CountLayer();

    // The number of the last entry with this list index, whatever its sub-index, or with both
    // indices; 0 without such an entry. Takes constant time.
    Plinth::Int32 NumberOf(Plinth::Int32 listIndex) const;
    Plinth::Int32 NumberOf(Plinth::Int32 listIndex, Plinth::Int32 subIndex) const;

    Plinth::Int32 Count() const { return entries.Count(); }
    const MaterialTableEntry& operator[](Plinth::Int32 i) const { return entries[i]; }
    void Clear();

  private:
    MaterialTable(const MaterialTable&);
    MaterialTable& operator=(const MaterialTable&);

    Plinth::Array<MaterialTableEntry> entries;
    // Numbers in the file, by list index, and by both indices as a pair.
    Plinth::KeyIndex lastOfList;
    Plinth::KeyIndex lastOfPair;
};

#endif
