// The Physique modifier, for exporters. What is asked for here is given back: every vertex to its
// context, the context to the export interface, and that to the modifier with ReleaseInterface.
#ifndef HOST_SDK_INCLUDE_CS_PHYEXP_H
#define HOST_SDK_INCLUDE_CS_PHYEXP_H

#include <maxtypes.h>
#include <windows.h>

class INode;

#define PHYSIQUE_CLASS_ID_A 0x100
#define PHYSIQUE_CLASS_ID_B 0

// Id for Modifier::GetInterface, which gives an IPhysiqueExport.
#define I_PHYINTERFACE 0x00100100

// Bits of a vertex's type.
#define RIGID_TYPE 1
#define BLENDED_TYPE 4

#define RIGID_NON_BLENDED_TYPE RIGID_TYPE
#define RIGID_BLENDED_TYPE (RIGID_TYPE | BLENDED_TYPE)

// A vertex; its type tells which of the classes below it is.
class IPhyVertexExport {
  public:
    virtual ~IPhyVertexExport() {}

    virtual int GetVertexType() = 0;
};

// RIGID_NON_BLENDED_TYPE: follows one node.
class IPhyRigidVertex : public IPhyVertexExport {
  public:
    virtual INode* GetNode() = 0;
};

// RIGID_BLENDED_TYPE: follows several. Outside 0 to NumberNodes - 1 there are null and 0.
class IPhyBlendedRigidVertex : public IPhyVertexExport {
  public:
    virtual int GetNumberNodes() = 0;
    virtual INode* GetNode(int i) = 0;
    virtual float GetWeight(int i) = 0;
};

// The vertices of a node.
class IPhyContextExport {
  public:
    virtual ~IPhyContextExport() {}

    // Until it is called with TRUE, vertices that are not rigid have no interface.
    virtual void ConvertToRigid(BOOL convert = TRUE) = 0;
    // Once it is called with FALSE, converted vertices follow the node of their greatest weight.
    virtual void AllowBlending(BOOL allow = TRUE) = 0;

    virtual IPhyVertexExport* GetVertexInterface(int i) = 0;  // null: the vertex has none
    virtual void ReleaseVertexInterface(IPhyVertexExport* vertex) = 0;
};

class IPhysiqueExport {
  public:
    virtual ~IPhysiqueExport() {}

    // Null for a node that the modifier does not move.
    virtual IPhyContextExport* GetContextInterface(INode* node) = 0;
    virtual void ReleaseContextInterface(IPhyContextExport* context) = 0;
};

#endif  // HOST_SDK_INCLUDE_CS_PHYEXP_H
