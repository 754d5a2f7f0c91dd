// What nodes, layers and meshes hold: transforms, texture names, vertices and triangles.
#include <algorithm>
#include <cmath>

#include "kta/check/findings.h"
#include "kta/cursor.h"

namespace kta {
namespace {

// ---------------------------------------------------------------- nodes

void CheckScale(Findings& findings, std::size_t chunk, const KTANode& node) {
    const auto negative = std::count_if(std::begin(node.scale), std::end(node.scale),
                                        [](float part) { return part < 0; });
    const auto positive = std::count_if(std::begin(node.scale), std::end(node.scale),
                                        [](float part) { return part > 0; });
    if (negative > 0 && positive > 0) {
        findings.AddInBody(IssueCode::scaleSigns, chunk, offsetof(KTANode, scale),
                           {"scale", Listed(node.scale), "parts of one sign"},
                           TextOf(node.nodeName));
    }
}

// The matrix takes the place where the node stands, its translation, to the origin. A matrix that
// could not be inverted is the identity.
void CheckMatrixTranslation(Findings& findings, std::size_t chunk, const KTANode& node) {
    constexpr double kTolerance = 1e-3;
    const auto& m = node.inverseWorldMatrix;
    bool identity = true;
    double most = 0;
    std::array<float, 3> origin{};
    for (std::size_t column = 0; column < 3; ++column) {
        double sum = m[3][column];
        double size = std::abs(sum);
        identity = identity && m[3][column] == 0;
        for (std::size_t row = 0; row < 3; ++row) {
            sum += double{node.translation[row]} * m[row][column];
            size += std::abs(double{node.translation[row]} * m[row][column]);
            identity = identity && m[row][column] == (row == column ? 1.0f : 0.0f);
        }
        origin[column] = static_cast<float>(sum);
        most = std::max(most, std::abs(sum) / std::max(1.0, size));
    }
    if (!identity && most > kTolerance) {
        findings.AddInBody(
            IssueCode::matrixTranslation, chunk, offsetof(KTANode, inverseWorldMatrix),
            {"place of the translation", Listed(origin), "(0, 0, 0)"}, TextOf(node.nodeName));
    }
}

void CheckMatrix(Findings& findings, std::size_t chunk, const KTANode& node) {
    for (std::size_t row = 0; row < 4; ++row) {
        const float last = node.inverseWorldMatrix[row][3];
        if (last != 0 && std::isfinite(last)) {
            findings.AddInBody(
                IssueCode::matrixColumn, chunk,
                offsetof(KTANode, inverseWorldMatrix) + (row * 4 + 3) * sizeof(float),
                {"fourth number of row " + std::to_string(row), Digits(last), "0"},
                TextOf(node.nodeName));
        }
    }
    if (TextOf(node.parentName).empty()) {
        CheckMatrixTranslation(findings, chunk, node);
    }
}

void CheckHelperSize(Findings& findings, std::size_t chunk, const KTANode& node) {
    if (node.hasHelperSize == 0 && node.helperSize != 0 && std::isfinite(node.helperSize)) {
        findings.AddInBody(IssueCode::helperSize, chunk, offsetof(KTANode, helperSize),
                           {"helper size", Digits(node.helperSize), "0, the node has none"},
                           TextOf(node.nodeName));
    } else if (node.hasHelperSize != 0 && node.isBone != 0) {
        findings.AddInBody(
            IssueCode::helperSize, chunk, offsetof(KTANode, isBone),
            {"bone flag", std::to_string(node.isBone), "0, the node has a helper size"},
            TextOf(node.nodeName));
    }
}

// ---------------------------------------------------------------- meshes

// What is wrong with a mesh's vertices and triangles, item by item.
class MeshCheck {
  public:
    MeshCheck(Findings& findings, std::size_t chunk, const Mesh& mesh, std::string_view node)
        : findings_(findings), chunk_(chunk), mesh_(mesh), node_(node) {}

    void Check() {
        for (const SubMesh& subMesh : mesh_.subMeshes) {
            CheckVertices(subMesh);
            CheckFaces(subMesh);
        }
        CheckMaterials();
        for (const Alike* alike : {&positions_, &normals_, &degenerate_, &unused_, &materials_}) {
            alike->Report(findings_, chunk_, node_);
        }
    }

  private:
    std::uint64_t VertexSize() const {
        return sizeof(KTAVertex) +
               static_cast<std::uint64_t>(mesh_.pairsPerVertex) * sizeof(TextureCoordinates);
    }

    std::uint64_t VertexOffset(const SubMesh& subMesh, std::size_t vertex) const {
        const bool inFull = subMesh.materialNumber >= kFirstFullMaterialNumber;
        return subMesh.offset + sizeof(KTASubMesh) + (inFull ? sizeof(Plinth::Int32) : 0) +
               vertex * VertexSize();
    }

    std::uint64_t FaceOffset(const SubMesh& subMesh, std::size_t face) const {
        return VertexOffset(subMesh, subMesh.vertices.size()) + face * 3 * sizeof(Plinth::UInt32);
    }

    void CheckVertices(const SubMesh& subMesh) {
        for (std::size_t i = 0; i < subMesh.vertices.size(); ++i) {
            const KTAVertex& vertex = subMesh.vertices[i];
            CheckPosition(subMesh, i);
            if (!IsUnit(vertex.normal)) {
                normals_.Note(VertexOffset(subMesh, i) + offsetof(KTAVertex, normal), [&] {
                    return Words{"normal", Listed(vertex.normal), "one of length 1"};
                });
            }
        }
    }

    // Within a sub-mesh vertices of one original vertex stand one behind the other.
    void CheckPosition(const SubMesh& subMesh, std::size_t i) {
        const KTAVertex& vertex = subMesh.vertices[i];
        const KTAVertex* before = i > 0 ? &subMesh.vertices[i - 1] : nullptr;
        const bool isBeside = before != nullptr && before->originalVertex == vertex.originalVertex;
        if (!isBeside) {
            before = mesh_.subMeshes.size() > 1
                         ? firsts_.try_emplace(vertex.originalVertex, &vertex).first->second
                         : &vertex;
        }
        if (!std::equal(std::begin(vertex.position), std::end(vertex.position), before->position) &&
            AreFinite(vertex.position) && AreFinite(before->position)) {
            positions_.Note(VertexOffset(subMesh, i) + offsetof(KTAVertex, position), [&] {
                return Words{"position", Listed(vertex.position),
                             Listed(before->position) +
                                 (isBeside ? ", that of the vertex before it, of the same original "
                                             "vertex"
                                           : ", that of the same original vertex in a sub-mesh "
                                             "before it")};
            });
        }
    }

    static bool AreFinite(std::span<const float, 3> numbers) {
        return std::isfinite(numbers[0]) && std::isfinite(numbers[1]) && std::isfinite(numbers[2]);
    }

    void CheckFaces(const SubMesh& subMesh) {
        isUsed_.assign(subMesh.vertices.size(), 0);
        for (std::size_t i = 0; i < subMesh.faces.size(); ++i) {
            const auto& [a, b, c] = subMesh.faces[i];
            isUsed_[a] = isUsed_[b] = isUsed_[c] = 1;
            if (a == b || b == c || c == a) {
                degenerate_.Note(FaceOffset(subMesh, i), [&, a = a, b = b, c = c] {
                    return Words{"face",
                                 "of the vertices " + std::to_string(a) + ", " + std::to_string(b) +
                                     " and " + std::to_string(c),
                                 "three different ones"};
                });
            }
        }
        for (std::size_t i = 0; i < isUsed_.size(); ++i) {
            if (isUsed_[i] == 0) {
                unused_.Note(VertexOffset(subMesh, i), [&] {
                    return Words{"vertex " + std::to_string(i), "in no face", "one at least"};
                });
            }
        }
    }

    void CheckMaterials() {
        std::unordered_map<std::int32_t, std::size_t> seen;
        for (const SubMesh& subMesh : mesh_.subMeshes) {
            if (++seen[subMesh.materialNumber] > 1) {
                materials_.Note(subMesh.offset, [&] {
                    return Words{"material number",
                                 std::to_string(subMesh.materialNumber) + ", as before",
                                 "one sub-mesh for each material"};
                });
            }
        }
    }

    Findings& findings_;
    std::size_t chunk_;
    const Mesh& mesh_;
    std::string_view node_;
    std::vector<std::uint8_t> isUsed_;  // of a sub-mesh's vertices
    // Of each original vertex, where there are several sub-meshes.
    std::unordered_map<std::int32_t, const KTAVertex*> firsts_;
    Alike positions_{IssueCode::vertexPosition, "mesh"};
    Alike normals_{IssueCode::normalNotUnit, "mesh"};
    Alike degenerate_{IssueCode::triangleDegenerate, "mesh"};
    Alike unused_{IssueCode::vertexUnused, "mesh"};
    Alike materials_{IssueCode::subMeshTwice, "mesh"};
};

}  // namespace

void CheckNodes(Findings& findings, const NodeTable& nodes) {
    for (std::size_t i = 0; i < nodes.records.size(); ++i) {
        const KTANode& node = *nodes.records[i];
        const std::size_t chunk = nodes.chunks[i];
        if (!IsUnit(node.rotation)) {
            findings.AddInBody(IssueCode::rotationNotUnit, chunk, offsetof(KTANode, rotation),
                               {"rotation", Listed(node.rotation), "a quaternion of length 1"},
                               TextOf(node.nodeName));
        }
        CheckScale(findings, chunk, node);
        CheckMatrix(findings, chunk, node);
        CheckHelperSize(findings, chunk, node);
    }
}

void CheckMaterials(Findings& findings) {
    const std::vector<Chunk>& chunks = findings.TheFile().chunks;
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        const auto* layer = chunks[i].As<KTAMaterialLayer>();
        if (layer == nullptr) {
            continue;
        }
        const std::string_view texture = TextOf(layer->textureFileName);
        if (texture.empty()) {
            findings.AddInBody(IssueCode::textureEmpty, i, 0,
                               {"texture file name", "empty", "the name of a file"});
        } else if (texture.find_first_of("/\\") != std::string_view::npos) {
            findings.AddInBody(IssueCode::texturePath, i, 0,
                               {"texture file name", InQuotes(texture), "a name without directory"},
                               texture);
        }
    }
}

void CheckMeshes(Findings& findings, const NodeTable& nodes) {
    const std::vector<Chunk>& chunks = findings.TheFile().chunks;
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        if (const auto* mesh = chunks[i].As<Mesh>()) {
            MeshCheck(findings, i, *mesh, nodes.NameOfNumber(mesh->head.nodeNumber)).Check();
        }
    }
}

}  // namespace kta
