#include "kta/gltf/primitive.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <tuple>

namespace kta::gltf {
namespace {

void Append(std::vector<float>& values, const Vector3& v) {
    for (const double component : v) {
        values.push_back(Stored(component));
    }
}

Vector3 At(const std::vector<float>& values, std::size_t vertex) {
    return {values[3 * vertex], values[3 * vertex + 1], values[3 * vertex + 2]};
}

Vector3 ToVector(const float (&values)[3]) {
    return {values[0], values[1], values[2]};
}

// ---------------------------------------------------------------- vertices

// A normal goes with the transposed inverse of what moves positions.
class NormalMap {
  public:
    explicit NormalMap(const std::optional<Affine>& offset) {
        if (const std::optional<Affine> inverse = offset ? Inverse(*offset) : std::nullopt) {
            inverse_ = *inverse;
        }
    }

    Vector3 operator()(const Vector3& normal) const {
        return Normalized(Vector3{Dot(inverse_.axes[0], normal), Dot(inverse_.axes[1], normal),
                                  Dot(inverse_.axes[2], normal)});
    }

  private:
    Affine inverse_;
};

void AddVertices(const PrimitiveSource& source, const SubMesh& subMesh, Primitive& primitive) {
    const NormalMap normalMap(source.offset);
    primitive.positions.reserve(3 * subMesh.vertices.size());
    primitive.normals.reserve(3 * subMesh.vertices.size());
    for (const KTAVertex& vertex : subMesh.vertices) {
        const Vector3 position = ToVector(vertex.position);
        Append(primitive.positions,
               Exchanged(source.offset ? source.offset->Position(position) : position));
        const Vector3 normal = ToVector(vertex.normal);
        Append(primitive.normals, Exchanged(normalMap(normal)));
    }
}

void AddCoordinates(const SubMesh& subMesh, std::size_t pairs, Primitive& primitive) {
    const std::size_t sets = std::min(pairs, kMostCoordinateSets);
    primitive.coordinatesLeftOut = pairs - sets;
    primitive.coordinates.resize(sets);
    for (std::size_t set = 0; set < sets; ++set) {
        primitive.coordinates[set].reserve(2 * subMesh.vertices.size());
        for (std::size_t i = set; i < subMesh.textureCoordinates.size(); i += pairs) {
            for (const float value : subMesh.textureCoordinates[i]) {
                primitive.coordinates[set].push_back(Stored(value));
            }
        }
    }
}

// ---------------------------------------------------------------- triangles

bool IsFinite(const SubMesh& subMesh, std::uint32_t vertex) {
    return kta::IsFinite(ToVector(subMesh.vertices[vertex].position));
}

void AddTriangles(const PrimitiveSource& source, const SubMesh& subMesh, Primitive& primitive) {
    primitive.indices.reserve(3 * subMesh.faces.size());
    for (const auto& face : subMesh.faces) {
        if (!IsFinite(subMesh, face[0]) || !IsFinite(subMesh, face[1]) ||
            !IsFinite(subMesh, face[2])) {
            ++primitive.trianglesLeftOut;
            continue;
        }
        primitive.indices.push_back(face[0]);
        primitive.indices.push_back(face[source.isTurnedOver ? 2 : 1]);
        primitive.indices.push_back(face[source.isTurnedOver ? 1 : 2]);
    }
}

// Where the file gives no direction: that of the triangles at the vertex together, and if they have
// none, upwards.
void MakeMissingNormals(Primitive& primitive) {
    const std::size_t count = primitive.normals.size() / 3;
    std::vector<bool> isMissing(count);
    for (std::size_t i = 0; i < count; ++i) {
        isMissing[i] = At(primitive.normals, i) == Vector3{};
        primitive.normalsMade += isMissing[i] ? 1 : 0;
    }
    if (primitive.normalsMade == 0) {
        return;
    }
    std::vector<Vector3> sums(count);
    for (std::size_t i = 0; i < primitive.indices.size(); i += 3) {
        const std::uint32_t* const corners = &primitive.indices[i];
        const Vector3 first = At(primitive.positions, corners[0]);
        const Vector3 area = Cross(At(primitive.positions, corners[1]) - first,
                                   At(primitive.positions, corners[2]) - first);
        for (int corner = 0; corner < 3; ++corner) {
            sums[corners[corner]] = sums[corners[corner]] + area;
        }
    }
    for (std::size_t i = 0; i < count; ++i) {
        if (isMissing[i]) {
            const Vector3 made = Normalized(sums[i]);
            const Vector3 normal = made == Vector3{} ? Vector3{0, 1, 0} : made;
            for (std::size_t k = 0; k < 3; ++k) {
                primitive.normals[3 * i + k] = Stored(normal[k]);
            }
        }
    }
}

// ---------------------------------------------------------------- what moves vertices

// The shares of the bones that are kept, as f32 that sum to 1.
std::vector<float> WeightsOf(std::span<const Influence> influences) {
    double sum = 0;
    for (const Influence& influence : influences) {
        sum += influence.share;
    }
    std::vector<float> weights;
    double others = 0;
    for (const Influence& influence : influences) {
        weights.push_back(static_cast<float>(influence.share / sum));
        others += weights.size() > 1 ? double{weights.back()} : 0;
    }
    weights.front() = static_cast<float>(1 - others);
    return weights;
}

void AddInfluences(const PrimitiveSource& source, const SubMesh& subMesh, Primitive& primitive) {
    const auto kept = [&source](const KTAVertex& vertex) {
        const std::span<const Influence> all = source.skin->Of(vertex.originalVertex);
        return all.first(std::min(all.size(), source.mostInfluences));
    };
    std::size_t most = 1;
    for (const KTAVertex& vertex : subMesh.vertices) {
        most = std::max(most, kept(vertex).size());
    }
    std::vector<std::uint16_t> numbers(source.tree.Size());
    for (std::size_t i = 0; i < source.joints.size(); ++i) {
        numbers[source.joints[i]] = static_cast<std::uint16_t>(i);
    }
    const std::size_t sets = (most + 3) / 4;
    primitive.joints.assign(sets, std::vector<std::uint16_t>(4 * subMesh.vertices.size()));
    primitive.weights.assign(sets, std::vector<float>(4 * subMesh.vertices.size()));
    for (std::size_t v = 0; v < subMesh.vertices.size(); ++v) {
        const std::span<const Influence> influences = kept(subMesh.vertices[v]);
        const std::vector<float> weights = WeightsOf(influences);
        for (std::size_t i = 0; i < weights.size(); ++i) {
            // A weight that rounds to nothing needs no joint.
            primitive.weights[i / 4][4 * v + i % 4] = weights[i];
            primitive.joints[i / 4][4 * v + i % 4] =
                weights[i] > 0 ? numbers[influences[i].node] : std::uint16_t{0};
        }
    }
}

// ---------------------------------------------------------------- morph targets

// Turns the vector as the shorter way from the one direction to the other turns (Rodrigues'
// rotation formula). Directions of length 1.
Vector3 Turned(const Vector3& v, const Vector3& from, const Vector3& to) {
    const Vector3 axis = Cross(from, to);
    const Vector3 across = Cross(axis, v);
    return v + across + Cross(axis, across) * (1 / (1 + Dot(from, to)));
}

// What targets do to normals, which the files do not say. Vertices of one original vertex and one
// normal have it of the triangles that they share, and it turns as these do together.
class NormalChanges {
  public:
    NormalChanges(const SubMesh& subMesh, const Primitive& primitive) : primitive_(primitive) {
        std::map<std::tuple<std::int32_t, float, float, float>, std::size_t> groups;
        for (const KTAVertex& vertex : subMesh.vertices) {
            groups_.push_back(groups
                                  .try_emplace({vertex.originalVertex, vertex.normal[0],
                                                vertex.normal[1], vertex.normal[2]},
                                               groups.size())
                                  .first->second);
        }
        count_ = groups.size();
        before_ = Directions(primitive.positions);
    }

    // Of each vertex what is to be added to its normal. Zero where the triangles have no direction,
    // or turn right over.
    std::vector<float> Of(const std::vector<float>& displacements) const {
        std::vector<float> positions = primitive_.positions;
        for (std::size_t i = 0; i < positions.size(); ++i) {
            positions[i] += displacements[i];
        }
        const std::vector<Vector3> after = Directions(positions);
        std::vector<float> changes;
        changes.reserve(positions.size());
        for (std::size_t i = 0; i < groups_.size(); ++i) {
            const Vector3 &from = before_[groups_[i]], &to = after[groups_[i]];
            const bool isTold =
                from != to && from != Vector3{} && to != Vector3{} && Dot(from, to) > kRightOver;
            const Vector3 normal = At(primitive_.normals, i);
            Append(changes, isTold ? Normalized(Turned(normal, from, to)) - normal : Vector3{});
        }
        return changes;
    }

  private:
    static constexpr double kRightOver = -0.9999;  // cosine

    // Of each group's triangles together.
    std::vector<Vector3> Directions(const std::vector<float>& positions) const {
        std::vector<Vector3> sums(count_);
        for (std::size_t i = 0; i < primitive_.indices.size(); i += 3) {
            const std::uint32_t* const corners = &primitive_.indices[i];
            const Vector3 first = At(positions, corners[0]);
            const Vector3 area =
                Cross(At(positions, corners[1]) - first, At(positions, corners[2]) - first);
            for (std::size_t corner = 0; corner < 3; ++corner) {
                Vector3& sum = sums[groups_[corners[corner]]];
                sum = sum + area;
            }
        }
        for (Vector3& sum : sums) {
            sum = Normalized(sum);
        }
        return sums;
    }

    const Primitive& primitive_;
    std::vector<std::size_t> groups_;  // by vertex
    std::size_t count_ = 0;
    std::vector<Vector3> before_;  // of each group, length 1 or 0
};

void AddTargets(const PrimitiveSource& source, const SubMesh& subMesh, Primitive& primitive) {
    if (source.targets.empty()) {
        return;
    }
    const NormalChanges normals(subMesh, primitive);
    for (const MorphTarget& target : source.targets) {
        PrimitiveTarget& added = primitive.targets.emplace_back();
        added.positions.reserve(3 * subMesh.vertices.size());
        for (const KTAVertex& vertex : subMesh.vertices) {
            const Vector3 way = target.Displacement(vertex);
            Append(added.positions, Exchanged(source.offset ? source.offset->Direction(way) : way));
        }
        added.normals = normals.Of(added.positions);
    }
}

// ---------------------------------------------------------------- objects

template <typename Value>
std::size_t AddVertexData(const std::vector<Value>& values, const char* form, Document& document,
                          bool withBounds = false) {
    return document.AddAccessor(std::span<const Value>(values), form, Usage::vertices, withBounds);
}

// In as few bytes as the greatest number needs; the greatest of its kind is kept free for viewers.
std::size_t AddIndices(const Primitive& primitive, Document& document) {
    const std::span<const std::uint32_t> indices(primitive.indices);
    if (primitive.positions.size() / 3 > std::numeric_limits<std::uint16_t>::max()) {
        return document.AddAccessor(indices, "SCALAR", Usage::indices);
    }
    const std::vector<std::uint16_t> narrow(indices.begin(), indices.end());
    return document.AddAccessor(std::span<const std::uint16_t>(narrow), "SCALAR", Usage::indices);
}

std::size_t AddJoints(const std::vector<std::uint16_t>& joints, bool fitsByte, Document& document) {
    if (!fitsByte) {
        return AddVertexData(joints, "VEC4", document);
    }
    return AddVertexData(std::vector<std::uint8_t>(joints.begin(), joints.end()), "VEC4", document);
}

}  // namespace

Primitive MakePrimitive(const PrimitiveSource& source, const SubMesh& subMesh) {
    Primitive primitive;
    AddTriangles(source, subMesh, primitive);
    if (primitive.indices.empty()) {
        return primitive;
    }
    AddVertices(source, subMesh, primitive);
    MakeMissingNormals(primitive);
    AddCoordinates(subMesh, static_cast<std::size_t>(source.mesh.mesh->pairsPerVertex), primitive);
    if (source.skin) {
        AddInfluences(source, subMesh, primitive);
    }
    AddTargets(source, subMesh, primitive);
    return primitive;
}

Json PrimitiveJson(const Primitive& primitive, std::size_t material, Document& document) {
    Json attributes = {{"POSITION", AddVertexData(primitive.positions, "VEC3", document, true)},
                       {"NORMAL", AddVertexData(primitive.normals, "VEC3", document)}};
    for (std::size_t set = 0; set < primitive.coordinates.size(); ++set) {
        attributes["TEXCOORD_" + std::to_string(set)] =
            AddVertexData(primitive.coordinates[set], "VEC2", document);
    }
    std::uint16_t greatest = 0;
    for (const std::vector<std::uint16_t>& joints : primitive.joints) {
        greatest = std::max(greatest, *std::max_element(joints.begin(), joints.end()));
    }
    for (std::size_t set = 0; set < primitive.joints.size(); ++set) {
        attributes["JOINTS_" + std::to_string(set)] = AddJoints(
            primitive.joints[set], greatest <= std::numeric_limits<std::uint8_t>::max(), document);
        attributes["WEIGHTS_" + std::to_string(set)] =
            AddVertexData(primitive.weights[set], "VEC4", document);
    }
    Json object = {{"attributes", std::move(attributes)}};
    object["indices"] = AddIndices(primitive, document);
    object["material"] = material;
    for (const PrimitiveTarget& target : primitive.targets) {
        object["targets"].push_back(
            {{"POSITION", AddVertexData(target.positions, "VEC3", document, true)},
             {"NORMAL", AddVertexData(target.normals, "VEC3", document)}});
    }
    return object;
}

}  // namespace kta::gltf
