// Objects of nodes, and modifiers.
#ifndef HOST_SDK_INCLUDE_OBJECT_H
#define HOST_SDK_INCLUDE_OBJECT_H

#include <interval.h>
#include <ref.h>

class IParamArray;
class Object;

// The result of evaluating a modifier stack; `obj` is null where there is no object.
class ObjectState {
  public:
    Object* obj;

    ObjectState() : obj(NULL) {}
    explicit ObjectState(Object* object) : obj(object) {}
};

class BaseObject : public ReferenceTarget {
  public:
    // A block of the older kind. Hides Animatable::GetParamBlock(int): call that one through an
    // Animatable*.
    virtual IParamArray* GetParamBlock() { return NULL; }

  protected:
    virtual ~BaseObject() {}
};

class Object : public BaseObject {
  public:
    // Nonzero: ConvertToType gives an object of that class.
    virtual int CanConvertToType(Class_ID) { return 0; }
    // The object itself when it is of the class; otherwise a new one, which the caller deletes with
    // DeleteMe(); null when it does not convert.
    virtual Object* ConvertToType(TimeValue, Class_ID) { return NULL; }

    // Points of a deformable object.
    virtual int NumPoints() { return 0; }

  protected:
    virtual ~Object() {}
};

class GeomObject : public Object {
  public:
    SClass_ID SuperClassID() { return GEOMOBJECT_CLASS_ID; }

  protected:
    virtual ~GeomObject() {}
};

class Modifier : public BaseObject {
  public:
    SClass_ID SuperClassID() { return OSM_CLASS_ID; }

  protected:
    virtual ~Modifier() {}
};

#endif  // HOST_SDK_INCLUDE_OBJECT_H
