#include "plugin/export_options.h"

#include <string.h>

ExportOptions DefaultExportOptions() {
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
