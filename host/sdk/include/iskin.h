// The Skin modifier: which bones move the points of a node, and by how much.
#ifndef HOST_SDK_INCLUDE_ISKIN_H
#define HOST_SDK_INCLUDE_ISKIN_H

#include <maxtypes.h>
#include <windows.h>

class INode;

// Id for Modifier::GetInterface, which gives an ISkin.
#define I_SKIN 0x00010000

#define SKIN_CLASSID Class_ID(9815843, 87654)

// A node's points and their weights. What does not exist has no bones, bone -1 and weight 0.
class ISkinContextData {
  public:
    virtual ~ISkinContextData() {}

    virtual int GetNumPoints() = 0;
    virtual int GetNumAssignedBones(int vertexIdx) = 0;
    // For ISkin::GetBone.
    virtual int GetAssignedBone(int vertexIdx, int boneIdx) = 0;
    virtual float GetBoneWeight(int vertexIdx, int boneIdx) = 0;
};

// Lives as long as the modifier, and so do its contexts.
class ISkin {
  public:
    virtual ~ISkin() {}

    virtual INode* GetBone(int idx) = 0;  // null where there is none
    // Null for a node that the modifier does not skin.
    virtual ISkinContextData* GetContextInterface(INode* skinNode) = 0;
};

#endif  // HOST_SDK_INCLUDE_ISKIN_H
