// Reads whole KTA files into plain data. docs/kta-format.md describes the files byte by byte, and
// examples/list_meshes.cpp shows the use of this header.
//
// A record is the struct of src/format/records.h as it lies in the file; what follows a record in
// its chunk stands in vectors beside it. Vectors are x, z, y and quaternions x, z, y, w of the
// exported scene: the file's second axis points up. Keys of keyframed tracks are x, y, z.
//
// A chunk cannot be skipped by its declared size, so reading ends at the first chunk that is of no
// known kind or whose end cannot be told; what stands before it is kept. Texts are the file's
// bytes, in whatever code page the exported scene had. Floats are taken as they stand, infinities
// and NaNs included. Bytes behind a text's NUL and padding mean nothing and are passed over.
//
// Nothing that reads throws, whatever the bytes and however little memory there is. What is read
// takes memory in proportion to the file's size: every count is compared with the bytes that are
// left before anything is made for it. Functions may be called from several threads at a time.
//
// Programs of others get this header, the library, a CMake package (find_package(kta_reader),
// target kta::reader) and a pkg-config file by `cmake --install BUILD --component kta_reader`.
#pragma once

#include <algorithm>
#include <any>
#include <array>
#include <cstddef>
#include <cstdint>
#include <istream>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "format/records.h"
#include "kta/issues.h"

namespace kta {

// ---------------------------------------------------------------- bodies of chunks

// The text of a record's field: up to its NUL, or the whole field where it has none.
template <std::size_t kSize>
std::string_view TextOf(const char (&field)[kSize]) {
    return {field, static_cast<std::size_t>(std::find(field, field + kSize, '\0') - field)};
}

using TextureCoordinates = std::array<float, 2>;

struct SubMesh {
    std::uint64_t offset = 0;  // of its record, from the start of the file
    std::int32_t materialNumber = 0;
    std::vector<KTAVertex> vertices;
    std::vector<TextureCoordinates> textureCoordinates;  // Mesh::pairsPerVertex for each vertex
    std::vector<std::array<std::uint32_t, 3>> faces;     // positions in `vertices`
};

// Positions are in the node's object space unless the node has skinning weights.
struct Mesh {
    KTAMesh head{};
    std::int32_t pairsPerVertex = 0;  // at least head.mapChannelCount; found, as it stands nowhere
    std::vector<SubMesh> subMeshes;
};

// The bones that move a skinned mesh, whose positions are in world space. A vertex without a record
// of its own (one that Physique tells nothing of) has no bytes in the file, though the declared
// size counts it: the body is then shorter than declared, and it is not known which vertices those
// are.
struct Weights {
    KTAWeights head{};
    std::uint32_t vertexCount = 0;           // by the declared size; at least weightCounts.size()
    std::vector<std::uint8_t> weightCounts;  // of each vertex that has a record, in order
    std::vector<KTAWeight> weights;          // of all vertices, one vertex behind the other
};

// A channel of morph targets, its points packed into 16 bits a coordinate.
struct Morph {
    KTAMorphChannel channel{};
    KTAMorphPoints head{};
    std::vector<KTAMorphPoint> points;
    std::vector<std::int32_t> pointNumbers;  // one for each point
};

// The point's coordinates, unpacked in double and rounded once. Not a number where they cannot be
// told: the points span more than 65535 (times 100), so that all are packed to 0, or minimum and
// maximum are no range.
std::array<float, 3> MorphPosition(const Morph& morph, std::size_t point);

// A key of three curves.
struct KeyframedKey {
    KTAKeyHead head{};
    std::array<std::uint8_t, kNumTangentCodes> tangentCodes{};  // KTATangentCode
    // For each of the codes that is kTangentBezier; zeros elsewhere.
    std::array<KTATangent, kNumTangentCodes> tangentRecords{};
};

// One of the vectors holds the head.keyCount keys.
struct KeyTrack {
    KTAKeyTrack head{};
    std::vector<KTAVectorSample> vectorSamples;      // of a sampled track 'P' or 'S'
    std::vector<KTARotationSample> rotationSamples;  // of a sampled track 'R'
    std::vector<KeyframedKey> keyframedKeys;         // of a keyframed track
};

// ---------------------------------------------------------------- files

struct Chunk {
    const KTAChunkType* type = nullptr;  // entry of the table of chunk kinds; never null
    std::uint64_t offset = 0;            // of the chunk's header
    std::uint32_t size = 0;              // as declared
    std::uint32_t version = 0;
    // By the kind: KTANode, KTAMotionPart, KTAMaterial, KTAMaterialLayer, KTAJointLimits, KTAWire,
    // KTAIKChain, Mesh, Weights, Morph or KeyTrack.
    std::any body;

    // The body, where it is of that type; null otherwise.
    template <typename Body>
    const Body* As() const {
        return std::any_cast<Body>(&body);
    }
};

struct File {
    KTAFileKind kind = kFileKindMotion;
    std::array<std::uint8_t, 2> version{};  // major, minor
    std::vector<Chunk> chunks;              // in file order
    std::uint64_t size = 0;                 // bytes in the file
    std::uint64_t end = 0;                  // where reading ended; equals `size` unless stopped
};

// Where in a file something stands.
struct Place {
    std::string where;  // "header", "chunk header", or the kind of chunk ("node chunk")
    const KTAChunkType* chunkType = nullptr;  // null in headers
    std::uint64_t chunkOffset = 0;            // of the chunk's header; 0 in the file's header
    std::size_t chunk = 0;                    // how many chunks stand before it in the file
};

// One thing wrong with a file.
struct Fault {
    std::uint64_t offset = 0;  // of the field or item, from the start of the file
    std::string where;         // as in `place`
    std::string text;          // what stands there and what was expected
    IssueCode code = IssueCode::cutOff;
    Place place{};
    std::string what{};       // the field or item, as in "key count"; may be empty
    std::string found{};      // what stands there
    std::string expected{};   // what should
    std::uint64_t count = 1;  // of items wrong in the same way that this fault tells of; the first
                              // is the one at `offset`
};

// Of one file the reader keeps no more faults than these, the last of them `tooManyFaults`.
constexpr std::size_t kMostFaults = 10000;

struct Reading {
    std::optional<File> file;  // none when the header is faulty or the bytes could not be had
    std::vector<Fault> faults;
    std::string inputError;  // why the bytes could not be had; empty when they could

    bool Good() const { return faults.empty() && inputError.empty(); }
};

// The bytes are not needed after the call. Too little memory gives `inputError`.
Reading Read(std::span<const std::uint8_t> bytes) noexcept;
// Reads to the stream's end, or no further than the header when that is faulty. A stream that fails
// gives `inputError`, also where it is set to throw.
Reading Read(std::istream& stream) noexcept;
// A file that cannot be opened or read gives `inputError`.
Reading ReadFile(const std::string& path) noexcept;
// As above; a file of the other kind has that for its last fault.
Reading ReadFile(const std::string& path, KTAFileKind expected) noexcept;

// Adds the fault of a file that is of the other kind, where it is.
void RequireKind(Reading& reading, KTAFileKind expected);

// "actor" or "motion".
const char* KindName(KTAFileKind kind);

// One line for each thing wrong, without line ends; may throw std::bad_alloc: "FILE: offset N:
// WHERE: TEXT", or "FILE: INPUT ERROR".
std::vector<std::string> FaultLines(const std::string& path, const Reading& reading);

}  // namespace kta
