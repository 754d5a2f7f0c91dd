// A summary of a KTA file.
#pragma once

#include <ostream>

#include "kta/reader.h"

namespace kta {

// The chunks of one kind in a file; the bytes include their headers.
struct ChunkTotal {
    const KTAChunkType* type = nullptr;
    std::size_t count = 0;
    std::uint64_t bytes = 0;
};

struct Summary {
    std::vector<ChunkTotal> chunks;  // the kinds that occur, by id
    std::size_t nodes = 0;
    std::size_t bones = 0;
    std::size_t helpers = 0;  // nodes with a helper size
    std::size_t depth = 0;    // levels of the node hierarchy; 1 when no node has a parent
    std::size_t meshes = 0;
    std::size_t collisionMeshes = 0;  // of the meshes
    std::size_t subMeshes = 0;
    std::size_t triangles = 0;
    std::size_t vertices = 0;
    std::size_t originalVertices = 0;  // of the scene's meshes
    std::size_t materials = 0;
    std::size_t layers = 0;
    std::size_t textures = 0;  // distinct file names of the layers
    std::size_t weights = 0;   // weights chunks
    std::size_t weightedVertices = 0;
    std::size_t influences = 0;      // of the weighted vertices, all together
    std::size_t mostInfluences = 0;  // of one vertex
    std::size_t weightingBones = 0;  // different nodes that they name
    std::size_t jointLimits = 0;
    std::size_t morphChannels = 0;
    std::size_t morphPoints = 0;  // of all channels
    std::size_t wires = 0;
    std::size_t ikChains = 0;
};

// A node's parent is the first node of that name; a name that no node has stands for none, and so
// does the link by which a circle of parents would close. Linear in the file's size.
Summary Summarize(const File& file);

// The tracks of one letter and version.
struct TrackTotal {
    char trackLetter = 'P';
    std::uint32_t version = 0;
    std::size_t tracks = 0;
    std::size_t keys = 0;
};

struct PartKeys {
    std::string nodeName;
    std::size_t keys = 0;  // of all tracks of the motion part
};

struct MotionSummary {
    std::size_t parts = 0;
    std::size_t tracks = 0;
    std::size_t keys = 0;
    std::vector<TrackTotal> totals;  // the letters and versions that occur: P, R, r, S
    float firstTime = 0;             // of all keys with a finite time, in seconds
    float lastTime = 0;
    std::vector<PartKeys> mostKeys;  // the few parts with most keys, most first, then in file order
};

// Linear in the file's size.
MotionSummary SummarizeMotion(const File& file);

// A few lines, headed by `path`.
void WriteInfo(const std::string& path, const File& file, std::ostream& out);

// One JSON object, with the node tree, each mesh's bounds, and names; docs/kta.md has its members.
// What is wrong with the file stands in it as in a dump.
void WriteInfoJson(const std::string& path, const Reading& reading, std::ostream& out);

}  // namespace kta
