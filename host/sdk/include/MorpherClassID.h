// The class of the Morpher.
#ifndef HOST_SDK_INCLUDE_MORPHERCLASSID_H
#define HOST_SDK_INCLUDE_MORPHERCLASSID_H

#include <maxtypes.h>

#define MR3_CLASS_ID Class_ID(0x17bb6854, 0xa5cba2a3)

#endif  // HOST_SDK_INCLUDE_MORPHERCLASSID_H
