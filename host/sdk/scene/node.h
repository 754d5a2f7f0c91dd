// Nodes of the scene.
#pragma once

#include <inode.h>

#include <deque>
#include <optional>
#include <unordered_map>

#include "host/sdk/calls.h"
#include "host/sdk/scene/controllers.h"
#include "host/sdk/scene/modifiers.h"

namespace maxhost {

class SceneNode;

// The base of the root and of the other nodes: a name and children in order.
class TreeNode : public INode {
  public:
    ~TreeNode() override = default;

    // Not owned.
    void AddChild(INode* child) { children_.push_back(child); }

    MCHAR* GetName() override { return name_.data(); }
    int NumberOfChildren() override { return static_cast<int>(children_.size()); }
    INode* GetChildNode(int i) override {
        return i >= 0 && i < NumberOfChildren() ? children_[i] : nullptr;
    }

  protected:
    explicit TreeNode(std::string name) : name_(std::move(name)) {}

  private:
    std::string name_;
    std::vector<INode*> children_;
};

// The invisible node above all others. It stands at the origin.
class RootNode final : public TreeNode {
  public:
    RootNode() : TreeNode("Scene Root") {}

    INode* GetParentNode() override { return nullptr; }
    int Selected() override { return 0; }
    int Renderable() override { return 0; }
    int IsHidden(DWORD, BOOL) override { return 0; }
    DWORD GetWireColor() override { return 0; }
    Mtl* GetMtl() override { return nullptr; }
    void GetUserPropBuffer(MSTR& buf) override { buf = ""; }
    Matrix3 GetNodeTM(TimeValue, Interval*) override { return Matrix3(TRUE); }
    Matrix3 GetObjectTM(TimeValue, Interval*) override { return Matrix3(TRUE); }
    Matrix3 GetParentTM(TimeValue) override { return Matrix3(TRUE); }
    Control* GetTMController() override { return nullptr; }
    Object* GetObjectRef() override { return nullptr; }
    const ObjectState& EvalWorldState(TimeValue, BOOL) override { return state_; }

  private:
    ObjectState state_;
};

struct WorldTransform {
    Interval valid;
    Affine transform;
};

// Bounds the number of transforms that the nodes of a scene together remember by time. The node
// that began to remember first forgets first: going down a chain of nodes, the parent's are wanted,
// not those far above.
class TransformMemory {
  public:
    // Called by a node before it remembers one more. False where nodes remember none.
    bool Add(SceneNode* node);
    void Forbid() { most_ = 0; }

  private:
    // About 40 MB; 250 ancestors sampled at 1000 times fit.
    std::size_t most_ = std::size_t{1} << 18;
    std::size_t count_ = 0;
    std::deque<SceneNode*> holders_;  // the nodes that remember any, oldest first
};

class SceneNode final : public TreeNode {
  public:
    // The description, the memory and the links must outlive the node; `material` may be null.
    SceneNode(const scene::Node& description, Mtl* material, TransformMemory& memory,
              SceneLinks& links);

    // Makes this node a child of `parent`, or of `root` where that is null.
    void Attach(SceneNode* parent, RootNode* root);
    void SetSelected(bool selected) { selected_ = selected; }
    std::size_t RememberedCount() const { return remembered_.size(); }
    void ForgetTransforms() { remembered_.clear(); }
    void ReleaseMesh() {
        for (const auto& object : stack_) {
            object->ReleaseMesh();
        }
    }

    INode* GetParentNode() override { return parentNode_; }
    int Selected() override { return selected_; }
    int Renderable() override { return description_.renderable; }
    int IsHidden(DWORD, BOOL) override { return description_.hidden; }
    DWORD GetWireColor() override;
    Mtl* GetMtl() override {
        ++calls.nodeMaterials;
        return material_;
    }
    void GetUserPropBuffer(MSTR& buf) override { buf = description_.userProperties.c_str(); }
    Matrix3 GetNodeTM(TimeValue t, Interval* valid) override;
    Matrix3 GetObjectTM(TimeValue t, Interval* valid) override;
    Matrix3 GetParentTM(TimeValue t) override;
    Control* GetTMController() override { return transform_.get(); }
    Object* GetObjectRef() override { return stack_.back()->Get(); }
    const ObjectState& EvalWorldState(TimeValue, BOOL) override {
        ++calls.objectEvaluations;
        return state_;
    }

  private:
    WorldTransform World(TimeValue t);
    // Null where nothing is remembered that is valid at `t`.
    const WorldTransform* Remembered(TimeValue t) const;
    WorldTransform Evaluate(TimeValue t, const WorldTransform& parent);

    const scene::Node& description_;
    SceneNode* parent_ = nullptr;  // null at the top level
    INode* parentNode_ = nullptr;
    Mtl* material_;
    bool selected_ = false;
    std::unique_ptr<MatrixControl> transform_;
    std::vector<std::unique_ptr<SceneObject>> stack_;  // the base object, then derived ones
    ObjectState state_;

    TransformMemory& memory_;
    std::optional<WorldTransform> last_;
    std::unordered_map<TimeValue, WorldTransform> remembered_;
};

}  // namespace maxhost
