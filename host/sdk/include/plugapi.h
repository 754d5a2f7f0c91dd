// A plug-in's description of itself: version, super class ids, class ids, class descriptor.
#ifndef HOST_SDK_INCLUDE_PLUGAPI_H
#define HOST_SDK_INCLUDE_PLUGAPI_H

#include <maxtypes.h>
#include <windows.h>

// ---------------------------------------------------------------- version

#define MAX_RELEASE 14000
#define MAX_API_NUM 38
#define MAX_SDK_REV 0

// The result of LibVersion(): 0x36B02600.
#define VERSION_3DSMAX ((MAX_RELEASE << 16) + (MAX_API_NUM << 8) + MAX_SDK_REV)

// ---------------------------------------------------------------- super class ids

#define BASENODE_CLASS_ID 0x000001
#define GEN_DERIVOB_CLASS_ID 0x000002
#define DERIVOB_CLASS_ID 0x000003
#define PARAMETER_BLOCK2_CLASS_ID 0x000082
#define GEOMOBJECT_CLASS_ID 0x000010
#define SHAPE_CLASS_ID 0x000040
#define HELPER_CLASS_ID 0x000050
#define REF_MAKER_CLASS_ID 0x000100
#define REF_TARGET_CLASS_ID 0x000200
#define OSM_CLASS_ID 0x000810
#define SCENE_EXPORT_CLASS_ID 0x000A20
#define MATERIAL_CLASS_ID 0x000C00
#define TEXMAP_CLASS_ID 0x000C10
#define CTRL_FLOAT_CLASS_ID 0x009003
#define CTRL_MATRIX3_CLASS_ID 0x009008
#define CTRL_POSITION_CLASS_ID 0x00900B
#define CTRL_ROTATION_CLASS_ID 0x00900C
#define CTRL_SCALE_CLASS_ID 0x00900D

// ---------------------------------------------------------------- class ids
// The first word alone, the second one being 0.

#define TRIOBJ_CLASS_ID 0x0009
#define DUMMY_CLASS_ID 0x876234
#define PRS_CONTROL_CLASS_ID 0x2005
#define HYBRIDINTERP_FLOAT_CLASS_ID 0x2007
#define HYBRIDINTERP_SCALE_CLASS_ID 0x2010
#define EULER_CONTROL_CLASS_ID 0x2012
#define FLOATLIST_CONTROL_CLASS_ID 0x4b4b1000
#define DMTL_CLASS_ID 0x0002
#define MULTI_CLASS_ID 0x0200
#define MIX_CLASS_ID 0x0230
#define BMTEX_CLASS_ID 0x0240

// ---------------------------------------------------------------- class descriptor

// Describes one class of a plug-in and makes its objects; the plug-in keeps it alive as long as it
// is loaded.
class ClassDesc {
  public:
    virtual ~ClassDesc() {}

    virtual int IsPublic() = 0;  // nonzero: listed for the user
    // A new object of the class, as a pointer to the super class' interface. The caller owns it.
    virtual void* Create(BOOL loading = FALSE) = 0;
    virtual const MCHAR* ClassName() = 0;
    virtual SClass_ID SuperClassID() = 0;
    virtual Class_ID ClassID() = 0;
    virtual const MCHAR* Category() = 0;
};

#endif  // HOST_SDK_INCLUDE_PLUGAPI_H
