#include "tests/unit/sdk_types/cxx03_use.h"
#include "tests/unit/sdk_types/support.h"

TEST(Cxx03, FormatsNames) {
    EXPECT_STREQ(WireColorName(3).data(), "Wire Color 3");
}

TEST(Cxx03, WalksAnInterval) {
    EXPECT_EQ(CountSteps(FOREVER, 1600, 160), 11);
    EXPECT_EQ(CountSteps(Interval(0, 800), 1600, 160), 6);
    EXPECT_EQ(CountSteps(NEVER, 1600, 160), 0);
}

TEST(Cxx03, TakesANodeIntoItsParentsSpace) {
    const Matrix3 local = RotateXMatrix(0.3f) * TransMatrix(Point3(1, 2, 3));
    const Matrix3 parent = ScaleMatrix(Point3(2, 2, 2)) * RotateZMatrix(1);
    ExpectNear(LocalTransform(local * parent, parent), local);
}

TEST(Cxx03, GathersPoints) {
    EXPECT_TRUE(SumOfGathered(100) == Point3(100, 200, 300));
}
