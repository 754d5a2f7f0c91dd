#include "host/sdk/modifiers.h"

Class_ID derivObjClassID(DERIVOB_CLASS_ID, 0);

namespace maxhost {
namespace {

struct ModifierClassId {
    Class_ID operator()(const scene::Skin&) const { return Class_ID(9815843, 87654); }
    Class_ID operator()(const scene::Physique&) const { return Class_ID(0x100, 0); }
    Class_ID operator()(const scene::Morpher&) const { return Class_ID(0x17bb6854, 0xa5cba2a3); }
    Class_ID operator()(const scene::OtherModifier& other) const {
        return Class_ID(other.classId[0], other.classId[1]);
    }
};

class SceneModifier final : public Modifier {
  public:
    explicit SceneModifier(const scene::Modifier& description)
        : classId_(std::visit(ModifierClassId{}, description.kind)) {
        if (!description.enabled) {
            SetAFlag(A_MOD_DISABLED);
        }
    }

    Class_ID ClassID() override { return classId_; }

  private:
    Class_ID classId_;
};

class DerivedObject final : public IDerivedObject, public SceneObject {
  public:
    DerivedObject(const std::vector<scene::Modifier>& modifiers, Object* below) : below_(below) {
        modifiers_.reserve(modifiers.size());
        for (const scene::Modifier& modifier : modifiers) {
            modifiers_.push_back(std::make_unique<SceneModifier>(modifier));
        }
    }

    Object* Get() override { return this; }

    Class_ID ClassID() override { return derivObjClassID; }
    int NumModifiers() override { return static_cast<int>(modifiers_.size()); }
    Object* GetObjRef() override { return below_; }
    Modifier* GetModifier(int index) override {
        return index >= 0 && index < NumModifiers() ? modifiers_[index].get() : nullptr;
    }

    // The modifiers of a scene description do not deform.
    ObjectState Eval(TimeValue t) override { return below_->Eval(t); }
    ObjectState Eval(TimeValue t, int) override { return below_->Eval(t); }

  private:
    std::vector<std::unique_ptr<SceneModifier>> modifiers_;
    Object* below_;
};

}  // namespace

std::unique_ptr<SceneObject> MakeDerivedObject(const std::vector<scene::Modifier>& modifiers,
                                               Object* below) {
    return std::make_unique<DerivedObject>(modifiers, below);
}

}  // namespace maxhost
