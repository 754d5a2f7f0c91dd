#include "host/sdk/scene/modifiers.h"

#include "host/sdk/calls.h"

Class_ID derivObjClassID(DERIVOB_CLASS_ID, 0);

namespace maxhost {
namespace {

struct ModifierMaker {
    using Made = std::unique_ptr<SceneModifier>;

    Made operator()(const scene::Skin& skin) const { return MakeSkinModifier(skin, place); }
    Made operator()(const scene::Physique& physique) const {
        return MakePhysiqueModifier(physique, place);
    }
    Made operator()(const scene::Morpher& morpher) const { return MakeMorpherModifier(morpher); }
    Made operator()(const scene::OtherModifier& other) const {
        return std::make_unique<SceneModifier>(Class_ID(other.classId[0], other.classId[1]));
    }

    const StackPlace& place;
};

std::unique_ptr<SceneModifier> MakeModifier(const scene::Modifier& description,
                                            const StackPlace& place) {
    std::unique_ptr<SceneModifier> modifier = std::visit(ModifierMaker{place}, description.kind);
    if (!description.enabled) {
        modifier->SetAFlag(A_MOD_DISABLED);
    }
    return modifier;
}

class DerivedObject final : public IDerivedObject, public SceneObject {
  public:
    DerivedObject(const std::vector<scene::Modifier>& modifiers, Object* below,
                  const StackPlace& place)
        : below_(below) {
        modifiers_.reserve(modifiers.size());
        for (const scene::Modifier& modifier : modifiers) {
            modifiers_.push_back(MakeModifier(modifier, place));
        }
    }

    Object* Get() override { return this; }

    SClass_ID SuperClassID() override {
        ++calls.objectClasses;
        return IDerivedObject::SuperClassID();
    }
    Class_ID ClassID() override {
        ++calls.objectClasses;
        return derivObjClassID;
    }
    int NumModifiers() override { return static_cast<int>(modifiers_.size()); }
    Object* GetObjRef() override { return below_; }
    Modifier* GetModifier(int index) override {
        ++calls.modifiers;
        return index >= 0 && index < NumModifiers() ? modifiers_[index].get() : nullptr;
    }

  private:
    std::vector<std::unique_ptr<SceneModifier>> modifiers_;
    Object* below_;
};

}  // namespace

std::unique_ptr<SceneObject> MakeDerivedObject(const std::vector<scene::Modifier>& modifiers,
                                               Object* below, const StackPlace& place) {
    return std::make_unique<DerivedObject>(modifiers, below, place);
}

}  // namespace maxhost
