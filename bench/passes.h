// The two passes of an export, on the open scene, without dialog and converter.
#pragma once

#include <maxapi.h>

#include <string>

#include "core/log.h"
#include "core/string.h"
#include "export/export_pass.h"
#include "host/sdk/host.h"
#include "tests/support/temporary_directory.h"

namespace bench {

inline ExportOptions OptionsFor(bool isSampled) {
    ExportOptions options = DefaultExportOptions();
    options.sampleAnimation = isSampled;
    options.sampleRate = 1;
    options.optimizeSkin = 0;
    return options;
}

inline void RunPass(bool isMotion, const ExportOptions& options, const std::string& path) {
    Interface* const ip = maxhost::Host::Instance().GetInterface();
    g_motionPass = isMotion;
    ExportPassHolder pass;
    ResetExportState(pass, ip, options);
    pass->writer.Open(path.c_str());
    NodeList roots;
    for (int i = 0; i < ip->GetRootNode()->NumberOfChildren(); ++i) {
        roots.Add(ip->GetRootNode()->GetChildNode(i));
    }
    ExportRoots(*pass.Get(), roots);
}

// With the log in its file, each line flushed.
inline void RunPasses(const ExportOptions& options, const support::TemporaryDirectory& folder) {
    Plinth::GetLogManager().AddLogFileCallback(folder.PathOf("log").c_str());
    RunPass(false, options, folder.PathOf("actor"));
    RunPass(true, options, folder.PathOf("motion"));
    Plinth::GetLogManager().ClearLogCallbacks();
}

}  // namespace bench
