// Basic types: times, ids, and the pair of numbers that names a class.
#ifndef HOST_SDK_INCLUDE_MAXTYPES_H
#define HOST_SDK_INCLUDE_MAXTYPES_H

#include <strbasic.h>
#include <windows.h>

// A time in ticks.
typedef int TimeValue;

#define TIME_TICKSPERSEC 4800
#define TIME_NegInfinity ((TimeValue)0x80000000)
#define TIME_PosInfinity ((TimeValue)0x7fffffff)

typedef ULONG SClass_ID;
typedef short ParamID;
typedef unsigned short MtlID;

// Unique within one super class only: test the super class id as well.
class Class_ID {
  public:
    Class_ID() : a_(0xffffffff), b_(0xffffffff) {}
    Class_ID(ULONG partA, ULONG partB) : a_(partA), b_(partB) {}

    ULONG PartA() const { return a_; }
    ULONG PartB() const { return b_; }

    int operator==(const Class_ID& other) const { return a_ == other.a_ && b_ == other.b_; }
    int operator!=(const Class_ID& other) const { return !(*this == other); }

  private:
    ULONG a_, b_;
};

// Names an interface that goes beyond a class.
class Interface_ID {
  public:
    Interface_ID() : a_(0), b_(0) {}
    Interface_ID(ULONG partA, ULONG partB) : a_(partA), b_(partB) {}

    ULONG PartA() const { return a_; }
    ULONG PartB() const { return b_; }

    int operator==(const Interface_ID& other) const { return a_ == other.a_ && b_ == other.b_; }
    int operator!=(const Interface_ID& other) const { return !(*this == other); }

  private:
    ULONG a_, b_;
};

#endif  // HOST_SDK_INCLUDE_MAXTYPES_H
