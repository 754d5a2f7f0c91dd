#include "tests/unit/assimp_import/moving_node.h"

#include <cmath>
#include <variant>

namespace {

constexpr double kPi = 3.14159265358979323846;

const maxhost::scene::PrsTransform& PrsOf(const maxhost::scene::Node& node) {
    return std::get<maxhost::scene::PrsTransform>(node.transform.value().kind);
}

const AxisKeys& KeysOf(const maxhost::scene::ThreeAxisController& controller, int axis) {
    const auto& three = std::get<maxhost::scene::ThreeAxes>(controller.kind);
    return std::get<maxhost::scene::BezierFloat>(
               three.axes.at(static_cast<std::size_t>(axis)).value().kind)
        .keys;
}

void Copy(const PositionKeys& from, aiVectorKey*& to, unsigned& count) {
    count = static_cast<unsigned>(from.size());
    to = new aiVectorKey[from.size()];
    for (std::size_t i = 0; i < from.size(); ++i) {
        to[i] = aiVectorKey(from[i].first, from[i].second);
    }
}

}  // namespace

void SetKeys(aiNodeAnim& channel, const PositionKeys& position, const RotationKeys& rotation,
             const PositionKeys& scale) {
    Copy(position, channel.mPositionKeys, channel.mNumPositionKeys);
    Copy(scale, channel.mScalingKeys, channel.mNumScalingKeys);
    channel.mNumRotationKeys = static_cast<unsigned>(rotation.size());
    channel.mRotationKeys = new aiQuatKey[rotation.size()];
    for (std::size_t i = 0; i < rotation.size(); ++i) {
        channel.mRotationKeys[i] = aiQuatKey(rotation[i].first, rotation[i].second);
    }
}

aiQuaternion Turned(const aiVector3D& axis, double degrees) {
    return aiQuaternion(axis, static_cast<float>(degrees * kPi / 180));
}

const AxisKeys& PositionKeysOf(const maxhost::scene::Node& node, int axis) {
    return KeysOf(PrsOf(node).position.value(), axis);
}

const AxisKeys& RotationKeysOf(const maxhost::scene::Node& node, int axis) {
    return KeysOf(PrsOf(node).rotation.value(), axis);
}

const maxhost::scene::BezierScale& ScaleOf(const maxhost::scene::Node& node) {
    return std::get<maxhost::scene::BezierScale>(PrsOf(node).scale.value().kind);
}

std::vector<int> TimesOf(const AxisKeys& keys) {
    std::vector<int> times;
    for (const maxhost::scene::Key& key : keys) {
        times.push_back(key.time);
    }
    return times;
}

std::vector<float> ValuesOf(const AxisKeys& keys) {
    std::vector<float> values;
    for (const maxhost::scene::Key& key : keys) {
        values.push_back(key.value);
    }
    return values;
}

std::vector<double> DegreesOf(const AxisKeys& keys) {
    std::vector<double> degrees;
    for (const maxhost::scene::Key& key : keys) {
        degrees.push_back(std::round(key.value * 180 / kPi * 1000) / 1000 + 0.0);
    }
    return degrees;
}

bool IsConstant(const maxhost::scene::Node& node) {
    return std::holds_alternative<maxhost::scene::MatrixTransform>(node.transform.value().kind);
}
