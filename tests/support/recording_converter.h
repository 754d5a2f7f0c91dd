// The converter for tests: it has the four entry points of haldenexport.h, and instead of
// converting writes down every call, for tests to compare. Link it in place of haldenexport, or
// name its directory as a plug-in directory and look the entries up.
#pragma once

#include "host/converter/haldenexport.h"

extern "C" {

// The calls since the library was loaded or last reset, one a line, separated by '\n':
//     InitSpecialHalden("DIRECTORY", "FILE", true)
//     WriteKTActorFile("FILE") 639 bytes
//     WriteKTMotionFile("FILE") no file
//     WriteKTMotionFile(null)
//     EndSpecialHalden()
// Texts stand as they were given, a null text as null. What follows a file name is what was found
// on the disk at that moment. The result belongs to the library and holds until its next call.
HALDENEXPORT_API const char* RecordedCalls();

HALDENEXPORT_API void ResetRecordedCalls();

}  // extern "C"
