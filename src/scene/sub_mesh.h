// A mesh cut into sub-meshes, one for each material number, with the corners of its faces matched
// into vertices.
#ifndef SCENE_SUB_MESH_H
#define SCENE_SUB_MESH_H

#include "core/array.h"
#include "core/hash_table.h"
#include "core/holder.h"
#include "core/types.h"
#include "format/records.h"

// A corner of a face.
struct CornerVertex {
    KTAVertex record;
    const Plinth::Float32* uvs;  // (u, v) pairs; not owned
};

struct SubMesh {
    Plinth::Int32 material;
    Plinth::Int32 numVertices;  // 0 until the vertices are numbered
    Plinth::Int32 numFaces;     // that have been indexed

    // The list's own: how many vertices and faces the vertex pass met, and where they begin in what
    // the list keeps sub-mesh after sub-mesh.
    Plinth::Int32 storedVertices;
    Plinth::Int32 assignedFaces;
    Plinth::Int32 firstVertex;
    Plinth::Int32 firstFace;
};

struct SubMeshFace {
    Plinth::Int32 indices[3];  // of vertices within the sub-mesh
};

// Used in three steps: Reserve and AddFace for each face, NumberVertices, and IndexFace for each
// face. Then the sub-meshes are complete.
//
// Two corners are one vertex where they belong to the same sub-mesh and original vertex, and their
// normals and texture coordinates are equal component by component (-0 equals 0, what is not a
// number equals nothing). The few vertices of an original one are looked at one by one, which stays
// in the cache as faces stand side by side; where they become many, a hash over all of that finds
// the right one, so the cost of a corner does not depend on how many share its original vertex.
//
// Where a count does not fit its type, Reserve and AddFace give false; the list is of no use then,
// nor where memory is missing, which throws std::bad_alloc.
class SubMeshList {
  public:
    SubMeshList();

    // Announces the number of faces, of (u, v) pairs of every corner, and of original vertices,
    // which may turn out to be more.
    bool Reserve(Plinth::Int32 faceCount, Plinth::Int32 pairCount, Plinth::Int32 originalCount = 0);
    // Adds the three corners of the next face to the sub-mesh of the material number, which is made
    // at the end of the list when it is new.
    bool AddFace(Plinth::Int32 material, const CornerVertex corners[3]);

    // The vertices of all sub-meshes in the order in which they were met.
    Plinth::Int32 NumVertices() const { return links.Count(); }
    KTAVertex& VertexAt(Plinth::Int32 position) {
        return *reinterpret_cast<KTAVertex*>(vertices.Data() +
                                             static_cast<size_t>(position) * stride);
    }

    // Numbers the vertices of each sub-mesh by ascending original vertex, those of the same one in
    // the order in which they were met.
    void NumberVertices();

    // Gives the vertices of a face's corners, -1 for one that equals nothing, and appends the face
    // to its sub-mesh when all have one. Returns whether they have. Each face once.
    bool IndexFace(Plinth::Int32 face, Plinth::Int32 indices[3]);

    // How many faces were added.
    Plinth::Int32 NumAddedFaces() const { return faceMap.Count(); }
    Plinth::Int32 NumPairs() const { return numPairs; }

    Plinth::Int32 Count() const { return subMeshes.Count(); }
    const SubMesh& operator[](Plinth::Int32 i) const { return subMeshes[i]; }
    // A vertex by its number in the sub-mesh, and its NumPairs() pairs, which stand behind it.
    const KTAVertex& VertexOf(const SubMesh& subMesh, Plinth::Int32 number) const;
    const Plinth::Float32* PairsOf(const SubMesh& subMesh, Plinth::Int32 number) const;
    // The first of the sub-mesh's faces, which stand end to end.
    const SubMeshFace* FacesOf(const SubMesh& subMesh) const;

    // How many times a corner was compared with a vertex so far.
    Plinth::Int64 Comparisons() const { return comparisons; }

  private:
    SubMeshList(const SubMeshList&);
    SubMeshList& operator=(const SubMeshList&);

    struct Link {
        Plinth::Int32 subMesh;
        // The vertex of the same original one that was met before, -1 for none; once the vertices
        // are numbered, the vertex's number.
        Plinth::Int32 other;
    };

    // The vertices of an original one: how many can be found again, and, while they are few, which
    // was met last.
    struct Chain {
        Plinth::Int32 count;
        Plinth::Int32 last;
    };

    // Of an original vertex that has many: its vertices by a hash over all that must be equal.
    struct Crowds {
        Plinth::HashTable table;
        Plinth::Array<Plinth::Int32> positions;  // by number in `table`
    };

    Plinth::Int32 SubMeshOf(Plinth::Int32 material);
    bool FindOrAdd(Plinth::Int32 subMesh, const CornerVertex& corner, Plinth::Int32& position);
    bool IsVertex(Plinth::Int32 position, Plinth::Int32 subMesh, const CornerVertex& corner);
    Plinth::Int32 FindInCrowd(Plinth::Int32 subMesh, const CornerVertex& corner);
    void AddToCrowd(Plinth::Int32 position);
    bool AddVertex(Plinth::Int32 subMesh, const CornerVertex& corner);
    void Enlist(Plinth::Int32 position);
    void GrowChains(Plinth::Int32 original);
    bool GrowVertices();
    void SortByOriginalVertex(Plinth::Array<Plinth::Int32>& sorted) const;
    const KTAVertex& VertexAt(Plinth::Int32 position) const;
    const Plinth::Float32* PairsAt(Plinth::Int32 position) const;

    Plinth::Array<SubMesh> subMeshes;
    Plinth::Int32 lastSubMesh;  // that a face was added to; -1: none
    Plinth::KeyIndex subMeshOfMaterial;
    Plinth::Array<Plinth::Int32> faceMap;  // a face's sub-mesh
    Plinth::Array<SubMeshFace> corners;    // and its vertices' positions; -1: equals nothing

    Plinth::Int32 numPairs;
    Plinth::Int32 stride;  // words of a vertex with its pairs
    Plinth::Array<Plinth::Float32>
        vertices;                         // with their pairs, in the order in which they were met
    Plinth::Array<Link> links;            // of these
    Plinth::Array<Chain> chains;          // by original vertex
    Plinth::ObjectHolder<Crowds> crowds;  // null: there are none

    Plinth::Array<Plinth::Int32> order;  // positions of vertices, sub-mesh after sub-mesh
    Plinth::Array<SubMeshFace> faces;    // sub-mesh after sub-mesh
    Plinth::Int64 comparisons;
};

#endif
