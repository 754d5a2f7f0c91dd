// Materials and maps.
#ifndef HOST_SDK_INCLUDE_IMTL_H
#define HOST_SDK_INCLUDE_IMTL_H

#include <color.h>
#include <interval.h>
#include <ref.h>
#include <strclass.h>

class Texmap;

// The base of classes that hold maps, in numbered slots.
class ISubMap {
  public:
    virtual int NumSubTexmaps() { return 0; }
    virtual Texmap* GetSubTexmap(int) { return NULL; }  // null: an empty slot

  protected:
    virtual ~ISubMap() {}
};

class MtlBase : public ReferenceTarget, public ISubMap {
  public:
    MSTR& GetName() { return name; }
    void SetName(MSTR s) { name = s; }

    // Brings what the material reports up to `t`; `valid` is intersected with the range over which
    // it stays so.
    virtual void Update(TimeValue t, Interval& valid) = 0;

  protected:
    virtual ~MtlBase() {}

  private:
    MSTR name;
};

class Texmap : public MtlBase {
  public:
    SClass_ID SuperClassID() { return TEXMAP_CLASS_ID; }

  protected:
    virtual ~Texmap() {}
};

// Places a map's picture on a surface.
class UVGen : public MtlBase {
  protected:
    virtual ~UVGen() {}
};

// A material's answers are valid after Update(). All values are 0 to 1.
class Mtl : public MtlBase {
  public:
    SClass_ID SuperClassID() { return MATERIAL_CLASS_ID; }

    virtual Color GetAmbient(int mtlNum = 0, BOOL backFace = FALSE) = 0;
    virtual Color GetDiffuse(int mtlNum = 0, BOOL backFace = FALSE) = 0;
    virtual Color GetSpecular(int mtlNum = 0, BOOL backFace = FALSE) = 0;
    virtual float GetShininess(int mtlNum = 0, BOOL backFace = FALSE) = 0;
    virtual float GetShinStr(int mtlNum = 0, BOOL backFace = FALSE) = 0;
    virtual float GetXParency(int mtlNum = 0, BOOL backFace = FALSE) = 0;
    virtual Color GetSelfIllumColor(int mtlNum = 0, BOOL backFace = FALSE) = 0;

    virtual int NumSubMtls() { return 0; }
    virtual Mtl* GetSubMtl(int) { return NULL; }  // null: an empty slot

  protected:
    virtual ~Mtl() {}
};

#endif  // HOST_SDK_INCLUDE_IMTL_H
