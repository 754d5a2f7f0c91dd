// Everything that a plug-in commonly needs.
#ifndef HOST_SDK_INCLUDE_MAX_H
#define HOST_SDK_INCLUDE_MAX_H

#include <animtbl.h>
#include <color.h>
#include <control.h>
#include <coreexp.h>
#include <impexp.h>
#include <imtl.h>
#include <inode.h>
#include <interval.h>
#include <iparamb2.h>
#include <matrix3.h>
#include <maxapi.h>
#include <maxheap.h>
#include <maxtypes.h>
#include <mesh.h>
#include <object.h>
#include <plugapi.h>
#include <point3.h>
#include <quat.h>
#include <ref.h>
#include <strclass.h>
#include <triobj.h>
#include <windows.h>

#endif  // HOST_SDK_INCLUDE_MAX_H
