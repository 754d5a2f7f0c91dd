#include <gtest/gtest.h>
#include <maxtypes.h>

#include <type_traits>

TEST(MaxTypes, HaveTheWidthsOfTheSdk) {
    EXPECT_TRUE((std::is_same_v<TimeValue, int>));
    EXPECT_TRUE((std::is_same_v<MtlID, unsigned short>));
    EXPECT_TRUE((std::is_same_v<BlockID, short>));
    EXPECT_TRUE((std::is_same_v<ParamID, short>));
    EXPECT_TRUE((std::is_same_v<MCHAR, char>));
    EXPECT_TRUE((std::is_same_v<TCHAR, char>));
    EXPECT_EQ(sizeof(SClass_ID), 4u);
    EXPECT_TRUE(std::is_unsigned_v<SClass_ID>);
    EXPECT_EQ(sizeof(Class_ID), 8u);
}

TEST(MaxTypes, TextMacrosLeaveTheTextAsItIs) {
    EXPECT_STREQ(_M("name"), "name");
    EXPECT_STREQ(_T("name"), "name");
}

TEST(MaxTypes, TimesAreTicks) {
    EXPECT_EQ(TIME_TICKSPERSEC, 4800);
    EXPECT_EQ(TIME_NegInfinity, -2147483647 - 1);
    EXPECT_EQ(TIME_PosInfinity, 2147483647);
    EXPECT_EQ(TicksToSec(160), 160.0f / 4800.0f);
    EXPECT_EQ(TicksToSec(-4800), -1.0f);
    EXPECT_EQ(TicksToSec(100 + 60), 160.0f / 4800.0f);
    EXPECT_EQ(SecToTicks(0.5), 2400);
    EXPECT_EQ(SecToTicks(1 + 1), 9600);
    EXPECT_EQ(SecToTicks(0.0003), 1);
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
