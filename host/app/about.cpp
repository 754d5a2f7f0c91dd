#include "host/app/about.h"

#include <impexp.h>
#include <max.h>
#include <maxapi.h>

#include "host/app/exit_status.h"
#include "host/app/places.h"
#include "host/app/plugin_loader.h"
#include "host/sdk/host.h"
#ifdef _WIN32
#include "host/win32/display.h"
#endif

namespace maxhost::app {

void RequireDisplay(const std::string& subject, [[maybe_unused]] bool isForPerson) {
#ifdef _WIN32
    if (!win32::HasDisplay()) {
        throw Failure(kExitRefused, subject,
                      "no window can be made for the exporter's dialogs, expected a display");
    }
#else
    if (isForPerson) {
        throw Failure(kExitRefused, subject,
                      "no dialog can be shown to a person here, expected Windows with a display");
    }
#endif
}

int ShowAbout(const Options& options) {
    RequireDisplay("--about", true);
    const std::vector<std::string> plugInDirectories = PlugInDirectories(options);
    Host& host = Host::Instance();
    host.SetPlugInDirs(plugInDirectories);
    LoadExporter(PlugInFile(options), plugInDirectories)
        ->ShowAbout(host.GetInterface()->GetMAXHWnd());
    return kExitDone;
}

}  // namespace maxhost::app
