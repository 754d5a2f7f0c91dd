#include "scene/node_walk.h"

NodeWalk::NodeWalk(INode* walkTop) : top(walkTop) {
}

INode* NodeWalk::Next() {
    if (top != NULL) {
        INode* first = top;
        top = NULL;
        return Enter(first);
    }
    while (levels.Count() > 0) {
        Level& level = levels[levels.Count() - 1];
        if (level.nextChild < level.node->NumberOfChildren()) {
            return Enter(level.node->GetChildNode(level.nextChild++));
        }
        levels.Remove(levels.Count() - 1);
    }
    return NULL;
}

INode* NodeWalk::Enter(INode* node) {
    const Level level = {node, 0};
    levels.AddAmortized(level);
    return node;
}
