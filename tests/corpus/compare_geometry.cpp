// Whether an actor file holds the geometry of the model that it was exported from. The model is
// what Assimp gives the importer; both are compared in world space, triangle by triangle in order:
// positions, normals, texture coordinates, materials, and where each blend shape alone takes the
// vertices. Shares no code with the importer's
// conversion, the exporter or the toolkit. An animated model is compared as its first animation
// starts. Exit status: 0 equal, and a line of figures; 1 not, and
// a line with the first difference; 2 bad usage.
#include <assimp/scene.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <map>
#include <string>
#include <system_error>
#include <unordered_map>
#include <utility>
#include <vector>

#include <assimp/Importer.hpp>

#include "host/assimp/import.h"
#include "tests/corpus/actor_file.h"
#include "tests/corpus/matrices.h"
#include "tests/corpus/model.h"
#include "tests/corpus/model_nodes.h"
#include "tests/corpus/model_skin.h"
#include "tests/corpus/model_triangles.h"
#include "tests/corpus/rebuilt_scene.h"

namespace {

using namespace corpus;

constexpr double kPositionTolerance = 2e-5;  // of the largest coordinate of the mesh in the world
constexpr double kNormalTolerance = 1;       // degrees
constexpr double kMorphTolerance = 1e-3;     // of the model's bounding diagonal

// ---------------------------------------------------------------- the comparison

double Degrees(const Vector& a, const Vector& b) {
    return std::atan2((a ^ b).Length(), a * b) * 180 / 3.14159265358979323846;
}

class Comparison {
  public:
    Comparison(const std::string& model, const aiScene& scene, const Actor& actor)
        : modelFile_(model),
          scene_(scene),
          actor_(InOrder(scene, actor)),
          view_(ViewOf(scene)),
          skin_(scene, 0) {}

    void Run() {
        const std::vector<MeshNode> nodes = NodesWithTriangles(scene_);
        ExpectEqual("the number of meshes", actor_.meshes.size(), nodes.size());
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            mesh_ = "mesh " + std::to_string(i) + " (" + nodes[i].node->mName.C_Str() + "): ";
            CompareMesh(nodes[i], actor_.meshes[i]);
        }
    }

    void Print() const {
        std::cout << actor_.meshes.size() << " meshes, " << triangles_ << " triangles, positions "
                  << worstPosition_ << ", normals " << worstNormal_ << " degrees, " << flat_
                  << " flat";
        if (morphPoints_ > 0) {
            std::cout << ", " << morphPoints_ << " corners of blend shapes, off by " << worstMorph_
                      << " of the diagonal";
        }
        std::cout << '\n';
    }

  private:
    static Actor InOrder(const aiScene& scene, const Actor& actor) {
        const bool isInOrder = std::none_of(actor.nodes.begin(), actor.nodes.end(),
                                            [](const ActorNode& node) { return node.isAhead; });
        return isInOrder
                   ? actor
                   : InOrderOf(ModelPoses(scene, MatchNodes(scene, actor.nodes.size()), 0), actor);
    }

    void CompareMesh(const MeshNode& model, const ActorMesh& mesh) {
        const auto groups = TrianglesOf(scene_, *model.node);
        ExpectEqual(mesh_ + "the number of sub-meshes", mesh.subMeshes.size(), groups.size());
        model_ = &model;
        places_.clear();
        isSkinned_ = !mesh.weights.empty();
        actorInverse_ = actor_.nodes.at(static_cast<std::size_t>(mesh.node)).inverseWorld;
        isTurned_ = isSkinned_ && !ScalesEvenly(model.world);
        isFlat_ = IsFlat(model.world) || IsFlat(actorInverse_);
        flat_ += isFlat_ ? 1 : 0;
        actorWorld_ = isFlat_ ? Matrix() : Inverse(actorInverse_);
        FindChannels(groups);
        ExpectEqual(mesh_ + "the number of map channels", mesh.channels,
                    static_cast<int>(channels_.size()));
        for (std::size_t i = 0; i < groups.size(); ++i) {
            const int material = mesh.subMeshes[i].material;
            if (material < 0 || material >= static_cast<int>(actor_.materials.size())) {
                Differ(mesh_ + "the material is " + std::to_string(material) + " of " +
                       std::to_string(actor_.materials.size()));
            }
            CompareMaterial(material, groups[i].first);
            CompareTriangles(mesh.subMeshes[i], groups[i].second);
        }
        CompareMorphs(mesh, groups);
    }

    // The blend shapes of a node's pieces, by name and, of several of one name in a piece, by order
    // are a channel each; by piece the shape's number.
    using Shapes = std::vector<std::pair<std::string, std::map<const aiMesh*, unsigned>>>;
    Shapes ShapesOf(const aiNode& node) const {
        Shapes shapes;
        for (unsigned i = 0; i < node.mNumMeshes; ++i) {
            const aiMesh* const piece = scene_.mMeshes[node.mMeshes[i]];
            for (unsigned k = 0; k < piece->mNumAnimMeshes; ++k) {
                const std::string name = piece->mAnimMeshes[k]->mName.C_Str();
                const auto known =
                    std::find_if(shapes.begin(), shapes.end(), [&](const auto& shape) {
                        return shape.first == name && shape.second.count(piece) == 0;
                    });
                (known == shapes.end()
                     ? shapes.emplace_back(name, Shapes::value_type::second_type())
                     : *known)
                    .second[piece] = k;
            }
        }
        return shapes;
    }

    template <typename Groups>
    void CompareMorphs(const ActorMesh& mesh, const Groups& groups) {
        const Shapes shapes = ShapesOf(*model_->node);
        ExpectEqual(mesh_ + "the number of morph channels", mesh.morphs.size(), shapes.size());
        if (shapes.empty() || isFlat_) {
            return;
        }
        if (diagonal_ == 0) {
            diagonal_ =
                ModelPoses(scene_, MatchNodes(scene_, actor_.nodes.size()), 0).BoundingDiagonal();
        }
        for (std::size_t channel = 0; channel < shapes.size(); ++channel) {
            places_.clear();
            for (std::size_t i = 0; i < groups.size(); ++i) {
                CompareMorph(mesh.morphs[channel], mesh.subMeshes[i], groups[i].second,
                             shapes[channel].second);
            }
        }
        places_.clear();
    }

    void CompareMorph(const ActorMorph& morph, const ActorSubMesh& subMesh,
                      const std::vector<Triangle>& triangles,
                      const std::map<const aiMesh*, unsigned>& shapes) {
        for (std::size_t i = 0; i < triangles.size(); ++i) {
            const aiMesh& piece = *triangles[i].piece;
            std::vector<Vector>& places = places_[&piece].positions;
            if (places.empty()) {
                const auto shape = shapes.find(&piece);
                places =
                    skin_.Positions(*model_->node, piece,
                                    shape == shapes.end() ? piece.mNumAnimMeshes : shape->second);
            }
            for (unsigned k = 0; k < 3; ++k) {
                const ActorVertex& vertex = subMesh.vertices[subMesh.faces[i][k]];
                const auto& point = morph.points.at(static_cast<std::size_t>(vertex.original));
                const Vector there = actorWorld_ * Vector(point[0], point[1], point[2]);
                const unsigned index = triangles[i].face->mIndices[CornerOf(*model_, k)];
                const double error = (there - view_.InFile(places[index])).Length() / diagonal_;
                if (!(error <= kMorphTolerance)) {
                    Differ(mesh_ + "the morph " + morph.channel + " is off by " +
                           std::to_string(error) + " of the diagonal");
                }
                worstMorph_ = std::max(worstMorph_, error);
                ++morphPoints_;
            }
        }
    }

    void FindChannels(const std::vector<std::pair<unsigned, std::vector<Triangle>>>& groups) {
        std::array<bool, AI_MAX_NUMBER_OF_TEXTURECOORDS> used{};
        for (const auto& [material, triangles] : groups) {
            for (const Triangle& triangle : triangles) {
                for (unsigned i = 0; i < used.size(); ++i) {
                    used[i] = used[i] || triangle.piece->mTextureCoords[i];
                }
            }
        }
        channels_.clear();
        for (unsigned i = 0; i < used.size(); ++i) {
            if (used[i]) {
                channels_.push_back(i);
            }
        }
    }

    void CompareTriangles(const ActorSubMesh& found, const std::vector<Triangle>& expected) {
        ExpectEqual(mesh_ + "the number of triangles", found.faces.size(), expected.size());
        for (std::size_t i = 0; i < expected.size(); ++i) {
            for (unsigned k = 0; k < 3; ++k) {
                triangle_ =
                    "triangle " + std::to_string(i) + ", corner " + std::to_string(k) + ": ";
                CompareCorner(found, found.faces[i][k], *expected[i].piece,
                              expected[i].face->mIndices[CornerOf(*model_, k)]);
            }
        }
        triangles_ += expected.size();
    }

    void CompareCorner(const ActorSubMesh& subMesh, std::uint32_t at, const aiMesh& piece,
                       unsigned index) {
        const ActorVertex& vertex = subMesh.vertices[at];
        CompareCoordinates(subMesh, at, piece, index);
        if (isFlat_) {
            return;
        }
        const Vector position = view_.InFile(PlacesOf(piece).positions[index]);
        const Vector stored(vertex.position[0], vertex.position[1], vertex.position[2]);
        const Vector there = isSkinned_ ? stored : actorWorld_ * stored;
        const double size = std::max({std::abs(position.x), std::abs(position.y),
                                      std::abs(position.z), std::abs(actorWorld_.a4),
                                      std::abs(actorWorld_.b4), std::abs(actorWorld_.c4)});
        const double error = size > 0 ? (there - position).Length() / size : there.Length();
        if (!(error <= kPositionTolerance)) {
            Differ(mesh_ + triangle_ + "the position is off by " + std::to_string(error) +
                   " of its size");
        }
        worstPosition_ = std::max(worstPosition_, error);
        CompareNormal(vertex, piece, index);
    }

    struct Places {
        std::vector<Vector> positions, normals;  // in the world, the model's axes
    };

    const Places& PlacesOf(const aiMesh& piece) {
        const auto [found, isNew] = places_.try_emplace(&piece);
        if (isNew) {
            found->second = {skin_.Positions(*model_->node, piece),
                             skin_.Normals(*model_->node, piece)};
        }
        return found->second;
    }

    // The file turns a skinned mesh's normals into the world without regard to its node's scales.
    static bool ScalesEvenly(const Matrix& world) {
        const double x = Column(world, 0).Length();
        return std::abs(Column(world, 1).Length() - x) < 1e-3 * x &&
               std::abs(Column(world, 2).Length() - x) < 1e-3 * x && Share(world) > 0.999;
    }

    void CompareNormal(const ActorVertex& vertex, const aiMesh& piece, unsigned index) {
        const std::vector<Vector>& normals = PlacesOf(piece).normals;
        if (normals.empty() || isTurned_) {
            return;
        }
        const Vector expected = view_.InFile(normals[index]);
        if (!(expected.Length() > 0) || !std::isfinite(expected.Length())) {
            return;  // the file gives none
        }
        const Vector stored(vertex.normal[0], vertex.normal[1], vertex.normal[2]);
        const Vector found = isSkinned_ ? stored : TurnNormal(actorInverse_, stored);
        const double degrees = Degrees(found, expected);
        if (!(degrees <= kNormalTolerance)) {
            Differ(mesh_ + triangle_ + "the normal is off by " + std::to_string(degrees) +
                   " degrees");
        }
        worstNormal_ = std::max(worstNormal_, degrees);
    }

    // A piece without a channel that another piece of the node has shows its (0, 0).
    void CompareCoordinates(const ActorSubMesh& subMesh, std::uint32_t at, const aiMesh& piece,
                            unsigned index) {
        for (std::size_t i = 0; i < channels_.size(); ++i) {
            const aiVector3D* const set = piece.mTextureCoords[channels_[i]];
            const float u = set && std::isfinite(set[index].x) ? set[index].x : 0;
            const float v = set && std::isfinite(set[index].y) ? set[index].y : 0;
            const auto& found = subMesh.coordinates[at * channels_.size() + i];
            const std::string what = mesh_ + triangle_ + "channel " + std::to_string(i) + ": ";
            ExpectEqual(what + "u", found[0], u);
            ExpectEqual(what + "v", found[1], 1 - v);
        }
    }

    void CompareMaterial(int number, unsigned index) {
        if (index >= scene_.mNumMaterials) {
            return;
        }
        const aiMaterial& expected = *scene_.mMaterials[index];
        const ActorMaterial& found = actor_.materials.at(static_cast<std::size_t>(number));
        const std::string what = mesh_ + "material " + std::to_string(number) + ": ";
        aiString name;
        if (expected.Get(AI_MATKEY_NAME, name) == AI_SUCCESS && IsPlain(name.C_Str())) {
            ExpectEqual(what + "the name", found.name, std::string(name.C_Str()).substr(0, 39));
        }
        aiColor3D diffuse;
        if (expected.Get(AI_MATKEY_COLOR_DIFFUSE, diffuse) == AI_SUCCESS) {
            ExpectEqual(what + "diffuse red", found.diffuse[0], diffuse.r);
            ExpectEqual(what + "diffuse green", found.diffuse[1], diffuse.g);
            ExpectEqual(what + "diffuse blue", found.diffuse[2], diffuse.b);
        }
        float opacity = 1;
        expected.Get(AI_MATKEY_OPACITY, opacity);
        ExpectEqual(what + "the opacity", found.opacity, 1 - (1 - opacity));
        int twoSided = 0;
        expected.Get(AI_MATKEY_TWOSIDED, twoSided);
        ExpectEqual(what + "two-sided", found.twoSided ? 1 : 0, twoSided ? 1 : 0);
        CompareTexture(what, expected, found);
    }

    static bool IsPlain(const std::string& text) {
        return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c < 127; });
    }

    // Of the entries of the folder the one of that name, if need be in other letters; "" for none.
    static std::string EntryOf(const std::filesystem::path& folder, const std::string& name) {
        const auto small = [](std::string text) {
            std::transform(text.begin(), text.end(), text.begin(),
                           [](unsigned char c) { return std::tolower(c); });
            return text;
        };
        if (name == ".." || std::filesystem::exists(folder / name)) {
            return name;
        }
        std::error_code none;
        for (const auto& entry : std::filesystem::directory_iterator(folder, none)) {
            const std::string there = entry.path().filename().string();
            if (small(there) == small(name)) {
                return there;
            }
        }
        return "";
    }

    // The name of the file where the model says, or beside the model, in the letters that it has
    // there; else the name that the model says.
    std::string OnDisk(std::string path, const std::string& name) const {
        namespace fs = std::filesystem;
        std::replace(path.begin(), path.end(), '\\', '/');
        const fs::path folder = fs::path(modelFile_).parent_path();
        fs::path place = folder;
        std::string there;
        for (const fs::path& part : fs::path(path).relative_path()) {
            there = EntryOf(place, part.string());
            if (there.empty()) {
                break;
            }
            place /= there;
        }
        for (const fs::path& other : {folder, folder / "textures", folder / "maps"}) {
            there = there.empty() ? EntryOf(other, name) : there;
        }
        return there.empty() ? name : there;
    }

    void CompareTexture(const std::string& what, const aiMaterial& expected,
                        const ActorMaterial& found) const {
        aiString path;
        if (expected.GetTexture(aiTextureType_DIFFUSE, 0, &path) != AI_SUCCESS ||
            path.length == 0 || path.C_Str()[0] == '*' || !IsPlain(path.C_Str())) {
            return;
        }
        const std::string file(path.C_Str());
        std::string last = file.substr(file.find_last_of("/\\") + 1);
        if (const aiTexture* const inside = scene_.GetEmbeddedTexture(path.C_Str())) {
            if (inside->mHeight > 0) {  // texels: written as PNG
                last = last.substr(0, last.find_last_of('.')) + ".png";
            }
        } else {
            last = OnDisk(file, last);
        }
        const auto layer = std::find_if(found.layers.begin(), found.layers.end(),
                                        [](const auto& each) { return each.first == 1; });
        ExpectEqual(what + "the diffuse texture",
                    layer == found.layers.end() ? "none" : layer->second, last);
    }

    const std::string modelFile_;
    const aiScene& scene_;
    const Actor actor_;
    const View view_;
    std::string mesh_, triangle_;  // what is compared, for messages
    const MeshNode* model_ = nullptr;
    std::unordered_map<const aiMesh*, Places> places_;
    ModelSkin skin_;
    Matrix actorWorld_, actorInverse_;
    bool isSkinned_ = false;
    bool isTurned_ = false;  // its normals are not where they should be
    bool isFlat_ = false;    // squeezed so that its place cannot be told
    std::vector<unsigned> channels_;
    std::size_t triangles_ = 0, flat_ = 0;
    double worstPosition_ = 0, worstNormal_ = 0;
    double diagonal_ = 0;  // of the model, where it has blend shapes
    std::size_t morphPoints_ = 0;
    double worstMorph_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: compare_geometry MODEL ACTOR\n";
        return 2;
    }
    try {
        Assimp::Importer importer;
        const Actor actor = ReadActor(argv[2]);
        Comparison comparison(argv[1], maxhost::import::LoadScene(importer, argv[1]), actor);
        comparison.Run();
        comparison.Print();
        return 0;
    } catch (const std::exception& failure) {
        std::cout << failure.what() << '\n';
        return 1;
    }
}
