// Writes KTA files in tests, independently of the exporter's records and of the reader: every size,
// id and version stands here as a number, and every field is appended by itself. Chunk functions
// give whole chunks with their headers, so that a file is FileHeader(...) + chunk + chunk.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace support {

class Bytes {
  public:
    Bytes& U8(std::uint8_t value) {
        text_.push_back(static_cast<char>(value));
        return *this;
    }
    Bytes& U16(std::uint16_t value) {
        return U8(static_cast<std::uint8_t>(value)).U8(static_cast<std::uint8_t>(value >> 8));
    }
    Bytes& U32(std::uint32_t value) {
        return U16(static_cast<std::uint16_t>(value)).U16(static_cast<std::uint16_t>(value >> 16));
    }
    Bytes& F32(std::initializer_list<float> values) {
        return Floats({values.begin(), values.end()});
    }
    template <std::size_t kCount>
    Bytes& F32(const std::array<float, kCount>& values) {
        return Floats(values);
    }
    Bytes& Floats(std::span<const float> values) {
        for (const float value : values) {
            U32(std::bit_cast<std::uint32_t>(value));
        }
        return *this;
    }
    // A NUL-terminated name in a field of `size` bytes, zero behind it.
    Bytes& Name(const std::string& name, std::size_t size = 260) {
        return Text(name).Zeros(size - name.size());
    }
    Bytes& Text(const std::string& text) {
        text_ += text;
        return *this;
    }
    Bytes& Zeros(std::size_t count) {
        text_.append(count, '\0');
        return *this;
    }
    const std::string& Str() const { return text_; }

  private:
    std::string text_;
};

// The seven bytes at the beginning of a file.
inline std::string FileHeader(bool actor) {
    return Bytes().Text("KTA ").U8(1).U8(1).U8(actor ? 1 : 0).Str();
}

inline Bytes ChunkHeader(std::uint32_t id, std::uint32_t size, std::uint32_t version) {
    return Bytes().U32(id).U32(size).U32(version);
}

// ---------------------------------------------------------------- nodes

// The contents of a node chunk; the defaults are a node at the origin.
struct NodeFields {
    std::string name = "node";
    std::string parentName{};
    std::array<float, 3> translation = {0, 0, 0};
    std::array<float, 4> rotation = {0, 0, 0, 1};
    std::array<float, 3> scale = {1, 1, 1};
    std::array<float, 16> matrix = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0};
    std::uint8_t isBone = 0;
    std::uint8_t hasHelperSize = 0;
    float helperSize = 0;
};

inline std::string NodeChunk(const NodeFields& fields) {
    return ChunkHeader(0, 632, 3)
        .Name(fields.name)
        .Name(fields.parentName)
        .F32(fields.translation)
        .F32(fields.rotation)
        .F32(fields.scale)
        .F32(fields.matrix)
        .U8(fields.isBone)
        .U8(fields.hasHelperSize)
        .U16(0)
        .F32({fields.helperSize})
        .Str();
}

// ---------------------------------------------------------------- materials

// The contents of a material chunk; unless told otherwise, the values of a new standard material.
struct MaterialFields {
    std::string name{};
    std::array<float, 3> ambient{0.588f, 0.588f, 0.588f};
    std::array<float, 3> diffuse{0.588f, 0.588f, 0.588f};
    std::array<float, 3> specular{0.9f, 0.9f, 0.9f};
    std::array<float, 3> selfIllumination{};
    float shininess = 0.1f;
    float shininessStrength = 0;
    float opacity = 1;
    float indexOfRefraction = 1.5f;
    std::uint8_t twoSided = 0;
    std::uint8_t wire = 0;
    char transparencyType = 'F';
};

inline std::string MaterialChunk(const MaterialFields& fields) {
    return ChunkHeader(6, 108, 2)
        .Name(fields.name, 40)
        .F32(fields.ambient)
        .F32(fields.diffuse)
        .F32(fields.specular)
        .F32(fields.selfIllumination)
        .F32({fields.shininess, fields.shininessStrength, fields.opacity, fields.indexOfRefraction})
        .U8(fields.twoSided)
        .U8(fields.wire)
        .Text({fields.transparencyType, '\0'})
        .Str();
}

// The first material of every actor file.
inline std::string ExtraMaterial() {
    return MaterialChunk({.name = "Extra material",
                          .ambient = {0, 0, 0},
                          .diffuse = {0.75f, 0.75f, 0.75f},
                          .specular = {1, 1, 1},
                          .shininess = 0});
}

// The beginning of every actor file.
inline std::string ActorBeginning() {
    return FileHeader(true) + ExtraMaterial();
}

// The material that stands in for the n-th node without one, counted from 1.
inline std::string WireColorMaterial(int n, const std::array<int, 3>& rgb = {128, 128, 128}) {
    MaterialFields fields;
    fields.name = "Wire Color " + std::to_string(n);
    for (std::size_t i = 0; i < 3; ++i) {
        fields.diffuse[i] = static_cast<float>(rgb[i]) / 255.0f;
    }
    return MaterialChunk(fields);
}

// The contents of a layer chunk.
struct LayerFields {
    std::string texture{};
    std::uint8_t type = 1;
    std::uint16_t material = 1;
    float amount = 1;
    std::array<float, 2> offset{0, 0};
    std::array<float, 2> tiling{1, 1};
    float angle = 0;
};

inline std::string LayerChunk(const LayerFields& fields) {
    return ChunkHeader(7, 288, 3)
        .Name(fields.texture)
        .U8(fields.type)
        .U8(0)
        .U16(fields.material)
        .F32({fields.amount, fields.offset[0], fields.offset[1], fields.tiling[0], fields.tiling[1],
              fields.angle})
        .Str();
}

// ---------------------------------------------------------------- meshes

struct VertexFields {
    std::uint32_t original = 0;
    std::array<float, 3> position{};
    std::array<float, 3> normal{};
    std::vector<std::array<float, 2>> pairs{};  // of texture coordinates
};

struct SubMeshFields {
    std::uint32_t material = 0;
    std::vector<VertexFields> vertices{};
    std::vector<std::array<std::uint32_t, 3>> faces{};
};

struct MeshFields {
    std::uint32_t node = 0;
    std::uint32_t originalVertexCount = 0;
    std::uint32_t mapChannelCount = 0;
    std::uint8_t isCollision = 0;
    std::vector<SubMeshFields> subMeshes{};
};

inline std::string SubMeshBytes(const SubMeshFields& fields) {
    const bool isShort = fields.material < 128;
    Bytes bytes;
    bytes.U8(isShort ? static_cast<std::uint8_t>(fields.material) : 255).U8(0).U16(0);
    bytes.U32(static_cast<std::uint32_t>(fields.faces.size() * 3));
    bytes.U32(static_cast<std::uint32_t>(fields.vertices.size()));
    if (!isShort) {
        bytes.U32(fields.material);
    }
    for (const VertexFields& vertex : fields.vertices) {
        bytes.U32(vertex.original).F32(vertex.position).F32(vertex.normal);
        for (const auto& pair : vertex.pairs) {
            bytes.F32(pair);
        }
    }
    for (const auto& face : fields.faces) {
        bytes.U32(face[0]).U32(face[1]).U32(face[2]);
    }
    return bytes.Str();
}

// The declared size leaves out what the exporter leaves out: material numbers in full, and pairs of
// texture coordinates beyond `mapChannelCount`.
inline std::string MeshChunk(const MeshFields& fields) {
    std::uint32_t vertices = 0;
    std::uint32_t indices = 0;
    std::string subMeshes;
    for (const SubMeshFields& subMesh : fields.subMeshes) {
        vertices += static_cast<std::uint32_t>(subMesh.vertices.size());
        indices += static_cast<std::uint32_t>(subMesh.faces.size() * 3);
        subMeshes += SubMeshBytes(subMesh);
    }
    const auto count = static_cast<std::uint32_t>(fields.subMeshes.size());
    const std::uint32_t size =
        28 + 12 * count + 4 * indices + vertices * (28 + 8 * fields.mapChannelCount);
    return ChunkHeader(3, size, 3)
        .U32(fields.node)
        .U32(fields.originalVertexCount)
        .U32(vertices)
        .U32(indices)
        .U32(count)
        .U32(fields.mapChannelCount)
        .U8(fields.isCollision)
        .Zeros(3)
        .Text(subMeshes)
        .Str();
}

// ---------------------------------------------------------------- what hangs from nodes

using VertexWeights = std::vector<std::pair<std::int16_t, float>>;  // bone and weight

// The declared size counts `unrecorded` vertices beside those given.
inline std::string WeightsChunk(std::uint32_t node, const std::vector<VertexWeights>& vertices,
                                std::uint32_t unrecorded = 0) {
    Bytes bytes;
    for (const VertexWeights& weights : vertices) {
        bytes.U8(static_cast<std::uint8_t>(weights.size()));
        for (const auto& [bone, weight] : weights) {
            bytes.U16(static_cast<std::uint16_t>(bone)).U16(0).F32({weight});
        }
    }
    const auto size = static_cast<std::uint32_t>(4 + bytes.Str().size() + unrecorded);
    return ChunkHeader(4, size, 1).U32(node).Text(bytes.Str()).Str();
}

struct MorphFields {
    std::string channel = "Smile";
    std::string node = "Head";
    float minimum = 0;
    float maximum = 1;
    std::vector<std::array<std::uint16_t, 3>> packed = {{0, 1, 2}};
};

inline std::string MorphChunk(const MorphFields& fields) {
    const auto count = static_cast<std::uint32_t>(fields.packed.size());
    Bytes bytes = ChunkHeader(10, 292, 3).Name(fields.channel).F32({0, 1}).U32(0).U8(0).Zeros(3);
    bytes.U32(1).U32(0).U32(0).F32({0});
    bytes.Name(fields.node).U32(count).F32({fields.minimum, fields.maximum}).U8(0).Zeros(3);
    for (const auto& point : fields.packed) {
        bytes.U16(point[0]).U16(point[1]).U16(point[2]);
    }
    bytes.Zeros(3 * fields.packed.size());
    for (std::uint32_t i = 0; i < count; ++i) {
        bytes.U32(i);
    }
    return bytes.Str();
}

// The defaults are those of a plain first end.
struct WireEnd {
    std::string node{};
    std::string expression{};
    std::string variable{};
    std::uint32_t part = 0;
    std::uint32_t component = 0;
    float weight = 1;
    float listWeight = 0;
};

inline std::string WireChunk(const WireEnd& first, const WireEnd& second, std::uint8_t linkKind) {
    return ChunkHeader(14, 1116, 1)
        .Name(first.node)
        .Name(second.node)
        .Name(first.expression)
        .Name(second.expression)
        .Name(second.variable, 20)
        .Name(first.variable, 20)
        .U32(first.part)
        .U32(second.part)
        .U32(first.component)
        .U32(second.component)
        .F32({first.weight, second.weight, first.listWeight, second.listWeight})
        .U8(linkKind)
        .Zeros(3)
        .Str();
}

// ---------------------------------------------------------------- motion

// In the file's order.
struct Pose {
    std::array<float, 3> translation{0, 0, 0};
    std::array<float, 4> rotation{0, 0, 0, 1};
    std::array<float, 3> scale{1, 1, 1};
};

inline std::string MotionPart(const std::string& name, const Pose& pose = {}) {
    return ChunkHeader(1, 300, 2)
        .Name(name)
        .F32(pose.translation)
        .F32(pose.rotation)
        .F32(pose.scale)
        .Str();
}

inline std::string TrackHead(std::uint32_t version, std::uint32_t size, std::uint32_t keys,
                             char track) {
    return ChunkHeader(2, size, version).U32(keys).Text({'L', track}).U16(0).Str();
}

struct SampleFields {
    float time = 0;
    std::vector<float> values{};
};

inline std::string SampledHead(std::uint32_t size, std::uint32_t keys, char track) {
    return TrackHead(1, size, keys, track);
}

inline std::string SampledTrack(char track, const std::vector<SampleFields>& samples) {
    Bytes keys;
    for (const SampleFields& sample : samples) {
        keys.F32({sample.time}).Floats(sample.values);
    }
    const auto count = static_cast<std::uint32_t>(samples.size());
    return SampledHead(8 + (track == 'R' ? 20 : 16) * count, count, track) + keys.Str();
}

// However many keys follow, a size of 8 is declared.
inline std::string KeyframedHead(std::uint32_t keys, char track) {
    return TrackHead(2, 8, keys, track);
}

struct ExpectedTangent {
    float length, slope;
};

// A tangent stands for each code 5.
inline std::string KeyRecord(float time, const std::array<float, 3>& value, std::uint16_t axes = 7,
                             const std::array<std::uint8_t, 6>& codes = {3, 3, 3, 3, 3, 3},
                             const std::vector<ExpectedTangent>& tangents = {}) {
    Bytes bytes;
    bytes.F32({time}).F32(value).U16(axes).U16(0);
    for (const std::uint8_t code : codes) {
        bytes.U8(code);
    }
    for (const ExpectedTangent& tangent : tangents) {
        bytes.F32({tangent.length, tangent.slope});
    }
    return bytes.Str();
}

inline std::string KeyframedTrack(char track, const std::vector<std::string>& keyRecords) {
    std::string chunk = KeyframedHead(static_cast<std::uint32_t>(keyRecords.size()), track);
    for (const std::string& record : keyRecords) {
        chunk += record;
    }
    return chunk;
}

}  // namespace support
