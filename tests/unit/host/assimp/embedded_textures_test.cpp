// Textures that stand in the file as texels or bytes. tests/app/import_textures.py has whole files.
#include <gtest/gtest.h>

#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_ONLY_PNG
#define STBI_NO_STDIO
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-function"
#include <stb/stb_image.h>
#pragma GCC diagnostic pop

#include <array>
#include <cstring>
#include <memory>

#include "host/assimp/embedded_textures.h"
#include "tests/unit/host/assimp/source_scene.h"

using maxhost::import::EmbeddedTexture;

namespace {

// One texture, of bare texels where `height` is not 0.
std::vector<EmbeddedTexture> TexturesOf(const std::string& name, unsigned width, unsigned height,
                                        const std::vector<aiTexel>& texels,
                                        const std::string& hint = "") {
    SourceScene source(kOther);
    SourceScene::Show(source.Root(), {source.AddTriangle("m")});
    auto* const texture = new aiTexture;
    texture->mFilename = name;
    texture->mWidth = width;
    texture->mHeight = height;
    texture->pcData = new aiTexel[texels.size()];
    std::ranges::copy(texels, texture->pcData);
    std::strncpy(texture->achFormatHint, hint.c_str(), HINTMAXTEXTURELEN - 1);
    source.Scene().mNumTextures = 1;
    source.Scene().mTextures = new aiTexture* [1] { texture };
    return source.Convert("models/robot.mdl").textures;
}

}  // namespace

TEST(EmbeddedTextures, TexelsBecomeAPngFileWithTheirColoursAndAlpha) {
    // aiTexel's fields stand in the order b, g, r, a.
    const std::vector<EmbeddedTexture> made = TexturesOf(
        "skin.jpg", 2, 2, {{1, 2, 3, 4}, {50, 60, 70, 255}, {0, 255, 9, 1}, {200, 100, 0, 0}});
    ASSERT_EQ(made.size(), 1u);
    EXPECT_EQ(made[0].name, "skin.png");
    int width = 0, height = 0, channels = 0;
    const std::unique_ptr<stbi_uc, decltype(&std::free)> pixels(
        stbi_load_from_memory(reinterpret_cast<const stbi_uc*>(made[0].bytes.data()),
                              static_cast<int>(made[0].bytes.size()), &width, &height, &channels,
                              0),
        std::free);
    ASSERT_NE(pixels, nullptr);
    EXPECT_EQ(width, 2);
    EXPECT_EQ(height, 2);
    EXPECT_EQ(channels, 4);
    const std::array<int, 16> expected = {3, 2,   1, 4, 70, 60,  50,  255,
                                          9, 255, 0, 1, 0,  100, 200, 0};
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), pixels.get()));
}

TEST(EmbeddedTextures, TheReadersHintNamesWhatHasNoSignature) {
    EXPECT_EQ(TexturesOf("", 4, 0, {{}}, "TGA").at(0).name, "robot-texture-1.tga");
    EXPECT_EQ(TexturesOf("", 4, 0, {{}}, "../x").at(0).name, "robot-texture-1.bin");
}

TEST(EmbeddedTextures, PicturesWithoutTexelsAndBeyondAnySizeAreLeftOut) {
    EXPECT_TRUE(TexturesOf("a.png", 0, 0, {{}}).empty());
    EXPECT_TRUE(TexturesOf("a.png", 0, 7, {{}}).empty());
    EXPECT_TRUE(TexturesOf("a.png", 1u << 31, 1u << 31, {{}}).empty());
    EXPECT_TRUE(TexturesOf("a.png", 65535, 65535, {{}}).empty());
}

// A row has a byte before its texels. 2147483647 bytes can be counted, and 1001 may become of 1000.
TEST(EmbeddedTextures, PngFilesHaveAsManyTexelsAsCanBeCounted) {
    using maxhost::import::FitsPng;
    EXPECT_TRUE(FitsPng(1, 65535));
    EXPECT_TRUE(FitsPng(65535, 8183));  // 2145099803 of at most 2145338000
    EXPECT_FALSE(FitsPng(65535, 8184));
    EXPECT_TRUE(FitsPng(8183, 65535));   // 2145157155
    EXPECT_TRUE(FitsPng(65534, 8184));   // 2145329208
    EXPECT_FALSE(FitsPng(8184, 65534));  // 2145321024 and 65534: the rows' first bytes count
    EXPECT_FALSE(FitsPng(65536, 1));
    EXPECT_FALSE(FitsPng(1u << 31, 1u << 31));
}
