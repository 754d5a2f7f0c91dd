#include "host/scene/losses.h"

#include <array>

namespace maxhost::scene {
namespace {

constexpr LossStage kImport = LossStage::import;
constexpr LossStage kNames = LossStage::names;
constexpr LossStage kExporting = LossStage::exporting;
constexpr LossStage kRun = LossStage::run;

constexpr LossKind kKinds[] = {
    {LossCode::animationNotFinite, "animation-not-finite", kImport,
     "numbers of animations beyond what a float holds replaced by 0",
     "Keys computed from the file's animation do not fit a 32-bit float.",
     "Look for absurd scales or positions in the animation, and export it again."},
    {LossCode::animationWithoutNode, "animation-without-node", kImport,
     "animation of nodes that are not there left out",
     "The animation moves nodes that the file does not hold.",
     "Export the animation together with the nodes that it moves, under the same names."},
    {LossCode::boneMatrixNotFinite, "bone-matrix-not-finite", kImport,
     "numbers of bones' matrices that are not finite replaced by 0",
     "A bone's bind matrix holds infinities or no numbers, so the skin is not as it was.",
     "Reset the skin's bind pose in the program that wrote the file."},
    {LossCode::boneNameShared, "bone-name-shared", kImport, "several nodes have this name, ...",
     "A skin names its bone, and several nodes have that name: the skin may follow a wrong one.",
     "Give each node a name of its own."},
    {LossCode::cameraDirection, "camera-direction", kImport,
     "direction left out, the reader loses it",
     "The camera's direction of view does not come through; its position does.",
     "Export the camera in another format (FBX, Collada), where it matters."},
    {LossCode::channelUnreadable, "channel-unreadable", kImport,
     "animation channels that cannot be read left out",
     "Channels of the animation are not as the file's format wants them.",
     "Check the file with its format's own validator."},
    {LossCode::faceIndexOutOfRange, "face-index-out-of-range", kImport,
     "faces with a vertex number out of range left out",
     "Faces refer to vertices that the mesh does not have.",
     "Repair the mesh in the program that wrote the file."},
    {LossCode::frameRateRefused, "frame-rate-refused", kImport,
     "frame rate ... left out, it is not within 0.5 and 4800",
     "The file's frame rate is beyond what a scene can have; 30 stands for it.",
     "Name the right one with --frame-rate."},
    {LossCode::frameRateRounded, "frame-rate-rounded", kImport, "frame rate ... rounded to ...",
     "A scene has whole frames a second; times in seconds stay, frames shift a little.",
     "Nothing, or name another whole rate with --frame-rate."},
    {LossCode::keyNotFinite, "key-not-finite", kImport,
     "keys of animations that are not finite, or beyond the range of times, left out",
     "Keys hold no numbers, or times that 32-bit ticks cannot tell.",
     "Look for broken keys, or very long animations, in the program that wrote the file."},
    {LossCode::keyOrder, "key-order", kImport, "keys of animations put in the order of their times",
     "Keys stood in the file in another order than that of their times.",
     "Nothing: the motion is what the times say."},
    {LossCode::keysTooMany, "keys-too-many", kImport,
     "keys between the animation's own left out, it has too many frames",
     "Long animations are kept at the file's own keys alone, so poses between them may deviate.",
     "Split the animation, or lower the frame rate with --frame-rate."},
    {LossCode::materialUnused, "material-unused", kImport, "left out, no face shows it",
     "The file has a material that nothing wears.", "Nothing, or give it to a face."},
    {LossCode::meshAnimation, "mesh-animation", kImport,
     "animation of meshes and morph targets left out",
     "Only nodes' animation is read: morph weights and vertex animation stand still.",
     "Say the weights' animation in a scene description, or bake it into bones."},
    {LossCode::missingMesh, "missing-mesh", kImport,
     "references to meshes that do not exist left out",
     "A node shows a mesh that the file does not hold.", "Export the file again; it is damaged."},
    {LossCode::morphWeightsLost, "morph-weights-lost", kImport,
     "the reader loses the weights of blend shapes, taken as 0",
     "The shape at the start is the base shape, whatever weights the file has.",
     "Set the weights to 0 before exporting to this format, or take glTF or FBX."},
    {LossCode::motionOutsideKeys, "motion-outside-keys", kImport,
     "motion before the first and behind the last key left out",
     "The file repeats or continues a motion outside its keys; here it stands still there.",
     "Bake the motion into keys over the whole range."},
    {LossCode::nameRecoded, "name-recoded", kImport, "name was not UTF-8, read as Latin-1",
     "A name has bytes of an older code page, taken as Western European.",
     "Check the name, and save the file as UTF-8 where it is wrong."},
    {LossCode::nodeOutsideScene, "node-outside-scene", kImport,
     "nodes outside the scene that the file shows left out",
     "A glTF file shows one of its scenes; nodes of others are not read.",
     "Put the nodes into the scene that the file names as its own."},
    {LossCode::nodeWithoutName, "node-without-name", kImport, "given this name, the file has none",
     "3ds Max has no nodes without names, so the node was given one by number.",
     "Name the node in the program that wrote the file."},
    {LossCode::normalWithoutDirection, "normal-without-direction", kImport,
     "normals without a direction left out",
     "Normals of length 0, or that are no numbers, are computed from the faces instead.",
     "Recompute the mesh's normals in the program that wrote the file."},
    {LossCode::notInBindPose, "not-in-bind-pose", kImport,
     "vertices whose bones are not in their bind pose at the start",
     "The skin is bound at the pose of tick 0, which is not the one the file binds it at.",
     "Put the bones into the bind pose at the first frame."},
    {LossCode::numberNotFinite, "number-not-finite", kImport,
     "numbers that are not finite replaced by 0", "Infinities or no numbers stand in the file.",
     "Repair the object in the program that wrote the file."},
    {LossCode::objectWithoutNode, "object-without-node", kImport, "left out, there is no such node",
     "A bone, camera or light names a node that the file does not hold.",
     "Export it together with its node, under the same name."},
    {LossCode::otherAnimations, "other-animations", kImport,
     "animations left out beside the one imported (--animation chooses another)",
     "An export holds one animation.",
     "Export once for each, with --animation NAME; --list names them."},
    {LossCode::pointsAndLines, "points-and-lines", kImport, "points and lines left out",
     "Meshes consist of triangles; loose points and edges have none.",
     "Nothing, or delete them in the source."},
    {LossCode::polygonNotCut, "polygon-not-cut", kImport,
     "polygons that could not be cut into triangles left out",
     "Polygons cross themselves or lie in one line.",
     "Cut them into triangles in the program that wrote the file."},
    {LossCode::rootWithoutName, "root-without-name", kImport,
     "given the file's name, the file gives its root none",
     "The file's format has no names for its root node.",
     "Rename the file where the node's name matters."},
    {LossCode::secondObject, "second-object", kImport,
     "cameras and lights left out, the node has another object",
     "A node shows one object; a mesh, and then the bone, come first.",
     "Put the camera or light on a child node of its own."},
    {LossCode::shearInAnimation, "shear-in-animation", kImport,
     "sheared in its animation, the nearest pose without shear is kept",
     "Position, rotation and scale cannot say a shear, which unequal scales above a rotation make.",
     "Bake the hierarchy's scales away, or keep scales equal in all three axes."},
    {LossCode::skinMatrixSingular, "skin-matrix-singular", kImport,
     "not moved by their bones, the matrix of their node has no inverse",
     "The skinned mesh's node is scaled to nothing in an axis.", "Reset that node's scale."},
    {LossCode::textureCoordinateSet, "texture-coordinate-set", kImport,
     "texture coordinate sets of textures left out, the first stands for them",
     "Textures use another set of coordinates than the first.",
     "Move the texture's coordinates into the first set, where it matters."},
    {LossCode::textureEmbedded, "texture-embedded", kImport,
     "textures that stand in the file itself not taken out",
     "The exported material names a file that is not on the disk.",
     "Save the textures beside the model before exporting."},
    {LossCode::texturePathRecoded, "texture-path-recoded", kImport,
     "texture paths were not UTF-8, read as Latin-1",
     "A path has bytes of an older code page, taken as Western European.",
     "Rename the texture with plain letters, or save the file as UTF-8."},
    {LossCode::textureThirdCoordinate, "texture-third-coordinate", kImport,
     "third texture coordinates left out", "Texture coordinates have two numbers here.",
     "Nothing, unless a volume texture is meant."},
    {LossCode::textureWithoutSlot, "texture-without-slot", kImport,
     "textures without a map slot left out",
     "A 3ds Max standard material has no slot for textures of that kind.",
     "Assign them in the application, or to another channel of the material."},
    {LossCode::unitKept, "unit-kept", kImport,
     "the file's unit is ...; lengths are left in that unit (--scale changes them)",
     "The file counts lengths in a unit of its own, and one of them is one unit of the scene.",
     "Give --scale where the application counts in another unit."},
    {LossCode::upAxisKnown, "up-axis-known", kImport, "--up has no effect: the up axis is ...",
     "--up turns files that do not say which axis is up; this one, or its format, says it.",
     "Leave --up out, or turn the model in the program that wrote the file."},
    {LossCode::userPropertiesRecoded, "user-properties-recoded", kImport,
     "user properties were not UTF-8, read as Latin-1",
     "User properties have bytes of an older code page, taken as Western European.",
     "Check them, and save the file as UTF-8 where they are wrong."},
    {LossCode::vertexColors, "vertex-colors", kImport, "vertex colour sets left out",
     "Vertex colours are not read.", "Bake them into a texture."},
    {LossCode::verticesWithoutFaces, "vertices-without-faces", kImport,
     "vertices without faces left out", "The mesh is a cloud of points.",
     "Nothing, or delete it in the source."},
    {LossCode::weightIndexOutOfRange, "weight-index-out-of-range", kImport,
     "bone weights with a vertex number out of range left out",
     "Weights refer to vertices that the mesh does not have.",
     "Export the file again; it is damaged."},
    {LossCode::weightNotFinite, "weight-not-finite", kImport,
     "bone weights that are not finite left out", "Weights are infinite or no numbers.",
     "Normalise the weights in the program that wrote the file."},

    {LossCode::nameCut, "name-cut", kNames,
     "node names of more than 259 bytes, which the files cut: ...",
     "The exported files have 259 bytes for a name.", "Shorten the names."},
    {LossCode::nameShared, "name-shared", kNames,
     "several nodes of one name, and the files tell parents by name: ...",
     "A reader of the exported files cannot tell which of them is a node's parent.",
     "Give each node a name of its own."},

    {LossCode::nodeCancelled, "node-cancelled", kExporting, "cancelled before",
     "The export was cancelled before it came to the node.", "Export again."},
    {LossCode::nodeFootprint, "node-footprint", kExporting, "a biped footprint",
     "Footprints of a biped are never exported.", "Nothing: they are a help for animators."},
    {LossCode::nodeHidden, "node-hidden", kExporting, "hidden", "Hidden nodes are left out.",
     "Show the node, or export with --export-hidden."},
    {LossCode::nodeLeftOut, "node-left-out", kExporting, "left out by the exporter",
     "The exported actor file does not hold the node, for a reason that the host does not know.",
     "Look for the node's name in the log."},
    {LossCode::nodeNotSelected, "node-not-selected", kExporting, "not selected",
     "Only the selection was exported.",
     "Select the node, or export without --selected and --select."},

    {LossCode::logMissing, "log-missing", kRun, "this export could not write its log",
     "The exporter's log could not be made.", "Look for a full disk."},
    {LossCode::settingsNotKept, "settings-not-kept", kRun,
     "cannot be made, so that settings are not kept: ...",
     "The plug-in configuration directory could not be made.",
     "Name another directory with --config-dir."},
};

constexpr bool IsInOrder() {
    for (std::size_t i = 0; i < std::size(kKinds); ++i) {
        if (kKinds[i].value != static_cast<LossCode>(i)) {
            return false;
        }
    }
    return true;
}

static_assert(IsInOrder(), "a row for each code, in the codes' order");
static_assert(std::size(kKinds) == static_cast<std::size_t>(LossCode::settingsNotKept) + 1);

}  // namespace

const char* NameOf(LossStage stage) {
    constexpr std::array kNamesOfStages = {"import", "names", "export", "run"};
    return kNamesOfStages.at(static_cast<std::size_t>(stage));
}

std::span<const LossKind> LossKinds() {
    return kKinds;
}

const LossKind& KindOf(LossCode code) {
    return kKinds[static_cast<std::size_t>(code)];
}

}  // namespace maxhost::scene
