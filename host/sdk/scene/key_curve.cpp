#include "host/sdk/scene/key_curve.h"

#include <algorithm>

namespace maxhost {
namespace {

using scene::Tangent;

constexpr double kThird = 1.0 / 3.0;

// A key's side towards its neighbour.
struct Handle {
    double value;
    Tangent type;
    double tangent;
    double length;
};

struct Cubic {
    double p0, p1, p2, p3;

    double At(double u) const {
        const double v = 1 - u;
        return v * v * v * p0 + 3 * v * v * u * p1 + 3 * v * u * u * p2 + u * u * u * p3;
    }
    double SlopeAt(double u) const {
        const double v = 1 - u;
        return 3 * (v * v * (p1 - p0) + 2 * v * u * (p2 - p1) + u * u * (p3 - p2));
    }
};

double UsedLength(double length) {
    return length <= 0 ? kThird : std::min(length, 1.0);
}

// The u from 0 to 1 with time.At(u) == s. With handle lengths of 0 to 1 the time never runs
// backwards, so the root stays bracketed; Newton's step is taken where it stays inside.
double SolveTime(const Cubic& time, double s) {
    constexpr int kMostSteps = 100;
    double low = 0, high = 1, u = s;
    for (int i = 0; i < kMostSteps; ++i) {
        const double difference = time.At(u) - s;
        if (difference == 0) {
            break;
        }
        (difference > 0 ? high : low) = u;
        double next = u - difference / time.SlopeAt(u);
        if (!(next > low && next < high)) {
            next = low + (high - low) / 2;
        }
        if (next == u) {
            break;
        }
        u = next;
    }
    return u;
}

double EvaluateBezier(const Handle& from, const Handle& to, double duration, double s) {
    const double rise = to.value - from.value;
    const bool linearOut = from.type == Tangent::linear;
    const bool linearIn = to.type == Tangent::linear;
    const double outLength = linearOut ? kThird : UsedLength(from.length);
    const double inLength = linearIn ? kThird : UsedLength(to.length);
    const double outRise = linearOut ? rise * kThird : from.tangent * outLength * duration;
    const double inRise = linearIn ? -rise * kThird : to.tangent * inLength * duration;
    const Cubic time = {0, outLength, 1 - inLength, 1};
    const Cubic value = {from.value, from.value + outRise, to.value + inRise, to.value};
    return value.At(SolveTime(time, s));
}

// `s` from 0 to 1 is the part of the way from one key to the other, `duration` ticks.
double EvaluateSegment(const Handle& from, const Handle& to, double duration, double s) {
    if (from.type == Tangent::linear && to.type == Tangent::linear) {
        return from.value + (to.value - from.value) * s;
    }
    return EvaluateBezier(from, to, duration, s);
}

// Where a time stands on the curve: at one key's value, or between two keys.
template <class Key>
struct Place {
    const Key* from;
    const Key* to;  // null: the value of `from` holds
    double duration;
    double s;
};

template <class Key>
Place<Key> FindPlace(const std::vector<Key>& keys, TimeValue t, Interval& valid) {
    const auto after = std::upper_bound(keys.begin(), keys.end(), t,
                                        [](TimeValue time, const Key& k) { return time < k.time; });
    if (keys.size() == 1) {
        return {&keys.front(), nullptr, 0, 0};
    }
    if (after == keys.begin()) {
        valid &= Interval(TIME_NegInfinity, keys.front().time);
        return {&keys.front(), nullptr, 0, 0};
    }
    if (after == keys.end()) {
        valid &= Interval(keys.back().time, TIME_PosInfinity);
        return {&keys.back(), nullptr, 0, 0};
    }
    const Key& from = *(after - 1);
    if (from.outType == Tangent::step || after->inType == Tangent::step) {
        valid &= Interval(from.time, after->time - 1);
        return {&from, nullptr, 0, 0};
    }
    valid &= Interval(t, t);
    const double duration = static_cast<double>(after->time) - from.time;
    const double passed = static_cast<double>(t) - from.time;
    return {&from, &*after, duration, passed / duration};
}

}  // namespace

double EvaluateKeys(const std::vector<scene::Key>& keys, TimeValue t, Interval& valid) {
    const auto place = FindPlace(keys, t, valid);
    const scene::Key& from = *place.from;
    if (place.to == nullptr) {
        return from.value;
    }
    const scene::Key& to = *place.to;
    return EvaluateSegment({from.value, from.outType, from.outTangent, from.outLength},
                           {to.value, to.inType, to.inTangent, to.inLength}, place.duration,
                           place.s);
}

Double3 EvaluateKeys(const std::vector<scene::Key3>& keys, TimeValue t, Interval& valid) {
    const auto place = FindPlace(keys, t, valid);
    const scene::Key3& from = *place.from;
    Double3 result;
    for (int i = 0; i < 3; ++i) {
        if (place.to == nullptr) {
            result[i] = from.value[i];
            continue;
        }
        const scene::Key3& to = *place.to;
        result[i] = EvaluateSegment(
            {from.value[i], from.outType, from.outTangent[i], from.outLength[i]},
            {to.value[i], to.inType, to.inTangent[i], to.inLength[i]}, place.duration, place.s);
    }
    return result;
}

}  // namespace maxhost
