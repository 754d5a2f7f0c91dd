#include "scene/sub_mesh.h"

#include <limits.h>
#include <string.h>

using Plinth::Float32;
using Plinth::Int32;
using Plinth::UInt32;
using Plinth::UInt64;

namespace {

enum { kUnnumbered = 666, kFirstCapacity = 64 };

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
bool CanMatch(const CornerVertex& corner) {
    bool numbers = true;
    for (Int32 i = 0; i < 3; ++i) {
        numbers = numbers && IsNumber(corner.record.normal[i]);
    }
    for (Int32 i = 0; i < 2 * corner.numPairs; ++i) {
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

UInt32 Hash(Int32 subMesh, const CornerVertex& corner) {
    UInt64 hash = Mixed(Mixed(0, static_cast<UInt32>(subMesh)),
                        static_cast<UInt32>(corner.record.originalVertex));
    for (Int32 i = 0; i < 3; ++i) {
        hash = Mixed(hash, corner.record.normal[i]);
    }
    for (Int32 i = 0; i < 2 * corner.numPairs; ++i) {
        hash = Mixed(hash, corner.uvs[i]);
    }
    return static_cast<UInt32>(hash);
}

}  // namespace

SubMeshList::SubMeshList() : numPairs(0), comparisons(0) {
}

bool SubMeshList::Reserve(Int32 faceCount, Int32 pairCount) {
    numPairs = pairCount;
    if (faceCount > INT_MAX / 3) {
        return false;
    }
    faceMap.Reserve(faceCount);
    return true;
}

bool SubMeshList::AddFace(Int32 material, const CornerVertex corners[3]) {
    const Int32 subMesh = SubMeshOf(material);
    faceMap.Add(subMesh);
    ++subMeshes[subMesh].assignedFaces;
    for (int i = 0; i < 3; ++i) {
        if (Find(subMesh, corners[i]) < 0 && !AddVertex(subMesh, corners[i])) {
            return false;
        }
    }
    return true;
}

Int32 SubMeshList::SubMeshOf(Int32 material) {
    const UInt64 key = static_cast<UInt32>(material);
    Int32 position = -1;
    if (subMeshOfMaterial.Find(key, position)) {
        return position;
    }
    SubMesh subMesh;
    memset(&subMesh, 0, sizeof(subMesh));
    subMesh.material = material;
    position = subMeshes.Count();
    subMeshes.AddAmortized(subMesh);
    subMeshOfMaterial.Set(key, position);
    return position;
}

CornerVertex SubMeshList::CornerAt(Int32 position) const {
    const CornerVertex corner = {vertices[position], numPairs,
                                 uvs.Data() + static_cast<size_t>(position) * 2 * numPairs};
    return corner;
}

// The position of the vertex that the corner matches; -1 when there is none.
Int32 SubMeshList::Find(Int32 subMesh, const CornerVertex& corner) const {
    if (corner.numPairs != numPairs) {
        return -1;
    }
    Plinth::HashTable::Walk walk(matches, Hash(subMesh, corner));
    for (; walk.Current() >= 0; walk.Advance()) {
        const Int32 position = walk.Current();
        ++comparisons;
        if (links[position].subMesh == subMesh &&
            vertices[position].originalVertex == corner.record.originalVertex &&
            AreEqual(vertices[position].normal, corner.record.normal, 3) &&
            AreEqual(CornerAt(position).uvs, corner.uvs, 2 * numPairs)) {
            return position;
        }
    }
    return -1;
}

bool SubMeshList::AddVertex(Int32 subMesh, const CornerVertex& corner) {
    const Int32 position = vertices.Count();
    if (position == vertices.Capacity() && !GrowVertices()) {
        return false;
    }
    const Link link = {subMesh, kUnnumbered};
    vertices.Add(corner.record);
    links.Add(link);
    for (Int32 i = 0; i < 2 * numPairs; ++i) {
        uvs.Add(corner.uvs[i]);
    }
    // A corner that can match nothing gets a hash of its own: many of one hash would be walked
    // again and again.
    matches.Add(CanMatch(corner) ? Hash(subMesh, corner) : static_cast<UInt32>(position));
    ++subMeshes[subMesh].storedVertices;
    return true;
}

// Doubles the room for vertices. There are never more than three a face, so a mesh in which hardly
// any corners match does not get twice what it needs.
bool SubMeshList::GrowVertices() {
    const Int32 count = vertices.Count();
    Int32 most = faceMap.Capacity() < INT_MAX / 3 ? 3 * faceMap.Capacity() : INT_MAX - 1;
    if (numPairs > 0 && most > INT_MAX / (2 * numPairs)) {
        most = INT_MAX / (2 * numPairs);
    }
    Int32 capacity = count < INT_MAX / 2 - kFirstCapacity ? 2 * count + kFirstCapacity : most;
    capacity = capacity < most ? capacity : most;
    if (capacity <= count) {
        return false;
    }
    vertices.Reserve(capacity);
    links.Reserve(capacity);
    matches.Reserve(capacity);
    uvs.Reserve(capacity * 2 * numPairs);
    return true;
}

void SubMeshList::NumberVertices() {
    // Gives back the room reserved for corners that turned out to match.
    vertices.Reserve(vertices.Count());
    links.Reserve(links.Count());
    matches.Reserve(matches.Count());
    uvs.Reserve(uvs.Count());

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
        link.outputIndex = subMesh.numVertices++;
        order[subMesh.firstVertex + link.outputIndex] = sorted[i];
    }
}

// A counting sort (Knuth, The Art of Computer Programming 3, 5.2, algorithm D) of all vertices'
// positions; those of one original vertex stay in their order.
void SubMeshList::SortByOriginalVertex(Plinth::Array<Int32>& sorted) const {
    Int32 numOriginal = 0;
    for (Int32 i = 0; i < vertices.Count(); ++i) {
        const Int32 original = vertices[i].originalVertex;
        numOriginal = original >= numOriginal ? original + 1 : numOriginal;
    }
    Plinth::Array<Int32> starts;
    starts.Reserve(numOriginal);
    starts.Resize(numOriginal);
    sorted.Reserve(vertices.Count());
    sorted.Resize(vertices.Count());
    for (Int32 i = 0; i < vertices.Count(); ++i) {
        ++starts[vertices[i].originalVertex];
    }
    Int32 start = 0;
    for (Int32 i = 0; i < numOriginal; ++i) {
        const Int32 count = starts[i];
        starts[i] = start;
        start += count;
    }
    for (Int32 i = 0; i < vertices.Count(); ++i) {
        sorted[starts[vertices[i].originalVertex]++] = i;
    }
}

bool SubMeshList::IndexFace(Int32 face, const CornerVertex corners[3], Int32 indices[3]) {
    bool found = true;
    for (int i = 0; i < 3; ++i) {
        const Int32 position = Find(faceMap[face], corners[i]);
        indices[i] = position >= 0 ? links[position].outputIndex : -1;
        found = found && position >= 0;
    }
    if (found) {
        SubMesh& subMesh = subMeshes[faceMap[face]];
        memcpy(faces[subMesh.firstFace + subMesh.numFaces++].indices, indices, sizeof(SubMeshFace));
    }
    return found;
}

const KTAVertex& SubMeshList::VertexOf(const SubMesh& subMesh, Int32 number) const {
    return vertices[order[subMesh.firstVertex + number]];
}

const Float32* SubMeshList::PairsOf(const SubMesh& subMesh, Int32 number) const {
    return uvs.Data() + static_cast<size_t>(order[subMesh.firstVertex + number]) * 2 * numPairs;
}

const SubMeshFace* SubMeshList::FacesOf(const SubMesh& subMesh) const {
    return faces.Data() + subMesh.firstFace;
}
