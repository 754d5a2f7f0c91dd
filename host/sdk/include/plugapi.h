// What a plug-in tells the host of itself: version, super class ids, class ids, class descriptor.
#ifndef HOST_SDK_INCLUDE_PLUGAPI_H
#define HOST_SDK_INCLUDE_PLUGAPI_H

#include <maxtypes.h>
#include <windows.h>

// ---------------------------------------------------------------- version

#define MAX_RELEASE_R13 13000
#define MAX_RELEASE_R14_ALPHA 13900
#define MAX_RELEASE_R14 14000
#define MAX_RELEASE MAX_RELEASE_R14

#define MAX_API_NUM_R130 35
#define MAX_API_NUM_R140_ALPHA1 36
#define MAX_API_NUM_R140_BETA2 37
#define MAX_API_NUM_R140 38
#define MAX_API_NUM MAX_API_NUM_R140

#define MAX_SDK_REV 0

// What LibVersion() returns: 0x36B02600.
#define VERSION_3DSMAX ((MAX_RELEASE << 16) + (MAX_API_NUM << 8) + MAX_SDK_REV)

// ---------------------------------------------------------------- super class ids

#define BASENODE_CLASS_ID 0x000001
#define GEN_DERIVOB_CLASS_ID 0x000002
#define DERIVOB_CLASS_ID 0x000003
#define WSM_DERIVOB_CLASS_ID 0x000004
#define PARAMETER_BLOCK_CLASS_ID 0x000008
#define PARAMETER_BLOCK2_CLASS_ID 0x000082
#define GEOMOBJECT_CLASS_ID 0x000010
#define CAMERA_CLASS_ID 0x000020
#define LIGHT_CLASS_ID 0x000030
#define SHAPE_CLASS_ID 0x000040
#define HELPER_CLASS_ID 0x000050
#define SYSTEM_CLASS_ID 0x000060
#define REF_MAKER_CLASS_ID 0x000100
#define REF_TARGET_CLASS_ID 0x000200
#define OSM_CLASS_ID 0x000810
#define WSM_CLASS_ID 0x000820
#define WSM_OBJECT_CLASS_ID 0x000830
#define SCENE_IMPORT_CLASS_ID 0x000A10
#define SCENE_EXPORT_CLASS_ID 0x000A20
#define MATERIAL_CLASS_ID 0x000C00
#define TEXMAP_CLASS_ID 0x000C10
#define CTRL_FLOAT_CLASS_ID 0x009003
#define CTRL_POINT3_CLASS_ID 0x009005
#define CTRL_MATRIX3_CLASS_ID 0x009008
#define CTRL_POSITION_CLASS_ID 0x00900B
#define CTRL_ROTATION_CLASS_ID 0x00900C
#define CTRL_SCALE_CLASS_ID 0x00900D

// ---------------------------------------------------------------- class ids
// The first word alone, the second one being 0, except where a Class_ID stands.

// Geometric objects.
#define TRIOBJ_CLASS_ID 0x0009
#define BOXOBJ_CLASS_ID 0x0010
#define SPHERE_CLASS_ID 0x0011
#define CYLINDER_CLASS_ID 0x0012
#define TARGET_CLASS_ID 0x1020
#define EDITTRIOBJ_CLASS_ID 0xe44f10b3
#define BONE_OBJ_CLASSID Class_ID(0x28bf6e8d, 0x2ecca840)

// Helpers.
#define DUMMY_CLASS_ID 0x876234
#define BONE_CLASS_ID 0x8a63c0
#define GRIDHELP_CLASS_ID 0x2010
#define TAPEHELP_CLASS_ID 0x2011
#define POINTHELP_CLASS_ID 0x2013
#define PROTHELP_CLASS_ID 0x2014

// Controllers.
#define PRS_CONTROL_CLASS_ID 0x2005
#define HYBRIDINTERP_FLOAT_CLASS_ID 0x2007
#define HYBRIDINTERP_SCALE_CLASS_ID 0x2010
#define EULER_CONTROL_CLASS_ID 0x2012
#define FLOATLIST_CONTROL_CLASS_ID 0x4b4b1000

// Materials.
#define DMTL_CLASS_ID 0x0002
#define MULTI_CLASS_ID 0x0200

// Maps.
#define MIX_CLASS_ID 0x0230
#define BMTEX_CLASS_ID 0x0240

// ---------------------------------------------------------------- class descriptor

class ActionTable;
class Animatable;
class ILoad;
class INode;
class IObjParam;
class IParamMap2;
class ISave;
class Interface;
class Manipulator;
class ParamBlockDesc2;
class ParamMap2UserDlgProc;
class Rect;
class ReferenceMaker;
class ReferenceTarget;

enum IOResult { IO_OK = 0 };

// Describes one class of a plug-in and makes its objects; the plug-in keeps it alive as long as it
// is loaded. The virtual functions stand in the SDK's order. Those that look up the plug-in's
// resources and its published functions are left out: no such service stands behind them here.
class ClassDesc {
  public:
    virtual ~ClassDesc() {}

    virtual int IsPublic() = 0;  // nonzero: listed for the user
    // A new object of the class, as a pointer to the super class' interface. The caller owns it.
    virtual void* Create(BOOL loading = FALSE) = 0;
    virtual int BeginCreate(Interface*) { return 0; }
    virtual int EndCreate(Interface*) { return 0; }
    virtual const MCHAR* ClassName() = 0;
    virtual SClass_ID SuperClassID() = 0;
    virtual Class_ID ClassID() = 0;
    virtual const MCHAR* Category() = 0;
    virtual BOOL OkToCreate(Interface*) { return TRUE; }

    virtual BOOL HasClassParams() { return FALSE; }
    virtual void EditClassParams(HWND) {}
    virtual void ResetClassParams(BOOL fileReset = FALSE) { (void)fileReset; }

    virtual int NumActionTables() { return 0; }
    virtual ActionTable* GetActionTable(int) { return NULL; }

    virtual BOOL IsManipulator() { return FALSE; }
    virtual BOOL CanManipulate(ReferenceTarget*) { return FALSE; }
    virtual BOOL CanManipulateNode(INode*) { return FALSE; }
    virtual Manipulator* CreateManipulator(ReferenceTarget*, INode*) { return NULL; }
    virtual Manipulator* CreateManipulator(INode*) { return NULL; }

    virtual BOOL NeedsToSave() { return FALSE; }
    virtual IOResult Save(ISave*) { return IO_OK; }
    virtual IOResult Load(ILoad*) { return IO_OK; }

    virtual DWORD InitialRollupPageState() { return 0x7fffffff; }
    virtual const MCHAR* InternalName() { return NULL; }
    virtual HINSTANCE HInstance() { return NULL; }

    virtual int NumParamBlockDescs() { return 0; }
    virtual ParamBlockDesc2* GetParamBlockDesc(int) { return NULL; }
    virtual ParamBlockDesc2* GetParamBlockDescByID(BlockID) { return NULL; }
    virtual void AddParamBlockDesc(ParamBlockDesc2*) {}
    virtual void BeginEditParams(IObjParam*, ReferenceMaker*, ULONG, Animatable*) {}
    virtual void EndEditParams(IObjParam*, ReferenceMaker*, ULONG, Animatable*) {}
    virtual void InvalidateUI(ParamBlockDesc2*) {}
    virtual void MakeAutoParamBlocks(ReferenceMaker*) {}
    virtual int NumParamMaps() { return 0; }
    virtual IParamMap2* GetParamMap(int) { return NULL; }
    virtual IParamMap2* GetParamMap(ParamBlockDesc2*) { return NULL; }
    virtual void SetUserDlgProc(ParamBlockDesc2*, ParamMap2UserDlgProc* proc = NULL) { (void)proc; }
    virtual ParamMap2UserDlgProc* GetUserDlgProc(ParamBlockDesc2*) { return NULL; }

    virtual bool DrawRepresentation(COLORREF, HDC, Rect&) { return false; }
    virtual Class_ID SubClassID() { return Class_ID(); }
    virtual INT_PTR Execute(int, ULONG_PTR arg1 = 0, ULONG_PTR arg2 = 0, ULONG_PTR arg3 = 0) {
        (void)arg1;
        (void)arg2;
        (void)arg3;
        return 0;
    }
};

#endif  // HOST_SDK_INCLUDE_PLUGAPI_H
