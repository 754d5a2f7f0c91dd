// The built-in controllers' keys, and list controllers.
#ifndef HOST_SDK_INCLUDE_ISTDPLUG_H
#define HOST_SDK_INCLUDE_ISTDPLUG_H

#include <control.h>
#include <ifnpub.h>

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

// A controller that sums the weighted values of others.
#define LIST_CONTROLLER_INTERFACE Interface_ID(0x444e7687, 0x722e6e36)
#define GetIListControlInterface(cd) ((IListControl*)(cd)->GetInterface(LIST_CONTROLLER_INTERFACE))

class IListControl : public Control, public FPMixinInterface {
  public:
    virtual int GetListCount() = 0;
    // Entries count from 0; null, and weight 0, for one that does not exist.
    virtual Control* GetSubCtrl(int i) const = 0;
    virtual float GetSubCtrlWeight(int i, TimeValue t) const = 0;

  protected:
    virtual ~IListControl() {}
};

#endif  // HOST_SDK_INCLUDE_ISTDPLUG_H
