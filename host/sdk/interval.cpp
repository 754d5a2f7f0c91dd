#include <interval.h>

#include <algorithm>
#include <cstdint>

TimeValue Interval::Duration() const {
    if (Empty())
        return 0;
    const std::int64_t ticks = std::int64_t{end_} - start_ + 1;
    return static_cast<TimeValue>(std::min<std::int64_t>(ticks, TIME_PosInfinity));
}

Interval Interval::operator&(const Interval& other) const {
    const Interval both(std::max(start_, other.start_), std::min(end_, other.end_));
    return Empty() || other.Empty() || both.Empty() ? NEVER : both;
}
