// The mesh chunk. How many texture coordinates a vertex has stands nowhere in the file: supported
// map channels without map vertices are written, but not counted in the mesh's head. They are
// found by trying: the smallest number with which every sub-mesh record is in order.
#include <utility>

#include "kta/read_bodies.h"
#include "kta/read_checks.h"

namespace kta {
namespace {

constexpr std::uint32_t kHeadSize = 28;
constexpr std::int32_t kMostMapChannels = 98;
constexpr std::uint8_t kLongMaterialByte = 255;

// ---------------------------------------------------------------- sub-meshes

// Goes through the sub-meshes of a mesh whose head is read, with a given number of texture
// coordinates a vertex. The cursor stops at what does not fit.
class SubMeshReader {
  public:
    SubMeshReader(Cursor& cursor, const Mesh& mesh, std::int32_t pairs, std::uint64_t headOffset)
        : cursor_(cursor),
          mesh_(mesh),
          pairs_(static_cast<std::uint32_t>(pairs)),
          headOffset_(headOffset) {}

    // Checks `count` sub-meshes; keeps them when there is somewhere to.
    void Read(std::int32_t count, std::vector<SubMesh>* kept) {
        for (std::int32_t i = 0; i < count && !cursor_.Stopped(); ++i) {
            SubMesh subMesh;
            ReadOne(subMesh, kept != nullptr);
            if (kept != nullptr) {
                kept->push_back(std::move(subMesh));
            }
        }
        CheckTotal(8, "vertex count", mesh_.numVertices, numVertices_);
        CheckTotal(12, "index count", mesh_.numIndices, numIndices_);
    }

  private:
    // A total of the head that its sub-meshes leave unused.
    void CheckTotal(std::uint64_t field, const char* what, std::int32_t total, std::int64_t sum) {
        if (sum != total) {
            cursor_.Stop(headOffset_ + field,
                         Expected(what, total, std::to_string(sum) + ", the sub-meshes' sum"));
        }
    }

    void ReadOne(SubMesh& subMesh, bool keep) {
        subMesh.offset = cursor_.Offset();
        cursor_.Require(kSubMeshSize, "sub-mesh record");
        const std::uint8_t material = ReadMaterialByte();
        const std::uint32_t numIndices =
            ReadCount("sub-mesh index count", 0, mesh_.numIndices - numIndices_, 3);
        const std::uint32_t numVertices =
            ReadCount("sub-mesh vertex count", 1, mesh_.numVertices - numVertices_, 1);
        subMesh.material = material == kLongMaterialByte ? ReadLongMaterial() : material;
        numIndices_ += numIndices;
        numVertices_ += numVertices;
        const std::uint64_t vertexSize = kVertexSize + std::uint64_t{pairs_} * kPairSize;
        if (cursor_.Require(numVertices * vertexSize, "vertices")) {
            keep ? ReadVertices(numVertices, subMesh) : CheckVertices(numVertices, vertexSize);
        }
        if (cursor_.Require(std::uint64_t{numIndices} * 4, "faces")) {
            subMesh.faces.reserve(keep ? numIndices / 3 : 0);
            ReadFaces(numIndices / 3, numVertices, keep ? &subMesh.faces : nullptr);
        }
    }

    std::uint8_t ReadMaterialByte() {
        const std::uint64_t offset = cursor_.Offset();
        const std::uint8_t material = cursor_.U8();
        const std::uint8_t zero = cursor_.U8();
        cursor_.Skip(2);
        if (material >= kLongMaterial && material != kLongMaterialByte) {
            cursor_.Stop(offset, Expected("material byte", material, "0 to 127, or 255"));
        }
        if (zero != 0) {
            cursor_.Stop(offset + 1, Expected("byte behind the material", zero, "0"));
        }
        return material;
    }

    std::int32_t ReadLongMaterial() {
        const std::uint64_t offset = cursor_.Offset();
        cursor_.Require(4, "material number");
        const std::int32_t material = cursor_.I32();
        if (material < kLongMaterial) {
            cursor_.Stop(offset, Expected("material number in full", material,
                                          std::to_string(kLongMaterial) + " or more"));
        }
        return material;
    }

    std::uint32_t ReadCount(const char* what, std::int32_t least, std::int64_t most,
                            std::int32_t unit) {
        const std::uint64_t offset = cursor_.Offset();
        const std::int32_t count = cursor_.I32();
        if (count < least || count > most) {
            cursor_.Stop(offset, Expected(what, count,
                                          std::to_string(least) + " to " + std::to_string(most) +
                                              ", what the mesh's count leaves"));
        } else if (count % unit != 0) {
            cursor_.Stop(offset, Expected(what, count, "a multiple of " + std::to_string(unit)));
        }
        return cursor_.Stopped() ? 0 : static_cast<std::uint32_t>(count);
    }

    void CheckVertices(std::uint32_t count, std::uint64_t size) {
        std::int32_t previous = 0;
        for (std::uint32_t i = 0; i < count && !cursor_.Stopped(); ++i) {
            previous = ReadOriginalVertex(previous);
            cursor_.Skip(size - 4);
        }
    }

    void ReadVertices(std::uint32_t count, SubMesh& subMesh) {
        subMesh.vertices.reserve(count);
        subMesh.textureCoordinates.reserve(std::size_t{count} * pairs_);
        NotFinite positions("position", "sub-mesh");
        NotFinite normals("normal", "sub-mesh");
        NotFinite pairs("texture coordinate pair", "sub-mesh");
        std::int32_t previous = 0;
        for (std::uint32_t i = 0; i < count && !cursor_.Stopped(); ++i) {
            Vertex vertex;
            previous = vertex.originalVertex = ReadOriginalVertex(previous);
            vertex.position = positions.Read<3>(cursor_);
            vertex.normal = normals.Read<3>(cursor_);
            subMesh.vertices.push_back(vertex);
            for (std::uint32_t k = 0; k < pairs_; ++k) {
                subMesh.textureCoordinates.push_back(pairs.Read<2>(cursor_));
            }
        }
        positions.Report(cursor_);
        normals.Report(cursor_);
        pairs.Report(cursor_);
    }

    // They ascend within a sub-mesh.
    std::int32_t ReadOriginalVertex(std::int32_t least) {
        const std::uint64_t offset = cursor_.Offset();
        const std::int32_t original = cursor_.I32();
        if (original < least || original >= mesh_.numOriginalVertices) {
            cursor_.Stop(offset, Expected("original vertex", original,
                                          std::to_string(least) + " to " +
                                              std::to_string(mesh_.numOriginalVertices - 1)));
        }
        return original;
    }

    void ReadFaces(std::uint32_t count, std::uint32_t numVertices,
                   std::vector<std::array<std::uint32_t, 3>>* kept) {
        for (std::uint32_t i = 0; i < count && !cursor_.Stopped(); ++i) {
            std::array<std::uint32_t, 3> face{};
            for (std::uint32_t& corner : face) {
                const std::uint64_t offset = cursor_.Offset();
                corner = cursor_.U32();
                if (corner >= numVertices) {
                    cursor_.Stop(offset, Expected("face's vertex", corner,
                                                  "less than the sub-mesh's " +
                                                      std::to_string(numVertices)));
                }
            }
            if (kept != nullptr) {
                kept->push_back(face);
            }
        }
    }

    Cursor& cursor_;
    const Mesh& mesh_;
    std::uint32_t pairs_;
    std::uint64_t headOffset_;
    std::int64_t numVertices_ = 0;  // so far
    std::int64_t numIndices_ = 0;
};

// ---------------------------------------------------------------- trials

// The sizes that a kind's chunks declare.
struct SizeRange {
    KTAChunkId id;
    std::uint32_t least;
    std::uint32_t most;
};

constexpr SizeRange kSizes[] = {{kChunkNode, kNodeSize, kNodeSize},
                                {kChunkMesh, kHeadSize, ~0u},
                                {kChunkWeights, 4, ~0u},
                                {kChunkMaterial, kMaterialSize, kMaterialSize},
                                {kChunkMaterialLayer, kMaterialLayerSize, kMaterialLayerSize},
                                {kChunkJointLimits, kJointLimitsSize, kJointLimitsSize},
                                {kChunkMorph, kMorphRecordSize, kMorphRecordSize},
                                {kChunkWire, kWireSize, kWireSize},
                                {kChunkIKChain, kIkChainSize, kIkChainSize}};

// How far the sub-meshes are in order with one number of texture coordinates a vertex.
struct Trial {
    std::int32_t pairs = 0;
    std::uint64_t end = 0;
    bool complete = false;
    bool atChunkEnd = false;
    std::vector<Fault> faults;  // what ended it; empty when it is complete
};

Trial Try(const Cursor& start, const Mesh& mesh, std::int32_t count, std::int32_t pairs) {
    Trial trial;
    trial.pairs = pairs;
    Cursor cursor = start.Fork(trial.faults);
    SubMeshReader(cursor, mesh, pairs, start.Offset() - kHeadSize).Read(count, nullptr);
    trial.end = cursor.Offset();
    trial.complete = !cursor.Stopped();
    trial.atChunkEnd = trial.complete && IsChunkEnd(cursor);
    return trial;
}

// A complete trial is better than one that stopped; among either, one that ends where a chunk may
// end, or that came further.
bool IsBetter(const Trial& trial, const Trial& best) {
    if (trial.complete != best.complete) {
        return trial.complete;
    }
    return trial.complete ? trial.atChunkEnd && !best.atChunkEnd : trial.end > best.end;
}

Trial BestTrial(const Cursor& start, const Mesh& mesh, std::int32_t count) {
    Trial best = Try(start, mesh, count, mesh.numMapChannels);
    for (std::int32_t pairs = mesh.numMapChannels + 1;
         pairs <= kMostMapChannels && !best.atChunkEnd; ++pairs) {
        Trial trial = Try(start, mesh, count, pairs);
        if (IsBetter(trial, best)) {
            best = std::move(trial);
        }
    }
    return best;
}

void ReadSubMeshes(Cursor& cursor, Mesh& mesh, std::int32_t count) {
    const Trial best = BestTrial(cursor, mesh, count);
    mesh.pairsPerVertex = best.pairs;
    if (best.complete) {
        SubMeshReader(cursor, mesh, best.pairs, cursor.Offset() - kHeadSize)
            .Read(count, &mesh.subMeshes);
        return;
    }
    const bool counted = best.pairs == mesh.numMapChannels;
    cursor.Stop(best.faults.front().offset,
                best.faults.front().text + (counted ? ""
                                                    : " (with " + std::to_string(best.pairs) +
                                                          " texture coordinate pairs a vertex)"));
}

// ---------------------------------------------------------------- head

// Offsets in the body: 0 node i32, 4 original vertices i32, 8 vertices i32, 12 indices i32,
// 16 sub-meshes i32, 20 map channels i32, 24 collision flag u8, 25 padding[3]. Returns the number
// of sub-meshes. A mesh of less than a triangle is never written.
std::int32_t ReadHead(Cursor& cursor, Mesh& mesh) {
    mesh.node = ReadAtLeast(cursor, "node number", -1);
    mesh.numOriginalVertices = ReadAtLeast(cursor, "original vertex count", 1);
    mesh.numVertices = ReadAtLeast(cursor, "vertex count", 3);
    const std::uint64_t offset = cursor.Offset();
    mesh.numIndices = ReadAtLeast(cursor, "index count", 3);
    if (mesh.numIndices % 3 != 0) {
        cursor.Stop(offset, Expected("index count", mesh.numIndices, "a multiple of 3"));
    }
    const std::int32_t numSubMeshes = ReadAtLeast(cursor, "sub-mesh count", 1);
    mesh.numMapChannels = ReadAtLeast(cursor, "map channel count", 0);
    if (mesh.numMapChannels > kMostMapChannels) {
        cursor.Stop(offset + 8, Expected("map channel count", mesh.numMapChannels,
                                         "at most " + std::to_string(kMostMapChannels)));
    }
    mesh.isCollision = cursor.Flag("collision flag");
    cursor.Skip(3);
    return numSubMeshes;
}

// The bytes of the sub-meshes as the declared size counts them, which leaves out material numbers
// in full and the texture coordinates of channels that the head does not count.
std::uint64_t CountedSize(const Mesh& mesh, std::int32_t numSubMeshes) {
    const auto number = [](std::int32_t count) { return static_cast<std::uint64_t>(count); };
    return number(numSubMeshes) * kSubMeshSize + number(mesh.numIndices) * 4 +
           number(mesh.numVertices) * (kVertexSize + number(mesh.numMapChannels) * kPairSize);
}

}  // namespace

bool IsChunkEnd(const Cursor& cursor) {
    std::vector<Fault> faults;
    Cursor next = cursor.Fork(faults);
    const std::uint32_t id = next.U32();
    const std::uint32_t size = next.U32();
    const std::uint32_t version = next.U32();
    if (next.Stopped()) {
        return cursor.Left() == 0;
    }
    for (const SizeRange& range : kSizes) {
        if (range.id == static_cast<int>(id)) {
            return size >= range.least && size <= range.most &&
                   version == FindChunkType(id)->version;
        }
    }
    return false;
}

void ReadMeshBody(Cursor& cursor, Chunk& chunk) {
    Mesh mesh;
    if (!cursor.Require(kHeadSize, "head")) {
        return;
    }
    const std::int32_t numSubMeshes = ReadHead(cursor, mesh);
    if (cursor.Stopped()) {
        return;
    }
    const std::uint64_t counted = CountedSize(mesh, numSubMeshes);
    if (!cursor.Require(counted, "sub-meshes")) {
        return;
    }
    const auto expected = static_cast<std::uint32_t>(kHeadSize + counted);
    if (chunk.size != expected) {
        cursor.Report(chunk.offset + 4,
                      Expected("size", chunk.size, std::to_string(expected) + " by its counts"));
    }
    ReadSubMeshes(cursor, mesh, numSubMeshes);
    if (!cursor.Stopped()) {
        chunk.body = std::move(mesh);
    }
}

}  // namespace kta
