// What is changed or left out on the way from a scene file to the exported files: one table, whose
// codes stand in JSON and in docs/warnings.md. A code keeps its meaning for good.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace maxhost::scene {

enum class LossCode {
    // import
    animationNotFinite,
    animationWithoutNode,
    boneMatrixNotFinite,
    boneNameShared,
    cameraDirection,
    channelUnreadable,
    faceIndexOutOfRange,
    frameRateRefused,
    frameRateRounded,
    keyNotFinite,
    keyOrder,
    keysTooMany,
    materialUnused,
    meshAnimation,
    missingMesh,
    morphWeightsLost,
    motionOutsideKeys,
    nameRecoded,
    nodeOutsideScene,
    nodeWithoutName,
    normalWithoutDirection,
    notInBindPose,
    numberNotFinite,
    objectWithoutNode,
    otherAnimations,
    pointsAndLines,
    polygonNotCut,
    rootWithoutName,
    secondObject,
    shearInAnimation,
    skinMatrixSingular,
    textureCoordinateSet,
    textureEmbedded,
    textureNormalAsBump,
    textureNotFound,
    texturePathRecoded,
    textureRoughnessAsGlossiness,
    textureThirdCoordinate,
    textureWithoutSlot,
    unitKept,
    upAxisKnown,
    userPropertiesRecoded,
    vertexColors,
    verticesWithoutFaces,
    weightIndexOutOfRange,
    weightNotFinite,
    // names
    nameCut,
    nameShared,
    // export
    exporterWarning,
    mapChannelLeftOut,
    mapLeftOut,
    materialApproximated,
    meshCollision,
    meshEmpty,
    meshLeftOut,
    meshNotRenderable,
    morphFlattened,
    morphLeftOut,
    motionHidden,
    motionLeftOut,
    motionNotKeyed,
    nodeCancelled,
    nodeFootprint,
    nodeHidden,
    nodeLeftOut,
    nodeNotSelected,
    objectLeftOut,
    poseSheared,
    skinLeftOut,
    textureLeftOut,
    textureOff,
    trianglesChanged,
    userPropertiesLeftOut,
    weightsChanged,
    // run
    logMissing,
    settingsNotKept,
    textureReplaced,
};

enum class LossStage { import, names, exporting, run };

// "import", "names", "export" or "run".
const char* NameOf(LossStage stage);

struct LossKind {
    LossCode value;
    const char* code;  // as JSON has it
    LossStage stage;
    // What lines say; where cases differ by numbers or words, "..." stands for them.
    const char* text;
    const char* meaning;  // a sentence or two
    const char* remedy;   // what to do where it matters
};

// By the order of LossCode.
std::span<const LossKind> LossKinds();
const LossKind& KindOf(LossCode code);

// What happened to one thing.
struct Loss {
    LossCode code{};
    std::string text;     // as in the line about it
    std::string subject;  // "mesh 'Box'"; empty: the file as a whole
    int node = -1;        // the scene's node that it is about; kNone: none, or none known
    std::size_t count = 1;
};

}  // namespace maxhost::scene
