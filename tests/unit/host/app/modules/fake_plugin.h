// The behaviour of the fake plug-in; a test sets it through the module's function `FakePlugIn`.
#pragma once

#include <max.h>
#include <maxapi.h>

#include <functional>
#include <string>

struct FakePlugInBehaviour {
    ULONG version = VERSION_3DSMAX;
    int classes = 1;  // the last one is the exporter
    SClass_ID superClass = SCENE_EXPORT_CLASS_ID;
    bool makesExporter = true;
    bool supportsSelection = true;
    bool writesLog = true;
    std::function<int(const std::string& name, DWORD options)> doExport;
    HINSTANCE instance = nullptr;  // filled by the plug-in
    int exporters = 0;             // alive
};
