#include <color.h>
#include <gtest/gtest.h>

#include <limits>

TEST(Color, ComesFromAColorref) {
    const Color color(DWORD{0x00ff8001});
    EXPECT_EQ(color.r, 1.0f / 255.0f);
    EXPECT_EQ(color.g, 128.0f / 255.0f);
    EXPECT_EQ(color.b, 1.0f);
}

TEST(Color, IgnoresTheHighestByte) {
    EXPECT_TRUE(Color(DWORD{0xff000000}) == Color(0.0f, 0.0f, 0.0f));
}

TEST(Color, EveryByteComesBack) {
    for (DWORD value = 0; value < 256; ++value) {
        EXPECT_EQ(Color(value).toRGB(), value);
        EXPECT_EQ(Color(value << 8).toRGB(), value << 8);
        EXPECT_EQ(Color(value << 16).toRGB(), value << 16);
    }
}

TEST(Color, RoundsAndCutsForAColorref) {
    EXPECT_EQ(Color(0.499f / 255, 0.501f / 255, 1.4f / 255).toRGB(), 0x00010100u);
    EXPECT_EQ(Color(-1.0f, 2.0f, 1.0f).toRGB(), 0x00ffff00u);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(Color(nan, infinity, -infinity).toRGB(), 0x0000ff00u);
}

TEST(Color, ConvertsFromAndToAPoint) {
    const Point3 point = Color(0.1f, 0.2f, 0.3f);
    EXPECT_TRUE(point == Point3(0.1f, 0.2f, 0.3f));
    const Color color = Point3(0.4f, 0.5f, 0.6f);
    EXPECT_TRUE(color == Color(0.4f, 0.5f, 0.6f));
}

TEST(Color, CalculatesByComponent) {
    const Color a(0.25, 0.5, 1.0), b(0.5, 0.5, 0.5);
    EXPECT_TRUE(a + b == Color(0.75, 1.0, 1.5));
    EXPECT_TRUE(a - b == Color(-0.25, 0.0, 0.5));
    EXPECT_TRUE(a * b == Color(0.125, 0.25, 0.5));
    EXPECT_TRUE(a * 2.0f == Color(0.5, 1.0, 2.0));
    EXPECT_TRUE(2.0f * a == Color(0.5, 1.0, 2.0));
    EXPECT_TRUE(a / 2.0f == b * a);
    EXPECT_TRUE(a != b);
    Color c = a;
    c[1] = 0;
    EXPECT_EQ(c.g, 0);
    EXPECT_EQ(c[2], 1);
}
