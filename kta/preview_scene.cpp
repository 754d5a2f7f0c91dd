#include "kta/preview_scene.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <stdexcept>
#include <unordered_set>
#include <variant>

namespace kta {
namespace {

Vector3 ToVector(const std::array<float, 3>& values) {
    return {values[0], values[1], values[2]};
}

// The inverse of a matrix for row vectors: p * rows + translation.
struct Placement {
    std::array<Vector3, 3> inverseRows{};
    std::array<Vector3, 3> rows{};  // of the stored matrix
    Vector3 translation{};          // likewise

    Vector3 Position(const Vector3& local) const {
        const Vector3 p = local - translation;
        return inverseRows[0] * p[0] + inverseRows[1] * p[1] + inverseRows[2] * p[2];
    }
    // A normal goes with the transposed inverse of what moves positions.
    Vector3 Normal(const Vector3& local) const {
        return Normalized({Dot(rows[0], local), Dot(rows[1], local), Dot(rows[2], local)});
    }
};

Placement Identity() {
    Placement placement;
    placement.rows = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    placement.inverseRows = placement.rows;
    return placement;
}

Placement PlacementOf(const Node& node) {
    Placement placement;
    for (std::size_t i = 0; i < 3; ++i) {
        const auto& row = node.inverseWorldMatrix[i];
        placement.rows[i] = {row[0], row[1], row[2]};
    }
    const auto& last = node.inverseWorldMatrix[3];
    placement.translation = {last[0], last[1], last[2]};
    const auto& rows = placement.rows;
    const std::array<Vector3, 3> columns = {Cross(rows[1], rows[2]), Cross(rows[2], rows[0]),
                                            Cross(rows[0], rows[1])};
    const double determinant = Dot(rows[0], columns[0]);
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
            placement.inverseRows[i][k] = columns[k][i] / determinant;
        }
        if (!IsFinite(placement.inverseRows[i])) {
            return Identity();
        }
    }
    return IsFinite(placement.translation) ? placement : Identity();
}

Vector3 Clamped(const std::array<float, 3>& colour) {
    Vector3 clamped{};
    for (std::size_t i = 0; i < 3; ++i) {
        clamped[i] = colour[i] > 0 ? std::min(1.0, double{colour[i]}) : 0;  // NaN: 0
    }
    return clamped;
}

class Collector {
  public:
    Collector(const File& file, bool withCollision) {
        for (const Chunk& chunk : file.chunks) {
            if (const auto* node = std::get_if<Node>(&chunk.body)) {
                nodes_.push_back(node);
            } else if (const auto* material = std::get_if<Material>(&chunk.body)) {
                scene_.looks.push_back(
                    {Clamped(material->diffuse), Clamped(material->selfIllumination)});
            } else if (const auto* weights = std::get_if<Weights>(&chunk.body)) {
                skinnedNodes_.insert(weights->node);
            }
        }
        scene_.looks.push_back({});
        for (const Chunk& chunk : file.chunks) {
            const auto* mesh = std::get_if<Mesh>(&chunk.body);
            if (mesh != nullptr && (withCollision || !mesh->isCollision)) {
                Add(*mesh);
            }
        }
    }

    PreviewScene Take() { return std::move(scene_); }

  private:
    void Add(const Mesh& mesh) {
        const auto node = static_cast<std::size_t>(mesh.node);
        const bool inObjectSpace =
            mesh.node >= 0 && node < nodes_.size() && !skinnedNodes_.contains(mesh.node);
        const Placement placement = inObjectSpace ? PlacementOf(*nodes_[node]) : Identity();
        for (const SubMesh& subMesh : mesh.subMeshes) {
            Add(subMesh, placement);
        }
    }

    void Add(const SubMesh& subMesh, const Placement& placement) {
        const std::size_t first = scene_.corners.size();
        if (subMesh.vertices.size() > std::numeric_limits<std::uint32_t>::max() - first) {
            throw std::length_error("too many vertices for a picture");
        }
        for (const Vertex& vertex : subMesh.vertices) {
            scene_.corners.push_back({placement.Position(ToVector(vertex.position)),
                                      placement.Normal(ToVector(vertex.normal))});
        }
        // The last look is for numbers that no material has.
        const auto look =
            std::min(static_cast<std::size_t>(subMesh.material), scene_.looks.size() - 1);
        for (const auto& face : subMesh.faces) {
            PreviewTriangle triangle;
            triangle.look = static_cast<std::uint32_t>(look);
            bool finite = true;
            for (std::size_t i = 0; i < 3; ++i) {
                triangle.corners[i] = static_cast<std::uint32_t>(first) + face[i];
                finite = finite && IsFinite(scene_.corners[triangle.corners[i]].position);
            }
            if (finite) {
                scene_.triangles.push_back(triangle);
            }
        }
    }

    PreviewScene scene_;
    std::vector<const Node*> nodes_;
    std::unordered_set<std::int32_t> skinnedNodes_;
};

}  // namespace

PreviewScene CollectScene(const File& file, bool withCollision) {
    return Collector(file, withCollision).Take();
}

}  // namespace kta
