// Every installed model of the formats that matter most: the scene holds what Assimp itself says,
// worked out the straightforward way, and shows at each time what Assimp's keys say.
#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <assimp/Importer.hpp>
#include <cmath>
#include <filesystem>
#include <map>

#include "host/assimp/import.h"
#include "host/assimp/source_file.h"
#include "host/assimp/tree/tree.h"
#include "host/scene/check.h"
#include "tests/support/every_field.h"
#include "tests/unit/host/assimp/shown_scene.h"
#include "tests/unit/host/assimp/source_scene.h"

using maxhost::import::ImportedScene;
using maxhost::import::ImportError;
using maxhost::import::ImportWithAssimp;
using maxhost::import::ReadHere;
using maxhost::import::SourceNode;
using maxhost::import::SourceTree;
using maxhost::scene::Matrix;
using maxhost::scene::Vec3;

namespace fs = std::filesystem;

namespace {

using Matrix4 = aiMatrix4x4t<double>;
using Vector3 = aiVector3t<double>;
using Point = std::array<double, 3>;

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

// In the order of their paths; without extensions all files.
std::vector<std::string> ModelFiles(const std::string& folder,
                                    const std::vector<std::string>& extensions = {}) {
    std::vector<std::string> files;
    for (const auto& entry :
         fs::recursive_directory_iterator(fs::path(HDO_ASSIMP_MODELS) / folder)) {
        const std::string extension = Lower(entry.path().extension().string());
        if (extensions.empty() ||
            std::find(extensions.begin(), extensions.end(), extension) != extensions.end()) {
            files.push_back(entry.path().string());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

double Finite(double number) {
    return std::isfinite(number) ? number : 0;
}

// The corners of all triangles in the world, in the order of the nodes, as the pose has them.
void AddCorners(const aiScene& scene, const aiNode& node, const SourcePose& pose,
                std::vector<Point>& corners) {
    for (unsigned i = 0; i < node.mNumMeshes; ++i) {
        const aiMesh& mesh = *scene.mMeshes[node.mMeshes[i]];
        const std::vector<Matrix4> ways = pose.Ways(node, mesh);
        for (unsigned k = 0; k < mesh.mNumFaces; ++k) {
            const aiFace& face = mesh.mFaces[k];
            for (unsigned c = 0; face.mNumIndices == 3 && c < 3; ++c) {
                const unsigned corner = face.mIndices[c];
                const aiVector3D& v = mesh.mVertices[corner];
                const auto p = ways[corner] * Vector3(Finite(v.x), Finite(v.y), Finite(v.z));
                corners.push_back({p.x, p.y, p.z});
            }
        }
    }
    for (unsigned i = 0; i < node.mNumChildren; ++i) {
        AddCorners(scene, *node.mChildren[i], pose, corners);
    }
}

// z up and in the file's units. Assimp's other formats are y up; it leaves an FBX file's axes
// alone and scales Collada's units.
std::vector<Point> ExpectedCorners(const aiScene& scene) {
    std::vector<Point> corners;
    AddCorners(scene, *scene.mRootNode, SourcePose(scene, 0, 0), corners);
    std::int32_t up = 1;
    scene.mMetaData->Get("UpAxis", up);
    aiString format;
    scene.mMetaData->Get("SourceAsset_Format", format);
    const bool isCollada = format == aiString(kCollada);
    const aiMatrix4x4& root = scene.mRootNode->mTransformation;
    const double unit = isCollada ? std::hypot(root.a1, root.b1, root.c1) : 1;
    for (Point& p : corners) {
        p = up == 2 ? p : Point{p[0], -p[2], p[1]};
        for (double& coordinate : p) {
            coordinate /= unit;
        }
    }
    return corners;
}

Point PlacedBy(const Point& p, const Matrix& m) {
    Point moved;
    for (std::size_t i = 0; i < 3; ++i) {
        moved[i] = p[0] * m[0][i] + p[1] * m[1][i] + p[2] * m[2][i] + m[3][i];
    }
    return moved;
}

std::vector<Point> WorldCorners(const maxhost::scene::Scene& scene) {
    std::vector<Point> corners;
    std::vector<Matrix> locals;
    for (const auto& node : scene.nodes) {
        locals.push_back(MatrixOf(node));
    }
    for (const auto& node : scene.nodes) {
        if (!node.object || !node.object->mesh) {
            continue;
        }
        for (const auto& face : node.object->mesh->faces) {
            for (const std::uint32_t v : face.v) {
                const Vec3& vertex = node.object->mesh->vertices.at(v);
                Point p{vertex[0], vertex[1], vertex[2]};
                for (int above = static_cast<int>(&node - scene.nodes.data()); above >= 0;
                     above = scene.nodes[static_cast<std::size_t>(above)].parent) {
                    p = PlacedBy(p, locals[static_cast<std::size_t>(above)]);
                }
                corners.push_back(p);
            }
        }
    }
    return corners;
}

// The greatest distance of a coordinate from where it should be, in parts of the scene's size.
double WorstError(const std::vector<Point>& left, const std::vector<Point>& right) {
    double size = 1e-6, error = 0;
    for (std::size_t i = 0; i < left.size(); ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
            size = std::max(size, std::abs(right[i][k]));
            error = std::max(error, std::abs(left[i][k] - right[i][k]));
        }
    }
    return error / size;
}

// Takes normals where the matrix takes positions.
Vector3 TurnedNormal(Matrix4 matrix, const Vector3& normal) {
    matrix.Inverse().Transpose();
    matrix[0][3] = matrix[1][3] = matrix[2][3] = 0;
    return matrix * normal;
}

// The normals that the file states for the corners of the mesh of a node, in the node's turned
// space; zero where it states nothing.
std::vector<Vector3> StatedNormals(const aiScene& scene, const SourceNode& node,
                                   const maxhost::import::AxisTurn& turn) {
    const SourcePose pose(scene, 0, 0);
    const bool isMirrored = node.geometric && node.geometric->Determinant() < 0;
    const Matrix4 fromWorld =
        node.geometric.value_or(Matrix4()) * Matrix4(pose.WorldOf(*node.node)).Inverse();
    std::vector<Vector3> normals;
    for (unsigned i = 0; i < node.node->mNumMeshes; ++i) {
        const aiMesh& mesh = *scene.mMeshes[node.node->mMeshes[i]];
        const std::vector<Matrix4> ways = pose.Ways(*node.node, mesh);
        for (unsigned k = 0; k < mesh.mNumFaces; ++k) {
            const aiFace& face = mesh.mFaces[k];
            for (unsigned c = 0; face.mNumIndices == 3 && c < 3; ++c) {
                const unsigned corner = face.mIndices[isMirrored ? (3 - c) % 3 : c];
                const Matrix4 way = turn.Turn(fromWorld * ways[corner]);
                normals.push_back(mesh.mNormals ? TurnedNormal(way, Vector3(mesh.mNormals[corner]))
                                                : Vector3());
            }
        }
    }
    return normals;
}

double DegreesApart(const Vector3& a, const Vector3& b) {
    const double angle = std::atan2((a ^ b).Length(), a * b) * 180 / 3.14159265358979323846;
    return std::isnan(angle) ? 180 : angle;
}

// The greatest angle between what a corner of the mesh shows and what the file states for it.
double WorstNormal(const maxhost::scene::Mesh& mesh, const std::vector<Vector3>& stated) {
    const std::vector<CornerNormals> shown = ShownNormals(mesh);
    EXPECT_EQ(stated.size(), 3 * shown.size());
    double worst = 0;
    for (std::size_t i = 0; i < std::min(stated.size(), 3 * shown.size()); ++i) {
        const Vec3& n = shown[i / 3][i % 3];
        if (stated[i].Length() > 0 && std::isfinite(stated[i].Length())) {
            worst = std::max(worst, DegreesApart(Vector3(n[0], n[1], n[2]), stated[i]));
        }
    }
    return worst;
}

}  // namespace

struct ModelFamily {
    std::string folder;
    std::vector<std::string> extensions;
    std::size_t atLeast;  // files that import
    std::size_t meshes;   // of nodes in them
};

void PrintTo(const ModelFamily& family, std::ostream* out) {
    *out << family.folder;
}

class Models : public testing::TestWithParam<ModelFamily> {};

TEST_P(Models, HoldWhatAssimpSays) {
    std::size_t imports = 0;
    for (const std::string& path : ModelFiles(GetParam().folder, GetParam().extensions)) {
        SCOPED_TRACE(path);
        Assimp::Importer importer;
        importer.SetPropertyBool(AI_CONFIG_IMPORT_NO_SKELETON_MESHES, true);
        importer.SetIOHandler(new maxhost::import::SourceFiles());
        const aiScene* const expected = importer.ReadFile(path, aiProcess_Triangulate);
        if (!expected) {
            EXPECT_THROW(ImportWithAssimp(path), ImportError);
            continue;
        }
        const ImportedScene imported = ImportWithAssimp(path);
        ++imports;
        EXPECT_NO_THROW(maxhost::scene::Check(imported.scene));
        EXPECT_EQ(imported.animations.size(), expected->mNumAnimations);
        const std::vector<Point> corners = WorldCorners(imported.scene);
        const std::vector<Point> expectedCorners = ExpectedCorners(*expected);
        ASSERT_EQ(corners.size(), expectedCorners.size());
        EXPECT_LT(WorstError(corners, expectedCorners), 2e-6);
        for (const std::string& warning : imported.warnings) {
            EXPECT_EQ(warning.find('\n'), std::string::npos) << warning;
        }
    }
    EXPECT_GE(imports, GetParam().atLeast);
}

TEST_P(Models, ShowTheNormalsOfTheFile) {
    std::size_t meshes = 0;
    for (const std::string& path : ModelFiles(GetParam().folder, GetParam().extensions)) {
        SCOPED_TRACE(path);
        Assimp::Importer importer;
        const aiScene* source = nullptr;
        try {
            source = &maxhost::import::LoadScene(importer, path);
        } catch (const ImportError&) {
            continue;
        }
        const ImportedScene imported = maxhost::import::ConvertScene(*source, path);
        const SourceTree tree = maxhost::import::FlattenTree(*source, path);
        ASSERT_EQ(tree.nodes.size(), imported.scene.nodes.size());
        for (std::size_t i = 0; i < tree.nodes.size(); ++i) {
            const auto& object = imported.scene.nodes[i].object;
            if (object && object->mesh) {
                EXPECT_LT(
                    WorstNormal(*object->mesh, StatedNormals(*source, tree.nodes[i], tree.turn)),
                    1);
                ++meshes;
            }
        }
    }
    EXPECT_GE(meshes, GetParam().meshes);
}

TEST_P(Models, AreTheSameEveryTime) {
    std::size_t imports = 0;
    for (const std::string& path : ModelFiles(GetParam().folder, GetParam().extensions)) {
        SCOPED_TRACE(path);
        try {
            const ImportedScene first = ImportWithAssimp(path);
            const ImportedScene second = ReadHere(path);
            EXPECT_EQ(Difference(first.scene, second.scene), "");
            EXPECT_EQ(first.warnings, second.warnings);
            ++imports;
        } catch (const ImportError&) {
            continue;
        }
    }
    EXPECT_GE(imports, GetParam().atLeast);
}

INSTANTIATE_TEST_SUITE_P(
    Installed, Models,
    testing::Values(ModelFamily{"FBX", {".fbx"}, 15, 40}, ModelFamily{"ASE", {".ase"}, 10, 30},
                    ModelFamily{"3DS", {".3ds"}, 9, 15},
                    ModelFamily{"Collada", {".dae", ".zae"}, 20, 60},
                    ModelFamily{"BVH", {".bvh"}, 3, 0},
                    ModelFamily{"glTF2", {".gltf", ".glb"}, 25, 60}, ModelFamily{"X", {".x"}, 5, 5},
                    ModelFamily{"MD5", {".md5mesh"}, 1, 1}, ModelFamily{"MDL", {".mdl"}, 10, 20},
                    ModelFamily{"SMD", {".smd"}, 3, 3}),
    [](const auto& family) {
        return (family.param.folder[0] == '3' ? "Studio" : "") + family.param.folder;
    });

// ---------------------------------------------------------------- poses

struct AnimatedFamily {
    std::string name;
    std::size_t clips;  // at least
};

void PrintTo(const AnimatedFamily& family, std::ostream* out) {
    *out << family.name;
}

class AnimatedModels : public testing::TestWithParam<AnimatedFamily> {};

TEST_P(AnimatedModels, KeepTheirPoses) {
    std::size_t clips = 0;
    PoseError worstOfAll;
    for (const std::string& path : ModelFiles(GetParam().name)) {
        Assimp::Importer importer;
        const aiScene* source = nullptr;
        try {
            source = &maxhost::import::LoadScene(importer, path);
        } catch (const ImportError&) {
            continue;
        }
        for (unsigned clip = 0; clip < source->mNumAnimations; ++clip) {
            SCOPED_TRACE(path + " clip " + std::to_string(clip));
            const auto imported =
                maxhost::import::ConvertScene(*source, path, {std::to_string(clip), {}});
            EXPECT_NO_THROW(maxhost::scene::Check(imported.scene));
            const PoseError worst = WorstPose(*source, path, clip, imported);
            EXPECT_LE(worst.degrees, 0.1) << worst.where;
            EXPECT_LE(worst.distance, 0.001);
            worstOfAll.Add(worst);
            ++clips;
        }
    }
    RecordProperty("degrees", std::to_string(worstOfAll.degrees));
    RecordProperty("distance", std::to_string(worstOfAll.distance));
    EXPECT_GE(clips, GetParam().clips);
}

INSTANTIATE_TEST_SUITE_P(Installed, AnimatedModels,
                         testing::Values(AnimatedFamily{"FBX", 2}, AnimatedFamily{"ASE", 7},
                                         AnimatedFamily{"3DS", 4}, AnimatedFamily{"Collada", 2},
                                         AnimatedFamily{"BVH", 3}, AnimatedFamily{"LWS", 8},
                                         AnimatedFamily{"X", 3}, AnimatedFamily{"CSM", 1},
                                         AnimatedFamily{"MDL", 50}, AnimatedFamily{"SMD", 3}),
                         [](const auto& folder) {
                             return (folder.param.name[0] == '3' ? "Studio" : "") +
                                    folder.param.name;
                         });
