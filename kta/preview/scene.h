// What there is to draw of an actor, at rest and at a time of its motion.
#pragma once

#include <map>

#include "kta/deform.h"
#include "kta/preview/actor_textures.h"
#include "kta/preview/raster.h"

namespace kta {

struct PreviewTriangle {
    std::array<std::uint32_t, 3> corners{};
    std::uint32_t look = 0;
};

// In the file's axes: x, up, y.
struct PreviewScene {
    std::vector<PreviewCorner> corners;
    std::vector<PreviewTriangle> triangles;
    std::vector<Look> looks;
    std::size_t firstInFront = 0;  // what has these corners shows through whatever is nearer
};

struct SceneChoice {
    bool withCollision = false;
    bool withBones = false;
    const ActorTextures* textures = nullptr;              // must outlive the model
    std::map<std::string, double, std::less<>> morphs{};  // channels' weights by name, 1 for full
};

// The meshes, each where its node stands; one that has skinning weights (and so is in world space),
// or that has no node, where its own numbers and its bones say.
class PreviewModel {
  public:
    // `motion` may be null. Both files must outlive the model.
    PreviewModel(const File& actor, const File* motion, SceneChoice choice);

    const NodeTree& Nodes() const { return nodes_; }

    // At rest, as the actor file alone tells, without `seconds`. Triangles with a corner that is
    // not finite are left out. Linear in vertices, triangles and weights.
    PreviewScene At(const std::optional<double>& seconds) const;

  private:
    struct Part {
        ActorMesh mesh;
        std::optional<Skin> skin;
        std::vector<MorphTarget> targets;  // those that have a weight
        std::vector<double> weights;
        bool inWorld;
    };
    class Collector;

    NodeTree nodes_;
    SceneChoice choice_;
    std::vector<Part> parts_;
    std::vector<Look> looks_;                      // of materials, and one for having none
    std::vector<const KTAMaterialLayer*> layers_;  // of materials
};

}  // namespace kta
