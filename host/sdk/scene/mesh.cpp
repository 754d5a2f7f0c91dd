#include <mesh.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <vector>

#include "host/sdk/calls.h"
#include "host/sdk/host.h"
#include "host/sdk/scene/mesh_reading.h"

struct MeshMapChannel {
    std::vector<UVVert> vertices;
    std::vector<TVFace> faces;
};

class MeshParts {
  public:
    std::array<std::unique_ptr<MeshMapChannel>, MAX_MESHMAPS> maps;  // null: not supported

    std::vector<RVertex> renderVertices;  // none before normals are asked for
    std::vector<RNormal> sharedNormals;   // where the render vertices' `ern` point to
    std::vector<Point3> faceNormals;
    bool normalsBuilt = false;

    // Null outside the range of channels.
    MeshMapChannel* Map(int channel) const {
        return channel >= 0 && channel < MAX_MESHMAPS ? maps[channel].get() : nullptr;
    }

    void DropNormals() {
        renderVertices = std::vector<RVertex>();
        sharedNormals = std::vector<RNormal>();
        faceNormals = std::vector<Point3>();
        normalsBuilt = false;
    }
};

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
            SetCount(map->faces, count, keep, TVFace());
        }
    }
    parts_->DropNormals();
    return TRUE;
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
        SetCount(map->faces, numFaces, FALSE, TVFace());
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

UVVert* Mesh::mapVerts(int channel) const {
    MeshMapChannel* map = parts_->Map(channel);
    return map ? map->vertices.data() : nullptr;
}

TVFace* Mesh::mapFaces(int channel) const {
    MeshMapChannel* map = parts_->Map(channel);
    return map ? map->faces.data() : nullptr;
}

// ---------------------------------------------------------------- normals

namespace {

constexpr int kMostNormals = NORCT_MASK;

// The smoothed faces at each vertex, in face order; at vertices with a specified normal none.
class SmoothedFaces {
  public:
    SmoothedFaces(const Mesh& mesh, const std::vector<RVertex>& vertices)
        : mesh_(mesh), vertices_(vertices), ends_(vertices.size() + 1) {
        ForEachCorner([&](DWORD vertex, int) { ++ends_[vertex + 1]; });
        for (std::size_t i = 1; i < ends_.size(); ++i) {
            ends_[i] += ends_[i - 1];
        }
        // Filling moves each vertex's beginning to its end, which is the next one's beginning.
        faces_.resize(ends_.back());
        ForEachCorner([&](DWORD vertex, int face) { faces_[ends_[vertex]++] = face; });
    }

    const int* Begin(std::size_t vertex) const {
        return faces_.data() + (vertex > 0 ? ends_[vertex - 1] : 0);
    }
    const int* End(std::size_t vertex) const { return faces_.data() + ends_[vertex]; }

  private:
    template <class Visit>
    void ForEachCorner(Visit visit) const {
        for (int face = 0; face < mesh_.numFaces; ++face) {
            const DWORD* v = mesh_.faces[face].v;
            for (int k = 0; k < 3 && mesh_.faces[face].smGroup != 0; ++k) {
                // A face that uses a vertex twice stands there once.
                const bool again = (k > 0 && v[k] == v[0]) || (k > 1 && v[k] == v[1]);
                if (!again && !(vertices_[v[k]].rFlags & SPECIFIED_NORMAL)) {
                    visit(v[k], face);
                }
            }
        }
    }

    const Mesh& mesh_;
    const std::vector<RVertex>& vertices_;
    std::vector<std::size_t> ends_;
    std::vector<int> faces_;
};

// Makes the normals of one vertex after the other.
class VertexNormals {
  public:
    VertexNormals(const Mesh& mesh, const std::vector<Point3>& products)
        : mesh_(mesh), products_(products) {
        MtlID highest = 0;
        for (int i = 0; i < mesh.numFaces; ++i) {
            highest = std::max(highest, mesh.faces[i].getMatID());
        }
        firstSets_.assign(std::size_t{highest} + 1, kNone);
    }

    // Appends the normals that the faces make at their vertex; returns how many.
    int Append(const int* begin, const int* end, std::vector<RNormal>& normals) {
        for (const int* face = begin; face != end; ++face) {
            Join(mesh_.faces[*face]);
        }
        const std::size_t first = normals.size();
        for (const int* face = begin; face != end; ++face) {
            AddProduct(*face, first, normals);
        }
        for (std::size_t i = first; i < normals.size(); ++i) {
            normals[i].setNormal(normals[i].getNormal().Normalize());
        }
        for (const int* face = begin; face != end; ++face) {
            firstSets_[mesh_.faces[*face].getMatID()] = kNone;
        }
        sets_.clear();
        return static_cast<int>(normals.size() - first);
    }

  private:
    static constexpr int kNone = -1;

    // Faces of one material that share a normal. The masks of a material's sets have no bit in
    // common, so a material has 32 sets at most.
    struct Set {
        DWORD mask;
        int next;  // of the same material
        int number;
    };

    // Unites the face and the sets that its mask overlaps.
    void Join(Face& face) {
        int& first = firstSets_[face.getMatID()];
        if (first != kNone && (sets_[first].mask & face.smGroup) == face.smGroup) {
            return;
        }
        DWORD mask = face.smGroup;
        for (int* link = &first; *link != kNone;) {
            Set& set = sets_[*link];
            if (set.mask & face.smGroup) {
                mask |= set.mask;
                *link = set.next;
            } else {
                link = &set.next;
            }
        }
        const int united = static_cast<int>(sets_.size());
        sets_.push_back({mask, first, kNone});
        first = united;
    }

    Set& SetOf(Face& face) {
        int set = firstSets_[face.getMatID()];
        while (!(sets_[set].mask & face.smGroup)) {
            set = sets_[set].next;
        }
        return sets_[set];
    }

    void AddProduct(int face, std::size_t first, std::vector<RNormal>& normals) {
        Set& set = SetOf(mesh_.faces[face]);
        if (set.number == kNone) {
            if (normals.size() - first == kMostNormals) {
                return;
            }
            set.number = static_cast<int>(normals.size() - first);
            normals.emplace_back();
            normals.back().setSmGroup(set.mask);
            normals.back().setMtlIndex(mesh_.faces[face].getMatID());
        }
        RNormal& normal = normals[first + set.number];
        normal.setNormal(normal.getNormal() + products_[face]);
    }

    const Mesh& mesh_;
    const std::vector<Point3>& products_;
    std::vector<int> firstSets_;  // by material id
    std::vector<Set> sets_;
};

void SetNormalCount(RVertex& vertex, int count) {
    vertex.rFlags = (vertex.rFlags & ~DWORD{NORCT_MASK}) | static_cast<DWORD>(count);
}

std::vector<Point3> FaceProducts(const Mesh& mesh) {
    std::vector<Point3> products;
    products.reserve(mesh.numFaces);
    for (int i = 0; i < mesh.numFaces; ++i) {
        const DWORD* v = mesh.faces[i].v;
        const Point3& middle = mesh.verts[v[1]];
        products.push_back((middle - mesh.verts[v[0]]) ^ (mesh.verts[v[2]] - middle));
    }
    return products;
}

// A vertex with one normal holds it itself; the others' stand end to end in `shared`.
void BuildVertexNormals(const Mesh& mesh, const std::vector<Point3>& products,
                        std::vector<RVertex>& vertices, std::vector<RNormal>& shared) {
    const SmoothedFaces faces(mesh, vertices);
    VertexNormals normals(mesh, products);
    shared.clear();
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        RVertex& vertex = vertices[i];
        vertex.ern = nullptr;
        if (vertex.rFlags & SPECIFIED_NORMAL) {
            SetNormalCount(vertex, 1);
            continue;
        }
        const int count = normals.Append(faces.Begin(i), faces.End(i), shared);
        SetNormalCount(vertex, count);
        vertex.rn = RNormal();
        if (count == 1) {
            vertex.rn = shared.back();
            shared.pop_back();
        }
    }
    RNormal* next = shared.data();
    for (RVertex& vertex : vertices) {
        const DWORD count = vertex.rFlags & NORCT_MASK;
        if (count > 1) {
            vertex.ern = next;
            next += count;
        }
    }
}

}  // namespace

void Mesh::buildNormals() {
    ++maxhost::calls.normalBuilds;
    maxhost::meshReading.Begin(3 * static_cast<std::size_t>(numFaces));
    checkNormals(FALSE);
    parts_->faceNormals = FaceProducts(*this);
    BuildVertexNormals(*this, parts_->faceNormals, parts_->renderVertices, parts_->sharedNormals);
    for (Point3& normal : parts_->faceNormals) {
        normal = normal.Normalize();
    }
    parts_->normalsBuilt = true;
}

void Mesh::checkNormals(BOOL illum) {
    if (parts_->renderVertices.empty()) {
        parts_->renderVertices.resize(static_cast<std::size_t>(numVerts));
    }
    if (illum && !parts_->normalsBuilt) {
        buildNormals();
    }
}

RVertex& Mesh::getRVert(int i) {
    ++maxhost::calls.renderVertices;
    maxhost::meshReading.CountCorner();
    return parts_->renderVertices[i];
}

Point3& Mesh::getFaceNormal(int i) {
    ++maxhost::calls.faceNormals;
    return parts_->faceNormals[i];
}

namespace maxhost {

void MeshReading::Restart() {
    begun_ = read_ = shown_ = 0;
    untilTold_ = 0;  // counted down from here, it is never 0 again
}

void MeshReading::Begin(std::size_t corners) {
    constexpr std::int64_t kFewest = 2048;
    constexpr std::int64_t kTellings = 64;
    read_ = begun_;
    begun_ += static_cast<double>(corners);
    step_ = std::max(kFewest, static_cast<std::int64_t>(corners) / kTellings);
    untilTold_ = step_;
    Show();
}

void MeshReading::Tell() {
    read_ = std::min(read_ + static_cast<double>(step_), begun_);
    untilTold_ = step_;
    Show();
}

void MeshReading::Show() {
    if (observer_ != nullptr && begun_ > 0) {
        shown_ = std::max(shown_, read_ / begun_);
        observer_->OnWork(shown_);
    }
}

}  // namespace maxhost
