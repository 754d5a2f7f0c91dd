#include <cmath>
#include <fstream>

#include "tests/unit/kta/glb_sample.h"

namespace {

using namespace sample;

// ---------------------------------------------------------------- container, geometry

TEST(GlbTest, Container) {
    const TakenGlb glb = GlbOf(TriangleActor());
    EXPECT_EQ(std::string(glb.bytes.begin(), glb.bytes.begin() + 4), "glTF");
    EXPECT_EQ(glb.U32At(4), 2u);
    EXPECT_EQ(glb.U32At(8), glb.bytes.size());
    EXPECT_EQ(glb.bytes.size() % 4, 0u);
    EXPECT_EQ(glb.root["asset"]["version"], "2.0");
    EXPECT_EQ(glb.root["buffers"][0]["byteLength"], glb.buffer.size());
    EXPECT_EQ(glb.bytes, GlbOf(TriangleActor()).bytes);
    EXPECT_TRUE(glb.warnings.empty());
}

TEST(GlbTest, FileWithoutNodes) {
    const TakenGlb glb = GlbOf(kActor + ExtraMaterial());
    EXPECT_FALSE(glb.root.contains("scene"));
    EXPECT_TRUE(glb.buffer.empty());
}

// The file's axes are x, z, y of the scene, glTF's x, z, -y; corners keep their order, so that
// faces look the way that they did.
TEST(GlbTest, PositionsNormalsAndTriangles) {
    const TakenGlb glb = GlbOf(TriangleActor());
    EXPECT_EQ(glb.Attribute("POSITION"), (std::vector<float>{1, 2, -3, 2, 2, -3, 1, 4, -3}));
    EXPECT_EQ(glb.Attribute("NORMAL"), (std::vector<float>{0, 0, -1, 0, 0, -1, 0, 0, -1}));
    EXPECT_EQ(glb.Values<std::uint16_t>(glb.Primitive()["indices"])[1], 1);
    const json& accessor =
        glb.root["accessors"].at(glb.Primitive()["attributes"]["POSITION"].get<std::size_t>());
    EXPECT_EQ(Floats(accessor["min"]), (std::vector<float>{1, 2, -3}));
    EXPECT_EQ(Floats(accessor["max"]), (std::vector<float>{2, 4, -3}));
}

TEST(GlbTest, HierarchyAndTransforms) {
    NodeFields child = NodeAt("Child", "Parent", {1, 2, 3}, {11, 2, 3});
    child.rotation = {0, -kRootOfHalf, 0, kRootOfHalf};
    child.scale = {2, 3, 4};
    // Turned, scaled and moved, and that inverted: rows of the inverse.
    child.matrix = {0,    0, -0.25f, 0, 0,     1 / 3.0f,  0,         0,
                    0.5f, 0, 0,      0, -1.5f, -2 / 3.0f, 11 / 4.0f, 0};
    const TakenGlb glb = GlbOf(ActorOf({child, RootAt("Parent", {10, 0, 0})}));
    EXPECT_EQ(glb.root["scenes"][0]["nodes"], json({1}));
    EXPECT_EQ(glb.Node("Parent")["children"], json::array({0}));
    EXPECT_EQ(Floats(glb.Node("Parent")["translation"]), (std::vector<float>{10, 0, 0}));
    EXPECT_EQ(Floats(glb.Node("Child")["translation"]), (std::vector<float>{1, 2, -3}));
    EXPECT_EQ(Floats(glb.Node("Child")["rotation"]),
              (std::vector<float>{0, kRootOfHalf, 0, kRootOfHalf}));
    EXPECT_EQ(Floats(glb.Node("Child")["scale"]), (std::vector<float>{2, 3, 4}));
}

TEST(GlbTest, MirroredNodeKeepsItsScales) {
    NodeFields node = RootAt("Box", {});
    node.scale = {-1, -1, -1};
    node.matrix[0] = node.matrix[5] = node.matrix[10] = -1;
    const TakenGlb glb = GlbOf(ActorOf({node}, MeshChunk(FacingTriangleOf(0))));
    EXPECT_EQ(Floats(glb.Node("Box")["scale"]), (std::vector<float>{-1, -1, -1}));
    EXPECT_EQ(glb.Attribute("POSITION")[0], 1);
}

// A scale along other axes than the node's own goes into the vertices.
TEST(GlbTest, ShearedNode) {
    NodeFields node = RootAt("Box", {});
    node.matrix[4] = -1;  // p * rows: (x - y, y, z), so (x + y, y, z) is the node's
    const TakenGlb glb = GlbOf(ActorOf({node, NodeAt("Child", "Box", {1, 1, 0}, {2, 1, 0})},
                                       MeshChunk(FacingTriangleOf(0))));
    const json& box = glb.Node("Box");
    const std::vector<float> q =
        box.contains("rotation") ? Floats(box["rotation"]) : std::vector<float>{0, 0, 0, 1};
    const std::vector<float> s = Floats(box["scale"]);
    const float z = q[2], w = q[3];
    const auto world = [&](float x, float y) {
        const float a = s[0] * x, b = s[1] * y;
        return std::vector<float>{a * (1 - 2 * z * z) - b * 2 * z * w,
                                  a * 2 * z * w + b * (1 - 2 * z * z)};
    };
    const std::vector<float> positions = glb.Attribute("POSITION");
    ExpectFloats(world(positions[0], positions[1]), {3, 2});
    ExpectFloats(world(positions[6], positions[7]), {5, 4});
    const std::vector<float> child = Floats(glb.Node("Child")["translation"]);
    ExpectFloats(world(child[0], child[1]), {2, 1});
}

TEST(GlbTest, CollisionMeshesWhenAskedFor) {
    MeshFields mesh = FacingTriangleOf(0);
    mesh.isCollision = 1;
    const std::string actor = ActorOf({RootAt("Hull", {})}, MeshChunk(mesh));
    EXPECT_FALSE(GlbOf(actor).root.contains("meshes"));
    EXPECT_EQ(GlbOf(actor, "", {.withCollision = true}).Node("Hull")["mesh"], 0);
}

TEST(GlbTest, SecondMeshOfANodeHangsFromAChild) {
    const MeshFields seen = FacingTriangleOf(0);
    MeshFields collision = seen;
    collision.isCollision = 1;
    const TakenGlb glb =
        GlbOf(ActorOf({RootAt("Hull", {})}, MeshChunk(seen) + MeshChunk(collision)), "",
              {.withCollision = true});
    EXPECT_EQ(glb.Node("Hull")["mesh"], 0);
    ASSERT_EQ(glb.Node("Hull")["children"].size(), 1u);
    const json& child = glb.root["nodes"][glb.Node("Hull")["children"][0].get<std::size_t>()];
    EXPECT_EQ(child["mesh"], 1);
}

TEST(GlbTest, TextureCoordinatesStayAndUpToEightSets) {
    MeshFields mesh = FacingTriangleOf(0);
    mesh.mapChannelCount = 9;
    for (VertexFields& vertex : mesh.subMeshes[0].vertices) {
        for (float set = 0; set < 9; ++set) {
            vertex.pairs.push_back({set, 0.25f});
        }
    }
    const TakenGlb glb = GlbOf(ActorOf({RootAt("Box", {})}, MeshChunk(mesh)));
    EXPECT_EQ(glb.Attribute("TEXCOORD_7"), (std::vector<float>{7, 0.25f, 7, 0.25f, 7, 0.25f}));
    EXPECT_FALSE(glb.Primitive()["attributes"].contains("TEXCOORD_8"));
    EXPECT_EQ(glb.warnings, (std::vector<std::string>{"1 set of texture coordinates left out, "
                                                      "beyond the first 8 of a mesh"}));
}

TEST(GlbTest, NormalsWithoutDirectionAndCornersThatAreNowhere) {
    MeshFields mesh = FacingTriangleOf(0);
    mesh.originalVertexCount = 4;
    mesh.subMeshes[0].vertices[1].normal = {0, 0, 0};
    mesh.subMeshes[0].vertices.push_back({3, {kInfinity, 0, 0}, {0, 1, 0}});
    mesh.subMeshes[0].faces.push_back({0, 1, 3});
    const TakenGlb glb = GlbOf(ActorOf({RootAt("Box", {})}, MeshChunk(mesh)));
    EXPECT_EQ(glb.Values<std::uint16_t>(glb.Primitive()["indices"]).size(), 3u);
    // (1, 0, 0) x (0, 2, 0) of the corners (1, 2, -3), (2, 2, -3), (1, 4, -3).
    EXPECT_EQ(glb.Attribute("NORMAL")[5], 1);
    EXPECT_EQ(glb.warnings,
              (std::vector<std::string>{"1 triangle left out, with a corner that is nowhere",
                                        "1 normal without direction, taken from the triangles"}));
}

// ---------------------------------------------------------------- materials

// On a triangle with texture coordinates.
TakenGlb GlbWith(const MaterialFields& material, const std::string& layers = "",
                 const kta::GlbOptions& options = {}) {
    MeshFields mesh = FacingTriangleOf(0, 1);
    mesh.mapChannelCount = 1;
    for (VertexFields& vertex : mesh.subMeshes[0].vertices) {
        vertex.pairs.push_back({0.5f, 0.5f});
    }
    return GlbOf(kActor + ExtraMaterial() + MaterialChunk(material) + layers +
                     NodeChunk(RootAt("Box", {})) + MeshChunk(mesh),
                 "", options);
}

// The screen's 0.5 is 0.2140 of light (IEC 61966-2-1).
TEST(GlbTest, ColoursBecomeLight) {
    MaterialFields material;
    material.name = "Paint";
    material.diffuse = {0.5f, 1, 0};
    material.selfIllumination = {0, 0.5f, 0};
    material.opacity = 0.25f;
    material.twoSided = 1;
    const TakenGlb glb = GlbWith(material);
    ASSERT_EQ(glb.root["materials"].size(), 1u);  // the one that is used
    const json& paint = glb.root["materials"][0];
    EXPECT_EQ(paint["name"], "Paint");
    EXPECT_EQ(paint["alphaMode"], "BLEND");
    EXPECT_EQ(paint["doubleSided"], true);
    const std::vector<float> colour = Floats(paint["pbrMetallicRoughness"]["baseColorFactor"]);
    EXPECT_NEAR(colour[0], 0.2140, 1e-4);
    EXPECT_EQ(colour[1], 1);
    EXPECT_EQ(colour[3], 0.25f);
    EXPECT_NEAR(Floats(paint["emissiveFactor"])[1], 0.2140, 1e-4);
    EXPECT_EQ(paint["pbrMetallicRoughness"]["metallicFactor"], 0);
}

// The exponent of the highlight is 2 to the power of ten times the glossiness: 1, so that alpha is
// the root of 2 / 3, and 1024.
TEST(GlbTest, GlossinessIsSmoothness) {
    MaterialFields material;
    material.shininess = 0;
    material.shininessStrength = 0.5f;
    const auto roughness = [](const TakenGlb& glb) {
        return glb.root["materials"][0]["pbrMetallicRoughness"]["roughnessFactor"].get<double>();
    };
    EXPECT_NEAR(roughness(GlbWith(material)), std::pow(2 / 3.0, 0.25), 1e-5);
    material.shininess = 1;
    const TakenGlb glb = GlbWith(material);
    EXPECT_NEAR(roughness(glb), std::pow(2 / 1026.0, 0.25), 1e-5);
    const json& specular = glb.root["materials"][0]["extensions"]["KHR_materials_specular"];
    EXPECT_EQ(specular["specularFactor"], 0.5);
}

TEST(GlbTest, MaterialThatThereIsNot) {
    const TakenGlb glb = GlbOf(ActorOf({RootAt("Box", {})}, MeshChunk(FacingTriangleOf(0, 77))));
    EXPECT_EQ(glb.root["materials"][0]["name"], "Default");
}

TEST(GlbTest, TexturesAreReferredToByTheirNames) {
    const TakenGlb glb = GlbWith(Grey(), LayerChunk({.texture = "brick #1.png"}) +
                                             LayerChunk({.texture = "glow.JPG", .type = 7}) +
                                             LayerChunk({.texture = "bump.png", .type = 3}) +
                                             LayerChunk({.texture = "old.tga", .type = 2}));
    EXPECT_EQ(glb.root["images"],
              json::parse(R"([{"uri": "brick%20%231.png"}, {"uri": "glow.JPG"}])"));
    const json& material = glb.root["materials"][0];
    EXPECT_EQ(material["pbrMetallicRoughness"]["baseColorTexture"], json({{"index", 0}}));
    EXPECT_EQ(Floats(material["pbrMetallicRoughness"]["baseColorFactor"]),
              (std::vector<float>{1, 1, 1, 1}));
    EXPECT_EQ(material["emissiveTexture"], json({{"index", 1}}));
    EXPECT_EQ(glb.warnings, (std::vector<std::string>{
                                "1 texture left out, no PNG or JPEG image, which alone glTF has: "
                                "old.tga",
                                "layers left out, which glTF cannot show: 1 bump"}));
}

// A texture reference to coordinates that there are not is an error of glTF (section 3.9.3).
TEST(GlbTest, WithoutTextureCoordinatesColoursShow) {
    MeshFields textured = FacingTriangleOf(1, 1);
    textured.mapChannelCount = 1;
    for (VertexFields& vertex : textured.subMeshes[0].vertices) {
        vertex.pairs.push_back({0.5f, 0.5f});
    }
    const TakenGlb glb =
        GlbOf(kActor + ExtraMaterial() + MaterialChunk(Grey()) + LayerChunk({.texture = "a.png"}) +
              NodeChunk(RootAt("Bare", {})) + MeshChunk(FacingTriangleOf(0, 1)) +
              NodeChunk(RootAt("Textured", {})) + MeshChunk(textured));
    const auto surface = [&](std::size_t mesh) {
        return glb.root["materials"].at(
            glb.Primitive(mesh)["material"].get<std::size_t>())["pbrMetallicRoughness"];
    };
    EXPECT_FALSE(surface(0).contains("baseColorTexture"));
    EXPECT_LT(Floats(surface(0)["baseColorFactor"])[0], 1);
    EXPECT_EQ(surface(1)["baseColorTexture"], json({{"index", 0}}));
    EXPECT_EQ(glb.warnings,
              (std::vector<std::string>{"1 material shown without textures where there are no "
                                        "texture coordinates"}));
}

// Twice as many images each way, about the middle of the image: 0.5 stays 0.5, and 0.75 becomes 1.
TEST(GlbTest, TilingIsAboutTheMiddle) {
    const TakenGlb glb = GlbWith(Grey(), LayerChunk({.texture = "a.png", .tiling = {2, 4}}));
    const json& transform = glb.root["materials"][0]["pbrMetallicRoughness"]["baseColorTexture"]
                                    ["extensions"]["KHR_texture_transform"];
    const std::vector<float> offset = Floats(transform["offset"]);
    const std::vector<float> scale = Floats(transform["scale"]);
    EXPECT_EQ(0.5f * scale[0] + offset[0], 0.5f);
    EXPECT_EQ(0.75f * scale[0] + offset[0], 1);
    EXPECT_EQ(0.5f * scale[1] + offset[1], 0.5f);
    EXPECT_EQ(scale[1], 4);
    EXPECT_EQ(glb.root["extensionsUsed"],
              json({"KHR_materials_specular", "KHR_texture_transform"}));
}

// An offset to the right and up moves the image there: a point shows what stood left of it and
// below, which is less of u and, from the image's top, more of v.
TEST(GlbTest, OffsetsMoveTheImage) {
    const TakenGlb glb =
        GlbWith(Grey(), LayerChunk({.texture = "a.png", .offset = {0.25f, 0.125f}}));
    const json& transform = glb.root["materials"][0]["pbrMetallicRoughness"]["baseColorTexture"]
                                    ["extensions"]["KHR_texture_transform"];
    EXPECT_EQ(Floats(transform["offset"]), (std::vector<float>{-0.25f, 0.125f}));
}

class GlbTextureTest : public ::testing::Test {
  protected:
    void Put(const std::string& name, const std::string& bytes) {
        std::ofstream(folder_ / name, std::ios::binary) << bytes;
    }
    kta::GlbOptions Options(bool embeds) {
        kta::GlbOptions options;
        options.directory = folder_.parent_path();
        options.embedTextures = embeds;
        options.findTexture =
            [this](std::string_view name) -> std::optional<std::filesystem::path> {
            const std::filesystem::path path = folder_ / name;
            return std::filesystem::exists(path) ? std::optional(path) : std::nullopt;
        };
        options.convertToPng = [](const std::filesystem::path&) {
            return std::vector<std::uint8_t>{1, 2, 3};
        };
        return options;
    }
    TakenGlb WithTexture(const std::string& name, bool embeds) {
        return GlbWith(Grey(), LayerChunk({.texture = name}), Options(embeds));
    }

    support::TemporaryDirectory directory_;
    std::filesystem::path folder_ = directory_.Path();
};

const std::string kPngStart = "\x89PNG\r\n\x1a\n";

TEST_F(GlbTextureTest, FoundBesideTheFile) {
    Put("wall.bin", kPngStart + "...");
    const TakenGlb glb = WithTexture("wall.bin", false);
    EXPECT_EQ(glb.root["images"][0], json({{"uri", folder_.filename().string() + "/wall.bin"}}));
}

TEST_F(GlbTextureTest, Embedded) {
    Put("wall.png", kPngStart + "...");
    const TakenGlb glb = WithTexture("wall.png", true);
    const json& image = glb.root["images"][0];
    EXPECT_EQ(image["mimeType"], "image/png");
    const json& view = glb.root["bufferViews"].at(image["bufferView"].get<std::size_t>());
    EXPECT_EQ(glb.buffer.substr(view["byteOffset"], view["byteLength"]), kPngStart + "...");
}

TEST_F(GlbTextureTest, ConvertedWhereGltfLacksTheKind) {
    Put("wall.tga", "not what it seems");
    EXPECT_EQ(WithTexture("wall.tga", true).root["images"][0]["mimeType"], "image/png");
    EXPECT_EQ(WithTexture("wall.tga", false).warnings,
              (std::vector<std::string>{"1 texture left out, no PNG or JPEG image, which alone "
                                        "glTF has (embedding converts): wall.tga"}));
}

TEST_F(GlbTextureTest, NotFoundKeepsTheColour) {
    const TakenGlb glb = WithTexture("wall.png", false);
    EXPECT_FALSE(glb.root.contains("textures"));
    EXPECT_LT(Floats(glb.root["materials"][0]["pbrMetallicRoughness"]["baseColorFactor"])[0], 1);
    EXPECT_EQ(glb.warnings, (std::vector<std::string>{"1 texture left out, not found: wall.png"}));
}

}  // namespace
