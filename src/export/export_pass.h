// One pass over the scene, which writes one file: what it collects, and what it can export.
#ifndef EXPORT_EXPORT_PASS_H
#define EXPORT_EXPORT_PASS_H

#include <max.h>
#include <maxapi.h>

#include "core/holder.h"
#include "core/pointer_list.h"
#include "core/types.h"
#include "export/export_options.h"
#include "export/materials.h"
#include "export/skins.h"
#include "format/kta_writer.h"
#include "scene/transform_samples.h"
#include "scene/wires.h"

class Texmap;

// 0 while the actor file is written, 1 while the motion file is.
extern Plinth::UInt8 g_motionPass;

typedef Plinth::PointerList<INode> NodeList;

// Made when a pass begins, and gone with all of this when it ends.
struct ExportPass {
    ExportPass(Interface* maxInterface, const ExportOptions& exportOptions);

    Interface* const ip;
    const ExportOptions options;
    KTAWriter writer;
    int nodeTotal;  // nodes of the pass, and how many have been visited
    int nodeDone;

    NodeList exportedNodes;                   // a node's position is its node number
    Plinth::PointerList<Mtl> sceneMaterials;  // of the nodes, in order of appearance
    DefaultMaterials defaultMaterials;        // of nodes without a material
    MaterialTable materialTable;              // of the materials written
    Plinth::Int32 numMaterials;               // written, the "Extra material" included
    KTALayerType layerType;                   // of the layer written last
    SkinStack openSkins;
    PendingWires pendingWires;          // whose second end has not been met yet
    TransformSamples transformSamples;  // of the nodes whose motion is being written

  private:
    ExportPass(const ExportPass&);
    ExportPass& operator=(const ExportPass&);
};

typedef Plinth::ObjectHolder<ExportPass> ExportPassHolder;

// Ends the pass under way, if there is one, and begins a new one that has collected nothing.
void ResetExportState(ExportPassHolder& pass, Interface* ip, const ExportOptions& options);

// Writes header, materials and nodes of the open file. Shows progress; a cancel leaves out the
// nodes that have not been visited.
void ExportRoots(ExportPass& pass, const NodeList& roots);
// Adds the node and all below it to `counter`; in the actor pass, gives each a material.
void PrepareNodes(ExportPass& pass, INode* node, int& counter);
// Exports a node and all below it; false when the user cancelled.
bool ExportNodeTree(ExportPass& pass, INode* node, bool withProgress);

// ------------------------------------------------ nodes, and what hangs from a node

// Writes a node that has not been written in this pass, with what hangs from it.
void ExportNode(ExportPass& pass, INode* node);
// ExportNode in two steps: the node chunk and the mesh, which may open a skin; where it does not,
// the second step follows, and otherwise when the skin's weights are written.
void BeginNode(ExportPass& pass, INode* node);
void FinishNode(ExportPass& pass, INode* node);

// Writes the mesh of a geometric node that has been written, and opens its skin.
void ExportMesh(ExportPass& pass, INode* node, bool isCollision);
// Begins with the bones of a node that has a Physique or Skin modifier.
void OpenSkinOf(ExportPass& pass, INode* node);
// Writes bones and weights of the open skins, and what follows them at their nodes.
void ExportOpenSkins(ExportPass& pass);
// Writes the IK joint limits of a node that has been written, where it has any.
void ExportJointLimits(ExportPass& pass, INode* node);
// Writes the chain of a node whose transform is an IK chain controller.
void ExportIKChain(ExportPass& pass, INode* node);
// Writes the wires whose second end is a channel of the node, and notes its other channels as
// first ends.
void ExportWires(ExportPass& pass, INode* node);
// Writes the channels of the node's Morpher that have points.
void ExportMorphTargets(ExportPass& pass, INode* node);

// ------------------------------------------------ materials

// Writes the "Extra material", number 0, and the scene's materials with their layers.
void ExportMaterialList(ExportPass& pass);
// `subIndex` is the material's place among the sub-materials of another, -1 at the top level.
// `listIndex` is the place of the topmost one among the scene's materials.
void ExportMaterial(ExportPass& pass, Mtl* material, Plinth::Int32 listIndex,
                    Plinth::Int32 subIndex);
// Writes a bitmap as a layer of the material written last, and the bitmaps below the map.
// `parent` is the class of what holds the map: a material, or another map.
void ExportLayer(ExportPass& pass, Texmap* map, const Class_ID& parent, int slot, float amount);
// The numbers that a node's sub-meshes have for the materials of its faces. The node is asked once.
class MaterialNumbers {
  public:
    MaterialNumbers(const ExportPass& pass, INode* node);
    // 0 where there is none.
    Plinth::Int32 Of(Face& face) const {
        return hasSubMaterials ? table.NumberOf(listIndex, face.getMatID()) : number;
    }

  private:
    const MaterialTable& table;
    Plinth::Int32 listIndex;  // of a material with sub-materials
    bool hasSubMaterials;
    Plinth::Int32 number;  // of all faces otherwise
};

// ------------------------------------------------ motion

// Writes a node's motion part and its tracks; nothing for a node that is not animated.
void ExportMotionPart(ExportPass& pass, INode* node);
// Writes the tracks that the flags name, sampled or keyframed by the option.
void ExportAnimation(ExportPass& pass, INode* node, bool position, bool rotation, bool scale);
// Tracks are 'P', 'R' and 'S'; any other letter gives a head without keys.
void WriteSampledTrack(ExportPass& pass, INode* node, char track);
// 'P' copies the keys of the position's axes, 'r' those of the rotation's. Nothing where one of
// them is no Bezier float controller.
void WriteKeyframedTrack(ExportPass& pass, INode* node, char track);
// Nothing where the scale is no Bezier scale controller.
void WriteKeyframedScaleTrack(ExportPass& pass, INode* node);
// Finds out whether position, rotation and scale are animated: by the samples, or by the keys, as
// the option says. False when none is.
bool DetectAnimation(ExportPass& pass, INode* node, bool& position, bool& rotation, bool& scale);

#endif
