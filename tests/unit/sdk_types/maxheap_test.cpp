#include <gtest/gtest.h>
#include <maxheap.h>

#include <new>
#include <type_traits>

namespace {

class Plugged : public MaxHeapOperators {
  public:
    virtual ~Plugged() { ++destroyed; }
    int value = 7;
    static int destroyed;
};

int Plugged::destroyed = 0;

struct Empty : MaxHeapOperators {};

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
    EXPECT_FALSE(std::is_polymorphic_v<Empty>);
}
