// Modifier stacks.
#pragma once

#include <inode.h>
#include <modstack.h>

#include <memory>
#include <vector>

#include "host/sdk/objects.h"
#include "host/sdk/scene_links.h"

namespace maxhost {

// What the modifiers of a node see of the scene.
struct StackPlace {
    INode* node;              // on whose stack they stand
    const SceneLinks& links;  // complete once the scene is made
};

// A derived object with `modifiers`, top first, above `below`. All that is handed over must outlive
// it.
std::unique_ptr<SceneObject> MakeDerivedObject(const std::vector<scene::Modifier>& modifiers,
                                               Object* below, const StackPlace& place);

// A modifier of the scene, enabled unless A_MOD_DISABLED is set.
class SceneModifier : public Modifier {
  public:
    explicit SceneModifier(Class_ID classId) : classId_(classId) {}
    ~SceneModifier() override = default;

    Class_ID ClassID() override { return classId_; }

  private:
    Class_ID classId_;
};

}  // namespace maxhost
