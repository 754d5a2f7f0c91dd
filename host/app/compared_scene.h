// An export's files and the scene that they are compared with, for the sources of deviation.h.
#pragma once

#include <cstddef>
#include <limits>
#include <vector>

#include "host/app/deviation.h"
#include "kta/deform.h"

namespace maxhost::app {

constexpr double kPi = 3.14159265358979323846;

// Keeps references to all that it is made of.
class ComparedScene {
  public:
    ComparedScene(const scene::Scene& scene, const SceneWorlds& worlds, const SceneMatch& match,
                  const kta::NodeTree& tree, const kta::File& actor, const kta::File& motion);

    const scene::Scene& TheScene() const { return scene_; }
    const kta::NodeTree& Tree() const { return tree_; }
    const SceneMatch& Match() const { return match_; }
    // Of the actor file.
    const std::vector<kta::ActorMesh>& Meshes() const { return meshes_; }

    const scene::Node& Node(int node) const { return scene_.nodes[static_cast<std::size_t>(node)]; }
    INode& SdkNode(int node) const { return worlds_.NodeAt(node); }
    // The scene's mesh of an actor mesh; null: it has none.
    const scene::Mesh* MeshOf(const kta::ActorMesh& mesh) const;
    // The scene's node of an actor mesh for which there is one.
    int NodeOf(const kta::ActorMesh& mesh) const { return match_.SceneNodeOf(mesh.node); }

    // Where the scene's nodes stand.
    std::vector<kta::Affine> WorldsAt(int tick) const { return worlds_.At(tick); }
    const std::vector<kta::Affine>& WorldsAtZero() const { return atZero_; }
    const kta::Affine& WorldAtZero(int node) const {
        return atZero_[static_cast<std::size_t>(node)];
    }

    // At most so many ticks at which files and scene are compared, evenly, with the first and the
    // last: keys of sampled tracks, between which the files do not say where things are; else
    // frames, and what is halfway between two.
    std::vector<int> Ticks(std::size_t most) const;
    double FrameOf(int tick) const { return static_cast<double>(tick) / scene_.time.ticksPerFrame; }
    double SecondsOf(int tick) const {
        return static_cast<double>(tick) /
               (static_cast<double>(scene_.time.frameRate) * scene_.time.ticksPerFrame);
    }

  private:
    std::vector<int> SampledTicks() const;

    const scene::Scene& scene_;
    const SceneWorlds& worlds_;
    const SceneMatch& match_;
    const kta::NodeTree& tree_;
    const kta::File& motion_;
    const std::vector<kta::ActorMesh> meshes_;
    const std::vector<kta::Affine> atZero_;
};

// The box around points.
class Box {
  public:
    void Add(const kta::Vector3& p);
    double Diagonal() const;  // 0: no points
    // The diagonal, or a share of the distance from the origin where that is more.
    double Size() const;

  private:
    double Distance() const;  // from the origin, of the corner farthest from it

    static constexpr double kFar = std::numeric_limits<double>::infinity();
    kta::Vector3 least_ = {kFar, kFar, kFar};
    kta::Vector3 most_ = {-kFar, -kFar, -kFar};
};

// Each adds what it finds to the deviation. Of meshes at tick 0: vertices, normals, texture
// coordinates and morph targets.
void CompareMeshes(const ComparedScene& compared, Deviation& deviation);
// Poses over time, nodes that are sheared, and nodes that stand still although they move in the
// scene. Gives the size, which is that of the box unless it is empty.
void ComparePoses(const ComparedScene& compared, const Box& atRest, Deviation& deviation);
// Where skins take their vertices.
void CompareSkins(const ComparedScene& compared, Deviation& deviation);

}  // namespace maxhost::app
