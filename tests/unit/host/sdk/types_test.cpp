// The basic types: points, colours, time ranges, texts, ids, the host's heap.
#include <color.h>
#include <interval.h>
#include <maxheap.h>
#include <maxtypes.h>
#include <plugapi.h>
#include <strclass.h>

#include <limits>
#include <new>
#include <type_traits>

#include "tests/support/sdk_values.h"

// ---------------------------------------------------------------- points

TEST(Point3, IsMadeOfThreeNumbersOfOneType) {
    EXPECT_TRUE(Point3(1.0f, 2.0f, 3.0f) == Point3(1, 2, 3));
    EXPECT_TRUE(Point3(1.0, 2.0, 3.0) == Point3(1, 2, 3));
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
    EXPECT_TRUE(-a == Point3(-1, -2, -3));
}

TEST(Point3, MultipliesVectors) {
    EXPECT_TRUE((Point3(1, 2, 3) ^ Point3(4, 5, 6)) == Point3(-3, 6, -3));
    EXPECT_TRUE((Point3(1, 0, 0) ^ Point3(0, 1, 0)) == Point3(0, 0, 1));
}

TEST(Point3, NormalizesACopy) {
    const Point3 p(0, 3, 4);
    ExpectNear(p.Normalize(), Point3(0.0f, 0.6f, 0.8f));
    ExpectNear(Normalize(p), Point3(0.0f, 0.6f, 0.8f));
    EXPECT_TRUE(p == Point3(0, 3, 4));
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

// ---------------------------------------------------------------- colours

TEST(Color, ComesFromAColorref) {
    const Color color(DWORD{0xffff8001});
    EXPECT_EQ(color.r, 1.0f / 255.0f);
    EXPECT_EQ(color.g, 128.0f / 255.0f);
    EXPECT_EQ(color.b, 1.0f);
}

// ---------------------------------------------------------------- time ranges

TEST(Interval, IsEmptyAtFirst) {
    const Interval none;
    EXPECT_TRUE(none.Empty());
    EXPECT_TRUE(none == NEVER);
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
}

TEST(Interval, ForeverHoldsEveryTime) {
    EXPECT_EQ(FOREVER.Start(), TIME_NegInfinity);
    EXPECT_EQ(FOREVER.End(), TIME_PosInfinity);
    EXPECT_FALSE(FOREVER.Empty());
    EXPECT_TRUE(FOREVER.InInterval(TIME_NegInfinity));
    EXPECT_TRUE(FOREVER.InInterval(0));
    EXPECT_TRUE(FOREVER.InInterval(TIME_PosInfinity));
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
}

// ---------------------------------------------------------------- texts

TEST(CStr, IsEmptyAndNeverNullAtFirst) {
    const CStr empty;
    ASSERT_NE(empty.data(), nullptr);
    EXPECT_STREQ(empty.data(), "");
    EXPECT_STREQ(CStr(static_cast<const char*>(nullptr)).data(), "");
}

TEST(CStr, IsTheSdksStringUnderThreeNames) {
    EXPECT_TRUE((std::is_same_v<TSTR, CStr>));
    EXPECT_TRUE((std::is_same_v<MSTR, CStr>));
}

TEST(CStr, HoldsACopy) {
    char buffer[] = "Bip01";
    const CStr name(buffer);
    buffer[0] = 'X';
    EXPECT_STREQ(name.data(), "Bip01");
    CStr copy(name);
    copy.data()[0] = 'Z';
    EXPECT_STREQ(name.data(), "Bip01");
    EXPECT_STREQ(copy.data(), "Zip01");
}

TEST(CStr, WhatIsWrittenThroughAPointerCounts) {
    CStr text("abcdef");
    text.data()[3] = 0;
    text += "X";
    EXPECT_STREQ(text.data(), "abcX");
}

TEST(CStr, Assigns) {
    CStr text("first");
    text = "second, longer";
    EXPECT_STREQ(text.data(), "second, longer");
    text = CStr("third");
    EXPECT_STREQ(text.data(), "third");
    text = static_cast<const char*>(nullptr);
    EXPECT_STREQ(text.data(), "");
}

TEST(CStr, AssignsFromItself) {
    CStr text("abcdef");
    const CStr& same = text;
    text = same;
    EXPECT_STREQ(text.data(), "abcdef");
    text = text.data() + 2;
    EXPECT_STREQ(text.data(), "cdef");
}

TEST(CStr, Joins) {
    CStr path("C:\\plugcfg");
    path += CStr("\\a");
    path += "b";
    EXPECT_STREQ(path.data(), "C:\\plugcfg\\ab");
    path += path;
    EXPECT_STREQ(path.data(), "C:\\plugcfg\\abC:\\plugcfg\\ab");
}

// ---------------------------------------------------------------- ids and times

TEST(MaxTypes, HaveTheWidthsOfTheSdk) {
    EXPECT_TRUE((std::is_same_v<TimeValue, int>));
    EXPECT_TRUE((std::is_same_v<MtlID, unsigned short>));
    EXPECT_TRUE((std::is_same_v<ParamID, short>));
    EXPECT_TRUE((std::is_same_v<MCHAR, char>));
    EXPECT_EQ(sizeof(SClass_ID), 4u);
    EXPECT_TRUE(std::is_unsigned_v<SClass_ID>);
    EXPECT_EQ(sizeof(Class_ID), 8u);
}

TEST(MaxTypes, TimesAreTicks) {
    EXPECT_EQ(TIME_TICKSPERSEC, 4800);
    EXPECT_EQ(TIME_NegInfinity, -2147483647 - 1);
    EXPECT_EQ(TIME_PosInfinity, 2147483647);
}

TEST(ClassId, IsBothPartsOrNone) {
    EXPECT_EQ(Class_ID().PartA(), 0xffffffffu);
    EXPECT_EQ(Class_ID().PartB(), 0xffffffffu);
    const Class_ID id(0x118f7e02, 0xffee238a);
    EXPECT_EQ(id.PartA(), 0x118f7e02u);
    EXPECT_EQ(id.PartB(), 0xffee238au);
}

TEST(ClassId, ComparesBothParts) {
    EXPECT_TRUE(Class_ID(1, 2) == Class_ID(1, 2));
    EXPECT_FALSE(Class_ID(1, 2) == Class_ID(1, 3));
    EXPECT_FALSE(Class_ID(1, 2) == Class_ID(3, 2));
    EXPECT_TRUE(Class_ID(1, 2) != Class_ID(2, 1));
    EXPECT_FALSE(Class_ID(1, 2) != Class_ID(1, 2));
}

TEST(PlugIns, VersionIsThatOfTheRelease) {
    EXPECT_EQ(VERSION_3DSMAX, 0x36B02600);
}

// ---------------------------------------------------------------- the host's heap

namespace {

class Plugged : public MaxHeapOperators {
  public:
    virtual ~Plugged() { ++destroyed; }
    int value = 7;
    static int destroyed;
};

int Plugged::destroyed = 0;

struct PluggedEmpty : MaxHeapOperators {};

}  // namespace

TEST(MaxHeap, MakesAndDeletesObjects) {
    Plugged::destroyed = 0;
    Plugged* one = new Plugged;
    Plugged* many = new Plugged[3];
    Plugged* careful = new (std::nothrow) Plugged;
    EXPECT_EQ(one->value + many[2].value + careful->value, 21);
    delete one;
    delete[] many;
    delete careful;
    EXPECT_EQ(Plugged::destroyed, 5);
}

TEST(MaxHeap, AllowsPlacement) {
    alignas(Plugged) unsigned char place[sizeof(Plugged)];
    Plugged* object = new (place) Plugged;
    EXPECT_EQ(static_cast<void*>(object), static_cast<void*>(place));
    object->~Plugged();
}

TEST(MaxHeap, AddsNeitherDataNorVirtualFunctions) {
    EXPECT_TRUE(std::is_empty_v<MaxHeapOperators>);
    EXPECT_FALSE(std::is_polymorphic_v<PluggedEmpty>);
}
