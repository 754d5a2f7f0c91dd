#include "host/import/source_vertices.h"

#include <algorithm>
#include <bit>
#include <tuple>

#include "host/import/id_table.h"

namespace maxhost::import {
namespace {

constexpr std::uint32_t kMorph = 0x80000000;  // apart from any bone's number

bool IsSameBits(const scene::Vec3& a, const scene::Vec3& b) {
    return BitsOf(a) == BitsOf(b);
}

}  // namespace

// ---------------------------------------------------------------- marks

std::vector<VertexMarks::Weight> VertexMarks::WeightsOf(const aiMesh& piece) {
    std::vector<Weight> weights;
    for (unsigned i = 0; i < piece.mNumBones; ++i) {
        const aiBone& bone = *piece.mBones[i];
        const std::uint32_t number =
            bones_.try_emplace(bone.mName.C_Str(), static_cast<std::uint32_t>(bones_.size()))
                .first->second;
        for (unsigned k = 0; bone.mWeights && k < bone.mNumWeights; ++k) {
            const aiVertexWeight& weight = bone.mWeights[k];
            if (weight.mWeight != 0 && weight.mVertexId < piece.mNumVertices) {
                weights.push_back(
                    {weight.mVertexId, number, std::bit_cast<std::uint32_t>(weight.mWeight)});
            }
        }
    }
    std::sort(weights.begin(), weights.end(), [](const Weight& a, const Weight& b) {
        return std::tie(a.vertex, a.bone, a.bits) < std::tie(b.vertex, b.bone, b.bits);
    });
    return weights;
}

// A target that leaves the vertex where it is marks it no more than a target that is not there.
void VertexMarks::AppendMorphs(const aiMesh& piece, unsigned vertex) {
    const aiVector3D& base = piece.mVertices[vertex];
    for (unsigned i = 0; i < piece.mNumAnimMeshes; ++i) {
        const aiAnimMesh& target = *piece.mAnimMeshes[i];
        if (!target.mVertices || vertex >= target.mNumVertices) {
            continue;
        }
        const aiVector3D& point = target.mVertices[vertex];
        if (point.x != base.x || point.y != base.y || point.z != base.z) {
            words_.push_back(kMorph | i);
            for (const float number : {point.x, point.y, point.z}) {
                words_.push_back(std::bit_cast<std::uint32_t>(number));
            }
        }
    }
}

void VertexMarks::Append(const aiMesh& piece, std::size_t first) {
    if (piece.mNumBones == 0 && piece.mNumAnimMeshes == 0) {
        return;
    }
    ends_.resize(first, words_.size());
    ends_.reserve(first + piece.mNumVertices);
    const std::vector<Weight> weights = WeightsOf(piece);
    auto weight = weights.begin();
    for (unsigned vertex = 0; vertex < piece.mNumVertices; ++vertex) {
        for (; weight != weights.end() && weight->vertex == vertex; ++weight) {
            words_.push_back(weight->bone);
            words_.push_back(weight->bits);
        }
        AppendMorphs(piece, vertex);
        ends_.push_back(words_.size());
    }
}

bool VertexMarks::AreSame(std::size_t a, std::size_t b) const {
    const auto words = words_.begin();
    const auto at = [words](std::size_t i) { return words + static_cast<std::ptrdiff_t>(i); };
    return std::equal(at(BeginOf(a)), at(EndOf(a)), at(BeginOf(b)), at(EndOf(b)));
}

std::uint64_t VertexMarks::HashOf(std::size_t vertex) const {
    std::uint64_t hash = 0;
    for (std::size_t i = BeginOf(vertex); i < EndOf(vertex); ++i) {
        hash = Mixed(hash + words_[i]);
    }
    return hash;
}

// ---------------------------------------------------------------- joining

JoinedVertices Join(const SourceVertices& source, bool byNormal) {
    const auto isSame = [&](std::uint32_t a, std::uint32_t b) {
        return IsSameBits(source.positions[a], source.positions[b]) &&
               (!byNormal || IsSameBits(source.normals[a], source.normals[b])) &&
               source.marks.AreSame(a, b);
    };
    IdTable ids;
    JoinedVertices joined;
    joined.idOf.reserve(source.positions.size());
    for (std::uint32_t i = 0; i < source.positions.size(); ++i) {
        std::uint64_t hash = HashOf(source.positions[i]) + source.marks.HashOf(i);
        hash = byNormal ? Mixed(hash) + HashOf(source.normals[i]) : hash;
        const auto next = static_cast<std::uint32_t>(joined.firstOf.size());
        const std::uint32_t id = ids.FindOrAdd(
            hash, next, [&](std::uint32_t known) { return isSame(joined.firstOf[known], i); });
        if (id == next) {
            joined.firstOf.push_back(i);
        }
        joined.idOf.push_back(id);
    }
    return joined;
}

}  // namespace maxhost::import
