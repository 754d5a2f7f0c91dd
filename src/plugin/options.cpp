// The options: their settings file, which is the record, raw, and their dialog.
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>

#include <new>

#include <max.h>

#include <custcont.h>
#include <maxapi.h>
#include <winutil.h>

#include "core/format.h"
#include "core/holder.h"
#include "export/export_pass.h"
#include "plugin/kta_exp.h"
#include "plugin/module.h"
#include "resources/resource.h"

void KTAExp::GetSettingsPath(CStr& path) {
    path = ip->GetDir(APP_PLUGCFG_DIR);
    path += PATH_SEPARATOR "KTAExp2.cfg";
}

void KTAExp::LoadSettings() {
    CStr path;
    GetSettingsPath(path);
    Plinth::FileHolder settings(fopen(path.data(), "rb"));
    if (settings.Get() != NULL) {
        // One byte at a time in the C library's eyes: a short file then gives what it holds.
        const size_t read = fread(&exportOptions, 1, sizeof(exportOptions), settings.Get());
        static_cast<void>(read);
    }
}

void KTAExp::SaveSettings() {
    CStr path;
    GetSettingsPath(path);
    Plinth::FileHolder settings(fopen(path.data(), "wb"));
    if (settings.Get() != NULL) {
        fwrite(&exportOptions, sizeof(exportOptions), 1, settings.Get());
        fflush(settings.Get());
    }
}

// ---------------------------------------------------------------- the dialog

namespace {

// The result of a dialog that an exception ended, beside 1 for Export and 0 for Cancel.
enum { kDialogOutOfMemory = 2 };

void SetCheck(HWND dialog, int id, Plinth::UInt8 option) {
    CheckDlgButton(dialog, id, option ? BST_CHECKED : BST_UNCHECKED);
}

Plinth::UInt8 GetCheck(HWND dialog, int id) {
    return IsDlgButtonChecked(dialog, id) == BST_CHECKED ? 1 : 0;
}

void SetNumber(HWND dialog, int id, int number) {
    char text[16];
    Plinth::FormatInto(text, sizeof(text), "%d", number);
    SetDlgItemTextA(dialog, id, text);
}

// As atoi, but a number that does not fit gives the nearest that does on every system.
int GetNumber(HWND dialog, int id) {
    char text[1024];
    text[0] = '\0';
    GetDlgItemTextA(dialog, id, text, sizeof(text));
    const long number = strtol(text, NULL, 10);
    if (number > INT_MAX) {
        return INT_MAX;
    }
    return number < INT_MIN ? INT_MIN : static_cast<int>(number);
}

void EnableThreshold(HWND dialog, BOOL enable) {
    EnableWindow(GetDlgItem(dialog, IDC_THRESHOLD_LABEL), enable);
    EnableWindow(GetDlgItem(dialog, IDC_THRESHOLD_EDIT), enable);
    EnableWindow(GetDlgItem(dialog, IDC_THRESHOLD_SPINNER), enable);
}

void EnableSampleRate(HWND dialog, BOOL enable) {
    EnableWindow(GetDlgItem(dialog, IDC_SAMPLE_RATE_LABEL), enable);
    EnableWindow(GetDlgItem(dialog, IDC_SAMPLE_RATE_UNIT), enable);
    EnableWindow(GetDlgItem(dialog, IDC_SAMPLE_RATE), enable);
}

void SetUpThreshold(HWND dialog, float threshold) {
    ISpinnerControl* spinner = GetISpinner(GetDlgItem(dialog, IDC_THRESHOLD_SPINNER));
    if (spinner != NULL) {
        spinner->LinkToEdit(GetDlgItem(dialog, IDC_THRESHOLD_EDIT), EDITTYPE_FLOAT);
        spinner->SetLimits(0.0f, 0.9999f, TRUE);
        spinner->SetScale(0.0001f);
        spinner->SetValue(threshold, FALSE);
        ReleaseISpinner(spinner);
    }
}

void ReadThreshold(HWND dialog, Plinth::Float32& threshold) {
    ISpinnerControl* spinner = GetISpinner(GetDlgItem(dialog, IDC_THRESHOLD_SPINNER));
    if (spinner != NULL) {
        threshold = spinner->GetFVal();
        ReleaseISpinner(spinner);
    }
}

void ShowOptions(HWND dialog, const ExportOptions& options) {
    SetCheck(dialog, IDC_EXPORT_HIDDEN, options.exportHidden);
    SetCheck(dialog, IDC_NON_RENDERABLE, options.nonRenderable);
    SetCheck(dialog, IDC_MORPHERS, options.morphers);
    SetCheck(dialog, IDC_OPTIMIZE_SKIN, options.optimizeSkin);
    SetUpThreshold(dialog, options.weightThreshold);
    EnableThreshold(dialog, options.optimizeSkin ? TRUE : FALSE);
    SetCheck(dialog, IDC_MOTIONS_FOR_HIDDEN, options.motionsForHidden);
    SetCheck(dialog, IDC_SAMPLE_ANIMATION, options.sampleAnimation);
    EnableSampleRate(dialog, options.sampleAnimation ? TRUE : FALSE);
    SetNumber(dialog, IDC_SAMPLE_RATE, options.sampleRate);
    // There is no such control: the number can be changed in the settings file alone.
    SetNumber(dialog, IDC_MAX_WEIGHTS, options.maxWeightsPerVertex);
}

// Ends the dialog unless the sample rate is refused. The command for the motion does not read the
// morphers.
void Accept(HWND dialog, ExportOptions& options, bool isForMotion) {
    g_motionPass = isForMotion ? 1 : 0;
    options.exportHidden = GetCheck(dialog, IDC_EXPORT_HIDDEN);
    options.nonRenderable = GetCheck(dialog, IDC_NON_RENDERABLE);
    if (!isForMotion) {
        options.morphers = GetCheck(dialog, IDC_MORPHERS);
    }
    options.optimizeSkin = GetCheck(dialog, IDC_OPTIMIZE_SKIN);
    ReadThreshold(dialog, options.weightThreshold);
    options.motionsForHidden = GetCheck(dialog, IDC_MOTIONS_FOR_HIDDEN);
    options.sampleAnimation = GetCheck(dialog, IDC_SAMPLE_ANIMATION);

    const int sampleRate = GetNumber(dialog, IDC_SAMPLE_RATE);
    if (sampleRate < 1) {
        MessageBoxA(dialog,
                    "The motion sample rate cannot be below one!\n"
                    "A value of two gives high quality results.\n"
                    "Higher values will result in lower quality.",
                    "Invalid value", MB_OK | MB_ICONEXCLAMATION);
        SetNumber(dialog, IDC_SAMPLE_RATE, options.sampleRate);
        return;
    }
    options.sampleRate = sampleRate;
    EndDialog(dialog, 1);
}

void OnCommand(HWND dialog, int id) {
    KTAExp* exporter = reinterpret_cast<KTAExp*>(GetWindowLongPtrA(dialog, GWLP_USERDATA));
    switch (id) {
        case IDC_CANCEL:
            EndDialog(dialog, 0);
            break;
        case IDC_EXPORT:
        case IDC_EXPORT_MOTION:
            Accept(dialog, exporter->Options(), id == IDC_EXPORT_MOTION);
            break;
        case IDC_OPTIMIZE_SKIN:
            EnableThreshold(dialog, GetCheck(dialog, IDC_OPTIMIZE_SKIN));
            break;
        case IDC_SAMPLE_ANIMATION:
            EnableSampleRate(dialog, GetCheck(dialog, IDC_SAMPLE_ANIMATION));
            break;
        default:
            break;
    }
}

INT_PTR OnMessage(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_INITDIALOG:
            SetWindowLongPtrA(dialog, GWLP_USERDATA, lParam);
            CenterWindow(dialog, GetParent(dialog));
            ShowOptions(dialog, reinterpret_cast<KTAExp*>(lParam)->Options());
            return TRUE;
        case WM_COMMAND:
            OnCommand(dialog, LOWORD(wParam));
            return TRUE;
        case CC_SPINNER_CHANGE:
            return TRUE;
        default:
            return FALSE;
    }
}

}  // namespace

INT_PTR CALLBACK OptionsDialogProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    try {
        return OnMessage(dialog, message, wParam, lParam);
    } catch (...) {
        EndDialog(dialog, kDialogOutOfMemory);
        return TRUE;
    }
}

bool KTAExp::RunOptionsDialog() {
    const INT_PTR result =
        DialogBoxParamA(g_moduleInstance, MAKEINTRESOURCEA(IDD_OPTIONS), ip->GetMAXHWnd(),
                        OptionsDialogProcedure, reinterpret_cast<LPARAM>(this));
    if (result == kDialogOutOfMemory) {
        throw std::bad_alloc();
    }
    return result != 0;
}
