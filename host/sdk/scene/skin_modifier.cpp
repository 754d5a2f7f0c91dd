#include <iskin.h>

#include "host/sdk/calls.h"
#include "host/sdk/scene/modifiers.h"

namespace maxhost {
namespace {

class SkinContext final : public ISkinContextData {
  public:
    explicit SkinContext(const std::vector<std::vector<scene::SkinWeight>>& weights)
        : weights_(weights) {}

    int GetNumPoints() override { return static_cast<int>(weights_.size()); }
    int GetNumAssignedBones(int vertex) override {
        ++calls.skinVertices;
        return CountOf(vertex);
    }
    int GetAssignedBone(int vertex, int i) override {
        const scene::SkinWeight* weight = Find(vertex, i);
        return weight != nullptr ? weight->slot : -1;
    }
    float GetBoneWeight(int vertex, int i) override {
        ++calls.skinWeights;
        const scene::SkinWeight* weight = Find(vertex, i);
        return weight != nullptr ? weight->weight : 0.0f;
    }

  private:
    int CountOf(int vertex) {
        return vertex >= 0 && vertex < GetNumPoints() ? static_cast<int>(weights_[vertex].size())
                                                      : 0;
    }
    const scene::SkinWeight* Find(int vertex, int i) {
        return i >= 0 && i < CountOf(vertex) ? &weights_[vertex][i] : nullptr;
    }

    const std::vector<std::vector<scene::SkinWeight>>& weights_;
};

class SkinModifier final : public SceneModifier, public ISkin {
  public:
    SkinModifier(const scene::Skin& description, const StackPlace& place)
        : SceneModifier(SKIN_CLASSID),
          description_(description),
          place_(place),
          context_(description.weights) {}

    void* GetInterface(ULONG id) override {
        return id == I_SKIN ? static_cast<ISkin*>(this) : nullptr;
    }

    INode* GetBone(int slot) override {
        ++calls.skinBones;
        const auto& bones = description_.bones;
        return slot >= 0 && slot < static_cast<int>(bones.size()) ? place_.links.NodeAt(bones[slot])
                                                                  : nullptr;
    }
    ISkinContextData* GetContextInterface(INode* node) override {
        ++calls.skinContexts;
        return description_.context && node == place_.node ? &context_ : nullptr;
    }

  private:
    const scene::Skin& description_;
    const StackPlace place_;
    SkinContext context_;
};

}  // namespace

std::unique_ptr<SceneModifier> MakeSkinModifier(const scene::Skin& description,
                                                const StackPlace& place) {
    return std::make_unique<SkinModifier>(description, place);
}

}  // namespace maxhost
