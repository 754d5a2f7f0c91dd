// A page that lays two actors over each other, with what differs between them: one file that needs
// nothing else.
#pragma once

#include "kta/diff/diff.h"

namespace kta {

// The page of two actor files and their comparison, in UTF-8; the same files give the same bytes.
// What of the models cannot be shown goes to `warnings`, a line each.
std::string EncodeOverlayPage(const File& a, const File& b, const Diff& diff,
                              const DiffReport& report, std::vector<std::string>& warnings);

}  // namespace kta
