// Times of keys: ticks inside 3ds Max, seconds in the file.
#ifndef SCENE_KEY_TIME_H
#define SCENE_KEY_TIME_H

#include <max.h>

#include <maxapi.h>

#include "core/types.h"

// The product is formed as an integer and rounded once.
inline Plinth::Float32 TicksPerSecond() {
    return static_cast<Plinth::Float32>(static_cast<Plinth::Int64>(GetFrameRate()) *
                                        GetTicksPerFrame());
}

inline Plinth::Float32 Seconds(TimeValue ticks) {
    return static_cast<Plinth::Float32>(ticks) / TicksPerSecond();
}

#endif
