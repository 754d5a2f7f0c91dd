// The exporter: 3ds Max makes one object of this class for each export, calls DoExport and deletes
// it. What an export does with the scene stands in export/.
#ifndef PLUGIN_KTA_EXP_H
#define PLUGIN_KTA_EXP_H

#include <max.h>

#include <impexp.h>

#include "core/string.h"
#include "export/export_options.h"

class KTAExp : public SceneExport {
  public:
    // Without memory throws std::bad_alloc.
    KTAExp();

    virtual int ExtCount();
    virtual const MCHAR* Ext(int n);
    virtual const MCHAR* LongDesc();
    virtual const MCHAR* ShortDesc();
    virtual const MCHAR* AuthorName();
    virtual const MCHAR* CopyrightMessage();
    virtual const MCHAR* OtherMessage1();
    virtual const MCHAR* OtherMessage2();
    virtual unsigned int Version();
    virtual void ShowAbout(HWND parent);
    // Runs one export. `name` is the file that the user chose; only SCENE_EXPORT_SELECTED of
    // `options` counts. Returns 1 after a completed export and when the user cancels the options
    // dialog; 0 when a Skin modifier is not the last of its stack, a file cannot be created or
    // memory runs out. In the last case one line of the log says so and ends it; the others leave
    // the log open.
    virtual int DoExport(const MCHAR* name, ExpInterface* ei, Interface* i,
                         BOOL suppressPrompts = FALSE, DWORD options = 0);
    virtual BOOL SupportsOptions(int ext, DWORD options);

    ExportOptions& Options() { return exportOptions; }
    // <plug-in configuration directory>\KTAExp2.cfg
    void GetSettingsPath(CStr& path);
    // Replaces as many bytes of the options as the settings file holds; a missing one changes
    // nothing.
    void LoadSettings();
    void SaveSettings();

  private:
    KTAExp(const KTAExp&);
    KTAExp& operator=(const KTAExp&);

    // DoExport without the policy for exceptions.
    int RunExport(const char* name, bool selectedOnly);
    bool RunOptionsDialog();

    ExportOptions exportOptions;
    Interface* ip;  // of the current export
    // Made with the exporter, so that it can be logged where no memory is left.
    const Plinth::String outOfMemoryLine;
};

// The procedures of its two dialogs. No exception leaves them.
//
// The options dialog, dialog 103: shows the exporter's options and takes the user's choices. Its
// creation parameter is the KTAExp whose options it edits. Result 1 with Export, 0 with Cancel,
// which changes no option. Export with a sample rate below 1 is refused with a message box; the
// options that were read before it stay changed then.
INT_PTR CALLBACK OptionsDialogProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
// The About box, dialog 102: result 1, with the dialog's one button.
INT_PTR CALLBACK AboutDialogProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);

#endif
