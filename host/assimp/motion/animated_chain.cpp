#include "host/assimp/motion/animated_chain.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <utility>

namespace maxhost::import {
namespace {

using Matrix3 = aiMatrix3x3t<double>;

// What float matrices of rotations are off by.
constexpr double kFloatNoise = 1e-5;

constexpr double kStillRotation = 1e-6;
constexpr double kStillScale = 1e-6;

// ---------------------------------------------------------------- matrices

Vector Column(const Matrix4& m, int column) {
    return {m[0][column], m[1][column], m[2][column]};
}

Vector PositionOf(const Matrix4& m) {
    return Column(m, 3);
}

using Columns = std::array<Vector, 3>;

Matrix3 MatrixOf(const Columns& c) {
    return {c[0].x, c[1].x, c[2].x, c[0].y, c[1].y, c[2].y, c[0].z, c[1].z, c[2].z};
}

Columns ColumnsOf(const Matrix3& m) {
    return {Vector(m.a1, m.b1, m.c1), Vector(m.a2, m.b2, m.c2), Vector(m.a3, m.b3, m.c3)};
}

// How far from right angles the unit vectors are.
double Skew(const Columns& unit) {
    return std::max(
        {std::abs(unit[0] * unit[1]), std::abs(unit[1] * unit[2]), std::abs(unit[2] * unit[0])});
}

// The rotation nearest to a matrix with a positive determinant: the orthogonal factor of its polar
// decomposition, by Newton's iteration (Higham 1986).
Matrix3 NearestRotation(Matrix3 m) {
    constexpr int kSteps = 30;
    constexpr double kDone = 1e-14;
    for (int i = 0; i < kSteps; ++i) {
        Matrix3 inverse = m;
        inverse.Inverse().Transpose();
        double change = 0;
        for (unsigned row = 0; row < 3; ++row) {
            for (unsigned column = 0; column < 3; ++column) {
                const double next = (m[row][column] + inverse[row][column]) / 2;
                change = std::max(change, std::abs(next - m[row][column]));
                m[row][column] = next;
            }
        }
        if (!(change > kDone)) {
            break;
        }
    }
    return m;
}

// Rotation and scale whose product lies nearest to the columns (least squares), by turns the one
// for the other.
void FitSheared(const Columns& columns, const Columns& unit, Pose& pose) {
    constexpr int kSteps = 12;
    Columns weighted = unit;
    for (int i = 0; i < kSteps; ++i) {
        const Matrix3 rotation = NearestRotation(MatrixOf(weighted));
        const Columns axes = ColumnsOf(rotation);
        pose.rotation = Unit(Quaternion(rotation));
        for (unsigned k = 0; k < 3; ++k) {
            pose.scale[k] = columns[k] * axes[k];
            weighted[k] = columns[k] * pose.scale[k];
        }
    }
}

// ---------------------------------------------------------------- curves

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

template <typename T>
void AddTimes(const Curve<T>& curve, std::vector<double>& once, std::vector<double>& jumps) {
    const std::vector<CurveKey<T>>& keys = curve.keys;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        once.push_back(keys[i].time);
        const bool isJump = i > 0 && (curve.interpolation == Interpolation::step ||
                                      keys[i - 1].time == keys[i].time);
        if (isJump) {
            jumps.push_back(keys[i].time);
        }
    }
}

void SortOnce(std::vector<double>& times) {
    std::sort(times.begin(), times.end());
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

Pose PoseOf(const Matrix4& matrix, const Quaternion* reference) {
    constexpr double kRightAngles = 1e-9;
    constexpr double kFlat = 1e-6;
    const Quaternion rest = reference ? *reference : Quaternion();
    const Columns axes = ColumnsOf(rest.GetMatrix());
    Columns columns, unit;
    Pose pose;
    pose.position = PositionOf(matrix);
    for (int k = 0; k < 3; ++k) {
        columns[k] = Column(matrix, k);
        const double length = columns[k].Length();
        pose.scale[k] = reference && columns[k] * axes[k] < 0 ? -length : length;
        unit[k] = length > 0 ? columns[k] / pose.scale[k] : axes[k];
    }
    double volume = MatrixOf(unit).Determinant();
    if (volume < 0) {
        for (unsigned k = 0; k < 3; ++k) {
            pose.scale[k] = -pose.scale[k];
            unit[k] = unit[k] * -1.0;
        }
        volume = -volume;
    }
    pose.shear = Skew(unit);
    if (pose.shear <= kRightAngles) {
        pose.rotation = Unit(Quaternion(MatrixOf(unit)));
    } else if (volume > kFlat) {
        FitSheared(columns, unit, pose);
    } else {
        pose.rotation = rest;
    }
    return pose;
}

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
    SortOnce(times);
    SortOnce(jumps);
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

}  // namespace maxhost::import
