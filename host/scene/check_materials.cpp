#include <algorithm>

#include "host/scene/scene_check_parts.h"

namespace maxhost::scene {
namespace {

// The materials of the scene as a graph: how deep each is by itself, and where it refers to others.
class MaterialCheck {
  public:
    MaterialCheck(const Scene& scene, Place& place) : scene_(scene), place_(place) {}

    void Check();

  private:
    struct Reference {
        std::size_t target;
        int level;  // that the target has below the material of the scene that refers to it
        std::string pointer;
    };
    enum class State { unseen, open, done };
    struct Top {
        std::vector<Reference> references;
        int levels = 1;  // in the end those of what it refers to included
        State state = State::unseen;
    };

    void CheckMaterial(const Material& material, int level, Top& top);
    void CheckNumbers(const Material& material) const;
    void CheckMaps(const Material& material);
    void CheckMap(const Map& map, int level);
    void CheckDepth(std::size_t first);
    void CheckReference(const Reference& reference, Top& from);

    const Scene& scene_;
    Place& place_;
    std::vector<Top> tops_;
};

void MaterialCheck::Check() {
    tops_.resize(scene_.materials.size());
    for (std::size_t i = 0; i < tops_.size(); ++i) {
        const Place::Down down(place_, {"materials", i});
        if (!scene_.materials[i]) {
            place_.Refuse({}, "nothing", "a material");
        }
        CheckMaterial(*scene_.materials[i], 1, tops_[i]);
    }
    for (std::size_t i = 0; i < tops_.size(); ++i) {
        CheckDepth(i);
    }
}

void MaterialCheck::CheckMaterial(const Material& material, int level, Top& top) {
    place_.Level(level, "a material");
    top.levels = std::max(top.levels, level);
    place_.Text("name", material.name);
    CheckNumbers(material);
    CheckMaps(material);
    for (std::size_t i = 0; i < material.subMaterials.size(); ++i) {
        const Place::Down down(place_, {"subMaterials", i});
        if (const int* position = std::get_if<int>(&material.subMaterials[i])) {
            place_.Position({}, *position, tops_.size(), "materials");
            top.references.push_back(
                {static_cast<std::size_t>(*position), level + 1, place_.Pointer()});
        } else if (const auto* own =
                       std::get_if<std::shared_ptr<const Material>>(&material.subMaterials[i])) {
            if (!*own) {
                place_.Refuse({}, "nothing", "a material");
            }
            CheckMaterial(**own, level + 1, top);
        }
    }
}

void MaterialCheck::CheckNumbers(const Material& material) const {
    place_.Finite("ambient", material.ambient);
    place_.Finite("diffuse", material.diffuse);
    place_.Finite("specular", material.specular);
    place_.Finite("selfIllumination", material.selfIllumination);
    place_.Finite({"shininess"}, material.shininess);
    place_.Finite({"shininessStrength"}, material.shininessStrength);
    place_.Finite({"transparency"}, material.transparency);
}

void MaterialCheck::CheckMaps(const Material& material) {
    if (material.kind == MaterialKind::multi && !material.maps.empty()) {
        place_.Refuse({"maps"}, "maps of a multi material", "none");
    }
    std::unordered_set<int> slots;
    for (std::size_t i = 0; i < material.maps.size(); ++i) {
        const MapSlot& slot = material.maps[i];
        const Place::Down down(place_, {"maps", i});
        if (slot.slot < 0 || slot.slot > kMostMapSlot) {
            place_.Refuse({"slot"}, std::to_string(slot.slot),
                          "a slot from 0 to " + std::to_string(kMostMapSlot));
        }
        if (!slots.insert(slot.slot).second) {
            place_.Refuse({"slot"}, std::to_string(slot.slot),
                          "a slot that no other map of the material has");
        }
        place_.Finite({"amount"}, slot.amount);
        if (!slot.map) {
            place_.Refuse({"map"}, "nothing", "a map");
        }
        const Place::Down downToMap(place_, {"map"});
        CheckMap(*slot.map, 1);
    }
}

void MaterialCheck::CheckMap(const Map& map, int level) {
    place_.Level(level, "a map");
    if (const auto* bitmap = std::get_if<BitmapMap>(&map.kind)) {
        place_.Text("file", bitmap->file);
        place_.Finite({"uOffset"}, bitmap->uOffset);
        place_.Finite({"vOffset"}, bitmap->vOffset);
        place_.Finite({"uTiling"}, bitmap->uTiling);
        place_.Finite({"vTiling"}, bitmap->vTiling);
        place_.Finite({"angle"}, bitmap->angle);
    }
    for (std::size_t i = 0; i < map.subMaps.size(); ++i) {
        if (map.subMaps[i]) {
            const Place::Down down(place_, {"subMaps", i});
            CheckMap(*map.subMaps[i], level + 1);
        }
    }
}

// Depth first along the references, on a stack of its own: a chain of them may be as long as the
// list of materials.
void MaterialCheck::CheckDepth(std::size_t first) {
    struct Visit {
        std::size_t top;
        std::size_t next = 0;  // reference
    };
    std::vector<Visit> visits;
    const auto open = [this, &visits](std::size_t top) {
        tops_[top].state = State::open;
        visits.push_back({top});
    };
    if (tops_[first].state == State::unseen) {
        open(first);
    }
    while (!visits.empty()) {
        Visit& visit = visits.back();
        Top& top = tops_[visit.top];
        if (visit.next == top.references.size()) {
            top.state = State::done;
            visits.pop_back();
            continue;
        }
        const Reference& reference = top.references[visit.next];
        if (tops_[reference.target].state == State::unseen) {
            open(reference.target);
        } else {
            CheckReference(reference, top);
            ++visit.next;
        }
    }
}

void MaterialCheck::CheckReference(const Reference& reference, Top& from) {
    const Top& target = tops_[reference.target];
    if (target.state == State::open) {
        throw import::SceneError(reference.pointer, std::to_string(reference.target),
                                 "a material that does not lead back to this one");
    }
    const int levels = reference.level - 1 + target.levels;
    if (levels > kMostLevels) {
        throw import::SceneError(reference.pointer,
                                 std::to_string(reference.target) + ", which makes " +
                                     std::to_string(levels) + " levels of materials",
                                 "at most " + std::to_string(kMostLevels) + " levels");
    }
    from.levels = std::max(from.levels, levels);
}

}  // namespace

void CheckMaterials(const Scene& scene, Place& place) {
    MaterialCheck(scene, place).Check();
}

}  // namespace maxhost::scene
