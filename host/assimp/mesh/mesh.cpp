#include "host/assimp/mesh/mesh.h"

#include <tsl/robin_map.h>
#include <tsl/robin_set.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <span>
#include <string>
#include <utility>

#include "host/assimp/imported_scene.h"
#include "host/assimp/mesh/smoothing_groups.h"
#include "host/assimp/text.h"

namespace maxhost::import {
namespace {

// How much of a mesh is made when a step ends.
constexpr double kAppended = 0.3;
constexpr double kJoined = 0.5;
constexpr double kSmoothed = 0.9;

// ---------------------------------------------------------------- things told apart by their bits

// Spreads every bit over all (the finaliser of SplitMix64: Steele, Lea and Flood, "Fast Splittable
// Pseudorandom Number Generators", 2014). Nothing that is written depends on the hashes.
constexpr std::uint64_t Mixed(std::uint64_t bits) {
    bits += 0x9e3779b97f4a7c15;
    bits = (bits ^ (bits >> 30)) * 0xbf58476d1ce4e5b9;
    bits = (bits ^ (bits >> 27)) * 0x94d049bb133111eb;
    return bits ^ (bits >> 31);
}

template <std::size_t count>
using Bits = std::array<std::uint32_t, count>;

template <std::size_t count>
Bits<count> BitsOf(const std::array<float, count>& numbers) {
    return std::bit_cast<Bits<count>>(numbers);
}

std::uint64_t BitsOf(const scene::SkinWeight& weight) {
    const auto slot = static_cast<std::uint32_t>(weight.slot);
    return std::uint64_t{slot} << 32 | std::bit_cast<std::uint32_t>(weight.weight);
}

struct HashOfBits {
    std::size_t operator()(const Bits<2>& bits) const {
        return Mixed(std::uint64_t{bits[1]} << 32 | bits[0]);
    }
    std::size_t operator()(const Bits<3>& bits) const {
        return Mixed(Mixed(std::uint64_t{bits[1]} << 32 | bits[0]) + bits[2]);
    }
};

// ---------------------------------------------------------------- one vertex out of several

// Source vertices are one where their positions are bit for bit the same, their weights and points
// of morph channels too, and with `byNormal` their normals.
struct VertexHash {
    const SourceVertices* source;
    bool byNormal;

    std::size_t operator()(std::uint32_t vertex) const {
        std::uint64_t hash = HashOfBits()(BitsOf(source->positions[vertex]));
        if (byNormal) {
            hash = Mixed(hash) + HashOfBits()(BitsOf(source->normals[vertex]));
        }
        for (const scene::SkinWeight& weight : source->weights.Of(vertex)) {
            hash = Mixed(hash + BitsOf(weight));
        }
        for (const scene::MorphChannel& channel : source->channels) {
            hash = Mixed(hash) + HashOfBits()(BitsOf(channel.points[vertex]));
        }
        return hash;
    }
};

struct VertexIsSame {
    const SourceVertices* source;
    bool byNormal;

    bool operator()(std::uint32_t a, std::uint32_t b) const {
        return BitsOf(source->positions[a]) == BitsOf(source->positions[b]) &&
               (!byNormal || BitsOf(source->normals[a]) == BitsOf(source->normals[b])) &&
               HasSameWeights(a, b) &&
               std::all_of(source->channels.begin(), source->channels.end(),
                           [a, b](const scene::MorphChannel& channel) {
                               return BitsOf(channel.points[a]) == BitsOf(channel.points[b]);
                           });
    }

    bool HasSameWeights(std::uint32_t a, std::uint32_t b) const {
        const auto first = source->weights.Of(a), second = source->weights.Of(b);
        return std::equal(first.begin(), first.end(), second.begin(), second.end(),
                          [](const scene::SkinWeight& left, const scene::SkinWeight& right) {
                              return BitsOf(left) == BitsOf(right);
                          });
    }
};

struct JoinedVertices {
    std::vector<std::uint32_t> idOf;     // of each source vertex
    std::vector<std::uint32_t> firstOf;  // of each joined vertex its first source vertex, ascending
};

JoinedVertices Join(const SourceVertices& source, bool byNormal) {
    constexpr bool kStoresHash = true;
    tsl::robin_set<std::uint32_t, VertexHash, VertexIsSame, std::allocator<std::uint32_t>,
                   kStoresHash>
        firsts(source.positions.size(), VertexHash{&source, byNormal},
               VertexIsSame{&source, byNormal});
    JoinedVertices joined;
    joined.idOf.reserve(source.positions.size());
    joined.firstOf.reserve(source.positions.size());
    for (std::uint32_t i = 0; i < source.positions.size(); ++i) {
        const auto next = static_cast<std::uint32_t>(joined.firstOf.size());
        const auto [first, isNew] = firsts.insert(i);
        if (isNew) {
            joined.firstOf.push_back(i);
        }
        joined.idOf.push_back(isNew ? next : joined.idOf[*first]);
    }
    return joined;
}

// ---------------------------------------------------------------- map channels

// A map channel in the making: pairs that are bit for bit the same become one map vertex.
class ChannelBuilder {
  public:
    // Makes room for as many faces. Vertices get theirs when there turn out to be many: a channel
    // may repeat a few pairs, and the room takes time to make.
    void Reserve(std::size_t vertices, std::size_t faces) {
        mostVertices_ = vertices;
        channel_.faces.reserve(faces);
    }

    std::uint32_t VertexOf(const scene::Vec2& pair) {
        const auto next = static_cast<std::uint32_t>(channel_.vertices.size());
        const auto [known, isNew] = ids_.try_emplace(BitsOf(pair), next);
        if (!isNew) {
            return known.value();
        }
        channel_.vertices.push_back(pair);
        constexpr std::size_t kMany = 16;  // a share of the most
        if (channel_.vertices.size() == mostVertices_ / kMany + 1) {
            channel_.vertices.reserve(mostVertices_);
            ids_.reserve(mostVertices_);
        }
        return next;
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
    std::size_t mostVertices_ = 0;
    tsl::robin_map<Bits<2>, std::uint32_t, HashOfBits> ids_;  // of map vertices
};

bool HasThirdCoordinate(const aiMesh& piece, int uv) {
    const aiVector3D* const set = piece.mTextureCoords[uv];
    return std::any_of(set, set + piece.mNumVertices, [](const aiVector3D& v) { return v.z != 0; });
}

// ---------------------------------------------------------------- the mesh

// How much a node's pieces have, which its mesh has at most.
struct Sizes {
    std::size_t vertices = 0, faces = 0;
};

class MeshBuilder {
  public:
    MeshBuilder(const MeshSource& source, std::size_t node, const Sizes& most)
        : warnings_(source.warnings),
          isMirrored_(source.tree.nodes[node].geometric.value_or(Matrix4()).Determinant() < 0),
          most_(most),
          vertices_(source, node, most.vertices) {
        faces_.reserve(most.faces);
    }

    // Appends the piece's triangles, whose vertices have to come next, and returns how many they
    // are; warns of all that the piece has beside them. `name` is the piece's for messages.
    std::size_t AppendTriangles(const aiMesh& piece, const std::string& name);

    // Appends all else of the piece, whose triangles came last and get this material id.
    void Append(const aiMesh& piece, const std::string& name, std::size_t triangles,
                std::uint16_t material);

    // The mesh with its modifiers.
    NodeMesh Finish(const std::function<void(double share)>& report);

  private:
    void AddChannel(const aiMesh& piece, int uv, std::span<const scene::Face> triangles,
                    std::size_t& notFinite);
    std::vector<std::uint32_t> JoinVertices(const SourceVertices& source, bool byNormal,
                                            scene::Mesh& mesh) const;

    ImportWarnings& warnings_;
    const bool isMirrored_;
    const Sizes most_;
    NodeVertices vertices_;
    std::vector<scene::Face> faces_;  // of source vertices
    std::map<int, ChannelBuilder> channels_;
};

void MeshBuilder::Append(const aiMesh& piece, const std::string& name, std::size_t triangles,
                         std::uint16_t material) {
    const std::span<scene::Face> own = std::span(faces_).last(triangles);
    std::size_t notFinite = 0, cutSets = 0;
    vertices_.Append(piece, name, notFinite);
    for (int uv = 0; uv < AI_MAX_NUMBER_OF_TEXTURECOORDS; ++uv) {
        if (piece.mTextureCoords[uv]) {
            AddChannel(piece, uv, own, notFinite);
            cutSets += HasThirdCoordinate(piece, uv) ? 1 : 0;
        }
    }
    warnings_.Add(LossCode::textureThirdCoordinate, "mesh " + name, cutSets);
    for (scene::Face& triangle : own) {
        triangle.material = material;
    }
    warnings_.Add(LossCode::numberNotFinite, "mesh " + name, notFinite);
}

// The map faces of the piece, whose vertices are there already and whose triangles came last.
void MeshBuilder::AddChannel(const aiMesh& piece, int uv, std::span<const scene::Face> triangles,
                             std::size_t& notFinite) {
    ChannelBuilder& channel = channels_[uv + 1];
    channel.Reserve(most_.vertices, most_.faces);
    channel.FillUp(faces_.size() - triangles.size());
    std::vector<std::uint32_t> ids(piece.mNumVertices);
    for (unsigned i = 0; i < piece.mNumVertices; ++i) {
        const aiVector3D& coordinate = piece.mTextureCoords[uv][i];
        ids[i] = channel.VertexOf(
            {FiniteFloat(coordinate.x, notFinite), FiniteFloat(coordinate.y, notFinite)});
    }
    const std::size_t first = vertices_.Count() - piece.mNumVertices;
    for (const scene::Face& triangle : triangles) {
        channel.AddFace(
            {ids[triangle.v[0] - first], ids[triangle.v[1] - first], ids[triangle.v[2] - first]});
    }
}

// Returns the source vertex of each vertex.
std::vector<std::uint32_t> MeshBuilder::JoinVertices(const SourceVertices& source, bool byNormal,
                                                     scene::Mesh& mesh) const {
    JoinedVertices joined = Join(source, byNormal);
    mesh.vertices.clear();
    mesh.vertices.reserve(joined.firstOf.size());
    for (const std::uint32_t first : joined.firstOf) {
        const auto id = static_cast<std::uint32_t>(mesh.vertices.size());
        mesh.vertices.push_back(source.positions[first]);
        if (byNormal && source.normals[first] != scene::Vec3{}) {
            mesh.normals.emplace_hint(mesh.normals.end(), id, source.normals[first]);
        }
    }
    mesh.faces = faces_;
    for (scene::Face& face : mesh.faces) {
        face.v = {joined.idOf[face.v[0]], joined.idOf[face.v[1]], joined.idOf[face.v[2]]};
    }
    return std::move(joined.firstOf);
}

NodeMesh MeshBuilder::Finish(const std::function<void(double)>& report) {
    NodeMesh made;
    const auto mesh = std::make_shared<scene::Mesh>();
    for (auto& [number, channel] : channels_) {
        channel.FillUp(faces_.size());
        mesh->channels.emplace(number, channel.Take());
    }
    channels_.clear();
    const SourceVertices& source = vertices_.Finish();
    std::vector<std::uint32_t> vertices = JoinVertices(source, false, *mesh);
    report(kJoined);
    if (!source.normals.empty() && !FindSmoothingGroups(*mesh, source.normals, faces_)) {
        vertices = JoinVertices(source, true, *mesh);
    }
    report(kSmoothed);
    made.modifiers = vertices_.ModifiersFor(vertices);
    made.mesh = mesh;
    return made;
}

std::size_t MeshBuilder::AppendTriangles(const aiMesh& piece, const std::string& name) {
    const std::string subject = "mesh " + name;
    std::size_t pointsAndLines = 0, polygons = 0, outOfRange = 0;
    const unsigned vertices = piece.mVertices ? piece.mNumVertices : 0;
    const auto first = static_cast<std::uint32_t>(vertices_.Count());
    // A geometric transform that mirrors turns the faces over. A node's matrix or bones that
    // mirror do not, so that an exported skin, which is in the world, winds as the file's.
    const int second = isMirrored_ ? 2 : 1;
    const std::size_t before = faces_.size();
    for (unsigned i = 0; piece.mFaces && i < piece.mNumFaces; ++i) {
        const aiFace& face = piece.mFaces[i];
        const unsigned* const v = face.mIndices;
        if (face.mNumIndices != 3 || !v) {
            ++(face.mNumIndices > 3 ? polygons : pointsAndLines);
        } else if (std::max({v[0], v[1], v[2]}) >= vertices) {
            ++outOfRange;
        } else {
            faces_.push_back({{first + v[0], first + v[second], first + v[3 - second]}, 0, 0});
        }
    }
    warnings_.AddOf(LossCode::verticesWithoutFaces, "mesh", name,
                    piece.mFaces && piece.mNumFaces > 0 ? 0 : vertices);
    warnings_.Add(LossCode::pointsAndLines, subject, pointsAndLines);
    warnings_.Add(LossCode::polygonNotCut, subject, polygons);
    warnings_.Add(LossCode::faceIndexOutOfRange, subject, outOfRange);
    warnings_.Add(LossCode::vertexColors, subject, piece.GetNumColorChannels());
    return faces_.size() - before;
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

Sizes SizesOf(const aiScene& scene, const aiNode& node) {
    constexpr std::size_t kMostVertices = std::numeric_limits<std::uint32_t>::max();
    Sizes sizes;
    for (unsigned i = 0; i < node.mNumMeshes; ++i) {
        if (node.mMeshes[i] < scene.mNumMeshes) {
            const aiMesh& piece = *scene.mMeshes[node.mMeshes[i]];
            sizes.vertices += piece.mNumVertices;
            sizes.faces += piece.mFaces ? piece.mNumFaces : 0;
            if (sizes.vertices > kMostVertices || sizes.faces > kMostVertices / 3) {
                throw ImportError("a node has more than 4294967295 vertices or 1431655765 faces");
            }
        }
    }
    return sizes;
}

}  // namespace

NodeMesh MeshFactory::Of(std::size_t index) {
    const SourceNode& node = source_.tree.nodes[index];
    const aiNode& shown = *node.node;
    Key key;
    key.first.assign(shown.mMeshes, shown.mMeshes + shown.mNumMeshes);
    if (node.geometric) {
        key.second.assign((*node.geometric)[0], (*node.geometric)[0] + 16);
    }
    for (const unsigned piece : key.first) {
        if (piece < source_.scene.mNumMeshes) {
            const aiMesh& mesh = *source_.scene.mMeshes[piece];
            if (mesh.mNumBones > 0) {
                return Build(index);
            }
            const std::vector<double> weights = source_.pose.MorphWeightsOf(index, mesh).values;
            key.second.insert(key.second.end(), weights.begin(), weights.end());
        }
    }
    const auto found = made_.find(key);
    return found != made_.end() ? found->second
                                : made_.emplace(std::move(key), Build(index)).first->second;
}

NodeMesh MeshFactory::Build(std::size_t index) {
    const aiScene& scene = source_.scene;
    const aiNode& node = *source_.tree.nodes[index].node;
    MeshBuilder builder(source_, index, SizesOf(scene, node));
    std::vector<unsigned> materials;
    std::map<unsigned, std::uint16_t> ids;
    bool isColored = false;
    for (unsigned i = 0; i < node.mNumMeshes; ++i) {
        const unsigned number = node.mMeshes[i];
        if (number >= scene.mNumMeshes) {
            source_.warnings.Add(LossCode::missingMesh, "node " + Quoted(TextOf(node.mName)));
            continue;
        }
        const aiMesh& piece = *scene.mMeshes[number];
        isColored = isColored || piece.GetNumColorChannels() > 0;
        const std::string name = ShownName(piece, number);
        const std::size_t triangles = builder.AppendTriangles(piece, name);
        if (triangles > 0) {
            builder.Append(piece, name, triangles, IdOf(piece.mMaterialIndex, materials, ids));
        }
        source_.reportMesh(kAppended * (i + 1) / node.mNumMeshes);
    }
    coloredMeshes_ += isColored ? 1 : 0;
    NodeMesh made = builder.Finish(source_.reportMesh);
    made.materials = std::move(materials);
    return made;
}

}  // namespace maxhost::import
