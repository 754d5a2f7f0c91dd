// Nodes of the scene.
#ifndef HOST_SDK_INCLUDE_INODE_H
#define HOST_SDK_INCLUDE_INODE_H

#include <control.h>
#include <imtl.h>
#include <interval.h>
#include <matrix3.h>
#include <object.h>
#include <ref.h>
#include <strclass.h>

class INode : public ReferenceTarget {
  public:
    SClass_ID SuperClassID() { return BASENODE_CLASS_ID; }

    virtual MCHAR* GetName() = 0;  // the node's own text

    virtual INode* GetParentNode() = 0;  // the root for a top-level node; null for the root
    virtual int NumberOfChildren() = 0;
    virtual INode* GetChildNode(int i) = 0;

    virtual int Selected() = 0;
    virtual int Renderable() = 0;
    // Whether the node is hidden; no category of nodes is ever hidden as such, whatever `hflags`.
    virtual int IsHidden(DWORD hflags = 0, BOOL forRenderer = FALSE) = 0;

    virtual DWORD GetWireColor() = 0;  // COLORREF
    virtual Mtl* GetMtl() = 0;         // null: the wire colour shades
    virtual void GetUserPropBuffer(MSTR& buf) = 0;

    // Transforms to world space at `t`; a passed interval is intersected with the range over which
    // the answer stays the same.
    virtual Matrix3 GetNodeTM(TimeValue t, Interval* valid = NULL) = 0;    // of the pivot
    virtual Matrix3 GetObjectTM(TimeValue t, Interval* valid = NULL) = 0;  // object offset x node
    virtual Matrix3 GetParentTM(TimeValue t) = 0;                          // the parent's GetNodeTM

    virtual Control* GetTMController() = 0;  // null: the node stands at its parent
    // The top of the object's stack: a derived object or the base object; null for the root.
    virtual Object* GetObjectRef() = 0;
    // The stack's result; `obj` is null for the root. Valid until the scene is closed.
    virtual const ObjectState& EvalWorldState(TimeValue t, BOOL evalHidden = TRUE) = 0;

  protected:
    virtual ~INode() {}
};

#endif  // HOST_SDK_INCLUDE_INODE_H
