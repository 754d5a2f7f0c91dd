// Motion chunks and what hangs from nodes, put together byte by byte; and files read back.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "kta/reader.h"
#include "tests/unit/kta/sample_file.h"

namespace sample {

struct Key {
    float time = 0;
    std::vector<float> values{};
};

struct CurveKey {
    float time = 0;
    std::array<float, 3> values{};
    std::uint16_t axisMask = 7;
    std::array<std::uint8_t, 6> tangentCodes = {3, 3, 3, 3, 3, 3};
    std::vector<std::array<float, 2>> tangents{};  // handle length and slope of each code 5
};

// The rest pose is translation 1, 3, 2; rotation 0.5, -0.5, 0.25, 0.75; scale 4, 6, 5.
Writer& AddMotionPart(Writer& writer, const std::string& name);
// The declared sizes are those that the exporter states: the body's, and always 8.
Writer& AddSampledTrack(Writer& writer, char letter, const std::vector<Key>& keys);
Writer& AddCurveTrack(Writer& writer, char letter, const std::vector<CurveKey>& keys);

using Entries = std::vector<std::pair<std::int16_t, float>>;  // bone and weight

// The declared size counts `unrecorded` vertices beside those given.
Writer& AddWeights(Writer& writer, std::uint32_t node, const std::vector<Entries>& vertices,
                   std::uint32_t unrecorded = 0);

struct Morph {
    std::string channel = "Smile";
    std::string node = "Head";
    float minimum = 0;
    float maximum = 1;
    std::vector<std::array<std::uint16_t, 3>> packed = {{0, 1, 2}};
};

Writer& AddMorph(Writer& writer, const Morph& morph);
// Of node 3; every limit differs, and the first and the last axis are limited.
Writer& AddJointLimits(Writer& writer);
// From a plain "Driver" X_Position to a wired "Slave" Z_Scale.
Writer& AddWire(Writer& writer);
Writer& AddIkChain(Writer& writer);

// An actor file with every kind of chunk, and a motion file with every kind of track.
Bytes RigFile();
Bytes MotionFile();

// From a heap block of exactly the file's size, so that the sanitizers see any read past it.
kta::Reading ReadExact(const Bytes& bytes);
// As they are printed of a file "f".
std::vector<std::string> FaultsOf(const Bytes& bytes);
std::string OnlyFaultOf(const Bytes& bytes);

Bytes PatchedU8(Bytes bytes, std::size_t offset, std::uint8_t value);
Bytes PatchedU32(Bytes bytes, std::size_t offset, std::uint32_t value);
Bytes PatchedF32(const Bytes& bytes, std::size_t offset, float value);
Bytes Prefix(const Bytes& bytes, std::size_t length);

// Reads damaged copies of the file: every fault has its place in the file and its text, and a good
// reading reaches the end. Returns how many of the 10000 were faulty.
int ReadDamaged(const Bytes& file);

// Reads every prefix that has the file's header: chunks before the cut are there, and there is one
// fault unless the cut is between two chunks.
void ReadPrefixes(const Bytes& file);

}  // namespace sample
