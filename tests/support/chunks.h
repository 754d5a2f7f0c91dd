// Takes KTA files apart in tests, independently of the exporter's records.
#pragma once

#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

namespace support {

struct Chunk {
    std::uint32_t id = 0;
    std::uint32_t size = 0;  // as announced
    std::uint32_t version = 0;
    std::string body;  // whole, also where it is longer than announced
};

inline std::uint32_t U32At(const std::string& bytes, std::size_t offset) {
    if (offset > bytes.size() || bytes.size() - offset < 4) {
        throw std::runtime_error("nothing stands at offset " + std::to_string(offset));
    }
    std::uint32_t value;
    std::memcpy(&value, bytes.data() + offset, sizeof(value));
    return value;
}

inline float F32At(const std::string& bytes, std::size_t offset) {
    const std::uint32_t bits = U32At(bytes, offset);
    float value;
    std::memcpy(&value, &bits, sizeof(value));
    return value;
}

// The length of the mesh body at an offset. `emptyChannels` are the pairs of each vertex that the
// header does not count.
inline std::size_t MeshLength(const std::string& bytes, std::size_t offset, int emptyChannels) {
    const std::uint32_t subMeshes = U32At(bytes, offset + 16);
    const std::size_t pairs = U32At(bytes, offset + 20) + emptyChannels;
    std::size_t at = offset + 28;
    for (std::uint32_t i = 0; i < subMeshes; ++i) {
        const bool fullNumber = (U32At(bytes, at) & 0xff) == 255;
        const std::size_t indices = U32At(bytes, at + 4), vertices = U32At(bytes, at + 8);
        at += 12 + (fullNumber ? 4 : 0) + vertices * (28 + pairs * 8) + indices * 4;
    }
    return at - offset;
}

// The length of the morph body at an offset, with what stands behind the announced 292 bytes.
inline std::size_t MorphLength(const std::string& bytes, std::size_t offset) {
    return 292 + 276 + std::size_t{U32At(bytes, offset + 292 + 260)} * (6 + 3 + 4);
}

// The length of a chunk's body at an offset; see MeshLength.
inline std::size_t BodyLength(const Chunk& chunk, const std::string& bytes, std::size_t offset,
                              int emptyChannels) {
    switch (chunk.id) {
        case 3:
            return MeshLength(bytes, offset, emptyChannels);
        case 10:
            return MorphLength(bytes, offset);
        default:
            return chunk.size;
    }
}

// All chunks of a file, in order.
inline std::vector<Chunk> Chunks(const std::string& bytes, int emptyChannels = 0) {
    std::vector<Chunk> chunks;
    for (std::size_t at = 7; at < bytes.size();) {
        Chunk chunk{U32At(bytes, at), U32At(bytes, at + 4), U32At(bytes, at + 8), ""};
        at += 12;
        const std::size_t length = BodyLength(chunk, bytes, at, emptyChannels);
        if (length > bytes.size() - at) {
            throw std::runtime_error("a chunk ends behind the file");
        }
        chunk.body = bytes.substr(at, length);
        at += length;
        chunks.push_back(std::move(chunk));
    }
    return chunks;
}

// Those with an id.
inline std::vector<Chunk> ChunksOf(const std::string& bytes, std::uint32_t id,
                                   int emptyChannels = 0) {
    std::vector<Chunk> chunks = Chunks(bytes, emptyChannels);
    std::erase_if(chunks, [&](const Chunk& chunk) { return chunk.id != id; });
    return chunks;
}

// Where the materials and layers of an actor file end and its nodes begin.
inline std::size_t EndOfMaterials(const std::string& actor) {
    std::size_t offset = 7;
    while (offset < actor.size() && (U32At(actor, offset) == 6 || U32At(actor, offset) == 7)) {
        offset += 12 + U32At(actor, offset + 4);
    }
    return offset;
}

}  // namespace support
