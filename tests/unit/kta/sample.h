// Sample files that the toolkit's tests share, and how they read, damage and dump them.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "kta/reader.h"
#include "tests/support/kta_bytes.h"
#include "tests/unit/kta/scratch.h"

namespace sample {

using namespace support;

inline const float kRootOfHalf = std::sqrt(0.5f);  // a quarter turn's
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr std::size_t kBody = 7 + 12;  // of the file's first chunk

inline const std::string kActor = FileHeader(true);
inline const std::string kMotion = FileHeader(false);

// ---------------------------------------------------------------- files

std::string ActorFile(const std::vector<NodeFields>& nodes);

// A node that differs from the defaults in every field.
NodeFields DistinctNode();

// A node whose place in the world is at `world`; it stands at `local` to its parent.
NodeFields NodeAt(const std::string& name, const std::string& parent,
                  const std::array<float, 3>& local, const std::array<float, 3>& world);
NodeFields RootAt(const std::string& name, const std::array<float, 3>& world);

// A mesh of one triangle in one sub-mesh, with distinct numbers everywhere and so many pairs of
// texture coordinates a vertex, of which `mapChannelCount` are counted.
MeshFields Triangle(std::uint32_t material, std::uint32_t mapChannelCount, std::uint32_t pairs);

// Black and white but for a grey diffuse colour; of no shininess.
MaterialFields Grey(const std::string& name = "material");

// Translation 1, 3, 2; rotation 0.5, -0.5, 0.25, 0.75; scale 4, 6, 5.
std::string PosedPart(const std::string& name);

// A motion file of one part.
std::string MotionOf(const std::string& name, const Pose& pose, const std::string& tracks);

// Of node 3; every limit differs, and the first and the last axis are limited.
std::string JointLimitsChunk();
// From a plain "Driver" X_Position to a wired "Slave" Z_Scale.
std::string SampleWire();
std::string IkChainChunk();

// An actor file with every kind of chunk, and a motion file with every kind of track.
std::string RigFile();
std::string TracksFile();

// ---------------------------------------------------------------- reading

// From a heap block of exactly the file's size, so that the sanitizers see any read past it.
kta::Reading ReadExact(const std::string& bytes);

// Of a chunk of the file, which must hold such a body.
template <typename Body>
const Body& BodyOf(const kta::Reading& reading, std::size_t chunk = 0) {
    const Body* body = reading.file.value().chunks.at(chunk).As<Body>();
    if (body == nullptr) {
        throw std::runtime_error("a body of another kind");
    }
    return *body;
}

// The elements of a record's field.
template <typename Element, std::size_t kCount>
std::vector<Element> ListOf(const Element (&values)[kCount]) {
    return {values, values + kCount};
}

// As they are printed of a file "f".
std::vector<std::string> FaultsOf(const std::string& bytes);
std::string OnlyFaultOf(const std::string& bytes);
// "f: offset N: KIND chunk: TEXT".
std::string FaultLine(std::size_t offset, const std::string& kind, const std::string& text);

// A copy of the bytes with others in the place of those at the offset.
std::string Patched(std::string bytes, std::size_t offset, const std::string& others);
std::string PatchedU8(const std::string& bytes, std::size_t offset, std::uint8_t value);
std::string PatchedU32(const std::string& bytes, std::size_t offset, std::uint32_t value);
std::string PatchedF32(const std::string& bytes, std::size_t offset, float value);

// A file with one value changed, and what is then said at that place.
struct FaultRow {
    std::size_t offset;
    std::string bytes;  // written there
    std::string text;
};
// Each row by itself gives its fault and no other.
void ExpectFaults(const std::string& file, const std::string& kind,
                  const std::vector<FaultRow>& rows);
std::string U8(std::uint8_t value);
std::string U32(std::uint32_t value);
std::string F32(float value);

// Reads damaged copies of the file: every fault has its place in the file and its text, chunks are
// whole, and a good reading reaches the end. Returns how many of the 10000 were faulty.
int ReadDamaged(const std::string& file);

// Reads every prefix that has the file's header: chunks before the cut are there, and there is one
// fault unless the cut is between two chunks.
void ReadPrefixes(const std::string& file);

// ---------------------------------------------------------------- dumps

// Of a file "x".
std::string DumpOf(const std::string& bytes);
std::string JsonDumpOf(const std::string& bytes);
std::string InfoOf(const std::string& bytes);

}  // namespace sample
