// The choices of the options dialog. The settings file is this record as it lies in memory.
#ifndef EXPORT_EXPORT_OPTIONS_H
#define EXPORT_EXPORT_OPTIONS_H

#include <string.h>

#include "core/types.h"

// Switches are 0 or 1, and any other value of a settings file counts as 1. The dialog makes 0 or 1
// of those that it shows; the others are kept as the file holds them.
struct ExportOptions {
    Plinth::UInt8 collisionMeshes;  // export meshes tagged as collision meshes as such
    Plinth::UInt8 exportHidden;     // write node data of hidden nodes
    Plinth::UInt8 meshes;
    Plinth::UInt8 nonRenderable;  // export meshes of objects that are not renderable
    Plinth::UInt8 morphers;
    Plinth::UInt8 optimizeSkin;
    Plinth::UInt8 padding0[2];
    Plinth::Float32 weightThreshold;
    Plinth::Int32 maxWeightsPerVertex;
    Plinth::UInt8 motionsForHidden;  // write motion of hidden nodes
    Plinth::UInt8 sampleAnimation;
    Plinth::UInt8 padding1[2];
    Plinth::Int32 sampleRate;  // a keyframe every so many frames, at least 1
};
PLINTH_STATIC_ASSERT(sizeof(ExportOptions) == 24, export_options_size);

inline ExportOptions DefaultExportOptions() {
    ExportOptions options;
    memset(&options, 0, sizeof(options));
    options.meshes = 1;
    options.morphers = 1;
    options.optimizeSkin = 1;
    options.weightThreshold = 0.075f;
    options.maxWeightsPerVertex = 4;
    options.sampleRate = 2;
    return options;
}

#endif
