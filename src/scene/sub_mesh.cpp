#include "scene/sub_mesh.h"

#include <limits.h>
#include <string.h>

using Plinth::Float32;
using Plinth::Int32;
using Plinth::UInt32;
using Plinth::UInt64;

namespace {

enum {
    kNone = -1,
    kFirstCapacity = 64,
    kVertexWords = sizeof(KTAVertex) / sizeof(Float32),
    kMostInChain = 16  // vertices of an original one that are looked at one by one
};

bool IsNumber(Float32 value) {
    return value == value;
}

bool AreEqual(const Float32* a, const Float32* b, Int32 count) {
    for (Int32 i = 0; i < count; ++i) {
        if (!(a[i] == b[i])) {
            return false;
        }
    }
    return true;
}

// Whether any corner can equal this one.
bool CanMatch(const CornerVertex& corner, Int32 numPairs) {
    bool numbers = true;
    for (Int32 i = 0; i < 3; ++i) {
        numbers = numbers && IsNumber(corner.record.normal[i]);
    }
    for (Int32 i = 0; i < 2 * numPairs; ++i) {
        numbers = numbers && IsNumber(corner.uvs[i]);
    }
    return numbers;
}

UInt64 Mixed(UInt64 hash, UInt32 word) {
    const UInt64 factor = (static_cast<UInt64>(0xff51afd7u) << 32) | 0xed558ccdu;
    hash = (hash ^ word) * factor;
    return hash ^ (hash >> 32);
}

UInt64 Mixed(UInt64 hash, Float32 value) {
    // Equal numbers have equal bits but for the two zeros.
    UInt32 bits = 0;
    if (value != 0.0f) {
        memcpy(&bits, &value, sizeof(bits));
    }
    return Mixed(hash, bits);
}

UInt32 Hash(Int32 subMesh, const KTAVertex& vertex, const Float32* uvs, Int32 numPairs) {
    UInt64 hash =
        Mixed(Mixed(0, static_cast<UInt32>(subMesh)), static_cast<UInt32>(vertex.originalVertex));
    for (Int32 i = 0; i < 3; ++i) {
        hash = Mixed(hash, vertex.normal[i]);
    }
    for (Int32 i = 0; i < 2 * numPairs; ++i) {
        hash = Mixed(hash, uvs[i]);
    }
    return static_cast<UInt32>(hash);
}

}  // namespace

SubMeshList::SubMeshList() : lastSubMesh(kNone), numPairs(0), stride(kVertexWords), comparisons(0) {
}

bool SubMeshList::Reserve(Int32 faceCount, Int32 pairCount, Int32 originalCount) {
    numPairs = pairCount;
    stride = kVertexWords + 2 * pairCount;
    if (faceCount > INT_MAX / 3) {
        return false;
    }
    faceMap.Reserve(faceCount);
    corners.Reserve(faceCount);
    chains.Reserve(originalCount);
    return true;
}

bool SubMeshList::AddFace(Int32 material, const CornerVertex added[3]) {
    const Int32 subMesh = SubMeshOf(material);
    SubMeshFace positions;
    for (int i = 0; i < 3; ++i) {
        if (!FindOrAdd(subMesh, added[i], positions.indices[i])) {
            return false;
        }
    }
    faceMap.Add(subMesh);
    corners.Add(positions);
    ++subMeshes[subMesh].assignedFaces;
    return true;
}

// Faces of one material mostly follow one another.
Int32 SubMeshList::SubMeshOf(Int32 material) {
    if (lastSubMesh != kNone && subMeshes[lastSubMesh].material == material) {
        return lastSubMesh;
    }
    const UInt64 key = static_cast<UInt32>(material);
    if (subMeshOfMaterial.Find(key, lastSubMesh)) {
        return lastSubMesh;
    }
    SubMesh subMesh;
    memset(&subMesh, 0, sizeof(subMesh));
    subMesh.material = material;
    subMeshes.AddAmortized(subMesh);
    lastSubMesh = subMeshes.Count() - 1;
    subMeshOfMaterial.Set(key, lastSubMesh);
    return lastSubMesh;
}

const KTAVertex& SubMeshList::VertexAt(Int32 position) const {
    return *reinterpret_cast<const KTAVertex*>(vertices.Data() +
                                               static_cast<size_t>(position) * stride);
}

const Float32* SubMeshList::PairsAt(Int32 position) const {
    return vertices.Data() + static_cast<size_t>(position) * stride + kVertexWords;
}

// Puts into `position` the vertex that the corner matches or makes, -1 where nothing will match it.
// False where there is no room for it.
bool SubMeshList::FindOrAdd(Int32 subMesh, const CornerVertex& corner, Int32& position) {
    const Int32 original = corner.record.originalVertex;
    if (original >= chains.Count()) {
        GrowChains(original);
    }
    const Chain& chain = chains[original];
    if (chain.count > kMostInChain) {
        position = FindInCrowd(subMesh, corner);
    } else {
        position = chain.count > 0 ? chain.last : static_cast<Int32>(kNone);
        while (position >= 0 && !IsVertex(position, subMesh, corner)) {
            position = links[position].other;
        }
    }
    if (position >= 0) {
        return true;
    }
    if (!AddVertex(subMesh, corner)) {
        return false;
    }
    if (CanMatch(corner, numPairs)) {
        position = links.Count() - 1;
        Enlist(position);
    }
    return true;
}

bool SubMeshList::IsVertex(Int32 position, Int32 subMesh, const CornerVertex& corner) {
    ++comparisons;
    return links[position].subMesh == subMesh &&
           AreEqual(VertexAt(position).normal, corner.record.normal, 3) &&
           AreEqual(PairsAt(position), corner.uvs, 2 * numPairs);
}

Int32 SubMeshList::FindInCrowd(Int32 subMesh, const CornerVertex& corner) {
    Plinth::HashTable::Walk walk(crowds->table, Hash(subMesh, corner.record, corner.uvs, numPairs));
    for (; walk.Current() >= 0; walk.Advance()) {
        const Int32 position = crowds->positions[walk.Current()];
        if (VertexAt(position).originalVertex == corner.record.originalVertex &&
            IsVertex(position, subMesh, corner)) {
            return position;
        }
    }
    return kNone;
}

bool SubMeshList::AddVertex(Int32 subMesh, const CornerVertex& corner) {
    const Int32 position = links.Count();
    if (position == links.Capacity() && !GrowVertices()) {
        return false;
    }
    const Link link = {subMesh, kNone};
    links.Add(link);
    vertices.Resize(vertices.Count() + stride);
    memcpy(&VertexAt(position), &corner.record, sizeof(KTAVertex));
    if (numPairs > 0) {
        memcpy(vertices.Data() + static_cast<size_t>(position) * stride + kVertexWords, corner.uvs,
               static_cast<size_t>(numPairs) * 2 * sizeof(Float32));
    }
    ++subMeshes[subMesh].storedVertices;
    return true;
}

// Makes a vertex known to those that are looked for.
void SubMeshList::Enlist(Int32 position) {
    Chain& chain = chains[VertexAt(position).originalVertex];
    if (chain.count == kMostInChain) {
        for (Int32 other = chain.last; other >= 0; other = links[other].other) {
            AddToCrowd(other);
        }
    }
    if (chain.count >= kMostInChain) {
        AddToCrowd(position);
    } else {
        links[position].other = chain.count > 0 ? chain.last : static_cast<Int32>(kNone);
        chain.last = position;
    }
    ++chain.count;
}

void SubMeshList::AddToCrowd(Int32 position) {
    if (crowds.Get() == NULL) {
        crowds.Reset(new Crowds);
    }
    crowds->positions.MakeRoom();
    crowds->table.Add(
        Hash(links[position].subMesh, VertexAt(position), PairsAt(position), numPairs));
    crowds->positions.Add(position);
}

void SubMeshList::GrowChains(Int32 original) {
    if (original >= chains.Capacity()) {
        const Int32 doubled = chains.Capacity() < INT_MAX / 2 ? 2 * chains.Capacity() : original;
        chains.Reserve(doubled > original ? doubled : original + 1);
    }
    chains.Resize(original + 1);
}

// Doubles the room for vertices. There are never more than three a face, so a mesh in which hardly
// any corners match does not get twice what it needs.
bool SubMeshList::GrowVertices() {
    const Int32 count = links.Count();
    Int32 most = faceMap.Capacity() < INT_MAX / 3 ? 3 * faceMap.Capacity() : INT_MAX - 1;
    most = most > INT_MAX / stride ? INT_MAX / stride : most;
    Int32 capacity = count < INT_MAX / 2 - kFirstCapacity ? 2 * count + kFirstCapacity : most;
    capacity = capacity < most ? capacity : most;
    if (capacity <= count) {
        return false;
    }
    vertices.Reserve(capacity * stride);
    links.Reserve(capacity);
    return true;
}

void SubMeshList::NumberVertices() {
    // Gives back what found the vertices, and the room for corners that turned out to match.
    crowds.Reset(NULL);
    chains.Clear();
    vertices.Reserve(vertices.Count());
    links.Reserve(links.Count());

    Plinth::Array<Int32> sorted;
    SortByOriginalVertex(sorted);
    order.Reserve(sorted.Count());
    order.Resize(sorted.Count());
    faces.Reserve(faceMap.Count());
    faces.Resize(faceMap.Count());
    Int32 firstVertex = 0;
    Int32 firstFace = 0;
    for (Int32 i = 0; i < subMeshes.Count(); ++i) {
        subMeshes[i].firstVertex = firstVertex;
        subMeshes[i].firstFace = firstFace;
        firstVertex += subMeshes[i].storedVertices;
        firstFace += subMeshes[i].assignedFaces;
    }
    for (Int32 i = 0; i < sorted.Count(); ++i) {
        Link& link = links[sorted[i]];
        SubMesh& subMesh = subMeshes[link.subMesh];
        link.other = subMesh.numVertices++;
        order[subMesh.firstVertex + link.other] = sorted[i];
    }
}

// A counting sort (Knuth, The Art of Computer Programming 3, 5.2, algorithm D) of all vertices'
// positions; those of one original vertex stay in their order.
void SubMeshList::SortByOriginalVertex(Plinth::Array<Int32>& sorted) const {
    Int32 numOriginal = 0;
    for (Int32 i = 0; i < links.Count(); ++i) {
        const Int32 original = VertexAt(i).originalVertex;
        numOriginal = original >= numOriginal ? original + 1 : numOriginal;
    }
    Plinth::Array<Int32> starts;
    starts.Reserve(numOriginal);
    starts.Resize(numOriginal);
    sorted.Reserve(links.Count());
    sorted.Resize(links.Count());
    for (Int32 i = 0; i < links.Count(); ++i) {
        ++starts[VertexAt(i).originalVertex];
    }
    Int32 start = 0;
    for (Int32 i = 0; i < numOriginal; ++i) {
        const Int32 count = starts[i];
        starts[i] = start;
        start += count;
    }
    for (Int32 i = 0; i < links.Count(); ++i) {
        sorted[starts[VertexAt(i).originalVertex]++] = i;
    }
}

bool SubMeshList::IndexFace(Int32 face, Int32 indices[3]) {
    bool found = true;
    for (int i = 0; i < 3; ++i) {
        const Int32 position = corners[face].indices[i];
        indices[i] = position >= 0 ? links[position].other : static_cast<Int32>(kNone);
        found = found && position >= 0;
    }
    if (found) {
        SubMesh& subMesh = subMeshes[faceMap[face]];
        memcpy(faces[subMesh.firstFace + subMesh.numFaces++].indices, indices, sizeof(SubMeshFace));
    }
    return found;
}

const KTAVertex& SubMeshList::VertexOf(const SubMesh& subMesh, Int32 number) const {
    return VertexAt(order[subMesh.firstVertex + number]);
}

const Float32* SubMeshList::PairsOf(const SubMesh& subMesh, Int32 number) const {
    return PairsAt(order[subMesh.firstVertex + number]);
}

const SubMeshFace* SubMeshList::FacesOf(const SubMesh& subMesh) const {
    return faces.Data() + subMesh.firstFace;
}
