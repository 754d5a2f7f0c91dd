#include <gtest/gtest.h>
#include <interval.h>

TEST(Interval, IsEmptyAtFirst) {
    const Interval none;
    EXPECT_TRUE(none.Empty());
    EXPECT_TRUE(none == NEVER);
    EXPECT_EQ(none.Duration(), 0);
    EXPECT_FALSE(none.InInterval(TIME_NegInfinity));
}

TEST(Interval, HoldsBothEnds) {
    const Interval range(0, 160);
    EXPECT_EQ(range.Start(), 0);
    EXPECT_EQ(range.End(), 160);
    EXPECT_FALSE(range.Empty());
    EXPECT_TRUE(range.InInterval(0));
    EXPECT_TRUE(range.InInterval(160));
    EXPECT_FALSE(range.InInterval(-1));
    EXPECT_FALSE(range.InInterval(161));
    EXPECT_EQ(range.Duration(), 161);
}

TEST(Interval, ForeverHoldsEveryTime) {
    EXPECT_EQ(FOREVER.Start(), TIME_NegInfinity);
    EXPECT_EQ(FOREVER.End(), TIME_PosInfinity);
    EXPECT_FALSE(FOREVER.Empty());
    EXPECT_TRUE(FOREVER.InInterval(TIME_NegInfinity));
    EXPECT_TRUE(FOREVER.InInterval(0));
    EXPECT_TRUE(FOREVER.InInterval(TIME_PosInfinity));
    EXPECT_EQ(FOREVER.Duration(), TIME_PosInfinity);
}

TEST(Interval, Sets) {
    Interval range;
    range.Set(10, 20);
    EXPECT_TRUE(range == Interval(10, 20));
    range.SetStart(12);
    range.SetEnd(18);
    EXPECT_TRUE(range == Interval(12, 18));
    range.SetInstant(5);
    EXPECT_TRUE(range == Interval(5, 5));
    EXPECT_EQ(range.Duration(), 1);
    EXPECT_FALSE(range.Empty());
    range.SetInfinite();
    EXPECT_TRUE(range == FOREVER);
    range.SetEmpty();
    EXPECT_TRUE(range == NEVER);
    EXPECT_TRUE(range != FOREVER);
}

TEST(Interval, IntersectsOverlapping) {
    EXPECT_TRUE((Interval(0, 100) & Interval(50, 200)) == Interval(50, 100));
    EXPECT_TRUE((Interval(50, 200) & Interval(0, 100)) == Interval(50, 100));
    EXPECT_TRUE((Interval(0, 100) & Interval(20, 30)) == Interval(20, 30));
    EXPECT_TRUE((Interval(0, 100) & Interval(100, 300)) == Interval(100, 100));
    EXPECT_TRUE((FOREVER & Interval(3, 4)) == Interval(3, 4));
    EXPECT_TRUE((FOREVER & FOREVER) == FOREVER);
}

TEST(Interval, IntersectsToNever) {
    EXPECT_TRUE((Interval(0, 9) & Interval(10, 20)) == NEVER);
    EXPECT_TRUE((FOREVER & NEVER) == NEVER);
    EXPECT_TRUE((NEVER & Interval(TIME_NegInfinity, 0)) == NEVER);
    EXPECT_TRUE((Interval(20, 10) & FOREVER) == NEVER);
}

TEST(Interval, IntersectsInPlace) {
    Interval valid = FOREVER;
    valid &= Interval(0, 100);
    valid &= Interval(40, 400);
    EXPECT_TRUE(valid == Interval(40, 100));
}

TEST(Interval, IsEmptyWhereItEndsBeforeItsStart) {
    EXPECT_TRUE(Interval(20, 10).Empty());
    EXPECT_FALSE(Interval(20, 10).InInterval(15));
    EXPECT_EQ(Interval(20, 10).Duration(), 0);
}
