#include <mesh.h>

#include <algorithm>

namespace {

template <class T>
BOOL SetCount(T*& elements, int& count, int newCount, BOOL keep) {
    if (newCount < 0) {
        return FALSE;
    }
    if (newCount == count) {
        return TRUE;
    }
    T* fresh = newCount > 0 ? new T[newCount] : nullptr;
    if (keep) {
        std::copy_n(elements, std::min(count, newCount), fresh);
    }
    delete[] elements;
    elements = fresh;
    count = newCount;
    return TRUE;
}

}  // namespace

Mesh::Mesh() : numVerts(0), numFaces(0), verts(nullptr), faces(nullptr) {
}

Mesh::~Mesh() {
    delete[] verts;
    delete[] faces;
}

BOOL Mesh::setNumVerts(int count, BOOL keep, BOOL) {
    return SetCount(verts, numVerts, count, keep);
}

BOOL Mesh::setNumFaces(int count, BOOL keep, BOOL) {
    return SetCount(faces, numFaces, count, keep);
}
