// The settings file: the options record, raw.
#include <stdio.h>

#include <max.h>
#include <maxapi.h>

#include "core/holder.h"
#include "plugin/kta_exp.h"
#include "plugin/module.h"

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
