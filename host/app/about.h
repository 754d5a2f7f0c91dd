// The exporter's About box, for a person.
#pragma once

#include <string>

#include "host/app/options.h"

namespace maxhost::app {

// Throws Failure(kExitRefused) where no window can be shown: nobody could answer the dialogs then.
// `subject` is what asks for one. Elsewhere than on Windows only `isForPerson` needs a window.
void RequireDisplay(const std::string& subject, bool isForPerson);

// Loads the plug-in, shows its About box and waits. Returns the exit status; throws Failure.
int ShowAbout(const Options& options);

}  // namespace maxhost::app
