#include "host/scene/reduce.h"

#include <variant>

#include "host/scene/reduce/kinds.h"

namespace maxhost::scene {
namespace {

void CutObjects(Scene& scene, Keeper& keep) {
    for (Node& node : scene.nodes) {
        if (node.object && !keep()) {
            node.object.reset();
        }
    }
}

void CutModifiers(Scene& scene, Keeper& keep) {
    for (Node& node : scene.nodes) {
        Filter(node.modifiers, keep);
        Filter(node.referenceModifiers, keep);
    }
}

void CutWeights(Scene& scene, Keeper& keep) {
    for (Node& node : scene.nodes) {
        ForEachModifier(node, [&](Modifier& modifier) {
            if (auto* const skin = std::get_if<Skin>(&modifier.kind)) {
                for (std::vector<SkinWeight>& weights : skin->weights) {
                    Filter(weights, keep);
                }
            } else if (auto* const physique = std::get_if<Physique>(&modifier.kind)) {
                for (auto& vertex : physique->vertices) {
                    if (vertex.index() != 0 && !keep()) {
                        vertex = std::monostate();
                    }
                }
            }
        });
    }
}

void CutMorphChannels(Scene& scene, Keeper& keep) {
    for (Node& node : scene.nodes) {
        ForEachModifier(node, [&](Modifier& modifier) {
            if (auto* const morpher = std::get_if<Morpher>(&modifier.kind)) {
                Filter(morpher->channels, keep);
            }
        });
    }
}

template <class T>
void CutTo(T& value, const T& plain, bool isPlain, Keeper& keep) {
    if (!isPlain && !keep()) {
        value = plain;
    }
}

void CutDetails(Scene& scene, Keeper& keep) {
    const Node plain;
    for (Node& node : scene.nodes) {
        CutTo(node.userProperties, plain.userProperties, node.userProperties.empty(), keep);
        CutTo(node.wireColor, plain.wireColor, node.wireColor == plain.wireColor, keep);
        CutTo(node.objectOffset, plain.objectOffset, node.objectOffset == plain.objectOffset, keep);
        CutTo(node.hidden, false, !node.hidden, keep);
        CutTo(node.renderable, true, node.renderable, keep);
    }
}

template <void (*kCut)(Scene&, Keeper&)>
std::size_t Count(const Scene& scene) {
    Scene copy = scene;
    Keeper keeper(nullptr);
    kCut(copy, keeper);
    return keeper.Count();
}

template <void (*kCut)(Scene&, Keeper&)>
Scene Without(const Scene& scene, const std::vector<bool>& gone) {
    Scene copy = scene;
    Keeper keeper(&gone);
    kCut(copy, keeper);
    LeaveWiresOut(copy);
    return copy;
}

template <void (*kCut)(Scene&, Keeper&)>
constexpr PartKind Kind(const char* name) {
    return {name, Count<kCut>, Without<kCut>};
}

constexpr PartKind kParts[] = {
    Kind<CutSubtrees>("nodes with all below them"),
    Kind<CutNodesAlone>("nodes"),
    Kind<CutObjects>("objects"),
    Kind<CutModifiers>("modifiers"),
    Kind<CutMaterialUses>("materials of nodes"),
    Kind<CutMaterials>("materials"),
    Kind<CutMaterialParts>("maps and sub-materials"),
    Kind<CutTransforms>("transforms"),
    Kind<CutControllers>("controllers"),
    Kind<CutKeys>("keys"),
    Kind<CutMorphChannels>("morph channels"),
    Kind<CutWeights>("weights"),
    Kind<CutFaces>("faces"),
    Kind<CutLooseVertices>("vertices without faces"),
    Kind<CutMeshParts>("map channels and normals"),
    Kind<CutDetails>("details of nodes"),
};

}  // namespace

std::span<const PartKind> PartKinds() {
    return kParts;
}

SceneSize SizeOf(const Scene& scene) {
    SceneSize size;
    size.nodes = scene.nodes.size();
    size.modifiers = Count<CutModifiers>(scene);
    size.materials = scene.materials.size();
    size.keys = Count<CutKeys>(scene);
    size.morphChannels = Count<CutMorphChannels>(scene);
    for (const Node& node : scene.nodes) {
        size.faces += node.object && node.object->mesh ? node.object->mesh->faces.size() : 0;
    }
    return size;
}

}  // namespace maxhost::scene
