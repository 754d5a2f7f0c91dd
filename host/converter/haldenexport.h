// The interface of the converter library that the exporter hands its files to, and the stand-in
// for that library, which is built here.
//
// The stand-in does not write the HDO file, whose format is the Halden application's own: it reads
// every file that it is handed and keeps what it finds wrong with them for SpecialHaldenFaults().
// Where that is nothing, EndSpecialHalden leaves a manifest of both files under the HDO file's name
// (see manifest.h), so that whoever waits for that file sees the export done, and a preview of them
// (see kta::WriteGlb) under that name with ".glb" behind it. One export is the calls
// InitSpecialHalden, WriteKTActorFile, WriteKTMotionFile, WriteKTMotionFile(null),
// EndSpecialHalden, in this order; a call out of order is a fault as well. An export that is broken
// off needs no EndSpecialHalden: the next InitSpecialHalden starts afresh. One thread at a time.
// Texts are 8-bit and NUL-terminated, and copied. No exception leaves the library.
#pragma once

#if !defined(_WIN32)
#define HALDENEXPORT_API __attribute__((visibility("default")))
#elif defined(HALDENEXPORT_BUILD)
#define HALDENEXPORT_API __declspec(dllexport)
#else
#define HALDENEXPORT_API __declspec(dllimport)
#endif

extern "C" {

// Starts an export. `converterDirectory` is where this library was found, `exportFileName` the
// HDO file that the user named. The meaning of `flag` is the application's; the exporter gives
// true, and the stand-in does not look at it.
HALDENEXPORT_API void InitSpecialHalden(const char* converterDirectory, const char* exportFileName,
                                        bool flag);

// Takes the finished actor file.
HALDENEXPORT_API void WriteKTActorFile(const char* ktaFileName);

// Takes the finished motion file; null says that no further motion follows.
HALDENEXPORT_API void WriteKTMotionFile(const char* ktaFileName);

// Ends the export.
HALDENEXPORT_API void EndSpecialHalden();

// The stand-in only: what was found wrong since the last InitSpecialHalden, lines separated by
// '\n'; empty when nothing was. The text belongs to the library and holds until the next call of
// any of its functions. The application's library lacks this entry.
HALDENEXPORT_API const char* SpecialHaldenFaults();

// The stand-in only: whether the caller reads the files himself, until he says otherwise. The
// stand-in then looks at the calls alone, makes no preview, and its result tells nothing of the
// files: a caller who finds a fault in them takes it away. The application's library lacks this
// entry.
HALDENEXPORT_API void SpecialHaldenLeaveReading(bool isLeft);

}  // extern "C"
