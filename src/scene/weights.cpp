#include "scene/weights.h"

#include <stdlib.h>

#include <CS/phyexp.h>
#include <iskin.h>

#include "core/holder.h"
#include "core/log.h"

using Plinth::Float32;
using Plinth::Float64;
using Plinth::Int32;

// ---------------------------------------------------------------- the fewest that do

namespace {

void RemoveBelow(BoneWeights& weights, Float32 threshold) {
    Int32 kept = 0;
    Int32 left = weights.Count();
    for (Int32 i = 0; i < weights.Count(); ++i) {
        if (left > 1 && weights[i].weight < threshold) {
            --left;
        } else {
            weights[kept++] = weights[i];
        }
    }
    weights.Resize(kept);
}

// NaNs come first, so that the order is total.
int CompareWeights(const void* a, const void* b) {
    const BoneWeight& first = *static_cast<const BoneWeight*>(a);
    const BoneWeight& second = *static_cast<const BoneWeight*>(b);
    const int firstIsNumber = first.weight == first.weight;
    const int secondIsNumber = second.weight == second.weight;
    if (firstIsNumber != secondIsNumber) {
        return firstIsNumber - secondIsNumber;
    }
    if (firstIsNumber && first.weight != second.weight) {
        return first.weight < second.weight ? -1 : 1;
    }
    return first.order < second.order ? -1 : 1;
}

int CompareOrders(const void* a, const void* b) {
    const Int32 first = static_cast<const BoneWeight*>(a)->order;
    const Int32 second = static_cast<const BoneWeight*>(b)->order;
    return first < second ? -1 : first > second;
}

void RemoveSmallest(BoneWeights& weights, Int32 most) {
    const Int32 kept = most < 0 ? 0 : most;
    const Int32 count = weights.Count();
    if (count <= kept) {
        return;
    }
    for (Int32 i = 0; i < count; ++i) {
        weights[i].order = i;
    }
    qsort(weights.Data(), static_cast<size_t>(count), sizeof(BoneWeight), CompareWeights);
    for (Int32 i = 0; i < kept; ++i) {
        weights[i] = weights[count - kept + i];
    }
    weights.Resize(kept);
    qsort(weights.Data(), static_cast<size_t>(kept), sizeof(BoneWeight), CompareOrders);
}

// Sums above 1 are deliberately left as they are.
void ScaleToOne(BoneWeights& weights) {
    Float64 sum = 0.0;
    for (Int32 i = 0; i < weights.Count(); ++i) {
        sum += weights[i].weight;
    }
    if (sum >= 1.0 || sum == 0.0) {
        return;
    }
    for (Int32 i = 0; i < weights.Count(); ++i) {
        const Float64 weight = weights[i].weight;
        weights[i].weight = static_cast<Float32>(weight / sum * (1.0 - sum) + weight);
    }
}

}  // namespace

void OptimizeBoneWeights(BoneWeights& weights, Float32 threshold, Int32 most) {
    RemoveBelow(weights, threshold);
    RemoveSmallest(weights, most);
    ScaleToOne(weights);
}

// ---------------------------------------------------------------- Skin

namespace {

void AddWeight(BoneWeights& weights, Int32 bone, float weight) {
    const BoneWeight entry = {bone, weight, 0};
    weights.AddAmortized(entry);
}

class SkinWeightReader : public WeightReader {
  public:
    SkinWeightReader(INode* node, Modifier* modifier);

    virtual bool BeginBones();
    virtual bool BeginWeights();
    virtual bool MayWriteChunk();
    virtual Int32 NumVertices() const { return numPoints; }
    virtual VertexWeightKind Gather(Int32 vertex, VertexWeights& gathered);

  private:
    enum { kUnknownBone = -2, kMostKnownSlots = 65536 };

    bool ReportMissing() const;
    Int32 BoneOfSlot(Int32 slot);

    INode* node;
    ISkin* skin;
    ISkinContextData* context;
    Int32 numPoints;
    Plinth::Array<Int32> boneOfSlot;
};

SkinWeightReader::SkinWeightReader(INode* skinned, Modifier* modifier)
    : node(skinned),
      skin(static_cast<ISkin*>(modifier->GetInterface(I_SKIN))),
      context(NULL),
      numPoints(0) {
    if (skin != NULL) {
        context = skin->GetContextInterface(node);
    }
    if (context != NULL) {
        numPoints = context->GetNumPoints();
    }
}

bool SkinWeightReader::ReportMissing() const {
    if (skin == NULL) {
        Plinth::Log("skin == NULL!!");
    } else if (context == NULL) {
        Plinth::Log("*** Failed to get the skin context for node '%s' ***", node->GetName());
    }
    return context == NULL;
}

bool SkinWeightReader::BeginBones() {
    Plinth::Log("*** Skin modifier found, exporting bones ***");
    return !ReportMissing();
}

bool SkinWeightReader::BeginWeights() {
    Plinth::Log("*** Skin modifier found, exporting weights ***");
    if (ReportMissing()) {
        return false;
    }
    Plinth::Log("   + Skin modifier reports %d skinned vertices...", NumVertices());
    return true;
}

bool SkinWeightReader::MayWriteChunk() {
    if (skin == NULL) {
        ReportMissing();
    }
    return skin != NULL;
}

VertexWeightKind SkinWeightReader::Gather(Int32 vertex, VertexWeights& gathered) {
    gathered.weights.Resize(0);
    gathered.noBones.Resize(0);
    const int count = context->GetNumAssignedBones(vertex);
    for (int i = 0; i < count; ++i) {
        const int slot = context->GetAssignedBone(vertex, i);
        if (slot < 0) {
            gathered.noBones.AddAmortized(slot);
        } else {
            AddWeight(gathered.weights, BoneOfSlot(slot), context->GetBoneWeight(vertex, i));
        }
    }
    return kWeightedVertex;
}

// A slot's bone is asked for once, unless its number is out of all proportion.
Int32 SkinWeightReader::BoneOfSlot(Int32 slot) {
    if (slot >= kMostKnownSlots) {
        return BoneOf(skin->GetBone(slot));
    }
    while (slot >= boneOfSlot.Count()) {
        boneOfSlot.AddAmortized(kUnknownBone);
    }
    if (boneOfSlot[slot] == kUnknownBone) {
        boneOfSlot[slot] = BoneOf(skin->GetBone(slot));
    }
    return boneOfSlot[slot];
}

// ---------------------------------------------------------------- Physique

// Releases its interfaces, the context before the export interface, also where Open throws.
class PhysiqueWeightReader : public WeightReader {
  public:
    explicit PhysiqueWeightReader(Modifier* source)
        : modifier(source), physique(NULL), context(NULL), numPoints(0) {}
    void Open(INode* node);
    virtual ~PhysiqueWeightReader();

    virtual bool BeginBones() { return context != NULL; }
    virtual bool BeginWeights() { return context != NULL; }
    virtual bool MayWriteChunk() { return true; }
    virtual Int32 NumVertices() const { return numPoints; }
    virtual VertexWeightKind Gather(Int32 vertex, VertexWeights& gathered);

  private:
    Modifier* modifier;
    IPhysiqueExport* physique;
    IPhyContextExport* context;
    Int32 numPoints;
};

void PhysiqueWeightReader::Open(INode* node) {
    physique = static_cast<IPhysiqueExport*>(modifier->GetInterface(I_PHYINTERFACE));
    Object* const object = node->EvalWorldState(0).obj;
    if (object != NULL) {
        numPoints = object->NumPoints();
    }
    if (physique != NULL) {
        context = physique->GetContextInterface(node);
    }
    if (context != NULL) {
        context->ConvertToRigid(TRUE);
        context->AllowBlending(TRUE);
    }
}

PhysiqueWeightReader::~PhysiqueWeightReader() {
    if (context != NULL) {
        physique->ReleaseContextInterface(context);
    }
    if (physique != NULL) {
        modifier->ReleaseInterface(I_PHYINTERFACE, physique);
    }
}

class PhysiqueVertex {
  public:
    PhysiqueVertex(IPhyContextExport* owner, Int32 number)
        : context(owner), vertex(owner->GetVertexInterface(number)) {}
    ~PhysiqueVertex() {
        if (vertex != NULL) {
            context->ReleaseVertexInterface(vertex);
        }
    }
    IPhyVertexExport* Get() const { return vertex; }

  private:
    PhysiqueVertex(const PhysiqueVertex&);
    PhysiqueVertex& operator=(const PhysiqueVertex&);

    IPhyContextExport* context;
    IPhyVertexExport* vertex;
};

VertexWeightKind PhysiqueWeightReader::Gather(Int32 number, VertexWeights& gathered) {
    BoneWeights& weights = gathered.weights;
    weights.Resize(0);
    const PhysiqueVertex vertex(context, number);
    if (vertex.Get() == NULL) {
        return kNoVertex;
    }
    if (!(vertex.Get()->GetVertexType() & BLENDED_TYPE)) {
        IPhyRigidVertex* const rigid = static_cast<IPhyRigidVertex*>(vertex.Get());
        AddWeight(weights, BoneOf(rigid->GetNode()), 1.0f);
        return kRigidVertex;
    }
    IPhyBlendedRigidVertex* const blended = static_cast<IPhyBlendedRigidVertex*>(vertex.Get());
    const int count = blended->GetNumberNodes();
    for (int i = 0; i < count; ++i) {
        AddWeight(weights, BoneOf(blended->GetNode(i)), blended->GetWeight(i));
    }
    return kWeightedVertex;
}

}  // namespace

WeightReader* MakeWeightReader(INode* node, const SkinModifiers& modifiers) {
    if (modifiers.physique != NULL) {
        Plinth::ObjectHolder<PhysiqueWeightReader> reader(
            new PhysiqueWeightReader(modifiers.physique));
        reader->Open(node);
        return reader.Release();
    }
    if (modifiers.skin != NULL) {
        return new SkinWeightReader(node, modifiers.skin);
    }
    return NULL;
}
