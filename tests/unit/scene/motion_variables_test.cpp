#include "scene/wires.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

TEST(MotionVariables, NineChannelsHaveNames) {
    const char* const expected[3][3] = {{"X_Position", "Y_Position", "Z_Position"},
                                        {"X_Rotation", "Y_Rotation", "Z_Rotation"},
                                        {"X_Scale", "Y_Scale", "Z_Scale"}};
    for (int part = 0; part < 3; ++part) {
        for (int component = 0; component < 3; ++component) {
            EXPECT_STREQ(MotionVariableName(part, component), expected[part][component]);
        }
    }
}

TEST(MotionVariables, EveryOtherPairIsUnknown) {
    for (const int outside : {-1, 3, INT_MIN, INT_MAX}) {
        EXPECT_STREQ(MotionVariableName(outside, 0), "Unknown var") << outside;
        EXPECT_STREQ(MotionVariableName(0, outside), "Unknown var") << outside;
        EXPECT_STREQ(MotionVariableName(2, outside), "Unknown var") << outside;
        EXPECT_STREQ(MotionVariableName(outside, outside), "Unknown var") << outside;
    }
}

}  // namespace
