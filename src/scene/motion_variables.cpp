#include "scene/motion_variables.h"

const char* MotionVariableName(int part, int component) {
    static const char* const kNames[3][3] = {{"X_Position", "Y_Position", "Z_Position"},
                                             {"X_Rotation", "Y_Rotation", "Z_Rotation"},
                                             {"X_Scale", "Y_Scale", "Z_Scale"}};
    const bool known = part >= 0 && part < 3 && component >= 0 && component < 3;
    return known ? kNames[part][component] : "Unknown var";
}
