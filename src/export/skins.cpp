#include "export/skins.h"

#include <string.h>

#include "core/log.h"
#include "export/export_pass.h"
#include "scene/node.h"

using Plinth::Int32;
using Plinth::UInt32;
using Plinth::UInt64;
using Plinth::UInt8;

namespace {

// The greatest values of a vertex's count (u8) and a weight's bone number (i16).
enum { kMostWeights = 255, kHighestBoneNumber = 32767 };

// The greatest value of a chunk's size.
const UInt64 kMostChunkBytes = 0xffffffffu;

void Optimize(BoneWeights& weights, VertexWeightKind kind, const ExportOptions& options) {
    if (options.optimizeSkin && kind == kWeightedVertex) {
        OptimizeBoneWeights(weights, options.weightThreshold, options.maxWeightsPerVertex);
    }
}

// Once when the bones are looked for, and once when the weights are written.
void LogNoBones(const Int32* numbers, Int32 count) {
    for (Int32 i = 0; i < count; ++i) {
        Plinth::Log("Help! BoneNr is < 0 (%d)", numbers[i]);
    }
}

Int32 NumWritten(Int32 numWeights) {
    return numWeights < kMostWeights ? numWeights : static_cast<Int32>(kMostWeights);
}

}  // namespace

// ---------------------------------------------------------------- bones

OpenSkin::OpenSkin(INode* skinned, const SkinModifiers& modifiers)
    : node(skinned),
      reader(MakeWeightReader(skinned, modifiers)),
      hasAllBones(false),
      entryBytes(0),
      kind(kNoVertex),
      nextWeight(0) {
    hasAllBones = !reader->BeginBones() || !GatherNextVertex();
}

INode* OpenSkin::NextBone(const Plinth::PointerList<INode>& exported,
                          const ExportOptions& options) {
    while (!hasAllBones) {
        while (nextWeight < gathered.weights.Count()) {
            const Int32 bone = gathered.weights[nextWeight++].bone;
            if (bone >= 0 && !IsExported(bone, exported)) {
                return reader->Bones()[bone];
            }
        }
        KeepVertex(options);
        hasAllBones = !GatherNextVertex();
    }
    return NULL;
}

bool OpenSkin::IsExported(Int32 bone, const Plinth::PointerList<INode>& exported) {
    while (bone >= isExported.Count()) {
        isExported.AddAmortized(false);
    }
    isExported[bone] = isExported[bone] || exported.Find(reader->Bones()[bone]) >= 0;
    return isExported[bone];
}

// The bones of a vertex may be met once what is wrong with them has been said.
bool OpenSkin::GatherNextVertex() {
    const Int32 vertex = vertices.Count();
    if (vertex == 0) {
        vertices.Reserve(reader->NumVertices());
    }
    if (vertex >= reader->NumVertices()) {
        return false;
    }
    kind = reader->Gather(vertex, gathered);
    LogNoBones(gathered.noBones.Data(), gathered.noBones.Count());
    nextWeight = 0;
    return true;
}

void OpenSkin::KeepVertex(const ExportOptions& options) {
    BoneWeights& left = gathered.weights;
    SkinVertex vertex = {left.Count(), 0, gathered.noBones.Count(), kind != kNoVertex};
    Optimize(left, kind, options);
    vertex.numLeft = left.Count();
    const Int32 count = NumWritten(left.Count());
    entryBytes += sizeof(KTAWeight) * static_cast<UInt64>(count);
    // Beyond what a chunk holds no weight is written.
    for (Int32 i = 0; i < count && entryBytes <= kMostChunkBytes; ++i) {
        const SkinWeight weight = {left[i].bone, left[i].weight};
        weights.AddAmortized(weight);
    }
    for (Int32 i = 0; i < gathered.noBones.Count(); ++i) {
        noBones.AddAmortized(gathered.noBones[i]);
    }
    vertices.Add(vertex);
}

void OpenSkin::LogBones() const {
    const Plinth::PointerList<INode>& bones = reader->Bones();
    if (bones.Count() == 0) {
        return;
    }
    Plinth::Log("Bones influencing node '%s':", node->GetName());
    for (Int32 i = 0; i < bones.Count(); ++i) {
        Plinth::Log("#%d : %s", i + 1, bones[i]->GetName());
    }
}

SkinStack::~SkinStack() {
    while (!IsEmpty()) {
        Pop();
    }
}

void SkinStack::Push(INode* node, const SkinModifiers& modifiers) {
    skins.MakeRoom();
    skins.Add(new OpenSkin(node, modifiers));
}

void SkinStack::Pop() {
    delete skins[skins.Count() - 1];
    skins.Resize(skins.Count() - 1);
}

// ---------------------------------------------------------------- weights

namespace {

// Writes the weights of a skin's vertices.
class WeightWriter {
  public:
    WeightWriter(KTAWriter& ktaWriter, const Plinth::PointerList<INode>& nodes,
                 const Plinth::PointerList<INode>& skinBones);

    // Of so many weights those that are given are written.
    void Write(Int32 vertex, const SkinWeight* weights, Int32 numWeights);
    // How many weights had a bone whose number does not fit.
    Int32 NumLost() const { return numLost; }

  private:
    WeightWriter(const WeightWriter&);
    WeightWriter& operator=(const WeightWriter&);

    Plinth::Int16 BoneNumber(Int32 bone);

    KTAWriter& writer;
    Plinth::Array<Int32> numbers;  // by bone
    Int32 numLost;
};

WeightWriter::WeightWriter(KTAWriter& ktaWriter, const Plinth::PointerList<INode>& exported,
                           const Plinth::PointerList<INode>& bones)
    : writer(ktaWriter), numLost(0) {
    numbers.Reserve(bones.Count());
    for (Int32 i = 0; i < bones.Count(); ++i) {
        numbers.Add(exported.Find(bones[i]));
    }
}

void WeightWriter::Write(Int32 vertex, const SkinWeight* weights, Int32 numWeights) {
    const Int32 count = NumWritten(numWeights);
    if (count < numWeights) {
        Plinth::Log("WARNING: Vertex %d has %d weights, of which the first %d are written", vertex,
                    numWeights, count);
    }
    // The count byte, and the records without alignment.
    UInt8 bytes[1 + kMostWeights * sizeof(KTAWeight)];
    bytes[0] = static_cast<UInt8>(count);
    for (Int32 i = 0; i < count; ++i) {
        KTAWeight record = ZeroedRecord<KTAWeight>();
        record.bone = BoneNumber(weights[i].bone);
        record.weight = weights[i].weight;
        memcpy(bytes + 1 + i * sizeof(record), &record, sizeof(record));
    }
    writer.WriteRaw(bytes, 1 + static_cast<size_t>(count) * sizeof(KTAWeight));
}

Plinth::Int16 WeightWriter::BoneNumber(Int32 bone) {
    const Int32 number = bone < 0 ? -1 : numbers[bone];
    if (number > kHighestBoneNumber) {
        ++numLost;
        return -1;
    }
    return static_cast<Plinth::Int16>(number);
}

void WriteVertexWeights(ExportPass& pass, OpenSkin& skin) {
    WeightWriter writer(pass.writer, pass.exportedNodes, skin.Reader().Bones());
    const SkinWeight* weights = skin.Weights().Data();
    const Int32* noBones = skin.NoBones().Data();
    for (Int32 i = 0; i < skin.Vertices().Count(); ++i) {
        const SkinVertex& vertex = skin.Vertices()[i];
        LogNoBones(noBones, vertex.numNoBones);
        noBones += vertex.numNoBones;
        if (!vertex.isThere) {
            continue;
        }
        if (vertex.numLeft != vertex.numGathered) {
            Plinth::Log("The weights of vertex %d have been optimized from %d into %d weight(s)", i,
                        vertex.numGathered, vertex.numLeft);
        }
        writer.Write(i, weights, vertex.numLeft);
        weights += NumWritten(vertex.numLeft);
    }
    if (writer.NumLost() > 0) {
        Plinth::Log(
            "WARNING: %d weight(s) are written without their bones, whose numbers do not "
            "fit",
            writer.NumLost());
    }
}

void ExportWeights(ExportPass& pass, OpenSkin& skin) {
    WeightReader& reader = skin.Reader();
    if (!reader.MayWriteChunk()) {
        return;
    }
    // Vertices that Physique does not know have no count byte, but are announced as if they had.
    const KTAWeights head = {pass.exportedNodes.Find(skin.Node())};
    const UInt64 size =
        skin.EntryBytes() + static_cast<UInt64>(reader.NumVertices()) + sizeof(head);
    if (size > kMostChunkBytes) {
        Plinth::Log("WARNING: The weights are too large and are left out");
        return;
    }
    pass.writer.BeginChunk(head, static_cast<UInt32>(size));
    if (reader.BeginWeights()) {
        WriteVertexWeights(pass, skin);
    }
}

}  // namespace

// ---------------------------------------------------------------- both

void OpenSkinOf(ExportPass& pass, INode* node) {
    const SkinModifiers modifiers = {FindModifier(node, kPhysiqueModifierClassId).modifier,
                                     FindModifier(node, kSkinModifierClassId).modifier};
    if (modifiers.physique == NULL && modifiers.skin == NULL) {
        return;
    }
    Plinth::Log("    + Exporting bones...");
    pass.openSkins.Push(node, modifiers);
}

void ExportOpenSkins(ExportPass& pass) {
    while (!pass.openSkins.IsEmpty()) {
        OpenSkin& skin = pass.openSkins.Top();
        INode* const bone = skin.NextBone(pass.exportedNodes, pass.options);
        if (bone != NULL) {
            BeginNode(pass, bone);
            continue;
        }
        skin.LogBones();
        Plinth::Log("    + Exporting weights...");
        ExportWeights(pass, skin);
        INode* const node = skin.Node();
        pass.openSkins.Pop();
        FinishNode(pass, node);
    }
}
