// The converter library of the Halden application, bound once when the plug-in is loaded and never
// unloaded.
#ifndef PLUGIN_CONVERTER_H
#define PLUGIN_CONVERTER_H

#include <max.h>
#include <maxapi.h>

struct Converter {
    char
        directory[MAX_PATH];  // the plug-in directory that holds the library, no trailing separator

    // The library's entry points; not checked when they are looked up. Results are not used.
    void (*initSpecialHalden)(const char* converterDirectory, const char* exportFileName,
                              bool flag);
    // Convert a KTA file; a null motion file ends the motion.
    void (*writeKTActorFile)(const char* ktaFileName);
    void (*writeKTMotionFile)(const char* ktaFileName);
    void (*endSpecialHalden)();
};

extern Converter g_converter;

// Loads haldenexport.dll from the first plug-in directory that holds it; false when none does.
// Directories whose path does not fit are passed over.
bool BindConverter(Interface* ip);

#endif
