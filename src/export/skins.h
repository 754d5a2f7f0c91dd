// Skins: what stands behind the mesh of a node with a Physique or Skin modifier. Its bones are
// written first, so that they have numbers, then its weights.
#ifndef EXPORT_SKIN_EXPORT_H
#define EXPORT_SKIN_EXPORT_H

#include <max.h>

#include "core/array.h"
#include "core/holder.h"
#include "core/pointer_list.h"
#include "core/types.h"
#include "export/export_options.h"
#include "scene/weights.h"

struct SkinWeight {
    Plinth::Int32 bone;
    Plinth::Float32 weight;
};

// What is written of a vertex, and said of it in the log.
struct SkinVertex {
    Plinth::Int32 numGathered;  // weights
    Plinth::Int32 numLeft;      // of these once they are optimized
    Plinth::Int32 numNoBones;   // negative bone numbers
    bool isThere;               // the modifier knows the vertex
};

// A skin whose bones are being exported. Each vertex is read once, and what will be written of it
// is kept until its bones have numbers.
class OpenSkin {
  public:
    OpenSkin(INode* node, const SkinModifiers& modifiers);

    INode* Node() const { return node; }
    WeightReader& Reader() { return *reader.Get(); }

    // The next bone that is not among the exported nodes; null when the bones of all vertices have
    // been met. Met again, a bone that could not be exported is given again. The options are the
    // same in all calls.
    INode* NextBone(const Plinth::PointerList<INode>& exported, const ExportOptions& options);

    // These hold once NextBone gave null.
    void LogBones() const;
    Plinth::UInt64 EntryBytes() const { return entryBytes; }  // of all vertices' weights
    const Plinth::Array<SkinVertex>& Vertices() const { return vertices; }
    // Of all vertices, of none more than can be written; the bones are positions in the reader's.
    const Plinth::Array<SkinWeight>& Weights() const { return weights; }
    const Plinth::Array<Plinth::Int32>& NoBones() const { return noBones; }

  private:
    OpenSkin(const OpenSkin&);
    OpenSkin& operator=(const OpenSkin&);

    bool IsExported(Plinth::Int32 bone, const Plinth::PointerList<INode>& exported);
    bool GatherNextVertex();
    void KeepVertex(const ExportOptions& options);

    INode* node;
    Plinth::ObjectHolder<WeightReader> reader;
    bool hasAllBones;
    Plinth::Array<bool> isExported;  // by bone, as far as is known
    Plinth::UInt64 entryBytes;
    Plinth::Array<SkinVertex> vertices;
    Plinth::Array<SkinWeight> weights;
    Plinth::Array<Plinth::Int32> noBones;

    VertexWeights gathered;  // of the vertex that is being looked at
    VertexWeightKind kind;
    Plinth::Int32 nextWeight;
};

// The skins under way, each one's node being a bone of the one before. A bone may have a skin in
// its turn, to any depth, which must not become the depth of a recursion.
class SkinStack {
  public:
    SkinStack() {}
    ~SkinStack();

    bool IsEmpty() const { return skins.Count() == 0; }
    Plinth::Int32 Count() const { return skins.Count(); }
    OpenSkin& Top() { return *skins[skins.Count() - 1]; }
    void Push(INode* node, const SkinModifiers& modifiers);
    void Pop();

  private:
    SkinStack(const SkinStack&);
    SkinStack& operator=(const SkinStack&);

    Plinth::Array<OpenSkin*> skins;  // owned
};

#endif
