#include "host/import/assimp_mesh.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <utility>

#include "host/import/assimp_import.h"
#include "host/import/assimp_text.h"
#include "host/import/id_table.h"
#include "host/import/smoothing_groups.h"
#include "host/import/source_vertices.h"

namespace maxhost::import {
namespace {

// ---------------------------------------------------------------- parts of a mesh

// Takes normals where the matrix takes positions, up to their length.
struct NormalTurn {
    explicit NormalTurn(const Matrix4& m) {
        const double side = m.Determinant() < 0 ? -1 : 1;
        for (int row = 0; row < 3; ++row) {
            for (int column = 0; column < 3; ++column) {
                const int r1 = (row + 1) % 3, r2 = (row + 2) % 3;
                const int c1 = (column + 1) % 3, c2 = (column + 2) % 3;
                cofactors[row][column] = side * (m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1]);
            }
        }
    }

    aiVector3t<double> Apply(const aiVector3t<double>& n) const {
        const auto row = [&](std::size_t i) {
            return cofactors[i][0] * n.x + cofactors[i][1] * n.y + cofactors[i][2] * n.z;
        };
        return {row(0), row(1), row(2)};
    }

    std::array<std::array<double, 3>, 3> cofactors;
};

// A map channel in the making: pairs that are bit for bit the same become one map vertex.
class ChannelBuilder {
  public:
    std::uint32_t VertexOf(const scene::Vec2& pair) {
        const auto next = static_cast<std::uint32_t>(channel_.vertices.size());
        const std::uint32_t id = ids_.FindOrAdd(HashOf(pair), next, [&](std::uint32_t known) {
            return BitsOf(channel_.vertices[known]) == BitsOf(pair);
        });
        if (id == next) {
            channel_.vertices.push_back(pair);
        }
        return id;
    }

    // Faces of pieces without the channel get the coordinates (0, 0).
    void FillUp(std::size_t faces) {
        if (channel_.faces.size() < faces) {
            const std::uint32_t zero = VertexOf({0, 0});
            channel_.faces.resize(faces, {zero, zero, zero});
        }
    }

    void AddFace(const std::array<std::uint32_t, 3>& corners) { channel_.faces.push_back(corners); }
    scene::MapChannel Take() { return std::move(channel_); }

  private:
    scene::MapChannel channel_;
    IdTable ids_;  // of map vertices
};

bool HasThirdCoordinate(const aiMesh& piece, int uv) {
    const aiVector3D* const set = piece.mTextureCoords[uv];
    return std::any_of(set, set + piece.mNumVertices, [](const aiVector3D& v) { return v.z != 0; });
}

// ---------------------------------------------------------------- the mesh

class MeshBuilder {
  public:
    // `geometric` moves the vertices before the turn; both must outlive the builder.
    MeshBuilder(const AxisTurn& turn, const std::optional<Matrix4>& geometric,
                ImportWarnings& warnings)
        : turn_(turn), geometric_(geometric), warnings_(warnings) {
        if (geometric_) {
            normalTurn_.emplace(*geometric_);
        }
    }

    // The piece's triangles, with their places among the source vertices, if the piece comes next;
    // warns of all that the piece has beside them. `name` is the piece's for messages.
    std::vector<scene::Face> TrianglesOf(const aiMesh& piece, const std::string& name);

    // Appends the piece with these triangles and this material id.
    void Append(const aiMesh& piece, const std::string& name,
                const std::vector<scene::Face>& triangles, std::uint16_t material);

    std::shared_ptr<const scene::Mesh> Finish();

  private:
    float Finite(double number) {
        if (std::abs(number) <= std::numeric_limits<float>::max()) {
            return static_cast<float>(number);
        }
        ++notFinite_;
        return 0;
    }

    void AddPositions(const aiMesh& piece);
    void AddNormals(const aiMesh& piece, const std::string& name);
    void AddChannel(const aiMesh& piece, int uv, const std::vector<scene::Face>& triangles);
    std::optional<scene::Vec3> NormalOf(const aiVector3D& n) const;
    void JoinVertices(scene::Mesh& mesh, bool byNormal) const;

    const AxisTurn& turn_;
    const std::optional<Matrix4>& geometric_;
    std::optional<NormalTurn> normalTurn_;
    ImportWarnings& warnings_;
    SourceVertices source_;
    std::vector<scene::Face> faces_;  // of source vertices
    std::map<int, ChannelBuilder> channels_;
    std::size_t notFinite_ = 0;
};

void MeshBuilder::Append(const aiMesh& piece, const std::string& name,
                         const std::vector<scene::Face>& triangles, std::uint16_t material) {
    notFinite_ = 0;
    std::size_t cutSets = 0;
    for (int uv = 0; uv < AI_MAX_NUMBER_OF_TEXTURECOORDS; ++uv) {
        if (piece.mTextureCoords[uv]) {
            AddChannel(piece, uv, triangles);
            cutSets += HasThirdCoordinate(piece, uv) ? 1 : 0;
        }
    }
    warnings_.Add("third texture coordinates left out", "mesh " + name, cutSets);
    for (const scene::Face& triangle : triangles) {
        faces_.push_back({triangle.v, 0, material});
    }
    source_.marks.Append(piece, source_.positions.size());
    AddPositions(piece);
    AddNormals(piece, name);
    warnings_.Add("numbers that are not finite replaced by 0", "mesh " + name, notFinite_);
}

void MeshBuilder::AddPositions(const aiMesh& piece) {
    for (unsigned i = 0; i < piece.mNumVertices; ++i) {
        const aiVector3D& v = piece.mVertices[i];
        scene::Vec3 finite{Finite(v.x), Finite(v.y), Finite(v.z)};
        if (geometric_) {
            const auto moved = *geometric_ * aiVector3t<double>(finite[0], finite[1], finite[2]);
            finite = {Finite(moved.x), Finite(moved.y), Finite(moved.z)};
        }
        source_.positions.push_back(turn_.Apply(finite));
    }
}

// None where the numbers have no direction.
std::optional<scene::Vec3> MeshBuilder::NormalOf(const aiVector3D& n) const {
    aiVector3t<double> normal(n.x, n.y, n.z);
    if (normalTurn_) {
        normal = normalTurn_->Apply(normal);
    }
    const double length = std::hypot(normal.x, normal.y, normal.z);
    if (!(length > 0) || !std::isfinite(length)) {
        return std::nullopt;
    }
    return turn_.Apply({static_cast<float>(normal.x / length),
                        static_cast<float>(normal.y / length),
                        static_cast<float>(normal.z / length)});
}

// The piece's positions are there already.
void MeshBuilder::AddNormals(const aiMesh& piece, const std::string& name) {
    const std::size_t end = source_.positions.size();
    if (piece.mNormals) {
        source_.normals.resize(end - piece.mNumVertices);
        std::size_t without = 0;
        for (unsigned i = 0; i < piece.mNumVertices; ++i) {
            const std::optional<scene::Vec3> normal = NormalOf(piece.mNormals[i]);
            without += normal ? 0 : 1;
            source_.normals.push_back(normal.value_or(scene::Vec3{}));
        }
        warnings_.AddOf("normals without a direction left out", "mesh", name, without);
    } else if (!source_.normals.empty()) {
        source_.normals.resize(end);
    }
}

// The map faces of the piece, whose triangles come next.
void MeshBuilder::AddChannel(const aiMesh& piece, int uv,
                             const std::vector<scene::Face>& triangles) {
    ChannelBuilder& channel = channels_[uv + 1];
    channel.FillUp(faces_.size());
    std::vector<std::uint32_t> ids(piece.mNumVertices);
    for (unsigned i = 0; i < piece.mNumVertices; ++i) {
        const aiVector3D& coordinate = piece.mTextureCoords[uv][i];
        ids[i] = channel.VertexOf({Finite(coordinate.x), Finite(coordinate.y)});
    }
    const std::size_t first = source_.positions.size();
    for (const scene::Face& triangle : triangles) {
        channel.AddFace(
            {ids[triangle.v[0] - first], ids[triangle.v[1] - first], ids[triangle.v[2] - first]});
    }
}

void MeshBuilder::JoinVertices(scene::Mesh& mesh, bool byNormal) const {
    const JoinedVertices joined = Join(source_, byNormal);
    mesh.vertices.clear();
    mesh.vertices.reserve(joined.firstOf.size());
    for (const std::uint32_t first : joined.firstOf) {
        const auto id = static_cast<std::uint32_t>(mesh.vertices.size());
        mesh.vertices.push_back(source_.positions[first]);
        if (byNormal && source_.normals[first] != scene::Vec3{}) {
            mesh.normals.emplace_hint(mesh.normals.end(), id, source_.normals[first]);
        }
    }
    mesh.faces = faces_;
    for (scene::Face& face : mesh.faces) {
        face.v = {joined.idOf[face.v[0]], joined.idOf[face.v[1]], joined.idOf[face.v[2]]};
    }
}

std::shared_ptr<const scene::Mesh> MeshBuilder::Finish() {
    const auto mesh = std::make_shared<scene::Mesh>();
    for (auto& [number, channel] : channels_) {
        channel.FillUp(faces_.size());
        mesh->channels.emplace(number, channel.Take());
    }
    channels_.clear();
    JoinVertices(*mesh, false);
    if (!source_.normals.empty() && !FindSmoothingGroups(*mesh, source_.normals, faces_)) {
        JoinVertices(*mesh, true);
    }
    return mesh;
}

std::size_t CountWeights(const aiMesh& piece) {
    std::size_t count = 0;
    for (unsigned i = 0; i < piece.mNumBones; ++i) {
        count += piece.mBones[i]->mNumWeights;
    }
    return count;
}

std::vector<scene::Face> MeshBuilder::TrianglesOf(const aiMesh& piece, const std::string& name) {
    const std::string subject = "mesh " + name;
    std::size_t pointsAndLines = 0, polygons = 0, outOfRange = 0;
    const unsigned vertices = piece.mVertices ? piece.mNumVertices : 0;
    const auto first = static_cast<std::uint32_t>(source_.positions.size());
    // A mirroring that the vertices take on turns the faces over; one that stays in a node's
    // matrix does not.
    const int second = geometric_ && geometric_->Determinant() < 0 ? 2 : 1;
    std::vector<scene::Face> triangles;
    triangles.reserve(piece.mFaces ? piece.mNumFaces : 0);
    for (unsigned i = 0; piece.mFaces && i < piece.mNumFaces; ++i) {
        const aiFace& face = piece.mFaces[i];
        const unsigned* const v = face.mIndices;
        if (face.mNumIndices != 3 || !v) {
            ++(face.mNumIndices > 3 ? polygons : pointsAndLines);
        } else if (std::max({v[0], v[1], v[2]}) >= vertices) {
            ++outOfRange;
        } else {
            triangles.push_back({{first + v[0], first + v[second], first + v[3 - second]}, 0, 0});
        }
    }
    warnings_.AddOf("vertices without faces left out", "mesh", name,
                    piece.mFaces && piece.mNumFaces > 0 ? 0 : vertices);
    warnings_.Add("points and lines left out", subject, pointsAndLines);
    warnings_.Add("polygons that could not be cut into triangles left out", subject, polygons);
    warnings_.Add("faces with a vertex number out of range left out", subject, outOfRange);
    warnings_.Add("vertex colour sets left out", subject, piece.GetNumColorChannels());
    warnings_.Add("bone weights left out", subject, CountWeights(piece));
    warnings_.Add("morph targets left out", subject, piece.mNumAnimMeshes);
    return triangles;
}

// The material id of faces of `material`, the next free one at its first appearance.
std::uint16_t IdOf(unsigned material, std::vector<unsigned>& materials,
                   std::map<unsigned, std::uint16_t>& ids) {
    const auto [found, isNew] =
        ids.try_emplace(material, static_cast<std::uint16_t>(materials.size()));
    if (isNew) {
        if (materials.size() > std::numeric_limits<std::uint16_t>::max()) {
            throw ImportError("a node uses more than 65536 materials");
        }
        materials.push_back(material);
    }
    return found->second;
}

// For messages; a mesh without a name goes by its position.
std::string ShownName(const aiMesh& mesh, unsigned index) {
    const std::string name = TextOf(mesh.mName);
    return name.empty() ? std::to_string(index) : Quoted(name);
}

}  // namespace

const NodeMesh& MeshFactory::Of(const SourceNode& node) {
    Key key;
    key.first.assign(node.node->mMeshes, node.node->mMeshes + node.node->mNumMeshes);
    if (node.geometric) {
        key.second.assign((*node.geometric)[0], (*node.geometric)[0] + 16);
    }
    const auto found = made_.find(key);
    return found != made_.end() ? found->second
                                : made_.emplace(std::move(key), Build(node)).first->second;
}

NodeMesh MeshFactory::Build(const SourceNode& node) {
    NodeMesh made;
    MeshBuilder builder(turn_, node.geometric, warnings_);
    std::map<unsigned, std::uint16_t> ids;
    constexpr std::size_t kMostVertices = std::numeric_limits<std::uint32_t>::max();
    std::size_t vertices = 0, faces = 0;
    bool isColored = false;
    for (unsigned i = 0; i < node.node->mNumMeshes; ++i) {
        const unsigned index = node.node->mMeshes[i];
        if (index >= scene_.mNumMeshes) {
            warnings_.Add("references to meshes that do not exist left out",
                          "node " + Quoted(TextOf(node.node->mName)));
            continue;
        }
        const aiMesh& piece = *scene_.mMeshes[index];
        vertices += piece.mNumVertices;
        faces += piece.mNumFaces;
        if (vertices > kMostVertices || faces > kMostVertices / 3) {
            throw ImportError("a node has more than 4294967295 vertices or 1431655765 faces");
        }
        isColored = isColored || piece.GetNumColorChannels() > 0;
        const std::string name = ShownName(piece, index);
        const std::vector<scene::Face> triangles = builder.TrianglesOf(piece, name);
        if (!triangles.empty()) {
            builder.Append(piece, name, triangles, IdOf(piece.mMaterialIndex, made.materials, ids));
        }
    }
    coloredMeshes_ += isColored ? 1 : 0;
    made.mesh = builder.Finish();
    return made;
}

}  // namespace maxhost::import
