#include "plugin/kta_exp.h"

#include <new>

#include <winutil.h>

#include "plugin/module.h"
#include "resources/resource.h"

KTAExp::KTAExp()
    : exportOptions(DefaultExportOptions()),
      ip(NULL),
      outOfMemoryLine("*** Out of memory: the export is given up ***") {
    if (outOfMemoryLine.Data() == NULL) {
        throw std::bad_alloc();
    }
}

int KTAExp::ExtCount() {
    return 1;
}

const MCHAR* KTAExp::Ext(int) {
    return AnswerString(IDS_EXTENSION);
}

const MCHAR* KTAExp::LongDesc() {
    return AnswerString(IDS_LONGDESC);
}

const MCHAR* KTAExp::ShortDesc() {
    return AnswerString(IDS_SHORTDESC);
}

const MCHAR* KTAExp::AuthorName() {
    return "Kestrel Works";
}

const MCHAR* KTAExp::CopyrightMessage() {
    return AnswerString(IDS_COPYRIGHT);
}

const MCHAR* KTAExp::OtherMessage1() {
    return MAKER_WEB_ADDRESS;
}

const MCHAR* KTAExp::OtherMessage2() {
    return "HDO exporter";
}

unsigned int KTAExp::Version() {
    return 100;
}

void KTAExp::ShowAbout(HWND parent) {
    try {
        DialogBoxParamA(g_moduleInstance, MAKEINTRESOURCEA(IDD_ABOUT), parent, AboutDialogProcedure,
                        0);
    } catch (...) {
        // There is no box then, and nobody to tell.
    }
}

BOOL KTAExp::SupportsOptions(int, DWORD options) {
    return options == SCENE_EXPORT_SELECTED ? TRUE : FALSE;
}

// Of the calls here only that of 3ds Max can throw.
INT_PTR CALLBACK AboutDialogProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM) {
    switch (message) {
        case WM_INITDIALOG:
            try {
                CenterWindow(dialog, GetParent(dialog));
            } catch (...) {
                EndDialog(dialog, 1);
            }
            return TRUE;
        case WM_COMMAND:
            if (LOWORD(wParam) == IDC_BACK) {
                EndDialog(dialog, 1);
            }
            return TRUE;
        default:
            return FALSE;
    }
}
