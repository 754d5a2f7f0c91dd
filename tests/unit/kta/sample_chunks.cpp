#include "tests/unit/kta/sample_chunks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <memory>
#include <random>

namespace sample {

Writer& AddMotionPart(Writer& writer, const std::string& name) {
    return AddChunkHeader(writer, 1, 300, 2)
        .Text(name, 260)
        .F32(1)
        .F32(3)
        .F32(2)
        .F32(0.5f)
        .F32(-0.5f)
        .F32(0.25f)
        .F32(0.75f)
        .F32(4)
        .F32(6)
        .F32(5);
}

Writer& AddSampledTrack(Writer& writer, char letter, const std::vector<Key>& keys) {
    const auto count = static_cast<std::uint32_t>(keys.size());
    AddChunkHeader(writer, 2, 8 + (letter == 'R' ? 20 : 16) * count, 1);
    writer.U32(count).U8('L').U8(static_cast<std::uint8_t>(letter)).U16(0);
    for (const Key& key : keys) {
        writer.F32(key.time).Floats(key.values);
    }
    return writer;
}

Writer& AddCurveTrack(Writer& writer, char letter, const std::vector<CurveKey>& keys) {
    AddChunkHeader(writer, 2, 8, 2);
    writer.U32(static_cast<std::uint32_t>(keys.size()));
    writer.U8('L').U8(static_cast<std::uint8_t>(letter)).U16(0);
    for (const CurveKey& key : keys) {
        writer.F32(key.time).Floats(key.values).U16(key.axisMask).U16(0);
        for (const std::uint8_t code : key.tangentCodes) {
            writer.U8(code);
        }
        for (const auto& tangent : key.tangents) {
            writer.Floats(tangent);
        }
    }
    return writer;
}

Writer& AddWeights(Writer& writer, std::uint32_t node, const std::vector<Entries>& vertices,
                   std::uint32_t unrecorded) {
    std::uint32_t size = 4 + unrecorded;
    for (const Entries& entries : vertices) {
        size += 1 + 8 * static_cast<std::uint32_t>(entries.size());
    }
    AddChunkHeader(writer, 4, size, 1).U32(node);
    for (const Entries& entries : vertices) {
        writer.U8(static_cast<std::uint8_t>(entries.size()));
        for (const auto& [bone, weight] : entries) {
            writer.U16(static_cast<std::uint16_t>(bone)).U16(0).F32(weight);
        }
    }
    return writer;
}

Writer& AddMorph(Writer& writer, const Morph& morph) {
    AddChunkHeader(writer, 10, 292, 3).Text(morph.channel, 260).F32(0).F32(1).U32(0);
    writer.U8(0).U8(0).U16(0).U32(1).U32(0).U32(0).F32(0);
    writer.Text(morph.node, 260).U32(static_cast<std::uint32_t>(morph.packed.size()));
    writer.F32(morph.minimum).F32(morph.maximum).U8(0).U8(0).U16(0);
    for (const auto& point : morph.packed) {
        writer.U16(point[0]).U16(point[1]).U16(point[2]);
    }
    writer.bytes.insert(writer.bytes.end(), morph.packed.size() * 3, 0);
    for (std::uint32_t i = 0; i < morph.packed.size(); ++i) {
        writer.U32(i);
    }
    return writer;
}

Writer& AddJointLimits(Writer& writer) {
    AddChunkHeader(writer, 8, 88, 1).U32(3);
    for (int i = 0; i < 12; ++i) {
        writer.F32(static_cast<float>(i) - 5.5f);
    }
    for (int i = 0; i < 6; ++i) {
        writer.F32(1);
    }
    return writer.U8(1).U8(0).U8(0).U8(0).U8(0).U8(1).U8(0).U8(0).U32(0);
}

Writer& AddWire(Writer& writer) {
    return AddChunkHeader(writer, 14, 1116, 1)
        .Text("Driver", 260)
        .Text("Slave", 260)
        .Text("", 260)
        .Text("X_Position * 2", 260)
        .Text("Z_Scale", 20)
        .Text("", 20)
        .U32(0)
        .U32(2)
        .U32(0)
        .U32(2)
        .F32(1)
        .F32(0.5f)
        .F32(0)
        .F32(0.25f)
        .U8(2)
        .U8(0)
        .U16(0);
}

Writer& AddIkChain(Writer& writer) {
    return AddChunkHeader(writer, 15, 1064, 1)
        .Text("Chain", 260)
        .Text("Thigh", 260)
        .Text("Foot", 260)
        .U8(1)
        .Text("Target", 260)
        .U8(0)
        .U16(0)
        .F32(1.5f)
        .U8(7)
        .U8(0)
        .U16(0)
        .F32(2)
        .F32(4)
        .F32(3);
}

Bytes RigFile() {
    Writer writer;
    AddMaterial(AddHeader(writer, Kind::actor), {});
    AddLayer(writer, {});
    AddNode(writer, {.name = "Skin"});
    Mesh mesh = Triangle(0, 1, 1);
    mesh.numOriginalVertices = 9;
    AddMesh(writer, mesh);
    AddNode(writer, {.name = "Bone"});
    AddWeights(writer, 0,
               {{{1, 1}},
                {{1, 0.5f}, {0, 0.5f}},
                {{1, 1}},
                {{-1, 1}},
                {{1, 1}},
                {{1, 1}},
                {{1, 0.25f}, {0, 0.25f}, {-1, 0.5f}},
                {{1, 1}},
                {{1, 1}}});
    AddWire(AddIkChain(AddJointLimits(writer)));
    AddMorph(writer, {.packed = {{0, 1, 2}, {65535, 256, 3}}});
    return AddNode(writer, {.name = "Last"}).bytes;
}

Bytes MotionFile() {
    Writer writer;
    AddMotionPart(AddHeader(writer, Kind::motion), "Sampled");
    AddSampledTrack(writer, 'P', {{0, {1, 3, 2}}, {0.5f, {2, 4, 3}}, {0.5f, {2, 4, 3}}});
    AddSampledTrack(writer, 'R', {{0, {0, 0, 0, 1}}, {0.5f, {0.5f, -0.5f, 0.5f, 0.5f}}});
    AddSampledTrack(writer, 'S', {{0, {1, 1, 1}}});
    AddMotionPart(writer, "Curves");
    AddCurveTrack(writer, 'P',
                  {{0, {1, 2, 3}, 7, {5, 1, 3, 4, 1, 5}, {{0.5f, 2}, {1, -4}}},
                   {1, {0, 7, 0}, 2, {1, 3, 1, 1, 4, 1}}});
    AddCurveTrack(writer, 'r', {{0, {90, 0, -90}}});
    AddCurveTrack(writer, 'S',
                  {{0,
                    {1, 2, 3},
                    7,
                    {5, 5, 5, 5, 5, 5},
                    {{0.5f, 0}, {1, 0}, {2, 1}, {2, 2}, {2, 3}, {2, 4}}}});
    return writer.bytes;
}

// ---------------------------------------------------------------- reading

kta::Reading ReadExact(const Bytes& bytes) {
    const auto block = std::make_unique<std::uint8_t[]>(bytes.size());
    if (!bytes.empty()) {
        std::memcpy(block.get(), bytes.data(), bytes.size());
    }
    return kta::Read(std::span<const std::uint8_t>(block.get(), bytes.size()));
}

std::vector<std::string> FaultsOf(const Bytes& bytes) {
    return kta::FaultLines("f", ReadExact(bytes));
}

std::string OnlyFaultOf(const Bytes& bytes) {
    const auto lines = FaultsOf(bytes);
    EXPECT_EQ(lines.size(), 1u);
    return lines.empty() ? "" : lines[0];
}

Bytes PatchedU8(Bytes bytes, std::size_t offset, std::uint8_t value) {
    bytes.at(offset) = value;
    return bytes;
}

Bytes PatchedU32(Bytes bytes, std::size_t offset, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i) {
        bytes.at(offset + i) = static_cast<std::uint8_t>(value >> (8 * i));
    }
    return bytes;
}

Bytes PatchedF32(const Bytes& bytes, std::size_t offset, float value) {
    return PatchedU32(bytes, offset, std::bit_cast<std::uint32_t>(value));
}

Bytes Prefix(const Bytes& bytes, std::size_t length) {
    return Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length));
}

int ReadDamaged(const Bytes& file) {
    std::mt19937 random(20120317);
    std::vector<std::size_t> structure;
    const kta::Reading whole = ReadExact(file);
    for (const kta::Chunk& chunk : whole.file.value().chunks) {
        for (std::size_t i = 0; i < 32; ++i) {
            structure.push_back(std::min<std::size_t>(chunk.offset + i, file.size() - 1));
        }
    }
    int faulty = 0;
    for (int round = 0; round < 10000; ++round) {
        Bytes bytes = file;
        for (auto count = random() % 6 + 1; count > 0; --count) {
            const std::size_t anywhere = 7 + random() % (bytes.size() - 7);
            bytes[random() % 2 == 0 ? anywhere : structure[random() % structure.size()]] =
                static_cast<std::uint8_t>(random() % 2 == 0 ? random() : random() % 4);
        }
        bytes.resize(random() % 4 == 0 ? 7 + random() % (bytes.size() - 6) : bytes.size());
        const kta::Reading reading = ReadExact(bytes);
        faulty += reading.Good() ? 0 : 1;
        for (const kta::Fault& fault : reading.faults) {
            EXPECT_LE(fault.offset, bytes.size());
            EXPECT_FALSE(fault.text.empty());
        }
        EXPECT_TRUE(!reading.Good() || reading.file.value().end == bytes.size());
    }
    return faulty;
}

void ReadPrefixes(const Bytes& file) {
    const kta::Reading whole = ReadExact(file);
    ASSERT_TRUE(whole.Good()) << FaultsOf(file)[0];
    std::vector<std::uint64_t> starts;
    for (const kta::Chunk& chunk : whole.file->chunks) {
        starts.push_back(chunk.offset);
    }
    starts.push_back(file.size());
    for (std::size_t length = 7; length < file.size(); ++length) {
        const kta::Reading reading = ReadExact(Prefix(file, length));
        const auto next = std::upper_bound(starts.begin(), starts.end(), length) - 1;
        const bool between = *next == length;
        ASSERT_EQ(reading.faults.size(), between ? 0u : 1u) << length;
        ASSERT_EQ(reading.file.value().end, *next) << length;
        ASSERT_EQ(reading.file->chunks.size(), static_cast<std::size_t>(next - starts.begin()));
        if (!between) {
            ASSERT_GE(reading.faults[0].offset, *next) << length;
            ASSERT_LE(reading.faults[0].offset, length);
            ASSERT_NE(reading.faults[0].text.find("cut off: "), std::string::npos)
                << length << reading.faults[0].text;
        }
    }
}

}  // namespace sample
