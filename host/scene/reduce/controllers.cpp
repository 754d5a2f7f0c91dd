#include "host/scene/reduce/kinds.h"

#include <optional>
#include <set>
#include <string>
#include <variant>

namespace maxhost::scene {

namespace {

void CutController(std::optional<ThreeAxisController>& controller, Keeper& keep) {
    if (!controller) {
        return;
    }
    if (!keep()) {
        controller.reset();
        return;
    }
    if (controller->jointParams && !keep()) {
        controller->jointParams.reset();
    }
    if (auto* const three = std::get_if<ThreeAxes>(&controller->kind)) {
        for (auto& axis : three->axes) {
            if (axis && !keep()) {
                axis.reset();
            }
        }
    }
}

}  // namespace

void CutControllers(Scene& scene, Keeper& keep) {
    for (Node& node : scene.nodes) {
        if (!node.transform) {
            continue;
        }
        if (auto* const parts = std::get_if<PrsTransform>(&node.transform->kind)) {
            for (auto* const controller : {&parts->position, &parts->rotation, &parts->scale}) {
                CutController(*controller, keep);
            }
        }
    }
}

void CutTransforms(Scene& scene, Keeper& keep) {
    for (Node& node : scene.nodes) {
        const auto* const parts =
            node.transform ? std::get_if<PrsTransform>(&node.transform->kind) : nullptr;
        const bool isPlain = parts != nullptr && !parts->position && !parts->rotation &&
                             !parts->scale && node.transform->id.empty() &&
                             !node.transform->classId;
        if (!isPlain && !keep()) {
            node.transform = Transform{};
        }
    }
}

namespace {

bool CutKeys(FloatController& controller, Keeper& keep) {
    if (auto* const bezier = std::get_if<BezierFloat>(&controller.kind)) {
        const std::size_t keys = bezier->keys.size();
        Filter(bezier->keys, keep);
        return bezier->keys.size() != keys;
    }
    bool isChanged = false;
    if (auto* const list = std::get_if<FloatList>(&controller.kind)) {
        const std::size_t items = list->items.size();
        Filter(list->items, keep);
        isChanged = list->items.size() != items;
        for (FloatListItem& item : list->items) {
            isChanged |= EditShared(item.controller,
                                    [&](FloatController& inner) { return CutKeys(inner, keep); });
        }
    } else if (auto* const wire = std::get_if<WireFloat>(&controller.kind)) {
        const std::size_t wires = wire->wires.size();
        Filter(wire->wires, keep);
        isChanged = wire->wires.size() != wires;
    }
    return isChanged;
}

void CutKeys(ThreeAxisController& controller, Keeper& keep) {
    if (auto* const three = std::get_if<ThreeAxes>(&controller.kind)) {
        for (auto& axis : three->axes) {
            if (axis) {
                CutKeys(*axis, keep);
            }
        }
    } else if (auto* const scale = std::get_if<BezierScale>(&controller.kind)) {
        Filter(scale->keys, keep);
    }
}

}  // namespace

void CutKeys(Scene& scene, Keeper& keep) {
    for (Node& node : scene.nodes) {
        if (!node.transform) {
            continue;
        }
        if (auto* const parts = std::get_if<PrsTransform>(&node.transform->kind)) {
            for (auto* const controller : {&parts->position, &parts->rotation, &parts->scale}) {
                if (*controller) {
                    CutKeys(**controller, keep);
                }
            }
        } else if (auto* const sampled = std::get_if<SampledTransform>(&node.transform->kind)) {
            Filter(sampled->samples, keep);
        }
    }
}

namespace {

void GatherIds(const FloatController& controller, std::set<std::string>& ids) {
    ids.insert(controller.id);
    if (const auto* const list = std::get_if<FloatList>(&controller.kind)) {
        for (const FloatListItem& item : list->items) {
            GatherIds(*item.controller, ids);
        }
    }
}

bool LeaveWiresOut(FloatController& controller, const std::set<std::string>& ids) {
    bool isChanged = false;
    if (auto* const wire = std::get_if<WireFloat>(&controller.kind)) {
        isChanged = std::erase_if(wire->wires, [&](const Wire& one) {
                        return !ids.contains(one.parent) || !ids.contains(one.coController);
                    }) > 0;
    } else if (auto* const list = std::get_if<FloatList>(&controller.kind)) {
        for (FloatListItem& item : list->items) {
            isChanged |= EditShared(
                item.controller, [&](FloatController& inner) { return LeaveWiresOut(inner, ids); });
        }
    }
    return isChanged;
}

template <class Visit>
void ForEachController(Scene& scene, Visit visit) {
    for (Node& node : scene.nodes) {
        auto* const parts =
            node.transform ? std::get_if<PrsTransform>(&node.transform->kind) : nullptr;
        if (parts != nullptr) {
            for (auto* const controller : {&parts->position, &parts->rotation, &parts->scale}) {
                if (*controller) {
                    visit(**controller);
                }
            }
        }
    }
}

}  // namespace

void LeaveWiresOut(Scene& scene) {
    std::set<std::string> ids{""};
    for (const Node& node : scene.nodes) {
        if (node.transform) {
            ids.insert(node.transform->id);
        }
    }
    const auto forEachAxis = [&scene](auto visit) {
        ForEachController(scene, [&](ThreeAxisController& controller) {
            if (auto* const three = std::get_if<ThreeAxes>(&controller.kind)) {
                for (auto& axis : three->axes) {
                    if (axis) {
                        visit(*axis);
                    }
                }
            }
        });
    };
    ForEachController(scene,
                      [&](const ThreeAxisController& controller) { ids.insert(controller.id); });
    forEachAxis([&](const FloatController& axis) { GatherIds(axis, ids); });
    forEachAxis([&](FloatController& axis) { LeaveWiresOut(axis, ids); });
}

}  // namespace maxhost::scene
