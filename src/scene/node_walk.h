// Visits a node and all that hangs below it, every node before its children and children in their
// order. Needs no stack that grows with the depth of the scene.
#ifndef SCENE_NODE_WALK_H
#define SCENE_NODE_WALK_H

#include <max.h>

#include "core/array.h"

class NodeWalk {
  public:
    explicit NodeWalk(INode* top);

    // The next node; null when all have been visited. The number of a node's children is asked
    // again after each of them.
    INode* Next();

  private:
    struct Level {
        INode* node;
        int nextChild;
    };

    INode* Enter(INode* node);

    INode* top;  // null once visited
    Plinth::Array<Level> levels;
};

#endif
