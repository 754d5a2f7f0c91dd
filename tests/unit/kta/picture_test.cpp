#include "kta/preview/picture.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <cstring>
#include <memory>
#include <string>

#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_ONLY_PNG
#include <stb/stb_image.h>

namespace {

using kta::Picture;
using kta::Rgb;
using PictureBytes = std::vector<std::uint8_t>;

// A slope of colours.
Picture Slope(int width, int height) {
    Picture picture = kta::PlainPicture(width, height, {});
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            picture.pixels[static_cast<std::size_t>(y * width + x)] = {
                static_cast<std::uint8_t>(3 * x), static_cast<std::uint8_t>(5 * y),
                static_cast<std::uint8_t>(x * y)};
        }
    }
    return picture;
}

Picture Decoded(const PictureBytes& bytes) {
    Picture picture;
    int channels = 0;
    const std::unique_ptr<stbi_uc, decltype(&stbi_image_free)> pixels(
        stbi_load_from_memory(bytes.data(), static_cast<int>(bytes.size()), &picture.width,
                              &picture.height, &channels, 0),
        stbi_image_free);
    EXPECT_TRUE(pixels) << stbi_failure_reason();
    EXPECT_EQ(channels, 3);
    if (pixels && channels == 3) {
        picture.pixels.resize(static_cast<std::size_t>(picture.width * picture.height));
        std::memcpy(picture.pixels.data(), pixels.get(), picture.pixels.size() * 3);
    }
    return picture;
}

TEST(PictureTest, SamePictureSameBytes) {
    const Picture picture = Slope(400, 300);
    const auto bytes = kta::EncodePng(picture);
    EXPECT_EQ(bytes, kta::EncodePng(Slope(400, 300)));
    EXPECT_LT(bytes.size(), 60000u);
    Picture other = picture;
    other.pixels[5050][1] ^= 1;
    EXPECT_NE(bytes, kta::EncodePng(other));
}

TEST(PictureTest, PngReadsBack) {
    const Picture picture = Slope(61, 43);
    const Picture decoded = Decoded(kta::EncodePng(picture));
    EXPECT_EQ(decoded.width, 61);
    EXPECT_EQ(decoded.height, 43);
    EXPECT_EQ(decoded.pixels, picture.pixels);
}

TEST(PictureTest, RowsMakeTheSameFileHoweverTheyCome) {
    const Picture picture = Slope(50, 40);
    kta::PngWriter writer(50, 40);
    const std::span<const Rgb> pixels = picture.pixels;
    writer.Append(pixels.first(50));
    writer.Append(pixels.subspan(50, 25 * 50));
    writer.Append({});
    writer.Append(pixels.subspan(26 * 50));
    EXPECT_EQ(writer.Finish(), kta::EncodePng(picture));
}

// ---------------------------------------------------------------- animated

std::uint32_t Number(const PictureBytes& bytes, std::size_t at) {
    return std::uint32_t{bytes[at]} << 24 | std::uint32_t{bytes[at + 1]} << 16 |
           std::uint32_t{bytes[at + 2]} << 8 | bytes[at + 3];
}

struct PngChunk {
    std::string type;
    PictureBytes data;
};

// Each with the right check sum.
std::vector<PngChunk> ChunksOf(const PictureBytes& file) {
    std::vector<PngChunk> chunks;
    for (std::size_t at = 8; at + 12 <= file.size();) {
        const std::size_t size = Number(file, at);
        const std::uint8_t* const type = &file[at + 4];
        EXPECT_EQ(Number(file, at + 8 + size), crc32(0, type, static_cast<uInt>(size + 4)));
        chunks.push_back({std::string(type, type + 4), {type + 4, type + 4 + size}});
        at += 12 + size;
    }
    return chunks;
}

void AppendNumber(PictureBytes& bytes, std::size_t number) {
    for (const int shift : {24, 16, 8, 0}) {
        bytes.push_back(static_cast<std::uint8_t>(number >> shift));
    }
}

// A still file of a frame's pixels.
PictureBytes StillOf(std::uint32_t width, std::uint32_t height, const PictureBytes& pixels) {
    PictureBytes file = kta::EncodePng(kta::PlainPicture(1, 1, {}));
    file.resize(8);
    const auto append = [&file](const std::string& type, const PictureBytes& data) {
        AppendNumber(file, data.size());
        const std::size_t start = file.size();
        file.insert(file.end(), type.begin(), type.end());
        file.insert(file.end(), data.begin(), data.end());
        AppendNumber(file, crc32(0, &file[start], static_cast<uInt>(file.size() - start)));
    };
    PictureBytes header;
    AppendNumber(header, width);
    AppendNumber(header, height);
    header.insert(header.end(), {8, 2, 0, 0, 0});
    append("IHDR", header);
    append("IDAT", pixels);
    append("IEND", {});
    return file;
}

// What a player shows, frame by frame. Sequence numbers must count from 0.
std::vector<Picture> Played(const PictureBytes& file) {
    std::vector<Picture> shown;
    Picture canvas;
    std::uint32_t sequenceNumber = 0;
    PictureBytes control;
    for (const PngChunk& chunk : ChunksOf(file)) {
        if (chunk.type == "fcTL") {
            EXPECT_EQ(Number(chunk.data, 0), sequenceNumber++);
            control = chunk.data;
        } else if (chunk.type == "IDAT" || chunk.type == "fdAT") {
            const bool isNumbered = chunk.type == "fdAT";
            if (isNumbered) {
                EXPECT_EQ(Number(chunk.data, 0), sequenceNumber++);
            }
            const PictureBytes pixels(chunk.data.begin() + (isNumbered ? 4 : 0), chunk.data.end());
            const Picture part = Decoded(StillOf(Number(control, 4), Number(control, 8), pixels));
            if (!isNumbered) {
                canvas = kta::PlainPicture(part.width, part.height, {});
            }
            kta::Paste(canvas, part, static_cast<int>(Number(control, 12)),
                       static_cast<int>(Number(control, 16)));
            shown.push_back(canvas);
        }
    }
    return shown;
}

TEST(AnimatedPngTest, PlaysTheFrames) {
    std::vector<Picture> frames = {Slope(40, 30), Slope(40, 30), Slope(40, 30), Slope(40, 30)};
    for (int i = 7; i < 12; ++i) {
        frames[1].pixels[static_cast<std::size_t>(20 * 40 + i)] = {255, 0, 0};  // a short line
    }
    frames[3] = frames[2];                   // nothing changes
    frames[2].pixels.front() = {1, 200, 3};  // the corners
    frames[2].pixels.back() = {4, 5, 200};
    frames[3] = frames[2];
    kta::AnimatedPngWriter writer({1, 25});
    for (const Picture& frame : frames) {
        writer.Append(frame);
    }
    const PictureBytes file = writer.Finish();
    const std::vector<Picture> shown = Played(file);
    ASSERT_EQ(shown.size(), 4u);
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(shown[i].pixels, frames[i].pixels) << i;
    }
    EXPECT_EQ(Decoded(file).pixels, frames[0].pixels);  // for those who play no animations
}

TEST(AnimatedPngTest, ChunksInTheirOrder) {
    kta::AnimatedPngWriter writer({1, 25});
    Picture second = Slope(40, 30);
    second.pixels[20 * 40 + 7] = {255, 0, 0};
    writer.Append(Slope(40, 30));
    writer.Append(second);
    std::string types;
    std::vector<PngChunk> chunks = ChunksOf(writer.Finish());
    for (const PngChunk& chunk : chunks) {
        types += chunk.type + " ";
    }
    EXPECT_EQ(types, "IHDR acTL fcTL IDAT fcTL fdAT IEND ");
    EXPECT_EQ(Number(chunks[1].data, 0), 2u);  // frames
    EXPECT_EQ(Number(chunks[1].data, 4), 0u);  // plays for ever
    const PictureBytes& control = chunks[4].data;
    ASSERT_EQ(control.size(), 26u);
    EXPECT_EQ(Number(control, 4), 1u);  // one pixel, at 7, 20
    EXPECT_EQ(Number(control, 8), 1u);
    EXPECT_EQ(Number(control, 12), 7u);
    EXPECT_EQ(Number(control, 16), 20u);
    EXPECT_EQ(control[21], 1);  // 1/25 s
    EXPECT_EQ(control[23], 25);
}

}  // namespace
