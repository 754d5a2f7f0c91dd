// The vertices that Assimp gives for a node's mesh, and which of them are one vertex. Formats and
// importers repeat a vertex for each normal and texture coordinate that meets there.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "host/scene/scene.h"

namespace maxhost::import {

// Lists of skin weights, one a vertex.
class VertexWeights {
  public:
    // Begins the list of this vertex, which comes behind all that have one.
    void Begin(std::size_t vertex) { ends_.resize(vertex + 1, weights_.size()); }
    // Adds to the list begun last.
    void Add(const scene::SkinWeight& weight) {
        weights_.push_back(weight);
        ++ends_.back();
    }

    std::span<const scene::SkinWeight> Of(std::size_t vertex) const {
        const std::size_t begin = vertex > 0 ? EndOf(vertex - 1) : 0;
        return std::span(weights_).subspan(begin, EndOf(vertex) - begin);
    }
    bool IsEmpty() const { return weights_.empty(); }

  private:
    std::size_t EndOf(std::size_t vertex) const {
        return vertex < ends_.size() ? ends_[vertex] : weights_.size();
    }

    std::vector<scene::SkinWeight> weights_;
    std::vector<std::size_t> ends_;  // of each vertex's list; none behind the last that was begun
};

// All pieces' vertices, one piece behind the other, in the node's space.
struct SourceVertices {
    std::vector<scene::Vec3> positions;
    // Of unit length; (0, 0, 0) where the source gives none. Empty where no piece has normals.
    std::vector<scene::Vec3> normals;
    VertexWeights weights;
    std::vector<scene::MorphChannel> channels;  // each with a point for every vertex
};

struct JoinedVertices {
    std::vector<std::uint32_t> idOf;     // of each source vertex
    std::vector<std::uint32_t> firstOf;  // of each joined vertex its first source vertex, ascending
};

// Source vertices are one where their positions are bit for bit the same, their weights and points
// of morph channels too, and with `byNormal` their normals.
JoinedVertices Join(const SourceVertices& source, bool byNormal);

}  // namespace maxhost::import
