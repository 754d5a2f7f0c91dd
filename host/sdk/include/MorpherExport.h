// Import and export of the Morpher's classes.
#ifndef HOST_SDK_INCLUDE_MORPHEREXPORT_H
#define HOST_SDK_INCLUDE_MORPHEREXPORT_H

#include <coreexp.h>

#define MorpherExport CoreExport

#endif  // HOST_SDK_INCLUDE_MORPHEREXPORT_H
