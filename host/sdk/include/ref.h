// Scene objects that refer to others, and those that are referred to.
#ifndef HOST_SDK_INCLUDE_REF_H
#define HOST_SDK_INCLUDE_REF_H

#include <animtbl.h>
#include <plugapi.h>

class ReferenceMaker : public Animatable {
  public:
    SClass_ID SuperClassID() { return REF_MAKER_CLASS_ID; }

    // The only way to delete an object; see DeleteThis().
    void DeleteMe() { DeleteThis(); }

  protected:
    virtual ~ReferenceMaker() {}
};

class ReferenceTarget : public ReferenceMaker {
  public:
    SClass_ID SuperClassID() { return REF_TARGET_CLASS_ID; }

  protected:
    virtual ~ReferenceTarget() {}
};

#endif  // HOST_SDK_INCLUDE_REF_H
