// How 3ds Max learns of the exporter and makes one.
#ifndef PLUGIN_KTA_EXP_CLASS_DESC_H
#define PLUGIN_KTA_EXP_CLASS_DESC_H

#include <max.h>
#include <plugin.h>

class KTAExpClassDesc : public ClassDesc {
  public:
    virtual int IsPublic();
    virtual void* Create(BOOL loading = FALSE);  // a new KTAExp; the caller deletes it
    virtual const MCHAR* ClassName();
    virtual SClass_ID SuperClassID();
    virtual Class_ID ClassID();
    virtual const MCHAR* Category();
};

// The module's one descriptor.
ClassDesc* GetKTAExpClassDesc();

#endif
