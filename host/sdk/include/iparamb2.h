// Parameter blocks.
#ifndef HOST_SDK_INCLUDE_IPARAMB2_H
#define HOST_SDK_INCLUDE_IPARAMB2_H

#include <interval.h>
#include <ref.h>

class IParamBlock2 : public ReferenceTarget {
  public:
    SClass_ID SuperClassID() { return PARAMETER_BLOCK2_CLASS_ID; }

    // The parameter `id` (its permanent id, not an index) at `t`; `ivalid` is intersected with the
    // range over which it stays the same. FALSE, with `v` and `ivalid` unchanged, for a parameter
    // that does not exist.
    virtual BOOL GetValue(ParamID id, TimeValue t, float& v, Interval& ivalid,
                          int tabIndex = 0) = 0;

  protected:
    virtual ~IParamBlock2() {}
};

#endif  // HOST_SDK_INCLUDE_IPARAMB2_H
