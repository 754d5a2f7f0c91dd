#include "export/material_table.h"

MaterialTable::MaterialTable() {
}

void MaterialTable::Add(Mtl* material, Plinth::Int32 listIndex, Plinth::Int32 subIndex,
                        Plinth::Int32 number) {
    const MaterialTableEntry entry = {listIndex, subIndex, number - 1, 0, material};
    entries.AddAmortized(entry);
    lastOfList.Set(Plinth::PairKey(listIndex, 0), number);
    lastOfPair.Set(Plinth::PairKey(listIndex, subIndex), number);
}

void MaterialTable::CountLayer() {
    if (entries.Count() > 0) {
        ++entries[entries.Count() - 1].numLayers;
    }
}

Plinth::Int32 MaterialTable::NumberOf(Plinth::Int32 listIndex) const {
    Plinth::Int32 number = 0;
    lastOfList.Find(Plinth::PairKey(listIndex, 0), number);
    return number;
}

Plinth::Int32 MaterialTable::NumberOf(Plinth::Int32 listIndex, Plinth::Int32 subIndex) const {
    Plinth::Int32 number = 0;
    lastOfPair.Find(Plinth::PairKey(listIndex, subIndex), number);
    return number;
}

void MaterialTable::Clear() {
    entries.Clear();
    lastOfList.Clear();
    lastOfPair.Clear();
}
