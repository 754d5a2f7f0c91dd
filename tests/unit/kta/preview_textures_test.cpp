#include "kta/preview/actor_textures.h"

#include <gtest/gtest.h>

#include <numbers>

#include "tests/unit/kta/preview_meshes.h"

namespace {

using namespace sample;
using kta::Rgb;

// Red and green above, blue and white below, each of 8 pixels.
kta::Picture FourColourPicture() {
    kta::Picture picture = kta::PlainPicture(16, 16, {255, 255, 255});
    kta::Paste(picture, kta::PlainPicture(8, 8, {255, 0, 0}), 0, 0);
    kta::Paste(picture, kta::PlainPicture(8, 8, {0, 255, 0}), 8, 0);
    kta::Paste(picture, kta::PlainPicture(8, 8, {0, 0, 255}), 0, 8);
    return picture;
}

class PreviewTexturesTest : public testing::Test {
  protected:
    // A square whose material has these layers, with what is found in the directory.
    kta::Picture Draw(const std::vector<LayerFields>& layers,
                      const MeshFields& mesh = TexturedSquare()) {
        const auto image = kta::EncodePng(image_);
        support::WriteFile(std::string(directory_.Path()) + "/image.png",
                           std::string(image.begin(), image.end()));
        std::string bytes = kActor + MaterialChunk({.diffuse = {0.5f, 0.5f, 0.5f}});
        for (const LayerFields& layer : layers) {
            bytes += LayerChunk(layer);
        }
        file_ = ReadExact(bytes + MeshChunk(mesh)).file.value();
        kta::TextureFinder finder(directory_.Path(), {});
        textures_ = kta::LoadTextures(file_, finder);
        return kta::DrawPreview(kta::PreviewModel(file_, nullptr, {.textures = &textures_}),
                                kFrontView)
            .picture.value();
    }

    kta::Picture image_ = FourColourPicture();
    support::TemporaryDirectory directory_;
    kta::File file_;
    kta::ActorTextures textures_;
};

Rgb Shown(const kta::Vector3& diffuse) {
    return kta::Shade({.diffuse = diffuse}, {0, 0, 1});
}

TEST_F(PreviewTexturesTest, StandInThePlaceOfTheDiffuseColour) {
    const kta::Picture picture = Draw({{.texture = "C:\\maps\\image.png"}});
    EXPECT_EQ(picture.At(25, 25), Shown({1, 0, 0}));
    EXPECT_EQ(picture.At(75, 25), Shown({0, 1, 0}));
    EXPECT_EQ(picture.At(25, 75), Shown({0, 0, 1}));
    EXPECT_EQ(picture.At(75, 75), Shown({1, 1, 1}));
    EXPECT_TRUE(textures_.notFound.empty());
}

TEST_F(PreviewTexturesTest, AmountMixesWithTheDiffuseColour) {
    EXPECT_EQ(Draw({{.texture = "image.png", .amount = 0.5f}}).At(25, 25),
              Shown({0.75, 0.25, 0.25}));
    EXPECT_EQ(Draw({{.texture = "image.png", .amount = -3}}).At(25, 25), Shown({0.5, 0.5, 0.5}));
    EXPECT_EQ(Draw({{.texture = "image.png", .amount = 7}}).At(25, 25), Shown({1, 0, 0}));
}

TEST_F(PreviewTexturesTest, TheFirstDiffuseLayerShows) {
    const kta::Picture picture = Draw(
        {{.texture = "bump.png", .type = 3}, {.texture = "image.png"}, {.texture = "second.png"}});
    EXPECT_EQ(picture.At(25, 25), Shown({1, 0, 0}));
    EXPECT_TRUE(textures_.notFound.empty());  // only what would show is looked for
}

TEST_F(PreviewTexturesTest, MissingAndFaultyOnesAreTold) {
    EXPECT_EQ(Draw({{.texture = "C:\\maps\\none.png"}}).At(25, 25), Shown({0.5, 0.5, 0.5}));
    EXPECT_EQ(textures_.notFound, std::vector<std::string>{"C:\\maps\\none.png"});
    const std::string path = (std::filesystem::path(directory_.Path()) / "text.png").string();
    support::WriteFile(path, "no image");
    EXPECT_EQ(Draw({{.texture = "text.png"}}).At(25, 25), Shown({0.5, 0.5, 0.5}));
    EXPECT_EQ(textures_.faults,
              std::vector<std::string>{path + ": is no PNG, JPEG, BMP or TGA image"});
}

TEST_F(PreviewTexturesTest, MeshesWithoutTextureCoordinatesShowTheColour) {
    MeshFields mesh = TexturedSquare();
    mesh.mapChannelCount = 0;
    for (VertexFields& vertex : mesh.subMeshes[0].vertices) {
        vertex.pairs.clear();
    }
    EXPECT_EQ(Draw({{.texture = "image.png"}}, mesh).At(25, 25), Shown({0.5, 0.5, 0.5}));
    mesh = TexturedSquare();
    mesh.subMeshes[0].vertices[0].pairs[0][0] = kInfinity;
    EXPECT_EQ(Draw({{.texture = "image.png"}}, mesh).At(25, 25), Shown({0.5, 0.5, 0.5}));
}

// Far more pixels of the image than the picture has are averaged, not picked from.
TEST_F(PreviewTexturesTest, FineTexturesAreAveraged) {
    const kta::Picture picture = Draw({{.texture = "image.png", .tiling = {500, 500}}});
    for (const int x : {20, 47, 71}) {
        EXPECT_EQ(picture.At(x, 33), picture.At(60, 60));
    }
}

// An image of 270 columns on a square of 90 pixels, each third column white: so much of it shows in
// each pixel.
TEST_F(PreviewTexturesTest, EachColumnOfAPixelCounts) {
    kta::Picture stripes = kta::PlainPicture(270, 1, {0, 0, 0});
    for (std::size_t i = 1; i < 270; i += 3) {
        stripes.pixels[i] = {255, 255, 255};
    }
    image_ = stripes;
    const kta::Picture picture = Draw({{.texture = "image.png"}});
    const Rgb third = Shown({1.0 / 3, 1.0 / 3, 1.0 / 3});
    for (int x = 6; x < 94; ++x) {
        EXPECT_NEAR(picture.At(x, 50)[0], third[0], 1) << x;
    }
}

// Half a square: on the diagonal six of a pixel's nine samples show it, three the background.
TEST_F(PreviewTexturesTest, EdgesAreAsSmoothAsThoseWithoutATexture) {
    MeshFields mesh = TexturedSquare();
    mesh.subMeshes[0].faces.pop_back();
    image_ = kta::PlainPicture(4, 4, {255, 0, 0});
    const kta::Picture picture = Draw({{.texture = "image.png"}}, mesh);
    const Rgb red = Shown({1, 0, 0});
    EXPECT_EQ(picture.At(30, 50), red);
    EXPECT_EQ(picture.At(70, 50), kta::kBackground);
    for (int x = 10; x < 90; ++x) {
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_NEAR(picture.At(x, 99 - x)[i], (6 * red[i] + 3 * kta::kBackground[i]) / 9.0, 0.6)
                << x;
        }
    }
}

// ---------------------------------------------------------------- places

void ExpectPlace(const LayerFields& fields, const kta::TextureCoordinates& pair, double x,
                 double y) {
    const kta::Reading reading = ReadExact(kActor + MaterialChunk(Grey()) + LayerChunk(fields));
    const auto place = kta::PlaceInImage(BodyOf<KTAMaterialLayer>(reading, 1), pair);
    EXPECT_NEAR(place[0], x, 1e-6);
    EXPECT_NEAR(place[1], y, 1e-6);
}

TEST(PlaceInImageTest, OffsetsTilingAndAngleGoByTheMiddle) {
    ExpectPlace({}, {0.25f, 0.75f}, 0.25, 0.75);
    // Tiled twice, the image's middle stays at the middle.
    ExpectPlace({.tiling = {2, 4}}, {0.5f, 0.5f}, 0.5, 0.5);
    ExpectPlace({.tiling = {2, 4}}, {0.75f, 0.75f}, 1, 1.5);
    // An offset moves the image to the right and up, by parts of what it covers untiled.
    ExpectPlace({.offset = {0.25f, 0.125f}}, {0.5f, 0.5f}, 0.25, 0.625);
    ExpectPlace({.offset = {0.25f, 0}, .tiling = {2, 1}}, {0.75f, 0.5f}, 0.5, 0.5);
}

}  // namespace
