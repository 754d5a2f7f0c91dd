// Which of its two files the exporter is writing.
#ifndef PLUGIN_MOTION_PASS_H
#define PLUGIN_MOTION_PASS_H

#include "core/types.h"

// 0 while the actor file is written, 1 while the motion file is.
extern Plinth::UInt8 g_motionPass;

#endif
