#include "kta/gltf/keyframes.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "kta/gltf/document.h"

namespace kta::gltf {
namespace {

// ---------------------------------------------------------------- times

// A time of the file and what stands for it in the document.
struct KeyTime {
    double seconds = 0;
    float stored = 0;
};

// The times at which any curve has a key.
std::vector<KeyTime> KeyTimes(const Track& track, double start) {
    std::vector<double> all;
    for (const Curve& curve : track.curves) {
        for (const CurveKey& key : curve) {
            all.push_back(key.time);
        }
    }
    std::sort(all.begin(), all.end());
    std::vector<KeyTime> times;
    for (const double seconds : all) {
        const float stored = Stored(seconds - start);
        if (times.empty() || stored > times.back().stored) {
            times.push_back({seconds, stored});
        }
    }
    return times;
}

// The last time in the document before one of its times.
KeyTime Before(const KeyTime& time, double start) {
    const float stored = std::nextafter(time.stored, -std::numeric_limits<float>::infinity());
    return {std::min(double{stored} + start, std::nextafter(time.seconds, start - 1)), stored};
}

// ---------------------------------------------------------------- segments

// Whether both handles stand at a third of the time, so that the curve's value is a cubic of time.
bool IsEven(const CurveKey& from, const CurveKey& to) {
    constexpr double kNearly = 1e-4;
    const auto isEven = [](KTATangentCode code, const KTATangent& handle) {
        return code != kTangentBezier || std::abs(handle.length - 1.0) <= kNearly;
    };
    return isEven(from.outCode, from.out) && isEven(to.inCode, to.in);
}

bool IsStep(const CurveKey& from, const CurveKey& to) {
    return from.outCode == kTangentStep || to.inCode == kTangentStep;
}

bool IsStraight(const CurveKey& from, const CurveKey& to) {
    return from.outCode != kTangentBezier && to.inCode != kTangentBezier;
}

// What there is between a track's keys.
struct Shape {
    bool hasMotion = false;  // that is no step
    bool hasSteps = false;   // to another value
    bool hasCubics = false;
    bool hasBends = false;  // curves that are no cubics of time
};

Shape ShapeOf(const Track& track) {
    Shape shape;
    for (const Curve& curve : track.curves) {
        for (std::size_t i = 1; i < curve.size(); ++i) {
            const CurveKey& from = curve[i - 1];
            const CurveKey& to = curve[i];
            if (IsStep(from, to)) {
                shape.hasSteps = shape.hasSteps || from.value != to.value;
            } else if (IsStraight(from, to)) {
                shape.hasMotion = shape.hasMotion || from.value != to.value;
            } else {
                shape.hasMotion = true;
                (IsEven(from, to) ? shape.hasCubics : shape.hasBends) = true;
            }
        }
    }
    return shape;
}

// Of the curve in values a second, where it is a cubic of time (Hermite's); 0 at a step and beyond
// the keys. `isBefore` asks for what leads to the time, else for what comes from it.
double SlopeAt(const Curve& curve, double seconds, bool isBefore) {
    const auto behind =
        isBefore ? std::lower_bound(curve.begin(), curve.end(), seconds,
                                    [](const CurveKey& key, double t) { return key.time < t; })
                 : std::upper_bound(curve.begin(), curve.end(), seconds,
                                    [](double t, const CurveKey& key) { return t < key.time; });
    if (behind == curve.begin() || behind == curve.end() || IsStep(*(behind - 1), *behind)) {
        return 0;
    }
    const CurveKey& from = *(behind - 1);
    const CurveKey& to = *behind;
    const double span = to.time - from.time;
    const double straight = (to.value - from.value) / span;
    const double first = from.outCode == kTangentBezier ? from.out.slope : straight;
    const double last = to.inCode == kTangentBezier ? to.in.slope : straight;
    if (seconds == from.time || seconds == to.time) {
        return seconds == from.time ? first : last;
    }
    const double s = (seconds - from.time) / span;
    return 6 * s * (1 - s) * straight + (1 - s) * (1 - 3 * s) * first + s * (3 * s - 2) * last;
}

// Whether a curve steps to another value at a time.
bool StepsAt(const Track& track, double seconds) {
    return std::any_of(track.curves.begin(), track.curves.end(), [seconds](const Curve& curve) {
        const auto key = std::lower_bound(curve.begin(), curve.end(), seconds,
                                          [](const CurveKey& k, double t) { return k.time < t; });
        return key != curve.end() && key != curve.begin() && key->time == seconds &&
               IsStep(*(key - 1), *key) && (key - 1)->value != key->value;
    });
}

// How far the control points of curves are apart on their way, between two times.
double WayOf(const Curve& curve, double from, double to) {
    auto key = std::upper_bound(curve.begin(), curve.end(), from,
                                [](double t, const CurveKey& k) { return t < k.time; });
    if (key == curve.begin() || key == curve.end() || IsStep(*(key - 1), *key)) {
        return 0;
    }
    const CurveKey& a = *(key - 1);
    const double span = key->time - a.time;
    const double out = a.outCode == kTangentBezier ? a.out.slope * span / 3 : 0;
    const double in = key->inCode == kTangentBezier ? key->in.slope * span / 3 : 0;
    const double way = std::abs(out) + std::abs(in) + std::abs(key->value - in - a.value - out);
    return way * std::min(1.0, (to - from) / span);
}

// ---------------------------------------------------------------- sampling

// Samples a function until straight ways between the samples are near enough. `Track` is asked by a
// policy: its Value, At(seconds), Between(a, b, share), IsNear(a, b), Pieces(from, to), Append.
template <typename Policy>
class Sampler {
  public:
    Sampler(const Policy& policy, std::size_t mostKeys, double start, Keyframes& keyframes)
        : policy_(policy), left_(mostKeys), start_(start), keyframes_(keyframes) {}

    using Value = typename Policy::Value;

    void AddKey(const KeyTime& time, const Value& value) {
        keyframes_.times.push_back(time.stored);
        policy_.Append(value, keyframes_.values);
    }

    // The keys behind `from` up to and without `to`.
    void AddBetween(const KeyTime& from, const Value& first, const KeyTime& to, const Value& last) {
        const std::size_t pieces =
            std::clamp<std::size_t>(policy_.Pieces(from.seconds, to.seconds), 1, left_ + 1);
        left_ -= pieces - 1;
        KeyTime begin = from;
        Value atBegin = first;
        for (std::size_t i = 1; i <= pieces; ++i) {
            const KeyTime end = i == pieces ? to : Within(from, to, double(i) / double(pieces));
            if (i < pieces && (end.stored <= begin.stored || end.stored >= to.stored)) {
                continue;
            }
            const Value atEnd = i == pieces ? last : policy_.At(end.seconds);
            Halve(begin, atBegin, end, atEnd);
            if (i < pieces) {
                AddKey(end, atEnd);
            }
            begin = end;
            atBegin = atEnd;
        }
    }

  private:
    KeyTime Within(const KeyTime& from, const KeyTime& to, double share) const {
        const float stored =
            Stored(double{from.stored} + (double{to.stored} - double{from.stored}) * share);
        return {double{stored} + start_, stored};
    }

    bool IsNear(const KeyTime& from, const Value& first, const KeyTime& to,
                const Value& last) const {
        constexpr int kParts = 8;
        for (int i = 1; i < kParts; ++i) {
            const double share = double(i) / kParts;
            const double seconds = from.seconds + (to.seconds - from.seconds) * share;
            if (!policy_.IsNear(policy_.Between(first, last, share), policy_.At(seconds))) {
                return false;
            }
        }
        return true;
    }

    // As deep as halves of a time can be told apart.
    void Halve(const KeyTime& from, const Value& first, const KeyTime& to, const Value& last) {
        if (IsNear(from, first, to, last)) {
            return;
        }
        const KeyTime middle = Within(from, to, 0.5);
        if (middle.stored <= from.stored || middle.stored >= to.stored) {
            return;
        }
        if (left_ == 0) {
            keyframes_.isCut = true;
            return;
        }
        --left_;
        const Value atMiddle = policy_.At(middle.seconds);
        Halve(from, first, middle, atMiddle);
        AddKey(middle, atMiddle);
        Halve(middle, atMiddle, to, last);
    }

    const Policy& policy_;
    std::size_t left_;
    double start_;
    Keyframes& keyframes_;
};

class VectorPolicy {
  public:
    using Value = Vector3;

    VectorPolicy(const Track& track, const Vector3& without, const Vector3& factors)
        : track_(track), without_(without), factors_(factors) {
        double range = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            const auto [least, greatest] = std::minmax_element(
                track.curves[i].begin(), track.curves[i].end(),
                [](const CurveKey& a, const CurveKey& b) { return a.value < b.value; });
            if (least != track.curves[i].end()) {
                range = std::max(range, greatest->value - least->value);
            }
            for (std::size_t k = 1; k < track.curves[i].size(); ++k) {
                range = std::max(range, WayOf(track.curves[i], track.curves[i][k - 1].time,
                                              track.curves[i][k].time) /
                                            3);
            }
        }
        tolerance_ = range * kMostShareOff;
    }

    Vector3 At(double seconds) const { return VectorAt(track_, seconds, without_); }
    Vector3 Between(const Vector3& a, const Vector3& b, double share) const {
        return a + (b - a) * share;
    }
    bool IsNear(const Vector3& a, const Vector3& b) const { return !(Length(a - b) > tolerance_); }
    std::size_t Pieces(double, double) const { return 1; }
    void Append(const Vector3& value, std::vector<float>& values) const {
        for (std::size_t i = 0; i < 3; ++i) {
            values.push_back(Stored(value[i] * factors_[i]));
        }
    }

  private:
    const Track& track_;
    Vector3 without_;
    Vector3 factors_;
    double tolerance_ = 0;
};

class RotationPolicy {
  public:
    using Value = Quaternion;

    explicit RotationPolicy(const Track& track) : track_(track) {}

    Quaternion At(double seconds) const { return RotationAt(track_, seconds, {0, 0, 0, 1}); }
    Quaternion Between(const Quaternion& a, const Quaternion& b, double share) const {
        return Slerp(a, b, share);
    }
    // The cosine of half the angle is that of two small numbers, so 1 less half its square.
    bool IsNear(const Quaternion& a, const Quaternion& b) const {
        constexpr double kHalf = kMostDegreesOff * std::numbers::pi / 360;
        return !(std::abs(Dot(a, b)) < 1 - kHalf * kHalf / 2);
    }
    // So short that no full turn goes unseen.
    std::size_t Pieces(double from, double to) const {
        constexpr double kMostDegrees = 45;
        double degrees = 0;
        for (const Curve& curve : track_.curves) {
            degrees += WayOf(curve, from, to);
        }
        return degrees < 1e9 ? static_cast<std::size_t>(degrees / kMostDegrees) + 1
                             : std::numeric_limits<std::size_t>::max();
    }
    // Of the two that mean a rotation, the one on the side of the one before.
    void Append(const Quaternion& value, std::vector<float>& values) const {
        Quaternion q = Exchanged(value);
        const std::size_t size = values.size();
        if (size >= 4) {
            double side = 0;
            for (std::size_t i = 0; i < 4; ++i) {
                side += q[i] * values[size - 4 + i];
            }
            if (side < 0) {
                q = {-q[0], -q[1], -q[2], -q[3]};
            }
        }
        for (const double component : q) {
            values.push_back(Stored(component));
        }
    }

  private:
    const Track& track_;
};

// The keys of a keyframed track with straight ways between them; `isExact` says that these are
// what the track has there.
template <typename Policy>
Keyframes StraightKeyframes(const Policy& policy, const Track& track, bool isExact, double start) {
    Keyframes keyframes;
    const std::vector<KeyTime> times = KeyTimes(track, start);
    Sampler<Policy> sampler(policy, kMostKeysPerKey * times.size() + kMostKeysMore, start,
                            keyframes);
    for (std::size_t i = 0; i < times.size(); ++i) {
        const auto value = policy.At(times[i].seconds);
        sampler.AddKey(times[i], value);
        if (i + 1 == times.size()) {
            break;
        }
        KeyTime end = times[i + 1];
        const bool steps = StepsAt(track, end.seconds);
        if (steps) {
            end = Before(end, start);
        }
        if (end.stored <= times[i].stored) {
            continue;
        }
        const auto atEnd = policy.At(end.seconds);
        if (!isExact) {
            sampler.AddBetween(times[i], value, end, atEnd);
        }
        if (steps) {
            sampler.AddKey(end, atEnd);
        }
    }
    return keyframes;
}

template <typename Policy>
Keyframes StepKeyframes(const Policy& policy, const Track& track, double start) {
    Keyframes keyframes;
    keyframes.interpolation = Interpolation::step;
    for (const KeyTime& time : KeyTimes(track, start)) {
        keyframes.times.push_back(time.stored);
        policy.Append(policy.At(time.seconds), keyframes.values);
    }
    return keyframes;
}

// ---------------------------------------------------------------- cubics

Vector3 SlopesAt(const Track& track, double seconds, bool isBefore) {
    constexpr std::size_t kExchanged[] = {0, 2, 1};  // 3ds Max's axes in the file's
    Vector3 slopes{};
    for (std::size_t i = 0; i < 3; ++i) {
        slopes[i] = SlopeAt(track.curves[kExchanged[i]], seconds, isBefore);
    }
    return slopes;
}

// A cubic goes on as it was where another curve's key parts it.
Keyframes CubicKeyframes(const VectorPolicy& policy, const Track& track, double start) {
    Keyframes keyframes;
    keyframes.interpolation = Interpolation::cubic;
    const auto add = [&](const KeyTime& time) {
        keyframes.times.push_back(time.stored);
        policy.Append(SlopesAt(track, time.seconds, true), keyframes.values);
        policy.Append(policy.At(time.seconds), keyframes.values);
        policy.Append(SlopesAt(track, time.seconds, false), keyframes.values);
    };
    for (const KeyTime& time : KeyTimes(track, start)) {
        if (StepsAt(track, time.seconds)) {
            const KeyTime before = Before(time, start);
            if (keyframes.times.empty() || before.stored > keyframes.times.back()) {
                add(before);
            }
        }
        add(time);
    }
    return keyframes;
}

// ---------------------------------------------------------------- samples

template <typename Sample, typename Policy>
Keyframes SampledKeyframes(const Policy& policy, const std::vector<Sample>& samples, double start) {
    Keyframes keyframes;
    for (const Sample& sample : samples) {
        const float time = Stored(sample.time - start);
        if (keyframes.times.empty() || time > keyframes.times.back()) {
            keyframes.times.push_back(time);
            policy.Append(sample.value, keyframes.values);
        }
    }
    return keyframes;
}

}  // namespace

Keyframes VectorKeyframes(const Track& track, const Vector3& without, const Vector3& factors,
                          double start) {
    const VectorPolicy policy(track, without, factors);
    if (!track.vectorSamples.empty()) {
        return SampledKeyframes(policy, track.vectorSamples, start);
    }
    const Shape shape = ShapeOf(track);
    if (shape.hasSteps && !shape.hasMotion) {
        return StepKeyframes(policy, track, start);
    }
    if (shape.hasCubics && !shape.hasBends) {
        return CubicKeyframes(policy, track, start);
    }
    return StraightKeyframes(policy, track, !shape.hasBends, start);
}

Keyframes RotationKeyframes(const Track& track, double start) {
    const RotationPolicy policy(track);
    if (!track.rotationSamples.empty()) {
        return SampledKeyframes(policy, track.rotationSamples, start);
    }
    const Shape shape = ShapeOf(track);
    if (shape.hasSteps && !shape.hasMotion) {
        return StepKeyframes(policy, track, start);
    }
    return StraightKeyframes(policy, track, !shape.hasMotion, start);
}

}  // namespace kta::gltf
