// Reads whole KTA files into plain data. docs/kta-format.md describes the files byte by byte.
//
// A chunk cannot be skipped by its declared size, so reading ends at the first chunk that is of no
// known kind or whose end cannot be told; what stands before it is kept. Texts are the file's
// bytes, in whatever code page the exported scene had. Floats are taken as they stand, infinities
// and NaNs included. Bytes behind a text's NUL and padding mean nothing and are passed over.
#pragma once

#include <array>
#include <cstdint>
#include <istream>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "format/records.h"
#include "kta/bodies.h"
#include "kta/cursor.h"

namespace kta {

constexpr std::size_t kFileHeaderSize = 7;
constexpr std::size_t kChunkHeaderSize = 12;

struct Chunk {
    const KTAChunkType* type = nullptr;  // entry of the table of chunk kinds; never null
    std::uint64_t offset = 0;            // of the chunk's header
    std::uint32_t size = 0;              // as declared
    std::uint32_t version = 0;
    std::variant<Node, Mesh, Material, MaterialLayer, Weights, JointLimits, Morph, Wire, IkChain,
                 MotionPart, KeyTrack>
        body;
};

struct File {
    KTAFileKind kind = kFileKindMotion;
    std::array<std::uint8_t, 2> version{};  // major, minor
    std::vector<Chunk> chunks;              // in file order
    std::uint64_t size = 0;                 // bytes in the file
    std::uint64_t end = 0;                  // where reading ended; equals `size` unless stopped
};

struct Reading {
    std::optional<File> file;  // none when the header is faulty or the bytes could not be had
    std::vector<Fault> faults;
    std::string inputError;  // why the bytes could not be had; empty when they could

    bool Good() const { return faults.empty() && inputError.empty(); }
};

// The bytes are not needed after the call.
Reading Read(std::span<const std::uint8_t> bytes);
// Reads to the stream's end, or no further than the header when that is faulty.
Reading Read(std::istream& stream);
// A file that cannot be opened or read gives `inputError`.
Reading ReadFile(const std::string& path);
// As above; a file of the other kind has that for its last fault.
Reading ReadFile(const std::string& path, KTAFileKind expected);

// "actor" or "motion".
const char* KindName(KTAFileKind kind);

// One line for each thing wrong, without line ends: "FILE: offset N: WHERE: TEXT", or
// "FILE: INPUT ERROR".
std::vector<std::string> FaultLines(const std::string& path, const Reading& reading);

}  // namespace kta
