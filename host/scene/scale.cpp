#include "host/scene/scale.h"

#include <memory>
#include <unordered_map>
#include <utility>
#include <variant>
#include <vector>

#include "host/scene/check.h"

namespace maxhost::import {
namespace {

class Scaler {
  public:
    explicit Scaler(float factor) : factor_(factor) {}

    void Scale(scene::Node& node);

  private:
    void Scale(float& length) const { length *= factor_; }
    void Scale(scene::Vec3& point) const;
    void Scale(std::vector<scene::Vec3>& points) const;
    void Scale(scene::Matrix& matrix) const { Scale(matrix[3]); }

    void Scale(scene::Transform& transform);
    void ScaleKind(scene::PrsTransform& transform);
    void ScaleKind(scene::MatrixTransform& transform) { Scale(transform.matrix); }
    void ScaleKind(scene::SampledTransform& transform);
    void ScaleKind(scene::FootprintTransform& transform) { Scale(transform.matrix); }
    void ScaleKind(scene::IkChainTransform& transform) { Scale(transform.matrix); }

    void ScalePosition(scene::ThreeAxisController& position);
    void ScaleJoint(scene::ThreeAxisController& controller) const;
    void Scale(scene::FloatController& controller);
    void ScaleKind(scene::BezierFloat& bezier) const;
    void ScaleKind(scene::FloatList& list);
    void ScaleKind(scene::WireFloat& wire) const { Scale(wire.value); }
    void ScaleKind(scene::OtherFloat& other) const { Scale(other.value); }

    void Scale(scene::Object& object);
    void Scale(scene::Mesh& mesh) const { Scale(mesh.vertices); }
    void Scale(std::vector<scene::Modifier>& modifiers) const;

    // What the pointer shares is copied and scaled the first time it is met.
    template <class T>
    void ScaleShared(std::shared_ptr<const T>& shared, auto& done) {
        if (!shared) {
            return;
        }
        const auto found = done.find(shared);
        if (found != done.end()) {
            shared = found->second;
            return;
        }
        const auto scaled = std::make_shared<T>(*shared);
        Scale(*scaled);
        done.emplace(std::exchange(shared, scaled), scaled);
    }

    // The keys keep the originals alive, so that no address comes twice.
    template <class T>
    using Copies = std::unordered_map<std::shared_ptr<const T>, std::shared_ptr<const T>>;

    float factor_;
    Copies<scene::Mesh> meshes_;
    Copies<scene::FloatController> controllers_;
};

void Scaler::Scale(scene::Vec3& point) const {
    for (float& length : point) {
        Scale(length);
    }
}

void Scaler::Scale(std::vector<scene::Vec3>& points) const {
    for (scene::Vec3& point : points) {
        Scale(point);
    }
}

void Scaler::Scale(scene::Node& node) {
    if (node.transform) {
        Scale(*node.transform);
    }
    Scale(node.objectOffset);
    if (node.object) {
        Scale(*node.object);
    }
    Scale(node.modifiers);
    Scale(node.referenceModifiers);
}

void Scaler::Scale(scene::Transform& transform) {
    std::visit([this](auto& kind) { ScaleKind(kind); }, transform.kind);
}

void Scaler::ScaleKind(scene::PrsTransform& transform) {
    if (transform.position) {
        ScalePosition(*transform.position);
        ScaleJoint(*transform.position);
    }
    if (transform.rotation) {
        ScaleJoint(*transform.rotation);
    }
    if (transform.scale) {
        ScaleJoint(*transform.scale);
    }
}

void Scaler::ScaleKind(scene::SampledTransform& transform) {
    for (scene::MatrixSample& sample : transform.samples) {
        Scale(sample.matrix);
    }
}

void Scaler::ScalePosition(scene::ThreeAxisController& position) {
    if (auto* three = std::get_if<scene::ThreeAxes>(&position.kind)) {
        for (std::optional<scene::FloatController>& axis : three->axes) {
            if (axis) {
                Scale(*axis);
            }
        }
    } else if (auto* other = std::get_if<scene::OtherThree>(&position.kind)) {
        for (std::size_t i = 0; i < 3; ++i) {
            Scale(other->value[i]);
        }
    }
}

// Joint parameters say by their own flags whether they limit a position or a rotation.
void Scaler::ScaleJoint(scene::ThreeAxisController& controller) const {
    constexpr std::uint32_t kKind = 0xc0000000;
    constexpr std::uint32_t kSliding = 0x80000000;
    if (!controller.jointParams || (controller.jointParams->flags & kKind) != kSliding) {
        return;
    }
    for (std::size_t i = 0; i < controller.jointParams->min.size(); ++i) {
        Scale(controller.jointParams->min[i]);
        Scale(controller.jointParams->max[i]);
    }
}

void Scaler::Scale(scene::FloatController& controller) {
    std::visit([this](auto& kind) { ScaleKind(kind); }, controller.kind);
}

void Scaler::ScaleKind(scene::BezierFloat& bezier) const {
    Scale(bezier.value);
    for (scene::Key& key : bezier.keys) {
        Scale(key.value);
        Scale(key.inTangent);
        Scale(key.outTangent);
    }
}

void Scaler::ScaleKind(scene::FloatList& list) {
    for (scene::FloatListItem& item : list.items) {
        ScaleShared(item.controller, controllers_);
    }
}

void Scaler::Scale(scene::Object& object) {
    constexpr std::uint32_t kGeometry = 0x10;
    constexpr std::uint32_t kShape = 0x40;
    constexpr std::uint32_t kHelper = 0x50;
    const std::uint32_t superClass = object.superClassId.value_or(kGeometry);
    const bool hasSize = superClass == kGeometry || superClass == kShape || superClass == kHelper;
    if (object.parameter0 && hasSize) {
        Scale(*object.parameter0);
    }
    ScaleShared(object.mesh, meshes_);
}

void Scaler::Scale(std::vector<scene::Modifier>& modifiers) const {
    for (scene::Modifier& modifier : modifiers) {
        if (auto* morpher = std::get_if<scene::Morpher>(&modifier.kind)) {
            for (scene::MorphChannel& channel : morpher->channels) {
                Scale(channel.points);
            }
        }
    }
}

}  // namespace

void ScaleLengths(scene::Scene& scene, float factor) {
    Scaler scaler(factor);
    for (scene::Node& node : scene.nodes) {
        scaler.Scale(node);
    }
    scene::Check(scene);
}

}  // namespace maxhost::import
