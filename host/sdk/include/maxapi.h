// The host's interface: selection, scene root, progress bar, directories, time settings.
#ifndef HOST_SDK_INCLUDE_MAXAPI_H
#define HOST_SDK_INCLUDE_MAXAPI_H

#include <coreexp.h>
#include <interval.h>
#include <maxtypes.h>
#include <windows.h>

class INode;

// Directories for Interface::GetDir.
#define APP_FONT_DIR 0
#define APP_SCENE_DIR 1
#define APP_IMPORT_DIR 2
#define APP_EXPORT_DIR 3
#define APP_HELP_DIR 4
#define APP_EXPRESSION_DIR 5
#define APP_PREVIEW_DIR 6
#define APP_IMAGE_DIR 7
#define APP_SOUND_DIR 8
#define APP_PLUGCFG_DIR 9
#define APP_MAXSTART_DIR 10
#define APP_VPOST_DIR 11
#define APP_DRIVERS_DIR 12
#define APP_AUTOBACK_DIR 13
#define APP_MATLIB_DIR 14
#define APP_SCRIPTS_DIR 15
#define APP_STARTUPSCRIPTS_DIR 16

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

// Frames a second, and ticks a frame. Setting one sets the other to 4800 divided by it (at least
// 1); numbers below 1 are ignored.
CoreExport int GetFrameRate();
CoreExport void SetFrameRate(int rate);
CoreExport int GetTicksPerFrame();
CoreExport void SetTicksPerFrame(int ticks);

#endif  // HOST_SDK_INCLUDE_MAXAPI_H
