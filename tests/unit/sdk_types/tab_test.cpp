#include <gtest/gtest.h>
#include <point3.h>
#include <tab.h>

#include <climits>
#include <new>
#include <vector>

namespace {

Tab<int> Numbers(std::vector<int> values) {
    Tab<int> tab;
    tab.Append(static_cast<int>(values.size()), values.data());
    return tab;
}

std::vector<int> ValuesOf(const Tab<int>& tab) {
    std::vector<int> values;
    for (int i = 0; i < tab.Count(); ++i)
        values.push_back(tab[i]);
    return values;
}

using Values = std::vector<int>;

}  // namespace

TEST(Tab, IsEmptyAtFirst) {
    EXPECT_EQ(Tab<int>().Count(), 0);
}

TEST(Tab, AppendsAndTellsWhere) {
    Tab<int> tab;
    int values[] = {1, 2, 3};
    EXPECT_EQ(tab.Append(3, values), 0);
    EXPECT_EQ(tab.Append(1, values, 10), 3);
    EXPECT_EQ(ValuesOf(tab), (Values{1, 2, 3, 1}));
    EXPECT_EQ(tab.Append(0, values), 4);
    EXPECT_EQ(tab.Append(-1, values), 4);
    EXPECT_EQ(tab.Count(), 4);
}

TEST(Tab, GivesAccessToItsElements) {
    Tab<int> tab = Numbers({1, 2, 3});
    tab[1] = 9;
    *tab.Addr(2) = 8;
    EXPECT_EQ(ValuesOf(tab), (Values{1, 9, 8}));
    const Tab<int>& constant = tab;
    constant[0] = 7;
    EXPECT_EQ(tab[0], 7);
}

TEST(Tab, Inserts) {
    Tab<int> tab = Numbers({1, 2, 3});
    int values[] = {8, 9};
    EXPECT_EQ(tab.Insert(1, 2, values), 1);
    EXPECT_EQ(ValuesOf(tab), (Values{1, 8, 9, 2, 3}));
    EXPECT_EQ(tab.Insert(0, 1, values), 0);
    EXPECT_EQ(tab.Insert(99, 1, values + 1), 6);
    EXPECT_EQ(tab.Insert(-5, 1, values + 1), 0);
    EXPECT_EQ(ValuesOf(tab), (Values{9, 8, 1, 8, 9, 2, 3, 9}));
}

TEST(Tab, InsertsItsOwnElements) {
    Tab<int> before = Numbers({1, 2, 3, 4});
    before.Insert(2, 2, before.Addr(0));
    EXPECT_EQ(ValuesOf(before), (Values{1, 2, 1, 2, 3, 4}));
    Tab<int> behind = Numbers({1, 2, 3, 4});
    behind.Insert(1, 2, behind.Addr(2));
    EXPECT_EQ(ValuesOf(behind), (Values{1, 3, 4, 2, 3, 4}));
    Tab<int> across = Numbers({1, 2, 3, 4});
    across.Insert(2, 3, across.Addr(1));
    EXPECT_EQ(ValuesOf(across), (Values{1, 2, 2, 3, 4, 3, 4}));
    Tab<int> whole = Numbers({1, 2, 3, 4});
    whole.Append(4, whole.Addr(0));
    EXPECT_EQ(ValuesOf(whole), (Values{1, 2, 3, 4, 1, 2, 3, 4}));
}

TEST(Tab, Deletes) {
    Tab<int> tab = Numbers({1, 2, 3, 4, 5});
    EXPECT_EQ(tab.Delete(1, 2), 3);
    EXPECT_EQ(ValuesOf(tab), (Values{1, 4, 5}));
    EXPECT_EQ(tab.Delete(2, 99), 2);
    EXPECT_EQ(tab.Delete(5, 1), 2);
    EXPECT_EQ(tab.Delete(-1, 1), 2);
    EXPECT_EQ(tab.Delete(0, 0), 2);
    EXPECT_EQ(ValuesOf(tab), (Values{1, 4}));
}

TEST(Tab, SetsItsCount) {
    Tab<int> tab = Numbers({1, 2, 3});
    tab.SetCount(5);
    EXPECT_EQ(tab.Count(), 5);
    tab[3] = 4;
    tab[4] = 5;
    EXPECT_EQ(ValuesOf(tab), (Values{1, 2, 3, 4, 5}));
    tab.SetCount(2, FALSE);
    EXPECT_EQ(ValuesOf(tab), (Values{1, 2}));
    tab.SetCount(1);
    EXPECT_EQ(ValuesOf(tab), (Values{1}));
    tab.SetCount(0);
    tab.SetCount(-3);
    EXPECT_EQ(tab.Count(), 0);
}

TEST(Tab, ResizesItsMemory) {
    Tab<int> tab = Numbers({1, 2, 3});
    EXPECT_EQ(tab.Resize(100), 100);
    EXPECT_EQ(ValuesOf(tab), (Values{1, 2, 3}));
    const int* place = tab.Addr(0);
    for (int n = 4; n <= 100; ++n)
        tab.Append(1, &n);
    EXPECT_EQ(tab.Addr(0), place);
    EXPECT_EQ(tab.Resize(2), 2);
    EXPECT_EQ(ValuesOf(tab), (Values{1, 2}));
    tab.ZeroCount();
    EXPECT_EQ(tab.Count(), 0);
    tab.Shrink();
    EXPECT_EQ(tab.Resize(-1), 0);
}

TEST(Tab, Copies) {
    const Tab<int> tab = Numbers({1, 2, 3});
    Tab<int> copy(tab);
    copy[0] = 9;
    EXPECT_EQ(ValuesOf(tab), (Values{1, 2, 3}));
    Tab<int> other = Numbers({7, 7, 7, 7});
    other = tab;
    EXPECT_EQ(ValuesOf(other), (Values{1, 2, 3}));
    const Tab<int>& same = other;
    other = same;
    EXPECT_EQ(ValuesOf(other), (Values{1, 2, 3}));
    other = Tab<int>();
    EXPECT_EQ(other.Count(), 0);
}

TEST(Tab, HoldsPointsAndPointers) {
    Tab<Point3> points;
    Point3 point(1, 2, 3);
    points.Append(1, &point);
    EXPECT_TRUE(points[0] == point);
    Tab<Point3*> pointers;
    Point3* pointer = &point;
    pointers.Append(1, &pointer);
    EXPECT_EQ(pointers[0], &point);
}

TEST(Tab, MovesSeldomWhenItGrowsOneByOne) {
    Tab<int> tab;
    int moves = 0;
    const int* place = nullptr;
    for (int n = 0; n < 100000; ++n) {
        tab.Append(1, &n);
        moves += tab.Addr(0) != place;
        place = tab.Addr(0);
    }
    EXPECT_EQ(tab[99999], 99999);
    EXPECT_LT(moves, 60);
}

TEST(Tab, RefusesMoreThanItCanCount) {
    Tab<int> tab = Numbers({1, 2, 3});
    EXPECT_THROW(tab.Append(INT_MAX, tab.Addr(0)), std::bad_alloc);
    EXPECT_EQ(ValuesOf(tab), (Values{1, 2, 3}));
}
