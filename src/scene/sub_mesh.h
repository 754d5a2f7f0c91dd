// A mesh cut into sub-meshes, one for each material number, with the corners of its faces matched
// into vertices.
#ifndef SCENE_SUB_MESH_H
#define SCENE_SUB_MESH_H

#include "core/array.h"
#include "core/hash_table.h"
#include "core/types.h"
#include "format/records.h"

// A corner of a face.
struct CornerVertex {
    KTAVertex record;
    Plinth::Int32 numPairs;      // (u, v) pairs
    const Plinth::Float32* uvs;  // the pairs; not owned
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
// face again. Then the sub-meshes are complete.
//
// Two corners are one vertex where they belong to the same sub-mesh and original vertex, their
// normals and texture coordinates are equal component by component (-0 equals 0, what is not a
// number equals nothing), and they have as many of these. A hash over all of that finds the vertex,
// so the cost of a corner does not depend on how many share its original vertex.
//
// Where a count does not fit its type, Reserve and AddFace give false; the list is of no use then,
// nor where memory is missing, which throws std::bad_alloc.
class SubMeshList {
  public:
    SubMeshList();

    // Announces the number of faces, and of (u, v) pairs of every corner.
    bool Reserve(Plinth::Int32 faceCount, Plinth::Int32 pairCount);
    // Adds the three corners of the next face to the sub-mesh of the material number, which is made
    // at the end of the list when it is new.
    bool AddFace(Plinth::Int32 material, const CornerVertex corners[3]);

    // Numbers the vertices of each sub-mesh by ascending original vertex, those of the same one in
    // the order in which they were met.
    void NumberVertices();

    // Looks the corners of a face up, -1 for one that is not found, and appends the face to its
    // sub-mesh when all are found. Returns whether they are.
    bool IndexFace(Plinth::Int32 face, const CornerVertex corners[3], Plinth::Int32 indices[3]);

    // How many faces were added.
    Plinth::Int32 NumAddedFaces() const { return faceMap.Count(); }
    Plinth::Int32 NumPairs() const { return numPairs; }

    Plinth::Int32 Count() const { return subMeshes.Count(); }
    const SubMesh& operator[](Plinth::Int32 i) const { return subMeshes[i]; }
    // A vertex by its number in the sub-mesh, and its NumPairs() pairs.
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
        Plinth::Int32 outputIndex;
    };

    Plinth::Int32 SubMeshOf(Plinth::Int32 material);
    CornerVertex CornerAt(Plinth::Int32 position) const;
    Plinth::Int32 Find(Plinth::Int32 subMesh, const CornerVertex& corner) const;
    bool AddVertex(Plinth::Int32 subMesh, const CornerVertex& corner);
    bool GrowVertices();
    void SortByOriginalVertex(Plinth::Array<Plinth::Int32>& sorted) const;

    Plinth::Array<SubMesh> subMeshes;
    Plinth::KeyIndex subMeshOfMaterial;
    Plinth::Array<Plinth::Int32> faceMap;  // a face's sub-mesh

    Plinth::Int32 numPairs;
    Plinth::Array<KTAVertex> vertices;  // in the order in which they were met, as in the next two
    Plinth::Array<Plinth::Float32> uvs;
    Plinth::Array<Link> links;
    Plinth::HashTable matches;  // a number a vertex

    Plinth::Array<Plinth::Int32> order;  // positions of vertices, sub-mesh after sub-mesh
    Plinth::Array<SubMeshFace> faces;    // sub-mesh after sub-mesh
    mutable Plinth::Int64 comparisons;
};

#endif
