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

Writer& AddHeader(Writer& writer, Kind kind);
Writer& AddChunkHeader(Writer& writer, std::uint32_t id, std::uint32_t size, std::uint32_t version);
Writer& AddNode(Writer& writer, const Node& node);

Bytes ActorFile(const std::vector<Node>& nodes);

// A node that differs from the defaults in every field.
Node DistinctNode();

// A path in the tests' scratch directory, of the running test's own.
std::string ScratchPath(const std::string& name);

// Writes the bytes to a new file at ScratchPath(name); returns that.
std::string Save(const std::string& name, const Bytes& bytes);

}  // namespace sample
