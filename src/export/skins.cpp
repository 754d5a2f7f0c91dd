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

void Optimize(BoneWeights& weights, VertexWeightKind kind, const ExportOptions& options) {
    if (options.optimizeSkin && kind == kWeightedVertex) {
        OptimizeBoneWeights(weights, options.weightThreshold, options.maxWeightsPerVertex);
    }
}

Int32 NumWritten(const BoneWeights& weights) {
    return weights.Count() < kMostWeights ? weights.Count() : static_cast<Int32>(kMostWeights);
}

}  // namespace

// ---------------------------------------------------------------- bones

OpenSkin::OpenSkin(INode* skinned, const SkinModifiers& found)
    : node(skinned),
      modifiers(found),
      reader(MakeWeightReader(skinned, found)),
      entryBytes(0),
      nextVertex(0),
      nextWeight(0),
      kind(kNoVertex) {
    if (!reader->BeginBones()) {
        reader.Reset(NULL);
    }
}

INode* OpenSkin::NextBone(const Plinth::PointerList<INode>& exported,
                          const ExportOptions& options) {
    while (reader.Get() != NULL) {
        while (nextWeight < weights.Count()) {
            INode* const bone = weights[nextWeight++].bone;
            if (bone == NULL) {
                continue;
            }
            bones.Add(bone);
            if (exported.Find(bone) < 0) {
                return bone;
            }
        }
        if (!GatherNextVertex(options)) {
            reader.Reset(NULL);
        }
    }
    return NULL;
}

// Counts the weights that are written of the vertex before.
bool OpenSkin::GatherNextVertex(const ExportOptions& options) {
    Optimize(weights, kind, options);
    entryBytes += sizeof(KTAWeight) * static_cast<UInt64>(NumWritten(weights));
    weights.Resize(0);
    nextWeight = 0;
    if (nextVertex >= reader->NumVertices()) {
        return false;
    }
    kind = reader->Gather(nextVertex++, weights);
    return true;
}

void OpenSkin::LogBones() const {
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

// Writes vertices' weights.
class WeightWriter {
  public:
    WeightWriter(KTAWriter& ktaWriter, const Plinth::PointerList<INode>& nodes)
        : writer(ktaWriter), exported(nodes), numLost(0) {}

    void Write(Int32 vertex, const BoneWeights& weights);
    // How many weights had a bone whose number does not fit.
    Int32 NumLost() const { return numLost; }

  private:
    WeightWriter(const WeightWriter&);
    WeightWriter& operator=(const WeightWriter&);

    Plinth::Int16 BoneNumber(INode* bone);

    KTAWriter& writer;
    const Plinth::PointerList<INode>& exported;
    Int32 numLost;
};

void WeightWriter::Write(Int32 vertex, const BoneWeights& weights) {
    const Int32 count = NumWritten(weights);
    if (count < weights.Count()) {
        Plinth::Log("WARNING: Vertex %d has %d weights, of which the first %d are written", vertex,
                    weights.Count(), count);
    }
    KTAWeight records[kMostWeights];
    const size_t size = static_cast<size_t>(count) * sizeof(KTAWeight);
    memset(records, 0, size);
    for (Int32 i = 0; i < count; ++i) {
        records[i].bone = BoneNumber(weights[i].bone);
        records[i].weight = weights[i].weight;
    }
    const UInt8 countByte = static_cast<UInt8>(count);
    writer.WriteRecord(countByte);
    if (count > 0) {
        writer.WriteRaw(records, size);
    }
}

Plinth::Int16 WeightWriter::BoneNumber(INode* bone) {
    const Int32 number = exported.Find(bone);
    if (number > kHighestBoneNumber) {
        ++numLost;
        return -1;
    }
    return static_cast<Plinth::Int16>(number);
}

void WriteVertexWeights(ExportPass& pass, WeightReader& reader, BoneWeights& buffer) {
    WeightWriter writer(pass.writer, pass.exportedNodes);
    for (Int32 i = 0; i < reader.NumVertices(); ++i) {
        const VertexWeightKind kind = reader.Gather(i, buffer);
        if (kind == kNoVertex) {
            continue;
        }
        const Int32 gathered = buffer.Count();
        Optimize(buffer, kind, pass.options);
        if (buffer.Count() != gathered) {
            Plinth::Log("The weights of vertex %d have been optimized from %d into %d weight(s)", i,
                        gathered, buffer.Count());
        }
        writer.Write(i, buffer);
    }
    if (writer.NumLost() > 0) {
        Plinth::Log(
            "WARNING: %d weight(s) are written without their bones, whose numbers do not "
            "fit",
            writer.NumLost());
    }
}

void ExportWeights(ExportPass& pass, OpenSkin& skin) {
    const Plinth::ObjectHolder<WeightReader> reader(
        MakeWeightReader(skin.Node(), skin.Modifiers()));
    if (!reader->MayWriteChunk()) {
        return;
    }
    // Vertices that Physique does not know have no count byte, but are announced as if they had.
    const KTAWeights head = {pass.exportedNodes.Find(skin.Node())};
    const UInt64 size =
        skin.EntryBytes() + static_cast<UInt64>(reader->NumVertices()) + sizeof(head);
    if (size > 0xffffffffu) {
        Plinth::Log("WARNING: The weights are too large and are left out");
        return;
    }
    pass.writer.BeginChunk(head, static_cast<UInt32>(size));
    if (reader->BeginWeights()) {
        WriteVertexWeights(pass, *reader.Get(), skin.Buffer());
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
