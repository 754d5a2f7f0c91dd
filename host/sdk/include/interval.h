// A closed range of times.
#ifndef HOST_SDK_INCLUDE_INTERVAL_H
#define HOST_SDK_INCLUDE_INTERVAL_H

#include <coreexp.h>
#include <maxtypes.h>

// Both ends belong to it. Empty when it ends at TIME_NegInfinity or before its start.
class CoreExport Interval {
  public:
    Interval() : start_(TIME_NegInfinity), end_(TIME_NegInfinity) {}  // empty
    Interval(TimeValue start, TimeValue end) : start_(start), end_(end) {}

    TimeValue Start() const { return start_; }
    TimeValue End() const { return end_; }
    int Empty() const { return end_ == TIME_NegInfinity || end_ < start_; }
    int InInterval(TimeValue t) const { return !Empty() && start_ <= t && t <= end_; }

    // The intersection; NEVER where the two have no tick in common.
    Interval operator&(const Interval& other) const;
    Interval& operator&=(const Interval& other) { return *this = *this & other; }

    int operator==(const Interval& other) const {
        return start_ == other.start_ && end_ == other.end_;
    }
    int operator!=(const Interval& other) const { return !(*this == other); }

  private:
    TimeValue start_, end_;
};

// Temporaries: they cannot be bound to an Interval& that is not const.
#define FOREVER Interval(TIME_NegInfinity, TIME_PosInfinity)
#define NEVER Interval(TIME_NegInfinity, TIME_NegInfinity)

#endif  // HOST_SDK_INCLUDE_INTERVAL_H
