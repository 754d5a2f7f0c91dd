#include "host/assimp/mesh/source_vertices.h"

#include <algorithm>
#include <bit>

#include "host/assimp/mesh/id_table.h"

namespace maxhost::import {
namespace {

bool IsSameBits(const scene::Vec3& a, const scene::Vec3& b) {
    return BitsOf(a) == BitsOf(b);
}

std::uint64_t BitsOf(const scene::SkinWeight& weight) {
    const auto slot = static_cast<std::uint32_t>(weight.slot);
    return std::uint64_t{slot} << 32 | std::bit_cast<std::uint32_t>(weight.weight);
}

bool HaveSameWeights(const VertexWeights& weights, std::size_t a, std::size_t b) {
    const auto first = weights.Of(a), second = weights.Of(b);
    return std::equal(first.begin(), first.end(), second.begin(), second.end(),
                      [](const scene::SkinWeight& left, const scene::SkinWeight& right) {
                          return BitsOf(left) == BitsOf(right);
                      });
}

std::uint64_t HashOfVertex(const SourceVertices& source, std::size_t vertex, bool byNormal) {
    std::uint64_t hash = HashOf(source.positions[vertex]);
    if (byNormal) {
        hash = Mixed(hash) + HashOf(source.normals[vertex]);
    }
    for (const scene::SkinWeight& weight : source.weights.Of(vertex)) {
        hash = Mixed(hash + BitsOf(weight));
    }
    for (const scene::MorphChannel& channel : source.channels) {
        hash = Mixed(hash) + HashOf(channel.points[vertex]);
    }
    return hash;
}

}  // namespace

JoinedVertices Join(const SourceVertices& source, bool byNormal) {
    const auto isSame = [&](std::uint32_t a, std::uint32_t b) {
        return IsSameBits(source.positions[a], source.positions[b]) &&
               (!byNormal || IsSameBits(source.normals[a], source.normals[b])) &&
               HaveSameWeights(source.weights, a, b) &&
               std::all_of(source.channels.begin(), source.channels.end(),
                           [a, b](const scene::MorphChannel& channel) {
                               return IsSameBits(channel.points[a], channel.points[b]);
                           });
    };
    IdTable ids;
    JoinedVertices joined;
    joined.idOf.reserve(source.positions.size());
    for (std::uint32_t i = 0; i < source.positions.size(); ++i) {
        const auto next = static_cast<std::uint32_t>(joined.firstOf.size());
        const std::uint32_t id =
            ids.FindOrAdd(HashOfVertex(source, i, byNormal), next,
                          [&](std::uint32_t known) { return isSame(joined.firstOf[known], i); });
        if (id == next) {
            joined.firstOf.push_back(i);
        }
        joined.idOf.push_back(id);
    }
    return joined;
}

}  // namespace maxhost::import
