#include "kta/check/good_export.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace kta {
namespace {

constexpr std::array<float, 3> kSampleTimes = {0.0f, 0.5f, 1.0f};

template <typename Record>
void Append(FileBytes& bytes, const Record& record) {
    const auto* first = reinterpret_cast<const std::uint8_t*>(&record);
    bytes.insert(bytes.end(), first, first + sizeof(record));
}

// A chunk whose size is that of its body, which begins with the record.
template <typename Record>
DraftChunk Draft(const Record& record) {
    DraftChunk chunk;
    chunk.header = {Record::kChunkId, sizeof(Record), Record::kChunkVersion};
    Append(chunk.body, record);
    return chunk;
}

void DeclareWhole(DraftChunk& chunk) {
    chunk.header.size = static_cast<std::uint32_t>(chunk.body.size());
}

template <std::size_t kSize>
void SetName(char (&field)[kSize], const std::string& name) {
    std::copy(name.begin(), name.end(), field);
}

template <std::size_t kCount>
void Set(float (&field)[kCount], const std::array<float, kCount>& values) {
    std::copy(values.begin(), values.end(), field);
}

template <typename Record>
Record AtRest() {
    auto record = ZeroedRecord<Record>();
    Set(record.translation, {1, 3, 2});
    Set(record.rotation, {0, 0, 0, 1});
    Set(record.scale, {1, 1, 1});
    return record;
}

// ---------------------------------------------------------------- the actor

DraftChunk DraftLayer() {
    auto layer = ZeroedRecord<KTAMaterialLayer>();
    SetName(layer.textureFileName, "wood.png");
    layer.layerType = kLayerDiffuse;
    layer.parentMaterial = 1;
    layer.amount = layer.uTiling = layer.vTiling = 1;
    return Draft(layer);
}

struct DraftSubMesh {
    std::uint8_t material;
    std::vector<std::int32_t> originals;  // of each vertex
    std::vector<std::array<std::uint32_t, 3>> faces;
};

// No number is 0, so that vertices of another size are never in order.
void AppendSubMesh(FileBytes& bytes, const DraftSubMesh& subMesh) {
    auto record = ZeroedRecord<KTASubMesh>();
    record.materialNumber = subMesh.material;
    record.indexCount = static_cast<std::int32_t>(subMesh.faces.size() * 3);
    record.vertexCount = static_cast<std::int32_t>(subMesh.originals.size());
    Append(bytes, record);
    float u = 0;
    for (const std::int32_t original : subMesh.originals) {
        const float x = static_cast<float>(original % 2) + 0.5f;
        const float z = static_cast<float>(original / 2) + 0.5f;
        Append(bytes, KTAVertex{original, {x, 0.5f, z}, {0.48f, 0.6f, 0.64f}});
        Append(bytes, std::array<float, 2>{u += 0.25f, 0.5f});
    }
    for (const auto& face : subMesh.faces) {
        Append(bytes, face);
    }
}

DraftChunk DraftMesh(std::int32_t node) {
    auto mesh = ZeroedRecord<KTAMesh>();
    mesh.nodeNumber = node;
    mesh.originalVertexCount = 4;
    mesh.vertexCount = 7;
    mesh.indexCount = 12;
    mesh.subMeshCount = 2;
    mesh.mapChannelCount = 1;
    DraftChunk chunk = Draft(mesh);
    // Two vertices of the original vertex 2, which differ in their texture coordinates.
    AppendSubMesh(chunk.body, {1, {0, 1, 2, 2}, {{0, 1, 2}, {0, 1, 3}, {1, 2, 3}}});
    AppendSubMesh(chunk.body, {0, {1, 2, 3}, {{0, 1, 2}}});
    DeclareWhole(chunk);
    return chunk;
}

DraftChunk DraftLimits() {
    auto limits = ZeroedRecord<KTAJointLimits>();
    limits.nodeNumber = 1;
    Set(limits.rotationMinimum, {-1, -1, -1});
    Set(limits.rotationMaximum, {1, 1, 1});
    Set(limits.at52, {1, 1, 1, 1, 1, 1});
    std::fill(std::begin(limits.rotationLimited), std::end(limits.rotationLimited), 1);
    return Draft(limits);
}

DraftChunk DraftChain() {
    auto chain = ZeroedRecord<KTAIKChain>();
    SetName(chain.nodeName, "Chain");
    SetName(chain.startJoint, "Bone");
    SetName(chain.endJoint, "Tip");
    return Draft(chain);
}

// The target's X position follows the bone's.
DraftChunk DraftWire() {
    auto wire = ZeroedRecord<KTAWire>();
    SetName(wire.firstNodeName, "Bone");
    SetName(wire.secondNodeName, "Target");
    SetName(wire.secondExpression, "X_Position * 2");
    SetName(wire.secondVariable, "X_Position");
    wire.firstWeight = wire.secondWeight = 1;
    wire.linkKind = 2;
    return Draft(wire);
}

DraftChunk DraftDummy() {
    DraftChunk chunk = DraftNode("Dummy", "");
    chunk.Put(offsetof(KTANode, isBone), std::uint8_t{0});
    chunk.Put(offsetof(KTANode, hasHelperSize), std::uint8_t{1});
    chunk.Put(offsetof(KTANode, helperSize), 10.0f);
    return chunk;
}

DraftFile GoodActor() {
    DraftChunk figure = DraftNode("Figure", "");
    figure.Put(offsetof(KTANode, isBone), std::uint8_t{0});
    DraftChunk box = DraftNode("Box", "");
    box.Put(offsetof(KTANode, isBone), std::uint8_t{0});
    return {{{'K', 'T', 'A', ' '}, 1, 1, kFileKindActor},
            {DraftMaterial("Extra material"), DraftMaterial("Wood"), DraftLayer(), figure,
             DraftMesh(0), DraftNode("Bone", ""), DraftLimits(), DraftNode("Tip", "Bone"),
             DraftWeightsChunk(GoodWeights()), DraftMorph(4), DraftNode("Chain", ""), DraftChain(),
             DraftNode("Target", ""), DraftWire(), DraftDummy(), box, DraftMesh(6)}};
}

// ---------------------------------------------------------------- the motion

DraftChunk TrackHead(std::uint32_t version, char letter, std::size_t keys) {
    auto head = ZeroedRecord<KTAKeyTrack>();
    head.keyCount = static_cast<std::uint32_t>(keys);
    head.interpolation = 'L';
    head.trackLetter = letter;
    DraftChunk chunk;
    chunk.header = {kChunkKeyTrack, sizeof(head), version};
    Append(chunk.body, head);
    return chunk;
}

DraftChunk DraftSampledTrack(char letter) {
    DraftChunk chunk = TrackHead(kKeyTrackSampled, letter, kSampleTimes.size());
    for (const float time : kSampleTimes) {
        if (letter == 'R') {
            Append(chunk.body, KTARotationSample{time, {0, 0, 0, 1}});
        } else {
            Append(chunk.body, KTAVectorSample{time, {1, 3 + time, 2}});
        }
    }
    DeclareWhole(chunk);
    return chunk;
}

DraftFile GoodMotion(DraftChunk (*track)(char letter), char rotation) {
    return {{{'K', 'T', 'A', ' '}, 1, 1, kFileKindMotion},
            {DraftPart("Bone"), track('P'), track(rotation), track('S'), DraftPart("Tip"),
             track(rotation)}};
}

}  // namespace

FileBytes DraftFile::Bytes() const {
    FileBytes bytes;
    Append(bytes, header);
    for (const DraftChunk& chunk : chunks) {
        Append(bytes, chunk.header);
        bytes.insert(bytes.end(), chunk.body.begin(), chunk.body.end());
    }
    return bytes;
}

DraftChunk DraftMaterial(const std::string& name) {
    auto material = ZeroedRecord<KTAMaterial>();
    SetName(material.materialName, name);
    Set(material.diffuse, {0.75f, 0.75f, 0.75f});
    material.opacity = 1;
    material.indexOfRefraction = 1.5f;
    material.transparencyType = 'F';
    return Draft(material);
}

DraftChunk DraftNode(const std::string& name, const std::string& parent) {
    auto node = AtRest<KTANode>();
    SetName(node.nodeName, name);
    SetName(node.parentName, parent);
    for (std::size_t i = 0; i < 3; ++i) {
        node.inverseWorldMatrix[i][i] = 1;
        node.inverseWorldMatrix[3][i] = -node.translation[i];
    }
    node.isBone = 1;
    return Draft(node);
}

DraftChunk DraftPart(const std::string& name) {
    auto part = AtRest<KTAMotionPart>();
    SetName(part.nodeName, name);
    return Draft(part);
}

DraftChunk DraftKeyframedTrack(char letter) {
    DraftChunk chunk = TrackHead(kKeyTrackKeyframed, letter, 2);
    const bool allAxes = letter == 'S';
    auto key = ZeroedRecord<KTAKeyHead>();
    key.axisMask = 7;
    Set(key.values, {1, 1, 1});
    Append(chunk.body, key);
    Append(chunk.body, std::array<std::uint8_t, 6>{3, 3, 3, 3, 3, 3});
    key.time = 1;
    key.axisMask = allAxes ? 7 : 1;
    Set(key.values, {2, allAxes ? 1.0f : 0.0f, allAxes ? 1.0f : 0.0f});
    Append(chunk.body, key);
    const std::uint8_t others = allAxes ? kTangentLinear : kTangentNone;
    Append(chunk.body, std::array<std::uint8_t, 6>{kTangentBezier, others, others, kTangentBezier,
                                                   others, others});
    Append(chunk.body, KTATangent{1, 0.5f});
    Append(chunk.body, KTATangent{1, 0.5f});
    return chunk;
}

DraftWeights GoodWeights() {
    return {{{1, 1.0f}}, {{1, 0.5f}, {2, 0.5f}}, {{2, 0.25f}, {1, 0.75f}}, {{2, 1.0f}}};
}

DraftChunk DraftWeightsChunk(const DraftWeights& vertices) {
    DraftChunk chunk = Draft(KTAWeights{0});
    for (const auto& weights : vertices) {
        Append(chunk.body, static_cast<std::uint8_t>(weights.size()));
        for (const auto& [bone, weight] : weights) {
            Append(chunk.body, KTAWeight{bone, {}, weight});
        }
    }
    DeclareWhole(chunk);
    return chunk;
}

DraftChunk DraftMorph(std::int32_t points) {
    auto channel = ZeroedRecord<KTAMorphChannel>();
    SetName(channel.channelName, "Smile");
    channel.at264 = 1;
    channel.at276 = 1;
    DraftChunk chunk = Draft(channel);
    auto head = ZeroedRecord<KTAMorphPoints>();
    SetName(head.nodeName, "Figure");
    head.pointCount = points;
    head.maximum = 100;
    Append(chunk.body, head);
    for (std::int32_t i = 0; i < points; ++i) {
        Append(chunk.body, KTAMorphPoint{{static_cast<std::uint16_t>(i), 0, 1}});
    }
    chunk.body.insert(chunk.body.end(), static_cast<std::size_t>(points) * 3, 0);
    for (std::int32_t i = 0; i < points; ++i) {
        Append(chunk.body, i);
    }
    return chunk;
}

DraftExport GoodExport() {
    return {GoodActor(), GoodMotion(DraftSampledTrack, 'R'), GoodMotion(DraftKeyframedTrack, 'r')};
}

}  // namespace kta
