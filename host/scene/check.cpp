#include "host/scene/check.h"

#include <utf8.h>

#include <algorithm>
#include <cmath>
#include <concepts>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <variant>
#include <vector>

#include "host/scene/error.h"
#include "host/scene/fields.h"

namespace maxhost::scene {
namespace {

// Where the check stands: a step of a JSON pointer and the steps before it.
class Place {
  public:
    Place() = default;
    Place(const Place& up, std::string_view name) : up_(&up), name_(name) {}
    template <std::integral T>
    Place(const Place& up, T index) : up_(&up), index_(static_cast<std::size_t>(index)) {}
    Place(const Place&) = default;

    std::string Pointer() const {
        std::string pointer = up_ ? up_->Pointer() : "";
        if (name_.data()) {
            AppendStep(pointer, name_);
        } else if (up_) {
            AppendStep(pointer, index_);
        }
        return pointer;
    }

    [[noreturn]] void Refuse(std::string_view found, std::string_view expected) const {
        throw SceneError(Pointer(), found, expected);
    }

  private:
    const Place* up_ = nullptr;
    std::string_view name_;
    std::size_t index_ = 0;
};

void ExpectFinite(const Place& place, float number) {
    if (!std::isfinite(number)) {
        place.Refuse(Shown(number), "a finite number");
    }
}

void ExpectText(const Place& place, const std::string& text) {
    if (text.find('\0') != std::string::npos) {
        place.Refuse("text with a NUL character", "text without");
    }
    if (!utf8::is_valid(text)) {
        place.Refuse("text that is not UTF-8", "UTF-8");
    }
}

// `list` says what the position is one in, as in "nodes".
void ExpectPosition(const Place& place, std::int64_t position, std::size_t size,
                    std::string_view list) {
    if (position < 0 || static_cast<std::uint64_t>(position) >= size) {
        place.Refuse(std::to_string(position), "a position in " + std::string(list) +
                                                   ", of which there are " + std::to_string(size));
    }
}

bool AreBelow(std::size_t size, const std::array<std::uint32_t, 3>& positions) {
    return positions[0] < size && positions[1] < size && positions[2] < size;
}

// Of face `face` of those at `faces`.
void ExpectPositions(const Place& faces, std::size_t face,
                     const std::array<std::uint32_t, 3>& positions, std::size_t size,
                     std::string_view list) {
    if (AreBelow(size, positions)) {
        return;
    }
    const Place place(faces, face);
    for (std::size_t i = 0; i < positions.size(); ++i) {
        ExpectPosition(Place(place, i), positions[i], size, list);
    }
}

void ExpectPositive(const Place& place, int number) {
    if (number < 1) {
        place.Refuse(std::to_string(number), "a whole number of at least 1");
    }
}

void ExpectLevel(const Place& place, int level, std::string_view thing) {
    if (level > kMostLevels) {
        place.Refuse(std::string(thing) + " at level " + std::to_string(level),
                     "at most " + std::to_string(kMostLevels) + " levels");
    }
}

// Times of keys or samples.
template <class Timed>
void ExpectAscending(const Place& place, const std::vector<Timed>& list) {
    for (std::size_t i = 1; i < list.size(); ++i) {
        if (list[i].time <= list[i - 1].time) {
            Place(Place(place, i), "time")
                .Refuse(std::to_string(list[i].time),
                        "a time after " + std::to_string(list[i - 1].time));
        }
    }
}

// Walks up from every node; a walk ends where an earlier one went.
void CheckParents(const Place& place, const std::vector<Node>& nodes) {
    constexpr int kUnseen = -1;
    std::vector<int> seenBy(nodes.size(), kUnseen);
    for (int first = 0; first < static_cast<int>(nodes.size()); ++first) {
        int node = first;
        while (node != kNone && seenBy[node] == kUnseen) {
            seenBy[node] = first;
            node = nodes[node].parent;
        }
        if (node == kNone || seenBy[node] != first) {
            continue;
        }
        int earliest = node;
        for (int other = nodes[node].parent; other != node; other = nodes[other].parent) {
            earliest = std::min(earliest, other);
        }
        Place(Place(place, earliest), "parent")
            .Refuse(std::to_string(nodes[earliest].parent), "a node that is not below this one");
    }
}

// Ids of controllers and the wires that name them. Wires may name controllers that come later, so
// they are looked up at the end.
class ControllerNames {
  public:
    void Add(const Place& place, const std::string& id, bool isFloat) {
        if (id.empty()) {
            return;
        }
        ExpectText(place, id);
        if (!isFloat_.emplace(id, isFloat).second) {
            place.Refuse(Shown(id), "an id that no other controller has");
        }
    }

    void AddReference(const Place& place, const std::string& id, bool isFloat) {
        if (!id.empty()) {
            references_.push_back({place.Pointer(), id, isFloat});
        }
    }

    void CheckReferences() const {
        for (const Reference& reference : references_) {
            const auto named = isFloat_.find(reference.id);
            if (named == isFloat_.end()) {
                throw SceneError(reference.pointer, Shown(reference.id),
                                 "the id of a controller or transform of the scene");
            }
            if (reference.isFloat && !named->second) {
                throw SceneError(reference.pointer, Shown(reference.id),
                                 "the id of a float controller");
            }
        }
    }

  private:
    struct Reference {
        std::string pointer;
        std::string_view id;
        bool isFloat;
    };

    std::unordered_map<std::string_view, bool> isFloat_;  // by id
    std::vector<Reference> references_;
};

// The materials of the scene as a graph: how deep each is by itself, and where it refers to others.
class MaterialGraph {
  public:
    explicit MaterialGraph(std::size_t size) : tops_(size) {}

    std::size_t Size() const { return tops_.size(); }

    // The scene's material to which the following levels and references belong.
    void Enter(std::size_t top) { top_ = &tops_[top]; }
    void AddLevel(int level) { top_->levels = std::max(top_->levels, level); }
    void AddReference(const Place& place, int target, int level) {
        top_->references.push_back({static_cast<std::size_t>(target), level, place.Pointer()});
    }

    void CheckDepths() {
        for (std::size_t i = 0; i < tops_.size(); ++i) {
            CheckDepth(i);
        }
    }

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

    void CheckDepth(std::size_t first);
    void CheckReference(const Reference& reference, Top& from);

    std::vector<Top> tops_;
    Top* top_ = nullptr;
};

// Depth first along the references, on a stack of its own: a chain of them may be as long as the
// list of materials.
void MaterialGraph::CheckDepth(std::size_t first) {
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

void MaterialGraph::CheckReference(const Reference& reference, Top& from) {
    const Top& target = tops_[reference.target];
    if (target.state == State::open) {
        throw SceneError(reference.pointer, std::to_string(reference.target),
                         "a material that does not lead back to this one");
    }
    const int levels = reference.level - 1 + target.levels;
    if (levels > kMostLevels) {
        throw SceneError(reference.pointer,
                         std::to_string(reference.target) + ", which makes " +
                             std::to_string(levels) + " levels of materials",
                         "at most " + std::to_string(kMostLevels) + " levels");
    }
    from.levels = std::max(from.levels, levels);
}

// Goes through the whole scene by its lists of fields. What a type or a meaning asks of every value
// is checked there; the rules of one structure stand in Before() and After(), called with the
// structure before and after its fields.
class SceneCheck {
  public:
    explicit SceneCheck(const Scene& scene) : scene_(scene), materials_(scene.materials.size()) {}

    void Check() { CheckFields<Meaning::plain>(Place(), scene_); }

  private:
    template <Meaning kRole, class T>
    void CheckFields(const Place& place, const T& object);
    template <Meaning kMeaning, class T>
    void CheckValue(const Place& place, const T& value);
    template <Meaning kMeaning>
    void CheckText(const Place& place, const std::string& text);
    template <Meaning kMeaning>
    void CheckWhole(const Place& place, int number);
    template <Meaning kMeaning, class T>
    void CheckPointer(const Place& place, const std::shared_ptr<const T>& pointer);
    template <Meaning kMeaning, class List>
    void CheckList(const Place& place, const List& list);

    template <class T>
    void Before(const Place&, const T&) const {}
    void Before(const Place& place, const Time& time) const;
    void Before(const Place& place, const Material& material);
    void Before(const Place& place, const MapSlot& slot);
    void Before(const Place& place, const Map&) { ExpectLevel(place, ++mapLevel_, "a map"); }
    void Before(const Place& place, const Transform& transform) {
        names_.Add(Place(place, "id"), transform.id, false);
    }
    void Before(const Place& place, const ThreeAxisController& controller) {
        names_.Add(Place(place, "id"), controller.id, false);
    }
    void Before(const Place& place, const FloatController& controller) {
        names_.Add(Place(place, "id"), controller.id, true);
    }
    void Before(const Place& place, const SampledTransform& transform) const;
    void Before(const Place& place, const JointParams& joint) const;
    void Before(const Place& place, const BezierScale& bezier) const {
        ExpectAscending(Place(place, "keys"), bezier.keys);
    }
    void Before(const Place& place, const BezierFloat& bezier) const {
        ExpectFinite(Place(place, "value"), bezier.value);  // the first fault is this one
        ExpectAscending(Place(place, "keys"), bezier.keys);
    }
    void Before(const Place& place, const FloatList&) {
        ExpectLevel(place, ++listLevel_, "a list controller");
    }

    template <class T>
    void After(const Place&, const T&) const {}
    void After(const Place&, const Material&) { --materialLevel_; }
    void After(const Place&, const Map&) { --mapLevel_; }
    void After(const Place&, const FloatList&) { --listLevel_; }
    void After(const Place& place, const FloatController& controller) const {
        ExpectClassId(place, controller.classId, RequiredOf<OtherFloat>(controller));
    }
    void After(const Place& place, const ThreeAxisController& controller) const {
        ExpectClassId(place, controller.classId, RequiredOf<OtherThree>(controller));
    }
    void After(const Place& place, const Object& object) const;
    void After(const Place& place, const Mesh& mesh) const;
    void After(const Place& place, const Skin& skin) const;

    static void ExpectClassId(const Place& place, const std::optional<ClassId>& classId,
                              Presence presence) {
        if (presence == Presence::required && !classId) {
            Place(place, "classId").Refuse("nothing", "a class id");
        }
    }

    const Scene& scene_;
    MaterialGraph materials_;
    ControllerNames names_;
    std::unordered_set<const Mesh*> meshes_;  // those gone through
    std::unordered_set<int> slots_;           // of the material's maps
    int materialLevel_ = 0;
    int mapLevel_ = 0;
    int listLevel_ = 0;
};

template <Meaning kRole, class T>
void SceneCheck::CheckFields(const Place& place, const T& object) {
    Before(place, object);
    int index = 0;
    ForEachField<T>([&](const auto& field) {
        constexpr Meaning kOwn = std::remove_cvref_t<decltype(field)>::kMeaning;
        constexpr Meaning kMeaning = kOwn == Meaning::ofRole ? kRole : kOwn;
        if constexpr (kMeaning == Meaning::inlined) {
            CheckValue<kRole>(place, field.Of(object));
        } else if constexpr (kIsRow<T>) {
            CheckValue<kMeaning>(Place(place, index++), field.Of(object));
        } else {
            CheckValue<kMeaning>(Place(place, field.name), field.Of(object));
        }
    });
    After(place, object);
}

template <Meaning kMeaning, class T>
void SceneCheck::CheckValue(const Place& place, const T& value) {
    if constexpr (std::is_same_v<T, float>) {
        ExpectFinite(place, value);
    } else if constexpr (std::is_same_v<T, int>) {
        CheckWhole<kMeaning>(place, value);
    } else if constexpr (std::is_same_v<T, std::string>) {
        CheckText<kMeaning>(place, value);
    } else if constexpr (Structure<T>) {
        CheckFields<kMeaning>(place, value);
    } else if constexpr (requires { value.valueless_by_exception(); }) {
        std::visit([&](const auto& kind) { CheckValue<kMeaning>(place, kind); }, value);
    } else if constexpr (requires { typename T::mapped_type; }) {
        for (const auto& [number, element] : value) {
            CheckValue<kMeaning>(Place(place, number), element);
        }
    } else if constexpr (requires { value.use_count(); }) {
        CheckPointer<kMeaning>(place, value);
    } else if constexpr (requires { value.has_value(); }) {
        if (value) {
            CheckValue<kMeaning>(place, *value);
        }
    } else if constexpr (requires { value.size(); }) {
        CheckList<kMeaning>(place, value);
    }
}

template <Meaning kMeaning>
void SceneCheck::CheckText(const Place& place, const std::string& text) {
    if constexpr (kMeaning == Meaning::controllerName || kMeaning == Meaning::floatName) {
        names_.AddReference(place, text, kMeaning == Meaning::floatName);
    } else if constexpr (kMeaning != Meaning::name) {
        ExpectText(place, text);
    }
}

template <Meaning kMeaning>
void SceneCheck::CheckWhole(const Place& place, int number) {
    if constexpr (kMeaning == Meaning::node) {
        ExpectPosition(place, number, scene_.nodes.size(), "nodes");
    } else if constexpr (kMeaning == Meaning::material) {
        ExpectPosition(place, number, materials_.Size(), "materials");
        materials_.AddReference(place, number, materialLevel_ + 1);
    } else if constexpr (kMeaning == Meaning::nodeOrNone) {
        if (number != kNone) {
            ExpectPosition(place, number, scene_.nodes.size(), "nodes");
        }
    } else if constexpr (kMeaning == Meaning::materialOrNone) {
        if (number != kNone) {
            ExpectPosition(place, number, materials_.Size(), "materials");
        }
    }
}

template <Meaning kMeaning, class T>
void SceneCheck::CheckPointer(const Place& place, const std::shared_ptr<const T>& pointer) {
    if constexpr (std::is_same_v<T, Mesh>) {
        // One that several nodes share is gone through once.
        if (pointer && meshes_.insert(pointer.get()).second) {
            CheckValue<kMeaning>(place, *pointer);
        }
    } else if (pointer) {
        CheckValue<kMeaning>(place, *pointer);
    } else if (kMeaning != Meaning::pointerOrNull) {
        place.Refuse("nothing", kNameOf<T>);
    }
}

template <Meaning kMeaning, class List>
void SceneCheck::CheckList(const Place& place, const List& list) {
    for (std::size_t i = 0; i < list.size(); ++i) {
        if constexpr (std::is_same_v<List, decltype(Scene::materials)>) {
            materials_.Enter(i);
        }
        CheckValue<kMeaning>(Place(place, i), list[i]);
    }
    if constexpr (std::is_same_v<List, decltype(Scene::materials)>) {
        materials_.CheckDepths();
    } else if constexpr (std::is_same_v<List, decltype(Scene::nodes)>) {
        CheckParents(place, list);
        names_.CheckReferences();
    } else if constexpr (kMeaning == Meaning::rotation) {
        if (list == List{}) {
            place.Refuse("a zero quaternion", "a rotation");
        }
    }
}

void SceneCheck::Before(const Place& place, const Time& time) const {
    ExpectPositive(Place(place, "frameRate"), time.frameRate);
    ExpectPositive(Place(place, "ticksPerFrame"), time.ticksPerFrame);
    // Seconds are ticks divided by the product.
    const int most = std::numeric_limits<int>::max() / time.frameRate;
    if (time.ticksPerFrame > most) {
        Place(place, "ticksPerFrame")
            .Refuse(std::to_string(time.ticksPerFrame),
                    "at most " + std::to_string(most) + ", as frameRate is " +
                        std::to_string(time.frameRate) + " and ticks a second have 32 bits");
    }
}

void SceneCheck::Before(const Place& place, const Material& material) {
    ExpectLevel(place, ++materialLevel_, "a material");
    materials_.AddLevel(materialLevel_);
    if (material.kind == MaterialKind::multi && !material.maps.empty()) {
        Place(place, "maps").Refuse("maps of a multi material", "none");
    }
    slots_.clear();
}

void SceneCheck::Before(const Place& place, const MapSlot& slot) {
    if (slot.slot < 0 || slot.slot > kMostMapSlot) {
        Place(place, "slot")
            .Refuse(std::to_string(slot.slot), "a slot from 0 to " + std::to_string(kMostMapSlot));
    }
    if (!slots_.insert(slot.slot).second) {
        Place(place, "slot")
            .Refuse(std::to_string(slot.slot), "a slot that no other map of the material has");
    }
}

void SceneCheck::Before(const Place& place, const SampledTransform& transform) const {
    const Place samples(place, "samples");
    if (transform.samples.empty()) {
        samples.Refuse("an empty list", "at least one sample");
    }
    ExpectAscending(samples, transform.samples);
}

void SceneCheck::Before(const Place& place, const JointParams& joint) const {
    if (joint.dofs < 1 || joint.dofs > static_cast<int>(joint.min.size())) {
        Place(place, "dofs").Refuse(std::to_string(joint.dofs), "1 to 6 degrees of freedom");
    }
}

void SceneCheck::After(const Place& place, const Object& object) const {
    if (!object.mesh && !object.superClassId) {
        Place(place, "superClassId").Refuse("nothing", "a super class id");
    }
    ExpectClassId(place, object.classId, RequiredWithoutMesh(object));
}

void CheckChannel(const Place& place, const MapChannel& channel, std::size_t meshFaces) {
    const Place faces(place, "faces");
    const std::size_t expected = channel.vertices.empty() ? 0 : meshFaces;
    if (channel.faces.size() != expected) {
        faces.Refuse(std::to_string(channel.faces.size()) + " map faces",
                     channel.vertices.empty()
                         ? "none in a channel without vertices"
                         : std::to_string(expected) + ", one for each face of the mesh");
    }
    for (std::size_t i = 0; i < channel.faces.size(); ++i) {
        ExpectPositions(faces, i, channel.faces[i], channel.vertices.size(),
                        "vertices of the channel");
    }
}

void SceneCheck::After(const Place& place, const Mesh& mesh) const {
    const Place faces(place, "faces");
    for (std::size_t i = 0; i < mesh.faces.size(); ++i) {
        ExpectPositions(faces, i, mesh.faces[i].v, mesh.vertices.size(), "vertices");
    }
    const Place channels(place, "channels");
    for (const auto& [number, channel] : mesh.channels) {
        const std::string name = std::to_string(number);
        const Place at(channels, name);
        if (number < 1 || number > kMostMapChannel) {
            at.Refuse("map channel " + name,
                      "a map channel from 1 to " + std::to_string(kMostMapChannel));
        }
        CheckChannel(at, channel, mesh.faces.size());
    }
    const Place normals(place, "normals");
    for (const auto& [vertex, normal] : mesh.normals) {
        ExpectPosition(Place(normals, vertex), vertex, mesh.vertices.size(), "vertices");
    }
}

void SceneCheck::After(const Place& place, const Skin& skin) const {
    const Place weights(place, "weights");
    for (std::size_t i = 0; i < skin.weights.size(); ++i) {
        const Place vertex(weights, i);
        for (std::size_t k = 0; k < skin.weights[i].size(); ++k) {
            const int slot = skin.weights[i][k].slot;
            if (slot >= 0) {
                ExpectPosition(Place(Place(vertex, k), 0), slot, skin.bones.size(), "bones");
            }
        }
    }
}

}  // namespace

void Check(const Scene& scene) {
    SceneCheck(scene).Check();
}

}  // namespace maxhost::scene
