// Triangle meshes: vertices, faces, map channels and render normals.
#ifndef HOST_SDK_INCLUDE_MESH_H
#define HOST_SDK_INCLUDE_MESH_H

#include <coreexp.h>
#include <maxtypes.h>
#include <point3.h>
#include <windows.h>

typedef Point3 UVVert;

// Map channels are 0 to MAX_MESHMAPS - 1: 0 holds the vertex colours, 1 the default texture
// coordinates.
#define MAX_MESHMAPS 100

// Flags of a render vertex.
#define NORCT_MASK 0x000000ff
#define SPECIFIED_NORMAL 0x00004000

class Face {
  public:
    DWORD v[3];  // from 0, counter-clockwise seen from outside
    DWORD smGroup;
    DWORD flags;  // the high word is the material id

    Face() : smGroup(0), flags(0) {}

    // From 0; not bound to the number of the material's sub-materials.
    MtlID getMatID() { return (MtlID)(flags >> 16); }
    void setMatID(MtlID id) { flags = (flags & 0xffff) | ((DWORD)id << 16); }
    DWORD getSmGroup() { return smGroup; }
    void setSmGroup(DWORD mask) { smGroup = mask; }
    DWORD getVert(int index) { return v[index]; }
    void setVerts(int a, int b, int c) {
        v[0] = a;
        v[1] = b;
        v[2] = c;
    }
};

// A face's corners in a map channel.
class TVFace {
  public:
    DWORD t[3];  // from 0

    TVFace() : t() {}  // plug-ins must not rely on zeros

    void setTVerts(int a, int b, int c) {
        t[0] = a;
        t[1] = b;
        t[2] = c;
    }
};

// A normal that faces share at a vertex, in object space; of length 1 but where it is specified,
// and where buildNormals says otherwise.
class RNormal {
  public:
    RNormal() : normal_(0, 0, 0), smGroup_(0), mtlIndex_(0) {}

    Point3& getNormal() { return normal_; }
    void setNormal(const Point3& normal) { normal_ = normal; }

    // The smoothing groups of all faces that share it.
    DWORD getSmGroup() { return smGroup_; }
    void setSmGroup(DWORD mask) { smGroup_ = mask; }

    MtlID getMtlIndex() { return mtlIndex_; }
    void setMtlIndex(MtlID id) { mtlIndex_ = id; }

  private:
    Point3 normal_;
    DWORD smGroup_;
    MtlID mtlIndex_;
};

// A vertex as it is rendered.
class RVertex {
  public:
    // The bits of NORCT_MASK are the number of normals; SPECIFIED_NORMAL: `rn` is the one normal,
    // and building the normals leaves it.
    DWORD rFlags;
    RNormal rn;    // the only normal, where there is one
    RNormal* ern;  // the normals, where there are several; they belong to the mesh

    RVertex() : rFlags(0), ern(NULL) {}
};

class MeshParts;

// Owns its arrays. Indices are not checked, except those of map channels.
class CoreExport Mesh {
  public:
    int numVerts, numFaces;
    Point3* verts;  // null when there are none
    Face* faces;

    Mesh();
    ~Mesh();

    // FALSE for a negative number, which changes nothing. Elements are kept when `keep` is TRUE;
    // new points are uninitialised. Both drop the normals, specified ones included; setNumFaces
    // gives all channels as many map faces, new ones with corners 0.
    BOOL setNumVerts(int count, BOOL keep = FALSE, BOOL synchSel = TRUE);
    BOOL setNumFaces(int count, BOOL keep = FALSE, BOOL synchSel = TRUE);
    int getNumVerts() const { return numVerts; }
    int getNumFaces() const { return numFaces; }

    // ------------------------------------------------ map channels

    // FALSE outside 0 to MAX_MESHMAPS - 1, where the functions below do nothing.
    BOOL mapSupport(int channel) const;
    // A channel that becomes supported has no map vertices and a map face for each face.
    void setMapSupport(int channel, BOOL support = TRUE);
    // 0 and null for a channel that is not supported; such a channel cannot be given elements.
    // New map vertices and the corners of new map faces are 0. A negative count does nothing.
    int getNumMapVerts(int channel) const;
    void setNumMapVerts(int channel, int count, BOOL keep = FALSE);
    UVVert* mapVerts(int channel) const;
    TVFace* mapFaces(int channel) const;  // as many as faces

    // ------------------------------------------------ normals

    // Computes the normals of faces and vertices anew. A face's is (v1 - v0) x (v2 - v1) of
    // length 1, or 0 for a face without area. At a vertex, faces of one material id whose smoothing
    // groups overlap, directly or through others of that material id there, share a normal: the sum
    // in face order of the faces' products before they got length 1, normalised; a sum of 0 stays.
    // A vertex's normals stand in the order of the first face of each; faces without smoothing
    // group have no part in them. The count has 8 bits: of more than 255 normals, the first 255 are
    // kept. Where f32 overflows, a normal is not finite. Takes time linear in vertices and faces.
    void buildNormals();
    // TRUE: builds the normals unless that has been done. FALSE: makes render vertices without
    // normals unless there are any; specified normals are set in these.
    void checkNormals(BOOL illum);
    // These hold after buildNormals or checkNormals.
    RVertex& getRVert(int i);
    Point3& getFaceNormal(int i);

  private:
    Mesh(const Mesh&);
    Mesh& operator=(const Mesh&);

    MeshParts* parts_;  // owned
};

#endif  // HOST_SDK_INCLUDE_MESH_H
