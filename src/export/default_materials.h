// The materials that stand in for nodes without one during a pass.
#ifndef EXPORT_DEFAULT_MATERIALS_H
#define EXPORT_DEFAULT_MATERIALS_H

#include <max.h>

#include "core/array.h"
#include "core/pointer_list.h"

class DefaultMaterials {
  public:
    DefaultMaterials();
    ~DefaultMaterials();

    // The material of a node without one; made at the first call for a node. It shows the node's
    // wire colour and is named "Wire Color " and a number, in order of creation from 1.
    Mtl* Get(INode* node);
    // Null when Get has not been called for the node.
    Mtl* Find(INode* node) const;

    // Makes room for the materials of that many nodes.
    void Reserve(Plinth::Int32 count);
    // Destroys all of them.
    void Clear();

  private:
    DefaultMaterials(const DefaultMaterials&);
    DefaultMaterials& operator=(const DefaultMaterials&);

    Plinth::PointerList<INode> nodes;
    Plinth::Array<Mtl*> materials;  // by position in `nodes`
};

#endif
