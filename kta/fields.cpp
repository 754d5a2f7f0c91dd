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
