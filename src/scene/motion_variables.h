// Names of the channels of a transform.
#ifndef SCENE_MOTION_VARIABLES_H
#define SCENE_MOTION_VARIABLES_H

// `part` 0 is position, 1 rotation, 2 scale; `component` 0 is X, 1 Y, 2 Z. "Unknown var" for any
// other pair. The text is static.
const char* MotionVariableName(int part, int component);

#endif
