#include "host/sdk/scene/node.h"

namespace maxhost {
namespace {

Matrix3 Deliver(const WorldTransform& world, Interval* valid) {
    if (valid != nullptr) {
        *valid &= world.valid;
    }
    return ToMatrix3(world.transform);
}

}  // namespace

bool TransformMemory::Add(SceneNode* node) {
    while (count_ >= most_ && count_ > 0) {
        SceneNode* oldest = holders_.front();
        holders_.pop_front();
        count_ -= oldest->RememberedCount();
        oldest->ForgetTransforms();
    }
    if (most_ == 0) {
        return false;
    }
    if (node->RememberedCount() == 0) {
        holders_.push_back(node);
    }
    ++count_;
    return true;
}

SceneNode::SceneNode(const scene::Node& description, Mtl* material, TransformMemory& memory,
                     SceneLinks& links)
    : TreeNode(description.name), description_(description), material_(material), memory_(memory) {
    if (description.transform) {
        transform_ = MakeTransformControl(*description.transform, links);
    }
    stack_.push_back(MakeObject(description.object ? &*description.object : nullptr));
    for (const auto* modifiers : {&description.modifiers, &description.referenceModifiers}) {
        if (!modifiers->empty()) {
            stack_.push_back(MakeDerivedObject(*modifiers, stack_.back()->Get(), {this, links}));
        }
    }
    state_.obj = stack_.front()->Get();
}

void SceneNode::Attach(SceneNode* parent, RootNode* root) {
    TreeNode* above = parent != nullptr ? static_cast<TreeNode*>(parent) : root;
    parent_ = parent;
    parentNode_ = above;
    above->AddChild(this);
}

DWORD SceneNode::GetWireColor() {
    const auto& color = description_.wireColor;
    return RGB(color[0], color[1], color[2]);
}

Matrix3 SceneNode::GetNodeTM(TimeValue t, Interval* valid) {
    ++calls.nodeTransforms;
    return Deliver(World(t), valid);
}

Matrix3 SceneNode::GetObjectTM(TimeValue t, Interval* valid) {
    ++calls.nodeTransforms;
    WorldTransform world = World(t);
    world.transform = ToAffine(description_.objectOffset) * world.transform;
    return Deliver(world, valid);
}

Matrix3 SceneNode::GetParentTM(TimeValue t) {
    ++calls.nodeTransforms;
    return parent_ != nullptr ? ToMatrix3(parent_->World(t).transform) : Matrix3(TRUE);
}

// Climbs to the nearest ancestor whose transform at `t` is known and comes down again: the depth of
// a scene must not become the depth of a recursion.
WorldTransform SceneNode::World(TimeValue t) {
    std::vector<SceneNode*> unknown;
    WorldTransform world = {FOREVER, Affine{}};
    for (SceneNode* node = this; node != nullptr; node = node->parent_) {
        if (const WorldTransform* known = node->Remembered(t)) {
            world = *known;
            break;
        }
        unknown.push_back(node);
    }
    while (!unknown.empty()) {
        world = unknown.back()->Evaluate(t, world);
        unknown.pop_back();
    }
    return world;
}

const WorldTransform* SceneNode::Remembered(TimeValue t) const {
    if (last_ && last_->valid.InInterval(t)) {
        return &*last_;
    }
    const auto found = remembered_.find(t);
    return found == remembered_.end() ? nullptr : &found->second;
}

WorldTransform SceneNode::Evaluate(TimeValue t, const WorldTransform& parent) {
    ++calls.transformEvaluations;
    WorldTransform world = parent;
    if (transform_) {
        world.transform = transform_->Local(t, world.valid) * parent.transform;
    }
    last_ = world;
    // Exporters ask node by node for all times: a parent's transforms are wanted once for each
    // child at each time, and found here. A leaf's are wanted once.
    if (NumberOfChildren() > 0 && world.valid != FOREVER && memory_.Add(this)) {
        remembered_.emplace(t, world);
    }
    return world;
}

}  // namespace maxhost
