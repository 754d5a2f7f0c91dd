#include "host/import/assimp_mesh.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include "host/import/assimp_import.h"
#include "host/import/assimp_text.h"

namespace maxhost::import {
namespace {

class MeshBuilder {
  public:
    // `geometric` moves the vertices before the turn; both must outlive the builder.
    MeshBuilder(const AxisTurn& turn, const std::optional<Matrix4>& geometric,
                ImportWarnings& warnings)
        : turn_(turn), geometric_(geometric), warnings_(warnings) {}

    // The piece's triangles, with their places in the whole mesh, if the piece comes next; warns of
    // all that the piece has beside them. `name` is the piece's for messages.
    std::vector<scene::Face> TrianglesOf(const aiMesh& piece, const std::string& name);

    // Appends the piece with these triangles and this material id.
    void Append(const aiMesh& piece, const std::string& name,
                const std::vector<scene::Face>& triangles, std::uint16_t material) {
        notFinite_ = 0;
        const std::size_t firstFace = mesh_->faces.size();
        mesh_->faces.insert(mesh_->faces.end(), triangles.begin(), triangles.end());
        for (std::size_t i = firstFace; i < mesh_->faces.size(); ++i) {
            mesh_->faces[i].material = material;
        }
        for (int uv = 0; uv < AI_MAX_NUMBER_OF_TEXTURECOORDS; ++uv) {
            if (piece.mTextureCoords[uv]) {
                AddChannel(piece, uv, firstFace);
            }
        }
        AddVertices(piece);
        warnings_.Add("numbers that are not finite replaced by 0", "mesh " + name, notFinite_);
    }

    std::shared_ptr<const scene::Mesh> Finish() {
        for (auto& [number, channel] : mesh_->channels) {
            FillUp(channel, mesh_->faces.size());
        }
        return std::move(mesh_);
    }

  private:
    float Finite(double number) {
        if (std::abs(number) <= std::numeric_limits<float>::max()) {
            return static_cast<float>(number);
        }
        ++notFinite_;
        return 0;
    }

    void AddVertices(const aiMesh& piece) {
        for (unsigned i = 0; i < piece.mNumVertices; ++i) {
            const aiVector3D& v = piece.mVertices[i];
            scene::Vec3 finite{Finite(v.x), Finite(v.y), Finite(v.z)};
            if (geometric_) {
                const auto moved =
                    *geometric_ * aiVector3t<double>(finite[0], finite[1], finite[2]);
                finite = {Finite(moved.x), Finite(moved.y), Finite(moved.z)};
            }
            mesh_->vertices.push_back(turn_.Apply(finite));
        }
    }

    // The map faces of the piece, whose faces are those from `firstFace` on; its vertices are not
    // there yet.
    void AddChannel(const aiMesh& piece, int uv, std::size_t firstFace) {
        scene::MapChannel& channel = mesh_->channels[uv + 1];
        FillUp(channel, firstFace);
        const auto shift = static_cast<std::uint32_t>(channel.vertices.size()) -
                           static_cast<std::uint32_t>(mesh_->vertices.size());
        for (std::size_t i = firstFace; i < mesh_->faces.size(); ++i) {
            const auto& v = mesh_->faces[i].v;
            channel.faces.push_back({v[0] + shift, v[1] + shift, v[2] + shift});
        }
        for (unsigned i = 0; i < piece.mNumVertices; ++i) {
            const aiVector3D& coordinate = piece.mTextureCoords[uv][i];
            channel.vertices.push_back({Finite(coordinate.x), Finite(coordinate.y)});
        }
    }

    // Faces of pieces without the channel get the coordinates (0, 0).
    static void FillUp(scene::MapChannel& channel, std::size_t faces) {
        if (channel.faces.size() < faces) {
            const auto zero = static_cast<std::uint32_t>(channel.vertices.size());
            channel.vertices.push_back({0, 0});
            channel.faces.resize(faces, {zero, zero, zero});
        }
    }

    const AxisTurn& turn_;
    const std::optional<Matrix4>& geometric_;
    ImportWarnings& warnings_;
    std::shared_ptr<scene::Mesh> mesh_ = std::make_shared<scene::Mesh>();
    std::size_t notFinite_ = 0;
};

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
    const auto first = static_cast<std::uint32_t>(mesh_->vertices.size());
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
    warnings_.AddOf("normals left out", "mesh", name, piece.HasNormals() ? 1 : 0);
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
    std::size_t vertices = 0;
    for (unsigned i = 0; i < node.node->mNumMeshes; ++i) {
        const unsigned index = node.node->mMeshes[i];
        if (index >= scene_.mNumMeshes) {
            warnings_.Add("references to meshes that do not exist left out",
                          "node " + Quoted(TextOf(node.node->mName)));
            continue;
        }
        const aiMesh& piece = *scene_.mMeshes[index];
        vertices += piece.mNumVertices;
        if (vertices > std::numeric_limits<std::uint32_t>::max()) {
            throw ImportError("a node has more than 4294967295 vertices");
        }
        const std::string name = ShownName(piece, index);
        const std::vector<scene::Face> triangles = builder.TrianglesOf(piece, name);
        if (!triangles.empty()) {
            builder.Append(piece, name, triangles, IdOf(piece.mMaterialIndex, made.materials, ids));
        }
    }
    made.mesh = builder.Finish();
    return made;
}

}  // namespace maxhost::import
