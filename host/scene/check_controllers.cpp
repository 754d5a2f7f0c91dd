#include "host/scene/scene_check_parts.h"

namespace maxhost::scene {

void ControllerCheck::Check(const Transform& transform, std::size_t nodes) {
    CheckName(transform.id, false);
    if (const auto* three = std::get_if<PrsTransform>(&transform.kind)) {
        CheckThree("position", three->position, false);
        CheckThree("rotation", three->rotation, true);
        CheckThree("scale", three->scale, false);
    } else if (const auto* constant = std::get_if<MatrixTransform>(&transform.kind)) {
        place_.Finite("matrix", constant->matrix);
    } else if (const auto* footprint = std::get_if<FootprintTransform>(&transform.kind)) {
        place_.Finite("matrix", footprint->matrix);
    } else if (const auto* chain = std::get_if<IkChainTransform>(&transform.kind)) {
        if (chain->startJoint != kNone) {
            place_.Position({"startJoint"}, chain->startJoint, nodes, "nodes");
        }
        if (chain->endJoint != kNone) {
            place_.Position({"endJoint"}, chain->endJoint, nodes, "nodes");
        }
        place_.Finite("matrix", chain->matrix);
    } else {
        const auto& samples = std::get<SampledTransform>(transform.kind).samples;
        if (samples.empty()) {
            place_.Refuse({"samples"}, "an empty list", "at least one sample");
        }
        place_.Ascending("samples", samples);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const Place::Down down(place_, {"samples", i});
            place_.Finite("matrix", samples[i].matrix);
        }
    }
}

void ControllerCheck::CheckName(const std::string& id, bool isFloat) {
    if (id.empty()) {
        return;
    }
    place_.Text("id", id);
    if (!isFloat_.emplace(id, isFloat).second) {
        place_.Refuse({"id"}, import::Shown(id), "an id that no other controller has");
    }
}

void ControllerCheck::CheckThree(std::string_view field,
                                 const std::optional<ThreeAxisController>& controller,
                                 bool isRotation) {
    if (!controller) {
        return;
    }
    const Place::Down down(place_, {field});
    CheckName(controller->id, false);
    if (controller->jointParams) {
        const Place::Down downToJoint(place_, {"jointParams"});
        CheckJoint(*controller->jointParams);
    }
    if (const auto* three = std::get_if<ThreeAxes>(&controller->kind)) {
        static constexpr std::string_view kAxes[] = {"x", "y", "z"};
        for (std::size_t i = 0; i < 3; ++i) {
            if (three->axes[i]) {
                const Place::Down downToAxis(place_, {kAxes[i]});
                CheckFloat(*three->axes[i], 0);
            }
        }
    } else if (const auto* scale = std::get_if<BezierScale>(&controller->kind)) {
        place_.Finite("value", scale->value);
        place_.Ascending("keys", scale->keys);
        for (std::size_t i = 0; i < scale->keys.size(); ++i) {
            const Place::Down downToKey(place_, {"keys", i});
            place_.Finite("value", scale->keys[i].value);
            place_.Finite("inTangent", scale->keys[i].inTangent);
            place_.Finite("outTangent", scale->keys[i].outTangent);
            place_.Finite("inLength", scale->keys[i].inLength);
            place_.Finite("outLength", scale->keys[i].outLength);
        }
    } else {
        const auto& value = std::get<OtherThree>(controller->kind).value;
        place_.Finite("value", value);
        if (isRotation && value == std::array<float, 4>{}) {
            place_.Refuse({"value"}, "a zero quaternion", "a rotation");
        }
        if (!controller->classId) {
            place_.Refuse({"classId"}, "nothing", "a class id");
        }
    }
}

void ControllerCheck::CheckJoint(const JointParams& joint) {
    if (joint.dofs < 1 || joint.dofs > static_cast<int>(joint.min.size())) {
        place_.Refuse({"dofs"}, std::to_string(joint.dofs), "1 to 6 degrees of freedom");
    }
    place_.Finite("min", joint.min);
    place_.Finite("max", joint.max);
}

// `level` counts the list controllers above.
void ControllerCheck::CheckFloat(const FloatController& controller, int level) {
    CheckName(controller.id, true);
    std::visit([this, level](const auto& kind) { CheckKind(kind, level); }, controller.kind);
    if (std::holds_alternative<OtherFloat>(controller.kind) && !controller.classId) {
        place_.Refuse({"classId"}, "nothing", "a class id");
    }
}

void ControllerCheck::CheckKind(const BezierFloat& bezier, int) {
    place_.Finite({"value"}, bezier.value);
    place_.Ascending("keys", bezier.keys);
    for (std::size_t i = 0; i < bezier.keys.size(); ++i) {
        const Key& key = bezier.keys[i];
        place_.Finite({"keys", i, "value"}, key.value);
        place_.Finite({"keys", i, "inTangent"}, key.inTangent);
        place_.Finite({"keys", i, "outTangent"}, key.outTangent);
        place_.Finite({"keys", i, "inLength"}, key.inLength);
        place_.Finite({"keys", i, "outLength"}, key.outLength);
    }
}

void ControllerCheck::CheckKind(const FloatList& list, int level) {
    place_.Level(level + 1, "a list controller");
    for (std::size_t i = 0; i < list.items.size(); ++i) {
        const Place::Down down(place_, {"items", i});
        place_.Finite({"weight"}, list.items[i].weight);
        if (!list.items[i].controller) {
            place_.Refuse({"controller"}, "nothing", "a float controller");
        }
        const Place::Down downToController(place_, {"controller"});
        CheckFloat(*list.items[i].controller, level + 1);
    }
}

void ControllerCheck::CheckKind(const WireFloat& wire, int) {
    place_.Finite({"value"}, wire.value);
    for (std::size_t i = 0; i < wire.wires.size(); ++i) {
        const Place::Down down(place_, {"wires", i});
        place_.Text("expression", wire.wires[i].expression);
        CheckReference("parent", wire.wires[i].parent, false);
        CheckReference("coController", wire.wires[i].coController, true);
    }
}

void ControllerCheck::CheckKind(const OtherFloat& other, int) {
    place_.Finite({"value"}, other.value);
}

void ControllerCheck::CheckReference(std::string_view field, const std::string& id, bool isFloat) {
    if (!id.empty()) {
        references_.push_back({place_.Pointer({field}), id, isFloat});
    }
}

void ControllerCheck::CheckReferences() const {
    for (const Reference& reference : references_) {
        const auto named = isFloat_.find(reference.id);
        if (named == isFloat_.end()) {
            throw import::SceneError(reference.pointer, import::Shown(reference.id),
                                     "the id of a controller or transform of the scene");
        }
        if (reference.isFloat && !named->second) {
            throw import::SceneError(reference.pointer, import::Shown(reference.id),
                                     "the id of a float controller");
        }
    }
}

}  // namespace maxhost::scene
