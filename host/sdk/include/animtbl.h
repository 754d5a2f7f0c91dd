// The base of all that stands in a scene.
#ifndef HOST_SDK_INCLUDE_ANIMTBL_H
#define HOST_SDK_INCLUDE_ANIMTBL_H

#include <coreexp.h>
#include <maxtypes.h>
#include <strclass.h>
#include <windows.h>

class BaseInterface;
class IParamBlock2;

// A flag of modifiers; bits 5 to 11 mean something else for every kind of object.
#define A_MOD_DISABLED (1 << 5)

// Ids for Animatable::GetInterface.
#define I_IKCHAINCONTROL 0x00001030
#define I_KEYCONTROL 0x00001100

// Ids for Animatable::GetProperty from here on.
#define PROPID_USER 0x0000FFFF

// The keys of a controller; null where it exposes none.
#define GetKeyControlInterface(anim) ((IKeyControl*)(anim)->GetInterface(I_KEYCONTROL))

// A piece of data attached to an object under an id.
class AnimProperty {
  public:
    virtual ~AnimProperty() {}
};

class Animatable {
  public:
    virtual SClass_ID SuperClassID() { return 0; }
    virtual Class_ID ClassID() { return Class_ID(0, 0); }  // unique within the super class only

    // Destroys the object if it is the caller's: one that NewDefaultStdMat made, or that a
    // conversion made anew. Objects of the scene are the host's and stay.
    virtual void DeleteThis() {}

    // An interface that goes beyond the class, null where the object has none of that id. It lives
    // as long as the object.
    virtual void* GetInterface(ULONG) { return NULL; }
    // Gives back what GetInterface gave, where the interface asks for that.
    virtual void ReleaseInterface(ULONG, void*) {}
    // The same by the other kind of id.
    virtual BaseInterface* GetInterface(Interface_ID) { return NULL; }

    // A property that has been attached to the object, null where there is none of that id. It
    // lives as long as the object.
    virtual void* GetProperty(ULONG) { return NULL; }

    virtual IParamBlock2* GetParamBlock(int) { return NULL; }

    void SetAFlag(DWORD mask) { aflag |= mask; }
    int TestAFlag(DWORD mask) { return (aflag & mask) != 0; }

  protected:
    Animatable() : aflag(0) {}
    virtual ~Animatable() {}

    DWORD aflag;
};

#endif  // HOST_SDK_INCLUDE_ANIMTBL_H
