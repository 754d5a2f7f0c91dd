// The check proves itself: each fault that it knows is planted into good files.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "kta/check.h"
#include "kta/check/good_export.h"

namespace kta {

// Two files to be checked, and how.
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

// A specimen for each code, in the order of the codes.
std::vector<Planted> PlantAll();

// Every budget and pattern that the good files break.
StudioRules BrokenRules();

// Checks files that are good, which must give nothing, and for each code the same files with that
// fault planted, which must give that code and nothing else. Prints a line for each code; true when
// all is as it must be. Where `directory` is not empty, it is made if need be and the files are
// written there: CODE.hdotemp1 and CODE.hdotemp2, good ones under "good", and rules.json with the
// rules that the good ones break, each by its code. Throws std::system_error when that cannot be.
bool RunSelfTest(const std::string& directory, std::ostream& out);

}  // namespace kta
