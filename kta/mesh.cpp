// The mesh chunk. How many texture coordinates a vertex has stands nowhere in the file: supported
// map channels without map vertices are written, but not counted in the mesh's head. The number is
// found by trying: the smallest one with which every sub-mesh record is in order.
#include "kta/bodies.h"

namespace kta {
namespace {

constexpr std::int32_t kMostPairs = 98;  // of texture coordinates of a vertex
constexpr std::uint32_t kIndexSize = sizeof(Plinth::UInt32);

// ---------------------------------------------------------------- sub-meshes

// Goes through the sub-meshes of a mesh whose head is read, with a given number of texture
// coordinates a vertex. The cursor stops at what does not fit; fields are passed one by one, so
// that where it stands tells how far the number of texture coordinates took it.
class SubMeshReader {
  public:
    SubMeshReader(Cursor& cursor, const KTAMesh& head, std::int32_t pairs)
        : cursor_(cursor),
          head_(head),
          pairs_(static_cast<std::uint32_t>(pairs)),
          headOffset_(cursor.Offset() - sizeof(KTAMesh)) {}

    // Checks all sub-meshes; keeps them when there is somewhere to.
    void Read(std::vector<SubMesh>* kept) {
        for (std::int32_t i = 0; i < head_.subMeshCount && !cursor_.Stopped(); ++i) {
            SubMesh subMesh;
            ReadOne(subMesh, kept != nullptr);
            if (kept != nullptr) {
                kept->push_back(std::move(subMesh));
            }
        }
        CheckTotal(offsetof(KTAMesh, vertexCount), "vertex count", head_.vertexCount, numVertices_);
        CheckTotal(offsetof(KTAMesh, indexCount), "index count", head_.indexCount, numIndices_);
    }

  private:
    // A total of the head that its sub-meshes leave unused.
    void CheckTotal(std::uint64_t field, const char* what, std::int32_t total, std::int64_t sum) {
        if (sum != total) {
            cursor_.Stop(headOffset_ + field, Found(IssueCode::meshTotals, what, total,
                                                    std::to_string(sum) + ", the sub-meshes' sum"));
        }
    }

    void ReadOne(SubMesh& subMesh, bool keep) {
        subMesh.offset = cursor_.Offset();
        cursor_.Require(sizeof(KTASubMesh), "sub-mesh record");
        const auto record = cursor_.Peek<KTASubMesh>();
        PassMaterial(record);
        const std::uint32_t numIndices = PassCount("sub-mesh index count", record.indexCount, 0,
                                                   head_.indexCount - numIndices_, 3);
        const std::uint32_t numVertices = PassCount("sub-mesh vertex count", record.vertexCount, 1,
                                                    head_.vertexCount - numVertices_, 1);
        subMesh.materialNumber = record.materialNumber == kFullMaterialNumber
                                     ? ReadFullMaterialNumber()
                                     : record.materialNumber;
        numIndices_ += numIndices;
        numVertices_ += numVertices;
        const std::uint64_t vertexSize = sizeof(KTAVertex) + pairs_ * sizeof(TextureCoordinates);
        if (cursor_.Require(numVertices * vertexSize, "vertices")) {
            keep ? ReadVertices(numVertices, subMesh) : CheckVertices(numVertices, vertexSize);
        }
        if (cursor_.Require(std::uint64_t{numIndices} * kIndexSize, "faces")) {
            subMesh.faces.reserve(keep ? numIndices / 3 : 0);
            ReadFaces(numIndices / 3, numVertices, keep ? &subMesh.faces : nullptr);
        }
    }

    void PassMaterial(const KTASubMesh& record) {
        const std::uint64_t offset = cursor_.Offset();
        cursor_.Skip(offsetof(KTASubMesh, indexCount));
        if (record.materialNumber >= kFirstFullMaterialNumber &&
            record.materialNumber != kFullMaterialNumber) {
            cursor_.Stop(offset, Found(IssueCode::subMeshMaterial, "material byte",
                                       record.materialNumber, "0 to 127, or 255"));
        }
        if (record.at1 != 0) {
            cursor_.Stop(
                offset + offsetof(KTASubMesh, at1),
                Found(IssueCode::constantValue, "byte behind the material", record.at1, "0"));
        }
    }

    std::uint32_t PassCount(const char* what, std::int32_t count, std::int32_t least,
                            std::int64_t most, std::int32_t unit) {
        const std::uint64_t offset = cursor_.Offset();
        cursor_.Skip(sizeof(count));
        if (count < least || count > most) {
            cursor_.Stop(offset, Found(IssueCode::subMeshCount, what, count,
                                       std::to_string(least) + " to " + std::to_string(most) +
                                           ", what the mesh's count leaves"));
        } else if (count % unit != 0) {
            cursor_.Stop(offset, Found(IssueCode::subMeshCount, what, count,
                                       "a multiple of " + std::to_string(unit)));
        }
        return cursor_.Stopped() ? 0 : static_cast<std::uint32_t>(count);
    }

    std::int32_t ReadFullMaterialNumber() {
        const std::uint64_t offset = cursor_.Offset();
        cursor_.Require(sizeof(Plinth::Int32), "material number");
        const auto material = cursor_.Read<std::int32_t>();
        if (material < kFirstFullMaterialNumber) {
            cursor_.Stop(offset,
                         Found(IssueCode::subMeshMaterial, "material number in full", material,
                               std::to_string(kFirstFullMaterialNumber) + " or more"));
        }
        return material;
    }

    void CheckVertices(std::uint32_t count, std::uint64_t size) {
        std::int32_t previous = 0;
        for (std::uint32_t i = 0; i < count && !cursor_.Stopped(); ++i) {
            previous = PassOriginalVertex(cursor_.Peek<std::int32_t>(), previous);
            cursor_.Skip(size - sizeof(previous));
        }
    }

    // Of sub-meshes that are checked already.
    void ReadVertices(std::uint32_t count, SubMesh& subMesh) {
        subMesh.vertices.reserve(count);
        subMesh.textureCoordinates.reserve(std::size_t{count} * pairs_);
        NotFinite positions("position", "sub-mesh");
        NotFinite normals("normal", "sub-mesh");
        NotFinite pairs("texture coordinate pair", "sub-mesh");
        for (std::uint32_t i = 0; i < count; ++i) {
            const std::uint64_t offset = cursor_.Offset();
            const KTAVertex& vertex = subMesh.vertices.emplace_back(cursor_.Read<KTAVertex>());
            positions.Check(offset + offsetof(KTAVertex, position), vertex.position);
            normals.Check(offset + offsetof(KTAVertex, normal), vertex.normal);
            for (std::uint32_t k = 0; k < pairs_; ++k) {
                const std::uint64_t pair = cursor_.Offset();
                subMesh.textureCoordinates.push_back(cursor_.Read<TextureCoordinates>());
                pairs.Check(pair, subMesh.textureCoordinates.back());
            }
        }
        positions.Report(cursor_);
        normals.Report(cursor_);
        pairs.Report(cursor_);
    }

    // They ascend within a sub-mesh.
    std::int32_t PassOriginalVertex(std::int32_t original, std::int32_t least) {
        const std::uint64_t offset = cursor_.Offset();
        cursor_.Skip(sizeof(original));
        if (original < least || original >= head_.originalVertexCount) {
            cursor_.Stop(offset, Found(IssueCode::originalVertex, "original vertex", original,
                                       std::to_string(least) + " to " +
                                           std::to_string(head_.originalVertexCount - 1)));
        }
        return original;
    }

    void ReadFaces(std::uint32_t count, std::uint32_t numVertices,
                   std::vector<std::array<std::uint32_t, 3>>* kept) {
        for (std::uint32_t i = 0; i < count && !cursor_.Stopped(); ++i) {
            std::array<std::uint32_t, 3> face{};
            for (std::uint32_t& corner : face) {
                const std::uint64_t offset = cursor_.Offset();
                corner = cursor_.Read<std::uint32_t>();
                if (corner >= numVertices) {
                    cursor_.Stop(offset,
                                 Found(IssueCode::faceIndex, "face's vertex", corner,
                                       "less than the sub-mesh's " + std::to_string(numVertices)));
                }
            }
            if (kept != nullptr) {
                kept->push_back(face);
            }
        }
    }

    Cursor& cursor_;
    const KTAMesh& head_;
    std::uint32_t pairs_;
    std::uint64_t headOffset_;
    std::int64_t numVertices_ = 0;  // so far
    std::int64_t numIndices_ = 0;
};

// ---------------------------------------------------------------- trials

// How far the sub-meshes are in order with one number of texture coordinates a vertex.
struct Trial {
    std::int32_t pairs = 0;
    std::uint64_t end = 0;
    bool complete = false;
    bool atChunkEnd = false;
    std::vector<Fault> faults;  // what ended it; empty when it is complete
};

Trial Try(const Cursor& start, const KTAMesh& head, std::int32_t pairs) {
    Trial trial;
    trial.pairs = pairs;
    Cursor cursor = start.Fork(trial.faults);
    SubMeshReader(cursor, head, pairs).Read(nullptr);
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

Trial BestTrial(const Cursor& start, const KTAMesh& head) {
    Trial best = Try(start, head, head.mapChannelCount);
    for (std::int32_t pairs = head.mapChannelCount + 1; pairs <= kMostPairs && !best.atChunkEnd;
         ++pairs) {
        Trial trial = Try(start, head, pairs);
        if (IsBetter(trial, best)) {
            best = std::move(trial);
        }
    }
    return best;
}

void ReadSubMeshes(Cursor& cursor, Mesh& mesh) {
    const Trial best = BestTrial(cursor, mesh.head);
    mesh.pairsPerVertex = best.pairs;
    if (best.complete) {
        SubMeshReader(cursor, mesh.head, best.pairs).Read(&mesh.subMeshes);
        return;
    }
    const bool counted = best.pairs == mesh.head.mapChannelCount;
    cursor.Stop(best.faults.front(), counted ? ""
                                             : " (with " + std::to_string(best.pairs) +
                                                   " texture coordinate pairs a vertex)");
}

// The bytes of the sub-meshes as the declared size counts them, which leaves out material numbers
// in full and the texture coordinates of channels that the head does not count.
std::uint64_t CountedSize(const KTAMesh& head) {
    const auto number = [](std::int32_t count) { return static_cast<std::uint64_t>(count); };
    return number(head.subMeshCount) * sizeof(KTASubMesh) + number(head.indexCount) * kIndexSize +
           number(head.vertexCount) *
               (sizeof(KTAVertex) + number(head.mapChannelCount) * sizeof(TextureCoordinates));
}

// The sizes that a kind's chunks declare in actor files.
struct SizeRange {
    int id;
    std::uint32_t least;
    std::uint32_t most;
};

template <typename Record>
constexpr SizeRange SizeOf(bool more = false) {
    return {Record::kChunkId, sizeof(Record), more ? ~0u : std::uint32_t{sizeof(Record)}};
}

constexpr SizeRange kSizes[] = {
    SizeOf<KTANode>(),         SizeOf<KTAMesh>(true),      SizeOf<KTAWeights>(true),
    SizeOf<KTAMaterial>(),     SizeOf<KTAMaterialLayer>(), SizeOf<KTAJointLimits>(),
    SizeOf<KTAMorphChannel>(), SizeOf<KTAWire>(),          SizeOf<KTAIKChain>()};

}  // namespace

bool IsChunkEnd(const Cursor& cursor) {
    if (cursor.Left() < sizeof(KTAChunkHeader)) {
        return cursor.Left() == 0;
    }
    const auto header = cursor.Peek<KTAChunkHeader>();
    for (const SizeRange& range : kSizes) {
        if (range.id == static_cast<int>(header.id)) {
            return header.size >= range.least && header.size <= range.most &&
                   header.version == FindChunkType(header.id)->version;
        }
    }
    return false;
}

void ReadMeshBody(Cursor& cursor, Chunk& chunk) {
    if (!cursor.Require(sizeof(KTAMesh), "head")) {
        return;
    }
    Mesh mesh;
    mesh.head = ReadRecord<KTAMesh>(cursor);
    if (cursor.Stopped()) {
        return;
    }
    const std::uint64_t counted = CountedSize(mesh.head);
    if (!cursor.Require(counted, "sub-meshes")) {
        return;
    }
    const auto expected = static_cast<std::uint32_t>(sizeof(KTAMesh) + counted);
    if (chunk.size != expected) {
        cursor.Report(chunk.offset + offsetof(KTAChunkHeader, size),
                      Found(IssueCode::chunkSize, "size", chunk.size,
                            std::to_string(expected) + " by its counts"));
    }
    ReadSubMeshes(cursor, mesh);
    if (!cursor.Stopped()) {
        chunk.body = std::move(mesh);
    }
}

}  // namespace kta
