// Each change and omission of an import is said, in one line a kind.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "host/assimp/warnings.h"
#include "host/scene/check.h"
#include "tests/support/temporary_directory.h"
#include "tests/unit/host/assimp/shown_scene.h"
#include "tests/unit/host/assimp/source_scene.h"

using maxhost::import::ImportedScene;
using maxhost::import::ImportWarnings;
using maxhost::import::ImportWithAssimp;
using maxhost::scene::LossCode;
using Lines = std::vector<std::string>;

namespace {

std::string GltfWithScenes(const std::string& scenes) {
    return R"({"asset":{"version":"2.0"},"scene":0,"scenes":[)" + scenes +
           R"(],"nodes":[{"name":"a","children":[1]},{"name":"b"},{"name":"c","children":[3]},)"
           R"({"name":"d"}]})";
}

constexpr LossCode kAny = LossCode::polygonNotCut;

Lines TextsOf(const ImportWarnings& warnings) {
    Lines texts;
    for (const ImportWarnings::Line& line : warnings.Lines()) {
        texts.push_back(line.text);
    }
    return texts;
}

Lines WarningsOfRate(double rate) {
    SourceScene source(kBvh);
    source.AddAnimation("walk", 10, rate, {"Root"});
    return source.Convert().warnings;
}

}  // namespace

TEST(WarningLines, OfOneKindAreOneLine) {
    ImportWarnings warnings;
    warnings.AddOf({kAny, "polygons left out"}, "mesh", "'a'");
    EXPECT_EQ(TextsOf(warnings), Lines{"mesh 'a': polygons left out"});
    warnings.AddOf({kAny, "polygons left out"}, "mesh", "'b'");
    EXPECT_EQ(TextsOf(warnings), Lines{"2 meshes ('a', 'b'): polygons left out"});
    warnings.AddOf({kAny, "polygons left out"}, "mesh", "'c'");
    warnings.AddOf({kAny, "nothing"}, "mesh", "'c'", 0);
    for (int i = 0; i < 1000; ++i) {
        warnings.AddOf({kAny, "polygons left out"}, "mesh", "'d'");
    }
    EXPECT_EQ(TextsOf(warnings), Lines{"1003 meshes ('a', 'b', 'c', ...): polygons left out"});
}

TEST(WarningLines, CountCasesAndKeepKindsApart) {
    ImportWarnings warnings;
    warnings.AddOf(LossCode::nameRecoded, "node", "'a'", 3);
    EXPECT_EQ(TextsOf(warnings), Lines{"node 'a': name was not UTF-8, read as Latin-1 (3)"});
    warnings.AddOf(LossCode::nameRecoded, "material", "'m'");
    warnings.AddOf(LossCode::nameRecoded, "node", "'b'", 2);
    EXPECT_EQ(TextsOf(warnings),
              (Lines{"2 nodes ('a', 'b'): name was not UTF-8, read as Latin-1 (5)",
                     "material 'm': name was not UTF-8, read as Latin-1"}));
}

TEST(Losses, AreEveryCaseWithItsCodeAndNode) {
    ImportWarnings warnings;
    warnings.Add(LossCode::pointsAndLines, "mesh 'a'", 2);
    warnings.SetNode(7);
    for (int i = 0; i < 20; ++i) {
        warnings.Add(LossCode::keyOrder, "", 1);
    }
    warnings.AddOf({LossCode::unitKept, "own words"}, "file", "'f'");
    warnings.Add(LossCode::keyOrder, "", 0);
    ASSERT_EQ(warnings.Losses().size(), 22u);
    const maxhost::scene::Loss& first = warnings.Losses().front();
    EXPECT_EQ(first.code, LossCode::pointsAndLines);
    EXPECT_EQ(first.text, "points and lines left out");
    EXPECT_EQ(first.subject, "mesh 'a'");
    EXPECT_EQ(first.node, maxhost::scene::kNone);
    EXPECT_EQ(first.count, 2u);
    EXPECT_EQ(warnings.Losses()[1].node, 7);
    const maxhost::scene::Loss& last = warnings.Losses().back();
    EXPECT_EQ(last.code, LossCode::unitKept);
    EXPECT_EQ(last.text, "own words");
    EXPECT_EQ(last.subject, "file 'f'");
    EXPECT_EQ(warnings.Lines().back().code, LossCode::unitKept);
}

TEST(LeftOut, NormalsWithoutADirection) {
    SourceScene source(kOther);
    const unsigned plain = source.AddTriangle("plain");
    const unsigned broken = source.AddTriangle("broken");
    source.Mesh(broken).mNormals = new aiVector3D[3]{{0, 0, 0}, {0, 1, 0}, {0, kNan, 1}};
    SourceScene::Show(source.Root(), {plain, broken});
    EXPECT_EQ(source.Convert().warnings,
              Lines{"mesh 'broken': normals without a direction left out (2)"});
}

TEST(LeftOut, ThirdTextureCoordinates) {
    SourceScene source(kOther);
    const unsigned m = source.AddTriangle("m");
    source.AddTextureCoordinates(m, 0, {{1, 2, 0}, {3, 4, 0.5f}, {5, 6, 1}});
    source.AddTextureCoordinates(m, 1, {{1, 2, 0}, {3, 4, 0}, {5, 6, 0}});
    SourceScene::Show(source.Root(), {m});
    EXPECT_EQ(source.Convert().warnings, Lines{"mesh 'm': third texture coordinates left out"});
}

TEST(LeftOut, VerticesWithoutFaces) {
    SourceScene source(kOther);
    const unsigned cloud = source.AddMesh("cloud", {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}, {});
    SourceScene::Show(source.Root(), {cloud});
    const ImportedScene imported = source.Convert();
    EXPECT_TRUE(imported.scene.nodes[0].object.value().mesh->vertices.empty());
    EXPECT_EQ(imported.warnings, Lines{"mesh 'cloud': vertices without faces left out (3)"});
}

TEST(LeftOut, MaterialsThatNoFaceShows) {
    SourceScene source(kOther);
    for (const char* const name : {"a", "used", "b", "c", "d", AI_DEFAULT_MATERIAL_NAME}) {
        source.AddMaterial(name);
    }
    delete source.Scene().mMaterials[4];
    source.Scene().mMaterials[4] = new aiMaterial;  // glTF's importer adds one without a name
    SourceScene::Show(source.Root(), {source.AddTriangle("m", 1)});
    EXPECT_EQ(source.Convert().warnings,
              Lines{"3 materials ('a', 'b', 'c'): left out, no face shows it"});
}

TEST(LeftOut, NodesOfOtherGltfScenes) {
    const support::TemporaryDirectory files;
    const auto warnings = [&](const std::string& scenes) {
        return ImportWithAssimp(files.Write("s.gltf", GltfWithScenes(scenes))).warnings;
    };
    EXPECT_EQ(warnings(R"({"nodes":[0]},{"nodes":[2]})"),
              Lines{"nodes outside the scene that the file shows left out (2)"});
    EXPECT_EQ(warnings(R"({"nodes":[0]})"),
              Lines{"nodes outside the scene that the file shows left out (2)"});
    EXPECT_EQ(warnings(R"({"nodes":[0,3]},{"nodes":[2]})"),
              Lines{"nodes outside the scene that the file shows left out"});
    EXPECT_EQ(warnings(R"({"nodes":[0,2]},{"nodes":[2]})"), Lines{});
}

TEST(Recoded, EveryTextOfTheFile) {
    SourceScene source(kOther);
    aiMaterial& steel = source.AddMaterial("st\xe4hl");
    const aiString path("h\xf6lz.png");
    steel.AddProperty(&path, AI_MATKEY_TEXTURE(aiTextureType_DIFFUSE, 0));
    SourceScene::Show(source.Root(), {source.AddTriangle("m")});
    source.Root()->mMetaData = new aiMetadata;
    source.Root()->mMetaData->Add(
        "gr\xf6\xdf"
        "e",
        std::int32_t{1});
    source.AddAnimation("l\xe4uft", 1, 1);
    const ImportedScene imported = source.Convert();
    EXPECT_EQ(imported.scene.nodes[0].userProperties,
              "gr\xc3\xb6\xc3\x9f"
              "e = 1\r\n");
    EXPECT_EQ(imported.warnings,
              (Lines{"animation 'l\xc3\xa4uft': name was not UTF-8, read as Latin-1",
                     "node 'Root': user properties were not UTF-8, read as Latin-1",
                     "material 'st\xc3\xa4hl': name was not UTF-8, read as Latin-1",
                     "material 'st\xc3\xa4hl': texture paths were not UTF-8, read as Latin-1",
                     "texture 'h\xc3\xb6lz.png': not found beside the model and in its folders "
                     "file.fbm, textures, maps, images and ../textures"}));
}

TEST(Recoded, ValuesOfUserPropertiesAndTheNamesOfTexturesInTheFile) {
    SourceScene source(kFbx, "Scene");
    SourceScene::Show(source.Root(), {source.AddTriangle("m")});
    source.Root()->mMetaData = new aiMetadata;
    source.Root()->mMetaData->Add("UDP3DSMAX", aiString("a = \xe4"));
    source.Root()->mMetaData->Add("b", aiString("\xf6"));
    aiMaterial& steel = source.AddMaterial("steel");
    const aiString path("*0");
    steel.AddProperty(&path, AI_MATKEY_TEXTURE(aiTextureType_DIFFUSE, 0));
    source.Scene().mNumTextures = 1;
    source.Scene().mTextures = new aiTexture* [1] { new aiTexture };
    source.Scene().mTextures[0]->mFilename = "h\xf6lz.png";
    const Lines warnings = source.Convert().warnings;
    const auto has = [&](const std::string& line) {
        return std::find(warnings.begin(), warnings.end(), line) != warnings.end();
    };
    EXPECT_TRUE(has("node 'Scene': user properties were not UTF-8, read as Latin-1"));
    EXPECT_TRUE(has("material 'steel': texture paths were not UTF-8, read as Latin-1"));
}

TEST(Renamed, ARootThatIsCalledAfterTheFile) {
    SourceScene source(kOther, "<STL_BINARY>");
    SourceScene::Show(source.Root(), {source.AddTriangle("m")});
    EXPECT_EQ(source.Convert("/models/gear.stl").warnings,
              Lines{"node 'gear': given the file's name, the file gives its root none"});
}

// Linux takes any bytes for a file's name; the scene takes UTF-8.
TEST(Renamed, TheNameOfALatin1FileIsRecoded) {
    for (const char* const root : {"<STL_BINARY>", "/models/ger\xe4t.stl"}) {
        SourceScene source(kOther, root);
        SourceScene::Show(source.Root(), {source.AddTriangle("m")});
        const ImportedScene imported = source.Convert("/models/ger\xe4t.stl");
        EXPECT_EQ(NamesOf(imported.scene), Lines{"ger\xc3\xa4t"});
        EXPECT_NO_THROW(maxhost::scene::Check(imported.scene));
        EXPECT_EQ(imported.warnings,
                  (Lines{"node 'ger\xc3\xa4t': given the file's name, the file gives its root none",
                         "node 'ger\xc3\xa4t': name was not UTF-8, read as Latin-1"}));
    }
}

TEST(FrameRates, ThatAreRoundedAreSaid) {
    const auto line = [](const std::string& text) { return Lines{text}; };
    EXPECT_EQ(WarningsOfRate(30000.0 / 1001), line("frame rate 29.97 rounded to 30"));
    EXPECT_EQ(WarningsOfRate(119.9904), line("frame rate 119.99 rounded to 120"));
    EXPECT_EQ(WarningsOfRate(30), Lines{});
    EXPECT_EQ(WarningsOfRate(1 / 0.033333), Lines{});  // as BVH files write 30
    EXPECT_EQ(WarningsOfRate(9600),
              line("frame rate 9600 left out, it is not within 0.5 and 4800"));
    EXPECT_EQ(WarningsOfRate(0.25),
              line("frame rate 0.25 left out, it is not within 0.5 and 4800"));
}

TEST(Units, ThatAreNotTheFormatsOwnAreSaid) {
    const auto fbx = [](auto factor, int up) {
        SourceScene source(kFbx, "RootNode");
        source.Set("UnitScaleFactor", factor);
        source.Set("UpAxis", up);
        source.AddNode(source.Root(), "Box");
        return source.Convert().warnings;
    };
    const std::string rest = "; lengths are left in that unit (--scale changes them)";
    EXPECT_EQ(fbx(2.54, 2),
              Lines{"the file's unit is 0.0254 m and its up axis z, not turned" + rest});
    EXPECT_EQ(fbx(100.0f, 1),
              Lines{"the file's unit is 1 m and its up axis y, turned to z" + rest});
    EXPECT_EQ(fbx(1.0, 2), Lines{});
    EXPECT_EQ(fbx(std::numeric_limits<double>::quiet_NaN(), 2), Lines{});
    EXPECT_EQ(fbx(-1.0, 2), Lines{});
    const auto collada = [](float unit) {
        SourceScene source(kCollada, "VisualSceneNode");
        source.Root()->mTransformation =
            aiMatrix4x4(unit, 0, 0, 0, 0, 0, unit, 0, 0, -unit, 0, 0, 0, 0, 0, 1);  // z up
        source.AddNode(source.Root(), "Box");
        return source.Convert().warnings;
    };
    EXPECT_EQ(collada(0.0254f),
              Lines{"the file's unit is 0.0254 m and its up axis z, not turned" + rest});
    EXPECT_EQ(collada(1), Lines{});
}
