// The materials of a pass: those that stand in for missing ones, those that stand in the file, and
// the types of their layers.
#ifndef EXPORT_MATERIALS_H
#define EXPORT_MATERIALS_H

#include <max.h>

#include "core/array.h"
#include "core/hash_table.h"
#include "core/pointer_list.h"
#include "core/types.h"
#include "format/records.h"

// The type of a layer by the map slot of a standard material that it stems from.
struct SlotLayer {
    const char* label;
    KTALayerType type;
};
enum { kNumSlotLayers = 11 };
extern const SlotLayer kSlotLayers[kNumSlotLayers];
extern const char kEnvironmentLayerLabel[];
// Of a map inside another map, or in another material's slot; its type is the previous layer's.
extern const char kGenericLayerLabel[];

// The materials that stand in for nodes without one during a pass.
class DefaultMaterials {
  public:
    DefaultMaterials() {}
    ~DefaultMaterials();

    // A new material for a node without one, in the node's wire colour. It is named "Wire Color "
    // and the number of nodes that have had one before, plus 1. A node that comes again gets
    // another one, and has that one from then on.
    Mtl* Make(INode* node);
    // The one that the node has; null without any.
    Mtl* Find(INode* node) const;

    // Makes room for the materials of that many nodes.
    void Reserve(Plinth::Int32 count);

  private:
    DefaultMaterials(const DefaultMaterials&);
    DefaultMaterials& operator=(const DefaultMaterials&);

    Plinth::Array<Mtl*> materials;  // owned; all that were made
    Plinth::PointerList<INode> nodes;
    Plinth::Array<Mtl*> materialOfNode;  // by position in `nodes`
};

// A written material; the "Extra material" has no entry.
struct MaterialTableEntry {
    Plinth::Int32 listIndex;   // the place of its topmost material among the scene's materials
    Plinth::Int32 subIndex;    // its place in the material that holds it; 0 at the top level
    Plinth::Int32 numberLess;  // its number in the file, less 1
    Plinth::Int32 numLayers;
    Mtl* material;
};

// The materials that stand in the actor file, with an index for the question of mesh export.
class MaterialTable {
  public:
    MaterialTable() {}

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

  private:
    MaterialTable(const MaterialTable&);
    MaterialTable& operator=(const MaterialTable&);

    Plinth::Array<MaterialTableEntry> entries;
    // Numbers in the file, by list index, and by both indices as a pair.
    Plinth::KeyIndex lastOfList;
    Plinth::KeyIndex lastOfPair;
};

#endif
