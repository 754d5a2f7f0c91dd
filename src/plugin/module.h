// The plug-in as a module: its instance handle and its string table.
#ifndef PLUGIN_MODULE_H
#define PLUGIN_MODULE_H

#include <max.h>

// Set by the module's entry point; null before it has run.
extern HINSTANCE g_moduleInstance;

// A text of the string table, in a buffer of 256 bytes that every call overwrites; null when the
// module instance is unknown or the string is missing.
MCHAR* GetString(int id);

#endif
