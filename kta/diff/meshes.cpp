// What is different in two meshes.
#include <numeric>

#include "kta/diff/bodies.h"

namespace kta {
namespace {

using Face = std::array<std::uint32_t, 3>;

// Which vertices of two sub-meshes belong together: of those of one original vertex the first to
// the first, and so on.
struct VertexPairs {
    std::vector<std::pair<std::uint32_t, std::uint32_t>> pairs;
    std::size_t added = 0;
    std::size_t removed = 0;
    // For each of b's vertices its counterpart in a, or a number beyond a's.
    std::vector<std::uint32_t> numberInA;
};

// Original vertices ascend in every sub-mesh.
VertexPairs PairVertices(const SubMesh& a, const SubMesh& b) {
    VertexPairs result;
    const auto beyond = static_cast<std::uint32_t>(a.vertices.size());
    result.pairs.reserve(std::min(a.vertices.size(), b.vertices.size()));
    result.numberInA.resize(b.vertices.size());
    std::iota(result.numberInA.begin(), result.numberInA.end(), beyond);
    std::uint32_t i = 0;
    std::uint32_t j = 0;
    while (i < a.vertices.size() && j < b.vertices.size()) {
        const std::int32_t originalA = a.vertices[i].originalVertex;
        const std::int32_t originalB = b.vertices[j].originalVertex;
        if (originalA == originalB) {
            result.numberInA[j] = i;
            result.pairs.emplace_back(i, j);
        }
        i += originalA <= originalB ? 1 : 0;
        j += originalB <= originalA ? 1 : 0;
    }
    result.added = b.vertices.size() - result.pairs.size();
    result.removed = a.vertices.size() - result.pairs.size();
    return result;
}

// The same face whichever corner it begins with; the order round it stays.
Face FromLeastCorner(Face face) {
    std::rotate(face.begin(), std::min_element(face.begin(), face.end()), face.end());
    return face;
}

// Of b's faces, in a's numbers.
std::vector<Face> FacesInA(const SubMesh& b, const VertexPairs& vertices) {
    std::vector<Face> faces = b.faces;
    for (Face& face : faces) {
        for (std::uint32_t& corner : face) {
            corner = vertices.numberInA[corner];
        }
    }
    return faces;
}

void SortFaces(std::vector<Face>& faces) {
    std::transform(faces.begin(), faces.end(), faces.begin(), FromLeastCorner);
    std::sort(faces.begin(), faces.end());
}

class SubMeshComparer {
  public:
    SubMeshComparer(const Mesh& a, const Mesh& b, const Comparison& by,
                    std::vector<FieldChange>& changes)
        : meshA_(a), meshB_(b), by_(by), changes_(changes) {}

    void Compare(const SubMesh& a, const SubMesh& b) {
        form_ = {};
        form_.subMesh = by_.a.materials.NameOf(a.materialNumber);
        CompareMaterial(a, b);
        const VertexPairs vertices = PairVertices(a, b);
        form_.item = "vertex";
        AppendSurplus(form_, vertices.added, vertices.removed, changes_);
        CompareVertices(a, b, vertices);
        CompareTextureCoordinates(a, b, vertices);
        form_.item = "face";
        CompareFaces(a, b, vertices);
    }

  private:
    void CompareMaterial(const SubMesh& a, const SubMesh& b) {
        if (by_.a.materials.IdOf(a.materialNumber) != by_.b.materials.IdOf(b.materialNumber)) {
            FieldChange change = form_;
            change.field = "materialNumber";
            change.a = by_.a.materials.NameOf(a.materialNumber);
            change.b = by_.b.materials.NameOf(b.materialNumber);
            changes_.push_back(std::move(change));
        }
    }

    static std::vector<Label> PlaceIn(const SubMesh& a, std::size_t vertex) {
        return {{"vertex", std::to_string(vertex)},
                {"originalVertex", std::to_string(a.vertices[vertex].originalVertex)}};
    }

    void CompareVertices(const SubMesh& a, const SubMesh& b, const VertexPairs& vertices) {
        RecordPairs<KTAVertex> records;
        for (const auto& [i, j] : vertices.pairs) {
            records.Compare(a.vertices[i], b.vertices[j], i, by_.tolerance);
        }
        records.Append(
            form_, [&](std::size_t vertex) { return PlaceIn(a, vertex); }, changes_);
    }

    void CompareTextureCoordinates(const SubMesh& a, const SubMesh& b,
                                   const VertexPairs& vertices) {
        const auto countA = static_cast<std::size_t>(meshA_.pairsPerVertex);
        const auto countB = static_cast<std::size_t>(meshB_.pairsPerVertex);
        for (std::size_t channel = 0; channel < std::min(countA, countB); ++channel) {
            Differing<TextureCoordinates> differing;
            for (const auto& [i, j] : vertices.pairs) {
                const TextureCoordinates& itsA = a.textureCoordinates[i * countA + channel];
                const TextureCoordinates& itsB = b.textureCoordinates[j * countB + channel];
                differing.Note(DeviationOf(itsA, itsB, by_.tolerance), i, itsA, itsB);
            }
            FieldChange form = form_;
            form.field = "textureCoordinates[" + std::to_string(channel) + "]";
            form.compared = vertices.pairs.size();
            form.deviation = differing.deviation;
            differing.Append(
                form, [&](std::size_t vertex) { return PlaceIn(a, vertex); }, ListText, changes_);
        }
    }

    void CompareFaces(const SubMesh& a, const SubMesh& b, const VertexPairs& vertices) {
        std::vector<Face> facesA = a.faces;
        std::vector<Face> facesB = FacesInA(b, vertices);
        if (facesA == facesB) {
            return;
        }
        SortFaces(facesA);
        SortFaces(facesB);
        std::vector<Face> common;
        std::set_intersection(facesA.begin(), facesA.end(), facesB.begin(), facesB.end(),
                              std::back_inserter(common));
        AppendSurplus(form_, facesB.size() - common.size(), facesA.size() - common.size(),
                      changes_);
        if (facesA == facesB) {
            FieldChange change = form_;
            change.change = Change::moved;
            change.count = change.compared = facesA.size();
            changes_.push_back(std::move(change));
        }
    }

    const Mesh& meshA_;
    const Mesh& meshB_;
    const Comparison& by_;
    std::vector<FieldChange>& changes_;
    FieldChange form_;  // of every change in the sub-meshes that are compared
};

// Sub-meshes belong together by their materials; those that are left then, in their order.
std::vector<Keys> SubMeshKeys(const Mesh& mesh, const References& references) {
    std::vector<Keys> keys;
    for (const SubMesh& subMesh : mesh.subMeshes) {
        keys.push_back({std::to_string(references.materials.IdOf(subMesh.materialNumber)), ""});
    }
    return keys;
}

void AppendWhole(Change change, const std::string& name, std::vector<FieldChange>& changes) {
    FieldChange whole;
    whole.change = change;
    whole.subMesh = name;
    whole.item = "sub-mesh";
    changes.push_back(std::move(whole));
}

void ComparePairCounts(const Mesh& a, const Mesh& b, std::vector<FieldChange>& changes) {
    if (a.pairsPerVertex != b.pairsPerVertex) {
        FieldChange change;
        change.field = "pairsPerVertex";
        change.a = std::to_string(a.pairsPerVertex);
        change.b = std::to_string(b.pairsPerVertex);
        changes.push_back(std::move(change));
    }
}

}  // namespace

void CompareMeshes(const Mesh& a, const Mesh& b, const Comparison& by,
                   std::vector<FieldChange>& changes) {
    ComparePairCounts(a, b, changes);
    const Match match = MatchByKeys(SubMeshKeys(a, by.a), SubMeshKeys(b, by.b));
    SubMeshComparer comparer(a, b, by, changes);
    std::size_t least = 0;
    bool moved = false;
    for (std::size_t i = 0; i < a.subMeshes.size(); ++i) {
        const std::size_t j = match.counterparts[i];
        if (j == kNoCounterpart) {
            AppendWhole(Change::removed, by.a.materials.NameOf(a.subMeshes[i].materialNumber),
                        changes);
            continue;
        }
        comparer.Compare(a.subMeshes[i], b.subMeshes[j]);
        moved = moved || j < least;
        least = std::max(least, j);
    }
    for (const std::size_t j : match.added) {
        AppendWhole(Change::added, by.b.materials.NameOf(b.subMeshes[j].materialNumber), changes);
    }
    if (moved) {
        AppendWhole(Change::moved, "", changes);
    }
}

}  // namespace kta
