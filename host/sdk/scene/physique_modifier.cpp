#include <CS/phyexp.h>

#include <algorithm>

#include "host/sdk/calls.h"
#include "host/sdk/live_objects.h"
#include "host/sdk/scene/modifiers.h"

namespace maxhost {
namespace {

class RigidVertex final : public IPhyRigidVertex {
  public:
    explicit RigidVertex(INode* node) : node_(node) {}

    int GetVertexType() override { return RIGID_NON_BLENDED_TYPE; }
    INode* GetNode() override {
        ++calls.skinBones;
        return node_;
    }

  private:
    INode* node_;
};

class BlendedVertex final : public IPhyBlendedRigidVertex {
  public:
    BlendedVertex(const scene::PhysiqueBlended& description, const SceneLinks& links)
        : description_(description), links_(links) {}

    int GetVertexType() override { return RIGID_BLENDED_TYPE; }
    int GetNumberNodes() override { return static_cast<int>(description_.nodes.size()); }
    INode* GetNode(int i) override {
        ++calls.skinBones;
        return IsThere(i) ? links_.NodeAt(description_.nodes[i].node) : nullptr;
    }
    float GetWeight(int i) override {
        ++calls.skinWeights;
        return IsThere(i) ? description_.nodes[i].weight : 0.0f;
    }

  private:
    bool IsThere(int i) const { return i >= 0 && i < static_cast<int>(description_.nodes.size()); }

    const scene::PhysiqueBlended& description_;
    const SceneLinks& links_;
};

// The node of the greatest weight, the first of equal ones; null where there is none.
INode* Heaviest(const scene::PhysiqueBlended& vertex, const SceneLinks& links) {
    const auto heaviest =
        std::max_element(vertex.nodes.begin(), vertex.nodes.end(),
                         [](const auto& a, const auto& b) { return a.weight < b.weight; });
    return heaviest == vertex.nodes.end() ? nullptr : links.NodeAt(heaviest->node);
}

// Owns what it lends; what is not taken back is destroyed with it.
template <class Lent>
class Lender {
  public:
    Lent* Lend(std::unique_ptr<Lent> made) {
        Lent* lent = made.get();
        owned_.emplace(lent, std::move(made));
        loans_.Lend(lent);
        return lent;
    }
    void TakeBack(Lent* lent) {
        if (loans_.TakeBack(lent)) {
            owned_.erase(lent);
        }
    }

  private:
    Loans loans_;
    std::unordered_map<Lent*, std::unique_ptr<Lent>> owned_;
};

class PhysiqueContext final : public IPhyContextExport {
  public:
    PhysiqueContext(const scene::Physique& description, const SceneLinks& links)
        : description_(description), links_(links) {}

    void ConvertToRigid(BOOL convert) override { convert_ = convert; }
    void AllowBlending(BOOL allow) override { blend_ = allow; }

    IPhyVertexExport* GetVertexInterface(int i) override {
        ++calls.skinVertices;
        std::unique_ptr<IPhyVertexExport> vertex = MakeVertex(i);
        return vertex != nullptr ? vertices_.Lend(std::move(vertex)) : nullptr;
    }
    void ReleaseVertexInterface(IPhyVertexExport* vertex) override { vertices_.TakeBack(vertex); }

  private:
    std::unique_ptr<IPhyVertexExport> MakeVertex(int i) const {
        if (i < 0 || i >= static_cast<int>(description_.vertices.size())) {
            return nullptr;
        }
        if (const auto* rigid = std::get_if<scene::PhysiqueRigid>(&description_.vertices[i])) {
            return std::make_unique<RigidVertex>(links_.NodeAt(rigid->node));
        }
        const auto* blended = std::get_if<scene::PhysiqueBlended>(&description_.vertices[i]);
        if (blended == nullptr || !convert_) {
            return nullptr;
        }
        if (!blend_) {
            return std::make_unique<RigidVertex>(Heaviest(*blended, links_));
        }
        return std::make_unique<BlendedVertex>(*blended, links_);
    }

    const scene::Physique& description_;
    const SceneLinks& links_;
    bool convert_ = false;
    bool blend_ = true;
    Lender<IPhyVertexExport> vertices_;
};

class PhysiqueModifier final : public SceneModifier, public IPhysiqueExport {
  public:
    PhysiqueModifier(const scene::Physique& description, const StackPlace& place)
        : SceneModifier(Class_ID(PHYSIQUE_CLASS_ID_A, PHYSIQUE_CLASS_ID_B)),
          description_(description),
          place_(place) {}

    void* GetInterface(ULONG id) override {
        if (id != I_PHYINTERFACE) {
            return nullptr;
        }
        IPhysiqueExport* lent = this;
        loans_.Lend(lent);
        return lent;
    }
    void ReleaseInterface(ULONG id, void* lent) override {
        loans_.TakeBack(id == I_PHYINTERFACE ? lent : nullptr);
    }

    IPhyContextExport* GetContextInterface(INode* node) override {
        ++calls.skinContexts;
        return node == place_.node
                   ? contexts_.Lend(std::make_unique<PhysiqueContext>(description_, place_.links))
                   : nullptr;
    }
    void ReleaseContextInterface(IPhyContextExport* context) override {
        contexts_.TakeBack(context);
    }

  private:
    const scene::Physique& description_;
    const StackPlace place_;
    Loans loans_;
    Lender<IPhyContextExport> contexts_;
};

}  // namespace

std::unique_ptr<SceneModifier> MakePhysiqueModifier(const scene::Physique& description,
                                                    const StackPlace& place) {
    return std::make_unique<PhysiqueModifier>(description, place);
}

}  // namespace maxhost
