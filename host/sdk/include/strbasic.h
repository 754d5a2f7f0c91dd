// The character type of all names and texts: 8 bits in this release.
#ifndef HOST_SDK_INCLUDE_STRBASIC_H
#define HOST_SDK_INCLUDE_STRBASIC_H

#include <tchar.h>

typedef char MCHAR;

#endif  // HOST_SDK_INCLUDE_STRBASIC_H
