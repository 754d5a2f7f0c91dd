// Triangle meshes.
#ifndef HOST_SDK_INCLUDE_MESH_H
#define HOST_SDK_INCLUDE_MESH_H

#include <coreexp.h>
#include <maxtypes.h>
#include <point3.h>
#include <windows.h>

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

// Owns its arrays. Indices are not checked.
class CoreExport Mesh {
  public:
    int numVerts, numFaces;
    Point3* verts;  // null when there are none
    Face* faces;

    Mesh();
    ~Mesh();

    // FALSE for a negative number, which changes nothing. Elements are kept when `keep` is TRUE;
    // new points are uninitialised.
    BOOL setNumVerts(int count, BOOL keep = FALSE, BOOL synchSel = TRUE);
    BOOL setNumFaces(int count, BOOL keep = FALSE, BOOL synchSel = TRUE);
    int getNumVerts() const { return numVerts; }
    int getNumFaces() const { return numFaces; }

    Point3& getVert(int i) { return verts[i]; }
    Point3* getVertPtr(int i) { return verts + i; }
    void setVert(int i, const Point3& point) { verts[i] = point; }
    void setVert(int i, float x, float y, float z) { verts[i] = Point3(x, y, z); }
    MtlID getFaceMtlIndex(int i) { return faces[i].getMatID(); }

  private:
    Mesh(const Mesh&);
    Mesh& operator=(const Mesh&);
};

#endif  // HOST_SDK_INCLUDE_MESH_H
