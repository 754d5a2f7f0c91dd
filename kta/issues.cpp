#include "kta/issues.h"

#include <algorithm>

namespace kta {
namespace {

constexpr Severity kNote = Severity::note;
constexpr Severity kWarning = Severity::warning;
constexpr Severity kError = Severity::error;

constexpr const char* kContainer = "The container";
constexpr const char* kFields = "Fields";
constexpr const char* kOrder = "Order of chunks";
constexpr const char* kReferences = "References";
constexpr const char* kNodes = "Nodes";
constexpr const char* kMaterials = "Materials";
constexpr const char* kMeshes = "Meshes";
constexpr const char* kSkins = "Skinning weights";
constexpr const char* kMorphs = "Morphs";
constexpr const char* kRigs = "Joints and wires";
constexpr const char* kTracks = "Key tracks";
constexpr const char* kPair = "Actor and motion file together";
constexpr const char* kStudio = "Studio rules";

constexpr const char* kIs = "{what} is {found}, expected {expected}";

// Remedies of many rows.
constexpr const char* kAgain = "Copy or export the file again; it was damaged or cut on its way.";
constexpr const char* kWriter =
    "The exporter never writes this. Copy or export the file again; if another program made or "
    "changed it, mend that program.";
constexpr const char* kRename = "Rename it in the scene and export again.";
constexpr const char* kLess = "Simplify the scene, or raise the rule's limit.";

constexpr IssueType kTable[] = {
    {IssueCode::cutOff, "cut-off", kError, kContainer,
     "{what} cut off: {expected} bytes expected, {found} are there",
     "The file ends inside its header or a chunk, or a count asks for more than the file has.",
     kAgain},
    {IssueCode::fileMagic, "file-magic", kError, kContainer, kIs,
     "The file does not begin as KTA files do, so it is of another kind.",
     "Give the actor or motion file that an export left."},
    {IssueCode::fileVersion, "file-version", kError, kContainer, kIs,
     "The file's version is not 1.1, the only one there is.", kWriter},
    {IssueCode::fileKind, "file-kind", kError, kContainer, kIs,
     "The header's kind is neither 0 (motion) nor 1 (actor).", kWriter},
    {IssueCode::fileOtherKind, "file-other-kind", kError, kContainer, kIs,
     "A motion file stands in the actor file's place, or the other way round.",
     "Give the actor file (FILEtemp1) first and the motion file (FILEtemp2) second."},
    {IssueCode::chunkUnknown, "chunk-unknown", kError, kContainer, kIs,
     "A chunk has an id that no kind has. It cannot be passed over, so reading ends.", kWriter},
    {IssueCode::chunkVersion, "chunk-version", kError, kContainer, kIs,
     "A chunk's layout has a version that is not known, so reading ends.", kWriter},
    {IssueCode::chunkSize, "chunk-size", kError, kContainer, kIs,
     "A chunk's declared size is not what its kind, its counts or its contents make it.", kWriter},
    {IssueCode::chunkInOtherFile, "chunk-in-other-file", kError, kContainer,
     "stands in a file of the kind \"{found}\", expected only in \"{expected}\"",
     "A chunk of the actor file stands in a motion file, or the other way round.", kWriter},
    {IssueCode::textUnterminated, "text-unterminated", kError, kFields,
     "{what} has no NUL in its {found} bytes, expected one",
     "A name fills its field without an end, so readers run on into what follows.", kWriter},
    {IssueCode::numberNotFinite, "number-not-finite", kError, kFields,
     "{what} is not a finite number",
     "A real number is infinite or not a number at all; whatever is computed of it is lost.",
     "Look for broken transforms or controllers at the node in the scene, and export again."},
    {IssueCode::flagValue, "flag-value", kError, kFields, kIs, "A flag is neither 0 nor 1.",
     kWriter},
    {IssueCode::constantValue, "constant-value", kError, kFields, kIs,
     "A field that always has one value has another.", kWriter},
    {IssueCode::valueRange, "value-range", kError, kFields, kIs,
     "A number or count is outside the range that its field has.", kWriter},
    {IssueCode::letterValue, "letter-value", kError, kFields, kIs,
     "A field that holds one of a few letters holds something else.", kWriter},
    {IssueCode::meshIndexCount, "mesh-index-count", kError, kMeshes, kIs,
     "A mesh's number of indices does not make whole triangles.", kWriter},
    {IssueCode::meshTotals, "mesh-totals", kError, kMeshes, kIs,
     "The vertices or indices of a mesh's head are not the sum of its sub-meshes'.", kWriter},
    {IssueCode::subMeshCount, "sub-mesh-count", kError, kMeshes, kIs,
     "A sub-mesh has no vertices, more vertices or indices than the mesh, or indices that do not "
     "make whole triangles.",
     kWriter},
    {IssueCode::subMeshMaterial, "sub-mesh-material", kError, kMeshes, kIs,
     "The bytes of a sub-mesh's material are none of the two ways in which its number is written.",
     kWriter},
    {IssueCode::originalVertex, "original-vertex", kError, kMeshes, kIs,
     "A vertex's original vertex is not one of the scene's mesh, or they do not ascend within the "
     "sub-mesh.",
     kWriter},
    {IssueCode::faceIndex, "face-index", kError, kMeshes, kIs,
     "A face has a corner at a vertex that its sub-mesh does not have.", kWriter},
    {IssueCode::weightCount, "weight-count", kError, kSkins, kIs,
     "A vertex has more weights than the chunk's declared size leaves room for.", kWriter},
    {IssueCode::morphRange, "morph-range", kError, kMorphs, kIs,
     "The minimum of a morph's coordinates is above their maximum, so no point can be unpacked.",
     kWriter},
    {IssueCode::morphPointNumber, "morph-point-number", kError, kMorphs, kIs,
     "The points of a morph are not numbered 0, 1, 2 and so on.", kWriter},
    {IssueCode::wireVariable, "wire-variable", kError, kRigs,
     "{what} is not that of its part and component, expected {expected}",
     "A wired channel has a variable name that belongs to another channel.", kWriter},
    {IssueCode::trackOrder, "track-order", kError, kOrder,
     "{what} stands {found}, expected {expected}",
     "The tracks of a motion part are not position, rotation and scale, each at most once.",
     kWriter},
    {IssueCode::trackWithoutPart, "track-without-part", kError, kOrder,
     "{found} stands before it, expected {expected}",
     "A key track does not follow a motion part, so it is unknown what it moves.", kWriter},
    {IssueCode::keyAxisMask, "key-axis-mask", kError, kTracks, kIs,
     "A keyframed key says of no axis, or of one that does not exist, that it is there; or a first "
     "key or a scale key lacks an axis.",
     kWriter},
    {IssueCode::keyTangentCode, "key-tangent-code", kError, kTracks, kIs,
     "A tangent code is not 1, 3, 4 or 5, or is not 1 for an axis that is not there.", kWriter},
    {IssueCode::keyTimeOrder, "key-time-order", kError, kTracks, kIs,
     "A key's time is before that of the key before it.", kWriter},
    {IssueCode::keyAbsentValue, "key-absent-value", kError, kTracks, kIs,
     "A key has a value for an axis that its mask lacks.", kWriter},
    {IssueCode::keyHandleLength, "key-handle-length", kError, kTracks, kIs,
     "The handle of a Bezier tangent is shorter or longer than handles can be.", kWriter},
    {IssueCode::tooManyFaults, "too-many-faults", kError, kContainer,
     "{found} faults are told already, expected no more",
     "So much is wrong with the file that reading ends.", kAgain},

    {IssueCode::firstMaterial, "first-material", kError, kOrder,
     "{what} is {found}, expected {expected}",
     "An actor file does not begin with the material \"Extra material\", which stands for having "
     "no material, so all material numbers mean others.",
     kWriter},
    {IssueCode::materialPlace, "material-place", kError, kOrder,
     "stands behind {found}, expected before {expected}",
     "A material or a layer stands behind the first node.", kWriter},
    {IssueCode::layerMaterial, "layer-material", kError, kReferences, kIs,
     "A layer names another material than the one that it follows.", kWriter},
    {IssueCode::chunkPlace, "chunk-place", kError, kOrder,
     "stands behind {found}, expected {expected}",
     "A chunk does not stand with its node: behind the node's chunk, the mesh first, then bones "
     "and weights, joint limits, IK chain, wires and morphs.",
     kWriter},
    {IssueCode::chunkTwice, "chunk-twice", kError, kOrder,
     "is the second one of {found}, expected {expected}",
     "A node has two meshes, weights, joint limits or IK chains.", kWriter},
    {IssueCode::partWithoutTracks, "part-without-tracks", kError, kOrder,
     "{found} follows it, expected {expected}",
     "A motion part has no key track, though a node without animation has no part at all.",
     kWriter},
    {IssueCode::nodeMissing, "node-missing", kError, kReferences, kIs,
     "A chunk belongs to a node number that none of the nodes before it has.", kWriter},
    {IssueCode::nodeNone, "node-none", kWarning, kReferences, kIs,
     "A mesh, weights or joint limits belong to no node, so nothing places them.", kWriter},
    {IssueCode::nodeNameUnknown, "node-name-unknown", kError, kReferences,
     "{what} is {found}, expected {expected}",
     "A morph, a wire or an IK chain names a node that the file does not have.", kWriter},
    {IssueCode::jointUnknown, "joint-unknown", kNote, kReferences,
     "{what} is {found}, expected {expected}",
     "A joint of an IK chain was not exported, so the chain lacks an end.",
     "Export the joints with the chain: select them too, or show them."},
    {IssueCode::parentUnknown, "parent-unknown", kNote, kReferences,
     "{what} is {found}, expected {expected}",
     "A node's parent was not exported: the node hangs from the scene's root in the file, and its "
     "transform stays relative to the parent that is not there.",
     "Export the parent too, or link the node to the scene's root."},
    {IssueCode::parentCycle, "parent-cycle", kError, kReferences,
     "{what} is {found}, expected {expected}",
     "A node is its own parent, directly or through others. So it stands where a node's parent was "
     "not exported and another node has that parent's name.",
     "Export the parent too, and give each node a name of its own."},
    {IssueCode::nodeNameDuplicate, "node-name-duplicate", kNote, kReferences,
     "{what} is {found}, expected {expected}",
     "Several nodes have one name. Parents, morphs, wires and motion name their nodes, so readers "
     "take the first one for all of them.",
     "Give each node a name of its own."},
    {IssueCode::nodeNameEmpty, "node-name-empty", kNote, kReferences,
     "{what} is {found}, expected {expected}", "A node has no name, so nothing can refer to it.",
     "Give the node a name."},
    {IssueCode::materialMissing, "material-missing", kError, kReferences, kIs,
     "A sub-mesh has a material number that none of the file's materials has.", kWriter},
    {IssueCode::boneMissing, "bone-missing", kError, kReferences, kIs,
     "A weight's bone is a node number that none of the nodes before it has.", kWriter},
    {IssueCode::boneNone, "bone-none", kNote, kReferences, kIs,
     "A weight belongs to no bone: the bone was left out of the export, or its number is above "
     "32767.",
     "Look into the export's log for the bones of the node."},
    {IssueCode::rotationNotUnit, "rotation-not-unit", kError, kNodes, kIs,
     "A rotation's quaternion is not of length 1 and turns nothing the way it should.", kWriter},
    {IssueCode::scaleSigns, "scale-signs", kError, kNodes, kIs,
     "The parts of a node's scale have different signs; a mirrored node has three negative ones.",
     kWriter},
    {IssueCode::matrixColumn, "matrix-column", kError, kNodes, kIs,
     "The fourth column of a node's inverse world matrix is not 0 throughout.", kWriter},
    {IssueCode::matrixTranslation, "matrix-translation", kWarning, kNodes, kIs,
     "The inverse world matrix of a node without a parent does not take the node's own place to "
     "the origin, so matrix and transform contradict each other.",
     kWriter},
    {IssueCode::helperSize, "helper-size", kError, kNodes, kIs,
     "A node without a helper size has one, or a node with one is a bone as well.", kWriter},
    {IssueCode::texturePath, "texture-path", kError, kMaterials, kIs,
     "A layer's texture has a directory, which file names of layers never have.", kWriter},
    {IssueCode::textureEmpty, "texture-empty", kNote, kMaterials,
     "{what} is {found}, expected {expected}",
     "A layer has no texture file, because the bitmap in the scene names none.",
     "Give the bitmap a file, or take the map out of its slot."},
    {IssueCode::subMeshTwice, "sub-mesh-twice", kWarning, kMeshes,
     "{what} is {found}, expected {expected}",
     "Two sub-meshes of a mesh have the same material, so it is drawn in more parts than needed.",
     kWriter},
    {IssueCode::vertexPosition, "vertex-position", kWarning, kMeshes,
     "{what} is {found}, expected {expected}",
     "Vertices of one original vertex stand apart, so the mesh is torn there.", kWriter},
    {IssueCode::vertexUnused, "vertex-unused", kWarning, kMeshes,
     "{what} is {found}, expected {expected}", "A vertex is in no face: faces were left out.",
     "Look into the export's log for faces that were left out of the mesh."},
    {IssueCode::normalNotUnit, "normal-not-unit", kNote, kMeshes, kIs,
     "A normal is not of length 1, as of a face without area, so its surface is lit wrongly.",
     "Mend the faces without area or the normals that were set in the scene."},
    {IssueCode::triangleDegenerate, "triangle-degenerate", kNote, kMeshes,
     "{what} is {found}, expected {expected}",
     "A triangle has a vertex twice, so it has no area and is never seen.",
     "Remove the face from the mesh in the scene."},
    {IssueCode::weightRange, "weight-range", kError, kSkins, kIs,
     "A weight is negative or above 1.",
     "Normalise the weights of the skin in the scene and export again."},
    {IssueCode::weightSum, "weight-sum", kNote, kSkins, kIs,
     "The weights of a vertex do not sum to 1, so it is drawn away from its bones, or beyond "
     "them. The exporter leaves sums above 1 as they are, and all sums where skins are not "
     "optimised.",
     "Normalise the weights of the skin in the scene, or export with optimised skins."},
    {IssueCode::weightBoneTwice, "weight-bone-twice", kNote, kSkins,
     "{what} is {found}, expected {expected}",
     "A vertex has two weights of one bone, which could be one.",
     "Clean up the skin's weights in the scene."},
    {IssueCode::weightsNone, "weights-none", kNote, kSkins,
     "{what} is {found}, expected {expected}",
     "Vertices of a skin have no weight: nothing moves them.",
     "Give the vertices weights in the scene."},
    {IssueCode::skinVertexCount, "skin-vertex-count", kWarning, kSkins, kIs,
     "A skin has other vertices than its mesh, so weights meet the wrong vertices or none.",
     "Put Skin above everything that changes the number of vertices, and export again."},
    {IssueCode::morphVertexCount, "morph-vertex-count", kNote, kMorphs, kIs,
     "A morph has another number of points than its node's mesh has vertices.",
     "Collect the Morpher's targets again from meshes like the node's own."},
    {IssueCode::morphFlattened, "morph-flattened", kNote, kMorphs, kIs,
     "A morph's points are more than 655.35 units apart, for which 16 bits have no steps: all of "
     "its points are lost.",
     "Make the object smaller, or its units larger, and export again."},
    {IssueCode::jointLimitOrder, "joint-limit-order", kWarning, kRigs, kIs,
     "The minimum of a limited axis is above its maximum, so the joint has nowhere to go.",
     "Correct the joint's limits in the scene."},
    {IssueCode::keyTimeRepeated, "key-time-repeated", kWarning, kTracks,
     "{what} is {found}, expected {expected}",
     "Two keys of a track have one time; only the last time of a sampled track may stand twice.",
     kWriter},
    {IssueCode::trackKindsMixed, "track-kinds-mixed", kWarning, kTracks,
     "{what} is {found}, expected {expected}",
     "A motion file has sampled and keyframed tracks, though one export writes either.", kWriter},
    {IssueCode::trackTimesDiffer, "track-times-differ", kWarning, kTracks,
     "{what} is {found}, expected {expected}",
     "Sampled tracks of one file have different times, though one export samples all alike.",
     kWriter},
    {IssueCode::motionNodeUnknown, "motion-node-unknown", kNote, kPair,
     "{what} is {found}, expected {expected}",
     "A motion part moves a node that the actor file does not have: it was hidden, and hidden "
     "nodes were exported to the motion file alone.",
     "Export hidden nodes to both files or to neither (\"Export hidden\", \"Motions for "
     "hidden\")."},
    {IssueCode::motionOtherScene, "motion-other-scene", kWarning, kPair,
     "{found} moves a node of the actor file, expected {expected}",
     "No node that the motion file moves is in the actor file: the two are of different scenes.",
     "Give the two files of one export."},
    {IssueCode::motionPose, "motion-pose", kWarning, kPair, kIs,
     "A node stands elsewhere at time 0 by the motion file than by the actor file.",
     "Give the two files of one export."},

    {IssueCode::ruleNodes, "rule-nodes", kWarning, kStudio, kIs,
     "The file has more nodes than the rule allows.", kLess},
    {IssueCode::ruleBones, "rule-bones", kWarning, kStudio, kIs,
     "The file has more bones than the rule allows: nodes that are bones or move a skin.", kLess},
    {IssueCode::ruleInfluences, "rule-influences", kWarning, kStudio, kIs,
     "A vertex has more weights than the rule allows.",
     "Export with optimised skins and fewer weights a vertex, or raise the rule's limit."},
    {IssueCode::ruleTriangles, "rule-triangles", kWarning, kStudio, kIs,
     "The file has more triangles than the rule allows, collision meshes left out.", kLess},
    {IssueCode::ruleVertices, "rule-vertices", kWarning, kStudio, kIs,
     "The file has more vertices than the rule allows, collision meshes left out.", kLess},
    {IssueCode::ruleMaterials, "rule-materials", kWarning, kStudio, kIs,
     "The file has more materials than the rule allows, \"Extra material\" left out.", kLess},
    {IssueCode::ruleTextures, "rule-textures", kWarning, kStudio, kIs,
     "The file has more different textures than the rule allows.", kLess},
    {IssueCode::ruleKeys, "rule-keys", kWarning, kStudio, kIs,
     "The file has more keys than the rule allows.",
     "Sample the animation less often, or raise the rule's limit."},
    {IssueCode::ruleFileSize, "rule-file-size", kWarning, kStudio, kIs,
     "The file has more bytes than the rule allows.", kLess},
    {IssueCode::ruleNodeName, "rule-node-name", kWarning, kStudio, kIs,
     "A node's name is not as the rule wants it.", kRename},
    {IssueCode::ruleMaterialName, "rule-material-name", kWarning, kStudio, kIs,
     "A material's name is not as the rule wants it.", kRename},
    {IssueCode::ruleTextureName, "rule-texture-name", kWarning, kStudio, kIs,
     "A texture's file name is not as the rule wants it.",
     "Rename the texture file, and give the bitmap in the scene its new name."}};

constexpr bool IsOrdered() {
    std::size_t position = 0;
    for (const IssueType& type : kTable) {
        if (static_cast<std::size_t>(type.code) != position++) {
            return false;
        }
    }
    return position == static_cast<std::size_t>(IssueCode::ruleTextureName) + 1;
}
static_assert(IsOrdered(), "a row for each code, in the order of IssueCode");

constexpr const char* kSeverityNames[] = {"note", "warning", "error"};

}  // namespace

std::span<const IssueType> IssueTypes() {
    return kTable;
}

const IssueType& TypeOf(IssueCode code) {
    return kTable[static_cast<std::size_t>(code)];
}

const IssueType* FindIssueType(std::string_view name) {
    const auto* type = std::find_if(std::begin(kTable), std::end(kTable),
                                    [&](const IssueType& row) { return row.name == name; });
    return type == std::end(kTable) ? nullptr : type;
}

std::string MessageOf(IssueCode code, std::string_view what, std::string_view found,
                      std::string_view expected) {
    std::string text;
    for (std::string_view rest = TypeOf(code).message; !rest.empty();) {
        const auto fill = [&](std::string_view place, std::string_view value) {
            const bool here = rest.starts_with(place);
            if (here) {
                text += value;
                rest.remove_prefix(place.size());
            }
            return here;
        };
        if (what.empty() && rest.starts_with("{what} ")) {
            rest.remove_prefix(std::string_view("{what} ").size());
        } else if (!fill("{what}", what) && !fill("{found}", found) &&
                   !fill("{expected}", expected)) {
            text += rest.front();
            rest.remove_prefix(1);
        }
    }
    return text;
}

const char* SeverityName(Severity severity) {
    return kSeverityNames[static_cast<std::size_t>(severity)];
}

std::optional<Severity> SeverityOf(std::string_view name) {
    for (const Severity severity : {kNote, kWarning, kError}) {
        if (name == SeverityName(severity)) {
            return severity;
        }
    }
    return std::nullopt;
}

}  // namespace kta
