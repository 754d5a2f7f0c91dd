#include "tests/unit/kta/sample_file.h"

#include <gtest/gtest.h>

#include <bit>
#include <fstream>

namespace sample {

Writer& Writer::U8(std::uint8_t value) {
    bytes.push_back(value);
    return *this;
}

Writer& Writer::U16(std::uint16_t value) {
    return U8(static_cast<std::uint8_t>(value)).U8(static_cast<std::uint8_t>(value >> 8));
}

Writer& Writer::U32(std::uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8) {
        bytes.push_back(static_cast<std::uint8_t>(value >> shift));
    }
    return *this;
}

Writer& Writer::F32(float value) {
    return U32(std::bit_cast<std::uint32_t>(value));
}

Writer& Writer::Floats(std::span<const float> values) {
    for (const float value : values) {
        F32(value);
    }
    return *this;
}

Writer& Writer::Text(std::string_view text, std::size_t size) {
    Raw(text);
    bytes.insert(bytes.end(), size - text.size(), 0);
    return *this;
}

Writer& Writer::Raw(std::string_view text) {
    bytes.insert(bytes.end(), text.begin(), text.end());
    return *this;
}

Writer& AddHeader(Writer& writer, Kind kind) {
    return writer.Raw("KTA ").U8(1).U8(1).U8(kind == Kind::actor ? 1 : 0);
}

Writer& AddChunkHeader(Writer& writer, std::uint32_t id, std::uint32_t size,
                       std::uint32_t version) {
    return writer.U32(id).U32(size).U32(version);
}

Writer& AddNode(Writer& writer, const Node& node) {
    return AddChunkHeader(writer, 0, 632, 3)
        .Text(node.name, 260)
        .Text(node.parentName, 260)
        .Floats(node.translation)
        .Floats(node.rotation)
        .Floats(node.scale)
        .Floats(node.matrix)
        .U8(node.isBone)
        .U8(node.hasHelperSize)
        .U8(0)
        .U8(0)
        .F32(node.helperSize);
}

namespace {

void AddSubMesh(Writer& writer, const SubMesh& subMesh) {
    const auto numIndices = static_cast<std::uint32_t>(subMesh.faces.size() * 3);
    const auto numVertices = static_cast<std::uint32_t>(subMesh.vertices.size());
    const bool isShort = subMesh.material < 128;
    writer.U8(isShort ? static_cast<std::uint8_t>(subMesh.material) : 255).U8(0).U16(0);
    writer.U32(numIndices).U32(numVertices);
    if (!isShort) {
        writer.U32(subMesh.material);
    }
    for (const Vertex& vertex : subMesh.vertices) {
        writer.U32(vertex.original).Floats(vertex.position).Floats(vertex.normal);
        for (const auto& pair : vertex.pairs) {
            writer.Floats(pair);
        }
    }
    for (const auto& face : subMesh.faces) {
        writer.U32(face[0]).U32(face[1]).U32(face[2]);
    }
}

}  // namespace

Writer& AddMesh(Writer& writer, const Mesh& mesh) {
    std::uint32_t numVertices = 0;
    std::uint32_t numFaces = 0;
    std::uint32_t size = 28;
    for (const SubMesh& subMesh : mesh.subMeshes) {
        const auto vertices = static_cast<std::uint32_t>(subMesh.vertices.size());
        const auto faces = static_cast<std::uint32_t>(subMesh.faces.size());
        numVertices += vertices;
        numFaces += faces;
        size += (3 * faces + 3) * 4 + vertices * 28 + vertices * mesh.numMapChannels * 8;
    }
    AddChunkHeader(writer, 3, size, 3).U32(mesh.node).U32(mesh.numOriginalVertices);
    writer.U32(numVertices).U32(numFaces * 3);
    writer.U32(static_cast<std::uint32_t>(mesh.subMeshes.size())).U32(mesh.numMapChannels);
    writer.U8(mesh.isCollision).U8(0).U16(0);
    for (const SubMesh& subMesh : mesh.subMeshes) {
        AddSubMesh(writer, subMesh);
    }
    return writer;
}

Writer& AddMaterial(Writer& writer, const Material& material) {
    return AddChunkHeader(writer, 6, 108, 2)
        .Text(material.name, 40)
        .Floats(material.ambient)
        .Floats(material.diffuse)
        .Floats(material.specular)
        .Floats(material.selfIllumination)
        .Floats(material.rest)
        .U8(material.twoSided)
        .U8(material.wire)
        .U8(static_cast<std::uint8_t>(material.transparencyType))
        .U8(0);
}

Writer& AddLayer(Writer& writer, const Layer& layer) {
    return AddChunkHeader(writer, 7, 288, 3)
        .Text(layer.texture, 260)
        .U8(layer.type)
        .U8(0)
        .U16(layer.material)
        .Floats(layer.rest);
}

Mesh Triangle(std::uint32_t material, std::uint32_t numMapChannels, std::uint32_t pairs) {
    Mesh mesh;
    mesh.numOriginalVertices = 9;
    mesh.numMapChannels = numMapChannels;
    SubMesh& subMesh = mesh.subMeshes.emplace_back();
    subMesh.material = material;
    subMesh.faces = {{0, 2, 1}};
    float next = 0.5f;
    const auto number = [&] { return next += 1; };
    for (const std::uint32_t original : {2u, 5u, 8u}) {
        Vertex vertex;
        vertex.original = original;
        vertex.position = {number(), number(), number()};
        vertex.normal = {number(), number(), number()};
        for (std::uint32_t i = 0; i < pairs; ++i) {
            vertex.pairs.push_back({number(), number()});
        }
        subMesh.vertices.push_back(vertex);
    }
    return mesh;
}

Bytes ActorFile(const std::vector<Node>& nodes) {
    Writer writer;
    AddHeader(writer, Kind::actor);
    for (const Node& node : nodes) {
        AddNode(writer, node);
    }
    return writer.bytes;
}

Node DistinctNode() {
    Node node;
    node.name = "Arm \"left\"";
    node.parentName = "scene root";
    node.translation = {1, 3, 2};
    node.rotation = {0.25f, -0.5f, 0.75f, 0.125f};
    node.scale = {-1.5f, -2.5f, -3.5f};
    for (std::size_t i = 0; i < node.matrix.size(); ++i) {
        node.matrix[i] = i % 4 == 3 ? 0 : static_cast<float>(i) + 0.1f;
    }
    node.isBone = 1;
    node.hasHelperSize = 1;
    node.helperSize = 12.5f;
    return node;
}

std::string ScratchPath(const std::string& name) {
    const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
    return std::string(KTA_SCRATCH) + "/" + test.test_suite_name() + "." + test.name() + "." + name;
}

std::string Save(const std::string& name, const Bytes& bytes) {
    const std::string path = ScratchPath(name);
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    file.close();
    EXPECT_TRUE(file) << path;
    return path;
}

}  // namespace sample
