#include "tests/corpus/motion_file.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "tests/corpus/file_bytes.h"

namespace corpus {
namespace {

constexpr double kRadians = 3.14159265358979323846 / 180;
enum { kLinear = 3, kStep = 4, kBezier = 5 };

// ---------------------------------------------------------------- reading

template <std::size_t N>
std::array<float, 4> TakeExchanged(Bytes& bytes) {
    const auto stored = bytes.Take<std::array<float, N>>();
    std::array<float, 4> value{stored[0], stored[2], stored[1], 0};
    if constexpr (N == 4) {
        value[3] = stored[3];
    }
    return value;
}

Vector ToVector(const std::array<float, 4>& v) {
    return {v[0], v[1], v[2]};
}

// The file's quaternions turn the other way than those for column vectors.
Rotation ToRotation(const std::array<float, 4>& q) {
    Rotation rotation(q[3], -q[0], -q[1], -q[2]);
    return rotation.Normalize();
}

MotionPart TakePart(Bytes& bytes) {
    MotionPart part;
    part.name = bytes.TakeName(260);
    part.rest.translation = ToVector(TakeExchanged<3>(bytes));
    part.rest.rotation = ToRotation(TakeExchanged<4>(bytes));
    part.rest.scale = ToVector(TakeExchanged<3>(bytes));
    return part;
}

SampledTrack TakeSampled(Bytes& bytes, std::uint32_t count, char letter) {
    SampledTrack track;
    for (std::uint32_t i = 0; i < count; ++i) {
        track.times.push_back(bytes.Take<float>());
        track.values.push_back(letter == 'R' ? TakeExchanged<4>(bytes) : TakeExchanged<3>(bytes));
    }
    return track;
}

void TakeRecord(Bytes& bytes, KeyframedTrack& track) {
    const auto time = bytes.Take<float>();
    const auto values = bytes.Take<std::array<float, 3>>();
    const auto mask = bytes.Take<std::uint16_t>();
    bytes.Skip(2);
    const auto codes = bytes.Take<std::array<std::uint8_t, 6>>();
    std::array<std::array<float, 2>, 6> tangents{};
    for (int i = 0; i < 6; ++i) {
        if (codes[i] == kBezier) {
            tangents[i] = bytes.Take<std::array<float, 2>>();
        }
    }
    for (int i = 0; i < 3; ++i) {
        if (mask >> i & 1) {
            track.axes[i].push_back(
                {time, values[i], codes[i], codes[i + 3], tangents[i], tangents[i + 3]});
        }
    }
}

void TakeTrack(Bytes& bytes, std::uint32_t version, MotionPart& part) {
    const auto count = bytes.Take<std::uint32_t>();
    ExpectEqual("the interpolation letter", bytes.Take<char>(), 'L');
    const char letter = bytes.Take<char>();
    bytes.Skip(2);
    Tracks& tracks = letter == 'P' ? part.position : letter == 'S' ? part.scale : part.rotation;
    if (version == 1) {
        tracks.sampled = TakeSampled(bytes, count, letter);
        return;
    }
    tracks.keyframed.emplace();
    for (std::uint32_t i = 0; i < count; ++i) {
        TakeRecord(bytes, *tracks.keyframed);
    }
}

// ---------------------------------------------------------------- evaluation

std::array<float, 4> At(const SampledTrack& track, double seconds) {
    constexpr double kRounding = 1e-6;
    const auto after =
        std::upper_bound(track.times.begin(), track.times.end(),
                         static_cast<float>(seconds + kRounding * std::max(1.0, seconds)));
    return track.values[after == track.times.begin() ? 0 : after - track.times.begin() - 1];
}

double Bezier(double a, double b, double c, double d, double u) {
    const double v = 1 - u;
    return v * v * v * a + 3 * v * v * u * b + 3 * v * u * u * c + u * u * u * d;
}

// Inner control points stand a third of a handle's length and slope away, over the time between
// the keys; a side without handle goes straight to the other key.
double Between(const CurveKey& from, const CurveKey& to, double seconds) {
    const double begin = from.time, span = to.time - begin, rise = to.value - from.value;
    const double s = (seconds - begin) / span;
    if (from.outCode == kStep || to.inCode == kStep) {
        return from.value;
    }
    const bool hasOut = from.outCode == kBezier, hasIn = to.inCode == kBezier;
    const double x1 = hasOut ? from.out[0] / 3 : 1.0 / 3, x2 = hasIn ? 1 - to.in[0] / 3 : 2.0 / 3;
    const double y1 = from.value + (hasOut ? from.out[1] / 3 * span : rise / 3);
    const double y2 = to.value - (hasIn ? to.in[1] / 3 * span : rise / 3);
    double low = 0, high = 1;
    for (int i = 0; i < 60; ++i) {
        const double middle = (low + high) / 2;
        (Bezier(0, x1, x2, 1, middle) < s ? low : high) = middle;
    }
    return Bezier(from.value, y1, y2, to.value, low);
}

double At(const std::vector<CurveKey>& keys, double seconds, double without) {
    if (keys.empty()) {
        return without;
    }
    const auto after =
        std::upper_bound(keys.begin(), keys.end(), seconds,
                         [](double time, const CurveKey& key) { return time < key.time; });
    if (after == keys.begin() || after == keys.end()) {
        return after == keys.begin() ? keys.front().value : keys.back().value;
    }
    return Between(*(after - 1), *after, seconds);
}

Vector At(const KeyframedTrack& track, double seconds, double without) {
    return {At(track.axes[0], seconds, without), At(track.axes[1], seconds, without),
            At(track.axes[2], seconds, without)};
}

Rotation About(unsigned axis, double degrees) {
    Vector direction;
    direction[axis] = 1;
    return Rotation(direction, degrees * kRadians);
}

}  // namespace

Pose MotionPart::At(double seconds) const {
    Pose pose = rest;
    if (position.sampled) {
        pose.translation = ToVector(corpus::At(*position.sampled, seconds));
    } else if (position.keyframed) {
        pose.translation = corpus::At(*position.keyframed, seconds, 0);
    }
    if (rotation.sampled) {
        pose.rotation = ToRotation(corpus::At(*rotation.sampled, seconds));
    } else if (rotation.keyframed) {
        const Vector angles = corpus::At(*rotation.keyframed, seconds, 0);
        pose.rotation = About(2, angles.z) * About(1, angles.y) * About(0, angles.x);
    }
    if (scale.sampled) {
        pose.scale = ToVector(corpus::At(*scale.sampled, seconds));
    } else if (scale.keyframed) {
        pose.scale = corpus::At(*scale.keyframed, seconds, 1);
    }
    return pose;
}

std::vector<MotionPart> ReadMotion(const std::string& path) {
    Bytes bytes(path);
    bytes.Skip(7);
    std::vector<MotionPart> parts;
    while (!bytes.AtEnd()) {
        const auto id = bytes.Take<std::uint32_t>();
        bytes.Skip(4);
        const auto version = bytes.Take<std::uint32_t>();
        if (id == 1) {
            parts.push_back(TakePart(bytes));
        } else if (id == 2 && !parts.empty()) {
            TakeTrack(bytes, version, parts.back());
        } else {
            Differ("a chunk of the motion file has id " + std::to_string(id));
        }
    }
    return parts;
}

}  // namespace corpus
