#include <max.h>
#include <triobj.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "host/app/compared_scene.h"
#include "host/app/scene_skin.h"

namespace maxhost::app {
namespace {

using kta::operator-;

constexpr double kUnknown = std::numeric_limits<double>::quiet_NaN();

// ---------------------------------------------------------------- what the scene shows

// A node's mesh as the SDK gives it, with its normals.
class SdkMesh {
  public:
    explicit SdkMesh(INode& node) {
        Object* const object = node.EvalWorldState(0).obj;
        const Class_ID type(TRIOBJ_CLASS_ID, 0);
        if (object && object->CanConvertToType(type)) {
            Object* const converted = object->ConvertToType(0, type);
            object_ = static_cast<TriObject*>(converted);
            isNew_ = converted != object;
            object_->GetMesh().buildNormals();
        }
    }
    ~SdkMesh() {
        if (isNew_) {
            object_->DeleteMe();
        }
    }

    SdkMesh(const SdkMesh&) = delete;
    SdkMesh& operator=(const SdkMesh&) = delete;

    // Null: the node shows none.
    Mesh* Get() const { return object_ ? &object_->GetMesh() : nullptr; }

  private:
    TriObject* object_ = nullptr;
    bool isNew_ = false;
};

// With which a corner of a face is lit: the vertex's one normal, or of several that of the face's
// smoothing groups, or the face's own.
kta::Vector3 NormalOf(Mesh& mesh, int face, std::size_t corner) {
    Face& source = mesh.faces[face];
    RVertex& vertex = mesh.getRVert(static_cast<int>(source.v[corner]));
    const DWORD count = vertex.rFlags & NORCT_MASK;
    const DWORD groups = source.getSmGroup();
    Point3 normal = mesh.getFaceNormal(face);
    if ((vertex.rFlags & SPECIFIED_NORMAL) != 0 || (count == 1 && groups != 0)) {
        normal = vertex.rn.getNormal();
    } else if (count > 1) {
        RNormal* const end = vertex.ern + count;
        RNormal* const found = std::find_if(
            vertex.ern, end, [groups](RNormal& each) { return (each.getSmGroup() & groups) != 0; });
        normal = found != end ? found->getNormal() : normal;
    }
    return {normal.x, normal.z, normal.y};
}

// The channels that the files have: all but the vertex colours and the last.
std::vector<const scene::MapChannel*> ChannelsOf(const scene::Mesh& mesh) {
    constexpr int kLast = 98;
    std::vector<const scene::MapChannel*> channels;
    for (const auto& [number, channel] : mesh.channels) {
        if (number >= 1 && number <= kLast) {
            channels.push_back(&channel);
        }
    }
    return channels;
}

// Where v goes down. A channel without vertices shows each face the same corner of the image.
std::array<double, 2> CoordinatesOf(const scene::MapChannel& channel, std::size_t face,
                                    std::size_t corner) {
    if (channel.vertices.empty()) {
        return {corner == 1 ? 1.0 : 0.0, corner == 2 ? 1.0 : 0.0};
    }
    const scene::Vec2& uv = channel.vertices[channel.faces[face][corner]];
    return {uv[0], 1.0 - uv[1]};
}

// A mesh's faces by the vertices of their corners, in this order.
class FaceIndex {
  public:
    explicit FaceIndex(const std::vector<scene::Face>& faces) : faces_(faces), next_(faces.size()) {
        std::size_t slots = 16;
        while (slots < faces.size()) {
            slots *= 2;
        }
        first_.resize(slots, kNone);
        for (std::size_t i = faces.size(); i-- > 0;) {
            std::uint32_t& first = first_[Slot(faces[i].v)];
            next_[i] = first;
            first = static_cast<std::uint32_t>(i);
        }
    }

    // Calls `take` with the number of each face of those corners, as far as the first ten tell.
    template <typename Take>
    void Find(const std::array<std::uint32_t, 3>& corners, Take take) const {
        std::size_t left = 10;
        for (std::uint32_t i = first_[Slot(corners)]; i != kNone && left > 0; i = next_[i]) {
            if (faces_[i].v == corners) {
                take(i);
                --left;
            }
        }
    }

  private:
    static constexpr std::uint32_t kNone = 0xffffffff;

    std::size_t Slot(const std::array<std::uint32_t, 3>& corners) const {
        std::uint64_t value = 0;
        for (const std::uint32_t corner : corners) {
            value = (value + corner) * 0x9e3779b97f4a7c15u;  // Knuth's multiplicative hashing
            value ^= value >> 32;
        }
        return value & (first_.size() - 1);
    }

    const std::vector<scene::Face>& faces_;
    std::vector<std::uint32_t> first_, next_;  // by slot, and by face
};

// ---------------------------------------------------------------- normals and texture coordinates

// What takes normals where the map takes positions.
struct NormalMap {
    kta::Affine inverse;

    kta::Vector3 operator()(const kta::Vector3& normal) const {
        return {kta::Dot(inverse.axes[0], normal), kta::Dot(inverse.axes[1], normal),
                kta::Dot(inverse.axes[2], normal)};
    }
};

// Two without direction are one; else the angle, half a turn where one has none.
double DegreesBetween(const kta::Vector3& a, const kta::Vector3& b) {
    const bool isFirst = kta::Length(a) > 0, isSecond = kta::Length(b) > 0;
    if (!isFirst || !isSecond) {
        return isFirst == isSecond ? 0 : 180;
    }
    return std::atan2(kta::Length(kta::Cross(a, b)), kta::Dot(a, b)) * 180 / kPi;
}

// The corners of one mesh's triangles.
class CornerComparison {
  public:
    // A node without extent has no normals that could be told.
    CornerComparison(const ComparedScene& compared, const kta::ActorMesh& mesh,
                     const scene::Mesh& own, Deviation& result)
        : mesh_(mesh),
          node_(compared.NodeOf(mesh)),
          sdkMesh_(compared.SdkNode(node_)),
          channels_(ChannelsOf(own)),
          index_(own.faces),
          result_(result) {
        const std::optional<kta::Affine> down = kta::Inverse(compared.WorldAtZero(node_));
        const bool hasNormals =
            sdkMesh_.Get() && sdkMesh_.Get()->getNumFaces() == static_cast<int>(own.faces.size());
        if (down && hasNormals) {
            inScene_ = {*down};
        }
        inFile_ = {mesh.weights ? kta::Affine() : compared.Tree().FromBindWorld(mesh.node)};
    }

    void Run() {
        for (const kta::SubMesh& subMesh : mesh_.mesh->subMeshes) {
            for (const auto& face : subMesh.faces) {
                Compare(subMesh, face);
            }
        }
    }

  private:
    // Of a corner, or of three together.
    struct Difference {
        double degrees = 0, coordinates = 0;
        std::size_t normalCorner = 0, coordinatesCorner = 0;
    };

    // Of several faces with these vertices the one is meant that is most alike.
    void Compare(const kta::SubMesh& subMesh, const std::array<std::uint32_t, 3>& face) {
        std::array<std::uint32_t, 3> originals{};
        for (std::size_t i = 0; i < 3; ++i) {
            originals[i] = static_cast<std::uint32_t>(subMesh.vertices[face[i]].originalVertex);
        }
        std::optional<Difference> least;
        index_.Find(originals, [&](std::size_t number) {
            const Difference found = DifferenceOf(subMesh, face, number);
            if (!least || found.degrees + found.coordinates < least->degrees + least->coordinates) {
                least = found;
            }
        });
        if (!least) {
            return;
        }
        const auto worst = [&](WorstCase& worstCase, double value, std::size_t corner) {
            if (worstCase.IsWorse(value)) {
                worstCase = {
                    .value = value, .node = node_, .vertex = static_cast<int>(originals[corner])};
            }
        };
        worst(result_.normal, least->degrees, least->normalCorner);
        worst(result_.coordinates, least->coordinates, least->coordinatesCorner);
        result_.normals += inScene_ ? 3 : 0;
        result_.coordinatePairs += 3 * std::min(channels_.size(), Pairs());
    }

    std::size_t Pairs() const { return static_cast<std::size_t>(mesh_.mesh->pairsPerVertex); }

    Difference DifferenceOf(const kta::SubMesh& subMesh, const std::array<std::uint32_t, 3>& face,
                            std::size_t number) const {
        Difference result;
        for (std::size_t corner = 0; corner < 3; ++corner) {
            const KTAVertex& vertex = subMesh.vertices[face[corner]];
            const double degrees = inScene_ ? DegreesAt(vertex, number, corner) : 0;
            if (!(degrees <= result.degrees)) {
                result.degrees = degrees;
                result.normalCorner = corner;
            }
            const double apart = CoordinatesApart(subMesh, face[corner], number, corner);
            if (!(apart <= result.coordinates)) {
                result.coordinates = apart;
                result.coordinatesCorner = corner;
            }
        }
        return result;
    }

    double DegreesAt(const KTAVertex& vertex, std::size_t face, std::size_t corner) const {
        const kta::Vector3 found = {vertex.normal[0], vertex.normal[1], vertex.normal[2]};
        return DegreesBetween(
            inFile_(found), (*inScene_)(NormalOf(*sdkMesh_.Get(), static_cast<int>(face), corner)));
    }

    // The most that a u or v is off.
    double CoordinatesApart(const kta::SubMesh& subMesh, std::uint32_t vertex, std::size_t face,
                            std::size_t corner) const {
        double most = 0;
        for (std::size_t i = 0; i < std::min(channels_.size(), Pairs()); ++i) {
            const auto& found = subMesh.textureCoordinates[vertex * Pairs() + i];
            const std::array<double, 2> expected = CoordinatesOf(*channels_[i], face, corner);
            for (std::size_t k = 0; k < 2; ++k) {
                const double apart = std::abs(double{found[k]} - expected[k]);
                most = apart <= most ? most : apart;
            }
        }
        return most;
    }

    const kta::ActorMesh& mesh_;
    const int node_;
    const SdkMesh sdkMesh_;
    const std::vector<const scene::MapChannel*> channels_;
    const FaceIndex index_;
    Deviation& result_;
    std::optional<NormalMap> inScene_;  // both to the world
    NormalMap inFile_;
};

// ---------------------------------------------------------------- vertices and morph targets

class MeshComparison {
  public:
    MeshComparison(const ComparedScene& compared, Deviation& result)
        : compared_(compared), result_(result) {}

    void CompareVertices(const kta::ActorMesh& mesh, const scene::Mesh& own);
    void CompareMorphs(const kta::ActorMesh& mesh);

  private:
    void CompareMorph(const kta::ActorMesh& mesh, const scene::MorphChannel& channel,
                      const kta::Morph& morph);

    const ComparedScene& compared_;
    Deviation& result_;
};

void MeshComparison::CompareVertices(const kta::ActorMesh& mesh, const scene::Mesh& own) {
    const int node = compared_.NodeOf(mesh);
    for (const kta::SubMesh& subMesh : mesh.mesh->subMeshes) {
        for (const KTAVertex& vertex : subMesh.vertices) {
            const auto number = static_cast<std::size_t>(vertex.originalVertex);
            const kta::Vector3 position = {vertex.position[0], vertex.position[1],
                                           vertex.position[2]};
            const kta::Vector3 found =
                mesh.weights ? position : compared_.Tree().BindWorld(mesh.node).Position(position);
            const double distance = number < own.vertices.size()
                                        ? kta::Length(found - compared_.WorldAtZero(node).Position(
                                                                  InFileAxes(own.vertices[number])))
                                        : kUnknown;
            ++result_.vertices;
            if (result_.vertex.IsWorse(distance)) {
                result_.vertex = {.value = distance, .node = node, .vertex = vertex.originalVertex};
            }
        }
    }
}

// The channels that have points, in their order, have a chunk each.
void MeshComparison::CompareMorphs(const kta::ActorMesh& mesh) {
    const auto* const morpher =
        EnabledModifier<scene::Morpher>(compared_.Node(compared_.NodeOf(mesh)));
    if (!morpher) {
        return;
    }
    std::size_t next = 0;
    for (const scene::MorphChannel& channel : morpher->channels) {
        if (!channel.points.empty() && next < mesh.morphs.size()) {
            CompareMorph(mesh, channel, *mesh.morphs[next++]);
        }
    }
}

void MeshComparison::CompareMorph(const kta::ActorMesh& mesh, const scene::MorphChannel& channel,
                                  const kta::Morph& morph) {
    const int node = compared_.NodeOf(mesh);
    const std::size_t count = std::min(channel.points.size(), morph.points.size());
    for (std::size_t i = 0; i < count; ++i) {
        const std::array<float, 3> point = kta::MorphPosition(morph, i);
        if (std::isnan(point[0])) {
            result_.flattened.push_back({node, channel.name});
            return;
        }
        const kta::Vector3 found =
            compared_.Tree().BindWorld(mesh.node).Position({point[0], point[1], point[2]});
        const double distance = kta::Length(
            found - compared_.WorldAtZero(node).Position(InFileAxes(channel.points[i])));
        ++result_.morphPoints;
        if (result_.morph.IsWorse(distance)) {
            result_.morph = {.value = distance,
                             .node = node,
                             .vertex = static_cast<int>(i),
                             .channel = channel.name};
        }
    }
}

}  // namespace

void CompareMeshes(const ComparedScene& compared, Deviation& deviation) {
    MeshComparison comparison(compared, deviation);
    for (const kta::ActorMesh& mesh : compared.Meshes()) {
        if (const scene::Mesh* const own = compared.MeshOf(mesh)) {
            comparison.CompareVertices(mesh, *own);
            CornerComparison(compared, mesh, *own, deviation).Run();
            comparison.CompareMorphs(mesh);
        }
    }
}

}  // namespace maxhost::app
