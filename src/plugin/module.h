// The plug-in as a module: its instance handle, its string table and its paths.
#ifndef PLUGIN_MODULE_H
#define PLUGIN_MODULE_H

#include <max.h>

#ifdef _WIN32
#define PATH_SEPARATOR "\\"
#else
#define PATH_SEPARATOR "/"
#endif

// Set by the module's entry point; null before it has run.
extern HINSTANCE g_moduleInstance;

// A text of the string table, in a buffer of 256 bytes that every call overwrites; null when the
// module instance is unknown or the string is missing.
MCHAR* GetString(int id);
// The same as an answer to 3ds Max, which takes no exception: null where memory is missing, too.
MCHAR* AnswerString(int id);

// Writes the two parts of a path end to end. False, and `path` as it was, where they do not fit: a
// path is never cut.
bool JoinPath(char (&path)[MAX_PATH], const char* beginning, const char* end);

#endif
