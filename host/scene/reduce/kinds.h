// The kinds of parts one by one: each function asks for its parts in the order of the scene and
// leaves out those that are not to stay. What is inside of a part that goes is not asked for.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "host/scene/scene.h"

namespace maxhost::scene {

// Asked for each part in turn whether it stays.
class Keeper {
  public:
    explicit Keeper(const std::vector<bool>* gone) : gone_(gone) {}

    bool operator()() {
        const std::size_t part = count_++;
        return gone_ == nullptr || !(*gone_)[part];
    }
    std::size_t Count() const { return count_; }

  private:
    const std::vector<bool>* gone_;  // null: all stay
    std::size_t count_ = 0;
};

template <class T>
void Filter(std::vector<T>& list, Keeper& keep) {
    std::erase_if(list, [&](const T&) { return !keep(); });
}

// Changes what is shared by a copy, unless it stays as it is; `edit` says whether it changed it.
template <class T, class Edit>
bool EditShared(std::shared_ptr<const T>& shared, Edit edit) {
    if (!shared) {
        return false;
    }
    const auto copy = std::make_shared<T>(*shared);
    if (!edit(*copy)) {
        return false;
    }
    shared = copy;
    return true;
}

template <class Visit>
void ForEachModifier(Node& node, Visit visit) {
    for (std::vector<Modifier>* const list : {&node.modifiers, &node.referenceModifiers}) {
        for (Modifier& modifier : *list) {
            visit(modifier);
        }
    }
}

// Where parts of a list come to stand; kNone: they are gone.
using Places = std::vector<int>;

inline int PlaceOf(const Places& places, int part) {
    return part == kNone ? kNone : places[static_cast<std::size_t>(part)];
}

void CutSubtrees(Scene& scene, Keeper& keep);
void CutNodesAlone(Scene& scene, Keeper& keep);  // children come to the nearest node above
void CutMaterialUses(Scene& scene, Keeper& keep);
void CutMaterials(Scene& scene, Keeper& keep);
void CutMaterialParts(Scene& scene, Keeper& keep);
void CutTransforms(Scene& scene, Keeper& keep);
void CutControllers(Scene& scene, Keeper& keep);
void CutKeys(Scene& scene, Keeper& keep);  // samples, items of lists and wires too
void CutFaces(Scene& scene, Keeper& keep);
void CutLooseVertices(Scene& scene, Keeper& keep);  // of a mesh all at once
void CutMeshParts(Scene& scene, Keeper& keep);

// Wires that name controllers which are not there.
void LeaveWiresOut(Scene& scene);

}  // namespace maxhost::scene
