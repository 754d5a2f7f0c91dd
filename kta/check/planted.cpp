// The faults that the check's test of itself plants.
#include <algorithm>
#include <limits>

#include "kta/check/self_test.h"

namespace kta {
namespace {

constexpr std::string_view kNobody = "Nobody";

// ---------------------------------------------------------------- how faults are planted

// Changes the drafts of a good export; `Plant` tells which of the two motion files goes with it.
enum class MotionDraft { sampled, keyframed };

struct Plant {
    IssueCode code;
    void (*change)(DraftExport& drafts);
    MotionDraft motion = MotionDraft::sampled;
};

Specimen SpecimenOf(const DraftExport& drafts, MotionDraft motion) {
    const bool sampled = motion == MotionDraft::sampled;
    return {drafts.actor.Bytes(), (sampled ? drafts.sampled : drafts.keyframed).Bytes(), {}};
}

void Insert(DraftFile& file, std::size_t position, const DraftChunk& chunk) {
    file.chunks.insert(file.chunks.begin() + static_cast<std::ptrdiff_t>(position), chunk);
}

DraftChunk Without(DraftFile& file, std::size_t position) {
    const auto at = file.chunks.begin() + static_cast<std::ptrdiff_t>(position);
    DraftChunk chunk = *at;
    file.chunks.erase(at);
    return chunk;
}

void PutNumber(DraftChunk& chunk, std::size_t offset, std::int32_t value) {
    chunk.Put(offset, value);
}

void PutByte(DraftChunk& chunk, std::size_t offset, int value) {
    chunk.Put(offset, static_cast<std::uint8_t>(value));
}

void PutReal(DraftChunk& chunk, std::size_t offset, float value) {
    chunk.Put(offset, value);
}

std::string Nobody() {
    return std::string(kNobody);
}

// ---------------------------------------------------------------- what the reader tells

const Plant kContainerPlants[] = {
    {IssueCode::cutOff,
     [](DraftExport& d) {
         d.actor.chunks.resize(kBox);
         d.actor.chunks.back().body.resize(629);
     }},
    {IssueCode::fileMagic, [](DraftExport& d) { d.actor.header.magic[2] = 'B'; }},
    {IssueCode::fileVersion, [](DraftExport& d) { d.actor.header.minorVersion = 2; }},
    {IssueCode::fileKind, [](DraftExport& d) { d.actor.header.kind = 7; }},
    {IssueCode::fileOtherKind, [](DraftExport& d) { d.sampled = d.actor; }},
    {IssueCode::chunkUnknown, [](DraftExport& d) { d.actor.chunks[kDummy].header.id = 5; }},
    {IssueCode::chunkVersion, [](DraftExport& d) { d.actor.chunks[kDummy].header.version = 9; }},
    {IssueCode::chunkSize, [](DraftExport& d) { d.actor.chunks[kDummy].header.size = 631; }},
    {IssueCode::chunkInOtherFile,
     [](DraftExport& d) { d.actor.chunks.push_back(DraftPart("Dummy")); }},
    {IssueCode::textUnterminated,
     [](DraftExport& d) {
         std::fill_n(d.actor.chunks[kDummy].body.begin(), kNameSize, std::uint8_t{'x'});
     }},
    {IssueCode::numberNotFinite,
     [](DraftExport& d) {
         PutReal(d.actor.chunks[kDummy], offsetof(KTANode, translation),
                 std::numeric_limits<float>::infinity());
     }},
    {IssueCode::flagValue,
     [](DraftExport& d) { PutByte(d.actor.chunks[kFigure], offsetof(KTANode, isBone), 2); }},
    {IssueCode::constantValue,
     [](DraftExport& d) {
         PutNumber(d.actor.chunks[kBoneLimits], offsetof(KTAJointLimits, at84), 1);
     }},
    {IssueCode::valueRange,
     [](DraftExport& d) {
         PutByte(d.actor.chunks[kWoodLayer], offsetof(KTAMaterialLayer, layerType), 12);
     }},
    {IssueCode::letterValue,
     [](DraftExport& d) {
         PutByte(d.actor.chunks[kWood], offsetof(KTAMaterial, transparencyType), 'X');
     }},
    {IssueCode::meshIndexCount,
     [](DraftExport& d) {
         PutNumber(d.actor.chunks[kFigureMesh], offsetof(KTAMesh, indexCount), 13);
     }},
    // The declared size and the bytes are right by the counts.
    {IssueCode::meshTotals,
     [](DraftExport& d) {
         DraftChunk& mesh = d.actor.chunks[kBoxMesh];
         PutNumber(mesh, offsetof(KTAMesh, indexCount), 15);
         mesh.body.resize(mesh.body.size() + 3 * sizeof(std::uint32_t));
         mesh.header.size += 3 * sizeof(std::uint32_t);
     }},
    {IssueCode::subMeshCount,
     [](DraftExport& d) {
         PutNumber(d.actor.chunks[kFigureMesh], kSubMeshA + offsetof(KTASubMesh, vertexCount), 0);
     }},
    {IssueCode::subMeshMaterial,
     [](DraftExport& d) { PutByte(d.actor.chunks[kFigureMesh], kSubMeshA, 200); }},
    {IssueCode::originalVertex,
     [](DraftExport& d) { PutNumber(d.actor.chunks[kFigureMesh], kVerticesA, 99); }},
    {IssueCode::faceIndex,
     [](DraftExport& d) { PutNumber(d.actor.chunks[kBoxMesh], kFacesA, 77); }},
    {IssueCode::weightCount,
     [](DraftExport& d) { PutByte(d.actor.chunks[kFigureWeights], sizeof(KTAWeights), 200); }},
    {IssueCode::morphRange,
     [](DraftExport& d) {
         PutReal(d.actor.chunks[kFigureMorph],
                 sizeof(KTAMorphChannel) + offsetof(KTAMorphPoints, minimum), 101);
     }},
    {IssueCode::morphPointNumber,
     [](DraftExport& d) {
         DraftChunk& morph = d.actor.chunks[kFigureMorph];
         PutNumber(morph, morph.body.size() - sizeof(std::int32_t), 9);
     }},
    {IssueCode::wireVariable,
     [](DraftExport& d) {
         d.actor.chunks[kTargetWire].PutName(offsetof(KTAWire, secondVariable), "Y_Position");
     }},
    {IssueCode::trackOrder,
     [](DraftExport& d) { std::swap(d.sampled.chunks[kBoneP], d.sampled.chunks[kBoneR]); }},
    {IssueCode::trackWithoutPart,
     [](DraftExport& d) { Insert(d.sampled, 0, d.sampled.chunks[kBoneP]); }},
    {IssueCode::keyAxisMask,
     [](DraftExport& d) {
         PutByte(d.keyframed.chunks[kTipR], kSecondKey + offsetof(KTAKeyHead, axisMask), 8);
     },
     MotionDraft::keyframed},
    {IssueCode::keyTangentCode,
     [](DraftExport& d) { PutByte(d.keyframed.chunks[kTipR], kSecondCodes, 2); },
     MotionDraft::keyframed},
    {IssueCode::keyTimeOrder,
     [](DraftExport& d) { PutReal(d.keyframed.chunks[kTipR], kSecondKey, -1); },
     MotionDraft::keyframed},
    {IssueCode::keyAbsentValue,
     [](DraftExport& d) {
         PutReal(d.keyframed.chunks[kTipR],
                 kSecondKey + offsetof(KTAKeyHead, values) + sizeof(float), 1);
     },
     MotionDraft::keyframed},
    {IssueCode::keyHandleLength,
     [](DraftExport& d) { PutReal(d.keyframed.chunks[kTipR], kSecondTangents, 5); },
     MotionDraft::keyframed},
    // As many as there may be, of another code.
    {IssueCode::tooManyFaults, [](DraftExport& d) {
         for (std::size_t i = 0; i < kMostFaults; ++i) {
             DraftChunk node = DraftNode("Many " + std::to_string(i), "");
             PutByte(node, offsetof(KTANode, isBone), 2);
             d.actor.chunks.push_back(node);
         }
     }}};

// ---------------------------------------------------------------- order and references

const Plant kStructurePlants[] = {
    {IssueCode::firstMaterial,
     [](DraftExport& d) { d.actor.chunks[kExtraMaterial].PutName(0, "Other"); }},
    {IssueCode::materialPlace,
     [](DraftExport& d) { d.actor.chunks.push_back(DraftMaterial("Late")); }},
    {IssueCode::layerMaterial,
     [](DraftExport& d) {
         d.actor.chunks[kWoodLayer].Put(offsetof(KTAMaterialLayer, parentMaterial),
                                        std::int16_t{0});
     }},
    {IssueCode::chunkPlace,
     [](DraftExport& d) { Insert(d.actor, kChain, Without(d.actor, kFigureMorph)); }},
    {IssueCode::chunkTwice,
     [](DraftExport& d) { Insert(d.actor, kBoneLimits, d.actor.chunks[kBoneLimits]); }},
    {IssueCode::partWithoutTracks,
     [](DraftExport& d) { d.sampled.chunks.push_back(DraftPart("Chain")); }},
    {IssueCode::nodeMissing, [](DraftExport& d) { PutNumber(d.actor.chunks[kBoneLimits], 0, 99); }},
    {IssueCode::nodeNone, [](DraftExport& d) { PutNumber(d.actor.chunks[kBoneLimits], 0, -1); }},
    {IssueCode::nodeNameUnknown,
     [](DraftExport& d) {
         d.actor.chunks[kTargetWire].PutName(offsetof(KTAWire, firstNodeName), Nobody());
     }},
    {IssueCode::jointUnknown,
     [](DraftExport& d) {
         d.actor.chunks[kChainIK].PutName(offsetof(KTAIKChain, startJoint), Nobody());
     }},
    {IssueCode::parentUnknown,
     [](DraftExport& d) { d.actor.chunks[kTip].PutName(offsetof(KTANode, parentName), Nobody()); }},
    {IssueCode::parentCycle,
     [](DraftExport& d) { d.actor.chunks[kBone].PutName(offsetof(KTANode, parentName), "Tip"); }},
    {IssueCode::nodeNameDuplicate,
     [](DraftExport& d) { d.actor.chunks[kDummy].PutName(0, "Chain"); }},
    {IssueCode::nodeNameEmpty, [](DraftExport& d) { d.actor.chunks[kDummy].PutName(0, ""); }},
    {IssueCode::materialMissing,
     [](DraftExport& d) { PutByte(d.actor.chunks[kFigureMesh], kSubMeshB, 5); }},
    {IssueCode::boneMissing,
     [](DraftExport& d) {
         d.actor.chunks[kFigureWeights].Put(sizeof(KTAWeights) + 1, std::int16_t{50});
     }},
    {IssueCode::boneNone, [](DraftExport& d) {
         d.actor.chunks[kFigureWeights].Put(sizeof(KTAWeights) + 1, std::int16_t{-1});
     }}};

// ---------------------------------------------------------------- values

const Plant kActorPlants[] = {
    {IssueCode::rotationNotUnit,
     [](DraftExport& d) { PutReal(d.actor.chunks[kDummy], offsetof(KTANode, rotation), 2); }},
    {IssueCode::scaleSigns,
     [](DraftExport& d) { PutReal(d.actor.chunks[kDummy], offsetof(KTANode, scale), -1); }},
    {IssueCode::matrixColumn,
     [](DraftExport& d) { PutReal(d.actor.chunks[kDummy], offsetof(KTANode, isBone) - 4, 1); }},
    {IssueCode::matrixTranslation,
     [](DraftExport& d) { PutReal(d.actor.chunks[kDummy], offsetof(KTANode, isBone) - 16, 7); }},
    {IssueCode::helperSize,
     [](DraftExport& d) { PutReal(d.actor.chunks[kTarget], offsetof(KTANode, helperSize), 3); }},
    {IssueCode::texturePath,
     [](DraftExport& d) { d.actor.chunks[kWoodLayer].PutName(0, "maps/wood.png"); }},
    {IssueCode::textureEmpty, [](DraftExport& d) { d.actor.chunks[kWoodLayer].PutName(0, ""); }},
    {IssueCode::subMeshTwice,
     [](DraftExport& d) { PutByte(d.actor.chunks[kFigureMesh], kSubMeshB, 1); }},
    // The fourth vertex is of the third one's original vertex.
    {IssueCode::vertexPosition,
     [](DraftExport& d) {
         PutReal(d.actor.chunks[kFigureMesh],
                 kVerticesA + 3 * kVertexStride + offsetof(KTAVertex, position), 8);
     }},
    {IssueCode::vertexUnused,
     [](DraftExport& d) {
         for (const std::size_t face : {1u, 2u}) {
             PutNumber(d.actor.chunks[kFigureMesh], kFacesA + face * 12 + 8, face == 1 ? 2 : 0);
         }
     }},
    {IssueCode::normalNotUnit,
     [](DraftExport& d) {
         PutReal(d.actor.chunks[kFigureMesh], kVerticesA + offsetof(KTAVertex, normal), 1);
     }},
    {IssueCode::triangleDegenerate,
     [](DraftExport& d) { PutNumber(d.actor.chunks[kFigureMesh], kFacesA + 2 * 12 + 4, 1); }},
    {IssueCode::weightRange,
     [](DraftExport& d) {
         DraftWeights weights = GoodWeights();
         weights[1] = {{1, 1.5f}, {2, -0.5f}};
         d.actor.chunks[kFigureWeights] = DraftWeightsChunk(weights);
     }},
    {IssueCode::weightSum,
     [](DraftExport& d) {
         DraftWeights weights = GoodWeights();
         weights[1] = {{1, 0.5f}, {2, 0.25f}};
         d.actor.chunks[kFigureWeights] = DraftWeightsChunk(weights);
     }},
    {IssueCode::weightBoneTwice,
     [](DraftExport& d) {
         DraftWeights weights = GoodWeights();
         weights[1] = {{1, 0.5f}, {1, 0.5f}};
         d.actor.chunks[kFigureWeights] = DraftWeightsChunk(weights);
     }},
    {IssueCode::weightsNone,
     [](DraftExport& d) {
         DraftWeights weights = GoodWeights();
         weights[1].clear();
         d.actor.chunks[kFigureWeights] = DraftWeightsChunk(weights);
     }},
    {IssueCode::skinVertexCount,
     [](DraftExport& d) {
         DraftWeights weights = GoodWeights();
         weights.pop_back();
         d.actor.chunks[kFigureWeights] = DraftWeightsChunk(weights);
     }},
    {IssueCode::morphVertexCount,
     [](DraftExport& d) { d.actor.chunks[kFigureMorph] = DraftMorph(3); }},
    {IssueCode::morphFlattened,
     [](DraftExport& d) {
         PutReal(d.actor.chunks[kFigureMorph],
                 sizeof(KTAMorphChannel) + offsetof(KTAMorphPoints, maximum), 70000);
     }},
    {IssueCode::jointLimitOrder, [](DraftExport& d) {
         PutReal(d.actor.chunks[kBoneLimits], offsetof(KTAJointLimits, rotationMinimum), 2);
     }}};

const Plant kMotionPlants[] = {
    {IssueCode::keyTimeRepeated,
     [](DraftExport& d) { PutReal(d.keyframed.chunks[kTipR], kSecondKey, 0); },
     MotionDraft::keyframed},
    {IssueCode::trackKindsMixed,
     [](DraftExport& d) {
         d.sampled.chunks.push_back(DraftPart("Target"));
         d.sampled.chunks.push_back(d.keyframed.chunks[kBoneP]);
     }},
    {IssueCode::trackTimesDiffer,
     [](DraftExport& d) {
         PutReal(d.sampled.chunks[kTipR], sizeof(KTAKeyTrack) + sizeof(KTARotationSample), 0.25f);
     }},
    {IssueCode::motionNodeUnknown,
     [](DraftExport& d) { d.sampled.chunks[kTipPart].PutName(0, Nobody()); }},
    {IssueCode::motionOtherScene,
     [](DraftExport& d) {
         d.sampled.chunks[kBonePart].PutName(0, "Arm");
         d.sampled.chunks[kTipPart].PutName(0, "Hand");
     }},
    {IssueCode::motionPose, [](DraftExport& d) {
         PutReal(d.sampled.chunks[kTipPart], offsetof(KTAMotionPart, translation), 9);
     }}};

bool IsRule(IssueCode code) {
    return code >= IssueCode::ruleNodes;
}

// Only what the code's own rule asks.
Planted PlantRule(IssueCode code) {
    Specimen specimen = SpecimenOf(GoodExport(), MotionDraft::sampled);
    for (const auto& [rule, most] : BrokenRules().budgets) {
        if (rule == code) {
            specimen.options.rules.budgets.emplace(rule, most);
        }
    }
    for (const auto& [rule, pattern] : BrokenRules().patterns) {
        if (rule == code) {
            specimen.options.rules.patterns.emplace(rule, pattern);
        }
    }
    return {code, std::move(specimen), code};
}

}  // namespace

StudioRules BrokenRules() {
    return {{{IssueCode::ruleNodes, 5},
             {IssueCode::ruleBones, 2},
             {IssueCode::ruleInfluences, 1},
             {IssueCode::ruleTriangles, 3},
             {IssueCode::ruleVertices, 6},
             {IssueCode::ruleMaterials, 0},
             {IssueCode::ruleTextures, 0},
             {IssueCode::ruleKeys, 11},
             {IssueCode::ruleFileSize, 2000}},
            {{IssueCode::ruleNodeName, "[A-C].*|Figure|T.*"},
             {IssueCode::ruleMaterialName, "mat_.*"},
             {IssueCode::ruleTextureName, ".*\\.dds"}}};
}

std::vector<Planted> PlantAll() {
    std::vector<Planted> planted;
    for (const std::span<const Plant> plants :
         {std::span<const Plant>(kContainerPlants), std::span<const Plant>(kStructurePlants),
          std::span<const Plant>(kActorPlants), std::span<const Plant>(kMotionPlants)}) {
        for (const Plant& plant : plants) {
            DraftExport drafts = GoodExport();
            plant.change(drafts);
            const bool many = plant.code == IssueCode::tooManyFaults;
            planted.push_back({plant.code, SpecimenOf(drafts, plant.motion),
                               many ? IssueCode::flagValue : plant.code});
        }
    }
    for (const IssueType& type : IssueTypes()) {
        if (IsRule(type.code)) {
            planted.push_back(PlantRule(type.code));
        }
    }
    return planted;
}

}  // namespace kta
