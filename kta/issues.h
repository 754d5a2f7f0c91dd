// What can be wrong with KTA files: one table of codes, from which come the texts of the reader's
// faults and of the checks, the page docs/kta-check.md and the schema of the JSON report.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kta {

// A note is what the exporter writes rightly of some scenes and yet is worth knowing; a warning is
// what it does not write of itself, or what will not look as the scene did; an error breaks a rule
// that readers rely on.
enum class Severity { note, warning, error };

// In the order of the table. Names in reports are those of the table and do not change.
enum class IssueCode {
    // Told by the reader.
    cutOff,
    fileMagic,
    fileVersion,
    fileKind,
    fileOtherKind,
    chunkUnknown,
    chunkVersion,
    chunkSize,
    chunkInOtherFile,
    textUnterminated,
    numberNotFinite,
    flagValue,
    constantValue,
    valueRange,
    letterValue,
    meshIndexCount,
    meshTotals,
    subMeshCount,
    subMeshMaterial,
    originalVertex,
    faceIndex,
    weightCount,
    morphRange,
    morphPointNumber,
    wireVariable,
    trackOrder,
    trackWithoutPart,
    keyAxisMask,
    keyTangentCode,
    keyTimeOrder,
    keyAbsentValue,
    keyHandleLength,
    tooManyFaults,
    // Told by Check().
    firstMaterial,
    materialPlace,
    layerMaterial,
    chunkPlace,
    chunkTwice,
    partWithoutTracks,
    nodeMissing,
    nodeNone,
    nodeNameUnknown,
    jointUnknown,
    parentUnknown,
    parentCycle,
    nodeNameDuplicate,
    nodeNameEmpty,
    materialMissing,
    boneMissing,
    boneNone,
    rotationNotUnit,
    scaleSigns,
    matrixColumn,
    matrixTranslation,
    helperSize,
    texturePath,
    textureEmpty,
    subMeshTwice,
    vertexPosition,
    vertexUnused,
    normalNotUnit,
    triangleDegenerate,
    weightRange,
    weightSum,
    weightBoneTwice,
    weightsNone,
    skinVertexCount,
    morphVertexCount,
    morphFlattened,
    jointLimitOrder,
    keyTimeRepeated,
    trackKindsMixed,
    trackTimesDiffer,
    motionNodeUnknown,
    motionOtherScene,
    motionPose,
    ruleNodes,
    ruleBones,
    ruleInfluences,
    ruleTriangles,
    ruleVertices,
    ruleMaterials,
    ruleTextures,
    ruleKeys,
    ruleFileSize,
    ruleNodeName,
    ruleMaterialName,
    ruleTextureName
};

struct IssueType {
    IssueCode code;
    const char* name;     // as in "chunk-size"
    Severity severity;    // unless rules say otherwise
    const char* area;     // the heading of the page that it stands under
    const char* message;  // with {what}, {found} and {expected}, see MessageOf()
    const char* meaning;  // what is wrong, in general, and what comes of it
    const char* remedy;   // what to do about it
};

// All of them, ordered by code.
std::span<const IssueType> IssueTypes();

const IssueType& TypeOf(IssueCode code);

// The type of that name; null when there is none.
const IssueType* FindIssueType(std::string_view name);

// The message with its places filled. An empty `what` takes the blank behind it away.
std::string MessageOf(IssueCode code, std::string_view what, std::string_view found,
                      std::string_view expected);

// "note", "warning" or "error".
const char* SeverityName(Severity severity);
std::optional<Severity> SeverityOf(std::string_view name);

}  // namespace kta
