#include "host/assimp/mesh/morph.h"

#include <cmath>
#include <set>

#include "host/assimp/text.h"

namespace maxhost::import {
namespace {

using Vector = aiVector3t<double>;

Vector FiniteVector(const aiVector3D& v, std::size_t& notFinite) {
    Vector finite(v.x, v.y, v.z);
    for (unsigned i = 0; i < 3; ++i) {
        if (!std::isfinite(finite[i])) {
            finite[i] = 0;
            ++notFinite;
        }
    }
    return finite;
}

}  // namespace

// ---------------------------------------------------------------- a piece

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

// ---------------------------------------------------------------- a node

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

}  // namespace maxhost::import
