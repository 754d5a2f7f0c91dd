// Dummy helpers.
#ifndef HOST_SDK_INCLUDE_DUMMY_H
#define HOST_SDK_INCLUDE_DUMMY_H

#include <coreexp.h>
#include <maxtypes.h>

extern CoreExport Class_ID dummyClassID;

#endif  // HOST_SDK_INCLUDE_DUMMY_H
