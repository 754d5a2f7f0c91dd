#include "host/app/scene_contents.h"

#include <algorithm>
#include <memory>
#include <set>
#include <variant>
#include <vector>

namespace maxhost::app {
namespace {

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

}  // namespace maxhost::app
