#include "kta/tracks.h"

#include <cstdint>
#include <limits>
#include <numbers>

namespace kta {
namespace {

constexpr double kMostLength = 3;  // of a handle: there it reaches the other key's time

// The axes of the file, by their numbers in 3ds Max.
constexpr std::array<std::size_t, 3> kExchanged = {0, 2, 1};

template <std::size_t kCount>
bool AllFinite(const float (&values)[kCount]) {
    return std::all_of(values, values + kCount, [](float v) { return std::isfinite(v); });
}

// ---------------------------------------------------------------- keys

// Takes a key's times in their order.
class Clock {
  public:
    bool Takes(float time) {
        if (!std::isfinite(time) || time < last_) {
            return false;
        }
        last_ = time;
        return true;
    }

  private:
    float last_ = -std::numeric_limits<float>::infinity();
};

// A handle that is none makes its side straight.
KTATangentCode CodeOf(std::uint8_t code, const KTATangent& handle) {
    const bool isHandle = std::isfinite(handle.slope) && handle.length > 0;
    switch (code) {
        case kTangentStep:
            return kTangentStep;
        case kTangentBezier:
            return isHandle ? kTangentBezier : kTangentLinear;
        default:
            return kTangentLinear;
    }
}

CurveKey CurveKeyOf(const KeyframedKey& key, std::size_t axis) {
    CurveKey curveKey;
    curveKey.time = key.head.time;
    curveKey.value = key.head.values[axis];
    curveKey.in = key.tangentRecords[axis];
    curveKey.out = key.tangentRecords[axis + 3];
    curveKey.inCode = CodeOf(key.tangentCodes[axis], curveKey.in);
    curveKey.outCode = CodeOf(key.tangentCodes[axis + 3], curveKey.out);
    return curveKey;
}

// ---------------------------------------------------------------- curves

double Bezier(double a, double b, double c, double d, double u) {
    const double v = 1 - u;
    return v * v * (v * a + 3 * u * b) + u * u * (3 * v * c + u * d);
}

// Where a curve of times from 0 to 1 that never descends reaches a time.
double ParameterAt(double firstHandle, double lastHandle, double time) {
    constexpr int kHalvings = 52;
    const auto at = [=](double u) { return Bezier(0, firstHandle, lastHandle, 1, u); };
    double low = 0;
    double high = 1;
    int done = 0;
    // Most curves are hardly bent in time, and the first halvings are known by the result of a few
    // steps towards it, unless that lies so near one's middle that rounding decides.
    constexpr double kNearlyEven = 1e-4;
    if (std::abs(firstHandle - 1.0 / 3) < kNearlyEven &&
        std::abs(lastHandle - 2.0 / 3) < kNearlyEven) {
        constexpr int kKnown = 42;
        constexpr double kParts = std::uint64_t{1} << kKnown;
        constexpr double kMargin = 1.0 / 32;
        double u = time;
        for (double step = 1; std::abs(step) > 1e-12;) {
            step = time - at(u);
            u += step;
        }
        const double part = std::floor(u * kParts);
        const double within = u * kParts - part;
        if (within > kMargin && within < 1 - kMargin) {
            low = part / kParts;
            high = (part + 1) / kParts;
            done = kKnown;
        }
    }
    for (; done < kHalvings; ++done) {
        const double middle = (low + high) / 2;
        (at(middle) < time ? low : high) = middle;
    }
    return (low + high) / 2;
}

double Between(const CurveKey& from, const CurveKey& to, double seconds) {
    if (from.outCode == kTangentStep || to.inCode == kTangentStep) {
        return from.value;
    }
    const double span = to.time - from.time;
    const double time = (seconds - from.time) / span;
    const double third = (to.value - from.value) / 3;
    if (from.outCode != kTangentBezier && to.inCode != kTangentBezier) {
        return from.value + 3 * third * time;
    }
    double handles[2] = {1.0 / 3, 2.0 / 3};
    double values[2] = {from.value + third, to.value - third};
    if (from.outCode == kTangentBezier) {
        handles[0] = std::min(double{from.out.length}, kMostLength) / 3;
        values[0] = from.value + from.out.slope * span / 3;
    }
    if (to.inCode == kTangentBezier) {
        handles[1] = 1 - std::min(double{to.in.length}, kMostLength) / 3;
        values[1] = to.value - to.in.slope * span / 3;
    }
    return Bezier(from.value, values[0], values[1], to.value,
                  ParameterAt(handles[0], handles[1], time));
}

// The first key behind a time.
template <typename Key>
auto Behind(const std::vector<Key>& keys, double seconds) {
    return std::upper_bound(keys.begin(), keys.end(), seconds,
                            [](double time, const Key& key) { return time < key.time; });
}

// The value of samples that are there; `between` gives that between two.
template <typename Sample, typename Function>
auto SampleAt(const std::vector<Sample>& samples, double seconds, Function between) {
    const auto behind = Behind(samples, seconds);
    if (behind == samples.begin() || behind == samples.end()) {
        return behind == samples.begin() ? samples.front().value : samples.back().value;
    }
    const Sample& from = *(behind - 1);
    return between(from.value, behind->value, (seconds - from.time) / (behind->time - from.time));
}

// Of a right-handed turn about 3ds Max's axis, as it is in the file's axes: their exchange mirrors
// it.
Quaternion About(std::size_t fileAxis, double degrees) {
    const double half = degrees * std::numbers::pi / 360;
    Quaternion q = {0, 0, 0, std::cos(half)};
    q[fileAxis] = -std::sin(half);
    return q;
}

template <typename Visit>
void ForEachTime(const Track& track, Visit visit) {
    const auto ends = [&visit](const auto& keys) {
        if (!keys.empty()) {
            visit(keys.front().time, keys.back().time);
        }
    };
    ends(track.vectorSamples);
    ends(track.rotationSamples);
    for (const Curve& curve : track.curves) {
        ends(curve);
    }
}

}  // namespace

double CurveAt(const Curve& curve, double seconds, double without) {
    if (curve.empty()) {
        return without;
    }
    const auto behind = Behind(curve, seconds);
    if (behind == curve.begin() || behind == curve.end()) {
        return behind == curve.begin() ? curve.front().value : curve.back().value;
    }
    const CurveKey& from = *(behind - 1);
    return seconds == from.time ? from.value : Between(from, *behind, seconds);
}

bool Track::IsKeyframed() const {
    return std::any_of(curves.begin(), curves.end(), [](const Curve& c) { return !c.empty(); });
}

double Track::FirstTime() const {
    double first = std::numeric_limits<double>::infinity();
    ForEachTime(*this, [&first](double begin, double) { first = std::min(first, begin); });
    return std::isfinite(first) ? first : 0;
}

double Track::LastTime() const {
    double last = -std::numeric_limits<double>::infinity();
    ForEachTime(*this, [&last](double, double end) { last = std::max(last, end); });
    return std::isfinite(last) ? last : 0;
}

Track TrackOf(const KeyTrack& keys) {
    Track track;
    Clock clock;
    for (const KTAVectorSample& sample : keys.vectorSamples) {
        if (AllFinite(sample.values) && clock.Takes(sample.time)) {
            track.vectorSamples.push_back(
                {sample.time, {sample.values[0], sample.values[1], sample.values[2]}});
        }
    }
    for (const KTARotationSample& sample : keys.rotationSamples) {
        if (AllFinite(sample.values) && clock.Takes(sample.time)) {
            const auto& v = sample.values;
            track.rotationSamples.push_back(
                {sample.time, Normalized(Quaternion{v[0], v[1], v[2], v[3]})});
        }
    }
    for (const KeyframedKey& key : keys.keyframedKeys) {
        if (!AllFinite(key.head.values) || !clock.Takes(key.head.time)) {
            continue;
        }
        for (std::size_t axis = 0; axis < 3; ++axis) {
            if ((key.head.axisMask >> axis & 1) != 0) {
                track.curves[axis].push_back(CurveKeyOf(key, axis));
            }
        }
    }
    return track;
}

Vector3 VectorAt(const Track& track, double seconds, const Vector3& without) {
    if (!track.vectorSamples.empty()) {
        return SampleAt(track.vectorSamples, seconds,
                        [](const Vector3& from, const Vector3& to, double share) {
                            return from + (to - from) * share;
                        });
    }
    Vector3 value{};
    for (std::size_t i = 0; i < 3; ++i) {
        value[i] = CurveAt(track.curves[kExchanged[i]], seconds, without[i]);
    }
    return value;
}

Quaternion RotationAt(const Track& track, double seconds, const Quaternion& without) {
    if (!track.rotationSamples.empty()) {
        return SampleAt(track.rotationSamples, seconds, Slerp);
    }
    if (!track.IsKeyframed()) {
        return without;
    }
    const auto turn = [&](std::size_t fileAxis) {
        return About(fileAxis, CurveAt(track.curves[kExchanged[fileAxis]], seconds, 0));
    };
    return turn(1) * turn(2) * turn(0);
}

}  // namespace kta
