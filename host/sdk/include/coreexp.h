// Import and export of the host's classes and functions. The host itself is built with
// MAXHOST_BUILDING; plug-ins import.
#ifndef HOST_SDK_INCLUDE_COREEXP_H
#define HOST_SDK_INCLUDE_COREEXP_H

#ifdef _WIN32
#ifdef MAXHOST_BUILDING
#define CoreExport __declspec(dllexport)
#else
#define CoreExport __declspec(dllimport)
#endif
#else
#define CoreExport
#endif

#define UtilExport CoreExport
#define GEOMexport CoreExport

#endif  // HOST_SDK_INCLUDE_COREEXP_H
