#include "kta/fields.h"

#include <cmath>

#include "kta/dump.h"

namespace kta {
namespace {

std::vector<Field> FieldsOf(const Node& node, std::uint64_t body) {
    return {{"nodeName", body, Value(node.nodeName)},
            {"parentName", body + 260, Value(node.parentName)},
            {"translation", body + 520, Value(node.translation)},
            {"rotation", body + 532, Value(node.rotation)},
            {"scale", body + 548, Value(node.scale)},
            {"inverseWorldMatrix", body + 560, Value(node.inverseWorldMatrix)},
            {"isBone", body + 624, Value(node.isBone)},
            {"hasHelperSize", body + 625, Value(node.hasHelperSize)},
            {"helperSize", body + 628, Value(node.helperSize)}};
}

std::vector<Field> FieldsOf(const Mesh& mesh, std::uint64_t body) {
    return {{"nodeNumber", body, mesh.node},
            {"originalVertexCount", body + 4, mesh.numOriginalVertices},
            {"vertexCount", body + 8, mesh.numVertices},
            {"indexCount", body + 12, mesh.numIndices},
            {"subMeshCount", body + 16, mesh.subMeshes.size()},
            {"mapChannelCount", body + 20, mesh.numMapChannels},
            {"isCollision", body + 24, Value(mesh.isCollision)}};
}

std::vector<Field> FieldsOf(const Material& material, std::uint64_t body) {
    return {
        {"materialName", body, Value(material.materialName)},
        {"ambient", body + 40, Value(material.ambient)},
        {"diffuse", body + 52, Value(material.diffuse)},
        {"specular", body + 64, Value(material.specular)},
        {"selfIllumination", body + 76, Value(material.selfIllumination)},
        {"shininess", body + 88, Value(material.shininess)},
        {"shininessStrength", body + 92, Value(material.shininessStrength)},
        {"opacity", body + 96, Value(material.opacity)},
        {"indexOfRefraction", body + 100, Value(material.indexOfRefraction)},
        {"twoSided", body + 104, Value(material.twoSided)},
        {"wire", body + 105, Value(material.wire)},
        {"transparencyType", body + 106, Value(std::string_view(&material.transparencyType, 1))}};
}

std::vector<Field> FieldsOf(const MaterialLayer& layer, std::uint64_t body) {
    return {{"textureFileName", body, Value(layer.textureFileName)},
            {"layerType", body + 260, layer.layerType},
            {"parentMaterial", body + 262, layer.parentMaterial},
            {"amount", body + 264, Value(layer.amount)},
            {"uOffset", body + 268, Value(layer.uOffset)},
            {"vOffset", body + 272, Value(layer.vOffset)},
            {"uTiling", body + 276, Value(layer.uTiling)},
            {"vTiling", body + 280, Value(layer.vTiling)},
            {"rotationAngle", body + 284, Value(layer.rotationAngle)}};
}

std::vector<Field> FieldsOf(const Weights& weights, std::uint64_t body) {
    return {{"nodeNumber", body, weights.node}};
}

std::vector<Field> FieldsOf(const JointLimits& limits, std::uint64_t body) {
    return {{"nodeNumber", body, limits.node},
            {"positionMinimum", body + 4, Value(limits.positionMinimum)},
            {"positionMaximum", body + 16, Value(limits.positionMaximum)},
            {"rotationMinimum", body + 28, Value(limits.rotationMinimum)},
            {"rotationMaximum", body + 40, Value(limits.rotationMaximum)},
            {"at52", body + 52, Value(limits.at52)},
            {"positionLimited", body + 76, Value(limits.positionLimited)},
            {"rotationLimited", body + 79, Value(limits.rotationLimited)},
            {"at82", body + 82, Value(limits.at82)},
            {"at84", body + 84, limits.at84}};
}

std::vector<Field> FieldsOf(const Morph& morph, std::uint64_t body) {
    return {{"channelName", body, Value(morph.channelName)},
            {"at260", body + 260, Value(morph.at260)},
            {"at264", body + 264, Value(morph.at264)},
            {"at268", body + 268, morph.at268},
            {"at272", body + 272, morph.at272},
            {"at276", body + 276, morph.at276},
            {"at280", body + 280, morph.at280},
            {"at284", body + 284, morph.at284},
            {"at288", body + 288, Value(morph.at288)},
            {"nodeName", body + 292, Value(morph.nodeName)},
            {"pointCount", body + 552, morph.packedPoints.size()},
            {"minimum", body + 556, Value(morph.minimum)},
            {"maximum", body + 560, Value(morph.maximum)},
            {"at564", body + 564, morph.at564}};
}

std::vector<Field> FieldsOf(const Wire& wire, std::uint64_t body) {
    return {{"firstNodeName", body, Value(wire.first.nodeName)},
            {"secondNodeName", body + 260, Value(wire.second.nodeName)},
            {"firstExpression", body + 520, Value(wire.first.expression)},
            {"secondExpression", body + 780, Value(wire.second.expression)},
            {"secondVariable", body + 1040, Value(wire.second.variable)},
            {"firstVariable", body + 1060, Value(wire.first.variable)},
            {"firstPart", body + 1080, wire.first.part},
            {"secondPart", body + 1084, wire.second.part},
            {"firstComponent", body + 1088, wire.first.component},
            {"secondComponent", body + 1092, wire.second.component},
            {"firstWeight", body + 1096, Value(wire.first.weight)},
            {"secondWeight", body + 1100, Value(wire.second.weight)},
            {"firstListWeight", body + 1104, Value(wire.first.listWeight)},
            {"secondListWeight", body + 1108, Value(wire.second.listWeight)},
            {"linkKind", body + 1112, wire.linkKind}};
}

std::vector<Field> FieldsOf(const IkChain& chain, std::uint64_t body) {
    return {{"nodeName", body, Value(chain.nodeName)},
            {"startJoint", body + 260, Value(chain.startJoint)},
            {"endJoint", body + 520, Value(chain.endJoint)},
            {"at780", body + 780, Value(chain.at780)},
            {"solverNode", body + 781, Value(chain.solverNode)},
            {"at1044", body + 1044, Value(chain.at1044)},
            {"at1048", body + 1048, chain.at1048},
            {"at1052", body + 1052, Value(chain.at1052)}};
}

std::vector<Field> FieldsOf(const MotionPart& part, std::uint64_t body) {
    return {{"nodeName", body, Value(part.nodeName)},
            {"translation", body + 260, Value(part.translation)},
            {"rotation", body + 272, Value(part.rotation)},
            {"scale", body + 288, Value(part.scale)}};
}

std::vector<Field> FieldsOf(const KeyTrack& track, std::uint64_t body) {
    return {{"keyCount", body, track.NumKeys()},
            {"interpolation", body + 4, Value(std::string_view(&track.interpolation, 1))},
            {"trackLetter", body + 5, Value(std::string_view(&track.trackLetter, 1))}};
}

}  // namespace

std::vector<Field> Fields(const Chunk& chunk) {
    const std::uint64_t body = chunk.offset + kChunkHeaderSize;
    return std::visit([body](const auto& content) { return FieldsOf(content, body); }, chunk.body);
}

Json Value(float value) {
    if (std::isnan(value)) {
        return "nan";
    }
    if (std::isinf(value)) {
        return value < 0 ? "-inf" : "inf";
    }
    return value;
}

Json Value(bool value) {
    return value;
}

Json Value(std::uint8_t value) {
    return value;
}

Json Value(std::uint32_t value) {
    return value;
}

Json Value(std::string_view text) {
    return ToUtf8(text);
}

Json TextureCoordinatesOf(const Mesh& mesh, const SubMesh& subMesh, const Vertex& vertex) {
    const auto count = static_cast<std::size_t>(mesh.pairsPerVertex);
    const auto position = static_cast<std::size_t>(&vertex - subMesh.vertices.data());
    Json pairs = Json::array();
    for (std::size_t i = position * count; i < (position + 1) * count; ++i) {
        pairs.push_back(Value(subMesh.textureCoordinates[i]));
    }
    return pairs;
}

}  // namespace kta
