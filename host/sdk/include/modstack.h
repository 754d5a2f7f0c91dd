// Derived objects: an object with a stack of modifiers upon it.
#ifndef HOST_SDK_INCLUDE_MODSTACK_H
#define HOST_SDK_INCLUDE_MODSTACK_H

#include <object.h>

extern CoreExport Class_ID derivObjClassID;

// An Object whose SuperClassID() is GEN_DERIVOB_CLASS_ID.
class IDerivedObject : public Object {
  public:
    SClass_ID SuperClassID() { return GEN_DERIVOB_CLASS_ID; }

    virtual int NumModifiers() = 0;
    // The next object down, which may be a derived one again.
    virtual Object* GetObjRef() = 0;
    // 0 is the top of the stack: the modifier that is applied last.
    virtual Modifier* GetModifier(int index) = 0;

  protected:
    virtual ~IDerivedObject() {}
};

#endif  // HOST_SDK_INCLUDE_MODSTACK_H
