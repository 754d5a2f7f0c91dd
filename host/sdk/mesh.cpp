#include <mesh.h>

#include <algorithm>

#include "host/sdk/mesh_parts.h"

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

template <class T>
void SetCount(std::vector<T>& elements, int count, BOOL keep, const T& fill) {
    if (count < 0) {
        return;
    }
    if (!keep) {
        elements.clear();
    }
    elements.resize(static_cast<std::size_t>(count), fill);
}

const TVFace kNoCorners(0, 0, 0);

}  // namespace

Mesh::Mesh() : numVerts(0), numFaces(0), verts(nullptr), faces(nullptr), parts_(new MeshParts) {
}

Mesh::~Mesh() {
    delete[] verts;
    delete[] faces;
    delete parts_;
}

BOOL Mesh::setNumVerts(int count, BOOL keep, BOOL) {
    if (!SetCount(verts, numVerts, count, keep)) {
        return FALSE;
    }
    parts_->DropNormals();
    return TRUE;
}

BOOL Mesh::setNumFaces(int count, BOOL keep, BOOL) {
    if (!SetCount(faces, numFaces, count, keep)) {
        return FALSE;
    }
    for (const auto& map : parts_->maps) {
        if (map) {
            SetCount(map->faces, count, keep, kNoCorners);
        }
    }
    parts_->DropNormals();
    return TRUE;
}

int Mesh::getNumMaps() const {
    int count = MAX_MESHMAPS;
    while (count > 2 && !mapSupport(count - 1)) {
        --count;
    }
    return count;
}

BOOL Mesh::mapSupport(int channel) const {
    return parts_->Map(channel) != nullptr;
}

void Mesh::setMapSupport(int channel, BOOL support) {
    if (channel < 0 || channel >= MAX_MESHMAPS || mapSupport(channel) == (support ? TRUE : FALSE)) {
        return;
    }
    auto& map = parts_->maps[channel];
    map.reset(support ? new MeshMapChannel : nullptr);
    if (map) {
        SetCount(map->faces, numFaces, FALSE, kNoCorners);
    }
}

int Mesh::getNumMapVerts(int channel) const {
    const MeshMapChannel* map = parts_->Map(channel);
    return map ? static_cast<int>(map->vertices.size()) : 0;
}

void Mesh::setNumMapVerts(int channel, int count, BOOL keep) {
    if (MeshMapChannel* map = parts_->Map(channel)) {
        SetCount(map->vertices, count, keep, Point3(0, 0, 0));
    }
}

void Mesh::setNumMapFaces(int channel, int count, BOOL keep, int) {
    if (MeshMapChannel* map = parts_->Map(channel)) {
        SetCount(map->faces, count, keep, kNoCorners);
    }
}

UVVert* Mesh::mapVerts(int channel) const {
    MeshMapChannel* map = parts_->Map(channel);
    return map ? map->vertices.data() : nullptr;
}

TVFace* Mesh::mapFaces(int channel) const {
    MeshMapChannel* map = parts_->Map(channel);
    return map ? map->faces.data() : nullptr;
}
