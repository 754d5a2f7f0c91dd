#include <point2.h>
#include <point4.h>

#include <limits>

#include "tests/unit/sdk_types/support.h"

TEST(Point3, IsMadeOfThreeNumbersOfOneType) {
    const float components[3] = {1, 2, 3};
    EXPECT_TRUE(Point3(1.0f, 2.0f, 3.0f) == Point3(1, 2, 3));
    EXPECT_TRUE(Point3(1.0, 2.0, 3.0) == Point3(components));
}

TEST(Point3, IndexesItsComponents) {
    Point3 p(1, 2, 3);
    EXPECT_EQ(p[0], 1);
    EXPECT_EQ(p[1], 2);
    EXPECT_EQ(p[2], 3);
    p[1] = 5;
    EXPECT_EQ(p.y, 5);
}

TEST(Point3, CalculatesByComponent) {
    const Point3 a(1, 2, 3), b(4, -5, 6);
    EXPECT_TRUE(a + b == Point3(5, -3, 9));
    EXPECT_TRUE(a - b == Point3(-3, 7, -3));
    EXPECT_TRUE(a * b == Point3(4, -10, 18));
    EXPECT_TRUE(b / a == Point3(4.0f, -2.5f, 2.0f));
    EXPECT_TRUE(-a == Point3(-1, -2, -3));
    EXPECT_TRUE(a * 2.0f == Point3(2, 4, 6));
    EXPECT_TRUE(2.0f * a == Point3(2, 4, 6));
    EXPECT_TRUE(a / 2.0f == Point3(0.5f, 1.0f, 1.5f));
    EXPECT_TRUE(a != b);
}

TEST(Point3, CalculatesInPlace) {
    Point3 p(1, 2, 3);
    p += Point3(1, 1, 1);
    p -= Point3(0, 1, 2);
    EXPECT_TRUE(p == Point3(2, 2, 2));
    p *= 3;
    p /= 2;
    p *= Point3(1, 2, 3);
    EXPECT_TRUE(p == Point3(3, 6, 9));
}

TEST(Point3, MultipliesVectors) {
    const Point3 a(1, 2, 3), b(4, 5, 6);
    EXPECT_EQ(a % b, 32.0f);
    EXPECT_EQ(DotProd(a, b), 32.0f);
    EXPECT_TRUE((a ^ b) == Point3(-3, 6, -3));
    EXPECT_TRUE(CrossProd(a, b) == Point3(-3, 6, -3));
    EXPECT_TRUE((Point3(1, 0, 0) ^ Point3(0, 1, 0)) == Point3(0, 0, 1));
}

TEST(Point3, SumsProductsInDouble) {
    // In floats the first two products would take the third with them.
    EXPECT_EQ(Point3(1e8f, -1e8f, 1.0f) % Point3(1e8f, 1e8f, 1.0f), 1.0f);
}

TEST(Point3, MeasuresItsLength) {
    EXPECT_EQ(Point3(2, 3, 6).Length(), 7.0f);
    EXPECT_EQ(Point3(2, 3, 6).LengthSquared(), 49.0f);
    EXPECT_EQ(Length(Point3(2, 3, 6)), 7.0f);
    EXPECT_EQ(LengthSquared(Point3(2, 3, 6)), 49.0f);
    EXPECT_EQ(Point3(3e-30f, 4e-30f, 0.0f).Length(), 5e-30f);
    EXPECT_EQ(Point3(3e30f, 4e30f, 0.0f).Length(), 5e30f);
}

TEST(Point3, NormalizesACopyAndUnifiesInPlace) {
    Point3 p(0, 3, 4);
    ExpectNear(p.Normalize(), Point3(0.0f, 0.6f, 0.8f));
    ExpectNear(Normalize(p), Point3(0.0f, 0.6f, 0.8f));
    EXPECT_TRUE(p == Point3(0, 3, 4));
    EXPECT_EQ(&p.Unify(), &p);
    ExpectNear(p, Point3(0.0f, 0.6f, 0.8f));
}

TEST(Point3, NormalizesSmallAndLargeVectors) {
    ExpectNear(Point3(0.0f, 1e-40f, 0.0f).Normalize(), Point3(0, 1, 0));
    ExpectNear(Point3(3e38f, 0.0f, 0.0f).Normalize(), Point3(1, 0, 0));
}

TEST(Point3, LeavesAVectorWithoutDirectionAlone) {
    EXPECT_TRUE(Point3(0, 0, 0).Normalize() == Point3(0, 0, 0));
    const float infinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(Point3(infinity, 0.0f, 0.0f).Normalize().x, infinity);
}

TEST(Point3, ComparesWithinATolerance) {
    EXPECT_TRUE(Point3(1, 2, 3).Equals(Point3(1.0f, 2.0f, 3.0f + 5e-7f)));
    EXPECT_FALSE(Point3(1, 2, 3).Equals(Point3(1.0f, 2.0f, 3.00001f)));
    EXPECT_TRUE(Point3(1, 2, 3).Equals(Point3(1.0f, 2.05f, 3.0f), 0.1f));
    EXPECT_FALSE(Point3(1, 2, 3).Equals(Point3(1.2f, 2.0f, 3.0f), 0.1f));
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(Point3(nan, 0.0f, 0.0f).Equals(Point3(nan, 0.0f, 0.0f)));
}

TEST(Point2, CalculatesByComponent) {
    Point2 a(1, 2);
    a[1] = 3;
    EXPECT_EQ(a[0], 1);
    EXPECT_TRUE(a + Point2(1, 1) == Point2(2, 4));
    EXPECT_TRUE(a - Point2(1, 1) == Point2(0, 2));
    EXPECT_TRUE(-a == Point2(-1, -3));
    EXPECT_TRUE(2.0f * a == Point2(2, 6));
    EXPECT_TRUE(a * 2.0f == Point2(2, 6));
    EXPECT_TRUE(a / 2.0f == Point2(0.5, 1.5));
    EXPECT_TRUE(a != Point2(3, 1));
}

TEST(Point4, IndexesItsComponents) {
    Point4 p(1, 2, 3, 4);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(p[i], i + 1);
    p[3] = 9;
    EXPECT_EQ(p.w, 9);
    EXPECT_TRUE(p == Point4(1, 2, 3, 9));
    EXPECT_TRUE(p != Point4(1, 2, 3, 4));
}
