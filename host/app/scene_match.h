// Which node of the open scene each node of an exported actor file is, and where the scene's nodes
// stand. Everything that is compared with the files is in their axes: x, z, y of the scene.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/scene/scene.h"
#include "kta/pose.h"

class INode;

namespace maxhost::app {

inline kta::Vector3 InFileAxes(const scene::Vec3& v) {
    return {v[0], v[2], v[1]};
}

// Names from the root to the node, each behind a slash; control characters, backslashes and slashes
// in names are escaped. Of more than 40 nodes the first are left out: "/.../hand/finger".
std::string PathOf(const scene::Scene& scene, int node);

// Whether the node's object is, at tick 0, geometry and not a camera's or light's target.
bool IsGeometry(INode& node);

// Where the scene's nodes stand at a time: the objects of geometry, the pivots of others.
class SceneWorlds {
  public:
    explicit SceneWorlds(const std::vector<INode*>& nodes);

    std::vector<kta::Affine> At(int tick) const;
    INode& NodeAt(int node) const { return *nodes_[static_cast<std::size_t>(node)]; }

  private:
    const std::vector<INode*>& nodes_;
    std::vector<bool> isGeometry_;
};

// By name; of several nodes of one name those are paired that have one parent's name and stand
// closest at tick 0, as far as the first hundred of them tell.
class SceneMatch {
  public:
    // `worlds`: of the scene's nodes at tick 0.
    SceneMatch(const scene::Scene& scene, const std::vector<kta::Affine>& worlds,
               const kta::NodeTree& tree);

    // kNone for a node that the scene does not have.
    int SceneNodeOf(std::size_t fileNode) const { return sceneNodes_[fileNode]; }
    // kta::kNoNode for a node that the file does not have.
    std::size_t FileNodeOf(int sceneNode) const {
        return fileNodes_[static_cast<std::size_t>(sceneNode)];
    }

  private:
    std::vector<int> sceneNodes_;
    std::vector<std::size_t> fileNodes_;
};

}  // namespace maxhost::app
