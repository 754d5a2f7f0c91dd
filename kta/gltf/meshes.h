// An actor's meshes, skins and morph targets as those of glTF.
#pragma once

#include "kta/deform.h"
#include "kta/glb.h"
#include "kta/gltf/materials.h"
#include "kta/gltf/nodes.h"
#include "kta/gltf/primitive.h"

namespace kta::gltf {

// A mesh in the document and where it belongs.
struct PlacedMesh {
    std::size_t number = 0;      // in the document
    std::size_t node = kNoNode;  // of the actor
    std::string name;
    // Of a skinned mesh: the skin's number in the document. Such a mesh stands in the world.
    std::optional<std::size_t> skin{};
};

class Meshes {
  public:
    Meshes(const NodeTree& tree, const std::vector<NodePlace>& places, const GlbOptions& options,
           Materials& materials, Document& document);

    // Adds the mesh, unless it has nothing to show, with its skin.
    void Add(const ActorMesh& mesh);

    const std::vector<PlacedMesh>& Placed() const { return placed_; }
    const std::vector<Joints>& Skins() const { return skins_; }
    // What is not shown as it is, a line each.
    std::vector<std::string> Warnings() const;

  private:
    std::string NameOf(const ActorMesh& mesh) const;
    PrimitiveSource SourceOf(const ActorMesh& mesh);
    std::size_t AddSkin(const Joints& joints);

    const NodeTree& tree_;
    const std::vector<NodePlace>& places_;
    const GlbOptions& options_;
    Materials& materials_;
    Document& document_;
    std::vector<PlacedMesh> placed_;
    std::vector<Joints> skins_;
    std::vector<std::string> warnings_;
    std::size_t trianglesLeftOut_ = 0;
    std::size_t normalsMade_ = 0;
    std::size_t coordinatesLeftOut_ = 0;  // sets of texture coordinates
};

}  // namespace kta::gltf
