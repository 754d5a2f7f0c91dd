#include "host/assimp/mesh/vertices.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace maxhost::import {
namespace {

// Of the size of the piece.
constexpr double kOutOfBindPose = 1e-3;

// Takes normals where the matrix takes positions, up to their length.
Vector TurnedNormal(const Matrix4& m, const Vector& n) {
    const double side = m.Determinant() < 0 ? -1 : 1;
    Vector turned;
    for (unsigned row = 0; row < 3; ++row) {
        for (unsigned column = 0; column < 3; ++column) {
            const unsigned r1 = (row + 1) % 3, r2 = (row + 2) % 3;
            const unsigned c1 = (column + 1) % 3, c2 = (column + 2) % 3;
            turned[row] += side * (m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1]) * n[column];
        }
    }
    return turned;
}

double SizeOf(const scene::Vec3* begin, const scene::Vec3* end) {
    double square = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        const auto [low, high] = std::minmax_element(
            begin, end, [i](const scene::Vec3& a, const scene::Vec3& b) { return a[i] < b[i]; });
        const double length = double{(*high)[i]} - (*low)[i];
        square += length * length;
    }
    return std::sqrt(square);
}

}  // namespace

float FiniteFloat(double number, std::size_t& notFinite) {
    if (std::abs(number) <= std::numeric_limits<float>::max()) {
        return static_cast<float>(number);
    }
    ++notFinite;
    return 0;
}

struct NodeVertices::Piece {
    const aiMesh& mesh;
    const std::string& name;
    PieceMorph morph;
    std::vector<std::size_t> channels;  // of each target
    std::optional<PieceSkin> skin;
    std::vector<double> strays = {};  // of each vertex of a skin
    std::size_t withoutNormal = 0;
};

NodeVertices::Piece NodeVertices::Prepare(const aiMesh& piece, const std::string& name) {
    MorphWeights weights = source_.pose.MorphWeightsOf(node_, piece);
    source_.warnings.AddOf("the reader loses the weights of blend shapes, taken as 0", "mesh", name,
                           weights.areLost ? 1 : 0);
    Piece prepared{piece, name, PieceMorph(piece, std::move(weights.values), source_.format),
                   channels_.ChannelsOf(piece), std::nullopt};
    if (piece.mNumBones > 0) {
        prepared.skin = skin_.Append(piece, name, Count(), vertices_.weights);
    }
    return prepared;
}

void NodeVertices::Append(const aiMesh& mesh, const std::string& name, std::size_t& notFinite) {
    Piece piece = Prepare(mesh, name);
    if (piece.morph.Targets() > 0) {
        CatchUpRest();
    }
    if (mesh.mNormals || !vertices_.normals.empty()) {
        vertices_.normals.resize(Count());
    }
    for (unsigned i = 0; i < mesh.mNumVertices; ++i) {
        AppendVertex(piece, i, notFinite);
    }
    if (!mesh.mNormals && !vertices_.normals.empty()) {
        vertices_.normals.resize(Count());
    }
    source_.warnings.AddOf("normals without a direction left out", "mesh", name,
                           piece.withoutNormal);
    WarnOfPose(piece);
}

void NodeVertices::AppendVertex(Piece& piece, unsigned vertex, std::size_t& notFinite) {
    const std::optional<Matrix4>& geometric = source_.tree.nodes[node_].geometric;
    const std::optional<Matrix4> bones = piece.skin ? piece.skin->MatrixAt(vertex) : std::nullopt;
    const Matrix4* const matrix = bones ? &*bones : geometric ? &*geometric : nullptr;
    const Vector rest = piece.morph.RestAt(vertex, notFinite);
    const Vector v = piece.morph.Targets() > 0 ? piece.morph.PositionAt(vertex) : rest;
    for (std::size_t i = 0; i < piece.channels.size(); ++i) {
        channels_.Add(piece.channels[i],
                      Place(piece.morph.TargetAt(i, vertex, notFinite), matrix, notFinite), rest_);
    }
    if (!piece.channels.empty()) {
        rest_.push_back(Place(rest, matrix, notFinite));
    }
    vertices_.positions.push_back(Place(v, matrix, notFinite));
    if (piece.mesh.mNormals) {
        AppendNormal(piece, vertex, matrix);
    }
    if (bones) {
        piece.strays.push_back(piece.skin->StrayAt(vertex, v, *matrix * v));
    }
}

scene::Vec3 NodeVertices::Place(const Vector& v, const Matrix4* matrix,
                                std::size_t& notFinite) const {
    const Vector placed = matrix ? *matrix * v : v;
    return source_.tree.turn.Apply({FiniteFloat(placed.x, notFinite),
                                    FiniteFloat(placed.y, notFinite),
                                    FiniteFloat(placed.z, notFinite)});
}

// (0, 0, 0) where the numbers have no direction.
void NodeVertices::AppendNormal(Piece& piece, unsigned vertex, const Matrix4* matrix) {
    Vector normal = piece.morph.NormalAt(vertex);
    normal = matrix ? TurnedNormal(*matrix, normal) : normal;
    const double length = std::hypot(normal.x, normal.y, normal.z);
    if (!(length > 0) || !std::isfinite(length)) {
        ++piece.withoutNormal;
        vertices_.normals.emplace_back();
        return;
    }
    vertices_.normals.push_back(source_.tree.turn.Apply({static_cast<float>(normal.x / length),
                                                         static_cast<float>(normal.y / length),
                                                         static_cast<float>(normal.z / length)}));
}

// Vertices of pieces without targets rest where they are.
void NodeVertices::CatchUpRest() {
    const auto known = static_cast<std::ptrdiff_t>(rest_.size());
    rest_.insert(rest_.end(), vertices_.positions.begin() + known, vertices_.positions.end());
}

void NodeVertices::WarnOfPose(const Piece& piece) const {
    if (piece.strays.empty()) {
        return;
    }
    const scene::Vec3* const end = vertices_.positions.data() + Count();
    const double most = kOutOfBindPose * SizeOf(end - piece.mesh.mNumVertices, end);
    const auto count = std::count_if(piece.strays.begin(), piece.strays.end(),
                                     [most](double stray) { return stray > most; });
    source_.warnings.Add("vertices whose bones are not in their bind pose at the start",
                         "mesh " + piece.name, static_cast<std::size_t>(count));
}

const SourceVertices& NodeVertices::Finish() {
    if (!channels_.AreNone()) {
        CatchUpRest();
        vertices_.channels = channels_.Finish(rest_);
    }
    return vertices_;
}

std::vector<scene::Modifier> NodeVertices::ModifiersFor(
    const std::vector<std::uint32_t>& vertices) const {
    std::vector<scene::Modifier> modifiers;
    if (!vertices_.weights.IsEmpty()) {
        scene::Skin skin;
        skin.bones = skin_.Bones();
        skin.weights.reserve(vertices.size());
        for (const std::uint32_t vertex : vertices) {
            const auto weights = vertices_.weights.Of(vertex);
            skin.weights.emplace_back(weights.begin(), weights.end());
        }
        modifiers.push_back({true, std::move(skin)});
    }
    if (!vertices_.channels.empty()) {
        scene::Morpher morpher;
        for (const scene::MorphChannel& channel : vertices_.channels) {
            std::vector<scene::Vec3>& points =
                morpher.channels.emplace_back(scene::MorphChannel{channel.name, {}}).points;
            points.reserve(vertices.size());
            for (const std::uint32_t vertex : vertices) {
                points.push_back(channel.points[vertex]);
            }
        }
        modifiers.push_back({true, std::move(morpher)});
    }
    return modifiers;
}

}  // namespace maxhost::import
