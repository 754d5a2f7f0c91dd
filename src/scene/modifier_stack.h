// Looks for a modifier on a node's stack.
#ifndef SCENE_MODIFIER_STACK_H
#define SCENE_MODIFIER_STACK_H

#include <max.h>
#include <modstack.h>

struct ModifierLookup {
    Modifier* modifier;  // null: none
    bool otherAbove;     // an enabled modifier of another class stands above it
};

// The topmost enabled modifier of a class, through all derived objects from the node's object
// reference down. Disabled modifiers are passed over.
ModifierLookup FindModifier(INode* node, const Class_ID& classId);

// The classes of 3ds Max's Morpher, Physique and Skin modifiers.
extern const Class_ID kMorpherModifierClassId;
extern const Class_ID kPhysiqueModifierClassId;
extern const Class_ID kSkinModifierClassId;

#endif
