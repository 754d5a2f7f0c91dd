// Joint parameters of the interactive and applied IK.
#ifndef HOST_SDK_INCLUDE_INTERPIK_H
#define HOST_SDK_INCLUDE_INTERPIK_H

#include <animtbl.h>

#define PROPID_JOINTPARAMS (PROPID_USER + 2)

// Flags of joint parameters. The last two tell their kind; the sign of JNT_POS is the SDK's.
#define JNT_XACTIVE (1 << 0)
#define JNT_YACTIVE (1 << 1)
#define JNT_ZACTIVE (1 << 2)
#define JNT_XLIMITED (1 << 3)
#define JNT_YLIMITED (1 << 4)
#define JNT_ZLIMITED (1 << 5)
#define JNT_ROT (1 << 30)
#define JNT_POS (1 << 31)

// A property of a position or rotation controller.
class JointParams : public AnimProperty {
  public:
    // Of `dofs` numbers each, one a degree of freedom; rotational ones in radians.
    float *min, *max;
    float scale;  // of the display alone
    DWORD flags;
    int dofs;

    JointParams(DWORD type = static_cast<DWORD>(JNT_POS), int d = 3, float s = 1.0f)
        : min(NULL), max(NULL), scale(s), flags(type), dofs(d) {}

    // Whether nothing differs from the values that every controller has.
    virtual BOOL IsDefault() = 0;
};

#endif  // HOST_SDK_INCLUDE_INTERPIK_H
