// A node's object as a triangle mesh.
#ifndef SCENE_TRIANGLE_MESH_H
#define SCENE_TRIANGLE_MESH_H

#include <max.h>

// Evaluates the node's object at time 0 and converts it; what the conversion made anew is deleted
// with this object.
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
