// Faults to plant: one for each code of the table.
#pragma once

#include <functional>
#include <vector>

#include "kta/check.h"
#include "kta/check/good_export.h"

namespace kta {

// The two files to be checked, and how.
struct Specimen {
    FileBytes actor;
    FileBytes motion;
    CheckOptions options;
};

struct Planted {
    IssueCode code;
    Specimen specimen;
    // Another code that cannot be kept away; the same as `code` where there is none.
    IssueCode beside;
};

// In the order of the codes.
std::vector<Planted> PlantAll();

// Every budget and pattern that the good files break.
StudioRules BrokenRules();

}  // namespace kta
