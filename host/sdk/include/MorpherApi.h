// The Morpher modifier and its channels. Both classes are small values that refer to the modifier,
// which must outlive them.
#ifndef HOST_SDK_INCLUDE_MORPHERAPI_H
#define HOST_SDK_INCLUDE_MORPHERAPI_H

#include <coreexp.h>
#include <object.h>
#include <point3.h>

#define MorpherExport CoreExport
#define MR3_CLASS_ID Class_ID(0x17bb6854, 0xa5cba2a3)

class MorphChannelData;

class MorpherExport MaxMorphChannel {
  public:
    const MCHAR* GetName() const;  // null for a channel that does not exist
    int NumMorphPoints() const;
    // (0, 0, 0) for a point that does not exist.
    Point3 GetMorphPoint(int i) const;

  private:
    friend class MaxMorphModifier;
    explicit MaxMorphChannel(const MorphChannelData* source) : data_(source) {}

    const MorphChannelData* data_;  // null: the channel does not exist
};

class MorpherExport MaxMorphModifier {
  public:
    // Takes any modifier; IsValid() tells whether it is a Morpher.
    explicit MaxMorphModifier(Modifier* modifier) : modifier_(modifier) {}

    bool IsValid() const;
    int NumMorphChannels() const;  // 0 where IsValid() is false
    MaxMorphChannel GetMorphChannel(int i) const;

  private:
    Modifier* modifier_;
};

#endif  // HOST_SDK_INCLUDE_MORPHERAPI_H
