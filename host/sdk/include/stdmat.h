// The standard material and its bitmap maps.
#ifndef HOST_SDK_INCLUDE_STDMAT_H
#define HOST_SDK_INCLUDE_STDMAT_H

#include <coreexp.h>
#include <imtl.h>

#define NTEXMAPS 12  // slots that every standard material has at least

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
    // `id` is the map's slot.
    virtual BOOL MapEnabled(int id) = 0;
    virtual float GetTexmapAmt(int id, TimeValue t) = 0;

  protected:
    virtual ~StdMat() {}
};

// Angles are radians.
class StdUVGen : public UVGen {
  public:
    virtual float GetUOffs(TimeValue t) = 0;
    virtual float GetVOffs(TimeValue t) = 0;
    virtual float GetUScl(TimeValue t) = 0;  // tiling
    virtual float GetVScl(TimeValue t) = 0;
    virtual float GetWAng(TimeValue t) = 0;

  protected:
    virtual ~StdUVGen() {}
};

// A Texmap whose class id is (BMTEX_CLASS_ID, 0).
class BitmapTex : public Texmap {
  public:
    virtual MCHAR* GetMapName() = 0;  // the file's path; not to be changed
    virtual StdUVGen* GetUVGen() = 0;

  protected:
    virtual ~BitmapTex() {}
};

// A new standard material; the caller deletes it with DeleteMe(). Ambient and diffuse are 0.588
// grey, specular 0.9.
CoreExport StdMat* NewDefaultStdMat();

#endif  // HOST_SDK_INCLUDE_STDMAT_H
