// Exporters.
#ifndef HOST_SDK_INCLUDE_IMPEXP_H
#define HOST_SDK_INCLUDE_IMPEXP_H

#include <maxheap.h>
#include <maxtypes.h>
#include <windows.h>

class ExpInterface;
class Interface;

// Results of DoExport.
#define IMPEXP_FAIL 0
#define IMPEXP_SUCCESS 1
#define IMPEXP_CANCEL 2

// Options of DoExport: the selection only.
#define SCENE_EXPORT_SELECTED (1 << 0)

// Made by its ClassDesc for one export and deleted by the host afterwards. Texts belong to the
// exporter and are valid until its next answer.
class SceneExport : public MaxHeapOperators {
  public:
    virtual ~SceneExport() {}

    virtual int ExtCount() = 0;
    virtual const MCHAR* Ext(int n) = 0;  // without the dot
    virtual const MCHAR* LongDesc() = 0;
    virtual const MCHAR* ShortDesc() = 0;
    virtual const MCHAR* AuthorName() = 0;
    virtual const MCHAR* CopyrightMessage() = 0;
    virtual const MCHAR* OtherMessage1() = 0;
    virtual const MCHAR* OtherMessage2() = 0;
    virtual unsigned int Version() = 0;  // times 100
    virtual void ShowAbout(HWND hWnd) = 0;
    // `name` is the full path of the file to write; `ei` is null in this host. Returns IMPEXP_...
    virtual int DoExport(const MCHAR* name, ExpInterface* ei, Interface* i,
                         BOOL suppressPrompts = FALSE, DWORD options = 0) = 0;
    // Whether the exporter honours these options for its extension `ext`.
    virtual BOOL SupportsOptions(int ext, DWORD options) {
        (void)ext;
        (void)options;
        return FALSE;
    }
};

#endif  // HOST_SDK_INCLUDE_IMPEXP_H
