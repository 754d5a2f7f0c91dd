#include "tests/unit/kta/sample_file.h"

#include <gtest/gtest.h>

#include <bit>
#include <fstream>

namespace sample {

Writer& Writer::U8(std::uint8_t value) {
    bytes.push_back(value);
    return *this;
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
