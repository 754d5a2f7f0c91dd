// The base objects of nodes.
#pragma once

#include <object.h>

#include <memory>

#include "host/scene/scene.h"

namespace maxhost {

// Holds an object of the scene, whose SDK class hides its destructor.
class SceneObject {
  public:
    virtual ~SceneObject() = default;
    virtual Object* Get() = 0;
    // Empties the object's mesh, if it has one.
    virtual void ReleaseMesh() {}
};

// Null stands for a dummy helper. The description must outlive the object.
std::unique_ptr<SceneObject> MakeObject(const scene::Object* description);

}  // namespace maxhost
