#include "kta/preview/texture.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <random>

#include "kta/preview/picture.h"
#include "tests/unit/kta/scratch.h"

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#include <stb/stb_image_write.h>

namespace {

using ImageBytes = std::vector<std::uint8_t>;
using kta::Texture;

constexpr std::uint32_t kRed = 0xff0000ff;
constexpr std::uint32_t kGreen = 0xff00ff00;
constexpr std::uint32_t kBlue = 0xffff0000;
constexpr std::uint32_t kClearWhite = 0x00ffffff;

// Red and green above, blue and fully transparent white below.
Texture FourColourTexture() {
    return {2, 2, {kRed, kGreen, kBlue, kClearWhite}};
}

void ExpectColour(const Texture::Colour& colour, const Texture::Colour& expected) {
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_NEAR(colour[i], expected[i], 1e-9) << i;
    }
}

TEST(TextureTest, PixelsLieFromTheTopLeft) {
    const Texture texture = FourColourTexture();
    ExpectColour(texture.At(0, 0.25, 0.25), {1, 0, 0, 1});
    ExpectColour(texture.At(0, 0.75, 0.25), {0, 1, 0, 1});
    ExpectColour(texture.At(0, 0.25, 0.75), {0, 0, 1, 1});
    ExpectColour(texture.At(0, 0.75, 0.75), {1, 1, 1, 0});
}

TEST(TextureTest, ColoursBetweenPixelsAreBetweenTheirs) {
    ExpectColour(FourColourTexture().At(0, 0.5, 0.25), {0.5, 0.5, 0, 1});
    ExpectColour(FourColourTexture().At(0, 0.5, 0.5), {0.5, 0.5, 0.5, 0.75});
}

TEST(TextureTest, RepeatsInBothDirections) {
    const Texture texture = FourColourTexture();
    ExpectColour(texture.At(0, 7.25, -2.75), {1, 0, 0, 1});
    ExpectColour(texture.At(0, -0.25, 0.25), {0, 1, 0, 1});
    ExpectColour(texture.At(0, 0, 0.25), {0.5, 0.5, 0, 1});  // the left edge is the right one
    for (const double far : {1e300, -1e300, 1e17, -1e-300}) {
        const Texture::Colour colour = texture.At(0, far, far);
        EXPECT_GE(colour[0], 0);
        EXPECT_LE(colour[0], 1);
    }
}

// A copy is half the one before it, and averages two by two.
TEST(TextureTest, SmallerCopiesForSamplesFarApart) {
    const Texture texture(
        4, 4,
        std::vector<std::uint32_t>{kRed, kGreen, kRed, kRed, kRed, kGreen, kRed, kRed, kBlue, kBlue,
                                   kRed, kRed, kBlue, kBlue, kRed, kRed});
    EXPECT_EQ(texture.CopyFor({0.25, 0}, {0, 0.25}), 0u);  // a pixel apart
    EXPECT_EQ(texture.CopyFor({0.5, 0}, {0, 0.1}), 1u);    // two pixels in one direction
    EXPECT_EQ(texture.CopyFor({0.3, 0.4}, {0, 0}), 1u);    // two pixels aslant
    EXPECT_EQ(texture.CopyFor({1e300, 0}, {0, 0}), 2u);
    ExpectColour(texture.At(1, 0.25, 0.25), {128 / 255.0, 128 / 255.0, 0, 1});
    ExpectColour(texture.At(1, 0.25, 0.75), {0, 0, 1, 1});
}

TEST(TextureTest, OfLargeImagesASmallerCopyIsKept) {
    EXPECT_EQ(Texture(8192, 1, std::vector<std::uint32_t>(8192, kRed)).Width(), 4096);
    EXPECT_EQ(Texture(4096, 1, std::vector<std::uint32_t>(4096, kRed)).Width(), 4096);
}

// ---------------------------------------------------------------- files

void AppendTo(void* target, void* data, int size) {
    const auto* begin = static_cast<const std::uint8_t*>(data);
    static_cast<ImageBytes*>(target)->insert(static_cast<ImageBytes*>(target)->end(), begin,
                                             begin + size);
}

// The four colours, opaque, 8 pixels each way, as each kind of file.
std::vector<ImageBytes> FilesOfEachKind() {
    kta::Picture picture = kta::PlainPicture(16, 16, {255, 255, 255});
    kta::Paste(picture, kta::PlainPicture(8, 8, {255, 0, 0}), 0, 0);
    kta::Paste(picture, kta::PlainPicture(8, 8, {0, 255, 0}), 8, 0);
    kta::Paste(picture, kta::PlainPicture(8, 8, {0, 0, 255}), 0, 8);
    std::vector<ImageBytes> files(3);
    stbi_write_jpg_to_func(AppendTo, &files[0], 16, 16, 3, picture.pixels.data(), 100);
    stbi_write_bmp_to_func(AppendTo, &files[1], 16, 16, 3, picture.pixels.data());
    stbi_write_tga_to_func(AppendTo, &files[2], 16, 16, 3, picture.pixels.data());
    files.push_back(kta::EncodePng(picture));
    return files;
}

TEST(ImageFileTest, EachKindIsRead) {
    for (const ImageBytes& file : FilesOfEachKind()) {
        const kta::ImageReading reading = kta::ReadImage(file);
        ASSERT_TRUE(reading.texture) << reading.error;
        EXPECT_EQ(reading.texture->Width(), 16);
        EXPECT_NEAR(reading.texture->At(0, 0.25, 0.25)[0], 1, 0.05);
        EXPECT_NEAR(reading.texture->At(0, 0.25, 0.25)[1], 0, 0.05);
        EXPECT_NEAR(reading.texture->At(0, 0.75, 0.25)[1], 1, 0.05);
        EXPECT_NEAR(reading.texture->At(0, 0.25, 0.75)[2], 1, 0.05);
    }
}

TEST(ImageFileTest, OtherFilesAreRefused) {
    const std::string text = "no image at all, but a text of some length";
    EXPECT_EQ(kta::ReadImage(ImageBytes(text.begin(), text.end())).error,
              "is no PNG, JPEG, BMP or TGA image");
    EXPECT_EQ(kta::ReadImage({}).error, "is no PNG, JPEG, BMP or TGA image");
    EXPECT_EQ(kta::ReadImageFile(KTA_SCRATCH).error, "is no file");
    EXPECT_EQ(kta::ReadImageFile(sample::ScratchPath("missing")).error, "is no file");
}

TEST(ImageFileTest, TooManyPixelsAreRefusedBeforeTheyAreRead) {
    ImageBytes file = kta::EncodePng(kta::PlainPicture(1, 1, {}));
    file[18] = 0x20;  // a width of 8193
    EXPECT_EQ(kta::ReadImage(file).error, "has 8193 x 1 pixels, expected up to 8192 a side");
    ImageBytes bmp(54, 0);
    bmp[0] = 'B', bmp[1] = 'M', bmp[10] = 54, bmp[14] = 40, bmp[26] = 1, bmp[28] = 24;
    bmp[18] = 1, bmp[21] = 0x40, bmp[22] = 1, bmp[25] = 0x40;  // a thousand million squared
    EXPECT_FALSE(kta::ReadImage(bmp).texture);
}

// A small image whose bytes unpack to a thousand times what it takes.
TEST(ImageFileTest, WhatUnpacksToFarMoreThanTheImageIsRefused) {
    constexpr std::size_t kUnpacked = std::size_t{16} << 20;
    const ImageBytes zeros(kUnpacked, 0);
    uLongf size = compressBound(kUnpacked);
    ImageBytes packed(size);
    ASSERT_EQ(compress2(packed.data(), &size, zeros.data(), kUnpacked, 1), Z_OK);
    packed.resize(size);
    ImageBytes file = kta::EncodePng(kta::PlainPicture(1, 1, {}));
    file.resize(33);  // the header alone
    const auto append = [&file](std::uint32_t number) {
        for (const int shift : {24, 16, 8, 0}) {
            file.push_back(static_cast<std::uint8_t>(number >> shift));
        }
    };
    append(static_cast<std::uint32_t>(size));
    file.insert(file.end(), {'I', 'D', 'A', 'T'});
    file.insert(file.end(), packed.begin(), packed.end());
    append(0);
    append(0);
    file.insert(file.end(), {'I', 'E', 'N', 'D', 0, 0, 0, 0});
    EXPECT_EQ(kta::ReadImage(file).error, "is a faulty image (outofmem)");
}

TEST(ImageFileTest, JpegOfVeryManyScansIsRefused) {
    ImageBytes file = FilesOfEachKind()[0];
    for (int i = 0; i < 101; ++i) {
        file.insert(file.end(), {0xff, 0xda});
    }
    EXPECT_EQ(kta::ReadImage(file).error, "has more than 100 scans");
}

TEST(ImageFileTest, JpegOfMoreCodesThanSymbolsIsRefused) {
    ImageBytes file = FilesOfEachKind()[0];
    std::size_t table = 0;
    while (file[table] != 0xff || file[table + 1] != 0xc4) {
        ++table;
    }
    file[table + 20] = 255;  // codes of 16 bits, which are the last of the lengths
    file[table + 19] = 2;
    EXPECT_EQ(kta::ReadImage(file).error, "is a faulty image (bad codes)");
}

// Cut and damaged files are read or refused, and that is all.
TEST(ImageFileTest, DamagedFiles) {
    std::mt19937 random(14);
    for (const ImageBytes& file : FilesOfEachKind()) {
        for (std::size_t size = 0; size < file.size(); size += 1 + size / 100) {
            const kta::ImageReading reading = kta::ReadImage(ImageBytes(file.data(), &file[size]));
            EXPECT_NE(reading.texture.has_value(), !reading.error.empty());
        }
        for (int i = 0; i < 300; ++i) {
            ImageBytes damaged = file;
            for (int k = 0; k < 2; ++k) {
                damaged[random() % file.size()] = static_cast<std::uint8_t>(random());
            }
            const kta::ImageReading reading = kta::ReadImage(damaged);
            EXPECT_NE(reading.texture.has_value(), !reading.error.empty());
        }
    }
}

}  // namespace
