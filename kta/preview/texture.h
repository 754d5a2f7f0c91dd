// Bitmaps on surfaces.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "kta/preview/picture.h"

namespace kta {

// Larger image files are not read, and of larger sides they are not shown.
constexpr std::uintmax_t kMostImageBytes = std::uintmax_t{256} << 20;
constexpr int kMostImageSide = 8192;

// An image with its smaller copies, each of half the sides. It repeats in both directions.
class Texture {
  public:
    // Rows from the top left, red in the lowest byte and opacity in the highest.
    Texture(int width, int height, std::vector<std::uint32_t> pixels);

    // Red, green, blue and opacity, from 0 to 1.
    using Colour = std::array<double, 4>;

    // The copy to show where neighbouring samples lie `across` and `down` apart: that of which the
    // samples miss no pixel, though all of them are drawn one beside the other.
    std::size_t CopyFor(const std::array<double, 2>& across,
                        const std::array<double, 2>& down) const;

    // How far apart, in pixels of the copy, places lie that differ by the step.
    double PixelsApart(std::size_t copy, const std::array<double, 2>& step) const;

    // At a place from the left edge (0) to the right (1) and from the top (0) to the bottom (1),
    // between the nearest four pixels; it is finite.
    Colour At(std::size_t copy, double x, double y) const;

    int Width() const { return copies_.front().width; }
    int Height() const { return copies_.front().height; }
    std::size_t Bytes() const;

  private:
    struct Copy {
        int width;
        int height;
        std::vector<std::uint32_t> pixels;
    };

    static Copy Halved(const Copy& copy);

    std::vector<Copy> copies_;  // from the image itself down to one pixel
};

// What a PNG, JPEG, BMP or TGA file holds, or why it cannot be shown. Bounded in memory and time
// whatever the bytes are.
struct DecodedImage {
    std::optional<Image> image;
    std::string error;
};
DecodedImage DecodeImage(std::span<const std::uint8_t> bytes);
DecodedImage DecodeImageFile(const std::filesystem::path& path);
// Empty where the file cannot be read.
std::vector<std::uint8_t> ImageFileAsPng(const std::filesystem::path& path);

// The same to be shown on surfaces.
struct ImageReading {
    std::optional<Texture> texture;
    std::string error;
};

ImageReading ReadImage(std::span<const std::uint8_t> bytes);
ImageReading ReadImageFile(const std::filesystem::path& path);

}  // namespace kta
