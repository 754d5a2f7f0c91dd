// The object that holds a triangle mesh.
#ifndef HOST_SDK_INCLUDE_TRIOBJ_H
#define HOST_SDK_INCLUDE_TRIOBJ_H

#include <mesh.h>
#include <object.h>

extern CoreExport Class_ID triObjectClassID;

class CoreExport TriObject : public GeomObject {
  public:
    Mesh mesh;  // valid as long as the object

    Mesh& GetMesh() { return mesh; }

    Class_ID ClassID();
    int CanConvertToType(Class_ID type);
    Object* ConvertToType(TimeValue t, Class_ID type);
    int NumPoints();

  protected:
    virtual ~TriObject();
};

#endif  // HOST_SDK_INCLUDE_TRIOBJ_H
