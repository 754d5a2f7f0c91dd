// Modifier stacks.
#pragma once

#include <inode.h>
#include <modstack.h>

#include <memory>
#include <vector>

#include "host/sdk/scene/objects.h"
#include "host/sdk/scene/scene_links.h"

namespace maxhost {

// The part of the scene that the modifiers of a node see.
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

// Gives an ISkin for I_SKIN. The description must outlive it.
std::unique_ptr<SceneModifier> MakeSkinModifier(const scene::Skin& description,
                                                const StackPlace& place);

// Gives an IPhysiqueExport for I_PHYINTERFACE; that, its contexts and their vertices are lent (see
// CountLoans). A rigid vertex of the description is one in Physique as well; a blended one is
// deformable there, and shows what its conversion gives. The description must outlive it.
std::unique_ptr<SceneModifier> MakePhysiqueModifier(const scene::Physique& description,
                                                    const StackPlace& place);

// MorpherApi.h reads its channels. The description must outlive it.
std::unique_ptr<SceneModifier> MakeMorpherModifier(const scene::Morpher& description);

}  // namespace maxhost
