#include "host/app/scene_contents.h"

#include <algorithm>
#include <set>
#include <utility>
#include <variant>

namespace maxhost::app {
namespace {

template <class... Visitors>
struct Overloaded : Visitors... {
    using Visitors::operator()...;
};

struct Contents {
    bool morphs = false, jointLimits = false;
    bool wires = false, ikChains = false;
};

void Add(const scene::FloatController& controller, Contents& contents) {
    std::visit(Overloaded{[](const scene::BezierFloat&) {},
                          [&](const scene::FloatList& list) {
                              for (const scene::FloatListItem& item : list.items) {
                                  Add(*item.controller, contents);
                              }
                          },
                          [&](const scene::WireFloat&) { contents.wires = true; },
                          [](const scene::OtherFloat&) {}},
               controller.kind);
}

void Add(const std::optional<scene::ThreeAxisController>& controller, Contents& contents) {
    if (!controller) {
        return;
    }
    contents.jointLimits |= controller->jointParams && !controller->jointParams->isDefault;
    if (const auto* three = std::get_if<scene::ThreeAxes>(&controller->kind)) {
        for (const std::optional<scene::FloatController>& axis : three->axes) {
            if (axis) {
                Add(*axis, contents);
            }
        }
    }
}

void Add(const scene::Transform& transform, Contents& contents) {
    if (const auto* prs = std::get_if<scene::PrsTransform>(&transform.kind)) {
        Add(prs->position, contents);
        Add(prs->rotation, contents);
        Add(prs->scale, contents);
    } else if (std::holds_alternative<scene::IkChainTransform>(transform.kind)) {
        contents.ikChains = true;
    }
}

void Add(const std::vector<scene::Modifier>& modifiers, Contents& contents) {
    for (const scene::Modifier& modifier : modifiers) {
        contents.morphs |= std::holds_alternative<scene::Morpher>(modifier.kind);
    }
}

Contents ContentsOf(const scene::Scene& scene) {
    Contents contents;
    for (const scene::Node& node : scene.nodes) {
        Add(node.modifiers, contents);
        Add(node.referenceModifiers, contents);
        if (node.transform) {
            Add(*node.transform, contents);
        }
    }
    return contents;
}

std::uint64_t Sum(std::uint64_t a, std::uint64_t b) {
    return std::min(a + b, kMostMaterials + 1);
}

class MaterialCounter {
  public:
    explicit MaterialCounter(const scene::Scene& scene)
        : scene_(scene), counts_(scene.materials.size(), 0) {}

    std::uint64_t Below(int position) {
        const auto i = static_cast<std::size_t>(position);
        if (counts_[i] == 0) {
            counts_[i] = Below(*scene_.materials[i]);
        }
        return counts_[i];
    }

  private:
    // Nesting is limited by the scene's rules.
    std::uint64_t Below(const scene::Material& material) {
        std::uint64_t count = 1;
        for (const scene::SubMaterial& subMaterial : material.subMaterials) {
            if (const int* position = std::get_if<int>(&subMaterial)) {
                count = Sum(count, Below(*position));
            } else if (const auto* own =
                           std::get_if<std::shared_ptr<const scene::Material>>(&subMaterial)) {
                count = Sum(count, Below(**own));
            }
        }
        return count;
    }

    const scene::Scene& scene_;
    std::vector<std::uint64_t> counts_;  // by position; 0: not known yet
};

}  // namespace

std::uint64_t CountMaterials(const scene::Scene& scene) {
    std::set<int> used;
    for (const scene::Node& node : scene.nodes) {
        if (node.material != scene::kNone) {
            used.insert(node.material);
        }
    }
    MaterialCounter counter(scene);
    std::uint64_t count = 0;
    for (const int position : used) {
        count = Sum(count, counter.Below(position));
    }
    return count;
}

std::vector<std::string> NotExported(const scene::Scene& scene) {
    const Contents contents = ContentsOf(scene);
    const std::pair<bool, const char*> parts[] = {{contents.morphs, "morph targets"},
                                                  {contents.jointLimits, "joint limits"},
                                                  {contents.wires, "wired parameters"},
                                                  {contents.ikChains, "IK chains"}};
    std::vector<std::string> names;
    for (const auto& [isThere, name] : parts) {
        if (isThere) {
            names.emplace_back(name);
        }
    }
    return names;
}

}  // namespace maxhost::app
