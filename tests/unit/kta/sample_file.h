// KTA files put together byte by byte, without the exporter.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace sample {

using Bytes = std::vector<std::uint8_t>;

// Appends fields in the file's byte order.
class Writer {
  public:
    Writer& U8(std::uint8_t value);
    Writer& U16(std::uint16_t value);
    Writer& U32(std::uint32_t value);
    Writer& F32(float value);
    Writer& Floats(std::span<const float> values);
    // The text and as many zeros as the field has room for.
    Writer& Text(std::string_view text, std::size_t size);
    Writer& Raw(std::string_view bytes);

    Bytes bytes;
};

enum class Kind { motion, actor };

// What a node chunk holds; the defaults are a node at the origin.
struct Node {
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

struct Vertex {
    std::uint32_t original = 0;
    std::array<float, 3> position{};
    std::array<float, 3> normal{};
    std::vector<std::array<float, 2>> pairs{};
};

struct SubMesh {
    std::uint32_t material = 0;
    std::vector<Vertex> vertices{};
    std::vector<std::array<std::uint32_t, 3>> faces{};
};

struct Mesh {
    std::uint32_t node = 0;
    std::uint32_t numOriginalVertices = 0;
    std::uint32_t numMapChannels = 0;
    std::uint8_t isCollision = 0;
    std::vector<SubMesh> subMeshes{};
};

struct Material {
    std::string name = "material";
    std::array<float, 3> ambient = {0, 0, 0};
    std::array<float, 3> diffuse = {0.75f, 0.75f, 0.75f};
    std::array<float, 3> specular = {1, 1, 1};
    std::array<float, 3> selfIllumination = {0, 0, 0};
    std::array<float, 4> rest = {0, 0, 1, 1.5f};  // shininess, its strength, opacity, refraction
    std::uint8_t twoSided = 0;
    std::uint8_t wire = 0;
    char transparencyType = 'F';
};

struct Layer {
    std::string texture = "wood.png";
    std::uint8_t type = 1;
    std::uint16_t material = 0;
    std::array<float, 6> rest = {1, 0, 0, 1, 1, 0};  // amount, offsets, tilings, angle
};

Writer& AddHeader(Writer& writer, Kind kind);
Writer& AddChunkHeader(Writer& writer, std::uint32_t id, std::uint32_t size, std::uint32_t version);
Writer& AddNode(Writer& writer, const Node& node);
// The declared size leaves out what the exporter leaves out: material numbers in full, and pairs of
// texture coordinates beyond `numMapChannels`.
Writer& AddMesh(Writer& writer, const Mesh& mesh);
Writer& AddMaterial(Writer& writer, const Material& material);
Writer& AddLayer(Writer& writer, const Layer& layer);

Bytes ActorFile(const std::vector<Node>& nodes);

// A mesh of one triangle in one sub-mesh, with distinct numbers everywhere and so many pairs of
// texture coordinates a vertex, of which `numMapChannels` are counted.
Mesh Triangle(std::uint32_t material, std::uint32_t numMapChannels, std::uint32_t pairs);

// A node that differs from the defaults in every field.
Node DistinctNode();

// A path in the tests' scratch directory, of the running test's own.
std::string ScratchPath(const std::string& name);

// Writes the bytes to a new file at ScratchPath(name); returns that.
std::string Save(const std::string& name, const Bytes& bytes);

}  // namespace sample
