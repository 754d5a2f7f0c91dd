// The objects of one scene.
#pragma once

#include "host/sdk/scene/materials.h"
#include "host/sdk/scene/node.h"

namespace maxhost {

// Makes them of a description that holds to the scene's rules, and owns both. Making and destroying
// takes time in proportion to the scene's size and no stack in proportion to its depth.
class SceneGraph {
  public:
    explicit SceneGraph(scene::Scene description);

    SceneGraph(const SceneGraph&) = delete;
    SceneGraph& operator=(const SceneGraph&) = delete;

    const scene::Scene& Description() const { return description_; }
    INode* Root() { return &root_; }
    const std::vector<INode*>& Nodes() const { return nodes_; }

    const std::vector<INode*>& Selection() const { return selection_; }
    // Nobody looks at the meshes of the scene any more.
    void ReleaseMeshes();
    void KeepOneTransformANode() { memory_.Forbid(); }
    // Nodes of this scene; one that occurs again is passed over.
    void Select(const std::vector<INode*>& nodes);

  private:
    void MakeNodes();
    void SelectAsDescribed();

    const scene::Scene description_;
    MaterialLibrary materials_;
    TransformMemory memory_;
    std::vector<INode*> nodes_;
    SceneLinks links_{nodes_};
    RootNode root_;
    std::vector<std::unique_ptr<SceneNode>> sceneNodes_;
    std::vector<INode*> selection_;
};

}  // namespace maxhost
