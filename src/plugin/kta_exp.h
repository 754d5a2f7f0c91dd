// The exporter: 3ds Max makes one object of this class for each export, calls DoExport and deletes
// it. Its operations are implemented beside what they export: the format's write primitives in
// format/, nodes in export/, the driver and the descriptive answers here.
#ifndef PLUGIN_KTA_EXP_H
#define PLUGIN_KTA_EXP_H

#include <stdio.h>

#include <max.h>

#include <impexp.h>

#include "core/log.h"
#include "core/pointer_list.h"
#include "export/default_materials.h"
#include "export/material_table.h"
#include "export/skin_export.h"
#include "plugin/export_options.h"
#include "scene/pending_wires.h"
#include "scene/transform_samples.h"

class BitmapTex;
struct KTAMaterial;

class KTAExp : public SceneExport {
  public:
    // Without memory throws std::bad_alloc.
    KTAExp();
    virtual ~KTAExp();

    virtual int ExtCount();
    virtual const MCHAR* Ext(int n);
    virtual const MCHAR* LongDesc();
    virtual const MCHAR* ShortDesc();
    virtual const MCHAR* AuthorName();
    virtual const MCHAR* CopyrightMessage();
    virtual const MCHAR* OtherMessage1();
    virtual const MCHAR* OtherMessage2();
    virtual unsigned int Version();
    virtual void ShowAbout(HWND parent);
    // Runs one export. `name` is the file that the user chose; only SCENE_EXPORT_SELECTED of
    // `options` counts. Returns 1 after a completed export and when the user cancels the options
    // dialog; 0 when a Skin modifier is not the last of its stack, a file cannot be created or
    // memory runs out. In the last case one line of the log says so.
    virtual int DoExport(const MCHAR* name, ExpInterface* ei, Interface* i,
                         BOOL suppressPrompts = FALSE, DWORD options = 0);
    virtual BOOL SupportsOptions(int ext, DWORD options);

    // ------------------------------------------------ the driver

    // False when the node or one below it has an enabled modifier of another class above its Skin
    // modifier.
    bool CheckSkinModifierOrder(INode* node);
    // Adds the node and all below it to `counter`; in the actor pass, gives each a material.
    void PrepareNodes(INode* node, int& counter);
    // Exports a node and all below it; false when the user cancelled.
    bool ExportNodeTree(INode* node, bool withProgress);
    // Empties all that a pass collects.
    void ResetExportState();

    // ------------------------------------------------ settings

    ExportOptions& Options() { return exportOptions; }
    // <plug-in configuration directory>\KTAExp2.cfg
    void GetSettingsPath(CStr& path);
    // Replaces as many bytes of the options as the settings file holds; a missing one changes
    // nothing.
    void LoadSettings();
    void SaveSettings();

    // ------------------------------------------------ the format's write primitives
    // All do nothing when no stream is open. Write errors are not detected.

    void WriteFileHeader();
    void WriteChunkHeader(Plinth::UInt32 id, Plinth::UInt32 size, Plinth::UInt32 version);
    void WriteChunk(Plinth::UInt32 id, Plinth::UInt32 size, const void* body,
                    Plinth::UInt32 version);
    void WriteRaw(const void* buffer, size_t length);

    // A chunk whose first `length` bytes are known only when all of it has been written: remember
    // the position, write a provisional header and beginning, go on to the chunk's end, and let
    // PatchChunk write header and beginning again. The stream stands at its end afterwards.
    fpos_t ChunkPosition();
    void PatchChunk(const fpos_t& position, Plinth::UInt32 id, Plinth::UInt32 size,
                    Plinth::UInt32 version, const void* beginning, size_t length);

    // ------------------------------------------------ nodes

    // Writes a node that has not been written in this pass, with what hangs from it.
    void ExportNode(INode* node);

    // ------------------------------------------------ materials

    // Writes the "Extra material", number 0, and the scene's materials with their layers.
    void ExportMaterialList();
    // `subIndex` is the material's place among the sub-materials of another, -1 at the top level.
    // `listIndex` is the place of the topmost one among the scene's materials.
    void ExportMaterial(Mtl* material, Plinth::Int32 listIndex, Plinth::Int32 subIndex);
    // Writes a bitmap as a layer of the material written last, and the bitmaps below the map.
    // `parent` is the class of what holds the map: a material, or another map.
    void ExportLayer(Texmap* map, const Class_ID& parent, int slot, float amount);
    // The number that a sub-mesh has for the face's material; 0 where there is none.
    Plinth::Int32 MaterialNumber(Face* face, INode* node);

    // ------------------------------------------------ meshes

    // Writes the mesh of a geometric node that has been written, and opens its skin.
    void ExportMesh(INode* node, bool isCollision);

    // ------------------------------------------------ motion

    // Writes a node's motion part and its tracks; nothing for a node that is not animated.
    void ExportMotionPart(INode* node);
    // Writes the tracks that the flags name, sampled or keyframed by the option.
    void ExportAnimation(INode* node, bool position, bool rotation, bool scale);
    // Tracks are 'P', 'R' and 'S'; any other letter gives a head without keys.
    void WriteSampledTrack(INode* node, char track);
    // 'P' copies the keys of the position's axes, 'r' those of the rotation's. Nothing where one of
    // them is no Bezier float controller.
    void WriteKeyframedTrack(INode* node, char track);
    // Nothing where the scale is no Bezier scale controller.
    void WriteKeyframedScaleTrack(INode* node);
    // What of the node is animated: by its samples, or by its keys. False when nothing is.
    bool DetectAnimation(INode* node, bool& position, bool& rotation, bool& scale);

    // ------------------------------------------------ skins

    // Begins with the bones of a node that has a Physique or Skin modifier.
    void OpenSkinOf(INode* node);
    // Writes bones and weights of the open skins, and what follows them at their nodes.
    void ExportOpenSkins();

    // ------------------------------------------------ what else hangs from a node

    // Writes the IK joint limits of a node that has been written, where it has any.
    void ExportJointLimits(INode* node);
    // Writes the chain of a node whose transform is an IK chain controller.
    void ExportIKChain(INode* node);
    // Writes the wires whose second end is a channel of the node, and notes its other channels as
    // first ends.
    void ExportWires(INode* node);
    // Writes the channels of the node's Morpher that have points.
    void ExportMorphTargets(INode* node);

  protected:
    ExportOptions exportOptions;
    Interface* ip;
    FILE* file;     // of the current pass; null between passes
    int nodeTotal;  // nodes of the pass, and how many have been visited
    int nodeDone;
    Plinth::LogFile* logCallback;  // the export's log; owned by the log manager

    Plinth::PointerList<INode> exportedNodes;  // a node's position is its node number
    Plinth::PointerList<Mtl> sceneMaterials;   // the materials of the nodes, in order of appearance
    DefaultMaterials defaultMaterials;         // of nodes without a material
    MaterialTable materialTable;               // of the materials written
    Plinth::Int32 numMaterials;                // written, the "Extra material" included
    float indexOfRefraction;                   // of the next standard material
    Plinth::UInt8 layerType;                   // of the layer written last
    TransformSamples transformSamples;         // of the node whose motion is being written
    SkinStack openSkins;
    PendingWires pendingWires;  // whose second end has not been met yet

  private:
    // Made with the exporter, so that it can be logged where no memory is left.
    const Plinth::String outOfMemoryLine;

    KTAExp(const KTAExp&);
    KTAExp& operator=(const KTAExp&);

    typedef Plinth::PointerList<INode> NodeList;

    // DoExport without the policy for exceptions.
    int RunExport(const char* name, bool selectedOnly);
    // Frees what the export has collected and logs why it ends.
    void GiveUp(const Plinth::String& line);
    void GatherRoots(bool selectedOnly, NodeList& roots);
    bool CheckSkinModifierOrder(const NodeList& roots);
    bool RunOptionsDialog();
    bool RunWritingPass(int pass, const char* name, const NodeList& roots);
    // Makes room for as many entries as there are nodes: the lists grow by a few at a time.
    void ReserveLists(const NodeList& roots);
    void WriteParts(const NodeList& roots);
    void WriteNodes(const NodeList& roots);
    void WriteVisibleNode(INode* node);
    void UpdateProgress();

    // The node chunk and the mesh; then, unless the mesh has a skin, what follows them.
    void BeginNode(INode* node);
    // What stands behind a node's mesh and its skin's weights.
    void FinishNode(INode* node);
    void ExportMeshOfNode(INode* node);

    void ExportWeights(OpenSkin& skin);
    void WriteVertexWeights(WeightReader& reader, BoneWeights& buffer);

    void FillMaterial(KTAMaterial& record, Mtl* material);
    void WriteMaterial(const KTAMaterial& record);
    void ExportLayers(Mtl* material);
    void ChooseLayerType(const Class_ID& parent, int slot);
    void WriteLayer(BitmapTex* bitmap, float amount);

    // Makes the samples those of the node on the export's grid.
    void ChooseSamples(INode* node);
    void DetectInSamples(INode* node, bool& position, bool& rotation, bool& scale);
};

#endif
