// References between parts of a scene: by ids of controllers, by positions of nodes.
#pragma once

#include <inode.h>

#include <string>
#include <unordered_map>
#include <vector>

namespace maxhost {

// The ids are added while the scene is made, and asked for when it is complete. Owns nothing; the
// nodes must outlive it.
class SceneLinks {
  public:
    explicit SceneLinks(const std::vector<INode*>& nodes) : nodes_(nodes) {}

    // An empty id, or one that is taken, is passed over.
    void AddControl(const std::string& id, Control* control) {
        if (!id.empty()) {
            controls_.emplace(id, control);
        }
    }
    // Null for an unknown id.
    Control* FindControl(const std::string& id) const {
        const auto found = controls_.find(id);
        return found == controls_.end() ? nullptr : found->second;
    }

    // Null where no such position exists.
    INode* NodeAt(int position) const {
        return position >= 0 && position < static_cast<int>(nodes_.size()) ? nodes_[position]
                                                                           : nullptr;
    }

  private:
    const std::vector<INode*>& nodes_;
    std::unordered_map<std::string, Control*> controls_;
};

}  // namespace maxhost
