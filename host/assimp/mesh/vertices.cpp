#include "host/assimp/mesh/vertices.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <set>
#include <utility>

#include "host/assimp/text.h"

namespace maxhost::import {
namespace {

// Of the size of the piece.
constexpr double kOutOfBindPose = 1e-3;

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

// ---------------------------------------------------------------- the shapes of a piece

class PieceMorph {
  public:
    // `weights` are the targets' at tick 0. Keeps a reference to the piece.
    PieceMorph(const aiMesh& piece, std::vector<double> weights, SourceFormat format);

    std::size_t Targets() const { return weights_.size(); }

    // Where the vertex is in the piece's space: without any target, in a target's shape alone, and
    // at tick 0. Numbers that are not finite count as 0 in all of them, and are counted in the
    // first two.
    Vector RestAt(unsigned vertex, std::size_t& notFinite) const;
    Vector TargetAt(std::size_t target, unsigned vertex, std::size_t& notFinite) const;
    Vector PositionAt(unsigned vertex) const;

    // At tick 0, of any length. The piece must have normals.
    Vector NormalAt(unsigned vertex) const;

  private:
    const aiMesh& piece_;
    std::vector<double> weights_;
    bool holdsChanges_;  // the targets hold what is to be added, not where it leads
};

// Collada alone has such targets, which its reader hands on as they stand.
PieceMorph::PieceMorph(const aiMesh& piece, std::vector<double> weights, SourceFormat format)
    : piece_(piece),
      weights_(std::move(weights)),
      holdsChanges_(format == SourceFormat::collada &&
                    piece.mMethod == aiMorphingMethod_MORPH_RELATIVE) {
}

Vector PieceMorph::RestAt(unsigned vertex, std::size_t& notFinite) const {
    return FiniteVector(piece_.mVertices[vertex], notFinite);
}

Vector PieceMorph::TargetAt(std::size_t target, unsigned vertex, std::size_t& notFinite) const {
    const aiAnimMesh& shape = *piece_.mAnimMeshes[target];
    std::size_t ofRest = 0;
    if (!shape.mVertices || vertex >= shape.mNumVertices) {
        return RestAt(vertex, ofRest);
    }
    const Vector point = FiniteVector(shape.mVertices[vertex], notFinite);
    return holdsChanges_ ? RestAt(vertex, ofRest) + point : point;
}

Vector PieceMorph::PositionAt(unsigned vertex) const {
    std::size_t notFinite = 0;
    const Vector rest = RestAt(vertex, notFinite);
    Vector position = rest;
    for (std::size_t i = 0; i < weights_.size(); ++i) {
        if (weights_[i] != 0) {
            position += (TargetAt(i, vertex, notFinite) - rest) * weights_[i];
        }
    }
    return position;
}

Vector PieceMorph::NormalAt(unsigned vertex) const {
    const Vector rest(piece_.mNormals[vertex]);
    Vector normal = rest;
    for (std::size_t i = 0; i < weights_.size(); ++i) {
        const aiAnimMesh& shape = *piece_.mAnimMeshes[i];
        if (weights_[i] != 0 && shape.mNormals && vertex < shape.mNumVertices) {
            const Vector target(shape.mNormals[vertex]);
            normal += (holdsChanges_ ? target : target - rest) * weights_[i];
        }
    }
    return normal;
}

// ---------------------------------------------------------------- morph channels

std::vector<std::size_t> MorphChannels::ChannelsOf(const aiMesh& piece) {
    std::map<std::string, std::size_t> seen;
    std::vector<std::size_t> channels;
    for (unsigned i = 0; i < piece.mNumAnimMeshes; ++i) {
        const std::string name = TextOf(piece.mAnimMeshes[i]->mName);
        const auto [found, isNew] = byName_.try_emplace({name, seen[name]++}, channels_.size());
        if (isNew) {
            channels_.push_back({name, {}});
        }
        channels.push_back(found->second);
    }
    return channels;
}

void MorphChannels::Add(std::size_t channel, const scene::Vec3& point,
                        const std::vector<scene::Vec3>& rest) {
    std::vector<scene::Vec3>& points = channels_[channel].points;
    const auto known = static_cast<std::ptrdiff_t>(points.size());
    points.insert(points.end(), rest.begin() + known, rest.end());
    points.push_back(point);
}

std::vector<scene::MorphChannel> MorphChannels::Finish(const std::vector<scene::Vec3>& rest) {
    std::set<std::string> used;
    for (scene::MorphChannel& channel : channels_) {
        const auto known = static_cast<std::ptrdiff_t>(channel.points.size());
        channel.points.insert(channel.points.end(), rest.begin() + known, rest.end());
        used.insert(channel.name);
    }
    std::size_t number = 0;
    for (scene::MorphChannel& channel : channels_) {
        ++number;
        for (std::size_t i = number; channel.name.empty(); i += channels_.size()) {
            std::string name = "Morph" + std::to_string(i);
            if (used.insert(name).second) {
                channel.name = std::move(name);
            }
        }
    }
    return std::move(channels_);
}

// ---------------------------------------------------------------- the vertices of a node

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
    source_.warnings.AddOf(LossCode::morphWeightsLost, "mesh", name, weights.areLost ? 1 : 0);
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
        vertices_.normals.reserve(most_);
        vertices_.normals.resize(Count());
    }
    for (unsigned i = 0; i < mesh.mNumVertices; ++i) {
        AppendVertex(piece, i, notFinite);
    }
    if (!mesh.mNormals && !vertices_.normals.empty()) {
        vertices_.normals.resize(Count());
    }
    source_.warnings.AddOf(LossCode::normalWithoutDirection, "mesh", name, piece.withoutNormal);
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
    source_.warnings.Add(LossCode::notInBindPose, "mesh " + piece.name,
                         static_cast<std::size_t>(count));
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
