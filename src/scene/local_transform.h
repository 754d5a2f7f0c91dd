// Where a node stands: in the world and relative to its parent.
#ifndef SCENE_LOCAL_TRANSFORM_H
#define SCENE_LOCAL_TRANSFORM_H

#include <max.h>

// A node is geometric when its object, evaluated at time 0, is a geometric object and not the
// target of a camera or light.
bool IsGeometricNode(INode* node);

// The node's world transform at a time in ticks: the object transform (with the object offset) of
// a geometric node, the node transform of any other.
Matrix3 WorldTransform(INode* node, TimeValue time);

// The node's world transform relative to its parent's node transform at the same time, for row
// vectors: world * inverse(parent).
Matrix3 GetLocalTransform(INode* node, TimeValue time);

// Whether the node's transform controller is the biped footprint controller, which is not exported.
bool IsFootprintNode(INode* node);

#endif
