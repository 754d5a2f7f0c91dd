// Questions to a node: where it stands, its modifiers, its triangle mesh, and the nodes below it.
#ifndef SCENE_NODE_H
#define SCENE_NODE_H

#include <max.h>
#include <modstack.h>

#include "core/array.h"

// Visits a node and all that hangs below it, every node before its children and children in their
// order. Needs no stack that grows with the depth of the scene.
class NodeWalk {
  public:
    explicit NodeWalk(INode* walkTop) : top(walkTop) {}

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

// A node is geometric when its object, evaluated at time 0, is a geometric object and not the
// target of a camera or light.
bool IsGeometricNode(INode* node);

// Whether the node's transform controller is the biped footprint controller, which is not exported.
bool IsFootprintNode(INode* node);

// Where a node stands at a time in ticks. Whether it is geometric is asked once, when it is made.
class NodePlace {
  public:
    explicit NodePlace(INode* placed) : node(placed), isGeometric(IsGeometricNode(placed)) {}

    bool IsGeometric() const { return isGeometric; }

    // The object transform (with the object offset) of a geometric node, the node transform of any
    // other.
    Matrix3 World(TimeValue time) const;
    // The world transform relative to the parent's node transform at the same time, for row
    // vectors: world * inverse(parent).
    Matrix3 Local(TimeValue time) const { return ToLocal(World(time), time); }
    // The same of a world transform that is known.
    Matrix3 ToLocal(const Matrix3& world, TimeValue time) const;

  private:
    INode* node;
    bool isGeometric;
};

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

// Evaluates the node's object at time 0 and converts it to a triangle mesh; what the conversion
// made anew is deleted with this object.
class TriangleMesh {
  public:
    explicit TriangleMesh(INode* node);
    ~TriangleMesh();

    // Null where there is no object or it does not convert.
    Mesh* Get() const;

  private:
    TriangleMesh(const TriangleMesh&);
    TriangleMesh& operator=(const TriangleMesh&);

    TriObject* converted;  // null: none
    bool isNew;
};

#endif
