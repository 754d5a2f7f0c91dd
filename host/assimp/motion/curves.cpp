#include "host/assimp/motion/curves.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <utility>

namespace maxhost::import {
namespace {

// Matrices of rotations in float are off by as much.
constexpr double kFloatNoise = 1e-5;

constexpr double kStillRotation = 1e-6;
constexpr double kStillScale = 1e-6;

template <typename T>
T HermiteOf(const CurveKey<T>& from, const CurveKey<T>& to, double s) {
    return OnCurve(
        Hermite(from.value, from.outSlope, to.value, to.inSlope, to.time - from.time, s));
}

template <typename T, typename Map>
void MapKeys(Curve<T>& curve, const Map& map) {
    for (CurveKey<T>& key : curve.keys) {
        map(key);
    }
}

bool IsUniform(const Curve<Vector>& scale) {
    const auto isUniform = [](const Vector& v) {
        const double noise = kFloatNoise * std::abs(v.x);
        return std::abs(v.x - v.y) <= noise && std::abs(v.x - v.z) <= noise;
    };
    return std::all_of(scale.keys.begin(), scale.keys.end(), [&](const CurveKey<Vector>& key) {
        return isUniform(key.value) && (scale.interpolation != Interpolation::cubic ||
                                        (isUniform(key.inSlope) && isUniform(key.outSlope)));
    });
}

// Whether the matrix turns and scales all axes alike.
bool IsSimilarity(const Pose& pose) {
    Curve<Vector> scale;
    scale.keys = {{0, pose.scale, {}, {}}};
    return pose.shear <= kFloatNoise && pose.scale.x > 0 && IsUniform(scale);
}

bool IsStill(const Channel& channel, double stillness) {
    double size = 0;
    for (const CurveKey<Vector>& key : channel.scale.keys) {
        size = std::max(size, key.value.Length());
    }
    return channel.position.IsConstant(stillness) && channel.rotation.IsConstant(kStillRotation) &&
           channel.scale.IsConstant(kStillScale * size);
}

// Both lists stay in order.
template <typename T>
void AddTimes(const Curve<T>& curve, std::vector<double>& once, std::vector<double>& jumps) {
    const std::vector<CurveKey<T>>& keys = curve.keys;
    const auto oldTimes = static_cast<std::ptrdiff_t>(once.size());
    const auto oldJumps = static_cast<std::ptrdiff_t>(jumps.size());
    for (std::size_t i = 0; i < keys.size(); ++i) {
        once.push_back(keys[i].time);
        const bool isJump = i > 0 && (curve.interpolation == Interpolation::step ||
                                      keys[i - 1].time == keys[i].time);
        if (isJump) {
            jumps.push_back(keys[i].time);
        }
    }
    std::inplace_merge(once.begin(), once.begin() + oldTimes, once.end());
    std::inplace_merge(jumps.begin(), jumps.begin() + oldJumps, jumps.end());
}

void KeepOnce(std::vector<double>& times) {
    times.erase(std::unique(times.begin(), times.end()), times.end());
}

double Greatest(const Curve<Vector>& curve) {
    double greatest = 0;
    for (const CurveKey<Vector>& key : curve.keys) {
        greatest = std::max(greatest, key.value.Length());
    }
    return greatest;
}

double GreatestFactor(const Curve<Vector>& scale) {
    double greatest = 0;
    for (const CurveKey<Vector>& key : scale.keys) {
        greatest = std::max(
            {greatest, std::abs(key.value.x), std::abs(key.value.y), std::abs(key.value.z)});
    }
    return greatest;
}

double GreatestFactor(const Matrix4& m) {
    return std::max({Column(m, 0).Length(), Column(m, 1).Length(), Column(m, 2).Length()});
}

}  // namespace

// ---------------------------------------------------------------- curves

template <typename T>
T Curve<T>::At(double time) const {
    std::size_t behind = 0;
    return At(time, behind);
}

template <typename T>
T Curve<T>::At(double time, std::size_t& behind) const {
    const auto isFirstBehind = [&](std::size_t i) {
        return i > 0 && i <= keys.size() && keys[i - 1].time <= time &&
               (i == keys.size() || time < keys[i].time);
    };
    if (!isFirstBehind(behind) && !isFirstBehind(++behind)) {
        const auto found =
            std::upper_bound(keys.begin(), keys.end(), time,
                             [](double t, const CurveKey<T>& key) { return t < key.time; });
        behind = static_cast<std::size_t>(found - keys.begin());
    }
    const auto after = keys.begin() + static_cast<std::ptrdiff_t>(behind);
    if (after == keys.begin() || after == keys.end()) {
        return OnCurve((after == keys.begin() ? keys.front() : keys.back()).value);
    }
    const CurveKey<T>& from = *(after - 1);
    const double s = (time - from.time) / (after->time - from.time);
    switch (interpolation) {
        case Interpolation::step:
            return OnCurve(from.value);
        case Interpolation::cubic:
            return HermiteOf(from, *after, s);
        default:
            return Between(from.value, after->value, s);
    }
}

template <typename T>
bool Curve<T>::IsConstant(double tolerance) const {
    const T& first = keys.front().value;
    for (std::size_t i = 1; i < keys.size(); ++i) {
        const CurveKey<T>& key = keys[i];
        const CurveKey<T>& before = keys[i - 1];
        // A rotation's two quaternions are one rotation on an arc, but not on a cubic curve.
        const bool isOpposite = interpolation != Interpolation::cubic &&
                                LengthOf(key.value + -1.0 * first) > LengthOf(key.value + first);
        const double change = LengthOf(key.value + (isOpposite ? 1.0 : -1.0) * first);
        const double bulge =
            (key.time - before.time) * std::max(LengthOf(before.outSlope), LengthOf(key.inSlope));
        if (change > tolerance || (interpolation == Interpolation::cubic && bulge > tolerance)) {
            return false;
        }
    }
    return true;
}

template struct Curve<Vector>;
template struct Curve<Quaternion>;

Channel Channel::Still(const Vector& position, const Quaternion& rotation, const Vector& scale) {
    return {{{{0, position, {}, {}}}}, {{{0, rotation, {}, {}}}}, {{{0, scale, {}, {}}}}};
}

Matrix4 Channel::At(double time) const {
    const Matrix3 m = rotation.At(time).GetMatrix();
    const Vector p = position.At(time);
    const Vector s = scale.At(time);
    return {m.a1 * s.x, m.a2 * s.y, m.a3 * s.z, p.x, m.b1 * s.x, m.b2 * s.y, m.b3 * s.z, p.y,
            m.c1 * s.x, m.c2 * s.y, m.c3 * s.z, p.z, 0,          0,          0,          1};
}

// ---------------------------------------------------------------- chains

void AnimatedChain::Append(const Matrix4& fixed) {
    fixed_.back() = fixed_.back() * fixed;
}

void AnimatedChain::Append(const Channel& channel, double stillness) {
    if (IsStill(channel, stillness)) {
        Append(channel.At(0));
    } else {
        moving_.push_back(channel);
        fixed_.emplace_back();
    }
}

Matrix4 AnimatedChain::At(double time) const {
    Matrix4 product = fixed_[0];
    for (std::size_t i = 0; i < moving_.size(); ++i) {
        product = product * moving_[i].At(time) * fixed_[i + 1];
    }
    return product;
}

Quaternion AnimatedChain::RotationAt(double time) const {
    Quaternion product = PoseOf(fixed_[0]).rotation;
    for (std::size_t i = 0; i < moving_.size(); ++i) {
        product = product * moving_[i].rotation.At(time) * PoseOf(fixed_[i + 1]).rotation;
    }
    return product;
}

Pose AnimatedChain::PoseAt(double time) const {
    const Quaternion rotation = RotationAt(time);
    return PoseOf(At(time), &rotation);
}

std::optional<Channel> AnimatedChain::AsChannel() const {
    if (moving_.size() != 1) {
        return std::nullopt;
    }
    const Pose left = PoseOf(fixed_[0]);
    const Pose right = PoseOf(fixed_[1]);
    const bool isRightNone = fixed_[1].IsIdentity();
    const bool isRightRotation = IsSimilarity(right) &&
                                 std::abs(right.scale.x - 1) <= kFloatNoise &&
                                 right.position == Vector() && IsUniform(moving_[0].scale);
    if (!IsSimilarity(left) || !(isRightNone || isRightRotation)) {
        return std::nullopt;
    }
    Channel channel = moving_[0];
    const Matrix3 linear(fixed_[0]);
    MapKeys(channel.position, [&](CurveKey<Vector>& key) {
        key = {key.time, fixed_[0] * key.value, linear * key.inSlope, linear * key.outSlope};
    });
    MapKeys(channel.rotation, [&](CurveKey<Quaternion>& key) {
        const auto turn = [&](const Quaternion& q) { return left.rotation * q * right.rotation; };
        key = {key.time, turn(key.value), turn(key.inSlope), turn(key.outSlope)};
    });
    MapKeys(channel.scale, [&](CurveKey<Vector>& key) {
        const double factor = left.scale.x;
        key = {key.time, factor * key.value, factor * key.inSlope, factor * key.outSlope};
    });
    return channel;
}

std::vector<double> AnimatedChain::Times() const {
    std::vector<double> times, jumps;
    for (const Channel& channel : moving_) {
        AddTimes(channel.position, times, jumps);
        AddTimes(channel.rotation, times, jumps);
        AddTimes(channel.scale, times, jumps);
    }
    KeepOnce(times);
    KeepOnce(jumps);
    if (CommonInterpolation() != Interpolation::step) {
        std::vector<double> all;
        std::merge(times.begin(), times.end(), jumps.begin(), jumps.end(), std::back_inserter(all));
        return all;
    }
    return times;
}

Interpolation AnimatedChain::CommonInterpolation() const {
    bool hasCubic = false, hasLinear = false;
    const auto look = [&](const auto& curve) {
        const bool moves = curve.keys.size() > 1;
        hasCubic = hasCubic || (moves && curve.interpolation == Interpolation::cubic);
        hasLinear = hasLinear || (moves && curve.interpolation == Interpolation::linear);
    };
    for (const Channel& channel : moving_) {
        look(channel.position);
        look(channel.rotation);
        look(channel.scale);
    }
    return hasCubic    ? Interpolation::cubic
           : hasLinear ? Interpolation::linear
                       : Interpolation::step;
}

double AnimatedChain::MostOffset() const {
    double offset = PositionOf(fixed_.back()).Length();
    for (std::size_t i = moving_.size(); i > 0; --i) {
        const Channel& channel = moving_[i - 1];
        offset = Greatest(channel.position) + GreatestFactor(channel.scale) * offset;
        offset = PositionOf(fixed_[i - 1]).Length() + GreatestFactor(fixed_[i - 1]) * offset;
    }
    return offset;
}

double AnimatedChain::MostScale() const {
    double factor = GreatestFactor(fixed_.back());
    for (std::size_t i = 0; i < moving_.size(); ++i) {
        factor *= GreatestFactor(fixed_[i]) * GreatestFactor(moving_[i].scale);
    }
    return factor;
}

Channel Turned(const Channel& channel, const AxisTurn& turn) {
    const auto swapped = [&turn](const Vector& v) {
        return Vector(v[turn.from[0]], v[turn.from[1]], v[turn.from[2]]);
    };
    const auto turned = [&](const Vector& v) {
        return swapped(v).SymMul(Vector(turn.sign[0], turn.sign[1], turn.sign[2]));
    };
    const auto turnedRotation = [&](const Quaternion& q) {
        const Vector axis = turned({q.x, q.y, q.z});
        return Quaternion(q.w, axis.x, axis.y, axis.z);
    };
    Channel result = channel;
    MapKeys(result.position, [&](CurveKey<Vector>& key) {
        key = {key.time, turned(key.value), turned(key.inSlope), turned(key.outSlope)};
    });
    MapKeys(result.rotation, [&](CurveKey<Quaternion>& key) {
        key = {key.time, turnedRotation(key.value), turnedRotation(key.inSlope),
               turnedRotation(key.outSlope)};
    });
    MapKeys(result.scale, [&](CurveKey<Vector>& key) {
        key = {key.time, swapped(key.value), swapped(key.inSlope), swapped(key.outSlope)};
    });
    return result;
}

void AppendLocal(AnimatedChain& chain, const SourceNode& node, const Channels& channels,
                 const AxisTurn& turn, double stillness) {
    for (const SourceNode::Link& link : node.links) {
        const auto channel = channels.find(link.node);
        if (channel == channels.end()) {
            chain.Append(turn.Conjugate(link.matrix));
        } else {
            chain.Append(Turned(channel->second, turn), stillness);
        }
    }
}

std::vector<Matrix4> LocalsAtStart(const SourceTree& tree, const Channels& channels) {
    std::vector<Matrix4> locals;
    locals.reserve(tree.nodes.size());
    for (const SourceNode& node : tree.nodes) {
        AnimatedChain chain;
        AppendLocal(chain, node, channels, AxisTurn(), 0);
        locals.push_back(chain.At(0));
    }
    return locals;
}

}  // namespace maxhost::import
