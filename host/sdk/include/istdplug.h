// The built-in controllers' keys.
#ifndef HOST_SDK_INCLUDE_ISTDPLUG_H
#define HOST_SDK_INCLUDE_ISTDPLUG_H

#include <control.h>

// Tangent types.
#define BEZKEY_SMOOTH 0
#define BEZKEY_LINEAR 1
#define BEZKEY_STEP 2
#define BEZKEY_FAST 3
#define BEZKEY_SLOW 4
#define BEZKEY_USER 5
#define BEZKEY_FLAT 6
#define BEZKEY_NUMTYPES 7

// Where a key's flags hold them: three bits each.
#define BEZKEY_TYPEMASK 7
#define BEZKEY_INTYPESHIFT 7
#define BEZKEY_OUTTYPESHIFT 10

#define GetInTanType(flags) (((flags) >> BEZKEY_INTYPESHIFT) & BEZKEY_TYPEMASK)
#define GetOutTanType(flags) (((flags) >> BEZKEY_OUTTYPESHIFT) & BEZKEY_TYPEMASK)

class IKey {
  public:
    TimeValue time;
    DWORD flags;

    IKey() : time(0), flags(0) {}
};

// Tangents are in value per tick, the in-tangent pointing back in time; lengths are parts of the
// way to the neighbouring key.
class IBezFloatKey : public IKey {
  public:
    float intan, outtan;
    float val;
    float inLength, outLength;

    IBezFloatKey() : intan(0), outtan(0), val(0), inLength(0), outLength(0) {}
};

class IBezScaleKey : public IKey {
  public:
    Point3 intan, outtan;
    ScaleValue val;
    Point3 inLength, outLength;
};

// See GetKeyControlInterface.
class IKeyControl {
  public:
    virtual int GetNumKeys() = 0;
    // Fills the key of position `i`; `key` must be of the controller's kind (IBezFloatKey or
    // IBezScaleKey here). A position that does not exist leaves it unchanged.
    virtual void GetKey(int i, IKey* key) = 0;

  protected:
    ~IKeyControl() {}
};

#endif  // HOST_SDK_INCLUDE_ISTDPLUG_H
