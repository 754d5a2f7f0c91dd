// The vertices that Assimp gives for a node's mesh, and which of them are one vertex. Formats and
// importers repeat a vertex for each normal and texture coordinate that meets there.
#pragma once

#include <assimp/mesh.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "host/sdk/scene_desc.h"

namespace maxhost::import {

// What keeps vertices apart that stand in one place: the skin weights that are not 0, by the bones'
// names, and where morph targets move the vertex to.
class VertexMarks {
  public:
    // Those of the piece, whose first vertex is vertex `first` of the whole mesh. Pieces come in
    // ascending order.
    void Append(const aiMesh& piece, std::size_t first);

    // For any vertices of the mesh.
    bool AreSame(std::size_t a, std::size_t b) const;
    std::uint64_t HashOf(std::size_t vertex) const;

  private:
    struct Weight {
        std::uint32_t vertex, bone, bits;
    };

    std::vector<Weight> WeightsOf(const aiMesh& piece);
    void AppendMorphs(const aiMesh& piece, unsigned vertex);
    std::size_t EndOf(std::size_t vertex) const {
        return vertex < ends_.size() ? ends_[vertex] : words_.size();
    }
    std::size_t BeginOf(std::size_t vertex) const { return vertex > 0 ? EndOf(vertex - 1) : 0; }

    std::map<std::string, std::uint32_t> bones_;
    std::vector<std::uint32_t> words_;  // of a weight the bone and the number's bits, ...
    std::vector<std::size_t> ends_;     // of each vertex's words; none for the last without any
};

// All pieces' vertices, one piece behind the other, in the node's space.
struct SourceVertices {
    std::vector<scene::Vec3> positions;
    // Of unit length; (0, 0, 0) where the source gives none. Empty where no piece has normals.
    std::vector<scene::Vec3> normals;
    VertexMarks marks;
};

struct JoinedVertices {
    std::vector<std::uint32_t> idOf;     // of each source vertex
    std::vector<std::uint32_t> firstOf;  // of each joined vertex its first source vertex, ascending
};

// Source vertices are one where their positions are bit for bit the same, their marks too, and with
// `byNormal` their normals.
JoinedVertices Join(const SourceVertices& source, bool byNormal);

}  // namespace maxhost::import
