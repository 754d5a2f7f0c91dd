// The standard material.
#ifndef HOST_SDK_INCLUDE_STDMAT_H
#define HOST_SDK_INCLUDE_STDMAT_H

#include <coreexp.h>
#include <imtl.h>

#define TRANSP_SUBTRACTIVE 0
#define TRANSP_ADDITIVE 1
#define TRANSP_FILTER 2

// A Mtl whose class id is (DMTL_CLASS_ID, 0). TimeValue being int, the argument of a colour getter
// is a time here and a sub-material's number for a Mtl*.
class StdMat : public Mtl {
  public:
    virtual void SetDiffuse(Color c, TimeValue t) = 0;  // leaves the ambient colour

    virtual Color GetAmbient(TimeValue t) = 0;
    virtual Color GetDiffuse(TimeValue t) = 0;
    virtual Color GetSpecular(TimeValue t) = 0;
    virtual float GetShininess(TimeValue t) = 0;
    virtual float GetShinStr(TimeValue t) = 0;
    virtual BOOL GetTwoSided() = 0;
    virtual BOOL GetWire() = 0;
    virtual int GetTransparencyType() = 0;  // TRANSP_...

  protected:
    virtual ~StdMat() {}
};

// A new standard material; the caller deletes it with DeleteMe(). Ambient and diffuse are 0.588
// grey, specular 0.9.
CoreExport StdMat* NewDefaultStdMat();

#endif  // HOST_SDK_INCLUDE_STDMAT_H
