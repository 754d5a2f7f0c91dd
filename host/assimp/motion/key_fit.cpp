#include "host/assimp/motion/key_fit.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace maxhost::import {
namespace {

using scene::Tangent;

// ---------------------------------------------------------------- ticks

// Of the tolerance, for what a key's time is rounded by.
constexpr double kShareOfTolerance = 0.25;

// Ticks that a sum of float seconds is off by at most.
constexpr double kTimeNoise = 0.01;

int TickOf(double time, bool isStep) {
    return static_cast<int>(isStep ? std::ceil(time - kTimeNoise) : std::floor(time + 0.5));
}

// Adds the times `first` to `last`, which fall on one tick; `next` is the tick of those behind.
void AddShared(std::vector<Knot>& knots, const std::vector<double>& times, std::size_t first,
               std::size_t last, int tick, double next) {
    const bool isBehind = times[last] > tick && times[first] < times[last];
    const bool hasRoom = isBehind ? tick + 1 < next : knots.empty() || knots.back().tick < tick - 1;
    if (hasRoom) {
        knots.push_back({isBehind ? tick : tick - 1, first, true});
        knots.push_back({isBehind ? tick + 1 : tick, last, true});
    } else {
        knots.push_back({tick, last, true});
    }
}

// ---------------------------------------------------------------- one span

struct Slopes {
    Vector out, in;  // forward in time
};

class Fitter {
  public:
    Fitter(const Motion& motion, const FitRules& rules) : motion_(motion), rules_(rules) {}

    std::vector<FittedKey> Fit(const std::vector<double>& times) {
        const bool isStep = rules_.interpolation == Interpolation::step;
        const std::vector<Knot> knots = KnotsOf(times, isStep);
        const auto tickBehind = [&](std::size_t i) {
            return i + 1 < knots.size() ? knots[i + 1].tick : std::numeric_limits<int>::max();
        };
        Start(knots[0], TimeAt(knots[0], times), tickBehind(0));
        for (std::size_t i = 1; i < knots.size(); ++i) {
            SampleSpan(KeyPoint(knots[i], TimeAt(knots[i], times), tickBehind(i),
                                span_.back().sample.value));
            if (isStep) {
                AddKey(span_.back(), Tangent::step, {});
            } else {
                FitRange(0, span_.size() - 1);
            }
        }
        return std::move(keys_);
    }

  private:
    struct Point {
        Motion::Sample sample;
        int tick = 0;
        bool canBeKey = false;
    };

    // ---- samples

    // At a jump, the first of two keys of one time shows what stands before it.
    static double TimeAt(const Knot& knot, const std::vector<double>& times) {
        constexpr double kJustBefore = 1e-6;
        const double time = times[knot.key];
        const bool isJump = knot.key + 1 < times.size() && times[knot.key + 1] == time;
        return isJump ? time - kJustBefore : time;
    }

    Point PointAt(int tick, double time, const Vector& near) const {
        return {motion_.At(time, near), tick, false};
    }

    // The key's own value; where rounding its time costs too much, the motion's at the key's tick,
    // or at the frame or half a frame that is less than a tick away.
    Point KeyPoint(const Knot& knot, double time, int next, const Vector& near) const {
        const Point own = PointAt(knot.tick, time, near);
        if (knot.isMoved || rules_.interpolation == Interpolation::step) {
            return own;
        }
        const auto errorAt = [&](double t) {
            return t == time ? motion_.Error(own.sample.value, own.sample)
                             : motion_.ErrorAt(own.sample.value, t);
        };
        // The key moves the curve on both of its sides by as much as its time is off.
        if (std::max(errorAt(knot.tick), errorAt(2 * time - knot.tick)) <=
            kShareOfTolerance * rules_.tolerance) {
            return own;
        }
        const int seen = SeenTick(time);
        const bool hasRoom = seen < next && (keys_.empty() || seen > keys_.back().time);
        const int tick = hasRoom ? seen : knot.tick;
        return PointAt(tick, tick, own.sample.value);
    }

    // The frame or half a frame less than a tick from the time, else the nearest tick.
    int SeenTick(double time) const {
        const double half = std::max(1.0, rules_.frame / 2.0);
        const double seen = std::floor(std::round(time / half) * half);
        return static_cast<int>(std::abs(seen - time) < 1 ? seen : std::floor(time + 0.5));
    }

    void Start(const Knot& knot, double time, int next) {
        const Point first = KeyPoint(knot, time, next, Vector());
        span_ = {first};
        const Tangent type =
            rules_.interpolation == Interpolation::step ? Tangent::step : Tangent::linear;
        keys_.push_back({first.tick, first.sample.value, type, type, {}, {}});
    }

    // From the last key on; the angles of `to` are only near those of the last key.
    void SampleSpan(const Point& to) {
        constexpr double kNearestToKey = 0.25;  // frames
        const Point from = span_.back();
        span_ = {from};
        if (rules_.frame > 0 && rules_.interpolation != Interpolation::step) {
            const double half = rules_.frame / 2.0;
            const double margin = kNearestToKey * rules_.frame;
            for (double n = std::floor(from.tick / half) + 1; n * half < to.tick; ++n) {
                const double t = n * half;
                Point point =
                    PointAt(static_cast<int>(std::floor(t)), t, span_.back().sample.value);
                point.canBeKey =
                    std::fmod(n, 2) == 0 && t - from.tick >= margin && to.tick - t >= margin;
                span_.push_back(point);
            }
        }
        const Vector near = span_.back().sample.value;
        span_.push_back({motion_.Again(to.sample, near), to.tick, false});
    }

    // ---- keys

    void AddKey(const Point& point, Tangent type, const Slopes& slopes) {
        FittedKey& before = keys_.back();
        before.outType = type;
        before.outTangent = slopes.out;
        keys_.push_back({point.tick, point.sample.value, type, type, -slopes.in, {}});
    }

    // Adds the keys behind the one at point `i` up to the one at point `k`.
    void FitRange(std::size_t i, std::size_t k) {
        if (ErrorOfLine(i, k) <= rules_.tolerance) {
            AddKey(span_[k], Tangent::linear, {});
            return;
        }
        const Point turned = PoleKey(span_[i], span_[k]);
        if (turned.canBeKey && ErrorOfLine(turned, i, k) <= rules_.tolerance) {
            AddKey(turned, Tangent::linear, {});
            lastExtra_ = FrameOf(turned);
            AddKey(span_[k], Tangent::linear, {});
            return;
        }
        const bool isCubic = rules_.interpolation == Interpolation::cubic;
        const std::size_t middle = Middle(i, k);
        if (middle == k || isCubic) {
            const Slopes slopes = SlopesOf(i, k);
            const double error = ErrorOfCurve(i, k, slopes);
            if (error <= rules_.tolerance) {
                AddKey(span_[k], Tangent::custom, slopes);
                return;
            }
            if (middle == k) {
                AddBest(i, k, slopes, error);
                return;
            }
        }
        FitRange(i, middle);
        lastExtra_ = FrameOf(span_[middle]);
        FitRange(middle, k);
    }

    // The point for a key in the middle; `k` where there is none.
    std::size_t Middle(std::size_t i, std::size_t k) const {
        const std::size_t middle = i + (k - i) / 2;
        for (std::size_t step = 0; step <= middle - i; ++step) {
            if (middle - step > i && span_[middle - step].canBeKey) {
                return middle - step;
            }
            if (middle + step < k && span_[middle + step].canBeKey) {
                return middle + step;
            }
        }
        return k;
    }

    // Joins neighbouring keys that neither a line nor a curve with the motion's slopes does: by
    // what comes nearest, the parabola through the point that is farthest off among them.
    void AddBest(std::size_t i, std::size_t k, const Slopes& slopes, double errorOfCurve) {
        const double errorOfLine = ErrorOfLine(i, k);
        const Slopes bent = ParabolaThrough(i, k, Worst(i, k));
        const double errorOfBent = ErrorOfCurve(i, k, bent);
        if (errorOfBent < std::min(errorOfCurve, errorOfLine)) {
            AddKey(span_[k], Tangent::custom, bent);
        } else if (errorOfCurve < errorOfLine) {
            AddKey(span_[k], Tangent::custom, slopes);
        } else {
            AddKey(span_[k], Tangent::linear, {});
        }
    }

    // The slopes at both ends of the parabola through the two points and one between.
    Slopes ParabolaThrough(std::size_t i, std::size_t k, std::size_t between) const {
        const Point& from = span_[i];
        const Point& to = span_[k];
        const double duration = static_cast<double>(to.tick) - from.tick;
        const Vector slope = (to.sample.value - from.sample.value) / duration;
        const Point& point = span_[between];
        const double s = (point.sample.time - from.tick) / duration;
        if (between == k || s <= 0 || s >= 1) {
            return {slope, slope};
        }
        const Vector bend =
            (point.sample.value - OnLine(from, to, point.sample.time)) / (s * (1 - s) * duration);
        return {slope + bend, slope - bend};
    }

    // The point between that strays most from the line; `k` where there is none between.
    std::size_t Worst(std::size_t i, std::size_t k) const {
        std::size_t worst = k;
        double worstError = 0;
        for (std::size_t n = i + 1; n < k; ++n) {
            const Vector onLine = OnLine(span_[i], span_[k], span_[n].sample.time);
            const double error = motion_.Error(onLine, span_[n].sample);
            if (error > worstError) {
                worstError = error;
                worst = n;
            }
        }
        return worst;
    }

    // One tick behind the first of two keys, with the angles that lead to the second. Can be one
    // where these are others than the first key's, as only at a pole, and where the frame has no
    // key beside the motion's own.
    Point PoleKey(const Point& from, const Point& to) const {
        constexpr double kTurn = 0.1;
        Point point = PointAt(from.tick + 1, from.tick + 1, to.sample.value);
        const Vector turn = point.sample.value - from.sample.value;
        point.canBeKey = std::abs(turn.x) + std::abs(turn.z) > kTurn && point.tick < to.tick &&
                         FrameOf(point) > lastExtra_;
        return point;
    }

    int FrameOf(const Point& point) const {
        return static_cast<int>(std::floor(static_cast<double>(point.tick) / rules_.frame));
    }

    // ---- errors

    template <typename ValueAt>
    double WorstError(std::size_t i, std::size_t k, const ValueAt& valueAt) const {
        double worst = 0;
        for (std::size_t n = i + 1; n < k; ++n) {
            worst = std::max(worst, motion_.Error(valueAt(span_[n].sample.time), span_[n].sample));
        }
        return worst;
    }

    static Vector OnLine(const Point& from, const Point& to, double t) {
        return Between(from.sample.value, to.sample.value,
                       (t - from.tick) / (static_cast<double>(to.tick) - from.tick));
    }

    double ErrorOfLine(const Point& from, std::size_t i, std::size_t k) const {
        return WorstError(i, k, [&](double t) { return OnLine(from, span_[k], t); });
    }

    double ErrorOfLine(std::size_t i, std::size_t k) const { return ErrorOfLine(span_[i], i, k); }

    double ErrorOfCurve(std::size_t i, std::size_t k, const Slopes& slopes) const {
        const Point& from = span_[i];
        const Point& to = span_[k];
        const double duration = to.tick - from.tick;
        return WorstError(i, k, [&](double t) {
            return Hermite(from.sample.value, slopes.out, to.sample.value, slopes.in, duration,
                           (t - from.tick) / duration);
        });
    }

    Slopes SlopesOf(std::size_t i, std::size_t k) const {
        constexpr double kSteps = 256;
        const double step = (span_[k].sample.time - span_[i].sample.time) / kSteps;
        return {SlopeAt(span_[i], step), SlopeAt(span_[k], -step)};
    }

    // By the parabola through the point and two more on one side of it.
    Vector SlopeAt(const Point& point, double step) const {
        const Vector& a = point.sample.value;
        const double t = point.sample.time;
        const Vector b = motion_.At(t + step, a).value;
        const Vector c = motion_.At(t + 2 * step, b).value;
        return (b * 4.0 - a * 3.0 - c) / (2 * step);
    }

    const Motion& motion_;
    const FitRules& rules_;
    std::vector<Point> span_;  // from one of the motion's own times to the next, both keys
    std::vector<FittedKey> keys_;
    int lastExtra_ = std::numeric_limits<int>::min();  // frame of the last key in between
};

// The key's own value, but the curve's at the tick where they would be too far apart.
Vector ValueAt(const Curve<Vector>& curve, const Knot& knot, double tolerance) {
    const Vector& own = curve.keys[knot.key].value;
    if (knot.isMoved || curve.interpolation == Interpolation::step) {
        return own;
    }
    const Vector there = curve.At(knot.tick);
    return (own - there).Length() > kShareOfTolerance * tolerance ? there : own;
}

Tangent TypeOf(Interpolation interpolation) {
    switch (interpolation) {
        case Interpolation::step:
            return Tangent::step;
        case Interpolation::cubic:
            return Tangent::custom;
        default:
            return Tangent::linear;
    }
}

}  // namespace

std::vector<Knot> KnotsOf(const std::vector<double>& times, bool isStep) {
    constexpr double kNoNext = 1e300;
    std::vector<Knot> knots;
    for (std::size_t first = 0; first < times.size();) {
        const int tick = TickOf(times[first], isStep);
        std::size_t behind = first + 1;
        while (behind < times.size() && TickOf(times[behind], isStep) <= tick) {
            ++behind;
        }
        if (behind - first == 1 || isStep) {
            knots.push_back({tick, behind - 1, false});
        } else {
            AddShared(knots, times, first, behind - 1, tick,
                      behind < times.size() ? TickOf(times[behind], isStep) : kNoNext);
        }
        first = behind;
    }
    return knots;
}

std::vector<FittedKey> FitKeys(const Motion& motion, const std::vector<double>& times,
                               const FitRules& rules) {
    return Fitter(motion, rules).Fit(times);
}

std::vector<FittedKey> KeysOf(const Curve<Vector>& curve, double tolerance) {
    std::vector<double> times;
    for (const CurveKey<Vector>& key : curve.keys) {
        times.push_back(key.time);
    }
    const Tangent type = TypeOf(curve.interpolation);
    std::vector<FittedKey> keys;
    for (const Knot& knot : KnotsOf(times, curve.interpolation == Interpolation::step)) {
        const CurveKey<Vector>& key = curve.keys[knot.key];
        keys.push_back(
            {knot.tick, ValueAt(curve, knot, tolerance), type, type, -key.inSlope, key.outSlope});
    }
    return keys;
}

}  // namespace maxhost::import
