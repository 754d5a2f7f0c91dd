// The check proves itself: each fault that it knows is planted into good files.
#pragma once

#include <ostream>
#include <string>

namespace kta {

// Checks files that are good, which must give nothing, and for each code the same files with that
// fault planted, which must give that code and nothing else. Prints a line for each code; true when
// all is as it must be. Where `directory` is not empty, it is made if need be and the files are
// written there: CODE.hdotemp1 and CODE.hdotemp2, good ones under "good", and rules.json with the
// rules that the good ones break, each by its code. Throws std::system_error when that cannot be.
bool RunSelfTest(const std::string& directory, std::ostream& out);

}  // namespace kta
