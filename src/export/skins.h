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

// A skin whose bones are being exported.
class OpenSkin {
  public:
    OpenSkin(INode* node, const SkinModifiers& modifiers);

    INode* Node() const { return node; }
    const SkinModifiers& Modifiers() const { return modifiers; }

    // The next bone that is not among the exported nodes; null when the bones of all vertices have
    // been met. Met again, a bone that could not be exported is given again. The options are the
    // same in all calls.
    INode* NextBone(const Plinth::PointerList<INode>& exported, const ExportOptions& options);

    // These hold once NextBone gave null.
    void LogBones() const;
    Plinth::UInt64 EntryBytes() const { return entryBytes; }  // of all vertices' weights
    // Has room for the weights of any of the vertices.
    BoneWeights& Buffer() { return weights; }

  private:
    OpenSkin(const OpenSkin&);
    OpenSkin& operator=(const OpenSkin&);

    bool GatherNextVertex(const ExportOptions& options);

    INode* node;
    SkinModifiers modifiers;
    Plinth::ObjectHolder<WeightReader> reader;  // null: all vertices have been met
    Plinth::PointerList<INode> bones;           // distinct, in order of appearance
    Plinth::UInt64 entryBytes;

    Plinth::Int32 nextVertex;
    BoneWeights weights;  // of the vertex before
    Plinth::Int32 nextWeight;
    VertexWeightKind kind;
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
