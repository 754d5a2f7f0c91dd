#include "host/sdk/scene/scene_graph.h"

namespace maxhost {

SceneGraph::SceneGraph(scene::Scene description)
    : description_(std::move(description)), materials_(description_.materials) {
    MakeNodes();
    SelectAsDescribed();
}

void SceneGraph::MakeNodes() {
    sceneNodes_.reserve(description_.nodes.size());
    nodes_.reserve(description_.nodes.size());
    for (const scene::Node& node : description_.nodes) {
        sceneNodes_.push_back(
            std::make_unique<SceneNode>(node, materials_.Get(node.material), memory_, links_));
        nodes_.push_back(sceneNodes_.back().get());
    }
    // A parent may stand behind its children.
    for (std::size_t i = 0; i < sceneNodes_.size(); ++i) {
        const int parent = description_.nodes[i].parent;
        sceneNodes_[i]->Attach(parent == scene::kNone ? nullptr : sceneNodes_[parent].get(),
                               &root_);
    }
}

void SceneGraph::SelectAsDescribed() {
    std::vector<INode*> selection;
    for (const int position : description_.selection) {
        selection.push_back(nodes_[position]);
    }
    Select(selection);
}

void SceneGraph::ReleaseMeshes() {
    for (const std::unique_ptr<SceneNode>& node : sceneNodes_) {
        node->ReleaseMesh();
    }
}

void SceneGraph::Select(const std::vector<INode*>& nodes) {
    for (INode* node : selection_) {
        static_cast<SceneNode*>(node)->SetSelected(false);
    }
    selection_.clear();
    for (INode* node : nodes) {
        if (!node->Selected()) {
            static_cast<SceneNode*>(node)->SetSelected(true);
            selection_.push_back(node);
        }
    }
}

}  // namespace maxhost
