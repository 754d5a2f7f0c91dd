// Whole files: what they say comes through, and what is wrong with them is said in one line.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cctype>
#include <fstream>
#include <random>
#include <sstream>

#include "host/assimp/import.h"
#include "host/assimp/process/scene_blob.h"
#include "host/scene/check.h"
#include "host/scene_file/scene_description.h"
#include "tests/support/sweep.h"
#include "tests/support/temporary_directory.h"
#include "tests/unit/host/assimp/shown_scene.h"
#include "tests/unit/host/assimp/source_scene.h"

using maxhost::import::AssimpKnows;
using maxhost::import::EncodeScene;
using maxhost::import::ImportedScene;
using maxhost::import::ImportError;
using maxhost::import::ImportWithAssimp;
using maxhost::scene::ClassId;
using maxhost::scene::Node;
using maxhost::scene::Vec3;
using maxhost::scene_file::WriteSceneDescription;
using Names = std::vector<std::string>;

namespace {

const std::filesystem::path kModels = HDO_ASSIMP_MODELS;

std::string Refusal(const std::string& path) {
    try {
        ImportWithAssimp(path);
    } catch (const ImportError& error) {
        return error.what();
    }
    return "no refusal";
}

// Imports what may be broken in any way; a refusal must be one clear line.
bool Imports(const std::string& path) {
    try {
        maxhost::scene::Check(ImportWithAssimp(path).scene);
        return true;
    } catch (const ImportError& error) {
        const std::string line = error.what();
        EXPECT_FALSE(line.empty());
        EXPECT_EQ(line.find('\n'), std::string::npos) << line;
        EXPECT_LT(line.size(), 400u);
        return false;
    }
}

// A file name with the extension of `path`.
std::string LikeNamed(const std::string& path) {
    return std::filesystem::path("f").replace_extension(std::filesystem::path(path).extension());
}

constexpr char kFbxText[] = R"(; FBX 7.4.0 project file
FBXHeaderExtension:  {
	FBXHeaderVersion: 1003
	FBXVersion: 7400
}
GlobalSettings:  {
	Version: 1000
	Properties70:  {
		P: "UpAxis", "int", "Integer", "",2
		P: "UpAxisSign", "int", "Integer", "",1
		P: "FrontAxis", "int", "Integer", "",1
		P: "FrontAxisSign", "int", "Integer", "",-1
		P: "CoordAxis", "int", "Integer", "",0
		P: "CoordAxisSign", "int", "Integer", "",1
		P: "UnitScaleFactor", "double", "Number", "",2.54
		P: "TimeMode", "enum", "", "",10
	}
}
Objects:  {
	Model: 1, "Model::Dummy01", "Null" {
		Version: 232
		Properties70:  {
			P: "Lcl Translation", "Lcl Translation", "", "A",1,2,3
			P: "UDP3DSMAX", "KString", "", "U", "CollisionMesh = true&cr;&lf;"
			P: "mine", "int", "Integer", "U",3
			P: "Show", "bool", "", "",0
		}
	}
	Model: 2, "Model::Offset", "Null" {
		Version: 232
		Properties70:  {
			P: "Lcl Rotation", "Lcl Rotation", "", "A",0,0,90
			P: "RotationPivot", "Vector3D", "Vector", "",1,0,0
			P: "GeometricTranslation", "Vector3D", "Vector", "",10,20,30
		}
	}
	Model: 3, "Model::Child", "Null" {
		Version: 232
	}
}
Connections:  {
	C: "OO",1,0
	C: "OO",2,0
	C: "OO",3,2
}
)";

// Of three frames.
std::string BvhText(const std::string& frames) {
    return R"(HIERARCHY
ROOT Hips
{
	OFFSET 0 0 0
	CHANNELS 6 Xposition Yposition Zposition Zrotation Xrotation Yrotation
	JOINT Chest
	{
		OFFSET 1 5 2
		CHANNELS 3 Zrotation Xrotation Yrotation
		End Site
		{
			OFFSET 0 4 0
		}
	}
}
MOTION
Frames: 3
Frame Time: 0.04
)" + frames;
}

std::string ColladaText(const std::string& up) {
    return R"(<?xml version="1.0" encoding="utf-8"?>
<COLLADA xmlns="http://www.collada.org/2005/11/COLLADASchema" version="1.4.1">
 <asset><unit meter="0.0254" name="inch"/><up_axis>)" +
           up + R"(</up_axis></asset>
 <library_visual_scenes><visual_scene id="scene" name="MaxScene">
  <node id="a-id" name="A"><translate>1 2 3</translate>
   <node id="b-id"/>
  </node>
 </visual_scene></library_visual_scenes>
 <scene><instance_visual_scene url="#scene"/></scene>
</COLLADA>)";
}

constexpr char kGltfText[] = R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],
"nodes":[{"name":"Box","translation":[1,2,3],"mesh":0,"children":[1],
          "extras":{"CollisionMesh":true,"weight":2.5}},{"name":"Eye","camera":0}],
"cameras":[{"type":"perspective","perspective":{"yfov":1,"znear":1}}],
"meshes":[{"name":"m","primitives":[{"attributes":{"POSITION":0}}]}],
"accessors":[{"bufferView":0,"componentType":5126,"count":3,"type":"VEC3",
              "min":[0,0,0],"max":[1,1,0]}],
"bufferViews":[{"buffer":0,"byteLength":36}],
"buffers":[{"byteLength":36,"uri":"data:application/octet-stream;base64,)"
                             "AAAAAAAAAAAAAAAAAACAPwAAAAAAAAAAAAAAAAAAgD8AAAAA\"}]}";

}  // namespace

// ---------------------------------------------------------------- what comes through

TEST(Files, Fbx) {
    const support::TemporaryDirectory files;
    const ImportedScene imported = ImportWithAssimp(files.Write("scene.fbx", kFbxText));
    ASSERT_EQ(NamesOf(imported.scene), (Names{"Dummy01", "Offset", "Child"}));
    const std::vector<Node>& nodes = imported.scene.nodes;
    EXPECT_EQ(MatrixOf(nodes[0])[3], (Vec3{1, 2, 3}));
    EXPECT_EQ(nodes[0].userProperties, "CollisionMesh = true\r\nmine = 3\r\n");
    EXPECT_TRUE(nodes[0].hidden);
    EXPECT_FALSE(nodes[1].hidden);
    // A quarter turn about the pivot (1, 0, 0); the geometric transform moves neither node.
    EXPECT_NEAR(MatrixOf(nodes[1])[3][0], 1, 1e-6);
    EXPECT_NEAR(MatrixOf(nodes[1])[3][1], -1, 1e-6);
    EXPECT_NEAR(MatrixOf(nodes[1])[0][1], 1, 1e-6);
    EXPECT_EQ(nodes[2].parent, 1);
    EXPECT_EQ(MatrixOf(nodes[2]), maxhost::scene::kIdentity);
    EXPECT_EQ(imported.scene.time.frameRate, 25);
    EXPECT_EQ(imported.scene.time.end, 19200);
    EXPECT_EQ(imported.warnings, Names{"the file's unit is 0.0254 m and its up axis z, not turned; "
                                       "lengths are left in that unit (--scale changes them)"});
}

TEST(Files, Bvh) {
    const support::TemporaryDirectory files;
    const ImportedScene imported = ImportWithAssimp(files.Write(
        "walk.bvh", BvhText("0 0 0 0 0 0 0 0 0\n1 0 0 0 0 0 0 0 0\n2 0 0 0 0 0 0 0 0\n")));
    ASSERT_EQ(NamesOf(imported.scene), (Names{"Hips", "Chest", "EndSite_Chest"}));
    EXPECT_EQ(imported.scene.nodes[2].parent, 1);
    EXPECT_EQ(MatrixOf(imported.scene.nodes[1])[3], (Vec3{1, -2, 5}));
    for (const Node& node : imported.scene.nodes) {
        EXPECT_EQ(node.object.value().classId, (ClassId{0x28bf6e8d, 0x2ecca840}));
        EXPECT_FALSE(node.object->mesh);
    }
    ASSERT_EQ(imported.animations.size(), 1u);
    EXPECT_NEAR(imported.animations[0].seconds, 0.08, 1e-8);
    EXPECT_EQ(imported.animations[0].channels, 2);
    EXPECT_EQ(imported.scene.time.frameRate, 25);
    EXPECT_EQ(imported.scene.time.end, 384);
}

TEST(Files, ColladaOfEveryUpAxis) {
    const support::TemporaryDirectory files;
    const std::pair<const char*, Vec3> kAxes[] = {
        {"Y_UP", {1, -3, 2}}, {"Z_UP", {1, 2, 3}}, {"X_UP", {-2, -3, 1}}};
    for (const auto& [up, place] : kAxes) {
        const ImportedScene imported = ImportWithAssimp(files.Write("a.dae", ColladaText(up)));
        ASSERT_EQ(NamesOf(imported.scene), (Names{"A", "b-id"})) << up;
        EXPECT_EQ(imported.scene.nodes[1].parent, 0);
        const std::string axis(1, static_cast<char>(std::tolower(up[0])));
        EXPECT_EQ(imported.warnings,
                  Names{"the file's unit is 0.0254 m and its up axis " + axis +
                        (axis == "z" ? ", not turned" : ", turned to z") +
                        "; lengths are left in that unit (--scale changes them)"});
        EXPECT_EQ(MatrixOf(imported.scene.nodes[0]),
                  (maxhost::scene::Matrix{Vec3{1, 0, 0}, Vec3{0, 1, 0}, Vec3{0, 0, 1}, place}))
            << up;
    }
}

TEST(Files, Gltf) {
    const support::TemporaryDirectory files;
    const ImportedScene imported = ImportWithAssimp(files.Write("box.gltf", kGltfText));
    ASSERT_EQ(NamesOf(imported.scene), (Names{"Box", "Eye"}));
    const std::vector<Node>& nodes = imported.scene.nodes;
    EXPECT_EQ(MatrixOf(nodes[0])[3], (Vec3{1, -3, 2}));
    EXPECT_EQ(nodes[0].userProperties, "CollisionMesh = true\r\nweight = 2.5\r\n");
    EXPECT_EQ(nodes[0].object.value().mesh->vertices,
              (std::vector<Vec3>{{0, 0, 0}, {1, 0, 0}, {0, 0, 1}}));
    EXPECT_EQ(nodes[1].object.value().superClassId, 0x20u);
    // It looks along -z of its node, which is level, from where its parent stands.
    EXPECT_EQ(MatrixOf(nodes[1]), (maxhost::scene::Matrix{Vec3{1, 0, 0}, Vec3{0, 0, 1},
                                                          Vec3{0, -1, 0}, Vec3{0, 0, 0}}));
}

// The same 3ds Max scene in three formats, in 3ds Max's own numbers.
TEST(Files, FormatsAgreeOnOneScene) {
    const ImportedScene ase = ImportWithAssimp(kModels / "ASE/RotatingCube.ASE");
    const ImportedScene threeDs = ImportWithAssimp(kModels / "3DS/RotatingCube.3DS");
    for (const ImportedScene* const imported : {&ase, &threeDs}) {
        ASSERT_EQ(NamesOf(imported->scene), Names{"Box01"});
        const auto& node = imported->scene.nodes[0];
        // *TM_POS and *TM_ROW1 of the ASE file
        EXPECT_NEAR(MatrixOf(node)[3][0], 3.9886, 1e-4);
        EXPECT_NEAR(MatrixOf(node)[3][1], -5.6980, 1e-4);
        EXPECT_NEAR(MatrixOf(node)[3][2], 0, 1e-4);
        EXPECT_NEAR(MatrixOf(node)[1][1], 0.9899, 1e-4);
        EXPECT_NEAR(MatrixOf(node)[1][2], -0.1420, 1e-4);
        ASSERT_EQ(node.object.value().mesh->faces.size(), 12u);
    }
    const auto& left = *ase.scene.nodes[0].object->mesh;
    const auto& right = *threeDs.scene.nodes[0].object->mesh;
    for (std::size_t face = 0; face < 12; ++face) {
        for (std::size_t corner = 0; corner < 3; ++corner) {
            for (std::size_t i = 0; i < 3; ++i) {
                EXPECT_NEAR(left.vertices[left.faces[face].v[corner]][i],
                            right.vertices[right.faces[face].v[corner]][i], 2e-3);
            }
        }
    }
}

TEST(Files, PolygonsAreCutIntoTriangles) {
    const support::TemporaryDirectory files;
    const std::string text =
        "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv -1 2 0\nf 1 2 3 4\nf 1 2 3 4 5\n";
    const ImportedScene imported = ImportWithAssimp(files.Write("quads.obj", text));
    ASSERT_EQ(imported.scene.nodes.size(), 1u);
    EXPECT_EQ(imported.scene.nodes[0].object.value().mesh->faces.size(), 5u);
}

TEST(Files, TheSameEveryTimeAndFromEverywhere) {
    const support::TemporaryDirectory files;
    const std::string path = files.Write("quads.x3d",
                                         "<X3D version=\"3.0\"><Scene><Shape><Box/></Shape>"
                                         "</Scene></X3D>");
    const ImportedScene imported = ImportWithAssimp(path);
    for (const std::string& name : NamesOf(imported.scene)) {
        EXPECT_EQ(name.find('/'), std::string::npos) << name;
    }
}

TEST(Files, ExtensionsThatAssimpKnows) {
    for (const char* const name :
         {"a.fbx", "a.FBX", "b.dae", "c.3ds", "d.ase", "e.gltf", "f.glb", "g.bvh", "/x.y/h.obj"}) {
        EXPECT_TRUE(AssimpKnows(name)) << name;
    }
    for (const char* const name : {"a.max", "b", "c.", "", "fbx", ".fbx/x"}) {
        EXPECT_FALSE(AssimpKnows(name)) << name;
    }
}

// ---------------------------------------------------------------- what is wrong

TEST(BadFiles, AreRefusedWithOneClearLine) {
    const support::TemporaryDirectory files;
    EXPECT_EQ(Refusal((files.Path() / "none.fbx").string()), "No such file or directory");
    EXPECT_EQ(Refusal(files.Path().string()), "a directory, not a scene file");
    EXPECT_EQ(Refusal(""), "No such file or directory");
    EXPECT_EQ(Refusal("/dev/null"), "not a regular file");
    const std::string pipe = (files.Path() / "pipe.fbx").string();
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(Refusal(pipe), "not a regular file");
    for (const char* const name :
         {"a.fbx", "a.gltf", "a.dae", "a.3ds", "a.ase", "a.bvh", "a.zzz"}) {
        EXPECT_EQ(Refusal(files.Write(name, "")), "an empty file, expected a scene");
    }
    EXPECT_EQ(Refusal(files.Write("notes.txt", "Dear diary")),
              "not a scene file of a known format");
    EXPECT_EQ(Refusal(files.Write("noise", std::string(1000, '\x7f'))),
              "not a scene file of a known format");
}

TEST(BadFiles, SayWhatTheReaderSays) {
    const support::TemporaryDirectory files;
    EXPECT_EQ(Refusal(files.Write("a.gltf", "{\"asset\":{\"version\":\"2.0\"}}")),
              "cannot be read: GLTF: No scene");
    EXPECT_EQ(Refusal((kModels / "glTF2/MissingBin/BoxTextured.gltf").string()),
              "cannot be read: GLTF: could not open referenced file \"BoxTextured0.bin\"");
}

TEST(BadFiles, TextFormatsHoldNoControlCharacters) {
    const support::TemporaryDirectory files;
    const std::string box = "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";
    for (const char* const name :
         {"a.obj", "a.OBJ", "a.ase", "a.dae", "a.gltf", "a.bvh", "a.smd"}) {
        const std::string extension = name[2] == 'O' ? ".obj" : name + 1;
        EXPECT_EQ(Refusal(files.Write(name, box + '\0')),
                  "not text, which " + extension + " files are: character 0x00 at offset 32");
        EXPECT_EQ(Refusal(files.Write(name, box.substr(0, 31) + '\x1f')),
                  "not text, which " + extension + " files are: character 0x1f at offset 31");
    }
    const std::string far = "#" + std::string(200'000, 'x') + '\x01';
    EXPECT_EQ(Refusal(files.Write("a.obj", far)),
              "not text, which .obj files are: character 0x01 at offset 200001");
    EXPECT_EQ(ImportWithAssimp(files.Write("b.obj", "# \x1b$B \x07\t\f\xe9\r\n" + box + "\x1a"))
                  .scene.nodes.size(),
              1u);
}

// The text in UTF-16, which holds ASCII alone.
std::string InUtf16(const std::string& text, bool isBigEndian) {
    std::string coded;
    for (const char c : text) {
        coded += isBigEndian ? std::string{'\0', c} : std::string{c, '\0'};
    }
    return coded;
}

// All that an import gives. Of the scene its description: what the encoding of a face has between
// its fields is left to chance.
std::string Everything(ImportedScene imported) {
    std::ostringstream text;
    WriteSceneDescription(imported.scene, text);
    imported.scene = {};
    return text.str() + EncodeScene(imported);
}

TEST(Files, Utf16TextIsReadAsUtf8Is) {
    const support::TemporaryDirectory files;
    const std::string ply =
        "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\n"
        "property float z\nelement face 1\nproperty list uchar int vertex_index\nend_header\n"
        "0 0 0\n1 0 0\n1 1 0\n3 0 1 2\n";
    const std::string bvh = BvhText("0 0 0 0 0 0 0 0 0\n1 2 3 0 0 0 0 0 30\n0 0 0 0 0 0 0 0 0\n");
    for (const auto& [name, text] :
         {std::pair<const char*, std::string>{"a.dae", ColladaText("Z_UP")},
          {"a.bvh", bvh},
          {"a.ply", ply}}) {
        const ImportedScene plain = ImportWithAssimp(files.Write(name, text));
        ASSERT_FALSE(plain.scene.nodes.empty());
        for (const auto& [mark, isBigEndian] :
             {std::pair<const char*, bool>{"\xff\xfe", false}, {"\xfe\xff", true}}) {
            const ImportedScene coded =
                ImportWithAssimp(files.Write(name, mark + InUtf16(text, isBigEndian)));
            EXPECT_EQ(Everything(coded), Everything(plain)) << name;
        }
    }
    const std::string obj = "o box\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";
    EXPECT_EQ(Everything(ImportWithAssimp(files.Write("b.obj", InUtf16(obj, false)))),
              Everything(ImportWithAssimp(files.Write("b.obj", obj))))
        << "without a mark";
    EXPECT_EQ(Refusal(files.Write("c.obj", "\xff\xfe" + InUtf16(obj, false) + "\x01\xd8 .")),
              "begins as UTF-16 text, but is none");
}

// A polygon with a corner that does not exist would be read beyond the vertices while it is cut
// into triangles.
TEST(BadFiles, PolygonsWithCornersThatDoNotExist) {
    const support::TemporaryDirectory files;
    const std::string ply =
        "ply\nformat ascii 1.0\nelement vertex 4\nproperty float x\nproperty float y\n"
        "property float z\nelement face 2\nproperty list uchar int vertex_index\nend_header\n"
        "0 0 0\n1 0 0\n1 1 0\n0 1 0\n4 0 1 2 900000000\n4 0 1 2 3\n";
    const std::string path = files.Write("broken.ply", ply);
    if (Imports(path)) {
        const ImportedScene imported = ImportWithAssimp(path);
        EXPECT_EQ(imported.scene.nodes.at(0).object.value().mesh->faces.size(), 2u);
        EXPECT_EQ(imported.warnings,
                  (Names{"node 'broken': given the file's name, the file gives its root none",
                         "mesh 0: faces with a vertex number out of range left out"}));
    }
}

TEST(BadFiles, NumbersThatAreNotFinite) {
    const ImportedScene imported =
        ImportWithAssimp(kModels / "glTF2/BoxWithInfinites-glTF-Binary/BoxWithInfinites.glb");
    maxhost::scene::Check(imported.scene);
    ASSERT_EQ(imported.warnings.size(), 1u);
    EXPECT_TRUE(
        imported.warnings[0].starts_with("mesh 'Mesh': numbers that are not finite replaced by 0"))
        << imported.warnings[0];
}

TEST(BadFiles, EveryBeginningOfAFile) {
    const support::TemporaryDirectory files;
    const std::pair<const char*, std::string> kTexts[] = {
        {"f.fbx", kFbxText},
        {"f.bvh", BvhText("0 0 0 0 0 0 0 0 0\n1 0 0 0 0 0 0 0 0\n2 0 0 0 0 0 0 0 0\n")},
        {"f.dae", ColladaText("Z_UP")},
        {"f.gltf", kGltfText}};
    for (const auto& [name, text] : kTexts) {
        int refused = 0;
        for (std::size_t length = 1; length < text.size(); length += support::SweepStride(41)) {
            refused += Imports(files.Write(name, text.substr(0, length))) ? 0 : 1;
        }
        EXPECT_GT(refused, 3) << name;
    }
}

TEST(BadFiles, BinaryFilesCutOff) {
    const support::TemporaryDirectory files;
    for (const char* const name :
         {"FBX/phong_cube.fbx", "3DS/fels.3ds", "glTF2/BoxTextured-glTF-Binary/BoxTextured.glb",
          "Collada/duck.zae"}) {
        const std::string whole = support::ReadFile(kModels / name);
        ASSERT_GT(whole.size(), 1000u) << name;
        const std::string file = LikeNamed(name);
        int refused = 0;
        for (std::size_t length = 1; length < whole.size(); length += whole.size() / 7) {
            refused += Imports(files.Write(file, whole.substr(0, length))) ? 0 : 1;
        }
        EXPECT_GT(refused, 0) << name;
    }
}

// Some of these crash Assimp's reader.
TEST(BadFiles, DamagedFacesOfAnAseFile) {
    const support::TemporaryDirectory files;
    const std::string whole = support::ReadFile(kModels / "ASE/ThreeCubesGreen.ASE");
    int faces = 0;
    for (std::size_t at = 0; (at = whole.find("*MESH_FACE ", at)) != std::string::npos; ++at) {
        if (faces++ % support::SweepStride(6) != 0) {
            continue;
        }
        std::string damaged = whole;
        damaged[at + 6] = 'X';
        Imports(files.Write("f.ase", damaged));
    }
    EXPECT_EQ(faces, 36);
}

TEST(BadFiles, DamagedBytes) {
    const support::TemporaryDirectory files;
    std::mt19937 random(20120412);
    for (const char* const name :
         {"FBX/phong_cube.fbx", "3DS/RotatingCube.3DS", "ASE/RotatingCube.ASE",
          "Collada/cube_emptyTags.dae", "glTF2/BoxTextured-glTF-Binary/BoxTextured.glb"}) {
        const std::string whole = support::ReadFile(kModels / name);
        ASSERT_FALSE(whole.empty()) << name;
        for (std::size_t i = 0; i < 40; i += support::SweepStride(5)) {
            std::string damaged = whole;
            for (int k = 0; k < 4; ++k) {
                damaged[random() % damaged.size()] = static_cast<char>(random());
            }
            Imports(files.Write(LikeNamed(name), damaged));
        }
    }
}

TEST(BadFiles, HierarchiesOfAnyDepth) {
    const support::TemporaryDirectory files;
    constexpr int kLevels = 30000;
    std::string text = R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],"nodes":[)";
    for (int i = 1; i < kLevels; ++i) {
        text += "{\"children\":[" + std::to_string(i) + "]},";
    }
    const ImportedScene imported = ImportWithAssimp(files.Write("deep.gltf", text + "{}]}"));
    EXPECT_EQ(imported.scene.nodes.size(), static_cast<std::size_t>(kLevels));
    EXPECT_EQ(imported.scene.nodes.back().parent, kLevels - 2);
}

// ---------------------------------------------------------------- animated files

TEST(AnimatedFiles, BvhMovesItsRoot) {
    const support::TemporaryDirectory files;
    const auto imported = ImportWithAssimp(files.Write(
        "walk.bvh", BvhText("0 0 0 0 0 0 0 0 0\n1 2 3 0 0 0 0 0 30\n2 4 6 0 0 0 0 0 60\n")));
    const auto& nodes = imported.scene.nodes;
    EXPECT_EQ(TimesOf(PositionKeysOf(nodes[0], 0)), (std::vector<int>{0, 192, 384}));
    EXPECT_EQ(ValuesOf(PositionKeysOf(nodes[0], 0)), (std::vector<float>{0, 1, 2}));
    EXPECT_EQ(ValuesOf(PositionKeysOf(nodes[0], 1)), (std::vector<float>{0, -3, -6}));
    EXPECT_EQ(ValuesOf(PositionKeysOf(nodes[0], 2)), (std::vector<float>{0, 2, 4}));
    EXPECT_TRUE(RotationKeysOf(nodes[0], 0).empty());
    EXPECT_EQ(DegreesOf(RotationKeysOf(nodes[1], 2)), (std::vector<double>{0, 30, 60}));
    EXPECT_EQ(imported.warnings, std::vector<std::string>{});
}

TEST(AnimatedFiles, ColladaMovesANodeInItsOwnUnit) {
    const support::TemporaryDirectory files;
    const auto imported = ImportWithAssimp(files.Write("a.dae", R"(<?xml version="1.0"?>
<COLLADA xmlns="http://www.collada.org/2005/11/COLLADASchema" version="1.4.1">
 <asset><unit meter="0.0254" name="inch"/><up_axis>Y_UP</up_axis></asset>
 <library_animations><animation id="move">
  <source id="t"><float_array id="ta" count="2">0 1.5</float_array><technique_common>
   <accessor source="#ta" count="2"><param name="TIME" type="float"/></accessor>
  </technique_common></source>
  <source id="v"><float_array id="va" count="6">1 2 3 4 5 6</float_array><technique_common>
   <accessor source="#va" count="2" stride="3"><param name="X" type="float"/>
    <param name="Y" type="float"/><param name="Z" type="float"/></accessor>
  </technique_common></source>
  <sampler id="s"><input semantic="INPUT" source="#t"/><input semantic="OUTPUT" source="#v"/>
  </sampler>
  <channel source="#s" target="a-id/place"/>
 </animation></library_animations>
 <library_visual_scenes><visual_scene id="scene" name="MaxScene">
  <node id="a-id" name="A"><translate sid="place">1 2 3</translate></node>
 </visual_scene></library_visual_scenes>
 <scene><instance_visual_scene url="#scene"/></scene>
</COLLADA>)"));
    ASSERT_EQ(imported.animations.size(), 1u);
    const auto& nodes = imported.scene.nodes;
    EXPECT_EQ(TimesOf(PositionKeysOf(nodes[0], 0)), (std::vector<int>{0, 7200}));
    EXPECT_EQ(ValuesOf(PositionKeysOf(nodes[0], 0)), (std::vector<float>{1, 4}));
    EXPECT_EQ(ValuesOf(PositionKeysOf(nodes[0], 1)), (std::vector<float>{-3, -6}));
    EXPECT_EQ(ValuesOf(PositionKeysOf(nodes[0], 2)), (std::vector<float>{2, 5}));
    EXPECT_EQ(imported.scene.time.end, 7200);
}
