// IK chains.
#ifndef HOST_SDK_INCLUDE_IIKSYS_H
#define HOST_SDK_INCLUDE_IIKSYS_H

#include <inode.h>

// The interface that GetInterface(I_IKCHAINCONTROL) of a chain's transform controller gives.
class IIKChainControl {
  public:
    // The joints between which the chain runs, the first above the last; null: none.
    virtual INode* StartJoint() const = 0;
    virtual INode* EndJoint() const = 0;

  protected:
    virtual ~IIKChainControl() {}
};

#endif  // HOST_SDK_INCLUDE_IIKSYS_H
