// The host's interface: selection, scene root, progress bar, directories, time settings.
#ifndef HOST_SDK_INCLUDE_MAXAPI_H
#define HOST_SDK_INCLUDE_MAXAPI_H

#include <coreexp.h>
#include <interval.h>
#include <maxtypes.h>
#include <windows.h>

class INode;

// For Interface::GetDir: the plug-ins' configuration directory.
#define APP_PLUGCFG_DIR 9

// There is one, the host's; it lives as long as the process.
class Interface {
  public:
    virtual int GetSelNodeCount() = 0;
    virtual INode* GetSelNode(int i) = 0;  // in order of selection; null outside
    virtual INode* GetRootNode() = 0;      // never null

    virtual HWND GetMAXHWnd() = 0;  // null: this host has no window

    // Nonzero: the bar is shown. `fn` is not called. Every start needs its end.
    virtual BOOL ProgressStart(MCHAR* title, BOOL dispBar, LPTHREAD_START_ROUTINE fn,
                               LPVOID arg) = 0;
    virtual void ProgressUpdate(int pct, BOOL showPct = TRUE, MCHAR* title = NULL) = 0;
    virtual void ProgressEnd() = 0;
    virtual BOOL GetCancel() = 0;

    virtual Interval GetAnimRange() = 0;  // in ticks

    // Without a separator at the end; "" where none is set, never null.
    virtual const MCHAR* GetDir(int which) = 0;

    // The directories that plug-ins are looked for in, in order; "" outside.
    virtual int GetPlugInEntryCount() = 0;
    virtual const MCHAR* GetPlugInDir(int i) = 0;

  protected:
    ~Interface() {}
};

CoreExport Interface* GetCOREInterface();

CoreExport int GetFrameRate();  // frames a second
CoreExport int GetTicksPerFrame();

#endif  // HOST_SDK_INCLUDE_MAXAPI_H
