// A receipt as a page for people.
#pragma once

#include <string>

#include "host/app/receipt.h"

namespace maxhost::app {

// One HTML document that needs nothing else: no script, no file, no network. Texts are escaped.
// Long lists show their first part and say how much more there is.
std::string PageOf(const Receipt& receipt, bool withTimes);

}  // namespace maxhost::app
