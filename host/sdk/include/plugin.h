// The functions that a plug-in module exports to the host, as the host calls them.
#ifndef HOST_SDK_INCLUDE_PLUGIN_H
#define HOST_SDK_INCLUDE_PLUGIN_H

#include <plugapi.h>

typedef const MCHAR* (*LibDescriptionFunc)();
typedef int (*LibNumberClassesFunc)();
typedef ClassDesc* (*LibClassDescFunc)(int i);
typedef ULONG (*LibVersionFunc)();

#endif  // HOST_SDK_INCLUDE_PLUGIN_H
